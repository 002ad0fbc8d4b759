#include "Tests/Support/SoundCheck.h"

#include "Tests/Support/AllocationGuard.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/SongBuilder.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <memory>

namespace mossbit {

namespace {

/// More blocks than any test pulls.
constexpr std::size_t blockLimit = 1 << 18;

std::shared_ptr<const RenderPattern> compiled(const Project& project) {
    return std::make_shared<const RenderPattern>(project);
}

Project edited(Project project) {
    for (Note& note : project.channels[0].notes)
        note.pitch = note.pitch == PitchRange::highest ? note.pitch - 1 : note.pitch + 1;
    return project;
}

} // namespace

WatchedOutput::WatchedOutput(AudioOutput& real) : m_real(real), m_blockStarts(blockLimit) {}

std::vector<std::size_t> WatchedOutput::blockStarts() const {
    return {m_blockStarts.begin(), m_blockStarts.begin() + static_cast<std::ptrdiff_t>(m_blocks)};
}

void WatchedOutput::connectSource(const AudioFormat& format, Source source) {
    m_real.connectSource(format, [this, source = std::move(source)](
                                     std::uint32_t frames, std::span<float* const> buffers) {
        const AllocationGuard guard;
        if (m_blocks < blockLimit)
            m_blockStarts[m_blocks++] = m_frames;
        source(frames, buffers);
        m_frames += frames;
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

std::vector<float> rendered(const Project& project, double rate, std::size_t frames) {
    ChipCore core(compiled(project), rate);
    std::vector<float> samples(frames);
    core.render(samples);
    return samples;
}

Recording readRecording(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    Recording recording;
    float frame[2];
    while (stream.read(reinterpret_cast<char*>(frame), sizeof frame)) {
        recording.left.push_back(frame[0]);
        recording.right.push_back(frame[1]);
    }
    return recording;
}

Comparison compare(std::span<const float> recorded, std::span<const float> rendered) {
    Comparison result;
    for (std::size_t i = 0; i < recorded.size(); ++i) {
        const bool same = result.found < rendered.size() &&
                          std::bit_cast<std::uint32_t>(recorded[i]) ==
                              std::bit_cast<std::uint32_t>(rendered[result.found]);
        if (same) {
            ++result.found;
        } else if (recorded[i] != 0) {
            result.stranger = static_cast<std::ptrdiff_t>(i);
            return result;
        } else if (result.found < rendered.size()) {
            ++(result.found == 0 ? result.silentBefore : result.silentBetween);
        }
    }
    return result;
}

Session::Session(WatchedOutput& output, std::size_t frames) : m_output(output) {
    FakeSystemLog log;
    AudioEngine engine(output, log);
    const Project first = unmistakableSong();
    const Project second = edited(first);
    const auto rewind = [](ChipCore& core) { core.rewind(); };
    m_rate = output.outputSampleRate() > 0 ? output.outputSampleRate() : 44100;

    engine.play(first);
    m_played = engine.isPlaying() && playFor(frames);
    order([&] { engine.update(second); },
          [second](ChipCore& core) { core.update(compiled(second)); });
    m_played = m_played && playFor(frames);
    order([&] { engine.stop(); }, rewind);
    // The device is paused: this takes effect at exactly this frame.
    m_orders.push_back({output.frames(), output.frames(), rewind});
    engine.play(second);
    m_played = m_played && playFor(frames);
    order([&] { engine.stop(); }, rewind);
    m_frames = output.frames();
    m_blockStarts = output.blockStarts();
    m_blockStarts.push_back(m_frames);
}

void Session::order(const std::function<void()>& act, std::function<void(ChipCore&)> give) {
    const std::size_t earliest = m_output.frames();
    act();
    m_orders.push_back({earliest, m_output.frames(), std::move(give)});
}

bool Session::playFor(std::size_t frames) {
    const std::size_t end = m_output.frames() + frames;
    return waitUntil([&] { return m_output.frames() >= end; });
}

std::vector<float> Session::renderedWith(std::span<const std::size_t> places) const {
    ChipCore core(compiled(unmistakableSong()), m_rate);
    std::vector<float> samples(m_frames);
    std::size_t from = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        core.render(std::span(samples).subspan(from, places[i] - from));
        m_orders[i].give(core);
        from = places[i];
    }
    core.render(std::span(samples).subspan(from));
    return samples;
}

std::vector<float> Session::expected(std::span<const float> recorded) const {
    std::vector<std::size_t> places;
    std::vector<float> best;
    for (const Order& order : m_orders) {
        // A block that began before the order was given may have begun without it.
        const auto begin =
            std::lower_bound(m_blockStarts.begin(), m_blockStarts.end(), order.earliest);
        auto end = std::upper_bound(begin, m_blockStarts.end(), order.latest);
        if (order.earliest != order.latest && end != m_blockStarts.end())
            ++end;
        std::size_t bestPlace = order.earliest;
        std::size_t bestFound = 0;
        for (auto place = begin; place != end; ++place) {
            places.push_back(*place);
            std::vector<float> samples = renderedWith(places);
            const std::size_t found = compare(recorded, samples).found;
            if (best.empty() || found > bestFound) {
                bestFound = found;
                bestPlace = *place;
                best = std::move(samples);
            }
            places.pop_back();
        }
        places.push_back(bestPlace);
    }
    return best;
}

} // namespace mossbit
