#include "Tests/Support/ViewModelHarness.h"

namespace mossbit {
namespace {

/// Two samples a tick at tempo 120 would be too coarse for envelopes; at this rate a tick is 1000.
constexpr double rate = 8000;
constexpr double secondsPerTick = 0.125;

struct Playback : ViewModelTest {
    void start(const Project& project) {
        harness.output.rate = rate;
        restart(project);
        QObject::connect(model.get(), &ProjectViewModel::playheadChanged,
                         [this] { positions.push_back(model->playhead()); });
        QObject::connect(model.get(), &ProjectViewModel::isPlayingChanged, [this] { ++switches; });
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
    /// How often playing was told to begin or end.
    int switches = 0;
};

TEST_F(Playback, PlayheadFollowsTheSoundFromTheStartAndAroundTheLoop) {
    start(song({.bars = 1}).note(60, 0, 16));
    listen(3 * secondsPerTick);
    model->play();
    EXPECT_EQ(harness.loop.pendingCount(), 1U);
    listen(18 * secondsPerTick);
    model->stop();
    model->stop();
    EXPECT_EQ(positions, (std::vector<std::int64_t>{0, 1, 2,  0,  1,  2,  3,  4,  5, 6, 7,
                                                    8, 9, 10, 11, 12, 13, 14, 15, 0, 1, -1}));
    EXPECT_EQ(switches, 2);
    EXPECT_EQ(harness.loop.pendingCount(), 0U);
    EXPECT_FALSE(harness.output.isRunning());
}

TEST_F(Playback, ASongThatDoesNotLoopRestsPastItsEndAndStopsUnlessItLoopsAgain) {
    start(song({.bars = 1, .loop = false}).note(60, 15, 1));
    listen(16.5 * secondsPerTick);
    EXPECT_EQ(model->playhead(), 16);
    model->toggleLoop();
    listen(3 * secondsPerTick);
    EXPECT_LT(model->playhead(), 4);
    // Even after the end, as long as that has not been noticed.
    model->toggleLoop();
    harness.output.pull(static_cast<std::size_t>(rate) * 5);
    model->toggleLoop();
    listen(secondsPerTick);
    EXPECT_TRUE(model->isPlaying());
    model->toggleLoop();
    listen(17 * secondsPerTick + 2);
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(model->playhead(), -1);
    EXPECT_EQ(harness.loop.pendingCount(), 0U);
}

TEST_F(Playback, ADeviceThatDoesNotStartOrIsLostForGoodIsReported) {
    const auto expectFailure = [this] {
        EXPECT_FALSE(model->isPlaying());
        EXPECT_EQ(model->playhead(), -1);
        EXPECT_EQ(model->alertMessage(), "Could not start the audio engine.");
        EXPECT_EQ(harness.loop.pendingCount(), 0U);
        model->clearAlertMessage();
    };
    harness.output.startError = "busy";
    start(song({.bars = 1}));
    expectFailure();
    for (const bool playsAgain : {true, false}) {
        harness.output.startError.clear();
        model->play();
        listen(3 * secondsPerTick);
        harness.output.stop();
        harness.output.startError = "gone";
        playsAgain ? model->play() : listen(secondsPerTick);
        expectFailure();
    }
}

} // namespace
} // namespace mossbit
