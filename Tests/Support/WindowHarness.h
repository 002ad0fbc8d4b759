#pragma once

#include "App/DocumentWindow.h"
#include "Tests/Support/ViewModelHarness.h"
#include "Tests/Support/WidgetProbes.h"
#include "UI/Theme.h"
#include "Views/MainView.h"
#include "Views/PianoRollView.h"

#include <QAbstractButton>
#include <QScrollBar>
#include <QTest>

#include <memory>
#include <stdexcept>

namespace mossbit {

/// The program's window, shown off-screen, over a view model without the real system.
struct WindowHarness {
    ViewModelHarness system;
    std::unique_ptr<ProjectViewModel> vm;
    DocumentWindow window;
    MainView& view = *window.findChild<MainView*>();

    explicit WindowHarness(const Project& project = {}) : vm(system.start(project)), window(*vm) {
        window.show();
        // It fits itself to the screen, which is too small for it.
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        QApplication::processEvents();
        resize(1100, 700);
    }

    PianoRollView& roll() const { return view.pianoRoll(); }
    QWidget& canvas() const { return *roll().viewport(); }
    const std::vector<Note>& notes() const { return vm->selectedChannel().notes; }

    /// Gives the window's content that size.
    void resize(int width, int height) {
        window.resize(QSize(width, height) + window.size() - view.size());
        QApplication::processEvents();
    }

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

    /// Presses a key where the keyboard is.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
};

} // namespace mossbit
