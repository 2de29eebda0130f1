"""The emulated computer: started cold or from a saved state, sticks and cable, pictures, power."""

import re
import shutil
import signal
import tempfile
from pathlib import Path

import host
from picture import Picture
from qmp import Qmp

MEMORY = 2048
GUEST_ADDRESS = "10.0.2.15"


class Machine:
    """`folder` takes its logs and pictures. `clock`: what its battery clock says, as for qemu's -rtc base."""

    def __init__(self, card, folder, memory=MEMORY, clock="utc"):
        self.card = Path(card)
        self.folder = Path(folder)
        self.memory = memory
        self.clock = clock
        self.process = None
        self.qmp = None
        self._sockets = None  # a short path: a socket's name has 107 characters at most
        self._sticks = 0

    @property
    def agent_socket(self):
        return self._sockets / "agent"

    @property
    def journal(self):
        return self.folder / "journal.txt"

    def start(self, state=None):
        self._sockets = Path(tempfile.mkdtemp(prefix="try-panel-"))
        command = self._command()
        if state:
            command += ["-incoming", f"exec:cat '{state}'"]
        self.process = host.start(command, self.folder / "emulator.log")
        self.qmp = Qmp(self._sockets / "control", self.process)
        if state:
            self._wait_for_migration("query-migrate")
            self.qmp.ask("cont")

    def _command(self):
        return [
            "qemu-system-aarch64", "-name", "try-panel", "-nodefaults", "-display", "none",
            "-M", "virt", "-cpu", "cortex-a72", "-smp", "2", "-m", str(self.memory), "-accel", "tcg,thread=multi",
            # No variable store: it could not be saved together with the machine's state.
            "-bios", host.FIRMWARE, "-rtc", f"base={self.clock}",
            "-drive", f"if=none,id=card,format=qcow2,file={self.card}", "-device", "virtio-blk-pci,drive=card",
            "-device", "virtio-gpu-pci,xres=1024,yres=600", "-device", "qemu-xhci,id=usb",
            "-netdev", f"user,id=net,ipv6=off,hostfwd=tcp:127.0.0.1:0-{GUEST_ADDRESS}:22",
            # Debian ships the ROM for starting from the network in another package.
            "-device", "virtio-net-pci,id=cable,netdev=net,romfile=",
            "-device", "virtio-serial-pci",
            "-chardev", f"socket,id=agent,path={self._sockets}/agent,server=on,wait=off",
            "-device", "virtserialport,chardev=agent,name=try.agent",
            "-chardev", f"file,id=journal,path={self.journal},append=on",
            "-device", "virtserialport,chardev=journal,name=try.journal",
            "-serial", f"file:{self.folder}/console.txt",
            "-qmp", f"unix:{self._sockets}/control,server=on,wait=off",
        ]

    def save(self, state):
        """Writes memory and devices to the file `state` and ends; the card belongs to it from then on."""
        self.qmp.ask("stop")
        self.qmp.ask("migrate-set-parameters", max_bandwidth=1 << 34)
        self.qmp.ask("migrate", uri=f"exec:cat > '{state}'")
        self._wait_for_migration("query-migrate")
        self.qmp.ask("quit")
        self.process.wait(30)
        self.cut_power()

    def _wait_for_migration(self, query):
        def has_completed():
            status = self.qmp.ask(query).get("status", "")
            if status in ("failed", "cancelled"):
                raise host.Failed("the machine's state could not be saved or loaded: see emulator.log")
            return status == "completed"
        host.wait_until(has_completed, 120, "the machine's state is saved or loaded")

    def ssh_port(self):
        found = re.search(r"TCP\[HOST_FORWARD\]\s+\d+\s+127\.0\.0\.1\s+(\d+)", self.qmp.monitor("info usernet"))
        if not found:
            raise host.Failed("the emulator forwards no port for ssh")
        return int(found[1])

    def plug(self, stick, read_only=False):
        """The name for pull() of a stick whose content is the file `stick`."""
        self._sticks += 1
        name = f"stick{self._sticks}"
        self.qmp.ask("blockdev-add", node_name=name, driver="raw", read_only=read_only,
                     file={"driver": "file", "filename": str(stick)})
        self.qmp.ask("device_add", driver="usb-storage", bus="usb.0", id=name + "-device", drive=name)
        return name

    def pull(self, name):
        self.qmp.ask("device_del", id=name + "-device")
        # The stick leaves the bus at once, its file is closed a moment later.
        host.wait_until(lambda: self._close(name), 30, f"{name} is closed")

    def _close(self, name):
        try:
            self.qmp.ask("blockdev-del", node_name=name)
            return True
        except host.Failed:
            return False

    def set_cable(self, is_in):
        self.qmp.ask("set_link", name="cable", up=is_in)

    def picture(self, name=None):
        """What is on the screen; with a name it is kept as NAME.png."""
        raw = self._sockets / "screen.ppm"
        self.qmp.ask("screendump", filename=str(raw))
        if name:
            self.qmp.ask("screendump", filename=str(self.folder / f"{name}.png"), format="png")
        return Picture(raw.read_bytes())

    def cut_power(self):
        """What the guest has not flushed to the card is lost."""
        if self.qmp:
            self.qmp.close()
            self.qmp = None
        if self.process:
            host.end(self.process, signal.SIGKILL)
            self.process = None
        if self._sockets:
            shutil.rmtree(self._sockets, ignore_errors=True)
            self._sockets = None


def make_card(path, base, base_format, size=None):
    path.unlink(missing_ok=True)
    host.run("qemu-img", "create", "-q", "-f", "qcow2", "-F", base_format, "-b", base, path, *([size] if size else []))
    return path
