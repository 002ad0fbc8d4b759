#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

namespace mossbit {
namespace {

/// Two samples a tick at tempo 120 would be too coarse for envelopes; at this rate a tick is 1000.
constexpr double rate = 8000;
constexpr double secondsPerTick = 0.125;

struct Playback : testing::Test {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> model;

    void start(const Project& project) {
        harness.output.rate = rate;
        model = harness.start(project);
        QObject::connect(model.get(), &ProjectViewModel::playheadChanged, model.get(),
                         [this] { positions.push_back(model->playhead()); });
        model->play();
    }

    /// Lets sound and time pass together, in blocks of 1/64 s.
    void listen(double seconds) {
        for (double passed = 0; passed < seconds; passed += 1.0 / 64) {
            if (harness.output.isRunning())
                harness.output.pull(static_cast<std::size_t>(rate / 64));
            harness.pass(1.0 / 64);
        }
    }

    std::vector<std::int64_t> positions;
};

TEST_F(Playback, PlayheadFollowsTheSoundAroundTheLoop) {
    start(song({.bars = 1}).note(60, 0, 16));
    listen(18 * secondsPerTick);
    std::vector<std::int64_t> expected;
    for (std::int64_t tick = 0; tick < 18; ++tick)
        expected.push_back(tick % 16);
    EXPECT_EQ(positions, expected);
    EXPECT_EQ(harness.heard["isPlaying"], 1);
    model->stop();
    model->stop();
    EXPECT_EQ(positions.back(), -1);
    EXPECT_EQ(positions.size(), 19U);
    EXPECT_EQ(harness.heard["isPlaying"], 2);
    EXPECT_EQ(harness.loop.pendingCount(), 0U);
    EXPECT_FALSE(harness.output.isRunning());
}

TEST_F(Playback, ASongThatDoesNotLoopRestsPastItsEndAndStops) {
    start(song({.bars = 1, .loop = false}).note(60, 15, 1));
    listen(17 * secondsPerTick);
    EXPECT_TRUE(model->isPlaying() || positions.back() == -1);
    listen(2);
    EXPECT_FALSE(model->isPlaying());
    ASSERT_EQ(positions.size(), 18U);
    EXPECT_EQ(positions[16], 16);
    EXPECT_EQ(positions[17], -1);
    EXPECT_EQ(harness.loop.pendingCount(), 0U);
}

TEST_F(Playback, TheLoopSwitchActsWhilePlaying) {
    start(song({.bars = 1}).note(60, 15, 1));
    listen(20 * secondsPerTick);
    model->toggleLoop();
    listen(20 * secondsPerTick);
    EXPECT_FALSE(model->isPlaying());

    start(song({.bars = 1, .loop = false}).on(ChannelKind::pulse1).note(60, 15, 1));
    while (model->playhead() < 16 && model->isPlaying())
        listen(1.0 / 64);
    ASSERT_EQ(model->playhead(), 16);
    model->toggleLoop();
    listen(3 * secondsPerTick);
    EXPECT_TRUE(model->isPlaying());
    EXPECT_LT(model->playhead(), 4);

    // Even after the end, as long as that has not been noticed.
    start(song({.bars = 1, .loop = false}).note(60, 15, 1));
    harness.output.pull(static_cast<std::size_t>(rate) * 5);
    model->toggleLoop();
    listen(secondsPerTick);
    EXPECT_TRUE(model->isPlaying());
}

TEST_F(Playback, PlayingAgainRestartsWithOneTimer) {
    start(song({.bars = 1}).note(60, 0, 16));
    listen(5 * secondsPerTick);
    EXPECT_EQ(model->playhead(), 4);
    model->play();
    EXPECT_EQ(harness.loop.pendingCount(), 1U);
    EXPECT_EQ(harness.heard["isPlaying"], 1);
    listen(2 * secondsPerTick);
    EXPECT_EQ(model->playhead(), 1);
    // An edit is taken in without moving the playhead.
    model->setBars(2);
    listen(secondsPerTick);
    EXPECT_EQ(model->playhead(), 2);
}

TEST_F(Playback, ADeviceThatDoesNotStartIsReported) {
    harness.output.startError = "busy";
    start(Project());
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(model->alertMessage(), "Could not start the audio engine.");
    EXPECT_EQ(harness.log.lines.size(), 1U);
    EXPECT_EQ(harness.loop.pendingCount(), 0U);

    // The same while playing, when the device has gone.
    model->clearAlertMessage();
    harness.output.startError.clear();
    start(song({.bars = 1}));
    listen(3 * secondsPerTick);
    harness.output.lose();
    harness.output.startError = "gone";
    model->play();
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(model->playhead(), -1);
    EXPECT_EQ(harness.loop.pendingCount(), 0U);
}

TEST_F(Playback, ADeviceThatIsLostForGoodIsReported) {
    start(song({.bars = 1}).note(60, 0, 16));
    listen(3 * secondsPerTick);
    harness.output.lose();
    listen(secondsPerTick);
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(model->playhead(), -1);
    EXPECT_EQ(model->alertMessage(), "Could not start the audio engine.");
    model->play();
    EXPECT_TRUE(model->isPlaying());
}

TEST_F(Playback, ReplacingTheDocumentStopsIt) {
    const auto file = harness.store("song.mossbit", song({}).note(60, 0, 1));
    for (const bool opens : {true, false}) {
        start(song({.bars = 1}));
        listen(secondsPerTick);
        opens ? model->open(file) : model->newProject();
        EXPECT_FALSE(model->isPlaying());
        EXPECT_EQ(model->playhead(), -1);
    }
    start(song({.bars = 1}));
    model->open(harness.folder / "missing.mossbit");
    EXPECT_TRUE(model->isPlaying());
}

} // namespace
} // namespace mossbit
