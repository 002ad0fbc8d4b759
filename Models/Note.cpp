#include "Models/Note.h"

#include <array>
#include <string_view>

namespace mossbit::PitchRange {

namespace {

constexpr std::array<std::string_view, 12> names = {"C",  "C#", "D",  "D#", "E",  "F",
                                                    "F#", "G",  "G#", "A",  "A#", "B"};

std::string_view pitchClassName(std::int64_t pitch) {
    const std::int64_t remainder = pitch % 12;
    return names[static_cast<std::size_t>(remainder < 0 ? remainder + 12 : remainder)];
}

} // namespace

std::string name(std::int64_t pitch) {
    return std::string(pitchClassName(pitch)) + std::to_string(pitch / 12 - 1);
}

bool isBlackKey(std::int64_t pitch) {
    return pitchClassName(pitch).size() == 2;
}

} // namespace mossbit::PitchRange
