#include "Audio/ChipCore.h"

#include "Audio/FourVoices.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace mossbit {

ChipCore::ChipCore(std::shared_ptr<const RenderPattern> pattern, double sampleRate)
    : m_sampleRate(sampleRate),
      m_pattern(std::move(pattern)),
      m_highPass{.coefficient = HighPass::coefficientFor(static_cast<float>(sampleRate))} {}

void ChipCore::update(std::shared_ptr<const RenderPattern> pattern) {
    m_storage.with([&](NextPattern& next) {
        next.pattern.swap(pattern);
        next.isNew = true;
    });
}

void ChipCore::rewind() {
    m_tickBox.with([this](Report& report) {
        report = {};
        m_rewindOrdered = true;
    });
}

void ChipCore::silence() {
    m_tickBox.with([this](Report& report) {
        report.tick = -1;
        m_silenceOrdered = true;
    });
}

std::int64_t ChipCore::publishedTick() const {
    return m_tickBox.with([](const Report& report) { return report.tick; });
}

bool ChipCore::isFinished() const {
    return m_tickBox.with([](const Report& report) { return report.finished; });
}

void ChipCore::render(std::span<float> into) noexcept {
    takeOrders();
    const double samplesPerTick = m_sampleRate * (60 / m_pattern->tempo * 0.25);
    while (!into.empty()) {
        if (m_samplesToNextTick <= 0) {
            advanceTick();
            m_samplesToNextTick += samplesPerTick;
        }
        // Counting down sample by sample would give the same double: above 0 each step is exact.
        const double untilTick = std::max(std::ceil(m_samplesToNextTick), 1.0);
        const double run = std::min(untilTick, static_cast<double>(into.size()));
        m_samplesToNextTick -= run;
        const auto frames = static_cast<std::size_t>(run);
        mix(into.first(frames));
        into = into.subspan(frames);
    }
    m_tickBox.with([&](Report& report) {
        // A rewind or silence since this call began has already written its own report.
        if (!m_rewindOrdered && !m_silenceOrdered)
            report = {m_finished ? -1 : m_currentTick, m_finished};
    });
}

void ChipCore::takeOrders() {
    const bool rewind = m_rewindOrdered.exchange(false);
    const bool silence = m_silenceOrdered.exchange(false);
    // After the orders: a pattern posted before a rewind is then taken at the latest with it, and
    // the old song does not begin again.
    m_storage.with([this](NextPattern& next) {
        if (std::exchange(next.isNew, false))
            next.pattern.swap(m_pattern);
    });
    if (rewind || silence) {
        for (Voice& voice : m_voices)
            voice.silence();
    }
    if (rewind) {
        m_currentTick = -1;
        m_samplesToNextTick = 0;
        m_finished = false;
        m_highPass.x = 0;
        m_highPass.y = 0;
    }
}

void ChipCore::advanceTick() {
    ++m_currentTick;
    const bool reachedEnd = m_currentTick >= m_pattern->totalTicks;
    if (reachedEnd && !m_pattern->loop) {
        m_currentTick = m_pattern->totalTicks;
        for (Voice& voice : m_voices)
            voice.noteOff();
        m_finished = m_finished || std::ranges::all_of(m_voices, &Voice::isIdle);
        return;
    }
    if (reachedEnd)
        m_currentTick = 0;
    const auto tick = static_cast<std::size_t>(m_currentTick);
    const std::size_t count = std::min(m_pattern->channels.size(), m_voices.size());
    for (std::size_t i = 0; i < count; ++i) {
        const RenderChannel& channel = m_pattern->channels[i];
        Voice& voice = m_voices[i];
        if (reachedEnd || m_currentTick >= voice.endTick)
            voice.noteOff();
        const std::int64_t event = channel.startAtTick[tick];
        if (event >= 0)
            voice.noteOn(channel, channel.events[static_cast<std::size_t>(event)],
                         static_cast<float>(m_sampleRate));
    }
}

void ChipCore::mix(std::span<float> into) {
    while (!into.empty()) {
        into = into.subspan(mixUndisturbed(m_voices, *m_pattern, static_cast<float>(m_sampleRate),
                                           m_highPass, into));
        // The event that stopped it lies within the next four samples.
        const std::size_t single = std::min<std::size_t>(into.size(), 4);
        for (float& sample : into.first(single))
            sample = nextSample();
        into = into.subspan(single);
    }
}

float ChipCore::nextSample() {
    float mix = 0;
    const std::size_t count = std::min(m_pattern->channels.size(), m_voices.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (m_voices[i].isIdle())
            continue;
        const RenderChannel& channel = m_pattern->channels[i];
        // A muted voice runs on, so that it is in time when it is heard again.
        const float sample = m_voices[i].nextSample(channel, static_cast<float>(m_sampleRate));
        if (!channel.muted)
            mix += sample * channel.level;
    }
    return std::clamp(m_highPass.next(mix * masterGain), -1.0F, 1.0F);
}

} // namespace mossbit
