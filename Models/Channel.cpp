#include "Models/Channel.h"

#include <algorithm>

namespace mossbit {

namespace {

template <typename Value, std::size_t count>
std::optional<Value> fromRawValue(const std::array<Value, count>& values, std::string_view raw) {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](Value value) { return rawValue(value) == raw; });
    return found == values.end() ? std::nullopt : std::optional(*found);
}

} // namespace

std::string_view rawValue(ChannelKind kind) {
    constexpr std::array<std::string_view, 4> names = {"pulse1", "pulse2", "wave", "noise"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view rawValue(WavePreset preset) {
    constexpr std::array<std::string_view, 3> names = {"triangle", "soft", "hollow"};
    return names[static_cast<std::size_t>(preset)];
}

std::optional<ChannelKind> channelKindFromRawValue(std::string_view raw) {
    return fromRawValue(allChannelKinds, raw);
}

std::optional<WavePreset> wavePresetFromRawValue(std::string_view raw) {
    return fromRawValue(allWavePresets, raw);
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
