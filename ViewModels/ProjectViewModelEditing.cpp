#include "ViewModels/ProjectViewModel.h"

#include <algorithm>

namespace mossbit {

const Channel& ProjectViewModel::selectedChannel() const {
    return m_project.channels[static_cast<std::size_t>(m_selectedChannelIndex)];
}

std::vector<Note>& ProjectViewModel::selectedNotes() {
    return m_project.channels[static_cast<std::size_t>(m_selectedChannelIndex)].notes;
}

void ProjectViewModel::edit(const std::function<void(Project&)>& change) {
    const Project before = m_project;
    change(m_project);
    if (m_project == before)
        return;
    changeHistory([&] { m_history.push(before); });
    didChange();
}

void ProjectViewModel::editChannel(int index, const std::function<void(Channel&)>& change) {
    edit([&](Project& project) { change(project.channels[static_cast<std::size_t>(index)]); });
}

std::optional<Note> ProjectViewModel::note(const Uuid& id) const {
    const std::vector<Note>& notes = selectedChannel().notes;
    const auto found = std::ranges::find(notes, id, &Note::id);
    return found == notes.end() ? std::nullopt : std::optional(*found);
}

std::optional<Note> ProjectViewModel::addNote(std::int64_t pitch, std::int64_t start) {
    const std::int64_t step = m_project.gridStep();
    const std::int64_t total = m_project.totalTicks();
    const std::int64_t raised = std::max<std::int64_t>(start, 0);
    const std::int64_t snapped = raised - raised % step;
    if (snapped >= total)
        return std::nullopt;
    const Note note = {.pitch = pitch, .start = snapped, .length = std::min(total - snapped, step)};
    editChannel(m_selectedChannelIndex, [&](Channel& channel) { channel.notes.push_back(note); });
    setSelection({note.id});
    return note;
}

void ProjectViewModel::updateNote(const Uuid& id, const NoteChange& change) {
    bool differs = false;
    const auto found = std::ranges::find(selectedNotes(), id, &Note::id);
    if (found != selectedNotes().end()) {
        const Note before = *found;
        found->pitch = change.pitch.value_or(before.pitch);
        found->start = change.start.value_or(before.start);
        found->length = change.length.value_or(before.length);
        differs = *found != before;
    }
    didChange(differs);
}

void ProjectViewModel::deleteNote(const Uuid& id) {
    pushUndo();
    const auto count =
        std::erase_if(selectedNotes(), [id](const Note& note) { return note.id == id; });
    didChange(count > 0);
    pruneSelection();
}

void ProjectViewModel::deleteSelection() {
    editChannel(m_selectedChannelIndex, [&](Channel& channel) {
        std::erase_if(channel.notes,
                      [&](const Note& note) { return m_selection.contains(note.id); });
    });
    setSelection({});
}

void ProjectViewModel::setSelection(Selection selection) {
    assign(m_selection, std::move(selection), &ProjectViewModel::selectionChanged);
}

void ProjectViewModel::selectAll() {
    Selection all;
    for (const Note& note : selectedChannel().notes)
        all.insert(note.id);
    setSelection(std::move(all));
}

void ProjectViewModel::pruneSelection() {
    Selection present;
    for (const Note& note : selectedChannel().notes)
        if (m_selection.contains(note.id))
            present.insert(note.id);
    setSelection(std::move(present));
}

void ProjectViewModel::setSelectedChannelIndex(int index) {
    if (index == m_selectedChannelIndex)
        return;
    // Identifiers of another channel's notes are no selection: nobody sees them together.
    m_selectedChannelIndex = index;
    setSelection({});
    Q_EMIT selectedChannelIndexChanged();
}

void ProjectViewModel::setVolume(std::int64_t volume, int channel) {
    editChannel(channel, [&](Channel& edited) {
        edited.volume = std::clamp<std::int64_t>(volume, 0, highestVolume);
    });
}

void ProjectViewModel::toggleMute(int channel) {
    editChannel(channel, [](Channel& edited) { edited.muted = !edited.muted; });
}

void ProjectViewModel::setDuty(Duty duty, int channel) {
    editChannel(channel, [&](Channel& edited) { edited.duty = duty; });
}

void ProjectViewModel::setWavePreset(WavePreset preset, int channel) {
    editChannel(channel, [&](Channel& edited) { edited.wave = preset; });
}

void ProjectViewModel::setTempo(std::int64_t tempo) {
    edit([&](Project& project) { project.tempo = std::clamp(tempo, lowestTempo, highestTempo); });
}

void ProjectViewModel::setBars(std::int64_t bars) {
    if (std::ranges::find(allBarCounts, bars) == allBarCounts.end() || bars == m_project.bars)
        return;
    edit([&](Project& project) {
        project.bars = bars;
        project.clampNotes();
    });
    pruneSelection();
}

void ProjectViewModel::setGrid(GridDivision grid) {
    edit([&](Project& project) { project.grid = grid; });
}

void ProjectViewModel::toggleLoop() {
    edit([](Project& project) { project.loop = !project.loop; });
}

void ProjectViewModel::setEditingText(bool editing) {
    assign(m_isEditingText, editing, &ProjectViewModel::isEditingTextChanged);
}

} // namespace mossbit
