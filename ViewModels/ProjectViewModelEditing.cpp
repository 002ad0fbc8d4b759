#include "ViewModels/ProjectViewModel.h"

#include <algorithm>

namespace mossbit {

namespace {

ProjectViewModel::Selection idsOf(const std::vector<Note>& notes) {
    ProjectViewModel::Selection ids;
    ids.reserve(notes.size());
    for (const Note& note : notes)
        ids.insert(note.id);
    return ids;
}

} // namespace

const Channel& ProjectViewModel::selectedChannel() const {
    return m_project.channels[static_cast<std::size_t>(m_selectedChannelIndex)];
}

std::vector<Note>& ProjectViewModel::editedNotes() {
    return channelAt(m_selectedChannelIndex).notes;
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
    pushUndo();
    editedNotes().push_back(note);
    didChange();
    setSelection({note.id});
    return note;
}

void ProjectViewModel::updateNote(const Uuid& id, const NoteChange& change) {
    std::vector<Note>& notes = editedNotes();
    bool differs = false;
    if (const auto found = std::ranges::find(notes, id, &Note::id); found != notes.end()) {
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
    const auto removed = std::erase_if(editedNotes(), [&](const Note& n) { return n.id == id; });
    didChange(removed > 0);
    Selection rest = m_selection;
    rest.erase(id);
    setSelection(std::move(rest));
}

void ProjectViewModel::deleteSelection() {
    if (m_selection.empty())
        return;
    pushUndo();
    const auto removed =
        std::erase_if(editedNotes(), [&](const Note& n) { return m_selection.contains(n.id); });
    didChange(removed > 0);
    setSelection({});
}

void ProjectViewModel::setSelection(Selection selection) {
    assign(m_selection, std::move(selection), &ProjectViewModel::selectionChanged);
}

void ProjectViewModel::selectAll() {
    setSelection(idsOf(selectedChannel().notes));
}

void ProjectViewModel::pruneSelection() {
    Selection kept = m_selection;
    const Selection present = idsOf(selectedChannel().notes);
    std::erase_if(kept, [&](const Uuid& id) { return !present.contains(id); });
    setSelection(std::move(kept));
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
    const std::int64_t clamped = std::clamp<std::int64_t>(volume, 0, highestVolume);
    if (clamped == channelAt(channel).volume)
        return;
    pushUndo();
    channelAt(channel).volume = clamped;
    didChange();
}

void ProjectViewModel::toggleMute(int channel) {
    pushUndo();
    channelAt(channel).muted = !channelAt(channel).muted;
    didChange();
}

void ProjectViewModel::setDuty(Duty duty, int channel) {
    if (duty == channelAt(channel).duty)
        return;
    pushUndo();
    channelAt(channel).duty = duty;
    didChange();
}

void ProjectViewModel::setWavePreset(WavePreset preset, int channel) {
    if (preset == channelAt(channel).wave)
        return;
    pushUndo();
    channelAt(channel).wave = preset;
    didChange();
}

void ProjectViewModel::setTempo(std::int64_t tempo) {
    const std::int64_t clamped = std::clamp(tempo, lowestTempo, highestTempo);
    if (clamped == m_project.tempo)
        return;
    pushUndo();
    m_project.tempo = clamped;
    didChange();
}

void ProjectViewModel::setBars(std::int64_t bars) {
    if (std::ranges::find(allBarCounts, bars) == allBarCounts.end() || bars == m_project.bars)
        return;
    pushUndo();
    m_project.bars = bars;
    m_project.clampNotes();
    didChange();
    pruneSelection();
}

void ProjectViewModel::setGrid(GridDivision grid) {
    if (grid == m_project.grid)
        return;
    pushUndo();
    m_project.grid = grid;
    didChange();
}

void ProjectViewModel::toggleLoop() {
    pushUndo();
    m_project.loop = !m_project.loop;
    didChange();
}

void ProjectViewModel::setEditingText(bool editing) {
    assign(m_isEditingText, editing, &ProjectViewModel::isEditingTextChanged);
}

} // namespace mossbit
