#include "Tests/Support/WindowHarness.h"

#include <QAccessible>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

TEST(Accessibility, FindsNotesByTheirPlaceUntilTheyAreGone) {
    WindowHarness window(song().note(72, 20, 4).note(61, 0, 1));
    auto& roll = *QAccessible::queryAccessibleInterface(&window.roll());
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
