#pragma once

#include "UI/PixelPainter.h"
#include "Views/PianoRollGeometry.h"

#include <unordered_set>

namespace mossbit {

/// Paints the piano roll's grid with every layer, from the back to the front. `pixels` works in the
/// grid's points; `exposed` is the part to paint, in device pixels, and the cost follows it. The
/// background is opaque, so that painting twice is painting once.
void paintPianoRoll(PixelPainter& pixels, const PianoRollGeometry& geometry, const QRect& exposed,
                    const Project& project, int channelIndex,
                    const std::unordered_set<Uuid>& selection, std::int64_t playheadTick);

} // namespace mossbit
