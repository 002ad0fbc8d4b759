#pragma once

#include "ViewModels/ProjectViewModel.h"

#include <QWidget>

class QLayout;

namespace mossbit {

class PixelButton;
class PixelSegments;

/// The strip along the top: playback, tempo, loop, length, grid and zoom.
class TransportView : public QWidget {
    Q_OBJECT

public:
    TransportView(ProjectViewModel& vm, QWidget* parent);

Q_SIGNALS:
    void zoomOutRequested();
    void zoomInRequested();

private:
    QLayout* makePlayback();
    QWidget* makeLoop();
    QLayout* makeBars();
    QLayout* makeGrid();
    QLayout* makeZoom();
    void showProject();

    ProjectViewModel& m_vm;
    PixelButton* m_play = nullptr;
    PixelButton* m_loop = nullptr;
    PixelSegments* m_bars = nullptr;
    PixelSegments* m_grid = nullptr;
};

} // namespace mossbit
