#include "Models/Uuid.h"

#include <cerrno>
#include <charconv>
#include <system_error>

#include <sys/random.h>
#include <unistd.h>

namespace mossbit {

namespace {

/// An X for each hexadecimal digit.
constexpr std::string_view form = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";

} // namespace

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
    if (text.size() != form.size())
        return std::nullopt;
    Uuid uuid;
    std::size_t at = 0;
    for (std::uint8_t& byte : uuid.bytes) {
        if (form[at] == '-' && text[at++] != '-')
            return std::nullopt;
        const char* const end = text.data() + at + 2;
        if (std::from_chars(text.data() + at, end, byte, 16).ptr != end)
            return std::nullopt;
        at += 2;
    }
    return uuid;
}

std::string Uuid::text() const {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text(form);
    std::size_t at = 0;
    for (const std::uint8_t byte : bytes) {
        if (form[at] == '-')
            ++at;
        text[at++] = digits[byte >> 4];
        text[at++] = digits[byte & 15];
    }
    return text;
}

} // namespace mossbit
