#include "Models/Uuid.h"

#include <uuid/uuid.h>

namespace mossbit {

namespace {
constexpr std::size_t textLength = 36;
}

Uuid Uuid::random() {
    Uuid uuid;
    uuid_generate_random(uuid.bytes.data());
    return uuid;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    // A fixed buffer: the library reads to the terminating zero, and its length check would let
    // a text with a zero inside pass as the shorter one.
    if (text.size() != textLength || text.find('\0') != std::string_view::npos)
        return std::nullopt;
    const std::string terminated(text);
    Uuid uuid;
    if (uuid_parse(terminated.c_str(), uuid.bytes.data()) != 0)
        return std::nullopt;
    return uuid;
}

std::string Uuid::text() const {
    std::array<char, textLength + 1> buffer{};
    uuid_unparse_upper(bytes.data(), buffer.data());
    return {buffer.data(), textLength};
}

} // namespace mossbit
