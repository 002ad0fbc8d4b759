#include "Tests/Support/WindowHarness.h"

#include <QAccessible>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

/// Works the piano roll as a screen reader does.
struct PianoRollReader : testing::Test {
    WindowHarness window{song({.grid = GridDivision::quarter})};
    QAccessibleInterface& roll = *QAccessible::queryAccessibleInterface(&window.roll());

    static std::string name(QAccessibleInterface& what) {
        return what.text(QAccessible::Name).toStdString();
    }

    /// What it is called then.
    static std::string after(QAccessibleInterface& what, const char* action) {
        what.actionInterface()->doAction(action);
        return name(what);
    }
};

TEST_F(PianoRollReader, WritesASongNoteByNoteAndChangesIt) {
    EXPECT_EQ(roll.childCount(), 0);
    for (int i = 0; i < 8; ++i)
        after(roll, "Add note");
    ASSERT_EQ(roll.childCount(), 8);
    EXPECT_EQ(name(*roll.child(7)), "C5, bar 2, beat 4, 1st sixteenth, length 4");

    QAccessibleInterface& second = *roll.child(1);
    for (const auto& [action, expected] :
         {std::pair("Up", "C#5, bar 1, beat 2, 1st sixteenth, length 4"),
          {"Later", "C#5, bar 1, beat 3, 1st sixteenth, length 4"},
          {"Longer", "C#5, bar 1, beat 3, 1st sixteenth, length 8"},
          {"Shorter", "C#5, bar 1, beat 3, 1st sixteenth, length 4"},
          {"Shorter", "C#5, bar 1, beat 3, 1st sixteenth, length 4"}})
        EXPECT_EQ(after(second, action), expected) << action;
    EXPECT_EQ(roll.indexOfChild(&second), 2) << "in the order in which they sound";
    EXPECT_EQ(after(second, "Down"), "C5, bar 1, beat 3, 1st sixteenth, length 4");
    EXPECT_EQ(after(second, "Earlier"), "C5, bar 1, beat 2, 1st sixteenth, length 4");
    EXPECT_FALSE(second.state().selected);
    after(second, "Press");
    EXPECT_TRUE(second.state().selected);
    EXPECT_EQ(roll.focusChild(), &second) << "of which screen readers speak";
    second.actionInterface()->doAction("Delete");
    EXPECT_EQ(roll.childCount(), 7);
    for (int steps = 0; steps < 7; ++steps)
        window.vm->undo();
    EXPECT_EQ(name(*roll.child(1)), "C5, bar 1, beat 2, 1st sixteenth, length 4");
    EXPECT_EQ(roll.childCount(), 8) << "each was one step";

    window.vm->setSelectedChannelIndex(3);
    EXPECT_EQ(name(roll), "Piano roll, NOISE");
    EXPECT_EQ(roll.childCount(), 0);
    after(roll, "Add note");
    QAccessibleInterface& drum = *roll.child(0);
    EXPECT_EQ(after(drum, "Up"), "kick, bar 1, beat 1, 1st sixteenth, length 4");
    EXPECT_EQ(after(drum, "Down"), "snare, bar 1, beat 1, 1st sixteenth, length 4");
}

TEST_F(PianoRollReader, FindsNotesByTheirPlaceUntilTheyAreGone) {
    window.vm->addNote(72, 20);
    window.vm->addNote(61, 0);
    for (int i = 0; i < roll.childCount(); ++i) {
        EXPECT_EQ(roll.child(i)->parent(), &roll) << i;
        EXPECT_EQ(roll.indexOfChild(roll.child(i)), i);
    }
    QAccessibleInterface& later = *roll.child(1);
    EXPECT_EQ(roll.child(1), &later) << "the same object each time";

    window.roll().verticalScrollBar()->setValue(300);
    const QPoint middle = window.canvas().mapToGlobal(window.at(72, 22).toPoint());
    EXPECT_TRUE(later.rect().contains(middle));
    EXPECT_EQ(roll.childAt(middle.x(), middle.y()), &later);

    window.vm->deleteNote(window.notes()[0].id);
    EXPECT_FALSE(later.isValid());
    EXPECT_EQ(roll.childCount(), 1);
    EXPECT_EQ(roll.childAt(middle.x(), middle.y()), nullptr);
}

} // namespace
} // namespace mossbit
