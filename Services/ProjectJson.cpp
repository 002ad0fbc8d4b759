#include "Services/ProjectJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <unordered_set>
#include <utility>

namespace mossbit {

namespace {

using nlohmann::json;

std::optional<std::int64_t> wholeNumberIn(const json& value) {
    // The library keeps whole numbers beyond 64 bits as floating-point ones.
    if (value.is_number_float()) {
        const auto number = value.get<double>();
        const bool isWhole = std::trunc(number) == number && number >= -0x1p63 && number < 0x1p63;
        return isWhole ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
    }
    if (value.is_number_unsigned() && !std::in_range<std::int64_t>(value.get<std::uint64_t>()))
        return std::nullopt;
    return value.is_number() ? std::optional(value.get<std::int64_t>()) : std::nullopt;
}

const char* kindOf(const json& value) {
    if (value.is_null())
        return "null";
    if (value.is_boolean())
        return "true or false";
    if (value.is_string())
        return "a string";
    if (value.is_array())
        return "a list";
    if (value.is_object())
        return "an object";
    if (wholeNumberIn(value))
        return "a whole number";
    return std::abs(value.get<double>()) < 0x1p63 ? "a fraction" : "a number that is too large";
}

/// A value of the file with its place, which errors name. A missing member is null. Reading a value
/// of the wrong kind throws `DecodingError`, and so does a missing one without a fallback.
class Value {
public:
    explicit Value(const json& document) : m_json(document) {}

    /// A member of an object.
    Value operator[](const char* name) const {
        static const json missing;
        if (!m_json.is_object())
            throw unexpected("an object");
        const auto found = m_json.find(name);
        return {found == m_json.end() ? missing : *found, this, name, 0};
    }

    /// Calls `read` with each element of a list.
    template <typename Read>
    void forEach(Read read) const {
        if (!m_json.is_null() && !m_json.is_array())
            throw unexpected("a list");
        for (std::size_t index = 0; index < m_json.size(); ++index)
            read(Value(m_json[index], this, nullptr, index));
    }

    std::int64_t wholeNumber(std::optional<std::int64_t> fallback = {}) const {
        const auto number = m_json.is_null() ? fallback : wholeNumberIn(m_json);
        return number ? *number : throw unexpected("a whole number");
    }

    bool boolean(bool fallback) const {
        if (m_json.is_null())
            return fallback;
        return m_json.is_boolean() ? m_json.get<bool>() : throw unexpected("true or false");
    }

    /// A new identifier for a missing one.
    Uuid uuid() const {
        if (m_json.is_null())
            return Uuid::random();
        const auto* const text = m_json.get_ptr<const std::string*>();
        const auto uuid = text ? Uuid::parse(*text) : std::nullopt;
        return uuid ? *uuid : throw unexpected("a UUID", text ? " that is none" : "");
    }

    /// The case with this raw value; `names` lists the raw values for the user.
    template <typename Case, std::size_t count>
    Case oneOf(const std::array<Case, count>& cases, const char* names,
               std::optional<Case> fallback = {}) const {
        if (m_json.is_null() && fallback)
            return *fallback;
        for (const Case each : cases) {
            if (m_json == json(rawValue(each)))
                return each;
        }
        const bool wantsString = json(rawValue(cases[0])).is_string();
        if (wantsString && m_json.is_string())
            throw unexpected(names, " that is none");
        const auto number = wantsString ? std::nullopt : wholeNumberIn(m_json);
        throw unexpected(names, number ? ", " + std::to_string(*number) : "");
    }

private:
    Value(const json& content, const Value* parent, const char* name, std::size_t index)
        : m_json(content), m_parent(parent), m_name(name), m_index(index) {}

    DecodingError unexpected(const char* expected, const std::string& detail = {}) const {
        const std::string where = m_parent ? place() + ": " : "";
        if (m_json.is_null() && m_name)
            return DecodingError(where + "missing");
        return DecodingError(where + "expected " + expected + ", found " + kindOf(m_json) + detail);
    }

    /// "channels[2].notes[17].pitch"; empty for the whole document.
    std::string place() const {
        const std::string outer = m_parent ? m_parent->place() : "";
        if (m_name)
            return outer.empty() ? m_name : outer + "." + m_name;
        return m_parent ? outer + "[" + std::to_string(m_index) + "]" : "";
    }

    const json& m_json;
    const Value* m_parent = nullptr;
    /// The member's name; null for an element of a list.
    const char* m_name = nullptr;
    std::size_t m_index = 0;
};

Note readNote(const Value& value) {
    return {.id = value["id"].uuid(),
            .pitch = value["pitch"].wholeNumber(),
            .start = value["start"].wholeNumber(),
            .length = std::max<std::int64_t>(value["length"].wholeNumber(), 1),
            .velocity = value["velocity"].wholeNumber(highestVelocity)};
}

Channel readChannel(const Value& value) {
    // Not a new project's channel of that kind: what is left out has the same default in each.
    Channel channel;
    channel.kind = value["kind"].oneOf(allChannelKinds, R"("pulse1", "pulse2", "wave" or "noise")");
    channel.volume =
        std::clamp<std::int64_t>(value["volume"].wholeNumber(channel.volume), 0, highestVolume);
    channel.muted = value["muted"].boolean(channel.muted);
    channel.duty = value["duty"].oneOf(allDuties, "0, 1, 2 or 3", {channel.duty});
    channel.wave =
        value["wave"].oneOf(allWavePresets, R"("triangle", "soft" or "hollow")", {channel.wave});
    value["notes"].forEach([&](const Value& note) { channel.notes.push_back(readNote(note)); });
    return channel;
}

/// Two notes with one identifier, as after copying by hand, would be moved and deleted as one.
void makeIdentifiersUnique(Project& project) {
    std::unordered_set<Uuid> taken;
    for (Channel& channel : project.channels) {
        for (Note& note : channel.notes) {
            while (!taken.insert(note.id).second)
                note.id = Uuid::random();
        }
    }
}

Project readProject(const Value& value) {
    Project project;
    project.version = value["version"].wholeNumber(project.version);
    project.tempo =
        std::clamp(value["tempo"].wholeNumber(project.tempo), lowestTempo, highestTempo);
    const std::int64_t bars = value["bars"].wholeNumber(project.bars);
    if (std::find(allBarCounts.begin(), allBarCounts.end(), bars) != allBarCounts.end())
        project.bars = bars;
    project.grid = value["grid"].oneOf(allGridDivisions, "1, 2 or 4", {project.grid});
    project.loop = value["loop"].boolean(project.loop);
    std::array<bool, allChannelKinds.size()> isRead{};
    value["channels"].forEach([&](const Value& element) {
        Channel channel = readChannel(element);
        const auto index = static_cast<std::size_t>(channel.kind);
        if (!std::exchange(isRead[index], true))
            project.channels[index] = std::move(channel);
    });
    project.clampNotes();
    makeIdentifiersUnique(project);
    return project;
}

/// "line 3, column 7: WHAT": lines and columns count from 1, columns in characters.
DecodingError syntaxError(std::string_view before, const std::string& what) {
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    before.remove_prefix(before.rfind('\n') + 1);
    const auto column = 1 + std::count_if(before.begin(), before.end(), [](unsigned char byte) {
                            constexpr unsigned continuationByte = 0b10;
                            return byte >> 6U != continuationByte;
                        });
    return DecodingError("line " + std::to_string(line) + ", column " + std::to_string(column) +
                         ": " + what);
}

/// What is wrong at the start of `rest`. Not the library's words, which change with its versions
/// and may repeat the whole file.
std::string unexpectedInput(std::string_view rest) {
    if (rest.empty())
        return "unexpected end of input";
    const auto byte = static_cast<unsigned char>(rest.front());
    std::array<char, 32> words{};
    std::snprintf(words.data(), words.size(),
                  byte > ' ' && byte < 0x7F ? "unexpected '%c'" : "unexpected byte %02X", byte);
    return words.data();
}

} // namespace

Project decodeProject(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    // The parser would take a zero for the end of the text. UTF-16 is full of them.
    if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos)
        throw syntaxError(text.substr(0, zero), "a zero byte; this is not UTF-8 text");
    try {
        const json document = json::parse(text);
        return readProject(Value(document));
    } catch (const json::parse_error& error) {
        const std::size_t position = std::min(error.byte - 1, text.size());
        throw syntaxError(text.substr(0, position), unexpectedInput(text.substr(position)));
    } catch (const json::out_of_range&) {
        throw DecodingError("a number is too large");
    }
}

} // namespace mossbit
