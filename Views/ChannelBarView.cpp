#include "Views/ChannelBarView.h"

#include "UI/PixelCaption.h"
#include "UI/PixelPainter.h"
#include "UI/PixelRow.h"
#include "UI/PixelRule.h"
#include "Views/ChannelCard.h"
#include "Views/DisplayNames.h"

#include <initializer_list>

namespace mossbit {

namespace {

// Points.
constexpr int inspectorHeight = 36;
constexpr int padding = 12;
constexpr int spacing = 12;
constexpr int dividerHeight = 18;
constexpr int legendSpacing = 10;
constexpr int cardSpacing = 1;
constexpr int textSize = 10;

} // namespace

ChannelInspector::ChannelInspector(ProjectViewModel& vm, QWidget* parent)
    : QWidget(parent), m_vm(vm), m_title(new PixelCaption({}, {}, this)) {
    setAccessibleName(tr("Selected channel"));
    const auto label = [](auto option) { return title(option); };
    auto* divider = new PixelRule(1, dividerHeight, this);
    auto* duty = new PixelRow(spacing, this);
    m_duty = duty->addSegments<Duty>(
        tr("Duty"), PixelSegments<Duty>::choices(allDuties, label), Palette::text,
        [&vm](Duty chosen) { vm.setDuty(chosen, vm.selectedChannelIndex()); });
    m_duty->setToolTip(tr("Tone of the pulse: how much of its period it is high"));
    auto* preset = new PixelRow(spacing, this);
    m_preset = preset->addSegments<WavePreset>(
        tr("Preset"), PixelSegments<WavePreset>::choices(allWavePresets, label),
        Palette::accent(ChannelKind::wave),
        [&vm](WavePreset chosen) { vm.setWavePreset(chosen, vm.selectedChannelIndex()); });
    m_preset->setToolTip(tr("Waveform"));
    auto* kit = new PixelRow(spacing, this);
    m_kit = kit;
    kit->setToolTip(tr("Drums, from the top row down"));
    kit->addCaption(tr("Kit"));
    auto* drums = new PixelRow(legendSpacing, kit);
    for (const NoiseVoiceKind voice : allNoiseVoiceKinds)
        drums->addCaption(title(voice));
    kit->add(drums);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(padding, 0, padding, 0);
    row->setSpacing(spacing);
    for (QWidget* item : std::initializer_list<QWidget*>{m_title, divider, duty, preset, kit})
        row->addWidget(item);
    row->addStretch();

    connect(&vm, &ProjectViewModel::projectChanged, this, &ChannelInspector::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this,
            &ChannelInspector::showProject);
    showProject();
}

void ChannelInspector::showProject() {
    const Channel& channel = m_vm.selectedChannel();
    const QColor accent = Palette::accent(channel.kind);
    m_title->setText(title(channel.kind), pixelLabel(textSize, accent));
    m_duty->setSelection(channel.duty);
    m_duty->setAccent(accent);
    m_preset->setSelection(channel.wave);
    m_duty->parentWidget()->setVisible(channel.kind == ChannelKind::pulse1 ||
                                       channel.kind == ChannelKind::pulse2);
    m_preset->parentWidget()->setVisible(channel.kind == ChannelKind::wave);
    m_kit->setVisible(channel.kind == ChannelKind::noise);
}

QSize ChannelInspector::sizeHint() const {
    return {0, inspectorHeight};
}

void ChannelInspector::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.fill(rect(), Palette::background);
    pixels.edge(rect(), Qt::TopEdge, Palette::line);
}

ChannelBarView::ChannelBarView(ProjectViewModel& vm, QWidget* parent) : QWidget(parent) {
    setAccessibleName(tr("Channels"));
    for (std::size_t i = 0; i < m_cards.size(); ++i)
        m_cards[i] = new ChannelCard(vm, static_cast<int>(i), this);
    m_inspector = new ChannelInspector(vm, this);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize ChannelBarView::sizeHint() const {
    return {0, m_cards.front()->sizeHint().height() + inspectorHeight};
}

void ChannelBarView::resizeEvent(QResizeEvent*) {
    const int cardHeight = m_cards.front()->sizeHint().height();
    const int gaps = cardSpacing * static_cast<int>(m_cards.size() - 1);
    const double share = static_cast<double>(width() - gaps) / static_cast<double>(m_cards.size());
    const auto edge = [&](std::size_t index) {
        return qRound(share * static_cast<double>(index)) + cardSpacing * static_cast<int>(index);
    };
    for (std::size_t i = 0; i < m_cards.size(); ++i)
        m_cards[i]->setGeometry(edge(i), 0, edge(i + 1) - cardSpacing - edge(i), cardHeight);
    m_inspector->setGeometry(0, cardHeight, width(), inspectorHeight);
}

void ChannelBarView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.fill(rect(), Palette::panel);
}

} // namespace mossbit
