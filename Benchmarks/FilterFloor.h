#pragma once

#include "Audio/ChipCore.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace mossbit {

/// What no renderer with the same samples can undercut: filter, clamp and convert a signal that is
/// already there. The filter is one chain of add, subtract and multiply per sample.
class FilterFloor {
public:
    explicit FilterFloor(float sampleRate) : m_coefficient(HighPass::coefficientFor(sampleRate)) {
        for (std::size_t i = 0; i < m_input.size(); ++i)
            m_input[i] = static_cast<float>(i % 100) / 200;
    }

    static constexpr std::size_t blockFrames = 1024;

    // The same code for everyone, whatever surrounds the call.
    [[gnu::noinline]] const std::vector<std::int16_t>& nextBlock() {
        float x = m_x;
        float y = m_y;
        for (std::size_t i = 0; i < blockFrames; ++i) {
            y = m_coefficient * (y + m_input[i] - x);
            x = m_input[i];
            m_output[i] = converted(y);
        }
        m_x = x;
        m_y = y;
        return m_output;
    }

private:
    static std::int16_t converted(float sample) {
        return static_cast<std::int16_t>((sample < 1 ? std::max(sample, -1.0F) : 1.0F) * 32767);
    }

    float m_coefficient;
    float m_x = 0;
    float m_y = 0;
    std::vector<float> m_input = std::vector<float>(blockFrames);
    std::vector<std::int16_t> m_output = std::vector<std::int16_t>(blockFrames);
};

} // namespace mossbit
