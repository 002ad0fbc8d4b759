#pragma once

#include "Audio/ChipCore.h"

#include <memory>
#include <vector>

namespace mossbit {

inline std::shared_ptr<const RenderPattern> compiled(const Project& project) {
    return std::make_shared<const RenderPattern>(project);
}

/// The core's next samples.
inline std::vector<float> rendered(ChipCore& core, std::size_t frames) {
    std::vector<float> samples(frames);
    core.render(samples);
    return samples;
}

} // namespace mossbit
