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

Channel Channel::makeDefault(ChannelKind kind) {
    Channel channel;
    channel.kind = kind;
    if (kind == ChannelKind::noise)
        channel.volume = 13;
    if (kind == ChannelKind::pulse2)
        channel.duty = Duty::d25;
    return channel;
}

} // namespace mossbit
