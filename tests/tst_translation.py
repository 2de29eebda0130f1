"""Every text of fwkit must be in its Russian translation, with the same places to fill in: what is missing there would
come out in English in the middle of a Russian report."""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

KIT = pathlib.Path(__file__).resolve().parent.parent / "fwkit"
LUPDATE = sys.argv[1]


class Translation(unittest.TestCase):
    def test_is_complete(self):
        with tempfile.TemporaryDirectory() as folder:
            updated = pathlib.Path(folder) / "fwkit_ru.ts"
            shutil.copy(KIT / "i18n/fwkit_ru.ts", updated)
            subprocess.run([LUPDATE, "-silent", "-locations", "none", *KIT.glob("*.cpp"), *KIT.glob("*.h"),
                            "-ts", updated], check=True)
            messages = list(xml.etree.ElementTree.parse(updated).iter("message"))
        self.assertGreater(len(messages), 200)
        for message in messages:
            source, translation = message.findtext("source"), message.find("translation")
            with self.subTest(source):
                self.assertIsNone(translation.get("type"), "run fwkit/i18n/update and fill in what is unfinished")
                self.assertEqual(*(set(re.findall("%[0-9]", text)) for text in (source, translation.text)))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
