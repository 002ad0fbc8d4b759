#include "Views/PianoRollView.h"

#include "UI/KeyboardFocus.h"
#include "Views/KeyColumn.h"
#include "Views/PianoRollAccessibility.h"
#include "Views/PianoRollPainter.h"

#include <QAccessible>
#include <QCoreApplication>
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
/// More changed notes than this are not worth finding out one by one.
constexpr std::size_t mostSingleRepaints = 16;

/// Lies over keys and grid while Tab has brought the keyboard here.
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
      m_shownSelection(vm.selection()),
      m_shownPlayhead(vm.playhead()),
      m_keys(new KeyColumn(m_grid, this)),
      m_focusMark(new FocusMark(this)) {
    installPianoRollAccessibility();
    setAccessibleName(tr("Piano roll"));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    // Bars that come and go would change the width that sizes the grid.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setViewportMargins(static_cast<int>(PianoRollGeometry::keyWidth), 0, 0, 0);
    horizontalScrollBar()->setAccessibleName(tr("Horizontal scroll bar"));
    verticalScrollBar()->setAccessibleName(tr("Vertical scroll bar"));
    verticalScrollBar()->setSingleStep(verticalStep);
    horizontalScrollBar()->setSingleStep(horizontalStep);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setMouseTracking(true);
    m_keys->setObjectName(QStringLiteral("keys"));
    m_keys->installEventFilter(this);

    connect(&vm, &ProjectViewModel::projectChanged, this, &PianoRollView::showProject);
    connect(&vm, &ProjectViewModel::selectedChannelIndexChanged, this, &PianoRollView::showProject);
    connect(&vm, &ProjectViewModel::selectionChanged, this, &PianoRollView::showSelection);
    connect(&vm, &ProjectViewModel::playheadChanged, this, &PianoRollView::showPlayhead);
    connect(&vm, &ProjectViewModel::documentReplaced, this, [this] { m_drag.reset(); });
    // The press has emptied what can be redone, so this tells of every undo, also of one that has
    // only taken the press back: to go on would change the song without a step of its own.
    connect(&vm, &ProjectViewModel::historyChanged, this, [this] {
        if (m_vm.canRedo())
            m_drag.reset();
    });
}

PianoRollView::~PianoRollView() = default;

void PianoRollView::setZoom(double zoom) {
    if (zoom == m_zoom)
        return;
    m_zoom = zoom;
    updateGrid();
}

// Layout.

QSize PianoRollView::paneSize() const {
    return viewport()->size() + QSize(static_cast<int>(PianoRollGeometry::keyWidth), 0);
}

void PianoRollView::updateGrid() {
    const PianoRollGeometry grid(m_vm.project(), m_vm.selectedChannel().kind, paneSize(), m_zoom);
    if (grid != m_grid) {
        m_grid = grid;
        viewport()->update();
        m_keys->update();
    }
    layOut();
}

void PianoRollView::layOut() {
    const QSize visible = viewport()->size();
    horizontalScrollBar()->setRange(0, scrollRange(m_grid.width(), visible.width()));
    horizontalScrollBar()->setPageStep(visible.width());
    verticalScrollBar()->setRange(0, scrollRange(m_grid.height(), visible.height()));
    verticalScrollBar()->setPageStep(visible.height());
    const QRect pane = viewport()->geometry();
    m_keys->setGeometry(0, pane.y(), pane.x(), pane.height());
    m_focusMark->setGeometry(m_keys->geometry() | pane);
}

void PianoRollView::resizeEvent(QResizeEvent*) {
    updateGrid();
}

void PianoRollView::showEvent(QShowEvent* event) {
    QAbstractScrollArea::showEvent(event);
    if (m_hasCentred || event->spontaneous())
        return;
    updateGrid();
    // Also when the drums are shown first: nothing is centred later.
    m_hasCentred = true;
    if (m_grid.isNoise)
        return;
    const double middle =
        m_grid.rowHeight * (static_cast<double>(m_grid.row(firstCentredPitch)) + 0.5);
    verticalScrollBar()->setValue(qRound(middle - viewport()->height() / 2.0));
}

QPoint PianoRollView::offset() const {
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

QPointF PianoRollView::toViewport(const QPointF& gridPoint) const {
    return gridPoint - offset();
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
    updateCursor(viewport()->mapFromGlobal(QCursor::pos()));
}

void PianoRollView::wheelEvent(QWheelEvent* event) {
    scrollByWheel(event);
    // The pointer is at another place of the grid now.
    if (m_drag)
        updateDrag(toGrid(viewport()->mapFromGlobal(event->globalPosition())));
}

void PianoRollView::scrollByWheel(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ShiftModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    // Some systems have turned it already.
    const auto sideways = [](const QPoint& delta) {
        return delta.y() == 0 ? delta : delta.transposed();
    };
    QWheelEvent turned(event->position(), event->globalPosition(), sideways(event->pixelDelta()),
                       sideways(event->angleDelta()), event->buttons(),
                       event->modifiers() & ~Qt::ShiftModifier, event->phase(), event->inverted());
    QCoreApplication::sendEvent(horizontalScrollBar(), &turned);
    event->accept();
}

bool PianoRollView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_keys && event->type() == QEvent::Wheel) {
        wheelEvent(static_cast<QWheelEvent*>(event));
        return true;
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

// What the model tells.

void PianoRollView::showProject() {
    const Project& project = m_vm.project();
    const int channel = m_vm.selectedChannelIndex();
    if (m_drag && (channel != m_shownChannel || !m_vm.note(m_drag->id)))
        m_drag.reset();
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
    if (QAccessible::isActive()) {
        QAccessibleEvent event(this, QAccessible::ObjectReorder);
        QAccessible::updateAccessibility(&event);
    }
}

void PianoRollView::repaintDifferences(const std::vector<Note>& before,
                                       const std::vector<Note>& after) {
    const auto [firstBefore, firstAfter] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto [lastBefore, lastAfter] =
        std::mismatch(before.rbegin(), std::make_reverse_iterator(firstBefore), after.rbegin(),
                      std::make_reverse_iterator(firstAfter));
    const std::vector<Note> gone(firstBefore, lastBefore.base());
    const std::vector<Note> come(firstAfter, lastAfter.base());
    if (gone.size() + come.size() > mostSingleRepaints) {
        viewport()->update();
        return;
    }
    for (const std::vector<Note>& notes : {gone, come})
        for (const Note& note : notes)
            repaintNote(note);
}

void PianoRollView::showSelection() {
    const ProjectViewModel::Selection& selection = m_vm.selection();
    std::vector<Uuid> changed;
    for (const Uuid& id : selection)
        if (!m_shownSelection.contains(id))
            changed.push_back(id);
    for (const Uuid& id : m_shownSelection)
        if (!selection.contains(id))
            changed.push_back(id);
    if (changed.size() > mostSingleRepaints)
        viewport()->update();
    else
        for (const Note& note : m_vm.selectedChannel().notes)
            if (std::find(changed.begin(), changed.end(), note.id) != changed.end())
                repaintNote(note);
    m_shownSelection = selection;
    if (QAccessible::isActive()) {
        QAccessibleEvent event(this, QAccessible::SelectionWithin);
        QAccessible::updateAccessibility(&event);
    }
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

void PianoRollView::repaintNote(const Note& note) {
    viewport()->update(paintedRect(m_grid.noteRect(note)));
}

void PianoRollView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.translate(-offset());
    PixelPainter pixels(painter);
    for (const QRect& rect : event->region()) {
        const QRect exposed =
            pixels.transform().mapRect(QRectF(rect.translated(offset()))).toAlignedRect();
        painter.setClipRect(exposed);
        PianoRollPainter(pixels, m_grid, exposed)
            .paint(m_vm.project(), m_vm.selectedChannelIndex(), m_vm.selection(), m_vm.playhead());
    }
}

// Focus.

void PianoRollView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    if (isByKeyboard(event->reason())) {
        m_focusMark->raise();
        m_focusMark->show();
    }
}

void PianoRollView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    if (!isFocusComingBack(event->reason()))
        m_focusMark->hide();
}

} // namespace mossbit
