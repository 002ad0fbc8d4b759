#include "Views/PianoRollView.h"

#include "Views/DisplayNames.h"
#include "Views/KeyColumn.h"
#include "Views/PianoRollAccessibility.h"
#include "Views/PianoRollPainter.h"

#include <QApplication>
#include <QHelpEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace mossbit {

namespace {

constexpr std::int64_t firstCentredPitch = 72;
/// Points that a step of a scroll bar moves; a notch of the wheel is three steps.
constexpr int verticalStep = 15;
constexpr int horizontalStep = 20;
/// More changed notes than this are not repainted one by one.
constexpr std::ptrdiff_t mostSingleRepaints = 16;

/// A frame over keys and grid, shown while they have the keyboard's focus by Tab.
class FocusMark : public QWidget {
public:
    explicit FocusMark(QWidget* parent) : QWidget(parent) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        PixelPainter pixels(painter);
        paintFocusMark(pixels, rect());
    }
};

int scrollRange(double content, int visible) {
    // The grid that fits exactly must not become scrollable by a rounding error.
    constexpr double tolerance = 1e-6;
    return std::max(static_cast<int>(std::ceil(content - tolerance)) - visible, 0);
}

} // namespace

PianoRollView::PianoRollView(ProjectViewModel& vm, QWidget* parent)
    : QAbstractScrollArea(parent),
      m_vm(vm),
      m_grid(vm.project(), vm.selectedChannel().kind, QSizeF(), m_zoom),
      m_shownProject(vm.project()),
      m_shownChannel(vm.selectedChannelIndex()),
      m_shownPlayhead(vm.playhead()),
      m_keys(new KeyColumn(m_grid, this)),
      m_focusMark(new FocusMark(this)) {
    installPianoRollAccessibility();
    nameAfterChannel();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    // Bars that come and go would change the width that sizes the grid.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setViewportMargins(static_cast<int>(PianoRollGeometry::keyWidth), 0, 0, 0);
    auto* underKeys = new QWidget;
    underKeys->setFixedWidth(static_cast<int>(PianoRollGeometry::keyWidth));
    underKeys->setBackgroundRole(QPalette::Base);
    underKeys->setAutoFillBackground(true);
    addScrollBarWidget(underKeys, Qt::AlignLeft);
    horizontalScrollBar()->setAccessibleName(tr("Horizontal scroll bar"));
    verticalScrollBar()->setAccessibleName(tr("Vertical scroll bar"));
    verticalScrollBar()->setSingleStep(verticalStep);
    horizontalScrollBar()->setSingleStep(horizontalStep);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setMouseTracking(true);
    m_keys->setObjectName(QStringLiteral("keys"));
    m_keys->installEventFilter(this);
    qApp->installEventFilter(this);

    connect(&vm, &ProjectViewModel::projectChanged, this, &PianoRollView::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this, &PianoRollView::showProject);
    connect(&vm, &ProjectViewModel::selectionChanged, viewport(), qOverload<>(&QWidget::update));
    connect(&vm, &ProjectViewModel::playheadChanged, this, &PianoRollView::showPlayhead);
    connect(&vm, &ProjectViewModel::documentReplaced, this, [this] { m_drag.reset(); });
    // A drag that went on after undo would change the song without an undo step.
    connect(&vm, &ProjectViewModel::historyTravelled, this, [this] { m_drag.reset(); });
}

void PianoRollView::setZoom(double zoom) {
    m_zoom = zoom;
    updateGrid();
}

// Layout.

void PianoRollView::updateGrid() {
    const QSize visible = viewport()->size();
    const QSizeF pane(visible.width() + PianoRollGeometry::keyWidth, visible.height());
    const PianoRollGeometry grid(m_vm.project(), m_vm.selectedChannel().kind, pane, m_zoom);
    if (grid != m_grid) {
        m_grid = grid;
        viewport()->update();
        m_keys->update();
    }
    // Drums are not centred, and after them pitches are not centred any more.
    const bool keepsCentred = m_keepsCentred && !m_grid.isNoise;
    QPoint place = m_place;
    if (keepsCentred)
        place.setY(qRound(m_grid.noteRect({.pitch = firstCentredPitch}).center().y() -
                          visible.height() / 2.0));
    horizontalScrollBar()->setRange(0, scrollRange(m_grid.width(), visible.width()));
    horizontalScrollBar()->setPageStep(visible.width());
    verticalScrollBar()->setRange(0, scrollRange(m_grid.height(), visible.height()));
    verticalScrollBar()->setPageStep(visible.height());
    scrollTo(place);
    // The scroll bars have called `scrollContentsBy`, which takes any scrolling for the person's.
    m_place = place;
    m_keepsCentred = keepsCentred;
    const QRect canvas = viewport()->geometry();
    m_keys->setGeometry(0, canvas.y(), canvas.x(), canvas.height());
    m_focusMark->setGeometry(m_keys->geometry() | canvas);
}

void PianoRollView::resizeEvent(QResizeEvent*) {
    updateGrid();
}

void PianoRollView::scrollTo(const QPoint& place) {
    horizontalScrollBar()->setValue(place.x());
    verticalScrollBar()->setValue(place.y());
}

QPoint PianoRollView::offset() const {
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

QPointF PianoRollView::toGrid(const QPointF& viewportPoint) const {
    return viewportPoint + offset();
}

QRectF PianoRollView::visibleNoteRect(const Note& note) const {
    return m_grid.noteRect(note).translated(-offset());
}

void PianoRollView::scrollContentsBy(int dx, int dy) {
    viewport()->scroll(dx, dy);
    if (dy != 0)
        m_keys->setOffset(verticalScrollBar()->value());
    m_keepsCentred = false;
    if (dx != 0)
        m_place.setX(offset().x());
    if (dy != 0)
        m_place.setY(offset().y());
    updateCursor(viewport()->mapFromGlobal(QCursor::pos()));
}

void PianoRollView::wheelEvent(QWheelEvent* event) {
    const auto turned = [&](const QPoint& delta) {
        // macOS swaps the axes itself while Shift is held.
        const bool isSideways = (event->modifiers() & Qt::ShiftModifier) && delta.y() != 0;
        return isSideways ? delta.transposed() : delta;
    };
    // With a modifier, scroll bars would scroll by pages.
    QWheelEvent plain(event->position(), event->globalPosition(), turned(event->pixelDelta()),
                      turned(event->angleDelta()), event->buttons(), Qt::NoModifier, event->phase(),
                      event->inverted());
    QAbstractScrollArea::wheelEvent(&plain);
    event->accept();
    // The pointer is at another place of the grid now.
    followPointer(viewport()->mapFromGlobal(event->globalPosition()), event->buttons());
}

bool PianoRollView::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::ShortcutOverride:
        // The first click or key anywhere in the program.
        if (isVisible()) {
            m_keepsCentred = false;
            qApp->removeEventFilter(this);
        }
        break;
    case QEvent::Wheel:
        if (watched == m_keys) {
            wheelEvent(static_cast<QWheelEvent*>(event));
            return true;
        }
        break;
    default:
        break;
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

bool PianoRollView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QAbstractScrollArea::viewportEvent(event);
    showToolTip(*static_cast<QHelpEvent*>(event));
    return true;
}

// What the model tells.

void PianoRollView::nameAfterChannel() {
    setAccessibleName(tr("Piano roll, %1").arg(title(m_vm.selectedChannel().kind)));
}

void PianoRollView::showProject() {
    const Project& project = m_vm.project();
    const int channel = m_vm.selectedChannelIndex();
    if (m_drag && (channel != m_shownChannel || !m_vm.note(m_drag->id)))
        m_drag.reset();
    if (channel != m_shownChannel)
        nameAfterChannel();
    const bool sameView = channel == m_shownChannel && project.bars == m_shownProject.bars &&
                          project.grid == m_shownProject.grid;
    updateGrid();
    if (sameView) {
        for (std::size_t i = 0; i < project.channels.size(); ++i)
            repaintDifferences(m_shownProject.channels[i].notes, project.channels[i].notes);
    } else {
        viewport()->update();
        m_keys->update();
    }
    m_shownProject = project;
    m_shownChannel = channel;
    updateCursor(viewport()->mapFromGlobal(QCursor::pos()));
}

void PianoRollView::repaintDifferences(const std::vector<Note>& before,
                                       const std::vector<Note>& after) {
    const auto [firstBefore, firstAfter] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto [lastBefore, lastAfter] =
        std::mismatch(before.rbegin(), std::make_reverse_iterator(firstBefore), after.rbegin(),
                      std::make_reverse_iterator(firstAfter));
    const auto repaint = [this](const Note& note) {
        viewport()->update(paintedRect(m_grid.noteRect(note)));
    };
    if (lastBefore.base() - firstBefore + (lastAfter.base() - firstAfter) > mostSingleRepaints) {
        viewport()->update();
        return;
    }
    std::for_each(firstBefore, lastBefore.base(), repaint);
    std::for_each(firstAfter, lastAfter.base(), repaint);
}

void PianoRollView::showPlayhead() {
    for (const std::int64_t tick : {m_shownPlayhead, m_vm.playhead()})
        if (tick >= 0)
            viewport()->update(
                paintedRect({m_grid.cellWidth * static_cast<double>(tick), 0, 2, m_grid.height()}) &
                viewport()->rect());
    m_shownPlayhead = m_vm.playhead();
}

QRect PianoRollView::paintedRect(const QRectF& gridRect) const {
    // Edges are rounded to device pixels, which may lie up to half a point away; the selection's
    // outline reaches a little farther.
    constexpr double margin = 2;
    return gridRect.translated(-offset())
        .adjusted(-margin, -margin, margin, margin)
        .toAlignedRect();
}

void PianoRollView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.translate(-offset());
    PixelPainter pixels(painter);
    for (const QRect& rect : event->region()) {
        const QRect exposed =
            pixels.transform().mapRect(QRectF(rect.translated(offset()))).toAlignedRect();
        painter.setClipRect(exposed);
        paintPianoRoll(pixels, m_grid, exposed, m_vm.project(), m_vm.selectedChannelIndex(),
                       m_vm.selection(), m_vm.playhead());
    }
}

// Focus.

void PianoRollView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        m_focusMark->raise();
        m_focusMark->show();
    }
}

void PianoRollView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    // From a menu or another program the focus comes back.
    for (const auto reason :
         {Qt::PopupFocusReason, Qt::MenuBarFocusReason, Qt::ActiveWindowFocusReason})
        if (event->reason() == reason)
            return;
    m_focusMark->hide();
}

} // namespace mossbit
