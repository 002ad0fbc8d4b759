#include "ViewModels/ProjectViewModel.h"

#include "Services/ProjectStore.h"

#include <exception>

namespace mossbit {

namespace {
constexpr std::chrono::milliseconds autosaveDelay{800};
/// The autosave is written this long after a change, even if more changes restart the delay.
constexpr std::chrono::seconds autosaveLimit{5};
} // namespace

void ProjectViewModel::changeHistory(const std::function<void()>& change) {
    const std::pair before(canUndo(), canRedo());
    change();
    if (std::pair(canUndo(), canRedo()) != before)
        Q_EMIT historyChanged();
}

void ProjectViewModel::pushUndo() {
    changeHistory([this] { m_history.push(m_project); });
}

void ProjectViewModel::undo() {
    if (canUndo())
        travel(&UndoHistory::undo);
}

void ProjectViewModel::redo() {
    if (canRedo())
        travel(&UndoHistory::redo);
}

void ProjectViewModel::travel(void (UndoHistory::*step)(Project&)) {
    const Project before = m_project;
    changeHistory([&] { (m_history.*step)(m_project); });
    Q_EMIT historyTravelled();
    pruneSelection();
    didChange(m_project != before);
}

void ProjectViewModel::didChange(bool projectDiffers) {
    assign(m_hasUnsavedChanges, true, &ProjectViewModel::hasUnsavedChangesChanged);
    m_audio.update(m_project);
    // The task needs no copy of the project: each change comes here and restarts the delay, and
    // replacing the project cancels the task. It does need the file's name, which Save As… changes.
    m_autosaveTask = m_services.mainLoop.after(autosaveDelay, [this, url = m_fileURL] {
        writeAutosave();
        if (url)
            autosaveDocument(*url);
    });
    if (!m_autosaveLimitTask)
        m_autosaveLimitTask = m_services.mainLoop.after(autosaveLimit, [this] { writeAutosave(); });
    if (projectDiffers)
        Q_EMIT projectChanged();
}

void ProjectViewModel::cancelAutosave() {
    m_autosaveTask.reset();
    m_autosaveLimitTask.reset();
}

void ProjectViewModel::autosaveDocument(const std::filesystem::path& url) {
    // What the user is about to discard must not reach the song's file while a dialog asks.
    if (m_isDialogUp) {
        m_autosaveTask =
            m_services.mainLoop.after(autosaveDelay, [this, url] { autosaveDocument(url); });
        return;
    }
    writeUnasked(url);
    // Also after a failure: a write that nobody asked for is no reason to ask about unsaved work.
    assign(m_hasUnsavedChanges, false, &ProjectViewModel::hasUnsavedChangesChanged);
}

void ProjectViewModel::flushAutosave() {
    Q_EMIT typedTextNeeded();
    cancelAutosave();
    if (m_isDiscarded)
        return;
    const bool isAutosaved = writeAutosave();
    if (m_fileURL)
        writeUnasked(*m_fileURL);
    // Another copy may have the autosave.
    if (!isAutosaved)
        secureSong();
}

/// Returns whether that went well.
bool ProjectViewModel::writeAutosave() {
    m_autosaveLimitTask.reset();
    return m_recovery && m_recovery->autosave(m_project);
}

void ProjectViewModel::writeUnasked(const std::filesystem::path& url) {
    try {
        m_services.files.write(url, ProjectStore::encode(m_project));
    } catch (const std::exception&) {
        // Nobody asked for this write, so nobody is told. The next change tries again.
    }
}

} // namespace mossbit
