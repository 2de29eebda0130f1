"""The machine that runs the emulator: its folders, packages, build, ports and processes."""

import ctypes
import os
import shutil
import signal
import socket
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "packaging"
RESULTS = WORK / "try-panel"
SIMULATOR = ROOT / "build" / "release" / "simulator" / "instrument-simulator"
FWKIT = ROOT / "build" / "release" / "fwkit" / "fwkit"
TEXT_PICTURE = ROOT / "build" / "release" / "testkit" / "text-picture"
FIRMWARE = Path("/usr/share/qemu-efi-aarch64/QEMU_EFI.fd")
PACKAGES = ("qemu-system-arm", "qemu-efi-aarch64", "qemu-utils", "mtools", "dosfstools", "e2fsprogs", "openssh-client")

_processes = []


class Unusable(Exception):
    """Something that this machine lacks: no scenario can run."""


class Failed(Exception):
    """A scenario has seen something else than what must be seen."""


def say(text):
    print(time.strftime("%H:%M:%S"), text, flush=True)


def run(*command, **options):
    """The output of a command that must succeed."""
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **options)
    if done.returncode != 0:
        raise Unusable(f"{command[0]} failed: {done.stdout.decode(errors='replace').strip()[-600:]}")
    return done.stdout


def prepare_tools():
    script = (f"source '{ROOT}/scripts/prepare' && install_packages {' '.join(PACKAGES)} && "
              "build_preset release instrument-simulator fwkit text-picture")
    say("Packages, simulated instrument and fwkit")
    log = WORK / "try-panel-build.log"
    WORK.mkdir(parents=True, exist_ok=True)
    with open(log, "wb") as output:
        if subprocess.run(["bash", "-euo", "pipefail", "-c", script, "try-panel"], stdout=output, stderr=output, check=False).returncode:
            raise Unusable(f"the tools could not be built: see {log}")


def free_ports(count):
    """Different TCP ports of 127.0.0.1 that the system gives out."""
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def are_free(ports):
    for port in ports:
        with socket.socket() as one:
            one.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                one.bind(("127.0.0.1", port))
            except OSError:
                return False
    return True


def _end_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG


def start(command, log):
    """A process that ends with this one, however this one ends."""
    with open(log, "ab") as output:
        # pylint: disable-next=subprocess-popen-preexec-fn
        process = subprocess.Popen([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                   preexec_fn=_end_with_parent)
    _processes.append(process)
    return process


def end(process, number=signal.SIGTERM):
    if process.poll() is None:
        process.send_signal(number)
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    if process in _processes:
        _processes.remove(process)


def wait_for_end(process, seconds):
    """Whether the process has ended within this time."""
    try:
        process.wait(seconds)
    except subprocess.TimeoutExpired:
        return False
    return True


def end_all():
    for process in list(_processes):
        end(process, signal.SIGKILL)


def end_on_signals():
    def leave(number, _frame):
        sys.exit(128 + number)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, leave)


def wait_until(condition, seconds, what, pause=0.3):
    """The first true result of `condition`."""
    deadline = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise Failed(f"after {seconds} s still not: {what}")
        time.sleep(pause)


def fresh_folder(path):
    shutil.rmtree(path, ignore_errors=True)
    os.makedirs(path)
    return Path(path)
