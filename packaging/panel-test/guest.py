"""The panel from inside: commands, files, fingers, windows, the journal."""

import base64
import json
import re
import shlex
import socket
import time
from pathlib import Path

from host import Failed, wait_until

AGENT_PLACE = "/usr/local/lib/try-panel-agent.py"
AGENT_UNIT = f"""[Unit]
Description=Fingers and eyes of the test
After=systemd-modules-load.service

[Service]
ExecStart=/usr/bin/python3 {AGENT_PLACE}
Restart=always
RestartSec=1

[Install]
WantedBy=multi-user.target
"""


class Guest:
    def __init__(self, machine):
        self._machine = machine
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(str(machine.agent_socket))
        self._kept = b""
        self._number = int(time.time() * 1000)  # answers to requests of before a restart are told apart

    def close(self):
        self._socket.close()

    def _receive(self, number, seconds):
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            while b"\n" in self._kept:
                line, self._kept = self._kept.split(b"\n", 1)
                answer = json.loads(line)
                if answer["number"] == number:
                    return answer
            self._socket.settimeout(max(0.05, deadline - time.monotonic()))
            try:
                part = self._socket.recv(1 << 20)
            except TimeoutError:
                return None
            if not part:
                raise Failed("the emulator has ended")
            self._kept += part
        return None

    def _ask(self, request, seconds):
        self._number += 1
        request["number"] = self._number
        self._socket.settimeout(seconds)
        try:
            self._socket.sendall(json.dumps(request).encode() + b"\n")
        except TimeoutError:
            return None
        return self._receive(self._number, seconds)

    def answers(self):
        return self._ask({"run": "true", "seconds": 20}, 4) is not None

    def wait_until_up(self, seconds=300):
        wait_until(self.answers, seconds, "the panel has started")

    def run(self, command, seconds=60, data=b"", check=True):
        """The output of a shell command that root runs on the panel."""
        request = {"run": command, "seconds": seconds, "input": base64.b64encode(data).decode()}
        answer = self._ask(request, seconds + 30)
        if answer is None:
            raise Failed(f"the panel does not answer: {command[:100]}")
        output = base64.b64decode(answer["output"]).decode(errors="replace").strip()
        if check and answer["status"] != 0:
            raise Failed(f"on the panel: {command[:200]}: status {answer['status']}: {output[-300:]}")
        return output

    def as_account(self, command, **options):
        """The command as the panel's account, with its service manager."""
        return self.run("runuser -u orangepi -- env XDG_RUNTIME_DIR=/run/user/1000 bash -c " + shlex.quote(command), **options)

    def put(self, path, data, owner="root"):
        self.run(f"cat > {shlex.quote(path)} && chown {owner}: {shlex.quote(path)}", data=data)

    def touch(self, *steps):
        if self._ask({"touch": steps}, 60) is None:
            raise Failed("the panel does not answer to a touch")

    def windows(self):
        """The windows that can be seen, the lowest first; None without a session."""
        answer = self._ask({"windows": 1}, 60)
        return answer["windows"] if answer else None

    def sha256(self, path):
        return self.run(f"sha256sum {shlex.quote(path)} 2>/dev/null || true").split(" ")[0]

    def program(self):
        """The process of the program, 0 when it does not run."""
        return int(self.run("pgrep -o -u orangepi -x updater || echo 0"))


class Journal:
    """The panel's journal as it came over its own line. It starts anew at each restart of the panel."""

    def __init__(self, path):
        self._path = Path(path)

    def mark(self):
        return self._path.stat().st_size if self._path.exists() else 0

    def lines(self, since=0):
        if not self._path.exists():
            return []
        with open(self._path, "rb") as file:
            file.seek(since)
            return file.read().decode(errors="replace").splitlines()

    def of_program(self, since=0):
        """What the updater logged, without time, place and function."""
        found = []
        for line in self.lines(since):
            match = re.match(r"\S+ updater\[\d+\]: (?:\S+:\d+ [^:]*(?:::[^:]*)*: )?(.*)", line)
            if match:
                found.append(match[1])
        return found

    def count(self, pattern, since=0):
        return sum(1 for line in self.lines(since) if re.search(pattern, line))

    def wait(self, pattern, seconds, since=0, times=1):
        wait_until(lambda: self.count(pattern, since) >= times, seconds, f"{times} x \"{pattern}\" in the journal")
