"""The everyday: switched on, an update from a stick, the restart after it."""

import time

import host
from host import Failed
from instrument import PROGRAM_ROW, another_program


def power_on(around):
    """switched on and left alone, it shows every version"""
    began = time.monotonic()
    panel = around.cold_panel()
    window = seconds_until_window(panel, "updater", began)
    panel.journal.wait("Reply: VER", 300, times=4)
    versions = time.monotonic() - began
    host.wait_until(panel.is_ready, 60, "the window fills the screen, every version is read, nothing stands before it")
    panel.shot("versions")
    failed = panel.guest.run("systemctl --failed --no-legend --plain | cut -d ' ' -f 1 | paste -sd,")
    if failed:
        raise Failed(f"units of the system have failed: {failed}")
    empty = without_program(around, panel)
    return (f"window {window:.0f} s after power-on, every version {versions:.0f} s; without the program the session's Qt window "
            f"of three buttons {empty:.0f} s: {window / empty:.2f} and {versions / empty:.2f} times as long")


def seconds_until_window(panel, kind, began):
    panel.guest.wait_until_up(400)
    host.wait_until(lambda: any(window["class"] == kind for window in panel.guest.windows() or []), 300, f"a window of {kind}")
    return time.monotonic() - began


def without_program(around, panel):
    """Seconds from power-on to the menu behind the program, when the program does not start: what an empty Qt window takes."""
    panel.guest.as_account("systemctl --user mask updater.service")
    panel.guest.run("sync")
    card = panel.machine.card
    panel.cut_power()
    began = time.monotonic()
    panel = around.cold_panel("without-program", card=card)
    return seconds_until_window(panel, "panel-menu", began)


def everyday_release(around):
    return around.release("road", images={0: ("1.5", None), 1: ("2.1", None), 2: ("1.2", None)},
                          program=another_program(around.base.program(), "road"))


def road(around):
    """an update of three images and the program from a stick, by finger; then the restart"""
    import sticks
    release = everyday_release(around)
    stick = sticks.fat(around.files / "stick.img", [release.zip])
    panel = around.panel_that_waits()
    panel.shot("start")
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks([0, 1, 2, PROGRAM_ROW])
    panel.shot("taken")
    panel.start_update()
    yes, _ = panel.wait_for_question(300)
    at = panel.shot("question")
    if panel.statuses([0, 1, 2, 3, PROGRAM_ROW], at) != ["tick", "tick", "tick", "", "tick"]:
        raise Failed(f"the rows' icons are {panel.statuses(range(5), at)}")
    around.instrument.require_exactly(release.images)
    before = panel.guest.run("cat /proc/sys/kernel/random/boot_id")
    mark = panel.journal.mark()
    panel.tap(yes)
    host.wait_until(lambda: restarted(panel, before), 300, "the computer restarts", pause=2)
    panel.journal.wait("Reply: VER", 300, since=mark, times=4)
    host.wait_until(panel.is_ready, 60, "the window shows every version again")
    panel.shot("after-restart")
    running = panel.guest.sha256(f"/proc/{panel.guest.program()}/exe")
    if running != release.program_sha256():
        raise Failed("another program runs after the restart than the archive brought")
    return "3 images held exactly, the computer restarted, the new program runs"


def restarted(panel, before):
    if not panel.guest.answers():
        return False
    return panel.guest.run("cat /proc/sys/kernel/random/boot_id") != before
