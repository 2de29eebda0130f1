"""The record of updates, read on the panel itself."""

import hashlib
import json
import os
import time

import host
import screen
import sticks
from host import Failed
from instrument import FIRMWARE, SERIAL, Instrument

ROWS = (0, 2)


def history(around):
    """updater-history after a good update, a failed one and a power cut"""
    release = around.release("history", images={0: ("1.5", None), 2: ("1.2", None)})
    stick = sticks.fat(around.files / "stick.img", [release.zip])
    panel = around.panel_that_waits()
    panel.plug(stick)
    take_and_start(panel)
    _, no = panel.wait_for_question(300)
    panel.tap(no)
    panel.wait_for_no_box()
    exchange_instrument(around, "failed", faults=["never-restarts@1"])
    take_and_start(panel)
    panel.tap(panel.wait_for_failure(400))
    panel.wait_for_no_box()
    # The second module is silent for as long as it takes to cut the power.
    exchange_instrument(around, "cut", restart=20)
    take_and_start(panel)
    host.wait_until(lambda: around.instrument.held().get(ROWS[1]) == release.images[ROWS[1]], 200, "the second image is accepted")
    # The journal is written to the card every 5 s.
    time.sleep(8)
    panel = around.switch_on_after_cut()
    check(json.loads(panel.guest.run("updater-history --json")), release)
    keep_table(panel)
    check_copy_on_stick(panel, stick)
    return "three runs with their versions, digests and outcomes; the one that was cut has no end; the table goes onto a stick"


def exchange_instrument(around, name, restart=3, faults=()):
    """Another instrument as delivered at the same address, found by the program."""
    panel = around.panel
    around.instrument.end()
    around.instrument = Instrument(around.base.catalogue, around.part(name), restart, faults)
    around.instrument.start()
    mark = panel.journal.mark()
    panel.tap(screen.DEVICE)
    panel.journal.wait("Reply: VER", 300, since=mark, times=len(FIRMWARE))
    host.wait_until(panel.is_ready, 60, "all versions are read")


def take_and_start(panel):
    panel.choose_archive()
    panel.wait_for_marks(ROWS)
    panel.start_update()


def check(runs, release):
    seen = [(run["outcome"], [module["outcome"] for module in run["modules"]]) for run in runs]
    if seen != [("success", ["updated", "updated"]), ("failure", ["no-restart", "updated"]), (None, ["updated"])]:
        raise Failed(f"updater-history tells {seen}")
    if ["no-end" in run["notes"] for run in runs] != [False, False, True]:
        raise Failed(f"its notes are {[run['notes'] for run in runs]}")
    if {run["serial"] for run in runs} != {SERIAL}:
        raise Failed(f"the serial numbers are {[run['serial'] for run in runs]}")
    for row, module in zip(ROWS, runs[0]["modules"]):
        image = release.images[row]
        told = module["size"], module["sha256"], module["after"]
        if told != (len(image), hashlib.sha256(image).hexdigest(), module["offered"]):
            raise Failed(f"of {module['name']} it tells {told}")


def keep_table(panel):
    """The table as the account sees it, as a text and as a picture."""
    table = panel.guest.as_account("LC_ALL=ru_RU.UTF-8 updater-history")
    (panel.machine.folder / "history.txt").write_text(table + "\n", encoding="utf-8")
    panel.shot("after-the-cut")
    host.run(host.TEXT_PICTURE, panel.machine.folder / "history.png", input=table.encode(),
             env=os.environ | {"QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8"})


def check_copy_on_stick(panel, stick):
    folder = panel.plug(stick)
    lines = panel.guest.run(f"updater-history --csv >'{folder}/history.csv' && sync && cat '{folder}/history.csv'").splitlines()
    # The names of the columns, and one line of each module.
    if len(lines) != 6:
        raise Failed(f"the file on the stick has {len(lines)} lines instead of 6")
