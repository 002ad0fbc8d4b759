"""What a screen reader finds in the real program, which shows the song of the test that runs this."""

import subprocess
import sys
import time

import pyatspi

sys.stderr = sys.stdout  # Which the test reads.

CHANNELS = ["PULSE 1", "PULSE 2", "WAVE", "NOISE"]
CONTROLS = {
    "push button": ["Stop", "Decrease tempo", "Tempo 120", "Increase tempo", "Zoom out",
                    "Zoom in"],
    "text": ["Tempo in beats per minute"],
    "check box": ["Play", "Loop"] + [f"{channel} mute" for channel in CHANNELS],
    "radio button": [f"Bars {count}" for count in (1, 2, 4, 8, 16)]
                    + [f"Grid {grid}" for grid in ("1/4", "1/8", "1/16")] + CHANNELS
                    + [f"Duty {duty}" for duty in ("12.5%", "25%", "50%", "75%")]
                    + [f"Preset {wave}" for wave in ("TRIANGLE", "SOFT", "HOLLOW")],
    "slider": [f"{channel} volume" for channel in CHANNELS],
    "list": ["Piano roll"],
    "scroll bar": ["Horizontal scroll bar", "Vertical scroll bar"],
}


def until(what, condition):
    limit = time.monotonic() + 30
    while not (result := condition()):
        if time.monotonic() > limit:
            sys.exit(f"FAILED, not within 30 s: {what}")
        time.sleep(0.02)
    return result


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"FAILED: {what}\n  found    {found}\n  expected {expected}")


def descendants(node):
    for child in node:
        yield child
        yield from descendants(child)


def shown_window():
    # What has been read once is kept otherwise.
    screen = pyatspi.Registry.getDesktop(0)
    screen.clear_cache()
    for application in filter(None, screen):
        application.clear_cache()
        for node in filter(None, application):
            node.clear_cache()
            if node.name == "song":
                return node
    return None


def check(window):
    named = {(node.getRoleName(), node.name): node for node in descendants(window)}
    for role, names in CONTROLS.items():
        expect(f"every {role}, in order", [name for kind, name in named if kind == role], names)

    def states(node):
        node.clear_cache()
        return {state for state in pyatspi.STATE_VALUE_TO_NAME if node.getState().contains(state)}

    def becomes(node, state, wanted=True):
        until(f"{node.name} {'has' if wanted else 'loses'} {pyatspi.STATE_VALUE_TO_NAME[state]}",
              lambda: (state in states(node)) == wanted)

    def act(node):
        node.queryAction().doAction(0)

    for name in ("PULSE 1", "Bars 4", "Grid 1/16", "Duty 50%"):
        becomes(named["radio button", name], pyatspi.STATE_CHECKED)
    for name, is_on in (("Loop", True), ("WAVE mute", True), ("NOISE mute", False)):
        becomes(named["check box", name], pyatspi.STATE_CHECKED, is_on)
    act(named["radio button", "Bars 8"])
    becomes(named["radio button", "Bars 8"], pyatspi.STATE_CHECKED)
    becomes(named["radio button", "Bars 4"], pyatspi.STATE_CHECKED, False)

    volume = named["slider", "WAVE volume"].queryValue()
    expect("range of a volume", (volume.minimumValue, volume.maximumValue), (0, 15))
    volume.currentValue = 5
    until("a volume is set", lambda: volume.currentValue == 5)
    card = named["radio button", "WAVE"]
    until("its card tells it", lambda: card.clear_cache() or card.description == "Vol 5 / 15")

    roll = named["list", "Piano roll"]

    def notes():
        roll.clear_cache()
        return [node for node in roll if node.getRoleName() == "list item"]

    c4, csharp5 = notes()
    expect("names of the notes", [c4.name, csharp5.name],
           ["C4, bar 2, beat 1, 4 ticks", "C#5, bar 1, beat 2, 1 tick"])
    place, other, around = (node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
                            for node in (c4, csharp5, roll))
    tick, row = (place.x - other.x) / 11, (place.y - other.y) / 13
    expect("notes lie at their ticks and pitches", (
        round(place.width / tick), round(other.width / tick), round(place.height / row)), (4, 1, 1))
    expect("notes lie inside the piano roll",
           around.x < other.x and around.y < other.y
           and place.x + place.width < around.x + around.width
           and place.y + place.height < around.y + around.height, True)
    act(csharp5)
    becomes(csharp5, pyatspi.STATE_SELECTED)
    subprocess.run(["xdotool", "mousemove", str(place.x + place.width // 2),
                    str(place.y + place.height // 2), "click", "1"], check=True)
    becomes(c4, pyatspi.STATE_SELECTED)
    becomes(csharp5, pyatspi.STATE_SELECTED, False)

    play = named["check box", "Play"]
    act(play)
    becomes(play, pyatspi.STATE_CHECKED)
    act(named["push button", "Stop"])
    becomes(play, pyatspi.STATE_CHECKED, False)

    act(named["radio button", "NOISE"])
    until("the drums are shown",
          lambda: [node.name for node in notes()] == ["snare, bar 4, beat 4, 1 tick"])
    until("the drums are named", lambda: [
        node.name for node in descendants(window) if node.getRoleName() == "label"
        and pyatspi.STATE_SHOWING in states(node)][-6:] == "NOISE Kit KICK SNARE HAT NOISE".split())


check(until("the song's window is shown", shown_window))
print("passed")
