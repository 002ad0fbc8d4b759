#pragma once

#include "ViewModels/ProjectViewModel.h"

#include <QPointer>
#include <QWidget>

class QMessageBox;

namespace mossbit {

class PianoRollView;

/// The content of the window.
class MainView : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize minimumExtent{900, 600};
    static constexpr QSize preferredExtent{1100, 700};

    explicit MainView(ProjectViewModel& vm, QWidget* parent = nullptr);

    /// Horizontal zoom of the piano roll.
    double zoom() const { return m_zoom; }
    void setZoom(double zoom);

    PianoRollView& pianoRoll() const { return *m_pianoRoll; }
    /// What an empty song shows over the piano roll.
    QWidget& hint() const { return *m_hint; }

    QSize sizeHint() const override { return preferredExtent; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showHint();
    void presentAlert();

    ProjectViewModel& m_vm;
    double m_zoom = 1;
    PianoRollView* m_pianoRoll = nullptr;
    QWidget* m_hint = nullptr;
    QPointer<QMessageBox> m_alert;
};

} // namespace mossbit
