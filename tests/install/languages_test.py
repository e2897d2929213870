"""The installed programs speak the language of the environment, wherever the tree was moved to."""

import json
import os
import re
import subprocess
import unicodedata
import unittest

import programs
from installed import InstalledTest

LANGUAGES = ["de", "ja", "ar"]
WIDEST_HELP = 100


def columns(line):
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in line)


class Languages(InstalledTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.movie = cls.work / "clip.mov"
        programs.encode(cls.movie)

    def text(self, part, key, language, **values):
        table = json.loads((self.prefix / f"share/quillomoxui/strings/{part}/{language}.json").read_text("utf-8"))
        text = table[f"$$$/Vistrel/{part}/{key}"]
        for name, value in values.items():
            text = text.replace("{" + name + "}", str(value))
        return text

    def host(self, *arguments, **environment):
        variables = {name: value for name, value in os.environ.items() if name not in ("LC_ALL", "LC_MESSAGES", "LANGUAGE")}
        return subprocess.run([self.prefix / "bin/quillo-host", *arguments], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False, encoding="utf-8", timeout=programs.PATIENCE,
                              env=variables | {"HOME": str(self.work), "LANG": "C.UTF-8"} | environment)

    def test_help_is_translated_and_names_the_same_options(self):
        def options(text):
            return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text))
        english = self.host("--help").stdout
        for language in LANGUAGES:
            translated = self.host("--help", LANG=f"{language}_XX.UTF-8").stdout
            self.assertEqual(translated.splitlines(), self.text("quillo-host", "Help", language))
            self.assertEqual(options(translated), options(english), language)
            self.assertLessEqual(max(map(columns, translated.splitlines())), WIDEST_HELP, language)

    def test_a_share_speaks_the_language_and_ends_alike(self):
        for language in LANGUAGES:
            state = self.work / language
            shared = self.host("share", self.movie, "--json", "--data", state, LANG=language)
            self.assertEqual(shared.returncode, 0, shared.stderr)
            self.assertEqual(json.loads(shared.stdout)["version"], 1)
            for key in ("Share/Uploaded", "Share/Exporting"):
                self.assertIn(self.text("quillo-host", key, language), shared.stderr.splitlines())
            self.assertIn(self.text("quillo-host", "Share/NewLink", language, version=1), shared.stderr)

            nowhere = self.host("share", self.movie, "--to", "Nowhere", "--data", state, LANG=language)
            self.assertEqual(nowhere.returncode, 4)
            self.assertIn(self.text("quillo-host", "Places/Accounts", language), nowhere.stderr)
            missing = self.host("share", self.work / "missing.mov", LANG=language)
            self.assertEqual(missing.returncode, 5)
            self.assertIn(self.text("quillohostkit", "Movie/NoFile", language), missing.stderr)

    def test_english_where_there_is_no_table(self):
        german = self.text("quillo-host", "Usage/NoMovie", "de")
        tables = self.prefix / "share/quillomoxui/strings/quillo-host"
        (tables / "xx.json").write_text('{"cut": "off')
        for environment, expected in [
                ({"LANG": "de_AT.UTF-8"}, german), ({"LC_ALL": "de", "LANG": "ja"}, german),
                ({"LC_MESSAGES": "de", "LANG": "ja"}, german), ({"LANGUAGE": "tlh:de", "LANG": "en_US.UTF-8"}, german),
                ({"LANG": "tlh"}, "share needs"), ({"LANG": "POSIX", "LANGUAGE": "de"}, "share needs"),
                ({"LANG": "xx"}, "share needs")]:
            refused = self.host("share", **environment)
            self.assertEqual(refused.returncode, 2)
            self.assertIn(expected, refused.stderr, environment)


if __name__ == "__main__":
    unittest.main()
