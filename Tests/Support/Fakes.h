#pragma once

#include "Platform/AudioOutput.h"
#include "Platform/Dialogs.h"
#include "Platform/MainLoop.h"
#include "Platform/PosixAtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace mossbit {

/// A main loop in virtual time: nothing happens until a test moves the clock.
class FakeMainLoop : public MainLoop {
public:
    using Seconds = std::chrono::duration<double>;

    [[nodiscard]] std::unique_ptr<Task> after(std::chrono::milliseconds delay,
                                              std::function<void()> action) override {
        return std::make_unique<Timer>(*this, delay, std::move(action));
    }

    /// Moves the clock and runs what becomes due, in order.
    void advance(Seconds duration) {
        const Seconds end = m_now + duration;
        for (;;) {
            const auto next = std::ranges::min_element(m_pending, {}, &Timer::due);
            // Half a microsecond of slack: sums of sixtieths are not exact.
            if (next == m_pending.end() || (*next)->due > end + Seconds(5e-7))
                break;
            m_now = std::max(m_now, (*next)->due);
            // A copy, as it may destroy its timer.
            const std::function<void()> action = (*next)->action;
            m_pending.erase(next);
            action();
        }
        m_now = end;
    }

    std::size_t pendingCount() const { return m_pending.size(); }

private:
    struct Timer : Task {
        Timer(FakeMainLoop& owner, Seconds delay, std::function<void()> work)
            : loop(owner), due(owner.m_now + delay), action(std::move(work)) {
            loop.m_pending.push_back(this);
        }
        ~Timer() override { std::erase(loop.m_pending, this); }

        FakeMainLoop& loop;
        Seconds due;
        std::function<void()> action;
    };

    Seconds m_now{0};
    std::vector<Timer*> m_pending;
};

/// Answers dialogs from a script and records what they showed. A dialog that the script does not
/// expect is cancelled, and recorded all the same.
class FakeDialogs : public Dialogs {
public:
    using Path = std::optional<std::filesystem::path>;

    std::deque<std::size_t> alertAnswers;
    std::deque<Path> saveAnswers;
    std::deque<Path> openAnswers;
    /// Every dialog in turn: "alert MESSAGE", "save NAME", "save wav NAME" or "open".
    std::vector<std::string> shown;
    Alert lastAlert;
    /// Runs while a dialog is up.
    std::function<void()> meanwhile;

    std::size_t runAlert(const Alert& alert) override {
        lastAlert = alert;
        return answer("alert " + alert.message, alertAnswers, std::size_t{2});
    }

    Path runSavePanel(FileKind kind, const std::filesystem::path& proposal) override {
        const char* const panel = kind == FileKind::wav ? "save wav " : "save ";
        return answer(panel + proposal.filename().string(), saveAnswers, Path());
    }

    Path runOpenPanel() override { return answer("open", openAnswers, Path()); }

    /// What was shown since the last call.
    std::vector<std::string> takeShown() { return std::exchange(shown, {}); }

private:
    template <typename Answer>
    Answer answer(std::string description, std::deque<Answer>& script, Answer otherwise) {
        shown.push_back(std::move(description));
        if (meanwhile)
            std::exchange(meanwhile, nullptr)();
        if (script.empty())
            return otherwise;
        Answer next = std::move(script.front());
        script.pop_front();
        return next;
    }
};

/// A sound device without sound, whose blocks a test pulls by hand.
class FakeAudioOutput : public AudioOutput {
public:
    // What the device is like.
    double rate = 48000;
    /// Not empty: `start` fails with these words.
    std::string startError;

    /// At which the source was set.
    double sourceRate = 0;

    double sampleRate() override { return rate; }

    void setSource(double sampleRate, Source source) override {
        sourceRate = sampleRate;
        m_source = std::move(source);
    }

    bool isRunning() const override { return m_running; }

    void start() override {
        if (!startError.empty())
            throw std::runtime_error(startError);
        m_running = true;
    }

    /// Also where the device goes away.
    void stop() override { m_running = false; }

    void pullInto(std::span<float> block) { m_source(block); }

    /// The next samples.
    std::vector<float> pull(std::size_t frames) {
        std::vector<float> samples(frames, 9);
        m_source(samples);
        return samples;
    }

private:
    Source m_source;
    bool m_running = false;
};

/// The real calls, for a disk that fails: `fault` is asked before each one, by its name, for the
/// error number that it ends with. At 0 it is made.
inline PosixFileCalls faultyCalls(const std::function<int(const std::string& call)>& fault) {
    const auto faulty = [&](const char* name, auto call) {
        return [=](auto... arguments) {
            errno = fault(name);
            return errno == 0 ? call(arguments...) : -1;
        };
    };
    const PosixFileCalls real = PosixFileCalls::real();
    return {.open = faulty("open", real.open),
            .write = faulty("write", real.write),
            .sync = faulty("sync", real.sync),
            .rename = faulty("rename", real.rename)};
}

} // namespace mossbit
