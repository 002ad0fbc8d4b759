#pragma once

#include "Platform/PosixAtomicFile.h"
#include "Services/ProjectStore.h"
#include "Tests/Support/FakeAudioOutput.h"
#include "Tests/Support/FakeMainLoop.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"
#include "ViewModels/ProjectViewModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace mossbit {

/// Records its writes, or fails in their place.
class RecordingAtomicFile : public AtomicFile {
public:
    /// In turn, the failed ones too.
    std::vector<std::filesystem::path> written;
    /// An error number that every write ends with, or 0.
    int failure = 0;

    void write(const std::filesystem::path& path,
               const std::function<void(const Put&)>& putContent) override {
        written.push_back(path);
        if (failure != 0)
            throw std::system_error(failure, std::generic_category());
        m_real.write(path, putContent);
    }

    void move(const std::filesystem::path& from, const std::filesystem::path& to) override {
        if (failure != 0)
            throw std::system_error(failure, std::generic_category());
        m_real.move(from, to);
    }

private:
    PosixAtomicFile m_real;
};

/// Everything that a view model needs, with its files in a scratch folder.
struct ViewModelHarness {
    ScratchFolder folder;
    FakeMainLoop loop;
    FakeDialogs dialogs;
    RecordingAtomicFile files;
    FakeAudioOutput output;
    FakeSystemLog log;
    std::filesystem::path autosave = ProjectStore::autosaveURL(folder.path());
    /// How often each field told of a change.
    std::map<std::string, int> heard;

    ViewModelServices services() { return {loop, dialogs, files, output, log}; }

    /// The program's start: restores the autosave unless a project is given.
    std::unique_ptr<ProjectViewModel> start(std::optional<Project> project = std::nullopt) {
        auto model = std::make_unique<ProjectViewModel>(services(), std::move(project), autosave);
        using Model = ProjectViewModel;
        listen(*model, &Model::projectChanged, "project");
        listen(*model, &Model::selectedChannelIndexChanged, "channel");
        listen(*model, &Model::selectionChanged, "selection");
        listen(*model, &Model::isPlayingChanged, "isPlaying");
        listen(*model, &Model::fileURLChanged, "fileURL");
        listen(*model, &Model::hasUnsavedChangesChanged, "unsaved");
        listen(*model, &Model::historyChanged, "history");
        listen(*model, &Model::documentReplaced, "replaced");
        return model;
    }

    std::map<std::string, int> takeHeard() { return std::exchange(heard, {}); }

    /// The songs in `Kept`, the oldest first.
    std::vector<Project> keptSongs() const {
        std::vector<std::filesystem::path> found;
        const auto kept = autosave.parent_path() / "Kept";
        if (std::filesystem::exists(kept))
            for (const auto& entry : std::filesystem::directory_iterator(kept))
                if (entry.path().extension() == ".mossbit")
                    found.push_back(entry.path());
        std::ranges::sort(found);
        std::vector<Project> songs;
        for (const auto& file : found)
            songs.push_back(ProjectStore::read(file));
        return songs;
    }

    void pass(double seconds) { loop.advance(FakeMainLoop::Seconds(seconds)); }

    /// Writes a project file and returns where.
    std::filesystem::path store(const char* name, const Project& project) {
        putBytes(folder / name, ProjectStore::encode(project));
        return folder / name;
    }

private:
    void listen(ProjectViewModel& model, void (ProjectViewModel::*field)(), const char* name) {
        QObject::connect(&model, field, &model, [this, name] { ++heard[name]; });
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
