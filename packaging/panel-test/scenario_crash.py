"""What ends by itself or is ended must come back, by itself or by a finger."""

import time

import host
import screen
from host import Failed

KILLS = 10


def crash(around):
    """program killed ten times in a minute, X killed, session ended, window closed"""
    panel = around.panel_that_waits()
    starts = kill_program(panel)
    how = come_back(panel, "killed-program")
    seen = [f"program killed {starts} x: back {how}"]
    panel.guest.run("pkill -KILL -x Xorg")
    seen.append("X killed: back " + come_back(panel, "killed-x"))
    panel.guest.run("loginctl list-sessions --no-legend | awk '$3 == \"orangepi\" {print $1}' | xargs -n 1 loginctl terminate-session")
    seen.append("session ended: back " + come_back(panel, "ended-session"))
    panel.tap(screen.CLOSE)
    host.wait_until(lambda: panel.guest.program() == 0, 30, "the program has ended after \"Закрыть\"")
    # Nothing starts a program again that was closed.
    seen.append("closed: back " + come_back(panel, "closed"))
    return "; ".join(seen)


def kill_program(panel):
    """Kills the program as soon as it runs, for a minute at most; how often it ran."""
    deadline = time.monotonic() + 60
    kills = 0
    while kills < KILLS and time.monotonic() < deadline:
        process = panel.guest.program()
        if process:
            panel.guest.run(f"kill -SEGV {process}", check=False)
            kills += 1
        time.sleep(0.5)
    return kills


def come_back(panel, name):
    """Waits until the program shows all versions; starts it by finger when only the menu behind it stays on the screen."""
    mark = panel.journal.mark()
    by = "by itself"
    looks = 0
    deadline = time.monotonic() + 240
    while panel.journal.count("Reply: VER", since=mark) < 4:
        if time.monotonic() > deadline:
            raise Failed(f"{name}: neither the program nor the menu behind it came back")
        only_menu = panel.guest.program() == 0 and is_on_screen(panel, "panel-menu")
        looks = looks + 1 if only_menu else 0
        # The service waits for two seconds before a start.
        if looks == 8:
            panel.shot(f"{name}-menu")
            panel.tap(screen.MENU_START)
            by = "by finger"
        time.sleep(1)
    host.wait_until(panel.is_ready, 60, f"{name}: the window with all versions is before all others")
    panel.shot(f"{name}-back")
    return by


def is_on_screen(panel, kind):
    return any(window["class"] == kind for window in panel.guest.windows() or [])
