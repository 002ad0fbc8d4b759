#include "Tests/EndToEnd/WindowTest.h"
#include "Tests/Support/SongBuilder.h"

namespace mossbit {
namespace {

using Window = WindowTest;

TEST_F(Window, FirstStart) {
    ASSERT_TRUE(open());
    auto window = desktop.activeWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->width, 1100);
    EXPECT_EQ(window->height, 700 + barHeight);
    desktop.resize(100, 100);
    EXPECT_TRUE(waitUntil([&] {
        window = desktop.activeWindow();
        return window && window->width < 1100;
    }));
    EXPECT_EQ(window->width, 900);
    EXPECT_EQ(window->height, 600 + barHeight);
    EXPECT_TRUE(close());
    EXPECT_EQ(autosave(), Project());
}

TEST_F(Window, DrawsPlaysAndTakesBack) {
    ASSERT_TRUE(open());
    desktop.click(cell(72, 4));
    EXPECT_TRUE(desktop.waitForTitle("Untitled •"));
    EXPECT_EQ(notes(ChannelKind::pulse1, "72:4+1"), "72:4+1");
    desktop.drag(cell(60, 8), cell(60, 12));
    EXPECT_EQ(notes(ChannelKind::pulse1, "72:4+1 60:8+4"), "72:4+1 60:8+4");

    EXPECT_TRUE(desktop.waitForPixel(playFace, idleColor));
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, playColor));
    desktop.key("ctrl+3");
    desktop.click(cell(65, 16));
    EXPECT_EQ(notes(ChannelKind::wave, "65:16+1"), "65:16+1");
    EXPECT_EQ(desktop.pixel(playFace), playColor);
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, idleColor));

    desktop.key("BackSpace");
    EXPECT_EQ(notes(ChannelKind::wave, ""), "");
    desktop.key("ctrl+z");
    EXPECT_EQ(notes(ChannelKind::wave, "65:16+1"), "65:16+1");
    desktop.key("ctrl+shift+z");
    EXPECT_EQ(notes(ChannelKind::wave, ""), "");
    desktop.key("ctrl+1");
    desktop.secondaryClick(cell(72, 4));
    EXPECT_EQ(notes(ChannelKind::pulse1, "60:8+4"), "60:8+4");

    EXPECT_TRUE(desktop.waitForPixel(loopFace, loopColor));
    desktop.key("ctrl+l");
    EXPECT_TRUE(desktop.waitForPixel(loopFace, idleColor));
    EXPECT_TRUE(waitForAutosave([](const Project& project) { return !project.loop; }));
    desktop.key("ctrl+z");
    EXPECT_TRUE(desktop.waitForPixel(loopFace, loopColor));
}

TEST_F(Window, SavesExportsAndComesBack) {
    ASSERT_TRUE(open());
    desktop.click(cell(72, 4));
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    desktop.key("ctrl+s");
    chooseFile("Save", "my song");
    ASSERT_TRUE(desktop.waitForTitle("my song"));
    const auto file = desktop.home() / "my song.mossbit";
    const Project saved = ProjectStore::read(file);
    EXPECT_EQ(saved.channels[0].notes.size(), 1);
    EXPECT_EQ(bytesOf(file), ProjectStore::encode(saved));

    desktop.key("ctrl+e");
    chooseFile("Export WAV", "take one");
    ASSERT_TRUE(desktop.waitForTitle("my song"));
    const auto rendered = desktop.home() / "rendered.wav";
    ASSERT_EQ(Process({MOSSBIT_RENDER, file, rendered}).wait(), 0);
    EXPECT_TRUE(
        waitUntil([&] { return bytesOf(desktop.home() / "take one.wav") == bytesOf(rendered); }));
    EXPECT_GT(bytesOf(rendered).size(), 1000);

    desktop.click(cell(74, 8));
    ASSERT_TRUE(desktop.waitForTitle("my song •"));
    EXPECT_TRUE(close());
    const Project left = ProjectStore::read(file);
    EXPECT_EQ(left.channels[0].notes.size(), 2);
    EXPECT_EQ(autosave(), left);
    ASSERT_TRUE(open());
    EXPECT_TRUE(desktop.waitForPixel(cell(74, 8), playColor));
    EXPECT_TRUE(close());
    EXPECT_EQ(autosave(), left);
}

TEST_F(Window, AsksBeforeANewSong) {
    ASSERT_TRUE(open());
    desktop.click(cell(72, 4));
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    const auto ask = [&] {
        desktop.key("ctrl+n");
        return desktop.waitForTitle("Mossbit");
    };
    ASSERT_TRUE(ask());
    desktop.key("Escape");
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    ASSERT_TRUE(ask());
    desktop.closeWindow();
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    ASSERT_TRUE(ask());
    desktop.key("Tab");
    desktop.key("Tab");
    desktop.key("Return");
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    EXPECT_EQ(notes(ChannelKind::pulse1, "72:4+1"), "72:4+1");

    // A cancelled save is no save.
    ASSERT_TRUE(ask());
    desktop.key("Return");
    ASSERT_TRUE(desktop.waitForTitle("Save"));
    desktop.key("Escape");
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    ASSERT_TRUE(ask());
    desktop.key("Return");
    chooseFile("Save", "kept");
    ASSERT_TRUE(desktop.waitForTitle("Untitled"));
    EXPECT_EQ(ProjectStore::read(desktop.home() / "kept.mossbit").channels[0].notes.size(), 1);
    EXPECT_TRUE(waitForAutosave([](const Project& project) { return project == Project(); }));

    desktop.click(cell(70, 4));
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    ASSERT_TRUE(ask());
    desktop.key("Tab");
    desktop.key("Return");
    ASSERT_TRUE(desktop.waitForTitle("Untitled"));
    EXPECT_TRUE(waitForAutosave([](const Project& project) { return project == Project(); }));
}

TEST_F(Window, SaysWhyAFileDoesNotOpen) {
    putBytes(desktop.home() / "broken.mossbit", "{");
    store("whole <b>.mossbit", song({.tempo = 99}).note(72, 4, 1));
    ASSERT_TRUE(open({"whole <b>.mossbit"}, "whole <b>"));
    desktop.key("ctrl+o");
    chooseFile("Open", "broken.mossbit");
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    desktop.key("Return");
    ASSERT_TRUE(desktop.waitForTitle("whole <b>"));
    EXPECT_TRUE(desktop.waitForPixel(cell(72, 4), playColor));
}

} // namespace
} // namespace mossbit
