#pragma once

#include "Services/ProjectStore.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"
#include "ViewModels/ProjectViewModel.h"

#include <gtest/gtest.h>

#include <QDir>

#include <string>
#include <vector>

namespace mossbit {

/// Everything that a view model needs, with its files in a scratch folder.
struct ViewModelHarness {
    ScratchFolder folder;
    FakeMainLoop loop;
    FakeDialogs dialogs;
    /// An error number that every write ends with, or 0.
    int failure = 0;
    PosixAtomicFile files{faultyCalls([this](const std::string&) { return failure; })};
    FakeAudioOutput output;
    std::filesystem::path autosave = ProjectStore::autosaveURL(folder.path());

    /// The program's start: restores the autosave unless a project is given.
    std::unique_ptr<ProjectViewModel> start(std::optional<Project> project = std::nullopt) {
        const ViewModelServices services = {loop, dialogs, files, output, [](auto&&) {}};
        return std::make_unique<ProjectViewModel>(services, std::move(project), autosave);
    }

    /// The oldest first.
    QFileInfoList keptFiles() const {
        const QDir kept(QString::fromStdString(autosave.parent_path() / "Kept"));
        return kept.entryInfoList({QStringLiteral("*.mossbit")});
    }

    std::vector<Project> keptSongs() const {
        std::vector<Project> songs;
        for (const QFileInfo& file : keptFiles())
            songs.push_back(ProjectStore::read(file.filesystemFilePath()));
        return songs;
    }

    void pass(double seconds) { loop.advance(FakeMainLoop::Seconds(seconds)); }

    /// Writes a project file and returns where.
    std::filesystem::path store(const char* name, const Project& project) {
        putBytes(folder / name, ProjectStore::encode(project));
        return folder / name;
    }
};

/// A test that begins with a new document.
struct ViewModelTest : testing::Test {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> model = harness.start(Project());

    /// Ends the program without saving, and starts it again.
    void restart(std::optional<Project> project = std::nullopt) {
        model.reset();
        model = harness.start(std::move(project));
    }

    static Project saved(const std::filesystem::path& file) { return ProjectStore::read(file); }
};

} // namespace mossbit
