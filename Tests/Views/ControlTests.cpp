#include "Tests/Support/WindowHarness.h"

#include <QAccessible>
#include <QLabel>
#include <QMessageBox>

#include <tuple>

namespace mossbit {
namespace {

/// Every control around the piano roll.
struct Controls : testing::Test, WindowHarness {
    /// Works a control as an assistive tool does.
    void act(const char* name) {
        QAccessibleInterface& control = accessible(name);
        control.actionInterface()->doAction(control.actionInterface()->actionNames().first());
    }
    bool isChecked(const char* name) { return accessible(name).state().checked; }
    QAccessibleInterface& accessible(const char* name) {
        return *QAccessible::queryAccessibleInterface(&control<QWidget>(name));
    }

    /// The colour at a point of a control, as the whole window shows it.
    QColor color(const QString& name, const QPoint& point) {
        return colorAt(render(view, 1), control<QWidget>(name).mapTo(&view, point));
    }

    /// What is there to be pressed.
    std::vector<QWidget*> shown() const {
        std::vector<QWidget*> controls;
        for (QWidget* widget : view.findChildren<QWidget*>())
            if (widget->isVisible() && !qobject_cast<QScrollBar*>(widget) &&
                (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QAbstractSlider*>(widget)))
                controls.push_back(widget);
        return controls;
    }
};

TEST_F(Controls, DriveTheSongAndTellItsState) {
    for (const char* name : {"Play", "Decrease tempo", "Loop", "Bars 16", "Grid 1/8"})
        control(name).click();
    EXPECT_EQ(vm->project(),
              (Project{.tempo = 119, .bars = 16, .grid = GridDivision::eighth, .loop = false}));
    EXPECT_TRUE(isChecked("Play") && isChecked("Bars 16") && isChecked("Grid 1/8"));
    EXPECT_FALSE(isChecked("Loop") || isChecked("Bars 4") || isChecked("Grid 1/16"));
    control("Play").click();
    EXPECT_TRUE(vm->isPlaying()) << "a click starts anew";
    for (const bool plays : {false, true}) {
        act("Play");
        EXPECT_TRUE(vm->isPlaying() == plays && isChecked("Play") == plays);
    }
    act("Stop");
    // Qt shows a button pressed for a moment first.
    EXPECT_TRUE(QTest::qWaitFor([&] { return !vm->isPlaying(); }));
    EXPECT_FALSE(isChecked("Play"));

    QAccessibleValueInterface& volume = *accessible("WAVE volume").valueInterface();
    EXPECT_EQ(volume.maximumValue(), 15);
    volume.setCurrentValue(5);
    EXPECT_EQ(accessible("WAVE").text(QAccessible::Description), "Vol 5 / 15");

    for (const auto& [name, from, to] : {std::tuple("Zoom out", 1.0, 0.75),
                                         {"Zoom out", 0.7, 0.6},
                                         {"Zoom in", 3.5, 3.75},
                                         {"Zoom in", 3.9, 4.0}}) {
        view.setZoom(from);
        control(name).click();
        EXPECT_DOUBLE_EQ(view.zoom(), to);
    }
}

TEST_F(Controls, OfferWhatTheSelectedChannelHas) {
    for (int channel = 0; channel < 4; ++channel) {
        vm->setSelectedChannelIndex(channel);
        EXPECT_EQ(isChecked("WAVE"), channel == 2);
        EXPECT_EQ(control<QWidget>("Duty").isVisible(), channel < 2) << channel;
        EXPECT_EQ(control<QWidget>("Preset").isVisible(), channel == 2) << channel;
    }
    act("PULSE 2");
    act("Duty 75%");
    EXPECT_EQ(vm->project().channels[1].duty, Duty::d75);
    EXPECT_EQ(vm->project().channels[0].duty, Duty::d50);
    EXPECT_EQ(color("Duty 75%", {0, 0}), Palette::accent(ChannelKind::pulse2));
    act("WAVE");
    act("Preset HOLLOW");
    EXPECT_EQ(vm->project().channels[2].wave, WavePreset::hollow);
}

TEST_F(Controls, ShowTheSelectedAndTheMutedChannel) {
    const QColor cyan = Palette::accent(ChannelKind::pulse2);
    EXPECT_EQ(color("PULSE 2", {14, 20}), cyan);
    control("WAVE").click();
    control("PULSE 2 mute").click();
    EXPECT_EQ(vm->selectedChannelIndex(), 2);
    EXPECT_TRUE(vm->project().channels[1].muted);
    EXPECT_EQ(color("WAVE", {5, 40}), Palette::background);
    EXPECT_EQ(color("WAVE", {50, 1}), Palette::accent(ChannelKind::wave));
    EXPECT_EQ(color("PULSE 2", {5, 40}), Palette::panel);
    EXPECT_NE(color("PULSE 2", {14, 20}), cyan) << "dimmed";
    EXPECT_EQ(color("PULSE 2 mute", {0, 0}), Palette::accent(ChannelKind::noise));
    EXPECT_EQ(control("PULSE 2 mute").toolTip(), "Unmute");
}

TEST_F(Controls, FollowADragOnTheVolume) {
    auto& volume = control<QAbstractSlider>("NOISE volume");
    const double cell = volume.width() / 15.0;
    QEvent::Type type = QEvent::MouseButtonPress;
    for (const auto& [cells, expected] :
         {std::pair{4.5, 5}, {0.01, 1}, {0.0, 0}, {-3.0, 0}, {99.0, 15}}) {
        sendMouse(volume, std::exchange(type, QEvent::MouseMove), {cells * cell, 5});
        EXPECT_EQ(vm->project().channels[3].volume, expected);
        const QImage image = render(volume, 1.25);
        for (int i = 0; i < 15; ++i)
            EXPECT_EQ(colorAt(image, {(i + 0.5) * cell, 5}),
                      i < expected ? Palette::accent(ChannelKind::noise) : QColor(Palette::line));
    }
    EXPECT_EQ(vm->selectedChannelIndex(), 0);
}

TEST_F(Controls, ShowWhatThePointerIsOver) {
    for (const char* name : {"Stop", "Bars 1", "Zoom in"}) {
        EXPECT_EQ(color(name, {3, 3}), Palette::panel) << name;
        QTest::mouseMove(&control(name), {3, 3});
        QTest::qWait(0);
        EXPECT_EQ(color(name, {3, 3}), Palette::line) << name;
    }
}

TEST_F(Controls, LieInsideTheirRowAtTheSmallest) {
    resize(900, 600);
    std::vector<QWidget*> widgets = shown();
    for (QLabel* caption : view.findChildren<QLabel*>())
        if (caption->isVisible())
            widgets.push_back(caption);
    for (const QWidget* widget : widgets) {
        EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry()));
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width());
        for (const QWidget* other : widgets)
            if (other != widget && other->parent() == widget->parent()) {
                const QRect shared = widget->geometry().intersected(other->geometry());
                EXPECT_LE(shared.width(), 1) << widget->accessibleName().toStdString() << " and "
                                             << other->accessibleName().toStdString();
            }
    }
}

TEST_F(Controls, HaveOneTabStopForAGroupAndLeaveClicksToTheGrid) {
    QStringList names;
    for (press(Qt::Key_Tab); !roll().hasFocus() && names.size() < 60; press(Qt::Key_Tab))
        names.push_back(QApplication::focusWidget()->accessibleName());
    EXPECT_EQ(names.join(", ").toStdString(),
              "PULSE 1, PULSE 1 mute, PULSE 1 volume, PULSE 2 mute, PULSE 2 volume, "
              "WAVE mute, WAVE volume, NOISE mute, NOISE volume, Duty 50%, Play, Stop, "
              "Decrease tempo, Tempo 120, Increase tempo, Loop, Bars 4, Grid 1/16, "
              "Zoom out, Zoom in");
    for (QWidget* control : shown()) {
        const std::string name = control->accessibleName().toStdString();
        // Segments show their row's.
        EXPECT_EQ(control->toolTip().isEmpty() && control->parentWidget()->toolTip().isEmpty(),
                  name == "PULSE 1")
            << "only on what a click changes: " << name;
        if (name.starts_with("Tempo"))
            continue;
        QTest::mouseClick(control, Qt::LeftButton);
        EXPECT_TRUE(roll().hasFocus()) << name;
        vm->setSelectedChannelIndex(0);
    }
}

TEST_F(Controls, MarkTheKeyboardFocusAndTakeKeys) {
    const auto expectMark = [&](const std::string& name) {
        const QWidget& marked = control<QWidget>(name.c_str());
        EXPECT_TRUE(marked.hasFocus()) << name;
        for (const int x : {0, marked.width() - 1})
            EXPECT_EQ(color(name.c_str(), {x, 5}), Palette::text) << name;
    };
    control("Loop").setFocus(Qt::TabFocusReason);
    expectMark("Loop");
    press(Qt::Key_Return);
    EXPECT_FALSE(vm->project().loop);
    press(Qt::Key_Tab);
    for (const int bars : {8, 16, 8}) {
        press(bars > vm->project().bars ? Qt::Key_Right : Qt::Key_Left);
        EXPECT_EQ(vm->project().bars, bars);
        expectMark("Bars " + std::to_string(bars));
    }
    press(Qt::Key_Tab);
    expectMark("Grid 1/16");
    control("PULSE 1").setFocus();
    press(Qt::Key_Right);
    EXPECT_EQ(vm->selectedChannelIndex(), 1);
    expectMark("PULSE 2");
    control<QWidget>("WAVE volume").setFocus();
    press(Qt::Key_Left);
    EXPECT_EQ(vm->project().channels[2].volume, 10);
    expectMark("WAVE volume");
    roll().setFocus(Qt::TabFocusReason);
    EXPECT_EQ(color("Piano roll, PULSE 2", {0, 5}), Palette::text);
}

TEST_F(Controls, AreJoinedByAHintWhileThereIsNoNote) {
    QWidget& hint = view.hint();
    EXPECT_TRUE(hint.isVisible());
    EXPECT_EQ(view.childAt(hint.geometry().center()), &canvas()) << "presses reach the grid";
    vm->addNote(60, 0);
    vm->setSelectedChannelIndex(3);
    EXPECT_FALSE(hint.isVisible());
    vm->undo();
    EXPECT_TRUE(hint.isVisible());
}

TEST_F(Controls, GiveWayToMessagesAfterTheCommandThatFailed) {
    vm->open(system.folder / "<b>missing</b>.mossbit");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "not inside the command";
    QApplication::processEvents();
    auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text().toStdString(), vm->alertMessage());
    EXPECT_EQ(alert->textFormat(), Qt::PlainText);
    QTest::keyClick(alert, Qt::Key_Escape);
    EXPECT_FALSE(vm->alertMessage());
}

} // namespace
} // namespace mossbit
