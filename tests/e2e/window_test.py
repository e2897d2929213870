"""Sharing from the editor's window: with the mouse, with the keyboard, and what happens on the way."""

import signal
import urllib.request

from programs import PATIENCE, RIVER, Running, encode, processes_of
from window import WindowTest


class WindowTests(WindowTest):

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.long = encode(cls.movies / "Long.mov", 60, size="640x360")

    def check_shared(self, window, link):
        """The link has been copied, and opens."""
        self.assertEqual(self.screen.clipboard(), link)
        with urllib.request.urlopen(link, timeout=PATIENCE) as answer:
            self.assertEqual(answer.status, 200)
        window.hear("is shared as version 2")
        self.assertEqual(self.exported_files(), [])

    def test_a_share_with_the_mouse(self):
        service = self.service()
        link = self.share(self.clip, "--to", f"{RIVER}/Editorial", service=service)["link"]
        window = self.window(self.clip, service=service)
        window.see("Slider", "Position")
        window.click("Button", "Share")
        window.click("Button", "Sign in to Quillo")
        window.see("Link", "Feature Films/The Long River/Editorial")
        self.see_shared_button(window)
        window.click("Button", "Copy link")
        window.see("ToolTip", "Copied")
        self.check_shared(window, link)
        self.close(window)
