#include "ViewModels/ProjectViewModel.h"

#include "Services/ErrorDescription.h"
#include "Services/ProjectStore.h"
#include "Services/WAVExporter.h"

#include <exception>
#include <system_error>

namespace mossbit {

namespace {

namespace fs = std::filesystem;

} // namespace

template <typename Dialog>
auto ProjectViewModel::ask(Dialog dialog) {
    m_isAsking = true;
    auto answer = dialog();
    m_isAsking = false;
    // A command may be about to use the answer for this document, so not before it has ended.
    if (m_handedOverURL)
        m_handOverTask = m_services.mainLoop.after(std::chrono::milliseconds(0), [this] {
            openHandedOver(*std::exchange(m_handedOverURL, std::nullopt));
        });
    return answer;
}

ProjectViewModel::ProjectViewModel(const ViewModelServices& services,
                                   std::optional<Project> project,
                                   std::optional<fs::path> autosaveURL)
    : m_services(services),
      m_audio(services.audioOutput, services.log),
      m_autosaveURL(std::move(autosaveURL)) {
    if (project)
        m_project = std::move(*project);
    else if (m_autosaveURL)
        restore();
    m_audio.prepare(m_project);
}

ProjectViewModel::~ProjectViewModel() = default;

void ProjectViewModel::restore() {
    try {
        m_project = ProjectStore::read(*m_autosaveURL);
    } catch (const std::exception&) {
        keepUnreadableAutosave();
    }
}

void ProjectViewModel::keepUnreadableAutosave() {
    std::error_code error;
    if (!fs::is_regular_file(*m_autosaveURL, error))
        return;
    // Killed half-way, the next start finds the same file and copies it again.
    const fs::path copy = m_autosaveURL->parent_path() / "Autosave-unreadable.mossbit";
    fs::copy_file(*m_autosaveURL, copy, fs::copy_options::overwrite_existing, error);
    if (error)
        // Not even readable; the next autosave would replace it all the same.
        fs::rename(*m_autosaveURL, copy, error);
}

std::string ProjectViewModel::documentName() const {
    return m_fileURL ? m_fileURL->stem().string() : "Untitled";
}

template <typename Command>
void ProjectViewModel::replaceAfterAsking(Command command) {
    m_isReplacing = true;
    const UnsavedWork unsavedWork = askAboutUnsavedWork();
    if (unsavedWork != UnsavedWork::kept)
        command(unsavedWork);
    m_isReplacing = false;
}

void ProjectViewModel::newProject() {
    replaceAfterAsking([this](UnsavedWork unsavedWork) {
        replaceDocument(Project(), std::nullopt, unsavedWork);
        if (m_autosaveURL)
            writeInBackground(*m_autosaveURL);
    });
}

void ProjectViewModel::open() {
    replaceAfterAsking([this](UnsavedWork unsavedWork) {
        if (const auto url = ask([this] { return m_services.dialogs.runOpenPanel(); }))
            openAfterAsking(*url, unsavedWork);
    });
}

void ProjectViewModel::open(const fs::path& url) {
    openAfterAsking(url, UnsavedWork::safe);
}

void ProjectViewModel::openHandedOver(const fs::path& url) {
    if (m_isAsking) {
        m_handedOverURL = url;
        return;
    }
    replaceAfterAsking(
        [this, &url](UnsavedWork unsavedWork) { openAfterAsking(url, unsavedWork); });
}

void ProjectViewModel::openAfterAsking(const fs::path& url, UnsavedWork unsavedWork) {
    std::optional<Project> project;
    try {
        project = ProjectStore::read(url);
    } catch (const std::exception& error) {
        setAlertMessage("Could not open that project: " + description(error));
        return;
    }
    replaceDocument(std::move(*project), url, unsavedWork);
}

void ProjectViewModel::replaceDocument(Project project, std::optional<fs::path> url,
                                       UnsavedWork unsavedWork) {
    if (unsavedWork != UnsavedWork::discarded)
        keepReplacedWork(url);
    // What was discarded must not reach its file after all.
    m_autosaveTask.reset();
    stop();
    const bool differs = project != m_project;
    m_project = std::move(project);
    m_isFileBehind = false;
    assign(m_fileURL, std::move(url), &ProjectViewModel::fileURLChanged);
    setSelection({});
    clearHistory();
    assign(m_hasUnsavedChanges, false, &ProjectViewModel::hasUnsavedChangesChanged);
    m_audio.update(m_project);
    Q_EMIT documentReplaced();
    if (differs)
        Q_EMIT projectChanged();
}

void ProjectViewModel::keepReplacedWork(const std::optional<fs::path>& replacement) {
    // Restored work counts as saved, and so does what could not be written to the document's file;
    // the autosave file is the only one that holds it.
    const bool isInItsFile = m_fileURL && !m_isFileBehind;
    if (!m_autosaveURL || isInItsFile || !m_project.hasNotes())
        return;
    const fs::path folder = m_autosaveURL->parent_path();
    const fs::path kept = folder / "Autosave-previous.mossbit";
    std::error_code error;
    // Who opens the kept song exchanges the two: the kept one is a document of its own from now on.
    const bool isReplacement = replacement && fs::equivalent(*replacement, kept, error);
    writeInBackground(isReplacement ? folder / "Autosave-previous-2.mossbit" : kept);
}

void ProjectViewModel::save() {
    Q_EMIT typedTextNeeded();
    if (m_fileURL)
        write(*m_fileURL);
    else
        saveAs();
}

void ProjectViewModel::saveAs() {
    Q_EMIT typedTextNeeded();
    if (const auto url = askWhereToSave(FileKind::project))
        write(*url);
}

std::optional<fs::path> ProjectViewModel::askWhereToSave(FileKind kind) {
    const fs::path folder = m_fileURL ? m_fileURL->parent_path() : fs::path();
    const fs::path proposal = folder / (documentName() + extensionOf(kind));
    auto url = ask([&] { return m_services.dialogs.runSavePanel(kind, proposal); });
    return url ? std::optional(withExtension(*url, kind)) : std::nullopt;
}

void ProjectViewModel::write(const fs::path& url) {
    try {
        m_services.files.write(url, ProjectStore::encode(m_project));
    } catch (const std::exception& error) {
        setAlertMessage("Could not save: " + description(error));
        return;
    }
    m_isFileBehind = false;
    assign(m_fileURL, std::optional(url), &ProjectViewModel::fileURLChanged);
    assign(m_hasUnsavedChanges, false, &ProjectViewModel::hasUnsavedChangesChanged);
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
        setAlertMessage("Export failed: " + description(error));
    }
}

bool ProjectViewModel::confirmDiscardIfNeeded() {
    bool mayGo = false;
    replaceAfterAsking([&](UnsavedWork unsavedWork) {
        mayGo = true;
        m_isDiscarded = unsavedWork == UnsavedWork::discarded;
    });
    return mayGo;
}

ProjectViewModel::UnsavedWork ProjectViewModel::askAboutUnsavedWork() {
    Q_EMIT typedTextNeeded();
    if (!isUnsaved() || (!m_fileURL && !m_project.hasNotes()))
        return UnsavedWork::safe;
    const std::size_t button = ask([this] {
        return m_services.dialogs.runAlert(
            {.message = "Save changes to " + documentName() + "?",
             .informativeText = "Your changes will be lost if you don't save them.",
             .buttons = {"Save", "Discard", "Cancel"}});
    });
    if (button == 1)
        return UnsavedWork::discarded;
    if (button == 0)
        save();
    return isUnsaved() ? UnsavedWork::kept : UnsavedWork::safe;
}

bool ProjectViewModel::isUnsaved() const {
    // Without an autosave file, nothing has what could not be written to the document's file.
    return m_hasUnsavedChanges || (m_isFileBehind && !m_autosaveURL);
}

void ProjectViewModel::clearAlertMessage() {
    setAlertMessage(std::nullopt);
}

void ProjectViewModel::setAlertMessage(std::optional<std::string> message) {
    assign(m_alertMessage, std::move(message), &ProjectViewModel::alertMessageChanged);
}

} // namespace mossbit
