#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace mossbit {

// Four numbers calculated at once, on every processor with 128-bit vectors. Each lane rounds as a
// single number would. A comparison gives −1 in every lane where it holds, else 0.
using Floats = float __attribute__((vector_size(16)));
using Ints = std::int32_t __attribute__((vector_size(16)));

inline Floats all(float value) {
    return Floats{value, value, value, value};
}

/// Whether a comparison holds in any lane.
inline bool any(Ints comparison) {
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(comparison);
    return (halves[0] | halves[1]) != 0;
}

/// `value` where the comparison holds, else 0.
inline Floats where(Ints comparison, Floats value) {
    return std::bit_cast<Floats>(std::bit_cast<Ints>(value) & comparison);
}

/// `value`, negated in the lanes where the top bit of `signs` is set.
inline Floats withSigns(Floats value, Ints signs) {
    constexpr std::int32_t topBit = std::numeric_limits<std::int32_t>::min();
    return std::bit_cast<Floats>(std::bit_cast<Ints>(value) ^ (signs & topBit));
}

inline Floats magnitude(Floats value) {
    constexpr std::int32_t allButSign = std::numeric_limits<std::int32_t>::max();
    return std::bit_cast<Floats>(std::bit_cast<Ints>(value) & allButSign);
}

/// A number below 65536, or the outcome of a comparison as 0 or 65535, out of one lane: 16 bits
/// leave a vector in one step where 32 take two.
inline unsigned lowBits(Ints lanes, std::size_t lane) {
    using Halves = std::uint16_t __attribute__((vector_size(16)));
    constexpr std::size_t low = std::endian::native == std::endian::little ? 0 : 1;
    return std::bit_cast<Halves>(lanes)[2 * lane + low];
}

/// Four vectors of four; `transposed` turns its rows into columns.
using Square = std::array<Floats, 4>;

inline Square transposed(const Square& rows) {
    const Floats low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const Floats high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const Floats low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const Floats high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    return {__builtin_shufflevector(low01, low23, 0, 1, 4, 5),
            __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
            __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
            __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
}

} // namespace mossbit
