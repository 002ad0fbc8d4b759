#include "Tests/EndToEnd/WindowTest.h"
#include "Tests/Support/SongBuilder.h"
#include "Tests/Support/SoundServer.h"

namespace mossbit {
namespace {

using Window = WindowTest;

/// Waits until a label of the program holds that text, as assistive tools read it.
bool waitForText(const Desktop& desktop, const std::string& text) {
    const char* const reader = "import pyatspi\n"
                               "def show(node):\n"
                               "    for child in node or []:\n"
                               "        if child and child.getRoleName() == 'label':\n"
                               "            print(child.name)\n"
                               "        show(child)\n"
                               "show(pyatspi.Registry.getDesktop(0))\n";
    return waitUntil([&] {
        return desktop.outputOf({"/usr/bin/python3", "-c", reader}).find(text) != std::string::npos;
    });
}

TEST_F(Window, FirstStart) {
    ASSERT_TRUE(open());
    auto window = desktop.activeWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->width, 1100);
    EXPECT_EQ(window->height, 700 + barHeight);
    desktop.run("getactivewindow windowsize 100 100");
    EXPECT_TRUE(waitUntil([&] {
        window = desktop.activeWindow();
        return window && window->width < 1100;
    }));
    EXPECT_EQ(window->width, 900);
    EXPECT_EQ(window->height, 600 + barHeight);
    EXPECT_TRUE(close());
    EXPECT_EQ(desktop.autosave(), Project());
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
    const auto file = desktop / "my song.mossbit";
    const Project saved = ProjectStore::read(file);
    EXPECT_EQ(saved.channels[0].notes.size(), 1);
    EXPECT_EQ(bytesOf(file), ProjectStore::encode(saved));

    desktop.key("ctrl+e");
    chooseFile("Export WAV", "take one");
    ASSERT_TRUE(desktop.waitForTitle("my song"));
    const auto rendered = desktop / "rendered.wav";
    ASSERT_EQ(Process({MOSSBIT_RENDER, file, rendered}).wait(), 0);
    EXPECT_TRUE(waitUntil([&] { return bytesOf(desktop / "take one.wav") == bytesOf(rendered); }));
    EXPECT_GT(bytesOf(rendered).size(), 1000);

    desktop.click(cell(74, 8));
    ASSERT_TRUE(desktop.waitForTitle("my song •"));
    EXPECT_TRUE(close());
    const Project left = ProjectStore::read(file);
    EXPECT_EQ(left.channels[0].notes.size(), 2);
    EXPECT_EQ(desktop.autosave(), left);
    ASSERT_TRUE(open());
    EXPECT_TRUE(desktop.waitForPixel(cell(72, 4), playColor));
    EXPECT_TRUE(close());
    EXPECT_EQ(desktop.autosave(), left);
}

TEST_F(Window, AsksBeforeANewSong) {
    ASSERT_TRUE(open());
    desktop.click(cell(72, 4));
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    const auto ask = [&] {
        desktop.key("ctrl+n");
        return desktop.waitForTitle("Mossbit");
    };
    const std::function<void()> cancels[] = {
        [&] { desktop.key("Escape"); },
        [&] { desktop.closeWindow(); },
        [&] { desktop.key("Tab Tab Return"); },
        [&] {
            desktop.key("Return");
            ASSERT_TRUE(desktop.waitForTitle("Save"));
            desktop.key("Escape");
        },
    };
    for (const auto& cancel : cancels) {
        ASSERT_TRUE(ask());
        cancel();
        ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    }
    EXPECT_EQ(notes(ChannelKind::pulse1, "72:4+1"), "72:4+1");

    ASSERT_TRUE(ask());
    desktop.key("Return");
    chooseFile("Save", "kept");
    ASSERT_TRUE(desktop.waitForTitle("Untitled"));
    EXPECT_EQ(ProjectStore::read(desktop / "kept.mossbit").channels[0].notes.size(), 1);
    EXPECT_TRUE(waitForAutosave([](const Project& project) { return project == Project(); }));

    desktop.click(cell(70, 4));
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    ASSERT_TRUE(ask());
    desktop.key("Tab Return");
    ASSERT_TRUE(desktop.waitForTitle("Untitled"));
    EXPECT_TRUE(waitForAutosave([](const Project& project) { return project == Project(); }));
}

TEST_F(Window, SaysWhatWentWrongAndGoesOn) {
    setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    setenv("SDL_AUDIODRIVER", "bogus", 1);
    putBytes(desktop / "broken.mossbit", "{");
    desktop.store("whole <b>.mossbit", song({.tempo = 99}).note(72, 4, 1));
    ASSERT_TRUE(open({"whole <b>.mossbit"}, "whole <b>"));
    desktop.key("ctrl+o");
    chooseFile("Open", "broken.mossbit");
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    EXPECT_TRUE(waitForText(desktop, "Could not open that project: "));
    desktop.key("Return");
    ASSERT_TRUE(desktop.waitForTitle("whole <b>"));
    EXPECT_TRUE(desktop.waitForPixel(cell(72, 4), playColor));

    desktop.key("space");
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    EXPECT_TRUE(waitForText(desktop, "Could not start the audio engine."));
    desktop.key("Return");
    ASSERT_TRUE(desktop.waitForTitle("whole <b>"));
    EXPECT_EQ(desktop.pixel(playFace), idleColor);
    desktop.click(cell(60, 8));
    EXPECT_EQ(notes(ChannelKind::pulse1, "72:4+1 60:8+1"), "72:4+1 60:8+1");
    EXPECT_TRUE(close());
}

TEST_F(Window, IsReadByScreenReaders) {
    setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    SongBuilder drawn = song().note(60, 16, 4).note(73, 5, 1);
    drawn.on(ChannelKind::wave).muted();
    drawn.on(ChannelKind::noise).note(1, 63, 1);
    desktop.store("song.mossbit", drawn);
    ASSERT_TRUE(open({"song.mossbit"}, "song"));
    // The system's own Python, for which the packages of the distribution are.
    EXPECT_EQ(desktop.outputOf({"/usr/bin/python3", "-B", MOSSBIT_SCREEN_READER}), "passed\n");
    EXPECT_TRUE(close());
}

TEST_F(Window, TakesTheFileOfASecondStart) {
    desktop.store("one.mossbit", song().note(72, 4, 1));
    ASSERT_TRUE(open());
    desktop.click(cell(72, 20));
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    EXPECT_EQ(desktop.start({"one.mossbit"})->wait(), 0);
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    desktop.key("Escape");
    ASSERT_TRUE(desktop.waitForTitle("Untitled •"));
    EXPECT_EQ(desktop.start({"one.mossbit"})->wait(), 0);
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    desktop.key("Tab Return");
    ASSERT_TRUE(desktop.waitForTitle("one"));
    EXPECT_TRUE(desktop.waitForPixel(cell(72, 4), playColor));

    desktop.run("getactivewindow windowminimize");
    ASSERT_TRUE(desktop.waitForTitle(""));
    EXPECT_EQ(desktop.start()->wait(), 0);
    EXPECT_TRUE(desktop.waitForTitle("one"));
}

struct SoundServerFirst {
    SoundServer server;
};

/// The server's environment first: the desktop's home and bus replace those.
class WindowWithSound : public SoundServerFirst, public WindowTest {
protected:
    WindowWithSound() { setenv("SDL_AUDIODRIVER", "pulseaudio", 1); }
};

TEST_F(WindowWithSound, PlaysOnWithANewServer) {
    ASSERT_TRUE(server.start());
    desktop.store("song.mossbit", song({.bars = 4}).note(48, 0, 64));
    ASSERT_TRUE(open({"song.mossbit"}, "song"));
    desktop.key("space");
    EXPECT_TRUE(server.waitForSound());
    for (const int tick : {8, 16, 24}) {
        server.kill();
        desktop.drag(cell(60, tick), cell(60, tick + 4));
        EXPECT_TRUE(desktop.waitForPixel(cell(60, tick + 1), playColor));
        ASSERT_TRUE(server.start());
        EXPECT_TRUE(server.waitForSound());
        EXPECT_EQ(desktop.pixel(playFace), playColor);
    }
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, idleColor));
    EXPECT_TRUE(close());
}

} // namespace
} // namespace mossbit
