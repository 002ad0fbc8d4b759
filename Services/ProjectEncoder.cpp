#include "Services/ProjectStore.h"

#include <array>
#include <charconv>
#include <concepts>

namespace mossbit {

namespace {

/// Writes pretty-printed JSON. Texts are written as they are: every text of a project is one of our
/// own names and needs no escapes.
class JsonWriter {
public:
    explicit JsonWriter(std::size_t expectedSize) { m_out.reserve(expectedSize); }

    void open(char bracket) {
        m_out += bracket;
        ++m_level;
        m_isFirst = true;
    }

    void close(char bracket) {
        --m_level;
        if (!m_isFirst)
            startLine();
        m_out += bracket;
        m_isFirst = false;
    }

    /// Starts the next element of a list.
    void element() {
        if (!m_isFirst)
            m_out += ',';
        m_isFirst = false;
        startLine();
    }

    /// Starts the next member of an object.
    void key(std::string_view name) {
        element();
        value(name);
        m_out += " : ";
    }

    void value(std::string_view text) {
        m_out += '"';
        m_out += text;
        m_out += '"';
    }

    void value(std::same_as<bool> auto flag) { m_out += flag ? "true" : "false"; }

    void value(std::int64_t number) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        m_out.append(digits.data(), end);
    }

    template <typename Value>
    void member(std::string_view name, Value content) {
        key(name);
        value(content);
    }

    std::string take() { return std::move(m_out); }

private:
    void startLine() {
        m_out += '\n';
        m_out.append(m_level * 2, ' ');
    }

    std::string m_out;
    std::size_t m_level = 0;
    bool m_isFirst = true;
};

// Members are written in the alphabetical order of their names.

void write(JsonWriter& json, const Note& note) {
    json.open('{');
    json.member("id", std::string_view(note.id.text()));
    json.member("length", note.length);
    json.member("pitch", note.pitch);
    json.member("start", note.start);
    json.member("velocity", note.velocity);
    json.close('}');
}

template <typename Element>
void write(JsonWriter& json, const std::vector<Element>& elements) {
    json.open('[');
    for (const Element& element : elements) {
        json.element();
        write(json, element);
    }
    json.close(']');
}

void write(JsonWriter& json, const Channel& channel) {
    json.open('{');
    json.member("duty", rawValue(channel.duty));
    json.member("kind", rawValue(channel.kind));
    json.member("muted", channel.muted);
    json.key("notes");
    write(json, channel.notes);
    json.member("volume", channel.volume);
    json.member("wave", rawValue(channel.wave));
    json.close('}');
}

} // namespace

std::string ProjectStore::encode(const Project& project) {
    // A note takes up to about 180 bytes, all else about 1,000.
    std::size_t expectedSize = 1024;
    for (const Channel& channel : project.channels)
        expectedSize += channel.notes.size() * 180;
    JsonWriter json(expectedSize);
    json.open('{');
    json.member("bars", project.bars);
    json.key("channels");
    write(json, project.channels);
    json.member("grid", rawValue(project.grid));
    json.member("loop", project.loop);
    json.member("tempo", project.tempo);
    json.member("version", project.version);
    json.close('}');
    return json.take();
}

} // namespace mossbit
