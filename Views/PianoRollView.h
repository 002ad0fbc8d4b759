#pragma once

#include "ViewModels/ProjectViewModel.h"
#include "Views/PianoRollGeometry.h"

#include <QAbstractScrollArea>

#include <optional>

class QHelpEvent;

namespace mossbit {

class KeyColumn;

/// The notes of the selected channel on a grid of time and pitch, where they are drawn, moved,
/// resized and deleted with the pointer.
class PianoRollView : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit PianoRollView(ProjectViewModel& vm, QWidget* parent = nullptr);

    /// 1 shows the whole pattern, unless its ticks would get too narrow.
    void setZoom(double zoom);

    ProjectViewModel& viewModel() const { return m_vm; }
    const PianoRollGeometry& grid() const { return m_grid; }

    QPointF toGrid(const QPointF& viewportPoint) const;
    /// In the viewport's points.
    QRectF visibleNoteRect(const Note& note) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The press in progress. Every step is computed from the note as it was at the press, so that
    /// the way back leads to where it began.
    struct ActiveDrag {
        enum class Kind { move, resize };

        Uuid id;
        Kind kind;
        Note origin;
        QPointF startPoint;
    };

    // What the model tells.
    void nameAfterChannel();
    void showProject();
    void showPlayhead();

    // Layout.
    void updateGrid();
    void scrollTo(const QPoint& place);
    QPoint offset() const;
    /// What has to be painted again if a rectangle of the grid changes.
    QRect paintedRect(const QRectF& gridRect) const;
    void repaintDifferences(const std::vector<Note>& before, const std::vector<Note>& after);

    // Pointer. Points are the grid's unless they are named otherwise.
    void beginDrag(const QPointF& point);
    void updateDrag(const QPointF& point);
    void followPointer(const QPointF& viewportPoint, Qt::MouseButtons buttons);
    void updateCursor(const QPointF& viewportPoint);
    void showToolTip(const QHelpEvent& event);

    ProjectViewModel& m_vm;
    double m_zoom = 1;
    PianoRollGeometry m_grid;
    /// What is on the screen, to find out what a change touches.
    Project m_shownProject;
    int m_shownChannel;
    std::int64_t m_shownPlayhead;
    /// The place that the person has scrolled to. The view shows what is nearest to it.
    QPoint m_place;
    /// Until the person does anything in the window: the window manager may still be changing its
    /// size.
    bool m_keepsCentred = true;
    std::optional<ActiveDrag> m_drag;
    /// The point of the grid that the middle button holds under the pointer.
    std::optional<QPointF> m_panPoint;
    KeyColumn* m_keys;
    QWidget* m_focusMark;
};

} // namespace mossbit
