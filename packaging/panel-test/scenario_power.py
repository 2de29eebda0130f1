"""The power fails at every stage of a self-update."""

import random
import threading
import time

import host
import sticks
from host import Failed
from instrument import PROGRAM_ROW, another_program

FOLDERS, FILES, FILE_SIZE = 10, 20, 300 << 10
LIVE = "/var/lib/updater"
OLD, NEW = "the old", "the new"
SECOND_UPDATE_EVERY = 5
# One process for all files: a process of its own for each takes minutes in the emulator.
PRINT_TORN = """import glob, hashlib
for name in glob.glob("data*/*.dat"):
    if hashlib.sha256(open(name, "rb").read()).digest() != open(name + ".sha256", "rb").read():
        print(name)"""


def big_release(around):
    content = random.Random(1)
    extra = {f"data{folder}/part{file}.dat": content.randbytes(FILE_SIZE) for folder in range(FOLDERS) for file in range(FILES)}
    return around.release("power", program=another_program(around.base.program(), "power"), extra=extra)


def power(around):
    """cut at many moments of a self-update of 200 files: old or new, and it starts"""
    release = big_release(around)
    stick = sticks.fat(around.files / "stick.img", [release.zip])
    whole = uncut_update(around, stick)
    host.say(f"An update without a cut: {whole:.0f} s from \"Открыть\" to the question")
    found, left = [], []
    for number in range(around.cuts):
        after = whole * (number + 0.5) / around.cuts
        which, leftovers = cut_and_look(around, release, stick, number, after)
        host.say(f"  cut {number + 1} after {after:.0f} s: {which} program, {leftovers} hidden files left by the copy")
        found.append(which)
        if leftovers:
            left.append(leftovers)
    seen = f"{around.cuts} cuts in {whole:.0f} s: {found.count(OLD)} x old, {found.count(NEW)} x new program, none torn"
    seconds = -(-around.cuts // SECOND_UPDATE_EVERY)
    if left:
        raise Failed(f"{seen}; but after {len(left)} cuts up to {max(left)} hidden .updater-copy files stayed after the start")
    return f"{seen}; a second update was tried after {seconds} of them and completed"


def begin(panel, stick):
    """Up to `Открыть`; the rest is operate()."""
    panel.plug(stick)
    panel.choose_archive()


def operate(panel):
    panel.wait_for_marks([PROGRAM_ROW], 300)
    panel.start_update()
    return panel.wait_for_question(400)


def uncut_update(around, stick):
    panel = around.panel_that_waits("uncut")
    begin(panel, stick)
    began = time.monotonic()
    operate(panel)
    panel.shot("question")
    return time.monotonic() - began


def cut_and_look(around, release, stick, number, after):
    panel = around.panel_that_waits(f"cut{number + 1:02d}")
    process = panel.machine.process
    begin(panel, stick)
    cut = threading.Timer(after, process.kill)
    cut.start()
    try:
        operate(panel)
    except (host.Failed, OSError):
        # The connections break a moment before the process counts as ended.
        host.wait_for_end(process, 5)
        if process.poll() is None:
            cut.cancel()
            raise
    process.wait(after + 10)
    cut.join()
    return look_after(around, release, stick, number)


def look_after(around, release, stick, number):
    """What the panel is like when it is switched on again."""
    panel = around.switch_on_after_cut()
    which = state_of_program(panel, release)
    left = int(panel.guest.run(f"find {LIVE} -name '.updater-copy.*' | wc -l"))
    if number % SECOND_UPDATE_EVERY == 0 and which == OLD:
        begin(panel, stick)
        operate(panel)
        if state_of_program(panel, release) != NEW:
            raise Failed("the second update said success and did not bring the new program")
    return which, left


def state_of_program(panel, release):
    """OLD or NEW; Failed when it is neither, or when its version file is wrong."""
    program = panel.guest.sha256(f"{LIVE}/updater")
    version = panel.guest.run(f"cat {LIVE}/updater.ver")
    new = release.program_sha256()
    old = panel.guest.sha256("/usr/lib/updater/updater")
    if program not in (old, new):
        raise Failed("the program's file is neither the old nor the new one")
    if version == release.program_version:
        if program != new:
            raise Failed("the version file says the new version over the old program")
        torn = panel.guest.run(f"cd {LIVE} && python3 -c '{PRINT_TORN}'", seconds=180)
        count = int(panel.guest.run(f"ls {LIVE}/data*/*.dat | wc -l"))
        if torn or count != FOLDERS * FILES:
            raise Failed(f"the version file says the new version, but of its files {count} are there, and wrong are: {torn[:200]}")
    return NEW if program == new else OLD
