#include "Services/ProjectDrafts.h"

#include <algorithm>

namespace mossbit {

namespace {

/// Keeps the text or number that `convert` knows; `what` names those for the user.
template <typename T, typename Convert>
void keep(const Value& value, Member<T>& member, ValueKind kind, std::string_view what,
          Convert convert) {
    member = {};
    if (value.kind == ValueKind::null)
        return;
    if (value.kind == kind)
        member.value = convert(value);
    if (member.value)
        return;
    member.fault = expected(what, value);
    if (value.kind != kind)
        return;
    if (kind == ValueKind::text)
        member.fault += " that is none";
    else
        member.fault.append(", ").append(std::to_string(value.number));
}

void keep(const Value& value, Member<std::int64_t>& member) {
    keep(value, member, ValueKind::wholeNumber, "a whole number",
         [](const Value& v) { return std::optional(v.number); });
}

void keep(const Value& value, Member<bool>& member) {
    keep(value, member, ValueKind::boolean, "true or false",
         [](const Value& v) { return std::optional(v.boolean); });
}

void keep(const Value& value, Member<Uuid>& member) {
    keep(value, member, ValueKind::text, "a UUID",
         [](const Value& v) { return Uuid::parse(v.text); });
}

void keep(const Value& value, Member<ChannelKind>& member) {
    keep(value, member, ValueKind::text, R"("pulse1", "pulse2", "wave" or "noise")",
         [](const Value& v) { return channelKindFromRawValue(v.text); });
}

void keep(const Value& value, Member<WavePreset>& member) {
    keep(value, member, ValueKind::text, R"("triangle", "soft" or "hollow")",
         [](const Value& v) { return wavePresetFromRawValue(v.text); });
}

template <typename T, std::size_t count>
void keepNumbered(const Value& value, Member<T>& member, const std::array<T, count>& cases,
                  std::string_view what) {
    keep(value, member, ValueKind::wholeNumber, what, [&](const Value& v) {
        const auto found = std::find_if(cases.begin(), cases.end(), [&](T each) {
            return static_cast<std::int64_t>(each) == v.number;
        });
        return found == cases.end() ? std::nullopt : std::optional(*found);
    });
}

void keep(const Value& value, Member<Duty>& member) {
    keepNumbered(value, member, allDuties, "0, 1, 2 or 3");
}

void keep(const Value& value, Member<GridDivision>& member) {
    keepNumbered(value, member, allGridDivisions, "1, 2 or 4");
}

/// A list's own elements come later; here it is null or something else.
template <typename List>
void keepList(const Value& value, Member<List>& member) {
    member = {};
    if (value.kind != ValueKind::null)
        member.fault = expected("a list", value);
}

/// Collects the fault of the first of an object's members that has one.
struct Faults {
    std::string first;

    template <typename T>
    Faults& check(std::string_view name, Member<T>& member) {
        if (first.empty() && !member.fault.empty())
            first.append(".").append(name).append(member.fault);
        return *this;
    }

    template <typename T>
    Faults& require(std::string_view name, Member<T>& member) {
        if (first.empty() && !member.value && member.fault.empty())
            member.fault = ": missing";
        return check(name, member);
    }
};

} // namespace

std::string expected(std::string_view what, const Value& found) {
    constexpr std::array<std::string_view, 8> names = {
        "null",     "true or false", "a whole number", "a fraction", "a number that is too large",
        "a string", "a list",        "an object"};
    std::string result = ": expected ";
    return result.append(what)
        .append(", found ")
        .append(names[static_cast<std::size_t>(found.kind)]);
}

void NoteDraft::take(std::string_view name, const Value& value) {
    if (name == "id")
        keep(value, id);
    else if (name == "pitch")
        keep(value, pitch);
    else if (name == "start")
        keep(value, start);
    else if (name == "length")
        keep(value, length);
    else if (name == "velocity")
        keep(value, velocity);
}

Member<Note> NoteDraft::finish() {
    Faults faults;
    faults.check("id", id)
        .require("pitch", pitch)
        .require("start", start)
        .require("length", length)
        .check("velocity", velocity);
    if (!faults.first.empty())
        return {{}, std::move(faults.first)};
    return {Note{.id = id.value ? *id.value : Uuid::random(),
                 .pitch = *pitch.value,
                 .start = *start.value,
                 .length = std::max<std::int64_t>(*length.value, 1),
                 .velocity = velocity.value.value_or(highestVelocity)},
            {}};
}

void ChannelDraft::take(std::string_view name, const Value& value) {
    if (name == "kind")
        keep(value, kind);
    else if (name == "volume")
        keep(value, volume);
    else if (name == "muted")
        keep(value, muted);
    else if (name == "duty")
        keep(value, duty);
    else if (name == "wave")
        keep(value, wave);
    else if (name == "notes")
        keepList(value, notes);
}

Member<Channel> ChannelDraft::finish() {
    Faults faults;
    faults.require("kind", kind)
        .check("volume", volume)
        .check("muted", muted)
        .check("duty", duty)
        .check("wave", wave)
        .check("notes", notes);
    if (!faults.first.empty())
        return {{}, std::move(faults.first)};
    // What a channel leaves out is the same for every kind, other than in a new project.
    Channel channel;
    channel.kind = *kind.value;
    channel.volume =
        std::clamp<std::int64_t>(volume.value.value_or(channel.volume), 0, highestVolume);
    channel.muted = muted.value.value_or(channel.muted);
    channel.duty = duty.value.value_or(channel.duty);
    channel.wave = wave.value.value_or(channel.wave);
    if (notes.value)
        channel.notes = std::move(*notes.value);
    return {std::move(channel), {}};
}

void ProjectDraft::take(std::string_view name, const Value& value) {
    if (name == "version")
        keep(value, version);
    else if (name == "tempo")
        keep(value, tempo);
    else if (name == "bars")
        keep(value, bars);
    else if (name == "grid")
        keep(value, grid);
    else if (name == "loop")
        keep(value, loop);
    else if (name == "channels")
        keepList(value, channels);
}

Member<Project> ProjectDraft::finish() {
    Faults faults;
    faults.check("version", version)
        .check("tempo", tempo)
        .check("bars", bars)
        .check("grid", grid)
        .check("loop", loop)
        .check("channels", channels);
    if (!faults.first.empty())
        return {{}, faults.first.substr(1)};
    Project project;
    project.version = version.value.value_or(project.version);
    project.tempo = std::clamp(tempo.value.value_or(project.tempo), lowestTempo, highestTempo);
    const std::int64_t count = bars.value.value_or(project.bars);
    if (std::find(allBarCounts.begin(), allBarCounts.end(), count) != allBarCounts.end())
        project.bars = count;
    project.grid = grid.value.value_or(project.grid);
    project.loop = loop.value.value_or(project.loop);
    if (channels.value) {
        for (std::size_t i = 0; i < project.channels.size(); ++i) {
            if (auto& channel = (*channels.value)[i])
                project.channels[i] = std::move(*channel);
        }
    }
    project.clampNotes();
    return {std::move(project), {}};
}

void append(Note&& note, std::vector<Note>& notes) {
    notes.push_back(note);
}

void append(Channel&& channel, ChannelSet& channels) {
    auto& place = channels[static_cast<std::size_t>(channel.kind)];
    if (!place)
        place = std::move(channel);
}

} // namespace mossbit
