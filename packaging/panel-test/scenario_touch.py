"""Fingers: every control, dragging, a second finger, a long press."""

import json
import time

import host
import screen
import sticks
from cases import play_cases
from host import Failed
from instrument import FIRMWARE
from scenario_crash import come_back

LISTED = 60
CATALOGUE = "/var/lib/updater/updater.json"


def touch(around):
    """every control by finger, lists dragged; a second finger and a long press do no harm"""
    release = around.release("touch", images={0: ("1.5", None), 2: ("1.2", None)})
    stick = sticks.fat(around.files / "stick.img", [release.zip])
    panel = around.panel_that_waits()
    return play_cases(around, [
        ("device button", lambda: device_button(panel)),
        ("long press", lambda: long_press(panel)),
        ("second finger", lambda: second_finger(panel)),
        ("file dialog cancelled", lambda: file_dialog(panel, stick)),
        ("marks, stop, update", lambda: marks_and_stop(around, panel, release)),
        ("a list of archives dragged", lambda: dragged_list(around, release)),
        ("a long table dragged", lambda: dragged_table(around)),
    ])


def device_button(panel):
    mark = panel.journal.mark()
    panel.tap(screen.DEVICE)
    panel.journal.wait("Reply: VER", 120, since=mark, times=len(FIRMWARE))
    host.wait_until(panel.is_ready, 60, "all versions are read")
    return "searches"


def long_press(panel):
    process = panel.guest.program()
    for place in ((400, 300), screen.DEVICE, (300, 400), screen.UPDATE):
        x, y = place
        panel.guest.touch(("down", 0, x, y), ("wait", 3), ("up", 0))
        time.sleep(1)
        panel.shot("long-press")
    host.wait_until(panel.is_ready, 120, "the window is as before")
    if panel.guest.program() != process:
        raise Failed("the program was started anew")
    return "no menu, no harm"


def second_finger(panel):
    """One finger rests on the table while another one touches `Закрыть`; then both at once on two buttons."""
    process = panel.guest.program()
    panel.guest.touch(("down", 0, 400, 400), ("wait", 0.3), ("down", 1, *screen.CLOSE), ("wait", 0.2), ("up", 1), ("wait", 0.3), ("up", 0))
    time.sleep(2)
    panel.shot("second-finger")
    if panel.guest.program() != process:
        raise Failed("a second finger closed the program")
    panel.guest.touch(("down", 0, 300, 450), ("down", 1, 600, 450), ("wait", 0.2), ("move", 0, 200, 450), ("move", 1, 700, 450),
                      ("wait", 0.2), ("up", 1), ("up", 0))
    time.sleep(2)
    host.wait_until(panel.is_ready, 30, "the window is as before")
    return "no harm"


def file_dialog(panel, stick):
    panel.plug(stick)
    for button in (screen.ARCHIVE, screen.file_button(3)):
        panel.tap(button)
        dialog = panel.wait_for_dialog()
        panel.shot("dialog")
        panel.tap(screen.dialog_reject(dialog))
        host.wait_until(lambda: not panel.dialog(), 30, "\"Отмена\" closes the dialog")
    return "both open and close"


def marks_and_stop(around, panel, release):
    panel.choose_archive()
    panel.wait_for_marks([0, 2])
    for expected in ([2], [0, 2]):
        panel.tap(screen.mark_button(0))
        host.wait_until(lambda expected=expected: panel.marks(range(5)) == expected, 20, f"the marks are {expected}")
    panel.start_update()
    host.wait_until(lambda: panel.status(0) == "bolt", 60, "the first module is written")
    panel.tap(screen.UPDATE)  # now "Отмена"
    panel.tap(panel.wait_for_failure(120))
    panel.wait_for_no_box()
    panel.start_update()
    yes_no = panel.wait_for_question(300)
    around.instrument.require_exactly(release.images)
    panel.tap(yes_no[1])
    panel.wait_for_no_box()
    panel.pull()
    return "marks toggled, an update stopped, the next one whole, \"Нет\" keeps it running"


def dragged_list(around, release):
    """More archives than the list shows: dragged up it shows others, and nothing is chosen by it."""
    names = []
    for number in range(LISTED):
        copy = around.files / f"archive-{number:02d}.zip"
        if not copy.exists():
            copy.hardlink_to(release.zip)
        names.append(copy)
    panel = around.panel_that_waits("dragged")
    panel.plug(sticks.fat(around.files / "many.img", names))
    dialog = panel.open_stick()
    before = panel.shot("before")
    x, y = screen.dialog_row(dialog, 0)
    panel.drag((x, y + 220), (x, y + 20))
    time.sleep(3)
    after = panel.shot("after")
    first = screen.dialog_row_area(dialog, 0)
    if after.part(first) == before.part(first):
        raise Failed("the list of the file dialog does not follow the finger")
    if after.count(screen.SELECTION, (dialog["x"], dialog["y"], dialog["width"], dialog["height"])) > 50:
        raise Failed("dragging the list has chosen a file")
    if not panel.dialog():
        raise Failed("dragging the list closed the dialog")
    panel.tap(screen.dialog_reject(dialog))
    return "it moves"


def dragged_table(around):
    """A catalogue with more modules than the window has rows for."""
    panel = around.panel_that_waits("table")
    catalogue = json.loads(panel.guest.run(f"cat {CATALOGUE}"))
    boards = catalogue["Devices"][-1]["Boards"]
    boards += [boards[-1] | {"Name": f"Ещё одна программа {number}"} for number in range(1, 13)]
    panel.guest.put(CATALOGUE, json.dumps(catalogue).encode(), owner="orangepi")
    panel.tap(screen.CLOSE)
    host.wait_until(lambda: panel.guest.program() == 0, 30, "the program has ended after \"Закрыть\"")
    come_back(panel, "table")
    before = panel.shot("before")
    panel.drag((300, 420), (300, 220))
    time.sleep(3)
    after = panel.shot("after")
    if after.part(screen.FIRST_NAME) == before.part(screen.FIRST_NAME):
        raise Failed("the table does not follow the finger")
    return "it moves"
