#pragma once

#include "Views/DisplayNames.h"

#include <QCoreApplication>

namespace mossbit {

// Notes and their places in words.

/// "C#4", or the drum's name.
inline QString pitchName(std::int64_t pitch, bool isNoise) {
    return isNoise ? title(static_cast<NoiseVoiceKind>(pitch)).toLower()
                   : QString::fromStdString(PitchRange::name(pitch));
}

/// "bar 2, beat 3, 2nd sixteenth".
inline QString tickName(std::int64_t tick) {
    static constexpr std::array ordinals = {"1st", "2nd", "3rd", "4th"};
    return QCoreApplication::translate("mossbit::NoteNames", "bar %1, beat %2, %3 sixteenth")
        .arg(tick / ticksPerBar + 1)
        .arg(tick % ticksPerBar / ticksPerBeat + 1)
        .arg(QLatin1String(ordinals[static_cast<std::size_t>(tick % ticksPerBeat)]));
}

/// In sixteenths.
inline QString lengthName(std::int64_t length) {
    return QCoreApplication::translate("mossbit::NoteNames", "length %1").arg(length);
}

} // namespace mossbit
