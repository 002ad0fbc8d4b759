#pragma once

#include "ViewModels/ProjectViewModel.h"

#include <QWidget>

class QLayout;

namespace mossbit {

class PixelButton;
template <typename Option>
class PixelSegments;

/// The strip along the top: playback, tempo, loop, length, grid and zoom.
class TransportView : public QWidget {
    Q_OBJECT

public:
    static constexpr double lowestZoom = 0.6;
    static constexpr double highestZoom = 4.0;
    static constexpr double zoomStep = 0.25;

    TransportView(ProjectViewModel& vm, double zoom, QWidget* parent = nullptr);

    void setZoom(double zoom) { m_zoom = zoom; }

Q_SIGNALS:
    void zoomRequested(double zoom);
    /// The tempo field has closed and has given the keyboard away.
    void keyboardReleased();

private:
    QLayout* makePlayback();
    QWidget* makeTempo();
    QWidget* makeLoop();
    QLayout* makeBars();
    QLayout* makeGrid();
    QLayout* makeZoom();
    void showProject();

    ProjectViewModel& m_vm;
    double m_zoom;
    PixelButton* m_play = nullptr;
    PixelButton* m_loop = nullptr;
    PixelSegments<std::int64_t>* m_bars = nullptr;
    PixelSegments<GridDivision>* m_grid = nullptr;
};

} // namespace mossbit
