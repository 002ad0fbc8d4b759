#include "Audio/Voices.h"

#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace mossbit {
namespace {

RenderChannel channelOf(ChannelKind kind, Duty duty = Duty::d50,
                        WavePreset wave = WavePreset::triangle) {
    Channel channel = Channel::makeDefault(kind);
    channel.duty = duty;
    channel.wave = wave;
    return RenderChannel(channel, 16);
}

Voice playing(const RenderChannel& channel, std::int64_t pitch, float rate = 44100) {
    Voice voice;
    voice.noteOn(channel, {.start = 0, .end = 4, .pitch = pitch, .velocity = 1}, rate);
    return voice;
}

/// How many samples the voice stays in its present stage.
int samplesInStage(Voice& voice, const RenderChannel& channel) {
    const Envelope::Stage stage = voice.envelope.stage;
    int samples = 0;
    while (voice.envelope.stage == stage && samples < 1'000'000) {
        voice.nextSample(channel, 44100);
        ++samples;
    }
    return samples;
}

TEST(Voices, WaveTablesAreQuantisedSines) {
    const double turn = 6.283185;
    for (const WavePreset preset : allWavePresets) {
        const std::vector<float> table = waveTable(preset);
        ASSERT_EQ(table.size(), 32U);
        for (int i = 0; i < 32; ++i) {
            const double t = i / 32.0;
            double raw = (i < 16 ? i : 31 - i) / 15.0 * 2 - 1;
            if (preset == WavePreset::soft)
                raw = std::sin(turn * t);
            if (preset == WavePreset::hollow)
                raw = (std::sin(turn * t) + 0.5 * std::sin(3 * turn * t)) / 1.35;
            const double level = std::round((std::clamp(raw, -1.0, 1.0) + 1) * 0.5 * 15);
            EXPECT_NEAR(table[static_cast<std::size_t>(i)], level / 15 * 2 - 1, 1e-6) << i;
        }
    }
}

TEST(Voices, PulseIsHighForItsDutyAndWaveFollowsItsTable) {
    // One period in exactly 64 samples: A at 440 Hz, and a rate of 64 times that.
    const float rate = 64 * 440;
    constexpr std::array highSamples = {8, 16, 32, 48};
    for (const Duty duty : allDuties) {
        const RenderChannel channel = channelOf(ChannelKind::pulse1, duty);
        Voice voice = playing(channel, 69, rate);
        EXPECT_EQ(voice.increment, 1.0F / 64);
        int high = 0;
        for (int i = 0; i < 64; ++i)
            high += voice.nextSample(channel, rate) > 0 ? 1 : 0;
        EXPECT_EQ(high, highSamples[static_cast<std::size_t>(duty)]);
    }
    const RenderChannel wave = channelOf(ChannelKind::wave);
    Voice voice = playing(wave, 69, rate);
    voice.envelope.level = 1; // Past the attack, so that samples are the table's own values.
    for (std::size_t i = 1; i < 64; ++i) {
        const float sample = voice.nextSample(wave, rate);
        EXPECT_FLOAT_EQ(sample / voice.envelope.level, wave.table[i / 2]) << i;
    }
}

TEST(Voices, EnvelopesLastAsLongAsTheirTimes) {
    const RenderChannel pulse = channelOf(ChannelKind::pulse1);
    Voice voice = playing(pulse, 69);
    EXPECT_EQ(samplesInStage(voice, pulse), 177);
    EXPECT_NEAR(samplesInStage(voice, pulse), 0.28 * 11025, 2);
    EXPECT_EQ(voice.envelope.stage, Envelope::Stage::sustain);
    EXPECT_EQ(voice.envelope.level, 0.72F);
    voice.noteOff();
    EXPECT_NEAR(samplesInStage(voice, pulse), 0.72 * 0.03 * 44100, 2);
    EXPECT_TRUE(voice.isIdle());

    const RenderChannel noise = channelOf(ChannelKind::noise);
    Voice drum = playing(noise, 0);
    drum.noteOff();
    EXPECT_EQ(drum.envelope.stage, Envelope::Stage::attack) << "a drum is not cut";
    samplesInStage(drum, noise);
    EXPECT_NEAR(samplesInStage(drum, noise), 0.13 * 44100, 4);
    EXPECT_TRUE(drum.isIdle());
}

TEST(Voices, ANewNoteStartsFromTheLevelOfTheOneBefore) {
    const RenderChannel wave = channelOf(ChannelKind::wave);
    Voice voice = playing(wave, 60);
    while (voice.envelope.stage != Envelope::Stage::sustain)
        voice.nextSample(wave, 44100);
    voice.noteOn(wave, {.start = 4, .end = 8, .pitch = 72, .velocity = 0.5F}, 44100);
    EXPECT_EQ(voice.phase, 0);
    EXPECT_EQ(voice.envelope.level, 0.8F);
    EXPECT_NEAR(samplesInStage(voice, wave), 0.2 * 176.4, 2);
}

TEST(Voices, SweepsTheDrumsRateToItsTarget) {
    const RenderChannel noise = channelOf(ChannelKind::noise);
    Voice voice = playing(noise, 0);
    for (int i = 0; i < 992; ++i)
        voice.nextSample(noise, 44100);
    EXPECT_NEAR(voice.lfsrRate, 1410, 2);
    for (int i = 0; i < 995; ++i)
        voice.nextSample(noise, 44100);
    EXPECT_EQ(voice.lfsrRate, 420);
    EXPECT_EQ(voice.lfsrRateStep, 0);
}

TEST(Voices, NoiseRegisterRepeatsAfterItsFullPeriod) {
    EXPECT_EQ(clockedRegister(lfsrSeed, false), 0x3FFF);
    for (const bool shortMode : {false, true}) {
        // Short mode settles into its cycle once the seed's upper bits have been shifted out.
        std::uint16_t state = lfsrSeed;
        for (int i = 0; i < 15; ++i)
            state = clockedRegister(state, shortMode);
        const std::uint16_t origin = state;
        int period = 0;
        do {
            state = clockedRegister(state, shortMode);
            ++period;
        } while (state != origin && period < 100'000);
        EXPECT_EQ(period, shortMode ? 127 : 32767);
    }
}

} // namespace
} // namespace mossbit
