#pragma once

namespace mossbit {

/// Lets assistive tools find the notes of a piano roll; call this before one is shown.
void installPianoRollAccessibility();

} // namespace mossbit
