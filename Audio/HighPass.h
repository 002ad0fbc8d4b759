#pragma once

#include <cmath>
#include <limits>

namespace mossbit {

/// A one-pole 20 Hz high-pass filter: takes out the constant part that pulses and waves carry.
struct HighPass {
    /// Time constant of 20 Hz, in seconds: 1 / (2π · 20).
    static constexpr float time = 0.007957748F;

    static constexpr float coefficientFor(float sampleRate) {
        return time / (1.0F / sampleRate + time);
    }

    float coefficient;
    /// The last input and output.
    float x = 0;
    float y = 0;

    float next(float input) {
        y = coefficient * (y + input - x);
        x = input;
        // After silence the output would shrink to the smallest denormal and stay there, at many
        // times the cost of a sample on some processors.
        if (std::abs(y) < std::numeric_limits<float>::min())
            y = 0;
        return y;
    }
};

} // namespace mossbit
