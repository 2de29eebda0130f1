"""Sticks that are pulled, unusual, full or damaged."""

import os
import time

import host
import screen
import sticks
from cases import play_cases
from host import Failed

ROWS = (0, 2)
BIG = 200 << 20


def stick(around):
    """pulled at four moments; exFAT, ext4, Cyrillic, write-protected, full, damaged"""
    good = around.release("good", images={0: ("1.5", None), 2: ("1.2", None)})
    small = sticks.fat(around.files / "good.img", [good.zip])
    return play_cases(around, [
        ("pulled before the dialog", lambda: before_dialog(around, good, small)),
        ("pulled in the dialog", lambda: in_dialog(around, good, small)),
        ("pulled while 200 MiB are unpacked", lambda: in_unpacking(around, good, small)),
        ("pulled while a file is hashed", lambda: in_hashing(around, good, small)),
        # lost+found comes first in its list.
        ("ext4", lambda: works(around, "ext4", sticks.ext4(
            around.files / "ext4.img", [good.zip], host.fresh_folder(around.files / "ext4"), "Флешка"), row=1)),
        ("exFAT with a Cyrillic label", lambda: exfat(around, small)),
        ("write-protected", lambda: works(around, "read-only", small, read_only=True)),
        ("full", lambda: works(around, "full", full_stick(around, good))),
        ("damaged file table", lambda: damaged_table(around, good, small)),
        ("no file system", lambda: no_file_system(around, good, small)),
    ])


def works(around, name, file, read_only=False, row=0):
    panel = around.panel_that_waits(name)
    folder = panel.plug(file, read_only)
    panel.choose_archive(row)
    panel.wait_for_marks(ROWS)
    panel.shot("taken")
    return f"taken from {folder}"


def good_one_works(panel, around, release, small):
    """After a bad stick the next good one does all."""
    host.wait_until(lambda: not panel.mounted(), 60, "the bad stick's folder is gone")
    panel.plug(small)
    panel.choose_archive()
    panel.wait_for_marks(ROWS)
    panel.start_update()
    panel.wait_for_question(300)
    panel.shot("good-one")
    around.instrument.require_exactly(release.images)


def require_nothing_offered(panel):
    if panel.marks(range(5)) or panel.may_start():
        raise Failed(f"the rows {panel.marks(range(5))} are offered")


def press_boxes_away(panel, seconds):
    """How many boxes came; it is over when the window has been free for some seconds."""
    count, free_since = 0, time.monotonic()
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline and time.monotonic() < free_since + 8:
        box = panel.box()
        if not box:
            time.sleep(0.5)
            continue
        free_since = time.monotonic()
        tick, _ = panel.box_buttons(box, panel.machine.picture())
        if tick:
            if count == 0:
                panel.shot("first-box")
            count += 1
            panel.tap(tick)
            time.sleep(1)
    return count


def before_dialog(around, release, small):
    panel = around.panel_that_waits("before-dialog")
    panel.plug(small)
    panel.pull()
    time.sleep(3)
    panel.tap(screen.ARCHIVE)
    dialog = panel.wait_for_dialog()
    panel.shot("dialog")
    panel.tap(screen.dialog_reject(dialog))
    host.wait_until(lambda: not panel.dialog(), 30, "\"Отмена\" closes the dialog")
    require_nothing_offered(panel)
    good_one_works(panel, around, release, small)
    return "nothing offered, the next stick works"


def in_dialog(around, release, small):
    panel = around.panel_that_waits("in-dialog")
    panel.plug(small)
    dialog = panel.open_stick()
    panel.tap(screen.dialog_row(dialog, 0))
    time.sleep(1)
    panel.pull()
    time.sleep(4)
    panel.shot("pulled")
    panel.tap(screen.dialog_accept(dialog))
    time.sleep(6)
    panel.shot("after-open")
    count = press_boxes_away(panel, 30)
    if panel.dialog():
        panel.tap(screen.dialog_reject(panel.dialog()))
        host.wait_until(lambda: not panel.dialog(), 30, "\"Отмена\" closes the dialog")
    require_nothing_offered(panel)
    good_one_works(panel, around, release, small)
    return f"{count} boxes, nothing offered, the next stick works"


def in_unpacking(around, release, small):
    big = around.release("big", images={0: ("1.6", None), 2: ("1.3", None)}, program=around.base.program(),
                         extra={"big.dat": os.urandom(BIG)})
    file = sticks.fat(around.files / "big.img", [big.zip])
    panel = around.panel_that_waits("in-unpacking")
    panel.plug(file)
    panel.choose_archive()
    host.wait_until(lambda: int(panel.guest.run("du -sm /tmp/firmware 2>/dev/null | cut -f 1 || true") or 0) > 40, 120,
                    "40 MB are unpacked", pause=0.1)
    panel.shot("unpacking")
    panel.pull()
    count = press_boxes_away(panel, 200)
    offered = panel.marks(range(5))
    panel.shot("after-boxes")
    if offered:
        # What came before the stick was pulled may be offered: it must be what the archive had.
        panel.start_update()
        panel.wait_for_box(300, "the end of the update")
        panel.shot("end")
        wrong = [row for row, data in around.instrument.held().items() if data != big.images[row]]
        if wrong:
            raise Failed(f"the rows {wrong} hold what no archive has")
        return f"{count} boxes, then the rows {offered} offered and written, each whole"
    good_one_works(panel, around, release, small)
    return f"{count} boxes, nothing offered, the next stick works"


def in_hashing(around, release, small):
    name = "fw_12_1_0_v1.6.bin"
    folder = host.fresh_folder(around.files / "single")
    (folder / name).write_bytes(os.urandom(BIG))
    host.run(host.FWKIT, "certify", folder / name)
    file = sticks.fat(around.files / "single.img", [folder / name, folder / (name + ".sha256")])
    panel = around.panel_that_waits("in-hashing")
    panel.plug(file)
    panel.tap(screen.file_button(0))
    dialog = panel.wait_for_dialog()
    panel.enter_first_folder(dialog)
    panel.tap(screen.dialog_row(dialog, 0))
    time.sleep(1)
    panel.shot("file")
    panel.tap(screen.dialog_accept(dialog))
    time.sleep(1.5)
    panel.pull()
    count = press_boxes_away(panel, 120)
    panel.shot("after-boxes")
    if not count:
        raise Failed("no box tells of the file that could not be read")
    require_nothing_offered(panel)
    good_one_works(panel, around, release, small)
    return f"{count} box, nothing offered, the next stick works"


def exfat(around, small):
    panel = around.panel_that_waits("exfat")
    # The session's own mounting would take the sticks while they are filled.
    panel.guest.run("systemctl stop udisks2")
    file = sticks.exfat_in_panel(panel.guest, panel.machine, around.files / "exfat.img", small, "Флешка")
    return works(around, "exfat-stick", file)


def full_stick(around, release):
    file = sticks.fat(around.files / "full.img", [release.zip], megabytes=48)
    filler = around.files / "filler"
    filler.write_bytes(bytes((48 << 20) - release.zip.stat().st_size - (1 << 20)))
    host.run("mcopy", "-i", file, filler, "::zz-filler")
    return file


def copy_of(around, file, name):
    target = around.files / name
    target.write_bytes(file.read_bytes())
    return target


def damaged_table(around, release, small):
    """Both file tables say something else from the first files' second blocks on."""
    file = sticks.damage(copy_of(around, small, "table.img"), 4096, 400 << 10)
    panel = around.panel_that_waits("damaged-table")
    stuck = panel.machine.plug(file)
    time.sleep(15)
    panel.shot("plugged")
    if panel.mounted():
        panel.choose_archive()
        count = press_boxes_away(panel, 60)
        panel.shot("after-boxes")
    else:
        count = 0
    if panel.dialog():
        panel.tap(screen.dialog_reject(panel.dialog()))
    require_nothing_offered(panel)
    panel.machine.pull(stuck)
    good_one_works(panel, around, release, small)
    return f"{count} boxes, nothing offered, the next stick works"


def no_file_system(around, release, small):
    file = sticks.damage(copy_of(around, small, "none.img"), 0, 4096)
    panel = around.panel_that_waits("no-file-system")
    stuck = panel.machine.plug(file)
    time.sleep(15)
    if panel.mounted():
        raise Failed("a stick without file system was mounted")
    panel.tap(screen.ARCHIVE)
    dialog = panel.wait_for_dialog()
    panel.shot("dialog")
    panel.tap(screen.dialog_reject(dialog))
    panel.machine.pull(stuck)
    good_one_works(panel, around, release, small)
    return "not in the list, the next stick works"
