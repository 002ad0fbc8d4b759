#pragma once

#include "Tests/Support/FakeAudioOutput.h"
#include "Tests/Support/FakeMainLoop.h"
#include "Tests/Support/Fakes.h"
#include "ViewModels/ProjectViewModel.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

namespace mossbit {

/// A view model without the real system: its autosave never comes due, and nothing is written.
struct UnseenModel {
    struct NoFile : AtomicFile {
        void write(const std::filesystem::path&, const std::function<void(const Put&)>&) override {}
        void move(const std::filesystem::path&, const std::filesystem::path&) override {}
    };

    FakeMainLoop loop;
    FakeDialogs dialogs;
    NoFile files;
    FakeAudioOutput output;
    FakeSystemLog log;
    ProjectViewModel model;

    explicit UnseenModel(Project project)
        : model({loop, dialogs, files, output, log}, std::move(project), std::nullopt) {}
};

} // namespace mossbit
