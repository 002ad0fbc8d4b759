#include "Platform/SdlAudioOutput.h"

#include "Platform/PulseServer.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

#include <atomic>
#include <bit>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace mossbit {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Lock = std::unique_lock<std::mutex>;

constexpr std::size_t channelCount = 2;

/// How long the main thread waits for a sound system that does not answer.
constexpr auto answerLimit = 2s;
/// How often the worker looks whether a playing device is still there. After so many looks without
/// a single block the device counts as lost.
constexpr auto watchInterval = 100ms;
constexpr int lostAfterLooks = 20;
constexpr auto retryInterval = 250ms;
/// How long a lost device may take to come back.
constexpr auto recoveryLimit = 6s;
/// How long of that only the sound system that was lost is tried. A sound server that restarts
/// would find its card taken if the program grabbed the bare device in between.
constexpr auto sameSystemLimit = 3s;
/// How long a stopped device is kept, so that stopping and playing in turn costs nothing.
constexpr auto idleLimit = 3s;

#ifdef MOSSBIT_HAS_PULSE
/// Whether SDL will try PulseAudio first, as it does unless it is told otherwise. It may be told a
/// list, in any case, where "pulse" stands for "pulseaudio".
bool startsWithPulse() {
    const char* const drivers = SDL_GetHint(SDL_HINT_AUDIODRIVER);
    return drivers == nullptr || *drivers == '\0' || SDL_strncasecmp(drivers, "pulse", 5) == 0;
}
#endif

/// Connects to the sound system that SDL calls `driver`, or to the default one where that is
/// empty. Throws `std::runtime_error`.
void initAudio(const std::string& driver) {
    SDL_SetMainReady();
    // SIGINT and SIGTERM belong to the application.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, "Mossbit");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Mossbit");
    SDL_ResetHint(SDL_HINT_AUDIODRIVER);
    if (!driver.empty())
        SDL_SetHint(SDL_HINT_AUDIODRIVER, driver.c_str());
#ifdef MOSSBIT_HAS_PULSE
    if (startsWithPulse() && pulseServerLacksDevice())
        throw std::runtime_error("The sound server offers no device");
#endif
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        throw std::runtime_error(SDL_GetError());
}

/// The default device's rate in Hz; 0 if it cannot be told.
double defaultDeviceRate() {
    try {
        initAudio("");
    } catch (const std::runtime_error&) {
        return 0;
    }
    char* name = nullptr;
    SDL_AudioSpec device{};
    const bool isKnown = SDL_GetDefaultAudioInfo(&name, &device, 0) == 0;
    SDL_free(name);
    return isKnown ? device.freq : 0;
}

/// What the main thread, the worker and the audio thread share.
class SdlAudioOutput final : public AudioOutput {
public:
    // Main thread.

    double sampleRate() override;
    void setSource(double sampleRate, Source source) override;
    bool isRunning() const override;
    void start() override;
    void stop() override;
    /// Asks the worker to end; false if it is still busy after `answerLimit`.
    bool end();

    // Worker.

    void work();

private:
    enum class State {
        closed,
        /// A start waits for a device.
        opening,
        playing,
        /// The device was lost while playing, and another one is sought.
        recovering,
        /// A device is open, but stopped.
        paused,
        ending,
        ended,
    };

    // Audio thread.
    static void fill(void* output, Uint8* stream, int bytes);

    // Under the lock.
    void enter(State state);
    void play();
    bool isRecovering() const;
    bool hasDisconnected() const;

    // Worker. Those that take the lock release it during slow calls.
    void act(Lock& lock);
    void open(Lock& lock);
    void close(Lock& lock);
    SDL_AudioDeviceID openDevice(const std::string& driver);
    bool isLost();

    // Set before the first start, then only read.
    double m_sampleRate = 0;
    Source m_source;

    /// Whether a block has been pulled since the last look.
    std::atomic<bool> m_hasPulled = false;

    // Worker.
    int m_looksWithoutBlock = 0;
    /// SDL's name for the sound system that was opened last.
    std::string m_driver;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Guarded by the mutex.
    State m_state = State::closed;
    /// When the state was entered.
    Clock::time_point m_since;
    /// When the state wants the worker next.
    Clock::time_point m_due;
    /// Not 0 while playing or paused.
    SDL_AudioDeviceID m_id = 0;
    std::optional<double> m_defaultRate;
    /// Why the last start failed.
    std::string m_failure;
};

double SdlAudioOutput::sampleRate() {
    Lock lock(m_mutex);
    m_changed.wait_for(lock, answerLimit, [this] { return m_defaultRate.has_value(); });
    return m_defaultRate.value_or(0);
}

void SdlAudioOutput::setSource(double sampleRate, Source source) {
    m_sampleRate = sampleRate;
    m_source = std::move(source);
}

bool SdlAudioOutput::isRunning() const {
    const Lock lock(m_mutex);
    return m_state == State::playing || isRecovering();
}

void SdlAudioOutput::start() {
    Lock lock(m_mutex);
    if (m_state == State::paused && !hasDisconnected())
        return play();
    enter(State::opening);
    m_changed.wait_for(lock, answerLimit, [this] { return m_state != State::opening; });
    if (m_state == State::opening) {
        m_failure = "The sound system does not answer";
        enter(State::closed);
    }
    if (m_state == State::closed)
        throw std::runtime_error(m_failure);
}

void SdlAudioOutput::stop() {
    const Lock lock(m_mutex);
    if (m_id != 0)
        SDL_PauseAudioDevice(m_id, 1);
    enter(m_id != 0 ? State::paused : State::closed);
}

bool SdlAudioOutput::end() {
    stop();
    Lock lock(m_mutex);
    enter(State::ending);
    return m_changed.wait_for(lock, answerLimit, [this] { return m_state == State::ended; });
}

void SdlAudioOutput::enter(State state) {
    m_state = state;
    m_since = Clock::now();
    m_due = m_since;
    if (state == State::playing)
        m_due += watchInterval;
    if (state == State::paused)
        m_due += idleLimit;
    m_changed.notify_all();
}

void SdlAudioOutput::play() {
    // Looks without a block count from here.
    m_hasPulled = true;
    SDL_PauseAudioDevice(m_id, 0);
    enter(State::playing);
}

bool SdlAudioOutput::isRecovering() const {
    // Timed here, too, because the worker may hang with the sound system.
    return m_state == State::recovering && Clock::now() < m_since + recoveryLimit;
}

bool SdlAudioOutput::hasDisconnected() const {
    return SDL_GetAudioDeviceStatus(m_id) == SDL_AUDIO_STOPPED;
}

void SdlAudioOutput::work() {
    const double defaultRate = defaultDeviceRate();
    Lock lock(m_mutex);
    m_defaultRate = defaultRate;
    m_changed.notify_all();
    while (m_state != State::ending) {
        if (Clock::now() < m_due)
            m_changed.wait_until(lock, m_due);
        else
            act(lock);
    }
    close(lock);
    // SDL keeps the last error of each thread, and frees it only for threads that it has started.
    SDL_TLSCleanup();
    m_state = State::ended;
    m_changed.notify_all();
}

void SdlAudioOutput::act(Lock& lock) {
    switch (m_state) {
    case State::opening:
    case State::recovering:
        open(lock);
        break;
    case State::playing:
        if (isLost())
            enter(State::recovering);
        else
            m_due = Clock::now() + watchInterval;
        break;
    case State::paused:
        enter(State::closed);
        break;
    case State::closed:
        m_due = Clock::time_point::max();
        close(lock);
        break;
    case State::ending:
    case State::ended:
        break;
    }
}

void SdlAudioOutput::open(Lock& lock) {
    const Clock::time_point since = m_since;
    const bool isSameSystem = isRecovering() && Clock::now() < since + sameSystemLimit;
    const std::string driver = isSameSystem ? m_driver : "";
    // SDL keeps to the devices that it finds when its subsystem is started.
    close(lock);
    lock.unlock();
    SDL_AudioDeviceID id = 0;
    std::string failure;
    try {
        id = openDevice(driver);
    } catch (const std::runtime_error& error) {
        failure = error.what();
    }
    lock.lock();
    m_id = id;
    if (m_since != since)
        return; // Another state was entered meanwhile.
    if (id != 0 && (m_state == State::opening || isRecovering())) {
        play();
    } else if (isRecovering()) {
        m_due = Clock::now() + retryInterval;
    } else {
        m_failure = failure;
        enter(State::closed);
    }
}

void SdlAudioOutput::close(Lock& lock) {
    const SDL_AudioDeviceID id = std::exchange(m_id, 0);
    // A lost device goes on pulling until it is closed.
    if (id != 0)
        SDL_PauseAudioDevice(id, 1);
    lock.unlock();
    if (id != 0)
        SDL_CloseAudioDevice(id);
    if (SDL_WasInit(SDL_INIT_AUDIO) != 0)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    lock.lock();
}

SDL_AudioDeviceID SdlAudioOutput::openDevice(const std::string& driver) {
    initAudio(driver);
    const auto rate = static_cast<unsigned>(std::lround(m_sampleRate));
    SDL_AudioSpec want{};
    want.freq = static_cast<int>(rate);
    want.format = AUDIO_F32SYS;
    want.channels = channelCount;
    // About 21 ms, in a power of two: 1024 frames at 48 kHz.
    want.samples = static_cast<Uint16>(std::bit_ceil(rate / 48));
    want.callback = fill;
    want.userdata = this;
    // The source keeps its rate for life: SDL converts where the device differs.
    const SDL_AudioDeviceID id = SDL_OpenAudioDevice(nullptr, 0, &want, nullptr, 0);
    if (id == 0)
        throw std::runtime_error(SDL_GetError());
    m_driver = SDL_GetCurrentAudioDriver();
    return id;
}

bool SdlAudioOutput::isLost() {
    // Counted, not timed: the whole program may have been stopped for a while.
    m_looksWithoutBlock = m_hasPulled.exchange(false) ? 0 : m_looksWithoutBlock + 1;
    return hasDisconnected() || m_looksWithoutBlock >= lostAfterLooks;
}

void SdlAudioOutput::fill(void* output, Uint8* stream, int bytes) {
    auto& self = *static_cast<SdlAudioOutput*>(output);
    const std::span both(reinterpret_cast<float*>(stream),
                         static_cast<std::size_t>(bytes) / sizeof(float));
    const std::size_t frames = both.size() / channelCount;
    self.m_source(both.first(frames));
    // To both channels in place: from the back, no sample is overwritten before it is copied.
    for (std::size_t frame = frames; frame-- > 0;)
        both[2 * frame] = both[2 * frame + 1] = both[frame];
    self.m_hasPulled = true;
}

} // namespace

std::shared_ptr<AudioOutput> sdlAudioOutput() {
    // The worker shares the output, because it may outlive what is returned here.
    const auto output = std::make_shared<SdlAudioOutput>();
    const auto worker = std::make_shared<std::thread>([output] { output->work(); });
    return {output.get(), [output, worker](AudioOutput*) {
                if (output->end()) {
                    worker->join();
                } else {
                    // The sound system hangs; the end of the process must not wait for it.
                    worker->detach();
                }
            }};
}

} // namespace mossbit
