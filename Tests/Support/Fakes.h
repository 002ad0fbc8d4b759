#pragma once

#include "Platform/Dialogs.h"
#include "Platform/SystemLog.h"

#include <deque>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace mossbit {

/// Answers dialogs from a script and records what they showed. A dialog that the script does not
/// expect is cancelled, and recorded all the same.
class FakeDialogs : public Dialogs {
public:
    using Path = std::optional<std::filesystem::path>;

    std::deque<std::size_t> alertAnswers;
    std::deque<Path> saveAnswers;
    std::deque<Path> openAnswers;
    /// Every dialog in turn: "alert MESSAGE", "save NAME", "save wav NAME" or "open".
    std::vector<std::string> shown;
    Alert lastAlert;
    /// Runs while a dialog is up.
    std::function<void()> meanwhile;

    std::size_t runAlert(const Alert& alert) override {
        lastAlert = alert;
        return answer("alert " + alert.message, alertAnswers, std::size_t{2});
    }

    Path runSavePanel(FileKind kind, const std::filesystem::path& proposal) override {
        const char* const panel = kind == FileKind::wav ? "save wav " : "save ";
        return answer(panel + proposal.filename().string(), saveAnswers, Path());
    }

    Path runOpenPanel() override { return answer("open", openAnswers, Path()); }

    /// What was shown since the last call.
    std::vector<std::string> takeShown() { return std::exchange(shown, {}); }

private:
    template <typename Answer>
    Answer answer(std::string description, std::deque<Answer>& script, Answer otherwise) {
        shown.push_back(std::move(description));
        if (meanwhile)
            std::exchange(meanwhile, nullptr)();
        if (script.empty())
            return otherwise;
        Answer next = std::move(script.front());
        script.pop_front();
        return next;
    }
};

struct FakeSystemLog {
    std::vector<std::string> lines;

    operator SystemLog() {
        return [this](std::string_view line) { lines.emplace_back(line); };
    }
};

} // namespace mossbit
