#pragma once

#include <coroutine>
#include <optional>
#include <utility>

/// One result that one coroutine waits for: `const T value = co_await completion.Wait();`.
///
/// `Finish` resumes the waiting coroutine before it returns, so its caller must not rely on anything that the coroutine
/// may destroy, the completion included. A result that comes before anybody waits is kept. Only the first `Finish`
/// counts.
template <typename T>
class Completion {
public:
    class Awaiter {
    public:
        explicit Awaiter(Completion& completion)
            : m_completion(&completion) {}

        bool await_ready() const noexcept { return m_completion->m_value.has_value(); }
        void await_suspend(std::coroutine_handle<> waiter) noexcept { m_completion->m_waiter = waiter; }
        T await_resume() const { return *m_completion->m_value; }

    private:
        Completion* m_completion;
    };

    Completion() = default;
    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;

    void Finish(T value) {
        if (m_value)
            return;
        m_value = std::move(value);
        if (m_waiter)
            std::exchange(m_waiter, nullptr).resume();
    }

    /// The completion must stay where it is until the awaiting coroutine goes on.
    Awaiter Wait() { return Awaiter(*this); }

private:
    std::optional<T> m_value;
    std::coroutine_handle<> m_waiter;
};
