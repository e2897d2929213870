"""The tree that "cmake --install" lays down, moved elsewhere as a whole."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["QUILLO_BUILD"])
SOURCE = pathlib.Path(__file__).resolve().parents[2]


def cached(variable):
    """The value of a variable of the build's configuration."""
    cache = (BUILD / "CMakeCache.txt").read_text()
    return re.search(rf"^{variable}:\w+=(.*)$", cache, re.M)[1]


def run(*command, **options):
    """Runs a program that must succeed; returns its output."""
    done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


class InstalledTest(unittest.TestCase):
    """Has the moved tree in `prefix`, a directory for its files in `work`."""

    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(prefix="quillo-install-")
        cls.addClassCleanup(holder.cleanup)
        cls.work = pathlib.Path(holder.name)
        cls.first_prefix = cls.work / "installed"
        run("cmake", "--install", BUILD, "--prefix", cls.first_prefix)
        cls.prefix = cls.first_prefix.rename(cls.work / "moved")
