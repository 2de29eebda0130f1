"""The power fails at many moments of a self-update."""

import random
import threading
import time

import host
import sticks
from host import Failed
from instrument import PROGRAM_ROW, another_program

FOLDERS, FILES, FILE_SIZE = 10, 20, 300 << 10
LIVE = "/var/lib/updater"
# The version file is copied last: between the two the panel offers the update once more.
OLD, BETWEEN, NEW = "the old program", "the new program with the old version file", "the new program"
# What the program has called a success must outlive a cut at once.
AT_QUESTION = None
# One process for all files: a process of its own for each takes minutes in the emulator.
PRINT_TORN = """import glob, hashlib
for name in glob.glob("data*/*.dat"):
    if hashlib.sha256(open(name, "rb").read()).digest() != open(name + ".sha256", "rb").read():
        print(name)"""


def make_release(around, name, version, file_size):
    content = random.Random(name)
    extra = {f"data{folder}/part{file}.dat": content.randbytes(file_size) for folder in range(FOLDERS) for file in range(FILES)}
    return around.release(name, program=another_program(around.base.program(), name), program_version=version, extra=extra)


def power(around):
    """cut at many moments of a self-update of 200 files: old or new, and it starts"""
    first = make_release(around, "first", "9.1", FILE_SIZE)
    second = make_release(around, "second", "9.2", 1 << 10)
    first_stick = sticks.fat(around.files / "first.img", [first.zip])
    second_stick = sticks.fat(around.files / "second.img", [second.zip])
    whole = uncut_update(around, first_stick)
    host.say(f"  an update without a cut: {whole:.0f} s from \"Архив\" to the question")
    found, left = [], []
    moments = [whole * (number + 0.5) / around.cuts for number in range(around.cuts)]
    for number, after in enumerate([*moments, AT_QUESTION], 1):
        panel = cut(around, first_stick, f"cut{number:02d}", after)
        which = state_of_program(panel, first)
        leftovers = int(panel.guest.run(f"find {LIVE} -name '.updater-copy.*' | wc -l"))
        host.say(f"  cut {number}, {f'after {after:.0f} s' if after else 'at the question'}: {which}, {leftovers} hidden files")
        if after is AT_QUESTION and which != NEW:
            raise Failed(f"the program said success, and after a power cut it is {which}")
        found.append(which)
        if leftovers:
            left.append(leftovers)
        update(panel, second_stick)
        if state_of_program(panel, second) != NEW:
            raise Failed("the second update said success and did not bring its program")
    counts = ", ".join(f"{found.count(which)} x {which}" for which in (OLD, BETWEEN, NEW))
    seen = f"{len(found)} cuts in {whole:.0f} s, the last at the question: {counts}; each time a second update completed"
    if left:
        raise Failed(f"{seen}; but after {len(left)} cuts up to {max(left)} hidden .updater-copy files stayed after the start")
    return seen


def update(panel, stick):
    """From putting the stick in to the question at the end; the seconds from `Архив` on."""
    panel.plug(stick)
    began = time.monotonic()
    operate(panel)
    return time.monotonic() - began


def operate(panel):
    panel.choose_archive()
    panel.wait_for_marks([PROGRAM_ROW], 300)
    panel.start_update()
    panel.wait_for_question(400)


def uncut_update(around, stick):
    panel = around.panel_that_waits("uncut")
    seconds = update(panel, stick)
    panel.shot("question")
    return seconds


def cut(around, stick, name, after):
    """Cuts the power so many seconds after `Архив`, or AT_QUESTION; the panel that was switched on again."""
    panel = around.panel_that_waits(name)
    process = panel.machine.process
    panel.plug(stick)
    if after is AT_QUESTION:
        operate(panel)
        return around.switch_on_after_cut()
    timer = threading.Timer(after, process.kill)
    timer.start()
    try:
        operate(panel)
    except (host.Failed, OSError):
        # The connections break a moment before the process counts as ended.
        host.wait_for_end(process, 5)
        if process.poll() is None:
            timer.cancel()
            raise
    process.wait(after + 10)
    timer.join()
    return around.switch_on_after_cut()


def state_of_program(panel, release):
    """What the version file and the program's file say; Failed when the program is torn or the version is not there whole."""
    program = panel.guest.sha256(f"{LIVE}/updater")
    version = panel.guest.run(f"cat {LIVE}/updater.ver")
    new = release.program_sha256()
    old = panel.guest.sha256("/usr/lib/updater/updater")
    if program not in (old, new):
        raise Failed("the program's file is neither the old nor the new one")
    if version != release.program_version:
        return OLD if program == old else BETWEEN
    if program != new:
        raise Failed("the version file says the new version over the old program")
    torn = panel.guest.run(f"cd {LIVE} && python3 -c '{PRINT_TORN}'", seconds=180)
    count = int(panel.guest.run(f"ls {LIVE}/data*/*.dat | wc -l"))
    if torn or count != FOLDERS * FILES:
        raise Failed(f"the version file says the new version, but of its files {count} are there, and wrong are: {torn[:200]}")
    return NEW
