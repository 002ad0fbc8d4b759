#pragma once

#include "Audio/HighPass.h"
#include "Audio/LockedBox.h"
#include "Audio/RenderPattern.h"
#include "Audio/Voices.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

namespace mossbit {

/// The sequencer and the mixer: turns a pattern into mono samples. One core plays live, another
/// one renders each export; both give the same samples, however the rendering is split into calls.
class ChipCore {
public:
    /// `pattern` is not null, `sampleRate` in Hz and above 0.
    ChipCore(std::shared_ptr<const RenderPattern> pattern, double sampleRate);

    // Audio thread.

    /// Fills `into` with the next samples, −1 … 1. Allocates, frees and logs nothing.
    void render(std::span<float> into) noexcept;

    // Main thread. The audio thread may be rendering meanwhile.

    /// Replaces the pattern from the next render call on; the position stays.
    void update(std::shared_ptr<const RenderPattern> pattern);

    /// Back to before tick 0, all voices silent, the filter at rest, not finished any more.
    void rewind();

    /// All voices silent at once; position and filter stay.
    void silence();

    /// The tick being played; −1 before the first, once finished, and from `silence` to the next
    /// render call.
    std::int64_t publishedTick() const;

    /// Whether a pattern that does not loop has ended and every voice has faded out.
    bool isFinished() const;

private:
    /// The pattern for the next render call or, once that has taken it, the one played before: the
    /// main thread drops what it finds here, which keeps `free` off the audio thread.
    struct NextPattern {
        std::shared_ptr<const RenderPattern> pattern;
        bool isNew = false;
    };

    /// What a render call tells the main thread.
    struct Report {
        std::int64_t tick = -1;
        bool finished = false;
    };

    // Audio thread.
    void takeOrders();
    void advanceTick();
    void mix(std::span<float> into);
    float nextSample();

    const double m_sampleRate;
    LockedBox<NextPattern> m_storage{{}};
    mutable LockedBox<Report> m_tickBox{{}};
    // Orders for the next render call, given while the tick's box is locked.
    std::atomic<bool> m_rewindOrdered = false;
    std::atomic<bool> m_silenceOrdered = false;

    // Audio thread.
    std::array<Voice, 4> m_voices;
    std::shared_ptr<const RenderPattern> m_pattern;
    std::int64_t m_currentTick = -1;
    /// Samples until the next tick starts, with its fraction.
    double m_samplesToNextTick = 0;
    bool m_finished = false;
    HighPass m_highPass;
};

} // namespace mossbit
