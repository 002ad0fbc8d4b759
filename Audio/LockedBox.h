#pragma once

#include <pthread.h>
#include <unistd.h>

#include <utility>

namespace mossbit {

/// One value handed between threads, read and changed only while its lock is held. Hold it for a
/// copy, never for work: the audio thread waits here too. The lock inherits priority where the
/// system can, so that a descheduled main thread does not keep the audio thread waiting.
template <typename Value>
class LockedBox {
public:
    explicit LockedBox(Value value) : m_value(std::move(value)) {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
#if defined(_POSIX_THREAD_PRIO_INHERIT) && _POSIX_THREAD_PRIO_INHERIT > 0
        pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
#endif
        // Some kernels do not know the protocol.
        if (pthread_mutex_init(&m_mutex, &attributes) != 0)
            pthread_mutex_init(&m_mutex, nullptr);
        pthread_mutexattr_destroy(&attributes);
    }

    ~LockedBox() {
        pthread_mutex_destroy(&m_mutex);
    }

    LockedBox(const LockedBox&) = delete;
    LockedBox& operator=(const LockedBox&) = delete;

    /// Calls `action(value)` under the lock and returns its result.
    template <typename Action>
    auto with(Action&& action) {
        const Guard guard(m_mutex);
        return std::forward<Action>(action)(m_value);
    }

private:
    class Guard {
    public:
        explicit Guard(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
        ~Guard() { pthread_mutex_unlock(&m_mutex); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        pthread_mutex_t& m_mutex;
    };

    pthread_mutex_t m_mutex;
    Value m_value;
};

} // namespace mossbit
