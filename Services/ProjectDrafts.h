#pragma once

#include "Models/Project.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The objects of a project file while their members arrive one by one.
namespace mossbit {

enum class ValueKind { null, boolean, wholeNumber, fraction, hugeNumber, text, list, object };

/// A value as it comes from the parser; of lists and objects only that they begin.
struct Value {
    ValueKind kind = ValueKind::null;
    bool boolean = false;
    std::int64_t number = 0;
    std::string_view text = {};
};

/// A member of an object being read. Of several members with one name the last counts, whole or
/// faulty, so a fault is kept until the object ends.
template <typename T>
struct Member {
    std::optional<T> value;
    /// What is wrong, in words that follow the member's name: ": expected …" or "[3].pitch: …".
    std::string fault;
};

// Of the three drafts, `take` keeps the member of that name, or what is wrong with it, and passes
// over names that the format does not know; `finish` gives the whole or the first fault.

struct NoteDraft {
    Member<Uuid> id;
    Member<std::int64_t> pitch, start, length, velocity;

    void take(std::string_view name, const Value& value);
    Member<Note> finish();
};

struct ChannelDraft {
    Member<ChannelKind> kind;
    Member<std::int64_t> volume;
    Member<bool> muted;
    Member<Duty> duty;
    Member<WavePreset> wave;
    Member<std::vector<Note>> notes;

    void take(std::string_view name, const Value& value);
    Member<Channel> finish();
};

/// By kind: the first channel of each.
using ChannelSet = std::array<std::optional<Channel>, allChannelKinds.size()>;

struct ProjectDraft {
    Member<std::int64_t> version, tempo, bars;
    Member<GridDivision> grid;
    Member<bool> loop;
    Member<ChannelSet> channels;

    void take(std::string_view name, const Value& value);
    Member<Project> finish();
};

void append(Note&& note, std::vector<Note>& notes);
void append(Channel&& channel, ChannelSet& channels);

/// A list being read. After a faulty element the rest is read past.
template <typename List>
struct ListDraft {
    Member<List> list;
    std::size_t index = 0;

    void begin() {
        list = {};
        list.value.emplace();
        index = 0;
    }

    template <typename Element>
    void add(Member<Element>&& element) {
        if (element.value)
            append(std::move(*element.value), *list.value);
        else
            list.fault.append("[").append(std::to_string(index)).append("]").append(element.fault);
        ++index;
    }

    bool isFaulty() const { return !list.fault.empty(); }
};

/// ": expected WHAT, found …".
std::string expected(std::string_view what, const Value& found);

} // namespace mossbit
