#pragma once

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
    ProjectViewModel model;

    explicit UnseenModel(Project project)
        : model({loop, dialogs, files, output, [](auto&&) {}}, std::move(project), std::nullopt) {}
};

} // namespace mossbit
