#pragma once

namespace mossbit {

/// Lets assistive tools find the notes of the piano roll. The view calls it before
/// anything can ask for it.
void installPianoRollAccessibility();

} // namespace mossbit
