#include "ViewModels/ProjectViewModel.h"

#include "Services/ErrorDescription.h"
#include "Services/ProjectStore.h"
#include "Services/WAVExporter.h"

#include <QtCore/QScopedValueRollback>

#include <exception>
#include <system_error>

namespace mossbit {

namespace {

namespace fs = std::filesystem;

/// How long opening a file that was handed over is put off each time while a dialog is up.
constexpr std::chrono::milliseconds handOverDelay{50};

// The buttons of the question about unsaved work.
constexpr std::size_t saveButton = 0;
constexpr std::size_t discardButton = 1;

std::string describe(const fs::path& url, const std::exception& error) {
    return url.filename().string() + ": " + description(error);
}

} // namespace

ProjectViewModel::ProjectViewModel(const ViewModelServices& services,
                                   std::optional<Project> project,
                                   std::optional<fs::path> autosaveURL)
    : m_services(services), m_audio(services.audioOutput, services.log) {
    if (autosaveURL)
        m_recovery.emplace(services.files, *autosaveURL);
    if (!project && m_recovery)
        project = m_recovery->restore();
    m_project = std::move(project).value_or(Project());
    m_audio.prepare(m_project);
}

ProjectViewModel::~ProjectViewModel() = default;

std::string ProjectViewModel::documentName() const {
    return m_fileURL ? m_fileURL->stem().string() : "Untitled";
}

// Replacing the document.

void ProjectViewModel::newProject() {
    startUntitled(Project());
}

void ProjectViewModel::openCopy(const fs::path& url) {
    if (std::optional<Project> project = read(url))
        startUntitled(std::move(*project));
}

void ProjectViewModel::startUntitled(Project project) {
    if (!prepareToReplaceSong(confirmDiscardIfNeeded()))
        return;
    replaceDocument(std::move(project), std::nullopt);
    writeAutosave();
}

void ProjectViewModel::open() {
    const Consent consent = confirmDiscardIfNeeded();
    if (consent == Consent::refused)
        return;
    const auto url = [this] {
        const QScopedValueRollback dialogUp(m_isDialogUp, true);
        return m_services.dialogs.runOpenPanel();
    }();
    if (url)
        open(*url, consent);
}

void ProjectViewModel::open(const fs::path& url) {
    open(url, Consent::given);
}

void ProjectViewModel::openHandedOver(const fs::path& url) {
    if (m_isDialogUp) {
        m_handOverTask =
            m_services.mainLoop.after(handOverDelay, [this, url] { openHandedOver(url); });
        return;
    }
    // Nobody is asked for the sake of a file that cannot be read.
    if (read(url))
        open(url, confirmDiscardIfNeeded());
}

void ProjectViewModel::open(const fs::path& url, Consent consent) {
    std::optional<Project> project = read(url);
    // A file with the same song, such as its copy in `Kept`, replaces nothing.
    if (!project || (*project != m_project && !prepareToReplaceSong(consent)))
        return;
    // An answer of "Save" may have changed the file.
    project = read(url);
    if (project)
        replaceDocument(std::move(*project), url);
}

std::optional<Project> ProjectViewModel::read(const fs::path& url) {
    try {
        return ProjectStore::read(url);
    } catch (const std::exception& error) {
        setAlertMessage("Could not open that project: " + describe(url, error));
        return std::nullopt;
    }
}

ProjectViewModel::Consent ProjectViewModel::confirmDiscardIfNeeded() {
    Q_EMIT typedTextNeeded();
    if (!m_hasUnsavedChanges || (!m_fileURL && !m_project.hasNotes()))
        return Consent::given;
    return askAboutUnsavedWork();
}

ProjectViewModel::Consent ProjectViewModel::askAboutUnsavedWork() {
    const std::size_t button = [this] {
        const QScopedValueRollback dialogUp(m_isDialogUp, true);
        return m_services.dialogs.runAlert(
            {.message = "Save changes to " + documentName() + "?",
             .informativeText = "Your changes will be lost if you don't save them.",
             .buttons = {"Save", "Discard", "Cancel"}});
    }();
    if (button == discardButton)
        return Consent::givenToDiscard;
    return button == saveButton && saveDocument() ? Consent::given : Consent::refused;
}

/// Keeps or asks about the song unless it is safe. Returns whether another may take its place.
bool ProjectViewModel::prepareToReplaceSong(Consent consent) {
    if (consent == Consent::given)
        return secureSong() || askAboutUnsavedWork() != Consent::refused;
    return consent == Consent::givenToDiscard;
}

void ProjectViewModel::replaceDocument(Project project, std::optional<fs::path> url) {
    // What was discarded must not reach its file after all.
    cancelAutosave();
    stop();
    const bool differs = project != m_project;
    m_project = std::move(project);
    assign(m_fileURL, std::move(url), &ProjectViewModel::fileURLChanged);
    setSelection({});
    changeHistory([this] { m_history = {}; });
    assign(m_hasUnsavedChanges, false, &ProjectViewModel::hasUnsavedChangesChanged);
    m_audio.update(m_project);
    Q_EMIT documentReplaced();
    if (differs)
        Q_EMIT projectChanged();
}

/// Whether nothing would be lost with this document: the song has no notes, or stands in a file of
/// the user's own.
bool ProjectViewModel::isSaved() const {
    const bool isOwnFile = m_fileURL && !(m_recovery && m_recovery->contains(*m_fileURL));
    return !m_project.hasNotes() || (isOwnFile && ProjectStore::holds(*m_fileURL, m_project));
}

/// Keeps the song unless it is saved. Returns whether it is safe now.
bool ProjectViewModel::secureSong() {
    return isSaved() || (m_recovery && m_recovery->keep(m_project, documentName()));
}

bool ProjectViewModel::confirmClosing() {
    Q_EMIT typedTextNeeded();
    if (writeAutosave())
        return true;
    if (m_fileURL)
        writeUnasked(*m_fileURL);
    // Asks rather than keeps the song: at the next start nobody would look for it in `Kept`.
    if (isSaved())
        return true;
    const Consent consent = askAboutUnsavedWork();
    m_isDiscarded = consent == Consent::givenToDiscard;
    return consent != Consent::refused;
}

// Saving and exporting.

void ProjectViewModel::save() {
    saveDocument();
}

void ProjectViewModel::saveAs() {
    saveDocumentAs();
}

bool ProjectViewModel::saveDocument() {
    Q_EMIT typedTextNeeded();
    return m_fileURL ? write(*m_fileURL) : saveDocumentAs();
}

bool ProjectViewModel::saveDocumentAs() {
    Q_EMIT typedTextNeeded();
    const auto url = askWhereToSave(FileKind::project);
    return url && write(*url);
}

std::optional<fs::path> ProjectViewModel::askWhereToSave(FileKind kind) {
    const fs::path folder = m_fileURL ? m_fileURL->parent_path() : fs::path();
    const fs::path proposal = folder / (documentName() + extensionOf(kind));
    const QScopedValueRollback dialogUp(m_isDialogUp, true);
    return m_services.dialogs.runSavePanel(kind, proposal);
}

bool ProjectViewModel::write(const fs::path& url) {
    try {
        m_services.files.write(url, ProjectStore::encode(m_project));
    } catch (const std::exception& error) {
        const auto* const failure = dynamic_cast<const std::system_error*>(&error);
        const std::error_code code = failure != nullptr ? failure->code() : std::error_code();
        const bool isReadOnly = code == std::errc::permission_denied ||
                                code == std::errc::operation_not_permitted ||
                                code == std::errc::read_only_file_system;
        setAlertMessage("Could not save: " + describe(url, error) +
                        (isReadOnly ? ". It is read-only; Save As… writes to another place." : ""));
        return false;
    }
    assign(m_fileURL, std::optional(url), &ProjectViewModel::fileURLChanged);
    assign(m_hasUnsavedChanges, false, &ProjectViewModel::hasUnsavedChangesChanged);
    return true;
}

void ProjectViewModel::exportWAV() {
    Q_EMIT typedTextNeeded();
    if (!m_project.hasNotes()) {
        setAlertMessage("Add a few notes before exporting.");
        return;
    }
    const auto url = askWhereToSave(FileKind::wav);
    if (!url)
        return;
    try {
        WAVExporter::exportProject(m_project, *url, m_services.files);
    } catch (const std::exception& error) {
        setAlertMessage("Export failed: " + describe(*url, error));
    }
}

void ProjectViewModel::clearAlertMessage() {
    setAlertMessage(std::nullopt);
}

void ProjectViewModel::setAlertMessage(std::optional<std::string> message) {
    assign(m_alertMessage, std::move(message), &ProjectViewModel::alertMessageChanged);
}

} // namespace mossbit
