"""A scenario's surroundings, its outcome, and the table of all."""

import time
import traceback

import host
from instrument import Instrument, Release
from machine import MEMORY, Machine
from panel import Panel


class Surroundings:
    """What a scenario works with: the folder of its results, the panel, the instrument, archives."""

    def __init__(self, base, name, cuts):
        self.base = base
        self.cuts = cuts
        self.folder = host.fresh_folder(host.RESULTS / name)
        self.files = host.fresh_folder(self.folder / "files")
        self.panel = None
        self.instrument = None
        self._parts = 0

    def part(self, name=None):
        """A folder for the next panel of this scenario: each has its own card, journal and pictures."""
        self._parts += 1
        if name is None:
            return self.folder if self._parts == 1 else host.fresh_folder(self.folder / f"part{self._parts}")
        return host.fresh_folder(self.folder / name)

    def panel_that_waits(self, part=None, faults=(), restart=3):
        """A panel with all versions read, and an instrument as delivered."""
        self.end()
        folder = self.part(part)
        self.instrument = Instrument(self.base.catalogue, folder, restart, faults)
        self.instrument.start()
        self.panel = Panel(Machine(self.base.fresh_card(folder), folder))
        self.panel.switch_on(self.base.state)
        return self.panel

    def cold_panel(self, part=None, memory=MEMORY, clock="utc", card=None):
        """A panel that was just switched on, and an instrument as delivered."""
        self.end()
        folder = self.part(part)
        self.instrument = Instrument(self.base.catalogue, folder)
        self.instrument.start()
        self.panel = Panel(Machine(card or self.base.fresh_card(folder), folder, memory, clock))
        self.panel.switch_on()
        return self.panel

    def switch_on_after_cut(self):
        """The panel after a power cut, switched on with the card as it was left; it must start as ever."""
        card, folder = self.panel.machine.card, self.panel.machine.folder
        self.panel.cut_power()
        self.panel = Panel(Machine(card, folder))
        mark = self.panel.journal.mark()
        self.panel.switch_on()
        self.panel.guest.wait_until_up(400)
        self.panel.journal.wait("Reply: VER", 300, since=mark, times=4)
        host.wait_until(self.panel.is_ready, 60, "after the power cut the panel starts without a question")
        return self.panel

    def release(self, name, **what):
        return Release(self.files, self.base.catalogue, name, **what)

    def end(self):
        if self.panel:
            self.panel.cut_power()
            self.panel = None
        if self.instrument:
            self.instrument.end()
            self.instrument = None


class Outcome:
    def __init__(self, name, holds, seconds, seen):
        self.name, self.holds, self.seconds, self.seen = name, holds, seconds, seen


def play(base, name, scenario, cuts):
    """`scenario` takes the surroundings and returns what was seen."""
    host.say(f"Scenario {name}")
    began = time.monotonic()
    around = Surroundings(base, name, cuts)
    try:
        seen, holds = scenario(around), True
    except (host.Failed, OSError) as error:
        seen, holds = str(error), False
        (around.folder / "failure.txt").write_text(traceback.format_exc(), encoding="utf-8")
        take_last_picture(around.panel)
    finally:
        around.end()
    outcome = Outcome(name, holds, time.monotonic() - began, seen)
    host.say(f"{name}: {'holds' if holds else 'FAILED'}: {seen}")
    return outcome


def take_last_picture(panel):
    try:
        if panel:
            panel.shot("failure")
    except (host.Failed, OSError):
        pass  # the emulator itself is gone, which the scenario's failure says


def print_table(outcomes):
    width = max(len(outcome.name) for outcome in outcomes)
    print()
    print(f"{'scenario':<{width}}  outcome  seconds  what was seen")
    for outcome in outcomes:
        print(f"{outcome.name:<{width}}  {'holds' if outcome.holds else 'FAILED':<7}  {outcome.seconds:7.0f}  {outcome.seen}")
