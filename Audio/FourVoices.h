#pragma once

#include "Audio/HighPass.h"
#include "Audio/RenderPattern.h"
#include "Audio/Voices.h"

#include <array>
#include <cstddef>
#include <span>

namespace mossbit {

/// Renders the chip's four voices side by side, four samples at a time, up to the next event: the
/// end of an envelope's stage or of a sweep. Every sample is what `Voice::nextSample`, the mix and
/// `HighPass::next` would give, bit for bit.
///
/// Returns how many samples it has written, a multiple of four: 0 if an event lies within the next
/// four, if the channels are not the chip's own four in their order, or if an oscillator would turn
/// more than once per sample.
std::size_t mixUndisturbed(std::array<Voice, 4>& voices, const RenderPattern& pattern,
                           float sampleRate, HighPass& highPass, std::span<float> into);

} // namespace mossbit
