#include "Tests/Support/WindowHarness.h"
#include "UI/PixelSegments.h"
#include "UI/VolumeBar.h"
#include "Views/ChannelBarView.h"

#include <QAccessible>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

QAccessibleInterface& accessible(QObject& object) {
    return *QAccessible::queryAccessibleInterface(&object);
}

TEST(Accessibility, NamesEveryControlWithItsRoleAndState) {
    WindowHarness window(song().on(ChannelKind::wave).muted());
    struct Case {
        const char* name;
        QAccessible::Role role;
        bool isChecked;
    };
    for (const Case& c :
         {Case{"Play", QAccessible::Button, false}, Case{"Loop", QAccessible::CheckBox, true},
          Case{"WAVE mute", QAccessible::CheckBox, true},
          Case{"NOISE mute", QAccessible::CheckBox, false},
          Case{"PULSE 1", QAccessible::RadioButton, true},
          Case{"PULSE 2", QAccessible::RadioButton, false},
          Case{"Bars 4", QAccessible::RadioButton, true},
          Case{"Grid 1/4", QAccessible::RadioButton, false}}) {
        auto& control = accessible(window.control(QString::fromLatin1(c.name)));
        EXPECT_EQ(control.text(QAccessible::Name), QString::fromLatin1(c.name));
        EXPECT_EQ(control.role(), c.role) << c.name;
        EXPECT_EQ(control.state().checked, c.isChecked) << c.name;
    }
    auto& eighth = accessible(window.control(QStringLiteral("Grid 1/8")));
    eighth.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(window.vm->project().grid, GridDivision::eighth);
    for (const QWidget* widget : window.view.findChildren<QWidget*>()) {
        const bool takesKeys = widget->focusPolicy() != Qt::NoFocus && widget != &window.canvas();
        EXPECT_TRUE(!takesKeys || !widget->accessibleName().isEmpty())
            << widget->metaObject()->className();
    }
}

TEST(Accessibility, ReadsWhatIsOnlyWritten) {
    WindowHarness window;
    window.vm->setSelectedChannelIndex(3);
    QStringList texts;
    for (QWidget* widget : window.view.channelBar().inspector().findChildren<QWidget*>())
        if (widget->isVisible() && accessible(*widget).role() == QAccessible::StaticText)
            texts.push_back(widget->accessibleName());
    EXPECT_EQ(texts.join(QLatin1Char(' ')).toStdString(), "NOISE Kit KICK SNARE HAT NOISE");
    window.vm->setVolume(7, 3);
    EXPECT_EQ(accessible(window.control(QStringLiteral("NOISE"))).text(QAccessible::Description),
              QStringLiteral("Vol 7 / 15"));
}

TEST(Accessibility, KeepsPickersInOrderWhateverIsChosen) {
    WindowHarness window;
    auto& bars = accessible(window.control<PixelSegmentRow>(QStringLiteral("Bars")));
    ASSERT_EQ(bars.childCount(), 5);
    for (int i = 0; i < 5; ++i) {
        window.vm->setBars(allBarCounts[static_cast<std::size_t>(i)]);
        EXPECT_EQ(bars.child(i)->text(QAccessible::Name), QStringLiteral("Bars %1").arg(1 << i));
        EXPECT_TRUE(bars.child(i)->state().checked);
        EXPECT_EQ(bars.indexOfChild(bars.child(i)), i);
    }
}

TEST(Accessibility, ReadsAndSetsVolumes) {
    WindowHarness window;
    auto& bar = accessible(window.control<VolumeBar>(QStringLiteral("NOISE volume")));
    EXPECT_EQ(bar.role(), QAccessible::Slider);
    QAccessibleValueInterface* value = bar.valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue().toInt(), 13);
    EXPECT_EQ(value->maximumValue().toInt(), 15);
    value->setCurrentValue(4.0);
    EXPECT_EQ(window.vm->project().channels[3].volume, 4);
    value->setCurrentValue(99);
    EXPECT_EQ(value->currentValue().toInt(), 15);
}

TEST(Accessibility, ShowsTheSelectedChannelsNotes) {
    WindowHarness window(
        song().note(72, 20, 4).note(61, 0, 1).on(ChannelKind::noise).note(1, 63, 1));
    auto& roll = accessible(window.roll());
    EXPECT_EQ(roll.role(), QAccessible::List);
    ASSERT_GE(roll.childCount(), 2);
    QAccessibleInterface& first = *roll.child(0);
    EXPECT_EQ(first.role(), QAccessible::ListItem);
    EXPECT_EQ(first.text(QAccessible::Name), QStringLiteral("C5, bar 2, beat 2, 4 ticks"));
    EXPECT_EQ(roll.child(1)->text(QAccessible::Name), QStringLiteral("C#4, bar 1, beat 1, 1 tick"));
    for (int i = 0; i < roll.childCount(); ++i) {
        EXPECT_EQ(roll.child(i)->parent(), &roll) << i;
        EXPECT_EQ(roll.indexOfChild(roll.child(i)), i);
    }
    EXPECT_EQ(roll.child(0), &first) << "the same object each time";

    const QPoint middle = window.canvas().mapToGlobal(window.at(72, 22).toPoint());
    EXPECT_TRUE(first.rect().contains(middle));
    EXPECT_EQ(roll.childAt(middle.x(), middle.y()), &first);
    EXPECT_FALSE(first.state().selected);
    first.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(first.state().selected);
    EXPECT_EQ(window.vm->selection(), ProjectViewModel::Selection{window.notes()[0].id});

    window.vm->deleteSelection();
    EXPECT_FALSE(first.isValid());
    EXPECT_TRUE(first.text(QAccessible::Name).isEmpty());
    window.vm->setSelectedChannelIndex(3);
    EXPECT_EQ(roll.child(0)->text(QAccessible::Name),
              QStringLiteral("snare, bar 4, beat 4, 1 tick"));
}

} // namespace
} // namespace mossbit
