#!/usr/bin/env python3
"""Makes the recordings of screens that the journeys replay.

Usage: make_recordings.py [--check]

Writes journeys/recordings/*.json beside this script; with --check, exits with 1 when a file there is
not what would be written. The same on every machine: one seed a recording, rounded numbers.

How the numbers come about. No person was recorded; the shapes are those that the literature on
reaching, tapping and tremor describes, the sizes those of a hand that holds a telephone upright.

- A finger that travels follows a minimum-jerk path: the fifth-order polynomial that starts and ends
  at rest. A finger that taps lands beside the middle of its key and creeps by a point or two.
- Contact radius and pressure rise quickly to a maximum and fall more slowly, the radius from about
  half of its largest value, the pressure from nothing.
- Times between taps have a log-normal distribution, and so has the time that a finger stays down.
- The hand tilts slowly about an angle of reading and trembles with 8 to 12 Hz; each tap knocks the
  device, which answers with a damped oscillation, into the screen and about its horizontal axis.
- Gravity is the tilt alone: z is -1 g for a device on its back. Acceleration is gravity, tremor,
  knocks and the noise of the sensor; rotation is the change of the tilt and the same tremor; the
  magnetic field is the earth's, seen from the tilted device, and noise.

Touch rows come every 8 or 9 ms while the finger is down, motion rows every 10 ms.
"""

import json
import math
import random
import sys
from pathlib import Path

FOLDER = Path(__file__).resolve().parent / "journeys" / "recordings"

TOUCH_INTERVAL = 1000 / 120  # ms
MOTION_INTERVAL = 10  # ms
EARTH_FIELD = (0.0, 20.5, -43.5)  # microtesla: north along the screen's upper edge, and down


def minimum_jerk(share):
    """The share of the way at a share of the time."""
    return share**3 * (10 - 15 * share + 6 * share**2)


def contact(share):
    """A profile from 0 to 1 and back, its maximum at about a third of the time."""
    return math.sin(math.pi * share**0.65) ** 0.8 if 0 < share < 1 else 0.0


class Hand:
    """The device in a hand: what its sensors read at a time, and what knocks it."""

    def __init__(self, dice, tilt_degrees):
        self.dice = dice
        self.tilt = math.radians(tilt_degrees)
        self.phases = [dice.uniform(0, 2 * math.pi) for _ in range(6)]
        self.tremor_rate = dice.uniform(8.5, 11.5)  # Hz
        self.knocks = []  # (time in ms, strength in g)

    def angles(self, ms):
        """Pitch and roll in radians."""
        s = ms / 1000
        pitch = self.tilt + 0.035 * math.sin(0.9 * s + self.phases[0])
        roll = 0.05 + 0.03 * math.sin(0.6 * s + self.phases[1])
        return pitch, roll

    def turned(self, ms, vector):
        """A vector of the room in the axes of the device: x right, y to the upper edge, z out."""
        pitch, roll = self.angles(ms)
        x, y, z = vector
        y, z = (
            y * math.cos(pitch) + z * math.sin(pitch),
            -y * math.sin(pitch) + z * math.cos(pitch),
        )
        x, z = x * math.cos(roll) - z * math.sin(roll), x * math.sin(roll) + z * math.cos(roll)
        return [x, y, z]

    def gravity(self, ms):
        return self.turned(ms, (0.0, 0.0, -1.0))

    def knock(self, ms):
        """What the knocks so far leave at a time, in g along z."""
        left = 0.0
        for start, strength in self.knocks:
            age = (ms - start) / 1000
            if age >= 0:
                left += strength * math.exp(-age / 0.03) * math.cos(2 * math.pi * 21 * age)
        return left

    def tremor(self, ms, axis):
        turn = 2 * math.pi * self.tremor_rate * ms / 1000
        return math.sin(turn + self.phases[2 + axis]) + 0.4 * math.sin(1.7 * turn + axis)

    def acceleration(self, ms):
        sample = [
            g + 0.006 * self.tremor(ms, axis) + self.dice.gauss(0, 0.0015)
            for axis, g in enumerate(self.gravity(ms))
        ]
        sample[2] -= self.knock(ms)
        return sample

    def rotation(self, ms):
        before, after = self.angles(ms - 5), self.angles(ms + 5)
        sample = [(after[0] - before[0]) / 0.01, (after[1] - before[1]) / 0.01, 0.0]
        sample[0] += 2.5 * self.knock(ms - 6)
        return [
            rate + 0.018 * self.tremor(ms, (axis + 1) % 3) + self.dice.gauss(0, 0.002)
            for axis, rate in enumerate(sample)
        ]

    def magnetic_field(self, ms):
        return [value + self.dice.gauss(0, 0.25) for value in self.turned(ms, EARTH_FIELD)]


class Recording:
    """Rows as they come: fingers, and the hand's sensors while one is down."""

    def __init__(self, seed, tilt_degrees):
        self.dice = random.Random(seed)
        self.hand = Hand(self.dice, tilt_degrees)
        self.rows = []
        self.now = 300.0 + self.dice.uniform(0, 200)  # ms: the user looks first

    def pause(self, median):
        self.now += median * math.exp(self.dice.gauss(0, 0.25))

    def touch(self, ms, word, place, force, radius):
        self.rows.append(
            [round(ms), word, round(place[0], 2), round(place[1], 2), round(force, 3), round(radius, 2)]
        )

    def sense(self, start, end):
        """Motion from 8 ms after the press, when the sensors run, to its end."""
        ms = start + 8
        while ms < end:
            for word, read in (
                ("gravity", self.hand.gravity),
                ("rotation", self.hand.rotation),
                ("magneticField", self.hand.magnetic_field),
                ("acceleration", self.hand.acceleration),
            ):
                self.rows.append([round(ms), word] + [round(value, 5) for value in read(ms)])
            ms += MOTION_INTERVAL

    def press(self, path, duration, end="ended"):
        """A finger that is down for `duration` ms; `path` gives its place at a share of that."""
        start, duration = self.now, duration * math.exp(self.dice.gauss(0, 0.15))
        largest = self.dice.gauss(9.4, 0.5)
        hardest = self.dice.gauss(0.62, 0.06)
        self.hand.knocks += [(start, 0.05 * hardest), (start + duration, -0.02 * hardest)]
        steps = max(2, int(duration / TOUCH_INTERVAL))
        for step in range(steps + 1):
            share = step / steps
            shape = contact(min(max(share, 0.02), 0.98))
            word = "began" if step == 0 else end if step == steps else "changed"
            self.touch(
                start + share * duration,
                word,
                path(share),
                hardest * shape + abs(self.dice.gauss(0, 0.004)),
                largest * (0.55 + 0.45 * shape) + self.dice.gauss(0, 0.05),
            )
        self.sense(start, start + duration)
        self.now = start + duration
        # What was noted in two goes is one stream; of one time, the press comes first.
        self.rows.sort(key=lambda row: (row[0], row[1] not in ("began",)))

    def tap(self, middle, duration=95, end="ended"):
        landing = (self.dice.gauss(middle[0], 5.5), self.dice.gauss(middle[1] + 3, 6))
        creep = (self.dice.gauss(0, 0.9), self.dice.gauss(0.6, 0.8))

        def path(share):
            return tuple(landing[i] + creep[i] * minimum_jerk(share) for i in (0, 1))

        self.press(path, duration, end)

    def swipe(self, start, finish, duration=330):
        """The path of a thumb: a minimum-jerk way with the bow of its joint."""
        bow = self.dice.gauss(14, 3)

        def path(share):
            way = minimum_jerk(share)
            x, y = (start[i] + (finish[i] - start[i]) * way for i in (0, 1))
            return x + bow * math.sin(math.pi * way), y

        self.press(path, duration)


def middle_of(view):
    x, y, width, height = view["frame"]
    return x + width / 2, y + height / 2


def pin_screen():
    """Four digits; one is typed again after a call has taken the first try away. On the way a finger
    brushes the strip above the keys, which belongs to no view."""
    keys = {
        name: {"name": f"key {name}", "frame": [30 + 115 * column, 260 + 95 * row, 100, 80]}
        for row, names in enumerate(("123", "456", "789", "*0#"))
        for column, name in enumerate(names)
    }
    subviews = [{"name": "title", "frame": [45, 120, 300, 40]}, *keys.values()]
    recording = Recording(seed=2580, tilt_degrees=42)
    for key in "25":
        recording.tap(middle_of(keys[key]))
        recording.pause(310)
    recording.tap(middle_of(keys["8"]), duration=60, end="cancelled")
    recording.pause(900)
    recording.tap((352, 40), duration=70)
    recording.pause(420)
    for key in "80":
        recording.tap(middle_of(keys[key]))
        recording.pause(310)
    return {
        "made": "by apps/demo_host/make_recordings.py: four digits, one of them after a call",
        "view": {"name": "PIN", "frame": [0, 94, 390, 750], "subviews": subviews},
        "rows": recording.rows,
    }


def payment_screen():
    """Scrolls the payees, picks one, touches the amount and the gap below the reference, and holds
    the button."""
    subviews = [
        {"name": "amount", "frame": [20, 20, 350, 60], "tag": 12},
        {"name": "payees", "frame": [20, 100, 350, 420]},
        {"name": "reference", "frame": [20, 540, 350, 50]},
        {"name": "pay", "frame": [45, 640, 300, 56], "tag": 4},
    ]
    recording = Recording(seed=1010, tilt_degrees=35)
    recording.swipe((250, 470), (262, 190))
    recording.pause(480)
    recording.swipe((244, 430), (251, 260), duration=260)
    recording.pause(700)
    recording.tap((190, 310))
    recording.pause(800)
    recording.tap(middle_of(subviews[0]), duration=110)
    recording.pause(650)
    # Between the subviews, within the screen.
    recording.tap((200, 612), duration=80)
    recording.pause(500)
    recording.tap(middle_of(subviews[3]), duration=420)
    return {
        "made": "by apps/demo_host/make_recordings.py: scrolls, picks a payee, pays",
        "view": {"name": "payment", "frame": [0, 94, 390, 750], "tag": 1, "subviews": subviews},
        "rows": recording.rows,
    }


def written(screen):
    """A row a line."""
    rows = ",\n    ".join(json.dumps(row) for row in screen["rows"])
    views = ",\n      ".join(json.dumps(view) for view in screen["view"]["subviews"])
    head = {key: value for key, value in screen["view"].items() if key != "subviews"}
    return (
        f'{{\n  "made": {json.dumps(screen["made"])},\n'
        f'  "view": {json.dumps(head)[:-1]}, "subviews": [\n      {views}\n  ]}},\n'
        f'  "rows": [\n    {rows}\n  ]\n}}\n'
    )


def main(arguments):
    screens = {"pin.json": pin_screen(), "payment.json": payment_screen()}
    stale = 0
    for name, screen in screens.items():
        text = written(screen)
        if arguments != ["--check"]:
            FOLDER.mkdir(exist_ok=True)
            (FOLDER / name).write_text(text, encoding="ascii")
        elif not (FOLDER / name).is_file() or (FOLDER / name).read_text(encoding="ascii") != text:
            print(f"{FOLDER / name} is not what make_recordings.py writes")
            stale += 1
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
