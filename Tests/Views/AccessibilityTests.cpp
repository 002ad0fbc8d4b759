#include "Tests/Support/WindowHarness.h"
#include "Views/ChannelBarView.h"

#include <QAccessible>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

QAccessibleInterface& accessible(QObject& object) {
    return *QAccessible::queryAccessibleInterface(&object);
}

TEST(Accessibility, TellsWhatIsOnlyDrawn) {
    WindowHarness window(song().on(ChannelKind::wave).muted());
    for (const auto& [name, isChecked] :
         {std::pair("Loop", true), {"WAVE mute", true}, {"NOISE mute", false}})
        EXPECT_EQ(accessible(window.control(name)).state().checked, isChecked) << name;

    window.vm->setVolume(7, 3);
    EXPECT_EQ(accessible(window.control("NOISE")).text(QAccessible::Description), "Vol 7 / 15");
    window.vm->setSelectedChannelIndex(3);
    QStringList texts;
    for (QWidget* widget : window.view.channelBar().inspector().findChildren<QWidget*>())
        if (widget->isVisible() && accessible(*widget).role() == QAccessible::StaticText)
            texts.push_back(widget->accessibleName());
    EXPECT_EQ(texts.join(' ').toStdString(), "NOISE Kit KICK SNARE HAT NOISE");
}

TEST(Accessibility, FindsNotesByTheirPlaceUntilTheyAreGone) {
    WindowHarness window(song().note(72, 20, 4).note(61, 0, 1));
    auto& roll = accessible(window.roll());
    QAccessibleInterface& first = *roll.child(0);
    for (int i = 0; i < roll.childCount(); ++i) {
        EXPECT_EQ(roll.child(i)->parent(), &roll) << i;
        EXPECT_EQ(roll.indexOfChild(roll.child(i)), i);
    }
    EXPECT_EQ(roll.child(0), &first) << "the same object each time";

    window.roll().verticalScrollBar()->setValue(300);
    const QPoint middle = window.canvas().mapToGlobal(window.at(72, 22).toPoint());
    EXPECT_TRUE(first.rect().contains(middle));
    EXPECT_EQ(roll.childAt(middle.x(), middle.y()), &first);

    window.vm->deleteNote(window.notes()[0].id);
    EXPECT_FALSE(first.isValid());
    EXPECT_TRUE(first.text(QAccessible::Name).isEmpty());
}

} // namespace
} // namespace mossbit
