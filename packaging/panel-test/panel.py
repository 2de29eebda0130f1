"""What an operator does at the panel and what he sees there."""

import time

import picture
import screen
from guest import Guest, Journal
from host import Failed, wait_until

PRESS = 0.12
ICONS = {"tick": picture.TICK, "cross": picture.CROSS, "bolt": picture.BOLT, "question": picture.QUESTION}


class Panel:
    def __init__(self, machine):
        self.machine = machine
        self.guest = None
        self.journal = Journal(machine.journal)
        # A panel that is switched on again goes on counting.
        self._shots = len(list(machine.folder.glob("*.png")))
        self._stick = None

    def switch_on(self, state=None):
        self.machine.start(state)
        self.guest = Guest(self.machine)
        if state:
            self.guest.wait_until_up(60)

    def cut_power(self):
        if self.guest:
            self.guest.close()
            self.guest = None
        self.machine.cut_power()
        self._stick = None

    def shot(self, name):
        self._shots += 1
        return self.machine.picture(f"{self._shots:02d}-{name}")

    # --- fingers

    def tap(self, place):
        x, y = place
        self.guest.touch(("down", 0, x, y), ("wait", PRESS), ("up", 0))

    def double_tap(self, place):
        x, y = place
        self.guest.touch(("down", 0, x, y), ("wait", 0.06), ("up", 0), ("wait", 0.08), ("down", 0, x, y), ("wait", 0.06), ("up", 0))

    def drag(self, start, end, seconds=0.5, steps=12):
        moves = []
        for step in range(1, steps + 1):
            x = start[0] + (end[0] - start[0]) * step // steps
            y = start[1] + (end[1] - start[1]) * step // steps
            moves += [("move", 0, x, y), ("wait", seconds / steps)]
        self.guest.touch(("down", 0, *start), ("wait", PRESS), *moves, ("up", 0))

    # --- windows

    def windows(self):
        """The program's windows that can be seen, the lowest first."""
        return [window for window in self.guest.windows() or [] if window["class"] == "updater"]

    def box(self):
        """The highest of the program's windows, when it is not the main one and no file dialog."""
        windows = self.windows()
        titles = (screen.ARCHIVE_TITLE, screen.FILE_TITLE)
        if len(windows) < 2 or windows[-1]["title"] in titles or windows[-1]["title"].startswith("Обновление ПО"):
            return None
        return windows[-1]

    def box_buttons(self, box, at):
        """Places of the tick and the cross of a box of the program in the picture `at`."""
        area = box["x"], box["y"], box["width"], box["height"]
        return at.middle(picture.TICK, area, 300), at.middle(picture.CROSS, area, 300)

    def wait_for_box(self, seconds, what="a message box"):
        """The box, its tick ("OK" or "Да") and its cross ("Нет", None with an alert)."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            box = self.box()
            if box:
                tick, cross = self.box_buttons(box, self.machine.picture())
                if tick:
                    return box, tick, cross
            time.sleep(0.5)
        self.shot("no-box")
        raise Failed(f"after {seconds} s still not: {what}")

    def wait_for_no_box(self, seconds=30):
        wait_until(lambda: not self.box(), seconds, "no box stands before the window")

    def dialog(self):
        windows = self.windows()
        if windows and windows[-1]["title"] in (screen.ARCHIVE_TITLE, screen.FILE_TITLE):
            return windows[-1]
        return None

    def wait_for_dialog(self, seconds=60):
        dialog = wait_until(self.dialog, seconds, "the file dialog")
        # The window manager places it after it is shown, and its list fills later still.
        while True:
            time.sleep(1)
            placed = self.dialog()
            if placed == dialog:
                return dialog
            dialog = placed or dialog

    def fills_the_screen(self):
        """The program's window has the size of the screen, and no other program's window is before it."""
        windows = self.guest.windows() or [{"class": ""}]
        highest = windows[-1]
        return highest["class"] == "updater" and (highest["x"], highest["y"], highest["width"], highest["height"]) == (
            0, 0, screen.WIDTH, screen.HEIGHT)

    # --- the table

    def status(self, row, at=None):
        """The icon in front of the row's name, or ""."""
        at = at or self.machine.picture()
        return next((name for name, colour in ICONS.items() if at.count(colour, screen.status_area(row)) > 30), "")

    def statuses(self, rows, at=None):
        at = at or self.machine.picture()
        return [self.status(row, at) for row in rows]

    def marks(self, rows, at=None):
        at = at or self.machine.picture()
        return [row for row in rows if at.count(picture.TICK, screen.mark_area(row)) > 30]

    def may_start(self, at=None):
        """Whether the update button can be pressed."""
        return (at or self.machine.picture()).count(picture.BOLT, screen.UPDATE_ICON) > 60

    def is_ready(self):
        """All versions are read, and the program waits for the operator."""
        at = self.machine.picture()
        return self.fills_the_screen() and not any(self.statuses(range(5), at)) and not self.box()

    # --- the road

    def plug(self, stick, read_only=False, seconds=60):
        """Puts a stick in and waits until it is mounted; the folder."""
        self._stick = self.machine.plug(stick, read_only)
        return wait_until(lambda: self.mounted(), seconds, "the stick is mounted below /media")

    def mounted(self):
        return self.guest.run("LC_ALL=C.UTF-8 findmnt --noheadings --list --output TARGET | grep '^/media/orangepi/' || true")

    def pull(self):
        self.machine.pull(self._stick)
        self._stick = None

    def open_stick(self):
        """Into the first folder of the list: the only stick that is in."""
        self.tap(screen.ARCHIVE)
        dialog = self.wait_for_dialog()
        self.shot("sticks")
        self.enter_first_folder(dialog)
        return dialog

    def enter_first_folder(self, dialog):
        path = screen.dialog_path_area(dialog)
        before = self.machine.picture().part(path)
        self.double_tap(screen.dialog_row(dialog, 0))
        time.sleep(3)
        if self.machine.picture().part(path) == before:
            # On a busy machine the second tap may come too late. The operator's guide names this way as well.
            self.tap(screen.dialog_row(dialog, 0))
            time.sleep(1)
            self.tap(screen.dialog_accept(dialog))
            wait_until(lambda: self.machine.picture().part(path) != before, 20, "the stick's folder is open in the dialog")
        time.sleep(1)

    def choose_archive(self, row=0):
        """`Архив`, the stick, its file in this row, `Открыть`. The file is the first in the stick's list."""
        dialog = self.open_stick()
        self.tap(screen.dialog_row(dialog, row))
        time.sleep(1)
        self.shot("file")
        self.tap(screen.dialog_accept(dialog))

    def wait_for_marks(self, rows, seconds=120):
        rows = list(rows)
        wait_until(lambda: not self.box() and self.marks(range(5)) == rows and self.may_start(), seconds,
                   f"the rows {rows} are marked")

    def start_update(self):
        self.tap(screen.UPDATE)

    def wait_for_question(self, seconds):
        """`Да` and `Нет` of the question at the end of an update."""
        _, yes, no = self.wait_for_box(seconds, "the question at the end of the update")
        if not no:
            self.shot("failure")
            raise Failed("the update ended with a failure message")
        return yes, no

    def wait_for_failure(self, seconds):
        """`OK` of the failure message."""
        _, button, no = self.wait_for_box(seconds, "the failure message")
        if no:
            self.shot("success")
            raise Failed("the update ended with the success message")
        return button
