#include "Services/ProjectJson.h"

#include "Services/ProjectDrafts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace mossbit {

namespace {

/// What the parser calls. It keeps nothing but the project being built, so that a file cannot make
/// it take more memory than a project of that length, and does not recurse.
class ProjectReader {
public:
    // NOLINTBEGIN(readability-identifier-naming): the library's names.
    bool null() { return take({}); }
    bool boolean(bool flag) { return take({.kind = ValueKind::boolean, .boolean = flag}); }
    bool number_integer(std::int64_t number) {
        return take({.kind = ValueKind::wholeNumber, .number = number});
    }
    bool number_unsigned(std::uint64_t number) {
        return std::in_range<std::int64_t>(number)
                   ? number_integer(static_cast<std::int64_t>(number))
                   : take({.kind = ValueKind::hugeNumber});
    }
    bool number_float(double number, const std::string&) {
        // Digits alone arrive here as well where they are beyond 64 bits.
        if (number < -0x1p63 || number >= 0x1p63)
            return take({.kind = ValueKind::hugeNumber});
        return std::trunc(number) == number ? number_integer(static_cast<std::int64_t>(number))
                                            : take({.kind = ValueKind::fraction});
    }
    bool string(std::string& text) { return take({.kind = ValueKind::text, .text = text}); }
    /// Only other formats than text have these.
    bool binary(nlohmann::json::binary_t&) { return false; }

    bool key(std::string& name) {
        if (m_ignoredDepth == 0)
            m_key.swap(name);
        return true;
    }

    bool start_object(std::size_t) {
        if (m_ignoredDepth > 0 || !beginObject())
            ignore({.kind = ValueKind::object});
        return true;
    }

    bool start_array(std::size_t) {
        if (m_ignoredDepth > 0 || !beginList())
            ignore({.kind = ValueKind::list});
        return true;
    }

    bool end_object() {
        if (m_ignoredDepth > 0)
            --m_ignoredDepth;
        else
            endObject();
        return true;
    }

    bool end_array() {
        if (m_ignoredDepth > 0)
            --m_ignoredDepth;
        else
            endList();
        return true;
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::json::exception& error) {
        m_errorPosition = position;
        m_errorWords = error.what();
        return false;
    }

    // NOLINTEND(readability-identifier-naming)

    Member<Project> takeProject() { return std::move(m_result); }
    /// In bytes from 1.
    std::size_t errorPosition() const { return m_errorPosition; }
    const std::string& errorWords() const { return m_errorWords; }

private:
    /// Where the next value stands. The format has a fixed nesting, in this order.
    enum class Place { document, project, channelList, channel, noteList, note };

    void enter() { m_place = static_cast<Place>(static_cast<int>(m_place) + 1); }
    void leave() { m_place = static_cast<Place>(static_cast<int>(m_place) - 1); }

    void ignore(const Value& container) {
        take(container);
        ++m_ignoredDepth;
    }

    bool beginObject() {
        if (m_place == Place::document)
            m_project = {};
        else if (m_place == Place::channelList && !m_channels.isFaulty())
            m_channel = {};
        else if (m_place == Place::noteList && !m_notes.isFaulty())
            m_note = {};
        else
            return false;
        enter();
        return true;
    }

    void endObject() {
        if (m_place == Place::note)
            m_notes.add(m_note.finish());
        else if (m_place == Place::channel)
            m_channels.add(m_channel.finish());
        else
            m_result = m_project.finish();
        leave();
    }

    bool beginList() {
        if (m_place == Place::project && m_key == "channels")
            m_channels.begin();
        else if (m_place == Place::channel && m_key == "notes")
            m_notes.begin();
        else
            return false;
        enter();
        return true;
    }

    void endList() {
        if (m_place == Place::noteList)
            m_channel.notes = std::move(m_notes.list);
        else
            m_project.channels = std::move(m_channels.list);
        leave();
    }

    bool take(const Value& value) {
        if (m_ignoredDepth > 0)
            return true;
        switch (m_place) {
        case Place::document:
            m_result.fault = expected("an object", value).substr(2);
            break;
        case Place::project:
            m_project.take(m_key, value);
            break;
        case Place::channelList:
            if (!m_channels.isFaulty())
                m_channels.add(Member<Channel>{{}, expected("an object", value)});
            break;
        case Place::channel:
            m_channel.take(m_key, value);
            break;
        case Place::noteList:
            if (!m_notes.isFaulty())
                m_notes.add(Member<Note>{{}, expected("an object", value)});
            break;
        case Place::note:
            m_note.take(m_key, value);
            break;
        }
        return true;
    }

    Place m_place = Place::document;
    /// How many lists and objects that the format does not know are open.
    std::size_t m_ignoredDepth = 0;
    std::string m_key;
    ProjectDraft m_project;
    ListDraft<ChannelSet> m_channels;
    ChannelDraft m_channel;
    ListDraft<std::vector<Note>> m_notes;
    NoteDraft m_note;
    Member<Project> m_result;
    std::size_t m_errorPosition = 0;
    std::string m_errorWords;
};

/// "line 3, column 7: WHAT": lines and columns count from 1, columns in characters.
DecodingError syntaxError(std::string_view text, std::size_t index, const std::string& what) {
    const std::string_view before = text.substr(0, std::min(index, text.size()));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::string_view inLine = before.substr(before.rfind('\n') + 1);
    const auto column = 1 + std::count_if(inLine.begin(), inLine.end(), [](char c) {
                            constexpr unsigned continuationByte = 0b10;
                            return static_cast<unsigned char>(c) >> 6 != continuationByte;
                        });
    return DecodingError("line " + std::to_string(line) + ", column " + std::to_string(column) +
                         ": " + what);
}

/// What the library says about a fault: without its own name, position and state before, and after
/// without the text that it had read, which may be as long as the file.
std::string plainWords(const std::string& words) {
    constexpr std::string_view lead = " - ";
    const std::size_t start = words.find(lead);
    if (start == std::string::npos)
        return "a number is too large";
    const std::string fault = words.substr(start + lead.size());
    return fault.substr(0, fault.find("; last read: "));
}

} // namespace

Project decodeProject(std::string_view json) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (json.starts_with(byteOrderMark))
        json.remove_prefix(byteOrderMark.size());
    // The parser would take a zero for the end of the text. UTF-16 is full of them.
    if (const std::size_t zero = json.find('\0'); zero != std::string_view::npos)
        throw syntaxError(json, zero, "a zero byte; this is not UTF-8 text");
    ProjectReader reader;
    if (!nlohmann::json::sax_parse(json.begin(), json.end(), &reader))
        throw syntaxError(json, reader.errorPosition() - 1, plainWords(reader.errorWords()));
    Member<Project> project = reader.takeProject();
    if (!project.value)
        throw DecodingError(project.fault);
    return std::move(*project.value);
}

} // namespace mossbit
