"""Little memory, a card that is full, a card that fails."""

import os
import time

import host
import sticks
from cases import play_cases
from host import Failed
from instrument import PROGRAM_ROW, another_program

MEBIBYTE = 1 << 20
IMAGES = {0: ("1.5", None), 2: ("1.2", None)}


def small(around):
    """1 GiB of memory with an archive of 400 MiB; a card with 50 MB left; a card that turns read-only"""
    return play_cases(around, [
        ("1 GiB of memory, 400 MiB", lambda: little_memory(around)),
        ("archive larger than the card", lambda: full_card(around)),
        ("program larger than what is left", lambda: full_while_copying(around)),
        ("card turns read-only", lambda: read_only_card(around)),
    ])


def little_memory(around):
    extra = {f"big{number}.dat": os.urandom(200 * MEBIBYTE) for number in range(2)}
    release = around.release("big", images=IMAGES, program=another_program(around.base.program(), "big"), extra=extra)
    extra.clear()
    stick = sticks.fat(around.files / "big.img", [release.zip])
    release.zip.unlink()
    panel = around.cold_panel("memory", memory=1024)
    panel.guest.wait_until_up(400)
    host.wait_until(lambda: panel.journal.count("Reply: VER") >= 4 and panel.is_ready(), 300, "the window shows all versions")
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks([0, 2, PROGRAM_ROW], 600)
    panel.start_update()
    panel.wait_for_question(900)
    panel.shot("question")
    around.instrument.require_exactly(release.images)
    if panel.guest.sha256("/var/lib/updater/updater") != release.program_sha256():
        raise Failed("success, but the program is not the archive's")
    most = int(panel.guest.run(f"awk '/VmHWM/ {{print $2}}' /proc/{panel.guest.program()}/status"))
    return f"updated; the program had {most // 1024} MiB at most"


def leave(panel, megabytes):
    """Fills the card except for this much that an account may take."""
    panel.guest.run("sync; free=$(df --output=avail --block-size=1M / | tail -n 1); "
                    f"fallocate -l $((free - {megabytes}))M /filler; sync", seconds=180)


def switch_off_and_on(around):
    """After a power cut the panel must start as ever."""
    panel = around.switch_on_after_cut()
    panel.shot("after-power-cut")
    return panel


def full_card(around):
    release = around.release("hundred", images=IMAGES, program=another_program(around.base.program(), "hundred"),
                             extra={"big.dat": os.urandom(100 * MEBIBYTE)})
    stick = sticks.fat(around.files / "hundred.img", [release.zip])
    panel = around.panel_that_waits("full-card")
    leave(panel, 50)
    panel.plug(stick)
    panel.choose_archive()
    # The wait pop-up is a window of the program without a tick.
    host.wait_until(panel.box, 30, "the wait pop-up")
    time.sleep(40)
    panel.shot("pop-up")
    if not panel.box() or panel.marks(range(5)):
        raise Failed("the wait pop-up must stay over an archive that does not fit, and nothing be offered")
    panel = switch_off_and_on(around)
    return "the wait pop-up stays; after a power cut the panel starts as ever"


def full_while_copying(around):
    release = around.release("thirty", program=another_program(around.base.program(), "thirty"),
                             extra={f"part{number}.dat": os.urandom(3 * MEBIBYTE) for number in range(10)})
    stick = sticks.fat(around.files / "thirty.img", [release.zip])
    panel = around.panel_that_waits("full-copy")
    leave(panel, 50)
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks([PROGRAM_ROW])
    panel.start_update()
    panel.wait_for_failure(300)
    at = panel.shot("failure")
    if panel.status(PROGRAM_ROW, at) != "cross":
        raise Failed("a copy that did not fit has no cross")
    version = panel.guest.run("cat /var/lib/updater/updater.ver")
    if version == release.program_version:
        raise Failed("the version file says the new version after a copy that failed")
    panel = switch_off_and_on(around)
    return f"a cross and the failure message, version {version} stays; after a power cut the panel starts as ever"


def read_only_card(around):
    release = around.release("everyday", images=IMAGES)
    stick = sticks.fat(around.files / "everyday.img", [release.zip])
    panel = around.panel_that_waits("read-only")
    panel.plug(stick)
    # What the kernel does with a card that fails.
    panel.guest.run("mount -o remount,ro / 2>/dev/null || echo u > /proc/sysrq-trigger")
    panel.choose_archive()
    time.sleep(40)
    panel.shot("after-archive")
    offered = panel.marks(range(5))
    if offered:
        raise Failed(f"the rows {offered} are offered from a card that takes nothing")
    seen = "the wait pop-up stays" if panel.box() else "nothing is offered"
    panel = switch_off_and_on(around)
    return f"{seen}; after a power cut the panel starts as ever"
