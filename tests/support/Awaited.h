#ifndef LUMO_TESTS_SUPPORT_AWAITED_H
#define LUMO_TESTS_SUPPORT_AWAITED_H

#include <condition_variable>
#include <mutex>
#include <utility>

/// A value that threads change and wait for.
template <class Value>
class Awaited
{
public:
    explicit Awaited(Value value = {}) : m_Value(std::move(value)) {}

    /// Calls `change` with the value and wakes those that wait.
    template <class Change>
    void change(Change change)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        change(m_Value);
        m_Changed.notify_all();
    }

    /// Waits until `condition` of the value is true; returns the value.
    template <class Condition>
    Value wait(Condition condition)
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_Changed.wait(lock, [&] { return condition(m_Value); });
        return m_Value;
    }

    /// Returns the value that was.
    Value exchange(Value value)
    {
        change([&](Value& present) { std::swap(present, value); });
        return value;
    }

    Value value() const
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Value;
    }

private:
    mutable std::mutex m_Mutex;
    std::condition_variable m_Changed;
    Value m_Value;
};

#endif
