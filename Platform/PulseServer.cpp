#include "Platform/PulseServer.h"

#include <chrono>
#include <memory>
#include <optional>

#include <pulse/pulseaudio.h>

namespace mossbit {

namespace {

using Clock = std::chrono::steady_clock;

/// One question to the server, on a loop of its own.
class ServerQuestion {
public:
    ServerQuestion()
        : m_loop(pa_mainloop_new(), pa_mainloop_free),
          m_context(pa_context_new(pa_mainloop_get_api(m_loop.get()), "Mossbit"),
                    pa_context_unref) {}

    ServerQuestion(const ServerQuestion&) = delete;
    ServerQuestion& operator=(const ServerQuestion&) = delete;
    ~ServerQuestion() { pa_context_disconnect(m_context.get()); }

    /// Nothing if there is no server; false, too, if it does not answer before `deadline`.
    std::optional<bool> hasDevice(Clock::time_point deadline) {
        if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            return std::nullopt;
        while (pa_context_get_state(m_context.get()) != PA_CONTEXT_READY) {
            if (!step(deadline))
                return false;
            if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context.get())))
                return std::nullopt;
        }
        pa_operation_unref(pa_context_get_server_info(m_context.get(), take, this));
        while (!m_answer && PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context.get()))) {
            if (!step(deadline))
                return false;
        }
        return m_answer;
    }

private:
    static void take(pa_context*, const pa_server_info* info, void* self) {
        static_cast<ServerQuestion*>(self)->m_answer = info != nullptr &&
                                                       info->default_sink_name != nullptr &&
                                                       info->default_source_name != nullptr;
    }

    bool step(Clock::time_point deadline) {
        const auto left =
            std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
        return left.count() > 0 &&
               pa_mainloop_prepare(m_loop.get(), static_cast<int>(left.count())) >= 0 &&
               pa_mainloop_poll(m_loop.get()) >= 0 && pa_mainloop_dispatch(m_loop.get()) >= 0;
    }

    std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> m_loop;
    std::unique_ptr<pa_context, decltype(&pa_context_unref)> m_context;
    std::optional<bool> m_answer;
};

} // namespace

bool pulseServerLacksDevice() {
    using namespace std::chrono_literals;
    return !ServerQuestion().hasDevice(Clock::now() + 1500ms).value_or(true);
}

} // namespace mossbit
