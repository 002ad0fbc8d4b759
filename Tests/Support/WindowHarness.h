#pragma once

#include "Tests/Support/ViewModelHarness.h"
#include "Tests/Support/WidgetProbes.h"
#include "UI/Theme.h"
#include "Views/MainView.h"
#include "Views/PianoRollView.h"

#include <QAbstractButton>
#include <QScrollBar>

#include <memory>
#include <stdexcept>

namespace mossbit {

/// The main window's content, shown off-screen, over a view model without the real system.
struct WindowHarness {
    ViewModelHarness system;
    std::unique_ptr<ProjectViewModel> vm;
    MainView view;

    explicit WindowHarness(const Project& project = {}, QSize extent = MainView::preferredExtent)
        : vm(system.start(project)), view(*vm) {
        applyTheme(*qApp);
        view.resize(extent);
        view.show();
        view.activateWindow();
        QApplication::processEvents();
    }

    PianoRollView& roll() const { return view.pianoRoll(); }
    QWidget& canvas() const { return *roll().viewport(); }
    const std::vector<Note>& notes() const { return vm->selectedChannel().notes; }

    /// The canvas's point in the middle of a row, `tick` ticks from the left.
    QPointF at(std::int64_t pitch, double tick) const {
        const QRectF first = roll().visibleNoteRect({.pitch = pitch, .start = 0, .length = 1});
        return {first.left() + tick * first.width(), first.center().y()};
    }

    /// The control that assistive tools know by that name.
    template <typename Widget = QAbstractButton>
    Widget& control(const QString& name) const {
        for (Widget* widget : view.findChildren<Widget*>())
            if (widget->accessibleName() == name)
                return *widget;
        throw std::out_of_range(name.toStdString());
    }

    void press(const QPointF& point) { sendMouse(canvas(), QEvent::MouseButtonPress, point); }
    void drag(const QPointF& point) { sendMouse(canvas(), QEvent::MouseMove, point); }
    void release(const QPointF& point) { sendMouse(canvas(), QEvent::MouseButtonRelease, point); }
};

} // namespace mossbit
