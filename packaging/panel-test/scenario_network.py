"""A bad network between panel and instrument."""

import time

import host
import screen
import sticks
from cases import play_cases
from host import Failed
from instrument import FIRMWARE

ROWS = (0, 2)
DEAD = "for good"
# Both directions: what the panel receives is led through a second device.
NETEM = """set -e
modprobe ifb numifbs=1; modprobe sch_netem; ip link set ifb0 up
dev=$(ip -o -4 address show scope global | awk '{print $2; exit}')
tc qdisc del dev $dev root 2>/dev/null || true
tc qdisc del dev $dev ingress 2>/dev/null || true
tc qdisc add dev $dev root netem limit 1000 %s
tc qdisc add dev $dev handle ffff: ingress
tc filter add dev $dev parent ffff: matchall action mirred egress redirect dev ifb0
tc qdisc replace dev ifb0 root netem limit 1000 %s"""


def network(around):
    """cable out in search, transfer and poll; loss, delay, duplicates, reordering"""
    release = around.release("network", images={0: ("1.5", 400 << 10), 2: ("1.2", 40 << 10)})
    small = around.release("small", images={0: ("1.5", 40 << 10), 2: ("1.2", 20 << 10)})
    stick = sticks.fat(around.files / "stick.img", [release.zip])
    small_stick = sticks.fat(around.files / "small.img", [small.zip])
    cases = [(f"cable out {how} in {name}", lambda case=case, how=how, name=name: case(around, f"{name}-{how}", release, stick, how))
             for name, case in (("search", in_search), ("transfer", in_transfer), ("poll", in_poll)) for how in ("5 s", DEAD)]
    for name, netem in (("1 % loss", "loss 1%"), ("4 % loss", "loss 4%"), ("5 % loss", "loss 5%"), ("20 % loss", "loss 20%"),
                        ("200 ms delay", "delay 100ms"), ("duplicates", "duplicate 10%"),
                        ("reordering", "delay 10ms reorder 25% 50%")):
        cases.append((name, lambda name=name, netem=netem: spoilt(around, name, netem, small, small_stick)))
    return play_cases(around, cases)


def folder_name(name):
    return name.replace(" ", "-").replace("%", "percent")


def take_archive(around, name, stick):
    panel = around.panel_that_waits(folder_name(name))
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks(ROWS)
    return panel


def finish(panel, around, release, seconds=400):
    """The success that must be seen."""
    panel.wait_for_question(seconds)
    at = panel.shot("question")
    if panel.statuses(ROWS, at) != ["tick"] * len(ROWS):
        raise Failed(f"success, but the icons are {panel.statuses(ROWS, at)}")
    around.instrument.require_exactly(release.images)


def take_out(panel, how):
    panel.machine.set_cable(False)
    if how != DEAD:
        time.sleep(5)
        panel.machine.set_cable(True)


def in_search(around, name, _release, _stick, how):
    panel = around.panel_that_waits(folder_name(name))
    mark = panel.journal.mark()
    panel.tap(screen.DEVICE)
    take_out(panel, how)
    if how != DEAD:
        panel.journal.wait("Reply: VER", 120, since=mark, times=len(FIRMWARE))
        host.wait_until(panel.is_ready, 60, "all versions are read")
        return "found"
    host.wait_until(lambda: panel.statuses(FIRMWARE) == ["cross"] * len(FIRMWARE), 400, "a cross for each board")
    panel.shot("not-found")
    panel.machine.set_cable(True)
    mark = panel.journal.mark()
    host.wait_until(lambda: panel.journal.count("Try get ver", 0), 200, "the reading ends")
    panel.tap(screen.DEVICE)
    panel.journal.wait("Reply: VER", 200, since=mark, times=len(FIRMWARE))
    host.wait_until(panel.is_ready, 60, "all versions are read")
    return "not found; found at the next search with the cable in"


def try_again(panel, around, release):
    """The cable is in again: what an operator does after the failure message."""
    panel.machine.set_cable(True)
    panel.tap(panel.wait_for_failure(10))
    panel.wait_for_no_box()
    time.sleep(2)
    panel.start_update()
    finish(panel, around, release)


def in_transfer(around, name, release, stick, how):
    panel = take_archive(around, name, stick)
    panel.start_update()
    host.wait_until(lambda: panel.status(0) == "bolt", 60, "the first module is written")
    time.sleep(1)
    if around.instrument.held():
        raise Failed("the transfer was over before the cable was out: a larger image is needed")
    take_out(panel, how)
    if how != DEAD:
        finish(panel, around, release)
        return "success"
    panel.wait_for_failure(120)
    at = panel.shot("failure")
    if panel.statuses(ROWS, at) != ["cross", ""] or around.instrument.held():
        raise Failed(f"icons {panel.statuses(ROWS, at)}, held {sorted(around.instrument.held())}; must be a cross and nothing")
    try_again(panel, around, release)
    return "failure message, nothing written; a second run succeeds"


def in_poll(around, name, release, stick, how):
    panel = take_archive(around, name, stick)
    panel.tap(screen.mark_button(2))
    panel.start_update()
    host.wait_until(lambda: around.instrument.held().get(0) == release.images[0], 200, "the first image is accepted")
    take_out(panel, how)
    first = {0: release.images[0]}
    if how != DEAD:
        panel.wait_for_question(400)
        panel.shot("question")
        around.instrument.require_exactly(first)
        return "success"
    panel.wait_for_failure(400)
    at = panel.shot("failure")
    if panel.status(0, at) != "cross":
        raise Failed("a board that does not come back has no cross")
    around.instrument.require_exactly(first)
    panel.machine.set_cable(True)
    panel.tap(panel.wait_for_failure(10))
    mark = panel.journal.mark()
    time.sleep(2)
    panel.tap(screen.DEVICE)
    panel.journal.wait(r"Reply: VER 1\.5", 120, since=mark)
    return "failure message; the next search shows the new version"


def spoilt(around, name, netem, release, stick):
    panel = take_archive(around, name, stick)
    panel.guest.run(NETEM % (netem, netem))
    began = time.monotonic()
    panel.start_update()
    _, _, no = panel.wait_for_box(900, "the end of the update")
    seconds = time.monotonic() - began
    at = panel.shot("end")
    if no:
        around.instrument.require_exactly(release.images)
        return f"success after {seconds:.0f} s"
    if netem != "loss 20%":
        raise Failed(f"failure message after {seconds:.0f} s, icons {panel.statuses(ROWS, at)}")
    wrong = [row for row, data in around.instrument.held().items() if data != release.images[row]]
    if wrong:
        raise Failed(f"the rows {wrong} hold what no archive has")
    return f"failure message after {seconds:.0f} s, only whole images held"
