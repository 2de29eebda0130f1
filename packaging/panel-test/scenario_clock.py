"""The panel has no battery clock: the time may be any, and may jump when a network gives it."""

import time

import host
import sticks
from cases import play_cases
from host import Failed

ROWS = (0, 2)
YEARS = 50 * 365 * 24 * 3600


def clock(around):
    """starts in 1970; the time jumps 50 years in a transfer and in a poll"""
    release = around.release("clock", images={0: ("1.5", 300 << 10), 2: ("1.2", 30 << 10)})
    stick = sticks.fat(around.files / "stick.img", [release.zip])
    lasted = {}
    return play_cases(around, [
        ("starts in 1970", lambda: start_in_1970(around)),
        ("no jump", lambda: jump(around, release, stick, "no", 0, lasted)),
        ("50 years forward in a transfer", lambda: jump(around, release, stick, "transfer", YEARS, lasted)),
        ("50 years back in a transfer", lambda: jump(around, release, stick, "transfer-back", -YEARS, lasted)),
        ("50 years forward in a poll", lambda: jump(around, release, stick, "poll", YEARS, lasted)),
        ("50 years back in a poll", lambda: jump(around, release, stick, "poll-back", -YEARS, lasted)),
    ])


def start_in_1970(around):
    panel = around.cold_panel("1970", clock="1970-01-01T00:00:00")
    panel.guest.wait_until_up(400)
    panel.journal.wait("Reply: VER", 300, times=4)
    host.wait_until(panel.is_ready, 60, "the window shows all versions")
    panel.shot("versions")
    return f"all versions; the panel's clock says {panel.guest.run('date +%Y-%m-%d')}"


def jump(around, release, stick, name, seconds, lasted):
    panel = around.panel_that_waits(f"jump-{name}")
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks(ROWS)
    began = time.monotonic()
    panel.start_update()
    if name.startswith("transfer"):
        host.wait_until(lambda: panel.status(0) == "bolt", 60, "the first module is written")
        if around.instrument.held():
            raise Failed("the transfer was over before the jump: a larger image is needed")
    elif name.startswith("poll"):
        host.wait_until(lambda: around.instrument.held().get(0) == release.images[0], 120, "the first image is accepted", pause=0.1)
    if seconds:
        panel.guest.run(f"date -s @$(( $(date +%s) + {seconds} ))")
    panel.wait_for_question(300)
    lasted[name] = time.monotonic() - began
    panel.shot("question")
    around.instrument.require_exactly(release.images)
    # The emulator's own pace varies; a limit that a jump shortens or lengthens does so by ten seconds and more.
    if "no" in lasted and abs(lasted[name] - lasted["no"]) > 0.5 * lasted["no"] + 5:
        raise Failed(f"the update lasted {lasted[name]:.0f} s, without a jump {lasted['no']:.0f} s")
    return f"success after {lasted[name]:.0f} s"
