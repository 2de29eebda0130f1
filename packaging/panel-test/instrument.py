"""The catalogue, the simulated instrument at this machine's 127.0.0.1, firmware and archives for it."""

import hashlib
import json
import random
import shutil

import host
from host import Failed

SERIAL = "000123"
DEVICE = 12
PROGRAM_ROW = 4
FIRMWARE_ROWS = (0, 1, 2)
MODULE_FOLDER = "panel"
# Row of the table: firmware file without version and extension, extension, unit and processor of the held image.
FIRMWARE = {0: ("fw_12_1_0", "bin", "1_0"), 1: ("fw_12_1_1", "rpd", "1_1"), 2: ("fw_12_3_2", "rpd", "3_2"),
            3: ("fw_12_4_0", "bin", "4_0")}
SIZES = {0: 200 << 10, 1: 60 << 10, 2: 30 << 10, 3: 20 << 10}


def _board(name, kind, address, port, unit, cpu, is_main=False):
    return {"Name": name, "Type": kind, "Ip": address, "Port": port, "MBAddr": unit, "IdCPU": cpu, "Main": is_main}


def catalogue(ports, address):
    """The instrument at `address`: 127.0.0.1 for the simulator, 10.0.2.2 for the same seen from the panel."""
    main, converter, power = ports
    boards = [_board("Контроллер", "DEMO-200", address, main, 1, 0, True),
              _board("Контроллер, второй процессор", "DEMO-200", address, main, 1, 1),
              _board("Преобразователь", "DEMO-ADC", address, converter, 3, 2),
              _board("Блок питания", "DEMO-PWR", address, power, 4, 0),
              {"Name": "Программа панели", "Path": "/var/lib/updater", "Folder": MODULE_FOLDER, "File": "updater"}]
    other = {"Name": "Демо-100", "IdDev": 11, "Boards": [_board("Контроллер", "DEMO-100", address, main, 1, 0, True)]}
    return json.dumps({"DeviceVersion": 200, "Devices": [other, {"Name": "Демо-200", "IdDev": DEVICE, "Boards": boards}]},
                      ensure_ascii=False, indent=4)


class Instrument:
    def __init__(self, catalogue_file, folder, restart=3, faults=()):
        self.images = host.fresh_folder(folder / "images")
        self._log = folder / "instrument.txt"
        self._command = [host.SIMULATOR, "--catalogue", catalogue_file, "--device", str(DEVICE), "--serial", SERIAL,
                         "--restart", str(restart), "--images", self.images]
        for fault in faults:
            self._command += ["--fault", fault]
        self._process = None

    def start(self):
        known = len(self.log())
        self._process = host.start(self._command, self._log)
        host.wait_until(lambda: " ready: " in self.log()[known:] or self._process.poll() is not None, 30,
                        "the simulated instrument has started", pause=0.1)
        if self._process.poll() is not None:
            raise Failed(f"the simulated instrument did not start: {self.log().splitlines()[-1:]}")

    def end(self):
        if self._process:
            host.end(self._process)
            self._process = None

    def log(self):
        return self._log.read_text(encoding="utf-8") if self._log.exists() else ""

    def held(self):
        """Row of the table: the bytes that the module has accepted last."""
        found = {}
        for file in self.images.iterdir():
            unit = "_".join(file.stem.split("_")[2:])
            row = next((row for row, one in FIRMWARE.items() if one[2] == unit), unit)
            found[row] = file.read_bytes()
        return found

    def require_exactly(self, files):
        """`files`: rows with the bytes that they must hold; all other modules must hold what they were delivered with."""
        held = self.held()
        if held != files:
            wrong = sorted(str(row) for row in held.keys() | files.keys() if held.get(row) != files.get(row))
            raise Failed(f"the instrument does not hold what it must in the rows {', '.join(wrong)}")


def image(version, size):
    head = b"UPDIMG1 " + version.encode().ljust(16, b"\0")
    return head + random.Random(version).randbytes(size - len(head))


class Release:
    """A set of new firmware, packed as NAME.zip by fwkit: images by row, and the program with what lies beside it."""

    def __init__(self, work, catalogue_file, name, *, images=None, program=None, program_version="9.1", extra=None):
        self.images = {row: image(version, SIZES[row] if size is None else size)
                       for row, (version, size) in (images or {}).items()}
        self.program = program
        self.program_version = program_version
        self.zip = work / f"{name}.zip"
        files = host.fresh_folder(work / name)
        for row, (version, _) in (images or {}).items():
            stem, extension, _ = FIRMWARE[row]
            (files / f"{stem}_v{version}.{extension}").write_bytes(self.images[row])
        if program:
            self._write_program(files / MODULE_FOLDER, extra or {})
        host.run(host.FWKIT, "pack", "--catalogue", catalogue_file, "--device", str(DEVICE), "--force", "--output", self.zip,
                 files)
        shutil.rmtree(files)

    def _write_program(self, folder, extra):
        folder.mkdir()
        (folder / "updater").write_bytes(self.program)
        (folder / "updater").chmod(0o755)
        (folder / "updater.ver").write_text(self.program_version, encoding="utf-8")
        for path, content in extra.items():
            (folder / path).parent.mkdir(parents=True, exist_ok=True)
            (folder / path).write_bytes(content)

    def program_sha256(self):
        return hashlib.sha256(self.program).hexdigest()


def another_program(program, tag):
    """The same program with other bytes: what follows an executable's last section is not read."""
    return program + f"\ntry-panel {tag}\n".encode()
