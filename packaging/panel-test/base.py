"""The state that scenarios start from: a panel that was set up once, switched on, with all versions read."""

import json
import shutil
import subprocess
from pathlib import Path

import guest as panel_guest
import host
import instrument
import machine
from panel import Panel

CARD_SIZE = "8G"
ACCOUNT = "orangepi"


class Base:
    """What is made once for an image, in the folder build/packaging/try-panel/base."""

    def __init__(self, image, key):
        self.image = Path(image)
        self.key = Path(key)
        self.folder = host.RESULTS / "base"
        self.card = self.folder / "base.qcow2"
        self.state = self.folder / "base.state"
        self.catalogue = self.folder / "simulator.json"
        self.program_file = self.folder / "updater"
        self._facts = self.folder / "facts.json"

    def prepare(self):
        known = json.loads(self._facts.read_text()) if self._facts.exists() else {}
        if known.get("identity") == self._identity() and host.are_free(known["ports"]):
            host.say("The panel of the last time is taken again")
            return
        host.fresh_folder(self.folder)
        ports = host.free_ports(3)
        self.catalogue.write_text(instrument.catalogue(ports, "127.0.0.1"), encoding="utf-8")
        simulated = instrument.Instrument(self.catalogue, self.folder)
        simulated.start()
        machine.make_card(self.card, self.image, "raw", CARD_SIZE)
        try:
            self._first_boot(instrument.catalogue(ports, "10.0.2.2"))
            self._save_started()
        finally:
            simulated.end()
        self._facts.write_text(json.dumps({"identity": self._identity(), "ports": ports}))

    def _identity(self):
        look = self.image.stat()
        sources = [Path(panel_guest.__file__), Path(__file__), Path(__file__).with_name("agent.py")]
        return [str(self.image), look.st_size, look.st_mtime_ns, [source.read_text(encoding="utf-8") for source in sources]]

    def _ssh(self, port, command, data=b"", seconds=120):
        options = ["-i", str(self.key), "-p", str(port), "-o", "StrictHostKeyChecking=no", "-o", "UserKnownHostsFile=/dev/null",
                   "-o", "LogLevel=ERROR", "-o", "BatchMode=yes", "-o", "ConnectTimeout=20"]
        return subprocess.run(["ssh", *options, "root@127.0.0.1", command], input=data, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=seconds, check=False)

    def _must(self, port, command, data=b""):
        done = self._ssh(port, command, data)
        if done.returncode != 0:
            raise host.Failed(f"by ssh: {command}: {done.stdout.decode(errors='replace')[-400:]}")
        return done.stdout

    def _first_boot(self, catalogue):
        host.say("First start of the panel, set up over ssh")
        computer = machine.Machine(self.card, self.folder)
        computer.start()
        try:
            port = computer.ssh_port()
            host.wait_until(lambda: self._answers(port), 600, "the panel answers to ssh with the key", pause=3)
            if self._must(port, "ip route show default"):
                raise host.Failed("the panel has a way to other networks: make the image with --address 10.0.2.15/24")
            self._must(port, f"cat > {panel_guest.AGENT_PLACE}", Path(__file__).with_name("agent.py").read_bytes())
            self._must(port, "cat > /etc/systemd/system/try-panel.service", panel_guest.AGENT_UNIT.encode())
            self._must(port, f"cat > /tmp/c && install -o {ACCOUNT} -m 644 /tmp/c /var/lib/updater/updater.json && updater-setup",
                       catalogue.encode())
            self.program_file.write_bytes(self._must(port, "cat /usr/lib/updater/updater"))
            self._must(port, "systemctl enable try-panel.service && sync && systemctl poweroff")
            if not host.wait_for_end(computer.process, 180):
                raise host.Failed("the panel did not switch off: see console.txt")
        finally:
            computer.cut_power()

    def _answers(self, port):
        try:
            return self._ssh(port, "true").returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def _save_started(self):
        host.say("Second start, until all versions are read; its state is saved")
        panel = Panel(machine.Machine(self.card, self.folder))
        panel.switch_on()
        try:
            panel.guest.wait_until_up(400)
            panel.journal.wait("Reply: VER", 300, times=4)
            host.wait_until(panel.is_ready, 60, "the window shows all versions and waits")
            panel.shot("ready")
            # A started panel goes on reading its card for a while, which would disturb whatever comes first.
            panel.guest.run("sync; sleep 20")
            panel.machine.save(self.state)
        finally:
            panel.cut_power()

    def fresh_card(self, folder):
        return machine.make_card(folder / "card.qcow2", self.card, "qcow2")

    def program(self):
        return self.program_file.read_bytes()

    def forget(self):
        shutil.rmtree(self.folder, ignore_errors=True)
