#include "Audio/RenderPattern.h"

#include "Audio/Voices.h"

#include <algorithm>
#include <array>

namespace mossbit {

namespace {

/// In the order of `Duty`.
constexpr std::array dutyFractions = {0.125F, 0.25F, 0.5F, 0.75F};

RenderEvent compile(const Note& note, std::int64_t totalTicks) {
    const std::int64_t length = std::max<std::int64_t>(note.length, 1);
    // Compared as lengths first: the sum may not fit 64 bits.
    const bool runsPastEnd = note.start >= 0 && length >= totalTicks - note.start;
    const auto velocity = std::clamp<std::int64_t>(note.velocity, 0, highestVelocity);
    return {.start = note.start,
            .end = runsPastEnd ? totalTicks : std::min(note.start + length, totalTicks),
            .pitch = note.pitch,
            .velocity = static_cast<float>(velocity) / 15.0F};
}

} // namespace

RenderChannel::RenderChannel(const Channel& channel, std::int64_t totalTicks)
    : kind(channel.kind),
      level(static_cast<float>(channel.volume) / 15.0F),
      muted(channel.muted),
      duty(dutyFractions[static_cast<std::size_t>(channel.duty)]),
      table(kind == ChannelKind::wave ? waveTable(channel.wave) : std::vector<float>()),
      startAtTick(static_cast<std::size_t>(totalTicks), -1) {
    events.reserve(channel.notes.size());
    for (const Note& note : channel.notes) {
        if (note.start < totalTicks)
            events.push_back(compile(note, totalTicks));
    }
    // Stable: of several notes on one tick the one stored last must come last.
    std::ranges::stable_sort(events, {}, &RenderEvent::start);
    for (std::size_t k = 0; k < events.size(); ++k) {
        if (events[k].start >= 0)
            startAtTick[static_cast<std::size_t>(events[k].start)] = static_cast<std::int64_t>(k);
    }
}

RenderPattern::RenderPattern(const Project& project)
    : tempo(static_cast<double>(project.tempo)),
      totalTicks(std::max<std::int64_t>(project.totalTicks(), 1)),
      loop(project.loop) {
    channels.reserve(project.channels.size());
    for (const Channel& channel : project.channels)
        channels.emplace_back(channel, totalTicks);
}

} // namespace mossbit
