#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// A process of its own at the other end of a pseudo-terminal that answers every request with the same bytes: the
/// fastest device there can be, the same for both masters under comparison.
class Responder {
public:
    /// @param isWhole  whether what has come is a whole request.
    Responder(const QByteArray& answer, const std::function<bool(const QByteArray&)>& isWhole);
    ~Responder();
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    QString Path() const { return m_path; }

private:
    QString m_path;
    int m_master = -1;
    int m_process = 0;
};
