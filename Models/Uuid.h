#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace mossbit {

/// A 128-bit identifier, in the byte order of its text form.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    /// A new random (version 4) identifier. Throws `std::system_error` where the system gives no
    /// random bytes.
    static Uuid random();

    /// Reads the 36-character form, in either case; nothing for any other text.
    static std::optional<Uuid> parse(std::string_view text);

    /// The 36-character form "8-4-4-4-12", in upper case.
    std::string text() const;

    bool operator==(const Uuid&) const = default;
};

} // namespace mossbit

template <>
struct std::hash<mossbit::Uuid> {
    std::size_t operator()(const mossbit::Uuid& uuid) const noexcept {
        return std::hash<std::string_view>{}(
            {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
    }
};
