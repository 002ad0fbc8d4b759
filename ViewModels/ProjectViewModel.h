#pragma once

#include "Audio/AudioEngine.h"
#include "Models/Project.h"
#include "Platform/AtomicFile.h"
#include "Platform/AudioOutput.h"
#include "Platform/Dialogs.h"
#include "Platform/MainLoop.h"
#include "Platform/SystemLog.h"
#include "Services/RecoveryFiles.h"
#include "ViewModels/UndoHistory.h"

#include <QObject>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace mossbit {

/// What the view model needs of the system. All of it outlives the view model.
struct ViewModelServices {
    MainLoop& mainLoop;
    Dialogs& dialogs;
    AtomicFile& files;
    AudioOutput& audioOutput;
    SystemLog log;
};

/// The open document and everything that can be done to it. Main thread only. Each signal is sent
/// after its field has changed, and only then.
class ProjectViewModel : public QObject {
    Q_OBJECT

public:
    using Selection = std::unordered_set<Uuid>;

    /// The fields of a note that `updateNote` replaces; absent ones stay.
    struct NoteChange {
        std::optional<std::int64_t> pitch = std::nullopt;
        std::optional<std::int64_t> start = std::nullopt;
        std::optional<std::int64_t> length = std::nullopt;
    };

    /// Opens `project`; without one, what the last run left in `autosaveURL`; failing that, a new
    /// project. Without `autosaveURL` there are no recovery files; the document's own file is
    /// autosaved all the same.
    ProjectViewModel(const ViewModelServices& services, std::optional<Project> project,
                     std::optional<std::filesystem::path> autosaveURL);
    ~ProjectViewModel() override;

    // Reading.

    const Project& project() const { return m_project; }
    /// 0 … 3, the channel that every note operation works on.
    int selectedChannelIndex() const { return m_selectedChannelIndex; }
    const Channel& selectedChannel() const;
    const Selection& selection() const { return m_selection; }
    /// The first note of the selected channel with that identifier.
    std::optional<Note> note(const Uuid& id) const;
    bool isPlaying() const { return m_isPlaying; }
    /// The tick being heard; −1 when stopped.
    std::int64_t playhead() const { return m_playhead; }
    const std::optional<std::filesystem::path>& fileURL() const { return m_fileURL; }
    /// The file's name without its extension; "Untitled" without a file.
    std::string documentName() const;
    bool hasUnsavedChanges() const { return m_hasUnsavedChanges; }
    /// A message that the window shows and then clears.
    const std::optional<std::string>& alertMessage() const { return m_alertMessage; }
    /// Whether a text field has the keyboard, so that plain keys are not commands.
    bool isEditingText() const { return m_isEditingText; }
    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }

    // Notes of the selected channel.

    /// Adds a note of one grid step at the grid step that holds `start`, and selects it. Returns
    /// the note; nothing if the step lies past the end of the pattern.
    std::optional<Note> addNote(std::int64_t pitch, std::int64_t start);
    /// Stores the values as they are and records no undo step: a drag records one when it begins.
    void updateNote(const Uuid& id, const NoteChange& change);
    void deleteNote(const Uuid& id);
    void deleteSelection();
    void setSelection(Selection selection);
    void selectAll();
    /// 0 … 3. Another channel empties the selection.
    void setSelectedChannelIndex(int index);

    // Settings. Each records one undo step, and none if nothing changes.

    /// Clamped to 0 … 15.
    void setVolume(std::int64_t volume, int channel);
    void toggleMute(int channel);
    void setDuty(Duty duty, int channel);
    void setWavePreset(WavePreset preset, int channel);
    /// Beats per minute, clamped to 40 … 300.
    void setTempo(std::int64_t tempo);
    /// Ignores any other count than 1, 2, 4, 8, 16.
    void setBars(std::int64_t bars);
    void setGrid(GridDivision grid);
    void toggleLoop();

    // Undo.

    /// Records the project as it is now. One call per gesture, before its first change.
    void pushUndo();
    void undo();
    void redo();

    // Document. A song that gives way to another without an answer of "Discard", and that no file
    // of the user's own holds, goes into `RecoveryFiles` first. What fails in a command ends in
    // `alertMessage`.

    void newProject();
    void open();
    /// Opens a file as a new song that has no file yet.
    void openCopy(const std::filesystem::path& url);
    /// Opens without asking about unsaved changes.
    void open(const std::filesystem::path& url);
    /// Opens a file that the system handed over, after asking about unsaved changes; if a dialog is
    /// up, once that is answered. Of several that wait the last one is opened.
    void openHandedOver(const std::filesystem::path& url);
    /// Writes to the document's file, or asks for one.
    void save();
    void saveAs();
    void exportWAV();
    /// Whether the window may close: asks only if neither the autosave nor a file of the user's own
    /// can be made to hold the song. What is discarded here is not written by `flushAutosave`.
    bool confirmClosing();
    /// Writes the autosave file and the document's file now, whether or not anything has changed.
    void flushAutosave();
    void clearAlertMessage();
    void setEditingText(bool editing);

    // Playback.

    /// Plays from tick 0, also when already playing.
    void play();
    void stop();

Q_SIGNALS:
    void projectChanged();
    void selectedChannelIndexChanged();
    void selectionChanged();
    void isPlayingChanged();
    void playheadChanged();
    void fileURLChanged();
    void hasUnsavedChangesChanged();
    void alertMessageChanged();
    void isEditingTextChanged();
    /// `canUndo` or `canRedo` has changed.
    void historyChanged();
    /// Undo or redo has put another state of the project in place, perhaps an equal one. Sent
    /// before the signals of what that changed.
    void historyTravelled();
    /// The document was replaced by a new or opened one. Sent before `projectChanged`, when all
    /// other fields already tell of the new document.
    void documentReplaced();
    /// A command or the end of the program is about to write the document or ask about it: what is
    /// typed and not yet committed belongs into it.
    void typedTextNeeded();

private:
    /// Whether the song may be replaced: not at all, if it is safe, or even if it gets lost.
    enum class Consent { refused, given, givenToDiscard };

    /// Sets a field, and tells its observers if that changes it.
    template <typename Field>
    void assign(Field& field, Field value, void (ProjectViewModel::*changed)()) {
        if (field == value)
            return;
        field = std::move(value);
        Q_EMIT(this->*changed)();
    }

    // Editing.
    /// Changes the project as one undo step, and tells of it. No step if nothing changes.
    void edit(const std::function<void(Project&)>& change);
    void editChannel(int index, const std::function<void(Channel&)>& change);
    std::vector<Note>& selectedNotes();
    void pruneSelection();

    // Undo.
    void changeHistory(const std::function<void()>& change);
    void travel(void (UndoHistory::*step)(Project&));
    /// Also called for an operation that left the project equal: the document is unsaved all the
    /// same.
    void didChange(bool projectDiffers = true);
    void cancelAutosave();
    void autosaveDocument(const std::filesystem::path& url);
    bool writeAutosave();
    void writeUnasked(const std::filesystem::path& url);

    // Document.
    Consent confirmDiscardIfNeeded();
    Consent askAboutUnsavedWork();
    bool isSaved() const;
    bool prepareToReplaceSong(Consent consent);
    bool secureSong();
    std::optional<Project> read(const std::filesystem::path& url);
    void startUntitled(Project project);
    void open(const std::filesystem::path& url, Consent consent);
    void replaceDocument(Project project, std::optional<std::filesystem::path> url);
    bool saveDocument();
    bool saveDocumentAs();
    bool write(const std::filesystem::path& url);
    std::optional<std::filesystem::path> askWhereToSave(FileKind kind);
    void setAlertMessage(std::optional<std::string> message);

    // Playback.
    void tick();
    void tickLater();
    void stopWithoutSound();

    ViewModelServices m_services;
    Project m_project;
    int m_selectedChannelIndex = 0;
    Selection m_selection;
    bool m_isPlaying = false;
    std::int64_t m_playhead = -1;
    std::optional<std::filesystem::path> m_fileURL;
    bool m_hasUnsavedChanges = false;
    std::optional<std::string> m_alertMessage;
    bool m_isEditingText = false;
    AudioEngine m_audio;
    /// None without an `autosaveURL`.
    std::optional<RecoveryFiles> m_recovery;
    UndoHistory m_history;
    std::unique_ptr<MainLoop::Task> m_autosaveTask;
    /// Writes the autosave file alone, for changes that never pause.
    std::unique_ptr<MainLoop::Task> m_autosaveLimitTask;
    std::unique_ptr<MainLoop::Task> m_playheadTimer;
    std::unique_ptr<MainLoop::Task> m_handOverTask;
    /// True while a modal dialog is up.
    bool m_isDialogUp = false;
    /// The song was discarded as the window closed.
    bool m_isDiscarded = false;
};

} // namespace mossbit
