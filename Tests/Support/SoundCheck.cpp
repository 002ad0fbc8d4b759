#include "Tests/Support/SoundCheck.h"

#include "Tests/Support/AllocationGuard.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/Rendering.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <fstream>

namespace mossbit {

WatchedOutput::WatchedOutput(AudioOutput& real)
    : m_real(real), m_given(1 << 23) {} // More frames than any test pulls.

bool WatchedOutput::waitFor(std::size_t frames) const {
    const std::size_t end = m_frames + frames;
    return waitUntil([&] { return m_frames >= end; });
}

void WatchedOutput::setSource(double sampleRate, Source source) {
    m_real.setSource(sampleRate, [this, source = std::move(source)](std::span<float> into) {
        const AllocationGuard guard;
        source(into);
        const std::size_t kept = std::min(into.size(), m_given.size() - m_frames);
        std::copy_n(into.begin(), kept, m_given.begin() + static_cast<std::ptrdiff_t>(m_frames));
        m_frames += kept;
    });
}

Project unmistakableSong() {
    SongBuilder builder = song({.tempo = 150, .bars = 8});
    for (std::int64_t tick = 0; tick < 128; tick += 2) {
        builder.on(ChannelKind::pulse1).note(40 + tick * 7 % 53, tick, 2);
        builder.on(ChannelKind::wave).note(36 + tick * 5 % 59, tick, 1, 5 + tick % 11);
        if (tick % 8 == 0)
            builder.on(ChannelKind::noise).note(tick / 8 % 4, tick, 1);
    }
    return builder;
}

void playSession(WatchedOutput& output, std::size_t frames) {
    FakeSystemLog log;
    AudioEngine engine(output, log);
    const Project project = unmistakableSong();
    const double rate = output.sampleRate();
    ChipCore core(compiled(project), rate > 0 ? rate : 44100);
    const std::vector<float> expected = rendered(core, frames);
    engine.play(project);
    ASSERT_TRUE(engine.isPlaying() && output.waitFor(frames));
    EXPECT_TRUE(std::ranges::equal(output.given().first(frames), expected));
    engine.update(song({.tempo = 150, .bars = 8}).note(60, 0, 128));
    ASSERT_TRUE(output.waitFor(frames));
    engine.stop();
    engine.play(project);
    ASSERT_TRUE(output.waitFor(frames));
    engine.stop();
}

std::vector<float> readRecording(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<float> left;
    float frame[2];
    while (stream.read(reinterpret_cast<char*>(frame), sizeof frame)) {
        left.push_back(frame[0]);
        EXPECT_EQ(frame[0], frame[1]);
    }
    return left;
}

std::size_t found(std::span<const float> recorded, std::span<const float> given) {
    std::size_t count = 0;
    for (const float sample : recorded) {
        if (count < given.size() &&
            std::bit_cast<std::uint32_t>(sample) == std::bit_cast<std::uint32_t>(given[count]))
            ++count;
        else if (sample != 0)
            return 0;
    }
    return count;
}

} // namespace mossbit
