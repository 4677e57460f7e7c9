#pragma once

#include <QString>

#include <optional>
#include <utility>

/// Why something could not be done, in words for a user.
struct Failure {
    QString text;
};

/// What an operation brought, or why it brought nothing.
///
///     const Result<QByteArray> content = ReadWhole(path);
///     if (!content)
///         log.WriteLog(content.Error());
template <typename T = void>
class [[nodiscard]] Result {
public:
    Result(T value)
        : m_value(std::move(value)) {}
    Result(Failure failure)
        : m_error(std::move(failure.text)) {}

    explicit operator bool() const { return m_value.has_value(); }

    /// Only where there is one.
    const T& operator*() const& { return *m_value; }
    T& operator*() & { return *m_value; }
    T&& operator*() && { return *std::move(m_value); }
    const T* operator->() const { return &*m_value; }
    T* operator->() { return &*m_value; }

    T ValueOr(T otherwise) const { return m_value.value_or(std::move(otherwise)); }

    /// Empty if there is a value.
    const QString& Error() const { return m_error; }

private:
    std::optional<T> m_value;
    QString m_error;
};

/// Success, or why there was none.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Failure failure)
        : m_error(std::move(failure.text)) {}

    explicit operator bool() const { return !m_error; }

    /// Empty after a success.
    QString Error() const { return m_error.value_or(QString()); }

private:
    std::optional<QString> m_error;
};
