#include "Tests/Support/AllocationGuard.h"
#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

namespace mossbit {
namespace {

/// Its audio thread may neither allocate nor free.
struct GuardedOutput : FakeAudioOutput {
    void connectSource(const AudioFormat& newFormat, Source source) override {
        FakeAudioOutput::connectSource(
            newFormat,
            [source = std::move(source)](std::uint32_t frames, std::span<float* const> buffers) {
                const AllocationGuard guard;
                source(frames, buffers);
            });
    }
};

TEST(Concurrency, EditsAtFullSpeedMeetARenderingThread) {
    ViewModelHarness harness;
    GuardedOutput output;
    output.pullsOnThread = true;
    const ViewModelServices services = {harness.loop, harness.dialogs, harness.files, output,
                                        harness.log};
    ProjectViewModel model(services, song({.tempo = 300, .bars = 1, .loop = false}).note(60, 0, 16),
                           std::nullopt);
    for (int round = 0; round < 3000; ++round) {
        const std::int64_t value = round % 61;
        model.addNote(36 + value, value % 16);
        model.updateNote(*model.selection().begin(), {.length = 1 + value % 4});
        if (round % 7 == 0)
            model.toggleLoop();
        if (round % 20 == 0)
            model.deleteNote(*model.selection().begin());
        if (round % 3 == 0)
            model.undo();
        if (round % 50 == 0)
            model.play();
        if (round % 400 == 399)
            model.stop();
        model.setSelectedChannelIndex(round % 3);
        harness.pass(1.0 / 60);
        ASSERT_GE(model.playhead(), -1);
        ASSERT_LE(model.playhead(), 16);
        ASSERT_EQ(model.isPlaying(), output.isRunning());
    }
    model.stop();
    EXPECT_EQ(model.playhead(), -1);
}

} // namespace
} // namespace mossbit
