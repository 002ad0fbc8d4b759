#include "Views/NoteNames.h"
#include "Views/PianoRollView.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>

namespace mossbit {

namespace {

/// The modifier that makes a primary click a secondary one.
#ifdef Q_OS_MACOS
constexpr Qt::KeyboardModifier secondaryClickModifier = Qt::MetaModifier;
#else
constexpr Qt::KeyboardModifier secondaryClickModifier = Qt::ControlModifier;
#endif

bool isSecondaryClick(const QMouseEvent& event) {
    return event.button() == Qt::RightButton ||
           (event.button() == Qt::LeftButton && (event.modifiers() & secondaryClickModifier));
}

} // namespace

void PianoRollView::mousePressEvent(QMouseEvent* event) {
    m_focusMark->hide();
    const QPointF point = toGrid(event->position());
    if (isSecondaryClick(*event)) {
        // A copy of the identifier, which goes with its note.
        if (const Note* hit = m_grid.noteAt(point, m_vm.selectedChannel().notes))
            m_vm.deleteNote(Uuid(hit->id));
    } else if (event->button() == Qt::LeftButton) {
        m_drag.reset();
        beginDrag(point);
    } else if (event->button() == Qt::MiddleButton) {
        m_panPoint = point;
    }
    updateCursor(event->position());
}

void PianoRollView::mouseDoubleClickEvent(QMouseEvent* event) {
    // The second of two fast presses is a press like any other.
    mousePressEvent(event);
}

void PianoRollView::mouseMoveEvent(QMouseEvent* event) {
    followPointer(event->position(), event->buttons());
}

void PianoRollView::mouseReleaseEvent(QMouseEvent* event) {
    followPointer(event->position(), event->buttons());
}

void PianoRollView::followPointer(const QPointF& viewportPoint, Qt::MouseButtons buttons) {
    // A button that is up ends its gesture, even if a dialog or another program got the release.
    if (!(buttons & Qt::LeftButton))
        m_drag.reset();
    if (!(buttons & Qt::MiddleButton))
        m_panPoint.reset();
    if (m_panPoint)
        scrollTo((*m_panPoint - viewportPoint).toPoint());
    if (m_drag)
        updateDrag(toGrid(viewportPoint));
    updateCursor(viewportPoint);
}

void PianoRollView::beginDrag(const QPointF& point) {
    if (!m_grid.contains(point))
        return;
    if (const Note* hit = m_grid.noteAt(point, m_vm.selectedChannel().notes)) {
        const Note note = *hit;
        m_vm.setSelection({note.id});
        const auto kind = m_grid.isInResizeZone(note, point.x()) ? ActiveDrag::Kind::resize
                                                                 : ActiveDrag::Kind::move;
        m_vm.pushUndo();
        m_drag = {.id = note.id, .kind = kind, .origin = note, .startPoint = point};
        return;
    }
    const auto cell = m_grid.cellAt(point);
    if (const auto note = m_vm.addNote(cell.pitch, cell.tick))
        m_drag = {
            .id = note->id, .kind = ActiveDrag::Kind::resize, .origin = *note, .startPoint = point};
}

void PianoRollView::updateDrag(const QPointF& point) {
    if (m_drag->kind == ActiveDrag::Kind::move) {
        const auto to = m_grid.moved(m_drag->origin, point - m_drag->startPoint);
        m_vm.updateNote(m_drag->id, {.pitch = to.pitch, .start = to.tick});
    } else {
        const std::int64_t length = m_grid.resizedLength(m_drag->origin, point.x());
        m_vm.updateNote(m_drag->id, {.length = length});
    }
}

void PianoRollView::updateCursor(const QPointF& viewportPoint) {
    const auto cursor = [&] {
        if (m_panPoint)
            return Qt::ClosedHandCursor;
        if (m_drag)
            return m_drag->kind == ActiveDrag::Kind::resize ? Qt::SizeHorCursor : Qt::SizeAllCursor;
        const QPointF point = toGrid(viewportPoint);
        if (!m_grid.contains(point))
            return Qt::ArrowCursor;
        const Note* note = m_grid.noteAt(point, m_vm.selectedChannel().notes);
        if (!note)
            return Qt::CrossCursor;
        return m_grid.isInResizeZone(*note, point.x()) ? Qt::SizeHorCursor : Qt::SizeAllCursor;
    }();
    if (viewport()->cursor().shape() != cursor)
        viewport()->setCursor(cursor);
}

void PianoRollView::showToolTip(const QHelpEvent& event) {
    const QPointF point = toGrid(event.pos());
    if (!m_grid.contains(point)) {
        QToolTip::hideText();
        return;
    }
    const auto cell = m_grid.cellAt(point);
    const Note* const hit = m_grid.noteAt(point, m_vm.selectedChannel().notes);
    // Where there is no note: the cell that a press would fill.
    const Note note = hit ? *hit
                          : Note{.pitch = cell.pitch,
                                 .start = cell.tick - cell.tick % m_grid.gridStep,
                                 .length = m_grid.gridStep};
    QStringList words = {pitchName(note.pitch, m_grid.isNoise), tickName(note.start)};
    if (hit)
        words += lengthName(note.length);
    QToolTip::showText(event.globalPos(), words.join(QStringLiteral(" · ")), viewport(),
                       visibleNoteRect(note).toAlignedRect());
}

} // namespace mossbit
