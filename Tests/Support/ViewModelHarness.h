#pragma once

#include "Platform/PosixAtomicFile.h"
#include "Services/ProjectStore.h"
#include "Tests/Support/FakeAudioOutput.h"
#include "Tests/Support/FakeMainLoop.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"
#include "ViewModels/ProjectViewModel.h"

#include <cerrno>
#include <map>
#include <string>

namespace mossbit {

/// A disk that fails at one step of every write, with a number for `errno`.
struct FileFault {
    enum class Step { none, open, write, sync, rename };

    Step step = Step::none;
    int error = 0;

    /// The real calls, but for the one that fails. `fault` can be changed between writes.
    static PosixFileCalls calls(const FileFault& fault) {
        const auto real = PosixFileCalls::real();
        return {.open = unless(fault, Step::open, real.open),
                .write = unless(fault, Step::write, real.write),
                .sync = unless(fault, Step::sync, real.sync),
                .rename = unless(fault, Step::rename, real.rename)};
    }

private:
    template <typename Result, typename... Arguments>
    static std::function<Result(Arguments...)> unless(const FileFault& fault, Step step,
                                                      std::function<Result(Arguments...)> call) {
        return [&fault, step, call = std::move(call)](Arguments... arguments) -> Result {
            if (fault.step != step)
                return call(arguments...);
            errno = fault.error;
            return -1;
        };
    }
};

/// Everything that a view model needs, with its files in a scratch folder.
struct ViewModelHarness {
    ScratchFolder folder;
    FakeMainLoop loop;
    FakeDialogs dialogs;
    FileFault fault;
    PosixAtomicFile realFiles{FileFault::calls(fault)};
    RecordingAtomicFile files{realFiles};
    FakeAudioOutput output;
    FakeSystemLog log;
    std::filesystem::path autosave = folder / "Autosave.mossbit";
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
        listen(*model, &Model::playheadChanged, "playhead");
        listen(*model, &Model::fileURLChanged, "fileURL");
        listen(*model, &Model::hasUnsavedChangesChanged, "unsaved");
        listen(*model, &Model::alertMessageChanged, "alert");
        listen(*model, &Model::isEditingTextChanged, "editingText");
        listen(*model, &Model::historyChanged, "history");
        listen(*model, &Model::documentReplaced, "replaced");
        return model;
    }

    std::map<std::string, int> takeHeard() { return std::exchange(heard, {}); }

    void pass(double seconds) { loop.advance(FakeMainLoop::Seconds(seconds)); }

    /// Writes a project file and returns where.
    std::filesystem::path store(const char* name, const Project& project) {
        realFiles.write(folder / name, ProjectStore::encode(project));
        return folder / name;
    }

private:
    void listen(ProjectViewModel& model, void (ProjectViewModel::*field)(), const char* name) {
        QObject::connect(&model, field, &model, [this, name] { ++heard[name]; });
    }
};

} // namespace mossbit
