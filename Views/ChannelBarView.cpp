#include "Views/ChannelBarView.h"

#include "UI/PixelCaption.h"
#include "UI/PixelPainter.h"
#include "UI/PixelRow.h"
#include "UI/PixelRule.h"
#include "UI/PixelSegments.h"
#include "Views/ChannelCard.h"
#include "Views/DisplayNames.h"

namespace mossbit {

namespace {

// Points.
constexpr int inspectorHeight = 36;
constexpr int padding = 12;
constexpr int spacing = 12;
constexpr int dividerHeight = 18;
constexpr int legendSpacing = 10;
constexpr int cardSpacing = 1;

} // namespace

ChannelInspector::ChannelInspector(ProjectViewModel& vm, QWidget* parent)
    : QWidget(parent),
      m_vm(vm),
      m_title(new PixelCaption({}, pixelLabel(10, Palette::textDim), this)),
      m_caption(new PixelCaption({}, pixelLabel(10, Palette::textDim), this)) {
    setAccessibleName(tr("Selected channel"));
    setFixedHeight(inspectorHeight);
    m_duty = new PixelSegments(tr("Duty"), Palette::text, this);
    for (const Duty duty : allDuties)
        m_duty->add(title(duty), [&vm, duty] { vm.setDuty(duty, vm.selectedChannelIndex()); });
    m_duty->setToolTip(tr("Tone of the pulse: how much of its period it is high"));
    m_preset = new PixelSegments(tr("Preset"), Palette::accent(ChannelKind::wave), this);
    for (const WavePreset wave : allWavePresets)
        m_preset->add(title(wave),
                      [&vm, wave] { vm.setWavePreset(wave, vm.selectedChannelIndex()); });
    m_preset->setToolTip(tr("Waveform"));
    m_drums = new QWidget(this);
    m_drums->setToolTip(tr("Drums, from the top row down"));
    auto* drums = new PixelRow(legendSpacing, {});
    for (const NoiseVoiceKind voice : allNoiseVoiceKinds)
        drums->addWidget(new PixelCaption(title(voice), pixelLabel(10, Palette::textDim)));
    m_drums->setLayout(drums);

    auto* divider = new PixelRule(1, dividerHeight, this);
    auto* row = new PixelRow(spacing, {m_title, divider, m_caption, m_duty, m_preset, m_drums});
    row->setContentsMargins(padding, 0, padding, 0);
    row->addStretch();
    setLayout(row);

    connect(&vm, &ProjectViewModel::projectChanged, this, &ChannelInspector::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this,
            &ChannelInspector::showProject);
    showProject();
}

void ChannelInspector::showProject() {
    const Channel& channel = m_vm.selectedChannel();
    const QColor accent = Palette::accent(channel.kind);
    const bool isWave = channel.kind == ChannelKind::wave;
    const bool isNoise = channel.kind == ChannelKind::noise;
    m_title->setText(title(channel.kind));
    m_title->setColor(accent);
    m_caption->setText(isWave ? tr("Preset") : isNoise ? tr("Kit") : tr("Duty"));
    // What is hidden is not changed, and nothing is told about it.
    if (isWave)
        m_preset->setSelection(static_cast<int>(channel.wave));
    else if (!isNoise)
        m_duty->setSelection(static_cast<int>(channel.duty));
    m_duty->setAccent(accent);
    m_duty->setVisible(!isWave && !isNoise);
    m_preset->setVisible(isWave);
    m_drums->setVisible(isNoise);
}

void ChannelInspector::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.fill(rect(), Palette::background);
    pixels.edge(rect(), Qt::TopEdge, Palette::line);
}

ChannelBarView::ChannelBarView(ProjectViewModel& vm, QWidget* parent) : QWidget(parent) {
    setAccessibleName(tr("Channels"));
    setAutoFillBackground(true);
    // Of their own, because exclusive buttons are those inside one widget.
    auto* cards = new QWidget(this);
    auto* row = new PixelRow(cardSpacing, {});
    for (const ChannelKind kind : allChannelKinds)
        row->addWidget(new ChannelCard(vm, static_cast<int>(kind), cards), 1);
    cards->setLayout(row);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(cards);
    column->addWidget(new ChannelInspector(vm, this));
}

} // namespace mossbit
