#include "Platform/SdlLine.h"

#include "Platform/PulseServer.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace mossbit {

namespace {

using namespace std::chrono_literals;

/// Frames that the source renders at a time; a device buffer is filled in as many chunks as it
/// takes.
constexpr std::size_t chunkFrames = 1024;

/// How often the keeper looks whether a playing device is still there.
constexpr auto watchInterval = 100ms;
constexpr auto retryInterval = 250ms;
/// How long a lost device may take to come back.
constexpr auto recoveryLimit = 6s;
/// How long of that only the sound system that was lost is tried. A sound server that restarts
/// would find its card taken if the program grabbed the bare device in between.
constexpr auto sameSystemLimit = 3s;
/// How long a paused device is kept, so that stopping and playing in turn costs nothing.
constexpr auto idleLimit = 3s;

#ifdef MOSSBIT_HAS_PULSE
/// Whether SDL will try PulseAudio first, as it does unless it is told otherwise. What it is told
/// may be a list, in any case, and "pulse" stands for "pulseaudio".
bool startsWithPulse() {
    const char* const hint = SDL_GetHint(SDL_HINT_AUDIODRIVER);
    std::string drivers = hint != nullptr ? hint : "";
    std::ranges::transform(drivers, drivers.begin(), [](char c) { return SDL_tolower(c); });
    return drivers.empty() || drivers.starts_with("pulse");
}
#endif

void initAudio() {
    SDL_SetMainReady();
    // SIGINT and SIGTERM belong to the application.
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_APP_NAME, "Mossbit");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Mossbit");
#ifdef MOSSBIT_HAS_PULSE
    if (startsWithPulse() && pulseServerLacksDevice())
        throw std::runtime_error("The sound server has no device to play on");
#endif
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        throw std::runtime_error(SDL_GetError());
}

void quitAudio() {
    if (SDL_WasInit(SDL_INIT_AUDIO) != 0)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

/// The default device's rate in Hz; 0 if it cannot be told.
double defaultDeviceRate() {
    char* name = nullptr;
    SDL_AudioSpec device{};
    const bool known = SDL_GetDefaultAudioInfo(&name, &device, 0) == 0;
    SDL_free(name);
    return known ? device.freq : 0;
}

} // namespace

void SdlLine::setSource(const AudioFormat& format, AudioOutput::Source source) {
    m_format = format;
    m_source = std::move(source);
}

void SdlLine::allocate() {
    for (std::vector<float>& buffer : m_scratch)
        buffer.assign(chunkFrames, 0.0f);
}

bool SdlLine::isPlaying() const {
    const Lock lock(m_mutex);
    return m_playing;
}

int SdlLine::deviceFrames() const {
    const Lock lock(m_mutex);
    return m_device == 0 ? 0 : m_deviceFrames.load();
}

bool SdlLine::resume() {
    {
        const Lock lock(m_mutex);
        m_wanted = true;
        if (m_device == 0 || isLost())
            return false;
        play();
    }
    m_changed.notify_all();
    return true;
}

bool SdlLine::giveUp() {
    const Lock lock(m_mutex);
    m_wanted = false;
    return !m_playing;
}

void SdlLine::play() {
    SDL_PauseAudioDevice(m_device, 0);
    m_playing = true;
}

void SdlLine::pause() {
    {
        const Lock lock(m_mutex);
        m_wanted = false;
        m_playing = false;
        m_idleSince = Clock::now();
        if (m_device != 0)
            SDL_PauseAudioDevice(m_device, 1);
    }
    m_changed.notify_all();
}

bool SdlLine::end() {
    pause();
    Lock lock(m_mutex);
    m_ending = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, answerLimit, [this] { return m_ended; });
}

void SdlLine::keep() {
    Lock lock(m_mutex);
    while (!m_ending) {
        if (m_jobs.empty())
            look(lock);
        if (m_jobs.empty() && !m_ending)
            m_changed.wait_until(lock, nextLook());
        if (!m_jobs.empty()) {
            const std::function<void()> job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }
    release(lock);
    lock.unlock();
    quitAudio();
    // SDL keeps its last error for each thread, and forgets that of threads it did not start.
    SDL_TLSCleanup();
    lock.lock();
    m_ended = true;
    // Under the lock, because the waiting thread may end the process right after.
    m_changed.notify_all();
}

void SdlLine::look(Lock& lock) {
    if (m_playing && m_device != 0 && isLost()) {
        m_lostSince = Clock::now();
        if (const char* driver = SDL_GetCurrentAudioDriver())
            SDL_SetHint(SDL_HINT_AUDIODRIVER, driver);
        release(lock);
    }
    if (m_playing && m_device == 0)
        recover(lock);
    if (!m_playing && m_device != 0 && Clock::now() >= m_idleSince + idleLimit)
        release(lock);
}

SdlLine::Clock::time_point SdlLine::nextLook() const {
    if (m_playing)
        return Clock::now() + (m_device != 0 ? watchInterval : retryInterval);
    return m_device != 0 ? m_idleSince + idleLimit : Clock::now() + 1h;
}

void SdlLine::recover(Lock& lock) {
    const auto lostFor = Clock::now() - m_lostSince;
    lock.unlock();
    // Within one life of the subsystem SDL keeps to the devices that it found first.
    quitAudio();
    if (lostFor >= sameSystemLimit)
        SDL_ResetHint(SDL_HINT_AUDIODRIVER);
    SDL_AudioDeviceID device = 0;
    try {
        device = openDevice();
    } catch (const std::runtime_error&) {
        quitAudio();
    }
    lock.lock();
    m_device = device;
    m_idleSince = Clock::now();
    if (device == 0) {
        m_playing = m_playing && lostFor < recoveryLimit;
    } else if (m_playing) {
        play();
    }
    if (device != 0 || !m_playing)
        SDL_ResetHint(SDL_HINT_AUDIODRIVER);
}

void SdlLine::release(Lock& lock) {
    if (m_device == 0)
        return;
    // A lost device keeps calling back until it is closed.
    SDL_PauseAudioDevice(m_device, 1);
    const SDL_AudioDeviceID device = std::exchange(m_device, 0);
    lock.unlock();
    SDL_CloseAudioDevice(device);
    lock.lock();
}

double SdlLine::queryRate() {
    try {
        if (SDL_WasInit(SDL_INIT_AUDIO) == 0)
            initAudio();
        return defaultDeviceRate();
    } catch (const std::runtime_error&) {
        return 0;
    }
}

void SdlLine::open() {
    Lock lock(m_mutex);
    if (m_device != 0 && !isLost()) {
        // An earlier start, given up meanwhile, has come true.
        if (m_wanted)
            play();
        return;
    }
    release(lock);
    lock.unlock();
    // A recovery that a pause cut short has left only the lost sound system to be tried.
    SDL_ResetHint(SDL_HINT_AUDIODRIVER);
    const bool mayBeStale = SDL_WasInit(SDL_INIT_AUDIO) != 0;
    SDL_AudioDeviceID device = 0;
    try {
        device = openDevice();
    } catch (const std::runtime_error&) {
        quitAudio();
        if (!mayBeStale)
            throw;
        device = openDevice();
    }
    lock.lock();
    m_device = device;
    m_idleSince = Clock::now();
    // At once: a device that finds itself paused first takes a block or two of silence.
    if (m_wanted)
        play();
}

SdlLine::DeviceId SdlLine::openDevice() {
    if (SDL_WasInit(SDL_INIT_AUDIO) == 0)
        initAudio();
    if (!m_source || m_scratch[0].empty())
        throw std::runtime_error("The sound output has not been prepared");
    SDL_AudioSpec want{};
    want.freq = static_cast<int>(std::lround(m_format.sampleRate));
    want.format = AUDIO_F32SYS;
    want.channels = channelCount;
    want.samples = bufferFrames;
    want.callback = fill;
    want.userdata = this;
    SDL_AudioSpec have{};
    // No allowed changes: the core keeps its rate for life, SDL converts where the device differs.
    const SDL_AudioDeviceID device = SDL_OpenAudioDevice(nullptr, 0, &want, &have, 0);
    if (device == 0)
        throw std::runtime_error(SDL_GetError());
    m_deviceFrames = have.samples;
    return device;
}

bool SdlLine::isLost() const {
    return SDL_GetAudioDeviceStatus(m_device) == SDL_AUDIO_STOPPED;
}

void SdlLine::fill(void* line, Uint8* stream, int bytes) {
    auto& self = *static_cast<SdlLine*>(line);
    auto* out = reinterpret_cast<float*>(stream);
    std::size_t left = static_cast<std::size_t>(bytes) / (sizeof(float) * channelCount);
    const std::array<float*, channelCount> buffers = {self.m_scratch[0].data(),
                                                      self.m_scratch[1].data()};
    const float volume = self.m_volume.load(std::memory_order_relaxed);
    while (left > 0) {
        const std::size_t frames = std::min(left, chunkFrames);
        self.m_source(static_cast<std::uint32_t>(frames), buffers);
        for (std::size_t frame = 0; frame < frames; ++frame) {
            *out++ = buffers[0][frame] * volume;
            *out++ = buffers[1][frame] * volume;
        }
        left -= frames;
    }
}

} // namespace mossbit
