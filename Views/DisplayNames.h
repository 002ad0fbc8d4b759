#pragma once

#include "Models/Project.h"

#include <QString>

#include <array>

namespace mossbit {

// What the window calls the values that files know by their raw values.

inline QString title(ChannelKind kind) {
    static constexpr std::array titles = {"PULSE 1", "PULSE 2", "WAVE", "NOISE"};
    return QString::fromLatin1(titles[static_cast<std::size_t>(kind)]);
}

inline QString title(Duty duty) {
    static constexpr std::array titles = {"12.5%", "25%", "50%", "75%"};
    return QString::fromLatin1(titles[static_cast<std::size_t>(duty)]);
}

inline QString title(WavePreset preset) {
    static constexpr std::array titles = {"TRIANGLE", "SOFT", "HOLLOW"};
    return QString::fromLatin1(titles[static_cast<std::size_t>(preset)]);
}

inline QString title(NoiseVoiceKind voice) {
    static constexpr std::array titles = {"KICK", "SNARE", "HAT", "NOISE"};
    return QString::fromLatin1(titles[static_cast<std::size_t>(voice)]);
}

inline QString title(GridDivision grid) {
    return QStringLiteral("1/%1").arg(ticksPerBar / rawValue(grid));
}

} // namespace mossbit
