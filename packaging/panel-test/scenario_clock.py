"""The panel has no battery clock: the time may be any, and may jump when a network gives it."""

import re

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
    spoken = {}
    return play_cases(around, [
        ("starts in 1970", lambda: start_in_1970(around)),
        ("no jump", lambda: jump(around, release, stick, "no", 0, spoken)),
        ("50 years forward in a transfer", lambda: jump(around, release, stick, "transfer", YEARS, spoken)),
        ("50 years back in a transfer", lambda: jump(around, release, stick, "transfer-back", -YEARS, spoken)),
        ("50 years forward in a poll", lambda: jump(around, release, stick, "poll", YEARS, spoken)),
        ("50 years back in a poll", lambda: jump(around, release, stick, "poll-back", -YEARS, spoken)),
    ])


def start_in_1970(around):
    panel = around.cold_panel("1970", clock="1970-01-01T00:00:00")
    panel.guest.wait_until_up(400)
    panel.journal.wait("Reply: VER", 300, times=4)
    host.wait_until(panel.is_ready, 60, "the window shows all versions")
    panel.shot("versions")
    return f"all versions; the panel's clock says {panel.guest.run('date +%Y-%m-%d')}"


def jump(around, release, stick, name, seconds, spoken):
    panel = around.panel_that_waits(f"jump-{name}")
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks(ROWS)
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
    panel.shot("question")
    around.instrument.require_exactly(release.images)
    requests, pauses = conversation(around.instrument.log())
    if requests != spoken.setdefault("no", requests):
        raise Failed(f"{requests} requests instead of {spoken['no']}: a wait ended early")
    # The program sleeps for 2 s before the first poll and gives each answer 10 s.
    if min(pauses) < 1.9 or max(pauses) > 11:
        raise Failed(f"from the accepted images to the first polls {pauses} s")
    return f"success, the {requests} requests of an update, first polls after {' and '.join(f'{pause:.1f}' for pause in pauses)} s"


def conversation(log):
    """The number of requests, and the seconds from each accepted image to the next question for the type."""
    pauses, accepted = [], None
    for line in log.splitlines():
        hours, minutes, seconds = line.split(" ")[0].split(":")
        now = 3600 * int(hours) + 60 * int(minutes) + float(seconds)
        if " accepted, version " in line:
            accepted = now
        elif accepted is not None and "DEVICETYPE ?;" in line:
            pauses.append((now - accepted) % 86400)
            accepted = None
    return int(re.findall(r"request (\d+):", log)[-1]), pauses
