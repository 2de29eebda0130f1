"""The emulator's control connection."""

import json
import socket
import time

from host import Failed


class Qmp:
    def __init__(self, path, process):
        deadline = time.monotonic() + 30
        while True:
            self._socket = socket.socket(socket.AF_UNIX)
            try:
                self._socket.connect(str(path))
                break
            except OSError:
                self._socket.close()
                if process.poll() is not None or time.monotonic() > deadline:
                    raise Failed("the emulator did not start: see emulator.log") from None
                time.sleep(0.1)
        self._socket.settimeout(120)
        self._lines = self._socket.makefile("rb")
        self._lines.readline()  # greeting
        self.ask("qmp_capabilities")

    def ask(self, command, **arguments):
        """The command's result. Events that come in between are dropped."""
        message = {"execute": command}
        if arguments:
            message["arguments"] = {key.replace("_", "-"): value for key, value in arguments.items()}
        self._socket.sendall(json.dumps(message).encode() + b"\n")
        while True:
            line = self._lines.readline()
            if not line:
                raise Failed(f"the emulator ended at {command}: see emulator.log")
            answer = json.loads(line)
            if "return" in answer:
                return answer["return"]
            if "error" in answer:
                raise Failed(f"the emulator refused {command}: {answer['error']['desc']}")

    def monitor(self, line):
        return self.ask("human-monitor-command", command_line=line)

    def close(self):
        self._lines.close()
        self._socket.close()
