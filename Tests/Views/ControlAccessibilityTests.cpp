#include "Tests/Support/WindowHarness.h"

#include <QAccessible>
#include <QTest>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace mossbit {
namespace {

/// What assistive tools find in the window.
struct ControlAccessibility : testing::Test {
    WindowHarness window;
    std::map<QAccessible::Role, std::string> names;
    std::map<std::string, QAccessibleInterface*> named;

    void SetUp() override { collect(*QAccessible::queryAccessibleInterface(&window.view)); }

    void collect(QAccessibleInterface& parent) {
        for (int index = 0; index < parent.childCount(); ++index) {
            QAccessibleInterface& child = *parent.child(index);
            const std::string name = child.text(QAccessible::Name).toStdString();
            names[child.role()] += name + ", ";
            // Captions repeat what they name.
            if (child.role() != QAccessible::StaticText)
                named[name] = &child;
            collect(child);
        }
    }

    bool isChecked(const char* name) { return named.at(name)->state().checked; }

    void act(const char* name) {
        QAccessibleActionInterface& actions = *named.at(name)->actionInterface();
        actions.doAction(actions.actionNames().first());
    }
};

TEST_F(ControlAccessibility, NamesEveryControlByItsRole) {
    EXPECT_EQ(names[QAccessible::Button], "Stop, Decrease tempo, Tempo 120, Increase tempo, "
                                          "Zoom out, Zoom in, ");
    EXPECT_EQ(names[QAccessible::EditableText], "Tempo in beats per minute, ");
    EXPECT_EQ(names[QAccessible::CheckBox],
              "Play, Loop, PULSE 1 mute, PULSE 2 mute, WAVE mute, NOISE mute, ");
    EXPECT_EQ(names[QAccessible::RadioButton],
              "Bars 1, Bars 2, Bars 4, Bars 8, Bars 16, Grid 1/4, Grid 1/8, Grid 1/16, "
              "PULSE 1, PULSE 2, WAVE, NOISE, Duty 12.5%, Duty 25%, Duty 50%, Duty 75%, "
              "Preset TRIANGLE, Preset SOFT, Preset HOLLOW, ");
    EXPECT_EQ(names[QAccessible::Slider],
              "PULSE 1 volume, PULSE 2 volume, WAVE volume, NOISE volume, ");
}

TEST_F(ControlAccessibility, ActsLikeAClickAndTellsTheState) {
    for (const char* name : {"PULSE 1", "Bars 4", "Grid 1/16", "Duty 50%", "Loop"})
        EXPECT_TRUE(isChecked(name)) << name;
    act("Bars 8");
    EXPECT_TRUE(isChecked("Bars 8") && !isChecked("Bars 4"));
    act("WAVE mute");
    EXPECT_TRUE(isChecked("WAVE mute") && !isChecked("NOISE mute"));
    act("NOISE");
    EXPECT_EQ(window.vm->selectedChannelIndex(), 3);
    for (const bool plays : {true, false, true}) {
        act("Play");
        EXPECT_TRUE(window.vm->isPlaying() == plays && isChecked("Play") == plays);
    }
    act("Stop");
    // Qt shows a button pressed for a moment first.
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window.vm->isPlaying(); }));
    EXPECT_FALSE(isChecked("Play"));
    act("Loop");
    EXPECT_EQ(isChecked("Loop"), window.vm->project().loop);

    QAccessibleValueInterface& volume = *named.at("WAVE volume")->valueInterface();
    EXPECT_EQ(volume.minimumValue(), 0);
    EXPECT_EQ(volume.maximumValue(), 15);
    volume.setCurrentValue(5);
    EXPECT_EQ(volume.currentValue(), 5);
    EXPECT_EQ(named.at("WAVE")->text(QAccessible::Description), "Vol 5 / 15");
}

} // namespace
} // namespace mossbit
