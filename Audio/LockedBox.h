#pragma once

#include <pthread.h>

#include <mutex>
#include <utility>

namespace mossbit {

/// A mutex whose holder inherits the priority of whoever waits, where the system can do that: a
/// descheduled main thread does not keep the audio thread waiting.
class InheritingMutex {
public:
    InheritingMutex() {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
        // Some kernels do not know the protocol.
        if (pthread_mutex_init(&m_mutex, &attributes) != 0)
            pthread_mutex_init(&m_mutex, nullptr);
        pthread_mutexattr_destroy(&attributes);
    }

    ~InheritingMutex() { pthread_mutex_destroy(&m_mutex); }
    InheritingMutex(const InheritingMutex&) = delete;
    InheritingMutex& operator=(const InheritingMutex&) = delete;

    void lock() { pthread_mutex_lock(&m_mutex); }
    void unlock() { pthread_mutex_unlock(&m_mutex); }

private:
    pthread_mutex_t m_mutex;
};

/// One value handed between threads, read and changed only while its lock is held. Hold it for a
/// copy, never for work: the audio thread waits here too.
template <typename Value>
class LockedBox {
public:
    explicit LockedBox(Value value) : m_value(std::move(value)) {}

    /// Calls `action(value)` under the lock and returns its result.
    template <typename Action>
    auto with(Action&& action) {
        const std::lock_guard guard(m_mutex);
        return std::forward<Action>(action)(m_value);
    }

private:
    InheritingMutex m_mutex;
    Value m_value;
};

} // namespace mossbit
