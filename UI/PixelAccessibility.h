#pragma once

namespace mossbit {

/// Lets assistive tools read and use the controls of this kit. Every control calls it before
/// anything can ask for it.
void installPixelAccessibility();

} // namespace mossbit
