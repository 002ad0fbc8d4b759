#pragma once

#include "Audio/ChipCore.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace mossbit {

/// What no renderer with the same samples can undercut: filter, clamp and convert a signal that is
/// already there. The filter is one chain of add, subtract and multiply per sample.
struct FilterFloor {
    static constexpr std::size_t blockFrames = 1024;

    float coefficient;
    std::vector<float> input;
    std::vector<std::int16_t> output = std::vector<std::int16_t>(blockFrames);

    explicit FilterFloor(float sampleRate) : coefficient(HighPass::coefficientFor(sampleRate)) {
        for (std::size_t i = 0; i < blockFrames; ++i)
            input.push_back(static_cast<float>(i % 100) / 200);
    }

    /// The same code whatever surrounds the call.
    [[gnu::noinline]] void renderBlock() {
        float x = 0;
        float y = 0;
        for (std::size_t i = 0; i < blockFrames; ++i) {
            y = coefficient * (y + input[i] - x);
            x = input[i];
            const float limited = y < 1 ? std::max(y, -1.0F) : 1.0F;
            output[i] = static_cast<std::int16_t>(limited * 32767);
        }
    }
};

} // namespace mossbit
