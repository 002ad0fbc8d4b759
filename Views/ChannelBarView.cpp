#include "Views/ChannelBarView.h"

#include "UI/PixelPainter.h"
#include "Views/ChannelCard.h"
#include "Views/DisplayNames.h"

#include <cmath>

namespace mossbit {

namespace {

// Points.
constexpr int inspectorHeight = 36;
constexpr double padding = 12;
constexpr double spacing = 12;
constexpr double dividerHeight = 18;
constexpr double legendSpacing = 10;
constexpr int cardSpacing = 1;
constexpr int textSize = 10;

template <typename Option, typename Options>
std::vector<typename PixelSegments<Option>::Choice> choices(const Options& options) {
    return PixelSegments<Option>::choices(options, [](Option option) { return title(option); });
}

} // namespace

ChannelInspector::ChannelInspector(ProjectViewModel& vm, QWidget* parent)
    : QWidget(parent),
      m_vm(vm),
      m_kind(vm.selectedChannel().kind),
      m_duty(new PixelSegments<Duty>(
          tr("Duty"), choices<Duty>(allDuties), Palette::accent(ChannelKind::pulse1),
          [&vm](Duty duty) { vm.setDuty(duty, vm.selectedChannelIndex()); }, this)),
      m_preset(new PixelSegments<WavePreset>(
          tr("Preset"), choices<WavePreset>(allWavePresets), Palette::accent(ChannelKind::wave),
          [&vm](WavePreset preset) { vm.setWavePreset(preset, vm.selectedChannelIndex()); },
          this)) {
    connect(&vm, &ProjectViewModel::projectChanged, this, &ChannelInspector::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this,
            &ChannelInspector::showProject);
    showProject();
}

void ChannelInspector::showProject() {
    const Channel& channel = m_vm.selectedChannel();
    m_duty->setSelection(channel.duty);
    m_preset->setSelection(channel.wave);
    m_duty->setVisible(channel.kind == ChannelKind::pulse1 || channel.kind == ChannelKind::pulse2);
    m_preset->setVisible(channel.kind == ChannelKind::wave);
    if (m_duty->isVisibleTo(this))
        m_duty->setAccent(Palette::accent(channel.kind));
    if (channel.kind == m_kind)
        return;
    m_kind = channel.kind;
    resizeEvent(nullptr);
    update();
}

QString ChannelInspector::caption() const {
    switch (m_kind) {
    case ChannelKind::wave:
        return tr("Preset");
    case ChannelKind::noise:
        return tr("Kit");
    default:
        return tr("Duty");
    }
}

double ChannelInspector::captionLeft() const {
    return padding + pixelLabel(textSize, {}).width(title(m_kind)) + spacing + 1 + spacing;
}

double ChannelInspector::contentLeft() const {
    return captionLeft() + pixelLabel(textSize, {}).width(caption()) + spacing;
}

QSize ChannelInspector::sizeHint() const {
    return {0, inspectorHeight};
}

void ChannelInspector::resizeEvent(QResizeEvent*) {
    for (PixelSegmentRow* row :
         {static_cast<PixelSegmentRow*>(m_duty), static_cast<PixelSegmentRow*>(m_preset)}) {
        const QSize extent = row->sizeHint();
        row->setGeometry(
            QRect(QPoint(qRound(contentLeft()), (inspectorHeight - extent.height()) / 2), extent));
    }
}

void ChannelInspector::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    const double middle = inspectorHeight / 2.0;
    const PixelLabel dim = pixelLabel(textSize, Palette::textDim);
    pixels.fill(rect(), Palette::background);
    pixels.edge(rect(), Qt::TopEdge, Palette::line);
    pixels.text(title(m_kind), pixelLabel(textSize, Palette::accent(m_kind)), {padding, middle});
    pixels.edge({captionLeft() - spacing - 1, middle - dividerHeight / 2, 1, dividerHeight},
                Qt::LeftEdge, Palette::line);
    pixels.text(caption(), dim, {captionLeft(), middle});
    if (m_kind != ChannelKind::noise)
        return;
    double x = contentLeft();
    for (const NoiseVoiceKind voice : allNoiseVoiceKinds) {
        pixels.text(title(voice), dim, {x, middle});
        x += dim.width(title(voice)) + legendSpacing;
    }
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
