#include "Views/PianoRollView.h"

#include <QMouseEvent>

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
    const bool isSecondary = isSecondaryClick(*event);
    if (!isSecondary && event->button() != Qt::LeftButton)
        return;
    m_focusMark->hide();
    const QPointF point = toGrid(event->position());
    if (isSecondary) {
        deleteNoteAt(point);
    } else {
        m_drag.reset();
        beginDrag(point);
    }
    updateCursor(event->position());
}

void PianoRollView::mouseDoubleClickEvent(QMouseEvent* event) {
    // The second of two fast presses is a press like any other.
    mousePressEvent(event);
}

void PianoRollView::mouseMoveEvent(QMouseEvent* event) {
    // A release may get lost, to a dialog or to another program.
    if (!(event->buttons() & Qt::LeftButton))
        m_drag.reset();
    if (m_drag)
        updateDrag(toGrid(event->position()));
    updateCursor(event->position());
}

void PianoRollView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_drag.reset();
    updateCursor(event->position());
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
    if (!cell)
        return;
    m_vm.addNote(cell->pitch, cell->tick);
    if (m_vm.selection().empty())
        return;
    const Uuid id = *m_vm.selection().begin();
    if (const auto note = m_vm.note(id))
        m_drag = {.id = id, .kind = ActiveDrag::Kind::resize, .origin = *note, .startPoint = point};
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

void PianoRollView::deleteNoteAt(const QPointF& point) {
    const Note* hit = m_grid.noteAt(point, m_vm.selectedChannel().notes);
    if (!hit)
        return;
    const Uuid id = hit->id;
    if (m_drag && m_drag->id == id)
        m_drag.reset();
    m_vm.deleteNote(id);
}

void PianoRollView::updateCursor(const QPointF& viewportPoint) {
    const auto cursor = [&] {
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

} // namespace mossbit
