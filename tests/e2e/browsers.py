"""Browsers whose users do what a test wants of them."""

import pathlib
import shlex
import sys
import urllib.parse

from programs import EndToEnd, processes_of, wait_for_end

BROWSER = pathlib.Path(__file__).with_name("browser.py")


class BrowserTest(EndToEnd):
    """Knows where the browsers have been."""

    def setUp(self):
        super().setUp()
        self.log = self.directory / "visited"
        self.addCleanup(self.note_visits)  # before the check for leaks

    def note_visits(self):
        """What the addresses hold that only the browser may know."""
        for query in (urllib.parse.urlsplit(url).query for url in self.visited()):
            for name, value in urllib.parse.parse_qsl(query):
                if name in ("state", "code", "code_challenge"):
                    self.secrets.add(value)

    def visited(self):
        """Where the browsers have been, once they have ended."""
        for pid in processes_of(str(self.log)):
            wait_for_end(pid)
        return self.log.read_text().splitlines() if self.log.exists() else []

    def browser(self, user, name="browser"):
        """A program that does with a page what `user` does."""
        program = self.directory / "bin" / name
        program.parent.mkdir(exist_ok=True)
        program.write_text("#!/bin/sh\nexec " + shlex.join([sys.executable, str(BROWSER), user, str(self.log)]) +
                           ' "$@"\n')
        program.chmod(0o700)
        return program
