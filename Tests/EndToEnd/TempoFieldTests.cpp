#include "Tests/EndToEnd/WindowTest.h"
#include "Tests/Support/SongBuilder.h"

#include <algorithm>

namespace mossbit {
namespace {

class TempoField : public WindowTest {
protected:
    void SetUp() override {
        desktop.store("song.mossbit", song().note(72, 4, 1));
        ASSERT_TRUE(open({"song.mossbit"}, "song"));
        ASSERT_TRUE(desktop.waitForPixel(note, playColor));
        // Not with the pointer, which is in the picture.
        desktop.key("ctrl+a");
    }

    bool isOpen() const { return desktop.pixel(fieldEdge) == playColor; }

    /// Opens the field, and types over the number in it.
    void typeTempo(const std::string& text) {
        desktop.click(tempoNumber);
        ASSERT_TRUE(waitUntil([&] { return isOpen(); }));
        desktop.type(text);
    }

    bool waitForTempo(std::int64_t tempo) const {
        return waitForAutosave([&](const Project& project) { return project.tempo == tempo; });
    }

    std::ptrdiff_t visibleWindows() const {
        const std::string windows =
            desktop.outputOf({"xdotool", "search", "--onlyvisible", "--class", "mossbit"});
        return std::count(windows.begin(), windows.end(), '\n');
    }

    /// Where the open field has its outline, and the closed one nothing.
    static constexpr Desktop::Point fieldEdge{252, 42};
    const Desktop::Point note = cell(72, 4);
};

TEST_F(TempoField, HasTheKeysOfText) {
    typeTempo("156");
    desktop.key("space BackSpace BackSpace Return");
    EXPECT_TRUE(waitForTempo(40)) << "15 is below what there is";
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(desktop.pixel(playFace), idleColor);
    EXPECT_EQ(desktop.pixel(note), playColor);

    typeTempo("1");
    desktop.key("ctrl+a");
    desktop.type("90");
    desktop.key("Return");
    EXPECT_TRUE(waitForTempo(90));
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, playColor));
    desktop.key("BackSpace");
    EXPECT_EQ(notes(ChannelKind::pulse1, ""), "");
}

TEST_F(TempoField, LeavesTheKeysOfCommandsAlone) {
    typeTempo("77");
    desktop.click({310, 42});
    EXPECT_TRUE(waitForTempo(121));
    EXPECT_TRUE(isOpen()) << "a click on a button does not take the keyboard";
    desktop.key("ctrl+z");
    EXPECT_TRUE(waitForTempo(120));
    const std::ptrdiff_t windows = visibleWindows();
    desktop.click({20, 9});
    EXPECT_TRUE(waitUntil([&] { return visibleWindows() > windows; }));
    desktop.key("Escape");
    EXPECT_TRUE(waitUntil([&] { return visibleWindows() == windows; }));
    EXPECT_TRUE(isOpen());

    desktop.key("ctrl+e");
    ASSERT_TRUE(desktop.waitForTitle("Export WAV"));
    EXPECT_TRUE(waitForTempo(77)) << "what is exported has the tempo that was typed";
    desktop.key("Escape");
    ASSERT_TRUE(desktop.waitForTitle("song"));
    EXPECT_FALSE(isOpen());

    typeTempo("78");
    desktop.click(cell(60, 8));
    EXPECT_TRUE(waitForTempo(78));
    EXPECT_FALSE(isOpen());
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, playColor));
}

} // namespace
} // namespace mossbit
