#include "ViewModels/ProjectViewModel.h"

#include "Services/ProjectStore.h"

#include <exception>

namespace mossbit {

namespace {
constexpr std::chrono::milliseconds autosaveDelay{800};
}

template <typename Change>
void ProjectViewModel::changeHistory(Change change) {
    const std::pair before(canUndo(), canRedo());
    change();
    if (std::pair(canUndo(), canRedo()) != before)
        Q_EMIT historyChanged();
}

void ProjectViewModel::pushUndo() {
    changeHistory([this] {
        m_undoStack.push_back(m_project);
        if (m_undoStack.size() > undoLimit)
            m_undoStack.erase(m_undoStack.begin());
        m_redoStack.clear();
    });
}

void ProjectViewModel::undo() {
    if (m_undoStack.empty())
        return;
    changeHistory([this] {
        m_redoStack.push_back(std::exchange(m_project, std::move(m_undoStack.back())));
        m_undoStack.pop_back();
    });
    Q_EMIT historyTravelled();
    pruneSelection();
    didChange(m_project != m_redoStack.back());
}

void ProjectViewModel::redo() {
    if (m_redoStack.empty())
        return;
    changeHistory([this] {
        m_undoStack.push_back(std::exchange(m_project, std::move(m_redoStack.back())));
        m_redoStack.pop_back();
    });
    Q_EMIT historyTravelled();
    pruneSelection();
    didChange(m_project != m_undoStack.back());
}

void ProjectViewModel::clearHistory() {
    changeHistory([this] {
        m_undoStack.clear();
        m_redoStack.clear();
    });
}

void ProjectViewModel::didChange(bool projectDiffers) {
    assign(m_hasUnsavedChanges, true, &ProjectViewModel::hasUnsavedChangesChanged);
    m_audio.update(m_project);
    // The project needs no copy: whatever changes it comes here and restarts the delay, and what
    // replaces it cancels the task. The file can change meanwhile; the task keeps to this one.
    m_autosaveTask =
        m_services.mainLoop.after(autosaveDelay, [this, url = m_fileURL] { autosave(url); });
    if (projectDiffers)
        Q_EMIT projectChanged();
}

void ProjectViewModel::autosave(const std::optional<std::filesystem::path>& fileURL) {
    if (m_autosaveURL)
        writeInBackground(*m_autosaveURL);
    if (fileURL)
        autosaveDocument(*fileURL);
}

void ProjectViewModel::autosaveDocument(const std::filesystem::path& url) {
    // What the user is about to discard must not reach the song's file while a dialog asks.
    if (m_isReplacing) {
        m_autosaveTask =
            m_services.mainLoop.after(autosaveDelay, [this, url] { autosaveDocument(url); });
        return;
    }
    writeDocument(url);
    assign(m_hasUnsavedChanges, false, &ProjectViewModel::hasUnsavedChangesChanged);
}

void ProjectViewModel::flushAutosave() {
    Q_EMIT typedTextNeeded();
    m_autosaveTask.reset();
    if (m_isDiscarded)
        return;
    if (m_autosaveURL)
        writeInBackground(*m_autosaveURL);
    if (m_fileURL)
        writeDocument(*m_fileURL);
}

void ProjectViewModel::writeDocument(const std::filesystem::path& url) {
    const bool isWritten = writeInBackground(url);
    // An autosave keeps to the file that its edit was for, also when the document has another now.
    if (url == m_fileURL)
        m_isFileBehind = !isWritten;
}

bool ProjectViewModel::writeInBackground(const std::filesystem::path& url) {
    try {
        m_services.files.write(url, ProjectStore::encode(m_project));
        return true;
    } catch (const std::exception&) {
        // Nobody asked for this write, so nobody is told. The next change tries again.
        return false;
    }
}

} // namespace mossbit
