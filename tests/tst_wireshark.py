"""What Wireshark shows of the demo's capture with the dissector beside docs/protocol.md: every field of every command,
answer and block, decoded by code that shares nothing with the program."""

import os
import pathlib
import subprocess
import tempfile
import unittest

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "docs/wireshark"
PORTS = "33471,36571,40613"


def shown(condition, *fields, capture=FOLDER / "demo.pcap", lua=True):
    """The fields of the frames that `condition` picks; a field that is there several times is joined by "|"."""
    script = ["-X", f"lua_script:{FOLDER}/updater-modbus.lua"] if lua else []
    options = [option for field in fields for option in ("-e", field)]
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["tshark", "-r", capture, "-o", f"mbtcp.tcp.port:{PORTS}", *script, "-Y", condition,
                               "-T", "fields", "-E", "aggregator=|", *options], capture_output=True, text=True,
                              env=os.environ | {"HOME": folder, "XDG_CONFIG_HOME": folder})
    assert done.returncode == 0 and "Lua" not in done.stderr, done.stderr
    return [tuple(line.split("\t")) for line in done.stdout.splitlines()]


def crc16(data):
    crc = 0xFFFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = crc >> 1 ^ 0xA001 if crc & 1 else crc >> 1
    return crc


def without_handshakes(capture, folder):
    """A copy that begins in the middle of every connection."""
    data, at = capture.read_bytes(), 24
    kept = data[:at]
    while at < len(data):
        end = at + 16 + int.from_bytes(data[at + 8:at + 12], "little")
        is_syn = data[at + 16 + 14 + 20 + 13] & 2
        kept += b"" if is_syn else data[at:end]
        at = end
    copy = pathlib.Path(folder) / "late.pcap"
    copy.write_bytes(kept)
    return copy


class Dissector(unittest.TestCase):
    def test_texts(self):
        commands = {text for line in shown("updater.command", "updater.command") for text in line[0].split("|")}
        self.assertEqual(commands, {"DEVICETYPE ?;", "SERIAL ?;", "VER ?;", "REBOOT;"})
        words = shown("updater.answer contains \"VER\" && ip.src == 127.0.0.2", "updater.length", "updater.text_word")
        self.assertEqual(words[0], ("12", "VER|1.0|1.0"))
        self.assertEqual(words[-1], ("12|14", "VER|1.5|2.1|SERIAL|000123"))

    def test_transfers(self):
        fields = ["length", "word", "processor", "parameter1", "parameter2", "offset", "block_size", "block", "crc",
                  "image_size"]
        image, finished = b"", []
        for line in shown("updater.parameter1 && updater.length != 10", *["updater." + field for field in fields]):
            length, word, processor, low, high, offset, size, block, crc, image_size = line
            value = int(low, 16) + (int(high, 16) << 16)
            if word == "0xa001":
                image = (image if value else b"") + bytes.fromhex(block)
                self.assertEqual((int(offset), int(size), int(length)), (value, len(block) // 2, len(block) // 2 + 10))
            elif word == "0xa002":
                self.assertEqual((int(crc, 16), value), (crc16(image), crc16(image)))
            elif word != "0xa000":
                self.assertEqual((int(image_size), value), (len(image), len(image)))
                finished.append((word, processor, len(image), image[:11]))
        self.assertEqual(finished, [("0xa003", "0", 1000, b"UPDIMG1 1.5"), ("0xa004", "1", 500, b"UPDIMG1 2.1"),
                                    ("0xa005", "2", 241, b"UPDIMG1 1.2")])

    def test_answers_repeat_the_word(self):
        asked = [line[0] for line in shown("updater.parameter1", "updater.word")]
        answered = [line[0] or "refused" for line in shown("modbus.func_code == 0x48 && !updater.parameter1",
                                                           "updater.word")]
        self.assertEqual(answered[:-2], asked[:-2])
        self.assertEqual((asked[-2:], answered[-2:]), (["0xa000", "0xa001"], ["refused", "refused"]))

    def test_refusals_and_wrong_lengths(self):
        self.assertEqual([line[0] for line in shown("updater.exception", "updater.exception")],
                         ["0x0b", "0x03", "0x03", "0x03"])
        self.assertEqual(shown("updater.wrong_length", "updater.block_size", "updater.block"), [("3", "")])

    def test_info_column(self):
        info = [line[0] for line in shown("updater", "_ws.col.Info")]
        for text in ("VER ?; | SERIAL ?;", "block at offset 240, 240 bytes", "done 0xa005",
                     "finish for processor 2, 241 bytes", "exception: Illegal data value"):
            self.assertIn(text, info)

    def test_other_functions_stay_with_wireshark(self):
        condition = "modbus.func_code < 0x47"
        plain = shown(condition, "_ws.col.Info", lua=False)
        self.assertEqual(len(plain), 2)
        self.assertEqual(shown(condition + " && !updater", "_ws.col.Info"), plain)

    def test_capture_that_begins_late(self):
        fields = ["updater.command", "updater.answer", "updater.word", "updater.parameter1", "updater.exception"]
        with tempfile.TemporaryDirectory() as folder:
            late = shown("updater", *fields, capture=without_handshakes(FOLDER / "demo.pcap", folder))
        # Only with the start of the connection can a text without "?" be recognised as a command.
        whole = [tuple(field.replace("REBOOT;", "") for field in line) for line in shown("updater", *fields)]
        self.assertEqual([tuple(field.replace("REBOOT;", "") for field in line) for line in late], whole)


if __name__ == "__main__":
    unittest.main()
