#include "Services/ProjectStore.h"

#include <array>
#include <charconv>

namespace mossbit {

namespace {

void put(std::string& json, std::int64_t number) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    json.append(digits.data(), end);
}

/// As it is: every text of a project is one of our own names and needs no escapes.
void put(std::string& json, std::string_view text) {
    json += text;
}

template <typename... Parts>
void append(std::string& json, const Parts&... parts) {
    (put(json, parts), ...);
}

// Members are written in the alphabetical order of their names.

void appendNote(std::string& json, const Note& note) {
    append(json, "        {\n");
    append(json, "          \"id\" : \"", note.id.text(), "\",\n");
    append(json, "          \"length\" : ", note.length, ",\n");
    append(json, "          \"pitch\" : ", note.pitch, ",\n");
    append(json, "          \"start\" : ", note.start, ",\n");
    append(json, "          \"velocity\" : ", note.velocity, "\n");
    append(json, "        }");
}

void appendChannel(std::string& json, const Channel& channel) {
    append(json, "    {\n");
    append(json, "      \"duty\" : ", rawValue(channel.duty), ",\n");
    append(json, "      \"kind\" : \"", rawValue(channel.kind), "\",\n");
    append(json, "      \"muted\" : ", channel.muted ? "true" : "false", ",\n");
    append(json, "      \"notes\" : [");
    for (const Note& note : channel.notes) {
        append(json, &note == channel.notes.data() ? "\n" : ",\n");
        appendNote(json, note);
    }
    append(json, channel.notes.empty() ? "],\n" : "\n      ],\n");
    append(json, "      \"volume\" : ", channel.volume, ",\n");
    append(json, "      \"wave\" : \"", rawValue(channel.wave), "\"\n");
    append(json, "    }");
}

} // namespace

std::string ProjectStore::encode(const Project& project) {
    // A note takes up to about 180 bytes, all else about 1,000.
    std::size_t expectedSize = 1024;
    for (const Channel& channel : project.channels)
        expectedSize += channel.notes.size() * 180;
    std::string json;
    json.reserve(expectedSize);
    append(json, "{\n");
    append(json, "  \"bars\" : ", project.bars, ",\n");
    append(json, "  \"channels\" : [");
    for (const Channel& channel : project.channels) {
        append(json, &channel == project.channels.data() ? "\n" : ",\n");
        appendChannel(json, channel);
    }
    append(json, "\n  ],\n");
    append(json, "  \"grid\" : ", rawValue(project.grid), ",\n");
    append(json, "  \"loop\" : ", project.loop ? "true" : "false", ",\n");
    append(json, "  \"tempo\" : ", project.tempo, ",\n");
    append(json, "  \"version\" : ", project.version, "\n");
    append(json, "}");
    return json;
}

} // namespace mossbit
