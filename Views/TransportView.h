#pragma once

#include "UI/PixelSegments.h"
#include "ViewModels/ProjectViewModel.h"

namespace mossbit {

class TempoControl;

/// The strip along the top: playback, tempo, loop, length, grid and zoom.
class TransportView : public QWidget {
    Q_OBJECT

public:
    static constexpr double lowestZoom = 0.6;
    static constexpr double highestZoom = 4.0;
    static constexpr double zoomStep = 0.25;

    TransportView(ProjectViewModel& vm, double zoom, QWidget* parent = nullptr);

    void setZoom(double zoom) { m_zoom = zoom; }

    QSize sizeHint() const override;

Q_SIGNALS:
    void zoomRequested(double zoom);
    /// The tempo field has closed and has given the keyboard away.
    void keyboardReleased();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makePlayback();
    QWidget* makeTempo();
    QWidget* makeLoop();
    QWidget* makeBars();
    QWidget* makeGrid();
    QWidget* makeZoom();
    void showProject();

    ProjectViewModel& m_vm;
    double m_zoom;
    PixelButton* m_play = nullptr;
    PixelButton* m_loop = nullptr;
    PixelSegments<std::int64_t>* m_bars = nullptr;
    PixelSegments<GridDivision>* m_grid = nullptr;
    /// From the left; a flexible gap lies before the last one.
    std::vector<QWidget*> m_items;
};

} // namespace mossbit
