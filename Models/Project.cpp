#include "Models/Project.h"

#include <algorithm>

namespace mossbit {

namespace {

bool isPlayable(const Note& note, ChannelKind kind) {
    if (kind == ChannelKind::noise)
        return note.pitch >= 0 && note.pitch < std::ssize(allNoiseVoiceKinds);
    return note.pitch >= PitchRange::lowest && note.pitch <= PitchRange::highest;
}

} // namespace

std::vector<Channel> Project::defaultChannels() {
    return {{.kind = ChannelKind::pulse1},
            {.kind = ChannelKind::pulse2, .duty = Duty::d25},
            {.kind = ChannelKind::wave},
            {.kind = ChannelKind::noise, .volume = 13}};
}

bool Project::hasNotes() const {
    return std::ranges::any_of(channels,
                               [](const auto& channel) { return !channel.notes.empty(); });
}

void Project::clampNotes() {
    const std::int64_t total = totalTicks();
    for (Channel& channel : channels) {
        for (Note& note : channel.notes) {
            note.start = std::max<std::int64_t>(note.start, 0);
            note.length = std::max<std::int64_t>(std::min(note.length, total - note.start), 1);
        }
        std::erase_if(channel.notes, [&](const Note& note) {
            return note.start >= total || !isPlayable(note, channel.kind);
        });
    }
}

} // namespace mossbit
