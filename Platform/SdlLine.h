#pragma once

#include "Platform/AudioOutput.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace mossbit {

/// What the main thread, the keeper and the device's own thread share. Outlives the output where
/// the keeper hangs in a call.
class SdlLine {
public:
    /// Frames asked for per device buffer.
    static constexpr int bufferFrames = 1024;

    // Main thread.

    /// Lets the keeper answer `question` and waits for it, but not longer than `answerLimit`.
    /// Throws what the question throws.
    template <typename Answer>
    std::optional<Answer> ask(std::function<Answer()> question);

    void setSource(const AudioFormat& format, AudioOutput::Source source);
    void setVolume(float volume) { m_volume = volume; }
    void allocate();
    bool isPlaying() const;
    int deviceFrames() const;
    /// Lets an open device pull; false if none is open or it is lost. `open` then starts a new one.
    bool resume();
    /// Takes back a start that has not happened yet; false if it has.
    bool giveUp();
    void pause();
    /// Asks the keeper to end; false if it is still busy after `answerLimit`.
    bool end();

    // Keeper.

    void keep();
    double queryRate();
    /// Replaces the device by a new one, and plays if that is still wanted. Throws
    /// `std::runtime_error` with the system's description.
    void open();

private:
    static constexpr int channelCount = 2;
    /// How long the main thread waits for a sound system that does not answer.
    static constexpr std::chrono::seconds answerLimit{2};

    using Clock = std::chrono::steady_clock;
    /// SDL's own; 0 is none.
    using DeviceId = std::uint32_t;
    using Lock = std::unique_lock<std::mutex>;

    // Device thread.
    static void fill(void* line, std::uint8_t* stream, int bytes);

    /// Under the lock.
    void play();

    // Keeper. Those that take the lock release it during slow calls.
    void look(Lock& lock);
    void recover(Lock& lock);
    void release(Lock& lock);
    Clock::time_point nextLook() const;
    DeviceId openDevice();
    bool isLost() const;

    // Set before the first start, then only read.
    AudioFormat m_format;
    AudioOutput::Source m_source;
    // Device thread.
    std::array<std::vector<float>, channelCount> m_scratch;
    std::atomic<float> m_volume = 1.0f;
    std::atomic<int> m_deviceFrames = 0;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Guarded by the mutex.
    std::deque<std::function<void()>> m_jobs;
    /// Opened and closed by the keeper only; 0 while none is open.
    DeviceId m_device = 0;
    /// The last start has not been taken back, so `open` is to play.
    bool m_wanted = false;
    bool m_playing = false;
    bool m_ending = false;
    bool m_ended = false;
    /// When the device was paused or opened.
    Clock::time_point m_idleSince;
    Clock::time_point m_lostSince;
};

template <typename Answer>
std::optional<Answer> SdlLine::ask(std::function<Answer()> question) {
    // Shared with the keeper, which may still hold it when this call has given up.
    const auto task = std::make_shared<std::packaged_task<Answer()>>(std::move(question));
    auto answer = task->get_future();
    {
        const Lock lock(m_mutex);
        m_jobs.push_back([task] { (*task)(); });
    }
    m_changed.notify_all();
    if (answer.wait_for(answerLimit) != std::future_status::ready) {
        return std::nullopt;
    }
    return answer.get();
}

} // namespace mossbit
