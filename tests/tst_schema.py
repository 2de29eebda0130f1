"""The schema, an independent validator and `fwkit check` must agree about every catalogue here, and what
docs/catalogue.md shows must be what comes of it. A schema that is more lenient or stricter than the tool would
contradict it in the maker's editor."""

import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

ROOT = pathlib.Path(__file__).resolve().parent.parent
FWKIT, MAKE_DEMO_FOLDER = (pathlib.Path(program).resolve() for program in sys.argv[1:3])
GOOD = ROOT / "tests/catalogues/good-small.json"
DOCUMENT = (ROOT / "docs/catalogue.md").read_text()
SCHEMA = json.loads((ROOT / "docs/updater.schema.json").read_text())
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)


def schema_takes(path):
    try:
        return VALIDATOR.is_valid(json.loads(path.read_bytes()))
    except ValueError:
        return False


def check(path):
    """The kinds that fwkit check finds."""
    done = subprocess.run([FWKIT, "check", "--json", path], capture_output=True)
    kinds = {finding["kind"] for finding in json.loads(done.stdout)["findings"]}
    assert done.returncode == bool(kinds), (path, done)
    return kinds


class Verb(unittest.TestCase):
    def test_misuse_is_one_line(self):
        with tempfile.TemporaryDirectory() as folder:
            large = pathlib.Path(folder) / "large.json"
            large.write_bytes(b" " * (4 * 1024 * 1024 + 1))
            for arguments, named in (([], "updater.json"), (["missing.json"], "missing.json"), ([folder], folder),
                                     ([large], "large.json"), ([b"bad\xff.json"], "no UTF-8")):
                with self.subTest(named):
                    done = subprocess.run([FWKIT, "check", *arguments], capture_output=True, text=True)
                    self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (2, "", 1))
                    self.assertIn(named, done.stderr)

    def test_full_disk_is_told(self):
        with open("/dev/full", "w") as full:
            self.assertEqual(subprocess.run([FWKIT, "check", GOOD], stdout=full, stderr=subprocess.PIPE).returncode, 2)

    def test_all_files_count(self):
        bad = ROOT / "tests/catalogues/bad-bad-port.json"
        done = subprocess.run([FWKIT, "check", "--json", bad, GOOD], capture_output=True)
        printed = json.loads(done.stdout)
        self.assertEqual(done.returncode, 1)
        self.assertEqual([(c["devices"], c["modules"]) for c in printed["catalogues"]], [(2, 4), (2, 4)])
        self.assertEqual([(f["file"], f["line"], f["column"], f["path"]) for f in printed["findings"]],
                         [(str(bad), 10, 85, "Devices[1].Boards[0].Port")])


class Schema(unittest.TestCase):
    def test_is_one(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_agrees_with_the_tool(self):
        paths = sorted((ROOT / "tests/catalogues").glob("*.json"))
        self.assertGreater(len(paths), 30)
        for path in paths:
            with self.subTest(path.name):
                kind = re.fullmatch("good-.*|bad-(?:beyond-schema-)?(.*)", path.stem)[1]
                self.assertEqual(schema_takes(path), not kind or "beyond-schema" in path.stem)
                self.assertEqual(check(path), {kind} if kind else set())
                if kind:
                    self.assertTrue(f"| `{kind}` |" in DOCUMENT, "not in docs/catalogue.md")

    def test_takes_what_the_demo_lays_out(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([MAKE_DEMO_FOLDER, folder], check=True)
            path = pathlib.Path(folder) / "updater.json"
            self.assertTrue(schema_takes(path))
            self.assertEqual(check(path), set())


class Document(unittest.TestCase):
    """Each JSON block is a file, named by the line in front of it; each console block is a session with them."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        (pathlib.Path(self.folder.name) / "fwkit").symlink_to(FWKIT)
        for name, text in re.findall(r"`(\S+\.json)`[^`\n]*:\n\n```json\n(.*?)```", DOCUMENT, re.S):
            (pathlib.Path(self.folder.name) / name).write_text(text)

    def test_example_is_fine(self):
        path = pathlib.Path(self.folder.name) / "updater.json"
        self.assertTrue(schema_takes(path))
        self.assertEqual(check(path), set())

    def test_sessions_are_real(self):
        sessions = re.findall(r"```console\n(.*?)```", DOCUMENT, re.S)
        self.assertTrue(sessions)
        for command, output in re.findall(r"^\$ (.*)\n((?:[^$].*\n)*)", "".join(sessions), re.M):
            with self.subTest(command):
                done = subprocess.run(["bash", "-c", "PATH=$PWD:$PATH;" + command], cwd=self.folder.name, text=True,
                                      env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"}, capture_output=True)
                self.assertEqual(done.stdout + done.stderr, output)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
