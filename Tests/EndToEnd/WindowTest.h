#pragma once

#include "Tests/Support/Desktop.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace mossbit {

/// The real program in a real window, worked with the mouse and the keyboard.
class WindowTest : public testing::Test {
protected:
    // Pixels, in the window as large as it is at first.
    static constexpr int barHeight = 19;
    static constexpr Desktop::Point tempoNumber{275, 42};
    static constexpr Desktop::Point playButton{113, 42};
    /// Beside the icons, where the buttons show whether they are on.
    static constexpr Desktop::Point playFace{103, 34};
    static constexpr Desktop::Point loopFace{363, 34};

    static constexpr std::uint32_t playColor = 0xF2D45C;
    static constexpr std::uint32_t loopColor = 0xA98BF5;
    static constexpr std::uint32_t idleColor = 0x1B2132;

    /// A point in the first half of a cell of a song of four bars.
    static Desktop::Point cell(int pitch, int tick) {
        constexpr int firstX = 70;
        constexpr int middleOfC5 = 330;
        constexpr int gridWidth = 1022;
        return {firstX + gridWidth * tick / 64, middleOfC5 + (72 - pitch) * 15};
    }

    /// Starts the program and waits for its window; false if that does not come.
    bool open(const std::vector<std::string>& arguments = {},
              const std::string& title = "Untitled") {
        program = desktop.start(arguments);
        return desktop.waitForTitle(title);
    }

    /// Closes the window and waits for the program's end; false if that is not in good order.
    bool close() {
        desktop.closeWindow();
        return program->wait() == 0;
    }

    /// Answers the file dialog that is about to open.
    void chooseFile(const std::string& dialog, const std::string& name) {
        ASSERT_TRUE(desktop.waitForTitle(dialog));
        desktop.type(name);
        desktop.key("Return");
    }

    /// Waits until the autosave file holds these notes on one channel, each as
    /// "pitch:start+length". Returns what it held last.
    std::string notes(ChannelKind kind, const std::string& expected) const {
        std::string found;
        waitUntil([&] {
            std::ostringstream text;
            const Project project = desktop.autosave().value_or(Project());
            for (const Note& note : project.channels[static_cast<std::size_t>(kind)].notes)
                text << (text.tellp() > 0 ? " " : "") << note.pitch << ':' << note.start << '+'
                     << note.length;
            found = text.str();
            return found == expected;
        });
        return found;
    }

    bool waitForAutosave(const std::function<bool(const Project&)>& condition) const {
        return waitUntil([&] {
            const auto project = desktop.autosave();
            return project && condition(*project);
        });
    }

    Desktop desktop;
    std::unique_ptr<Process> program;
};

} // namespace mossbit
