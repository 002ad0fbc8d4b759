#include "Models/Uuid.h"

#include <cerrno>
#include <system_error>

#include <sys/random.h>
#include <unistd.h>
#include <uuid/uuid.h>

namespace mossbit {

namespace {
constexpr std::size_t textLength = 36;
}

Uuid Uuid::random() {
    // The system is asked for sixteen at once, the most that it gives.
    thread_local std::array<Uuid, 16> uuids;
    thread_local std::size_t next = uuids.size();
    if (next == uuids.size()) {
        if (::getentropy(uuids.data(), sizeof uuids) != 0)
            throw std::system_error(errno, std::generic_category(), "getentropy");
        next = 0;
    }
    Uuid uuid = uuids[next++];
    uuid.bytes[6] = 0x40 | (uuid.bytes[6] & 0x0F); // Version 4, random.
    uuid.bytes[8] = 0x80 | (uuid.bytes[8] & 0x3F); // The usual layout.
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
