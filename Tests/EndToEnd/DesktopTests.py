"""The real program, as a desktop starts it, works with it and ends it: DesktopTests.py PROGRAM
RENDERER [TEST…]. For the system's own Python; another one lacks the package for the bus."""

import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

PROGRAM, RENDERER = sys.argv[1:3]
EXAMPLES = pathlib.Path(__file__).parents[2].resolve() / "Examples"


def until(what, condition):
    limit = time.monotonic() + 30
    while not condition():
        if time.monotonic() > limit:
            raise AssertionError(f"Not within 30 s: {what}")
        time.sleep(0.002)


def output(*command):
    return subprocess.run(command, capture_output=True, text=True).stdout.strip()


def succeeds(*command):
    return subprocess.run(command, capture_output=True).returncode == 0


def call(method, *arguments):
    """Whether the running program takes a call by which desktops talk to it."""
    return succeeds("gdbus", "call", "--session", "--timeout=30", "--dest=com.quillark.mossbit",
                    "--object-path=/com/quillark/mossbit",
                    "--method=org.freedesktop.Application." + method, *arguments)


def song(tempo):
    return json.loads((EXAMPLES / "tiny-victory.mossbit").read_text()) | {"tempo": tempo}


def end(program, how=signal.SIGTERM):
    """Ends the program as the desktop does; returns its status."""
    def handles_the_end():
        status = pathlib.Path(f"/proc/{program.pid}/status").read_text()
        return int(re.search("SigCgt:(.*)", status)[1], 16) >> (signal.SIGTERM - 1) & 1
    until("a program that is up", handles_the_end)
    program.send_signal(how)
    return program.wait()


class Home(unittest.TestCase):
    """An empty home, without a session bus before `start_bus`."""

    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="mossbit-")))
        self.bus = f"unix:path={self.home}/bus"
        self.enterContext(contextlib.chdir(self.home))
        self.enterContext(unittest.mock.patch.dict(os.environ, clear=True, values={
            "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen",
            "SDL_AUDIODRIVER": "dummy", "DBUS_SESSION_BUS_ADDRESS": self.bus,
        } | dict.fromkeys(("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                           "XDG_RUNTIME_DIR"), str(self.home))))

    def start(self, *command):
        """Runs a program until the end of the test."""
        process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def start_bus(self):
        # It prints its address when it is there.
        self.start("dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address",
                   "--address=" + self.bus).stdout.readline()

    def store(self, name, project):
        (self.home / name).write_text(json.dumps(project))

    def notes(self, file):
        notes = json.loads((self.home / file).read_text())["channels"][0]["notes"]
        return [(note["pitch"], note["start"], note["length"]) for note in notes]

    def forget(self):
        shutil.rmtree(self.home / "Mossbit", ignore_errors=True)

    def autosave(self):
        return json.loads((self.home / "Mossbit/Autosave.mossbit").read_text())


class Lifecycle(Home):
    """Without a screen."""

    def start_first(self):
        """The first copy, which has its name on the bus and the autosave on return."""
        self.forget()
        self.store("one.mossbit", song(111))
        program = self.start(PROGRAM, "one.mossbit")
        until("the first copy", (self.home / "Mossbit/Autosave.lock").exists)
        return program

    def test_saves_whatever_ends_it_and_comes_back_with_it(self):
        self.store("one.mossbit", song(111))
        for how in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            self.forget()
            self.assertEqual(end(self.start(PROGRAM, "one.mossbit"), how), 0)
            self.assertEqual(self.autosave(), song(111))
        self.assertEqual(end(self.start(PROGRAM)), 0)
        self.assertEqual(self.autosave(), song(111))

    def test_takes_the_requests_of_other_starts_and_of_the_desktop(self):
        self.start_bus()
        # A name that is no UTF-8.
        (self.home / os.fsdecode(b"caf\xe9 #2.mossbit")).write_text(json.dumps(song(222)))
        address = f"file://{self.home}/caf%E9%20%232.mossbit"
        for request in (lambda: succeeds(PROGRAM, b"caf\xe9 #2.mossbit"),
                        lambda: succeeds(PROGRAM, address),
                        lambda: call("Open", f"['{address}', 'file:///no']", "{}")):
            first = self.start_first()
            self.assertTrue(request())
            self.assertTrue(succeeds(PROGRAM))
            self.assertTrue(call("Activate", "{'activation-token': <'token'>}"))
            self.assertTrue(call("ActivateAction", "none", "[<1>]", "{}"))
            self.assertTrue(call("Open", "@as []", "{}"))
            self.assertEqual(end(first), 0)
            self.assertEqual(self.autosave(), song(222))

    def test_a_copy_that_hung_leaves_the_file_to_the_one_that_opened_it(self):
        self.start_bus()
        self.store("two.mossbit", song(222))
        for is_still_waited_for in (False, True):
            first = self.start_first()
            self.assertTrue(call("Activate", "{}"), "its main loop runs")
            first.send_signal(signal.SIGSTOP)
            second = self.start(PROGRAM, "two.mossbit")

            def runs_on():
                return output("gdbus", "call", "--session", "--dest=org.freedesktop.DBus",
                              "--object-path=/", "--method=org.freedesktop.DBus.ListQueuedOwners",
                              "com.quillark.mossbit").count(":") == 2

            # Too late for the first to take the request, and just before the second gives up.
            if is_still_waited_for:
                time.sleep(1.8)
            else:
                until("the second copy runs", runs_on)
            first.send_signal(signal.SIGCONT)
            until("the second copy runs on", runs_on)
            self.assertTrue(succeeds(PROGRAM), "the first answers again")
            self.assertEqual(end(first), 0)
            self.assertEqual(self.autosave(), song(111))
            self.assertTrue(succeeds(PROGRAM), "the second has its place")
            self.assertEqual(end(second), 0)

    def test_says_in_one_line_that_there_is_no_display(self):
        os.environ |= {"QT_QPA_PLATFORM": "xcb", "DISPLAY": ":no"}
        found = subprocess.run([PROGRAM, "--version"], capture_output=True, text=True)
        self.assertEqual((found.returncode, found.stdout + found.stderr),
                         (1, "mossbit: No display can be reached\n"))


class Desktop(Home):
    """With a session bus, a screen and a window manager."""

    def setUp(self):
        super().setUp()
        self.start_bus()
        # It prints its number when it is there.
        screen = self.start("Xvfb", "-displayfd", "1", "-screen", "0", "1600x1200x24", "-nolisten",
                            "tcp", "-noreset").stdout.readline()
        os.environ |= {"QT_QPA_PLATFORM": "xcb", "DISPLAY": ":" + screen.decode().strip()}
        self.start("openbox", "--sm-disable")

        def window_manager_answers():
            self.xdotool("set_num_desktops 1")
            return self.xdotool("get_num_desktops") == "1"

        # One that still starts would miss a window that appears meanwhile.
        until("a window manager", window_manager_answers)

    def xdotool(self, commands):
        return output("xdotool", *commands.split())

    def await_title(self, title):
        """Waits until the window that has the keyboard has that title."""
        until(title, lambda: self.xdotool("getactivewindow getwindowname") == title)


class Window(Desktop):
    """Worked with the mouse and the keyboard."""

    # Pixels, in the window at its first size: a note of four sixteenths on C5, and the Play button
    # beside its icon.
    NOTE, PLAY_FACE = (150, 330), (103, 34)
    DRAWN = [(72, 4, 4)]

    def await_pixel(self, place, color):
        window = self.xdotool("getactivewindow")
        crop = "1x1+{}+{}".format(*place)
        until(f"{color} at {place}", lambda: color in output(
            "import", "-window", window, "-crop", crop, "-depth", "8", "txt:-"))

    def open(self):
        program = self.start(PROGRAM)
        self.await_title("Untitled")
        return program

    def draw(self):
        """Presses where the note starts, and moves to its end in a few steps."""
        moves = [f"mousemove --window %1 {x} 330" for x in range(133, 198, 16)]
        self.xdotool(" ".join(["getactivewindow", moves[0], "mousedown 1", *moves, "mouseup 1"]))
        self.await_title("Untitled •")

    def key(self, keys):
        self.xdotool("key " + keys)

    def choose_file(self, panel, name):
        """Answers the file panel that is about to open."""
        self.await_title(panel)
        self.key("ctrl+a")
        output("xdotool", "type", "--delay", "0", name)
        self.key("Return")

    def test_draws_plays_saves_exports_and_comes_back(self):
        sound = self.home / "sound"
        os.environ |= {"SDL_AUDIODRIVER": "disk", "SDL_DISKAUDIOFILE": str(sound)}
        program = self.open()
        self.assertIn("Geometry: 1100x7", self.xdotool("getactivewindow getwindowgeometry"))
        self.draw()
        self.key("space")
        self.await_pixel(self.PLAY_FACE, "#F2D45C")
        until("a sound", lambda: any(sound.read_bytes()))
        self.key("space")
        self.await_pixel(self.PLAY_FACE, "#1B2132")
        self.key("BackSpace ctrl+z ctrl+s")
        self.choose_file("Save", "my song")
        self.await_title("my song")
        self.assertEqual(self.notes("my song.mossbit"), self.DRAWN)
        self.key("ctrl+e")
        self.choose_file("Export WAV", "take one")
        self.await_title("my song")
        self.assertTrue(succeeds(RENDERER, "my song.mossbit", "rendered.wav"))
        rendered = (self.home / "rendered.wav").read_bytes()
        self.assertGreater(len(rendered), 1000)
        until("the export", lambda: (self.home / "take one.wav").exists())
        self.assertEqual((self.home / "take one.wav").read_bytes(), rendered)
        # Its autosave would come later.
        self.key("ctrl+l alt+F4")
        self.assertEqual(program.wait(), 0)
        self.assertIn('"loop" : false', (self.home / "my song.mossbit").read_text())
        self.open()
        self.await_pixel(self.NOTE, "#F2D45C")

    def test_asks_once_whatever_the_panel_and_ends_behind_it(self):
        # GTK's panels have a main loop and an idea of their own of when to ask.
        os.environ["XDG_CURRENT_DESKTOP"] = "GNOME"
        program = self.open()
        self.draw()
        replaced = self.home / "song.v2.mossbit"
        replaced.write_text("older")
        self.key("ctrl+s")
        self.await_title("Save")
        self.assertIn("Gtk", output("xprop", "-id", self.xdotool("getactivewindow"),
                                    "WM_WINDOW_ROLE"), "is qt6-gtk-platformtheme installed?")
        self.choose_file("Save", "song.v2")
        self.await_title("Mossbit")
        self.assertEqual(replaced.read_text(), "older")
        self.key("Escape")
        # Back to the panel. Another window comes before it, and a second start calls the panel.
        self.await_title("Save")
        self.store("other.mossbit", song(222))
        self.start("env", "DBUS_SESSION_BUS_ADDRESS=none:", PROGRAM, "other.mossbit")
        self.await_title("other")
        self.assertTrue(succeeds(PROGRAM))
        # Brings up a message for which GTK runs its own main loop.
        self.choose_file("Save", "nowhere/song")
        self.await_title("")
        self.assertEqual(end(program), 0)
        self.assertEqual(self.notes("Mossbit/Autosave.mossbit"), self.DRAWN)

    def test_takes_the_file_of_a_second_start(self):
        self.store("one.mossbit", song(111))
        self.open()
        self.assertTrue(succeeds(PROGRAM, "one.mossbit"))
        self.await_title("one")
        self.xdotool("getactivewindow windowminimize")
        self.await_title("")
        self.assertTrue(succeeds(PROGRAM))
        self.await_title("one")


class ScreenReader(Desktop):
    """Knows nothing but what the accessibility bus tells."""

    def hear(self, event):
        kind = event.type.rpartition(":")[2]
        if (kind not in ("add", "remove", "accessible-name", "selected", "checked")
                or event.source.get_role() in (Atspi.Role.DESKTOP_FRAME, Atspi.Role.FRAME)):
            return  # Newer versions tell the window's title, too.
        node = event.any_data if kind in ("add", "remove") else event.source
        if kind != "remove":  # What is gone does not tell its name any more.
            self.names[node] = node.get_name()
        is_off = event.type.startswith("object:state-changed") and not event.detail1
        self.heard.append(("not " * is_off + kind, self.names[node]))

    def expect_events(self, *expected):
        def has_heard():
            while GLib.MainContext.default().iteration(False):
                pass
            return len(self.heard) >= len(expected)

        until(f"{expected}; heard {self.heard}", has_heard)
        # The next call finds what comes in addition and later.
        self.assertEqual(self.heard, list(expected))
        self.heard.clear()

    def step(self, node, action, *expected):
        actions = [Atspi.Action.get_action_name(node, i) for i in range(node.get_n_actions())]
        node.do_action(actions.index(action))
        self.expect_events(*expected)

    def nodes(self, parent):
        for child in filter(None, map(parent.get_child_at_index,
                                      range(parent.get_child_count()))):
            # Older versions call a button "push button".
            yield (child.get_role_name().removeprefix("push "), child.get_name()), child
            yield from self.nodes(child)

    def find_all(self):
        Atspi.get_desktop(0).clear_cache()
        self.named.update(self.nodes(Atspi.get_desktop(0)))
        return ("menu item", "Quit") in self.named

    def test_writes_a_song(self):
        self.heard, self.names, self.named = [], {}, {}
        Atspi.set_timeout(30000, 30000)
        listener = Atspi.EventListener.new(self.hear)
        for kind in ("children-changed", "property-change", "state-changed"):
            listener.register("object:" + kind)
        program = self.start("env", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1", PROGRAM)
        until("the window is there", self.find_all)
        self.find_all()  # When the registry answers this, it has told the program who listens.

        roll, undo = self.named["list", "Piano roll, PULSE 1"], self.named["menu item", "Undo"]
        first, second = (f"C5, bar 1, beat 1, {place} sixteenth, length 1"
                         for place in ("1st", "2nd"))
        self.step(roll, "Add note", ("add", first), ("selected", first))
        self.step(roll, "Add note",
                  ("add", second), ("not selected", first), ("selected", second))

        note = roll.get_child_at_index(0)
        self.step(note, "Press", ("selected", first), ("not selected", second))
        raised = first.replace("C5", "C#5")
        self.step(note, "Up", ("accessible-name", raised))
        self.step(note, "Delete", ("remove", raised))
        self.step(undo, "Press", ("add", raised))
        self.step(undo, "Press", ("accessible-name", first))
        self.assertEqual([name for (_, name), _ in self.nodes(roll)], [first, second])

        at = roll.get_child_at_index(1).get_extents(Atspi.CoordType.SCREEN)
        self.xdotool(f"mousemove {at.x + at.width // 2} {at.y + at.height // 2} click 1")
        self.expect_events(("selected", second))
        self.step(self.named["check box", "Play"], "Toggle", ("checked", "Play"))
        self.step(self.named["button", "Stop"], "Press", ("not checked", "Play"))
        self.step(self.named["button", "Increase tempo"], "Press",
                  ("accessible-name", "Tempo 121"))
        self.step(self.named["menu item", "Quit"], "Press")
        self.assertEqual(program.wait(30), 0)
        self.assertEqual(self.notes("Mossbit/Autosave.mossbit"), [(72, 0, 1), (72, 1, 1)])


unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2, warnings="ignore")
