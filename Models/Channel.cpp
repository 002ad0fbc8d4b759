#include "Models/Channel.h"

namespace mossbit {

std::string_view rawValue(ChannelKind kind) {
    constexpr std::array<std::string_view, 4> names = {"pulse1", "pulse2", "wave", "noise"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view rawValue(WavePreset preset) {
    constexpr std::array<std::string_view, 3> names = {"triangle", "soft", "hollow"};
    return names[static_cast<std::size_t>(preset)];
}

} // namespace mossbit
