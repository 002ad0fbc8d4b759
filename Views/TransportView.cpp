#include "Views/TransportView.h"

#include "UI/PixelCaption.h"
#include "UI/PixelRow.h"
#include "UI/PixelRule.h"
#include "UI/PixelSegments.h"
#include "Views/DisplayNames.h"
#include "Views/TempoControl.h"

#include <QKeySequence>

#include <algorithm>

namespace mossbit {

namespace {

// Points.
constexpr int barHeight = 46;
constexpr int endPadding = 14;
constexpr int widestGap = 14;
constexpr int narrowestFlexibleGap = 8;
constexpr int dividerHeight = 22;
constexpr int captionSpacing = 6;
constexpr int buttonSpacing = 5;

PixelCaption* makeCaption(const QString& text, QWidget* parent) {
    return new PixelCaption(text, pixelLabel(10, Palette::textDim), parent);
}

/// Shows whether the song is played. A click always starts anew; what assistive tools do to a
/// checkable button, which is to toggle it, starts and stops.
class PlayButton : public PixelButton {
public:
    using PixelButton::PixelButton;

protected:
    void nextCheckState() override {}
};

} // namespace

TransportView::TransportView(ProjectViewModel& vm, QWidget* parent) : QWidget(parent), m_vm(vm) {
    setAccessibleName(tr("Transport"));
    setAutoFillBackground(true);
    setFixedHeight(barHeight);
    auto* row = new PixelRow(0, {});
    row->setContentsMargins(endPadding, 0, endPadding, 0);
    setLayout(row);
    // Gaps narrow where the window is too narrow for them.
    const auto addGap = [row] {
        row->addItem(new QSpacerItem(widestGap, 0, QSizePolicy::Maximum));
    };
    const auto addDivider = [this, row, addGap] {
        addGap();
        row->addWidget(new PixelRule(1, dividerHeight, this));
        addGap();
    };
    // One after the other, which is the order in which Tab walks them.
    row->addWidget(new PixelCaption(tr("Mossbit"),
                                    pixelLabel(15, Palette::accent(ChannelKind::pulse1)), this));
    addGap();
    row->addLayout(makePlayback());
    addDivider();
    row->addWidget(new TempoControl(vm, this));
    addDivider();
    row->addWidget(makeLoop());
    addDivider();
    row->addLayout(makeBars());
    addDivider();
    row->addLayout(makeGrid());
    addGap();
    row->addItem(new QSpacerItem(narrowestFlexibleGap, 0, QSizePolicy::MinimumExpanding));
    addGap();
    row->addLayout(makeZoom());

    connect(&vm, &ProjectViewModel::projectChanged, this, &TransportView::showProject);
    connect(&vm, &ProjectViewModel::isPlayingChanged, this,
            [this] { m_play->setChecked(m_vm.isPlaying()); });
    showProject();
    m_play->setChecked(vm.isPlaying());
}

QLayout* TransportView::makePlayback() {
    m_play = new PlayButton({.kind = PixelButton::Kind::toggle,
                             .accent = Palette::accent(ChannelKind::pulse1),
                             .padding = 10,
                             .icon = &PixelGlyph::play},
                            tr("Play"), tr("Play (Space)"), this);
    connect(m_play, &QAbstractButton::clicked, this, [this] { m_vm.play(); });
    connect(m_play, &QAbstractButton::toggled, this, [this](bool on) {
        if (on == m_vm.isPlaying())
            return;
        on ? m_vm.play() : m_vm.stop();
        // Without a sound device nothing is played.
        m_play->setChecked(m_vm.isPlaying());
    });
    auto* stop = new PixelButton({.padding = 10, .icon = &PixelGlyph::stop}, tr("Stop"),
                                 tr("Stop (Space)"), this);
    connect(stop, &QAbstractButton::clicked, this, [this] { m_vm.stop(); });
    return new PixelRow(buttonSpacing, {m_play, stop});
}

QWidget* TransportView::makeLoop() {
    const QKeySequence shortcut(Qt::CTRL | Qt::Key_L);
    m_loop = new PixelButton(
        {.kind = PixelButton::Kind::toggle,
         .accent = Palette::accent(ChannelKind::wave),
         .padding = 8,
         .icon = &PixelGlyph::loop,
         .idleColor = Palette::textDim},
        tr("Loop"), tr("Loop the pattern (%1)").arg(shortcut.toString(QKeySequence::NativeText)),
        this);
    m_loop->setText(tr("Loop"));
    connect(m_loop, &QAbstractButton::toggled, this, [this](bool on) {
        if (on != m_vm.project().loop)
            m_vm.toggleLoop();
    });
    return m_loop;
}

QLayout* TransportView::makeBars() {
    auto* caption = makeCaption(tr("Bars"), this);
    m_bars = new PixelSegments(tr("Bars"), Palette::accent(ChannelKind::pulse2), this);
    for (const std::int64_t bars : allBarCounts)
        m_bars->add(QString::number(bars), [this, bars] { m_vm.setBars(bars); });
    m_bars->setToolTip(tr("Length of the song in bars"));
    return new PixelRow(captionSpacing, {caption, m_bars});
}

QLayout* TransportView::makeGrid() {
    auto* caption = makeCaption(tr("Grid"), this);
    m_grid = new PixelSegments(tr("Grid"), Palette::accent(ChannelKind::noise), this);
    for (const GridDivision grid : allGridDivisions)
        m_grid->add(title(grid), [this, grid] { m_vm.setGrid(grid); });
    m_grid->setToolTip(tr("Steps in which notes are drawn, moved and resized"));
    return new PixelRow(captionSpacing, {caption, m_grid});
}

QLayout* TransportView::makeZoom() {
    auto* caption = makeCaption(tr("Zoom"), this);
    auto* out = new PixelButton({.icon = &PixelGlyph::minus}, tr("Zoom out"), tr("Zoom out"), this);
    auto* in = new PixelButton({.icon = &PixelGlyph::plus}, tr("Zoom in"), tr("Zoom in"), this);
    connect(out, &QAbstractButton::clicked, this, &TransportView::zoomOutRequested);
    connect(in, &QAbstractButton::clicked, this, &TransportView::zoomInRequested);
    return new PixelRow(buttonSpacing, {caption, out, in});
}

void TransportView::showProject() {
    m_loop->setChecked(m_vm.project().loop);
    m_bars->setSelection(std::ranges::find(allBarCounts, m_vm.project().bars) -
                         allBarCounts.begin());
    m_grid->setSelection(std::ranges::find(allGridDivisions, m_vm.project().grid) -
                         allGridDivisions.begin());
}

} // namespace mossbit
