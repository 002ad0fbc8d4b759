#include "Views/TransportView.h"

#include "UI/PixelCaption.h"
#include "UI/PixelIcon.h"
#include "UI/PixelPainter.h"
#include "UI/PixelRow.h"
#include "UI/PixelRule.h"
#include "Views/DisplayNames.h"
#include "Views/TempoControl.h"

#include <algorithm>

namespace mossbit {

namespace {

// Points.
constexpr int barHeight = 46;
constexpr int endPadding = 14;
constexpr double widestGap = 14;
constexpr double narrowestFlexibleGap = 8;
constexpr int dividerHeight = 22;
constexpr int captionSpacing = 6;
constexpr int buttonSpacing = 5;

} // namespace

TransportView::TransportView(ProjectViewModel& vm, double zoom, QWidget* parent)
    : QWidget(parent), m_vm(vm), m_zoom(zoom) {
    setAccessibleName(tr("Transport"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    const auto divider = [this] { return new PixelRule(1, dividerHeight, this); };
    // One after the other, which is the order in which Tab walks them.
    m_items = {
        new PixelCaption(tr("Mossbit"), pixelLabel(15, Palette::accent(ChannelKind::pulse1)), this),
        makePlayback(),
        divider(),
        makeTempo(),
        divider(),
        makeLoop(),
        divider(),
        makeBars(),
        divider(),
        makeGrid(),
        makeZoom()};

    connect(&vm, &ProjectViewModel::projectChanged, this, &TransportView::showProject);
    connect(&vm, &ProjectViewModel::isPlayingChanged, this,
            [this] { m_play->setActive(m_vm.isPlaying()); });
    showProject();
    m_play->setActive(vm.isPlaying());
}

QWidget* TransportView::makePlayback() {
    auto* row = new PixelRow(buttonSpacing, this);
    m_play = row->addButton(
        {.accent = Palette::accent(ChannelKind::pulse1), .padding = 10, .icon = &PixelGlyph::play},
        tr("Play"));
    m_play->setToolTip(tr("Play (Space)"));
    connect(m_play, &QAbstractButton::clicked, this, [this] { m_vm.play(); });
    auto* stop = row->addButton({.padding = 10, .icon = &PixelGlyph::stop}, tr("Stop"));
    stop->setToolTip(tr("Stop (Space)"));
    connect(stop, &QAbstractButton::clicked, this, [this] { m_vm.stop(); });
    return row;
}

QWidget* TransportView::makeTempo() {
    auto* tempo = new TempoControl(m_vm, this);
    connect(tempo, &TempoControl::keyboardReleased, this, &TransportView::keyboardReleased);
    return tempo;
}

QWidget* TransportView::makeLoop() {
    m_loop = new PixelButton({.kind = FlatButton::Kind::toggle,
                              .accent = Palette::accent(ChannelKind::wave),
                              .padding = 8,
                              .icon = &PixelGlyph::loop,
                              .text = tr("Loop"),
                              .idleColor = Palette::textDim},
                             this);
    m_loop->setToolTip(tr("Loop the pattern (⌘L)"));
    connect(m_loop, &QAbstractButton::clicked, this, [this] { m_vm.toggleLoop(); });
    return m_loop;
}

QWidget* TransportView::makeBars() {
    const auto choices = PixelSegments<std::int64_t>::choices(
        allBarCounts, [](std::int64_t count) { return QString::number(count); });
    auto* row = new PixelRow(captionSpacing, this);
    m_bars =
        row->addSegments<std::int64_t>(tr("Bars"), choices, Palette::accent(ChannelKind::pulse2),
                                       [this](std::int64_t bars) { m_vm.setBars(bars); });
    m_bars->setToolTip(tr("Length of the song in bars"));
    return row;
}

QWidget* TransportView::makeGrid() {
    const auto choices = PixelSegments<GridDivision>::choices(
        allGridDivisions, [](GridDivision grid) { return title(grid); });
    auto* row = new PixelRow(captionSpacing, this);
    m_grid =
        row->addSegments<GridDivision>(tr("Grid"), choices, Palette::accent(ChannelKind::noise),
                                       [this](GridDivision grid) { m_vm.setGrid(grid); });
    m_grid->setToolTip(tr("Steps in which notes are drawn, moved and resized"));
    return row;
}

QWidget* TransportView::makeZoom() {
    auto* row = new PixelRow(buttonSpacing, this);
    row->addCaption(tr("Zoom"));
    auto* out = row->addButton({.icon = &PixelGlyph::minus}, tr("Zoom out"));
    auto* in = row->addButton({.icon = &PixelGlyph::plus}, tr("Zoom in"));
    connect(out, &QAbstractButton::clicked, this,
            [this] { Q_EMIT zoomRequested(std::max(m_zoom - zoomStep, lowestZoom)); });
    connect(in, &QAbstractButton::clicked, this,
            [this] { Q_EMIT zoomRequested(std::min(m_zoom + zoomStep, highestZoom)); });
    return row;
}

void TransportView::showProject() {
    m_loop->setActive(m_vm.project().loop);
    m_bars->setSelection(m_vm.project().bars);
    m_grid->setSelection(m_vm.project().grid);
}

QSize TransportView::sizeHint() const {
    double width = 2 * endPadding + narrowestFlexibleGap;
    for (const QWidget* item : m_items)
        width += item->sizeHint().width() + widestGap;
    return {static_cast<int>(width), barHeight};
}

void TransportView::resizeEvent(QResizeEvent*) {
    // One gap between neighbours, the flexible one counting as an item of its own.
    const auto gaps = static_cast<double>(m_items.size());
    const double missing = std::max(sizeHint().width() - width(), 0);
    const double gap = std::max(widestGap - missing / gaps, 0.0);
    double x = endPadding;
    for (QWidget* item : m_items) {
        const QSize size = item->sizeHint();
        if (item == m_items.back())
            x = width() - endPadding - size.width();
        item->setGeometry(QRect(QPoint(qRound(x), (barHeight - size.height()) / 2), size));
        x += size.width() + gap;
    }
}

void TransportView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.fill(rect(), Palette::panel);
}

} // namespace mossbit
