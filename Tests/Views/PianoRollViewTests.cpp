#include "Tests/Support/WindowHarness.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QToolTip>

#include <tuple>

namespace mossbit {
namespace {

TEST(PianoRollGeometry, FitsThePaneUnlessTicksOrDrumsGetTooNarrow) {
    using Case = std::tuple<int, int, double, double>;
    for (const auto& [bars, paneWidth, zoom, cellWidth] :
         {Case{1, 266, 1.0, 12.5}, Case{1, 100, 1, 12.5}, Case{16, 1000, 1, 9},
          Case{16, 1000, 2, 18}, Case{4, 1090, 0.6, 9.6}}) {
        const QSizeF pane(paneWidth, 500);
        const PianoRollGeometry grid({.bars = bars}, ChannelKind::pulse1, pane, zoom);
        EXPECT_DOUBLE_EQ(grid.cellWidth, cellWidth);
    }
    for (const auto& [paneHeight, rowHeight] : {std::pair{120.0, 46.0}, {400.0, 100.0}}) {
        const PianoRollGeometry drums({}, ChannelKind::noise, {1000, paneHeight}, 1);
        EXPECT_DOUBLE_EQ(drums.rowHeight, rowHeight);
    }
}

TEST(PianoRollGeometry, MovesOnTheGridAndStaysInside) {
    const PianoRollGeometry grid({.bars = 1, .grid = GridDivision::quarter}, ChannelKind::pulse1,
                                 {1000, 500}, 1);
    using Case = std::tuple<int, int, double, int>;
    for (const auto& [start, length, ticks, expected] :
         {Case{4, 4, 1.6, 8}, Case{4, 4, 1.4, 4}, Case{3, 2, 0, 4}, Case{4, 4, 99, 12},
          Case{4, 4, -99, 0}, Case{0, 16, 8, 0}, Case{0, 40, 8, 0}}) {
        const Note note{.pitch = 60, .start = start, .length = length};
        EXPECT_EQ(grid.moved(note, {ticks * grid.cellWidth, 0}).tick, expected) << start;
    }
}

TEST(PianoRollGeometry, ResizesInGridStepsUpToTheEnd) {
    using enum GridDivision;
    using Case = std::tuple<GridDivision, int, double, int>;
    for (const auto& [division, start, pointer, length] :
         {Case{eighth, 8, 11.2, 4}, Case{eighth, 8, 10.4, 2}, Case{eighth, 8, -3, 2},
          Case{sixteenth, 0, 99, 16}, Case{quarter, 14, 20, 2}, Case{quarter, 15, 0, 1}}) {
        const Project project{.bars = 1, .grid = division};
        const PianoRollGeometry grid(project, ChannelKind::pulse1, {1000, 500}, 1);
        const Note note{.pitch = 60, .start = start};
        EXPECT_EQ(grid.resizedLength(note, pointer * grid.cellWidth), length)
            << start << " to " << pointer;
    }
}

/// A piano roll with one note, from the fifth to the eighth tick.
struct PianoRoll : testing::Test, WindowHarness {
    QScrollBar& vertical = *roll().verticalScrollBar();
    QScrollBar& horizontal = *roll().horizontalScrollBar();
    QWidget& keys = *roll().findChild<QWidget*>("keys");

    PianoRoll() : WindowHarness(song().note(72, 4, 4)) {}

    QPoint place() const { return {horizontal.value(), vertical.value()}; }
};

TEST_F(PianoRoll, TellsWithTheCursorWhatAPressWillDo) {
    const auto shapeAt = [&](double tick) {
        sendMouse(canvas(), QEvent::MouseMove, at(72, tick), Qt::NoButton);
        return canvas().cursor().shape();
    };
    view.setZoom(4);
    EXPECT_EQ(shapeAt(7.88), Qt::SizeAllCursor);
    view.setZoom(0.6);
    EXPECT_EQ(shapeAt(7.6), Qt::SizeAllCursor);
    EXPECT_EQ(shapeAt(7.9), Qt::SizeHorCursor);
    EXPECT_EQ(shapeAt(63.5), Qt::CrossCursor);
    EXPECT_EQ(shapeAt(64.5), Qt::ArrowCursor);
    sendMouse(canvas(), QEvent::MouseButtonPress, at(72, 64.5));
    EXPECT_FALSE(vm->canUndo());
    sendMouse(canvas(), QEvent::MouseButtonPress, at(72, 63.5));
    EXPECT_EQ(notes()[1].start, 63);
}

TEST_F(PianoRoll, NamesWhatThePointerRestsOn) {
    const auto toolTip = [](QWidget& widget, const QPointF& point) {
        QHelpEvent event(QEvent::ToolTip, point.toPoint(), widget.mapToGlobal(point.toPoint()));
        QApplication::sendEvent(&widget, &event);
        return QToolTip::text().toStdString();
    };
    vm->setGrid(GridDivision::eighth);
    EXPECT_EQ(toolTip(canvas(), at(72, 7.5)), "C5 · bar 1, beat 2, 1st sixteenth · length 4");
    EXPECT_EQ(toolTip(canvas(), at(73, 27.5)), "C#5 · bar 2, beat 3, 3rd sixteenth");
    EXPECT_EQ(toolTip(keys, {5, at(73, 0).y()}), "C#5");
    vm->setSelectedChannelIndex(3);
    EXPECT_EQ(toolTip(canvas(), at(1, 0.5)), "snare · bar 1, beat 1, 1st sixteenth");
    EXPECT_EQ(toolTip(keys, {5, at(0, 0).y()}), "kick");
    view.setZoom(0.6);
    toolTip(canvas(), at(0, 65));
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
}

TEST_F(PianoRoll, KeepsC5InTheMiddleUntilThePersonDoesAnything) {
    const auto isCentred = [&] { return std::abs(at(72, 0).y() - canvas().height() / 2.0) < 1; };
    EXPECT_TRUE(isCentred());
    EXPECT_EQ(horizontal.maximum(), 0) << "the last tick is not hidden";
    resize(1100, 650);
    EXPECT_TRUE(isCentred()) << "the window manager changed the size";
    QTest::mouseClick(&view, Qt::LeftButton);
    const int chosen = vertical.value();
    window.hide();
    window.show();
    resize(1100, 600);
    EXPECT_EQ(vertical.value(), chosen);
}

TEST_F(PianoRoll, ComesBackToThePlaceThatWasChosen) {
    view.setZoom(4);
    vertical.setValue(380);
    horizontal.setValue(500);
    vm->setSelectedChannelIndex(3);
    resize(1100, 1000);
    view.setZoom(1);
    EXPECT_EQ(place(), QPoint(0, 0));
    view.setZoom(4);
    resize(1100, 700);
    vm->setSelectedChannelIndex(2);
    EXPECT_EQ(place(), QPoint(500, 380));
}

TEST_F(PianoRoll, ScrollsByTheWheelAndTheMiddleButton) {
    view.setZoom(4);
    const int top = vertical.value();
    turnWheel(canvas(), {10, 10}, -120, Qt::NoButton, Qt::ShiftModifier);
    EXPECT_EQ(place(), QPoint(60, top));
    turnWheel(keys, {10, 10}, -120);
    EXPECT_EQ(place(), QPoint(60, top + 45));
    turnWheel(canvas(), {10, 10}, 120, Qt::NoButton, Qt::ControlModifier);
    EXPECT_EQ(place(), QPoint(60, top));
    sendMouse(canvas(), QEvent::MouseButtonPress, {300, 100}, Qt::MiddleButton);
    sendMouse(canvas(), QEvent::MouseMove, {250, 130}, Qt::MiddleButton);
    EXPECT_EQ(place(), QPoint(110, top - 30));
    sendMouse(canvas(), QEvent::MouseMove, {0, 0}, Qt::NoButton);
    EXPECT_EQ(place(), QPoint(110, top - 30));
    EXPECT_FALSE(vm->canUndo());
}

// Painting.

struct PianoRollColors : testing::TestWithParam<double> {};

TEST_P(PianoRollColors, TellRowsLinesNotesGhostsAndPlayheadApart) {
    SongBuilder project = song().note(72, 1, 3).note(72, 6, 3);
    project.on(ChannelKind::wave).muted().note(71, 1, 3);
    project.on(ChannelKind::noise).note(0, 0, 4);
    WindowHarness window(project);
    // 16 points per tick.
    window.resize(1024 + 66 + 12, 700);
    window.vm->setSelection({window.notes()[1].id});
    window.vm->play();
    window.system.output.pull(48000 / 8 * 9 + 100);
    window.system.pass(0.02);
    ASSERT_EQ(window.vm->playhead(), 9);
    QImage image = render(window.canvas(), GetParam());
    // At a pitch, ticks from the left, and points from there.
    const auto at = [&](std::int64_t pitch, double tick, QPointF shift = {}) {
        return colorAt(image, window.at(pitch, tick) + shift);
    };
    const QColor accent = Palette::accent(ChannelKind::pulse1);
    // A quarter of a point into a line is within its first device pixel at any ratio.
    const QPointF in(0.25, 0);
    EXPECT_EQ(at(76, 1.5), Palette::well) << "white row";
    EXPECT_EQ(at(73, 1.5), Palette::background) << "black row";
    EXPECT_EQ(at(72, 2.5), accent) << "note";
    EXPECT_EQ(at(72, 4, {-2.75, 0}), accent) << "before the handle";
    EXPECT_EQ(at(72, 7.5, {0, -6.7}), Palette::text) << "selected note";
    EXPECT_EQ(at(71, 2.5, {0, -5.75}), Palette::well) << "above the ghost";
    EXPECT_EQ(at(70, 9, {2.25, 0}), Palette::background) << "past the playhead";
    const auto barNumber = [&](std::int64_t pitch) {
        const QPointF place = window.at(pitch, 16) * GetParam();
        return image.copy(QRect(place.toPoint(), QSize(14, 6)));
    };
    EXPECT_NE(barNumber(72), barNumber(71));
    const auto lightness = [&](auto... place) { return at(place...).lightness(); };
    EXPECT_LT(lightness(76, 1.5), lightness(76, 1.5, QPointF(0, -7))) << "row separator";
    EXPECT_LT(lightness(76, 1.5), lightness(76, 1, in)) << "step";
    EXPECT_LT(lightness(76, 1, in), lightness(76, 4, in)) << "beat";
    EXPECT_LT(lightness(76, 4, in), lightness(76, 16, in)) << "bar";
    EXPECT_LT(lightness(76, 4, in), lightness(76, 64, QPointF(-0.25, 0))) << "end of the song";
    EXPECT_LT(lightness(72, 4, QPointF(-1.25, 0)), accent.lightness()) << "handle";
    EXPECT_GT(lightness(70, 9, QPointF(1, 0)), lightness(76, 16, in)) << "playhead";
    EXPECT_NE(at(71, 2.5), Palette::well) << "ghost of a muted channel";

    window.vm->setSelectedChannelIndex(3);
    image = render(window.canvas(), GetParam());
    const QPointF below(0, window.roll().grid().rowHeight / 4);
    EXPECT_EQ(at(0, 2.5, below), Palette::accent(ChannelKind::noise)) << "drum";
    EXPECT_EQ(at(0, 16, in - 2 * below), at(0, 16, in)) << "lines from the top";
    EXPECT_EQ(at(1, 5.5, below), Palette::background) << "odd row";
    EXPECT_EQ(at(2, 2.5, below), Palette::well) << "no ghosts";
}

INSTANTIATE_TEST_SUITE_P(Ratios, PianoRollColors, testing::Values(1.0, 1.5, 2.0));

TEST_F(PianoRoll, NamesTheRowsWhileTheGridScrollsSideways) {
    view.setZoom(4);
    const auto key = [&](std::int64_t pitch) { return QPointF(20, at(pitch, 0).y()); };
    const QImage before = render(keys, 1);
    EXPECT_EQ(colorAt(before, key(72)), Palette::panel);
    EXPECT_EQ(colorAt(before, key(73)), Palette::well);
    EXPECT_EQ(colorAt(before, key(72) + QPointF(45.5, 0)), Palette::line);
    EXPECT_EQ(colorAt(before, key(72) + QPointF(0, 7)), Palette::line);
    EXPECT_NE(colorAt(before, key(71) + QPointF(0, 7)), Palette::panel);
    EXPECT_NE(colorAt(before, key(71) + QPointF(0, 7)), Palette::line);
    horizontal.setValue(300);
    EXPECT_EQ(render(keys, 1), before);
}

TEST_F(PianoRoll, ShowsNoPlayheadBesideAGridThatHasBecomeShorter) {
    view.setZoom(0.6);
    vm->play();
    system.output.pull(48000 / 8 * 40 + 100);
    system.pass(0.02);
    EXPECT_NE(colorAt(render(canvas(), 1), at(60, 40) + QPointF(1, 0)), Palette::well);
    vm->setBars(2);
    ASSERT_EQ(vm->playhead(), 40);
    EXPECT_EQ(colorAt(render(canvas(), 1), at(60, 40) + QPointF(1, 0)), Palette::well);
}

// Assistive tools.

/// Works the piano roll as a screen reader does.
struct PianoRollReader : testing::Test, WindowHarness {
    QAccessibleInterface& list = *QAccessible::queryAccessibleInterface(&roll());

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
    vm->setGrid(GridDivision::quarter);
    EXPECT_EQ(list.childCount(), 0);
    for (int i = 0; i < 8; ++i)
        after(list, "Add note");
    ASSERT_EQ(list.childCount(), 8);
    EXPECT_EQ(name(*list.child(7)), "C5, bar 2, beat 4, 1st sixteenth, length 4");

    QAccessibleInterface& second = *list.child(1);
    for (const auto& [action, expected] :
         {std::pair("Up", "C#5, bar 1, beat 2, 1st sixteenth, length 4"),
          {"Later", "C#5, bar 1, beat 3, 1st sixteenth, length 4"},
          {"Longer", "C#5, bar 1, beat 3, 1st sixteenth, length 8"},
          {"Shorter", "C#5, bar 1, beat 3, 1st sixteenth, length 4"},
          {"Shorter", "C#5, bar 1, beat 3, 1st sixteenth, length 4"}})
        EXPECT_EQ(after(second, action), expected) << action;
    EXPECT_EQ(list.indexOfChild(&second), 2) << "in the order in which they sound";
    EXPECT_EQ(after(second, "Down"), "C5, bar 1, beat 3, 1st sixteenth, length 4");
    EXPECT_EQ(after(second, "Earlier"), "C5, bar 1, beat 2, 1st sixteenth, length 4");
    EXPECT_FALSE(second.state().selected);
    after(second, "Press");
    EXPECT_TRUE(second.state().selected);
    EXPECT_EQ(list.focusChild(), &second) << "of which screen readers speak";
    second.actionInterface()->doAction("Delete");
    EXPECT_EQ(list.childCount(), 7);
    for (int steps = 0; steps < 7; ++steps)
        vm->undo();
    EXPECT_EQ(name(*list.child(1)), "C5, bar 1, beat 2, 1st sixteenth, length 4");
    EXPECT_EQ(list.childCount(), 8) << "each was one step";

    vm->setSelectedChannelIndex(3);
    EXPECT_EQ(name(list), "Piano roll, NOISE");
    EXPECT_EQ(list.childCount(), 0);
    after(list, "Add note");
    QAccessibleInterface& drum = *list.child(0);
    EXPECT_EQ(after(drum, "Up"), "kick, bar 1, beat 1, 1st sixteenth, length 4");
    EXPECT_EQ(after(drum, "Down"), "snare, bar 1, beat 1, 1st sixteenth, length 4");
}

TEST_F(PianoRollReader, FindsNotesByTheirPlaceUntilTheyAreGone) {
    vm->addNote(72, 20);
    vm->addNote(61, 0);
    QAccessibleInterface& later = *list.child(1);
    EXPECT_EQ(list.child(1), &later) << "the same object each time";
    EXPECT_EQ(later.parent(), &list);
    EXPECT_EQ(list.indexOfChild(&later), 1);

    roll().verticalScrollBar()->setValue(300);
    const QPoint middle = canvas().mapToGlobal(at(72, 20.5).toPoint());
    EXPECT_TRUE(later.rect().contains(middle));
    EXPECT_EQ(list.childAt(middle.x(), middle.y()), &later);
    vm->deleteNote(notes()[0].id);
    EXPECT_FALSE(later.isValid());
    EXPECT_EQ(list.childCount(), 1);
    EXPECT_EQ(list.childAt(middle.x(), middle.y()), nullptr);
}

} // namespace
} // namespace mossbit
