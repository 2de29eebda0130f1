"""The everyday: switched on, an update from a stick, the restart after it."""

import time

import host
from host import Failed
from instrument import PROGRAM_ROW, another_program


def power_on(around):
    """switched on and left alone, it shows every version"""
    began = time.monotonic()
    panel = around.cold_panel()
    panel.guest.wait_until_up(400)
    panel.journal.wait("Reply: VER", 300, times=4)
    seconds = time.monotonic() - began
    host.wait_until(panel.is_ready, 60, "the window fills the screen, every version is read, nothing stands before it")
    panel.shot("versions")
    commands = panel.guest.run("systemctl --failed --no-legend --plain | cut -d ' ' -f 1 | paste -sd,")
    if commands:
        raise Failed(f"units of the system have failed: {commands}")
    return f"every version {seconds:.0f} s after power-on"


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
