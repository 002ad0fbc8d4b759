"""Writes a song in the program, whose path it gets, as a screen reader does: from what the
accessibility bus tells alone. Prints "passed" if all that was told is right."""

import atexit
import os
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

KINDS = ("add", "remove", "accessible-name", "selected", "checked")
heard = []
names = {}
named = {}


def hear(event):
    kind = event.type.rpartition(":")[2]
    if kind not in KINDS or event.source == Atspi.get_desktop(0):
        return
    node = event.any_data if kind in ("add", "remove") else event.source
    if kind != "remove":  # What is gone does not tell its name any more.
        names[node] = node.get_name()
    is_off = event.type.startswith("object:state-changed") and not event.detail1
    heard.append(("not " * is_off + kind, names[node]))


def until(what, condition):
    limit = time.monotonic() + 30
    while not condition():
        if time.monotonic() > limit:
            sys.exit(f"Not within 30 s: {what}; heard {heard}")
        GLib.MainContext.default().iteration(True)


def expect(what, found, *expected):
    if found != list(expected):
        sys.exit(f"{what}\n found    {found}\n expected {expected}")


def expect_events(what, *expected):
    until(f"{what} tells {expected}", lambda: len(heard) >= len(expected))
    # The next call finds what comes in addition and later.
    expect(what, heard, *expected)
    heard.clear()


def step(node, action, *expected):
    actions = [Atspi.Action.get_action_name(node, i) for i in range(node.get_n_actions())]
    node.do_action(actions.index(action))
    expect_events(action, *expected)


def nodes(parent):
    for child in filter(None, map(parent.get_child_at_index, range(parent.get_child_count()))):
        yield (child.get_role_name(), child.get_name()), child
        yield from nodes(child)


def find_all():
    Atspi.get_desktop(0).clear_cache()
    named.update(nodes(Atspi.get_desktop(0)))
    return ("menu item", "Quit") in named


Atspi.set_timeout(30000, 30000)
listener = Atspi.EventListener.new(hear)
for kind in ("children-changed", "property-change", "state-changed"):
    listener.register("object:" + kind)
GLib.timeout_add(20, lambda: True)  # So that waiting has an end.
program = subprocess.Popen(sys.argv[1:],
                           env=os.environ | {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"})
atexit.register(program.kill)
until("the window is there", find_all)
find_all()  # When the registry answers this, it has told the program who listens.

roll, undo = named["list", "Piano roll, PULSE 1"], named["menu item", "Undo"]
place = "C5, bar 1, beat {}, {} sixteenth, length 1"
tune = [place.format(beat, which) for beat in (1, 2) for which in ("1st", "2nd", "3rd", "4th")]
step(roll, "Add note", ("add", tune[0]), ("selected", tune[0]))
for before, name in zip(tune, tune[1:]):
    step(roll, "Add note", ("add", name), ("not selected", before), ("selected", name))
expect("the song", [name for (_, name), _ in nodes(roll)], *tune)

note = roll.get_child_at_index(1)
step(note, "Press", ("selected", tune[1]), ("not selected", tune[7]))
changed = {"Up": "C#5, bar 1, beat 1, 2nd sixteenth, length 1",
           "Later": "C#5, bar 1, beat 1, 3rd sixteenth, length 1",
           "Longer": "C#5, bar 1, beat 1, 3rd sixteenth, length 2"}
for action, name in changed.items():
    step(note, action, ("accessible-name", name))
step(note, "Delete", ("remove", changed["Longer"]))
expect("without it", [name for (_, name), _ in nodes(roll)], tune[0], *tune[2:])
step(undo, "Press", ("add", changed["Longer"]))
for name in (changed["Later"], changed["Up"], tune[1]):
    step(undo, "Press", ("accessible-name", name))
expect("as it was", [name for (_, name), _ in nodes(roll)], *tune)

at = roll.get_child_at_index(7).get_extents(Atspi.CoordType.SCREEN)
subprocess.run(["xdotool", "mousemove", str(at.x + at.width // 2), str(at.y + at.height // 2),
                "click", "1"], check=True)
expect_events("a click where a note is", ("selected", tune[7]))
step(named["check box", "Play"], "Toggle", ("checked", "Play"))
step(named["push button", "Stop"], "Press", ("not checked", "Play"))
step(named["push button", "Increase tempo"], "Press", ("accessible-name", "Tempo 121"))
step(named["menu item", "Quit"], "Press")
expect("how it ends", [program.wait(30)], 0)
print("passed")
