"""Sharing from the editor's window: with the mouse, with the keyboard, and what comes in between."""

import os
import signal
import urllib.request

from programs import PATIENCE, RIVER, Running, encode, processes_of
from window import WindowTest


class WindowTests(WindowTest):

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.long = encode(cls.movies / "Long.mov", 60, size="640x360")

    def copied_link(self, window):
        """What "Copy link" has put into the clipboard; it opens."""
        window.see("AlertMessage", "Copied")
        link = self.screen.clipboard()
        with urllib.request.urlopen(link, timeout=PATIENCE) as answer:
            self.assertEqual(answer.status, 200)
        self.assertEqual(self.exported_files(), [])
        return link

    def begin_export(self, service=None):
        """A window that exports a movie; its popup is open."""
        window = self.window(self.long, service=service)
        window.click("Button", "Share for Review")
        self.sign_in(window)
        self.choose_location(window)
        window.click("Button", "Share")
        window.see("AlertMessage", "Encoding in Progress...")
        return window

    def choose_location(self, window):
        window.click("Link", "Select Quillo Location...")
        window.see("ListItem", "*")
        window.click("ComboBox", "Account")
        window.click("ListItem", "Northlight Pictures")
        window.click("ListItem", "The Long River")
        window.click("TreeItem", "Editorial")
        window.click("Button", "Choose")
        window.see("Link", "Feature Films/The Long River/Editorial")

    def test_shares_with_the_mouse(self):
        service = self.service()
        window = self.window(self.clip, service=service)
        window.click("Button", "Share for Review")
        self.sign_in(window)
        self.choose_location(window)
        window.click("Button", "Share")
        window.click("Button", "Copy link")
        link = self.copied_link(window)
        self.assertTrue(link.startswith(service.url + "/r/"))
        window.hear("is shared as version 1")

        # The same movie once more, as the next version.
        window.dismiss("Button", "Copy link")
        window.click("MenuItem", "Share")
        window.click("MenuItem", "Share a New Version...")
        window.click("Button", "Share")
        window.hear("is shared as version 2")
        window.click("Button", "Copy link")
        self.assertEqual(self.copied_link(window), link)
        window.dismiss("Button", "Copy link")
        self.close(window)
        # A command goes on from there.
        self.assertEqual(self.share(self.clip, service=service)["link"], link)

    def test_shares_with_the_keyboard_alone(self):
        window = self.window(self.clip, service=self.service("--latency", "50"))
        self.go_to_folders_by_keyboard(window)
        window.go_to("TreeItem", "Editorial", "Down")
        window.press("Button", "Choose")
        window.press("Button", "Share")
        window.press("Button", "Copy link")
        self.copied_link(window)
        window.hear("is shared as version 1")
        window.dismiss("Button", "Copy link")
        self.assertEqual(window.focused(), ("Button", "Share for Review"))
        self.close(window)

    def test_a_damaged_movie_is_shared_only_when_the_user_says_so(self):
        whole = encode(self.movies / "Whole.mkv", 4).read_bytes()
        cut = self.directory / "Cut.mkv"
        cut.write_bytes(whole[:len(whole) * 6 // 10])
        window = self.window(cut, service=self.service())
        window.click("Button", "Share for Review")
        self.sign_in(window)
        self.choose_location(window)
        window.click("Button", "Share")
        window.see("StaticText", "*is damaged: only 0:0? of 0:04 could be read*")
        window.click("Button", "Do Not Share")
        window.hear("is damaged: only 0:0")
        self.assertEqual(self.exported_files(), [])

        window.click("Button", "Share")
        window.click("Button", "Share What There Is")
        window.click("Button", "Copy link")
        self.copied_link(window)
        window.hear("is shared as version 1")
        window.dismiss("Button", "Copy link")
        self.close(window)

    def test_a_movie_goes_where_it_was_shared_last(self):
        service = self.service()
        before = self.share(self.clip, "--to", f"{RIVER}/VFX/Shot 2", service=service)
        window = self.window(self.clip, service=service)
        # The command has kept its session.
        window.click("Button", "Share for Review")
        window.see("Link", "Feature Films/The Long River/VFX/Shot 2")
        window.click("Button", "Share")
        window.hear("is shared as version 2")
        window.click("Button", "Copy link")
        self.assertEqual(self.copied_link(window), before["link"])
        window.dismiss("Button", "Copy link")
        self.close(window)

    def test_a_share_goes_on_when_another_movie_is_opened(self):
        service = self.service()
        earlier = self.window(self.clip, service=service)
        earlier.see("Slider", "Position")
        earlier.activate()
        self.close(earlier)

        window = self.begin_export(service)
        window.dismiss("AlertMessage", "Encoding in Progress...")
        window.click("MenuItem", "File")
        window.click("MenuItem", "Open Recent")
        window.click("MenuItem", f"*{self.clip.name}")
        window.see("StaticText", f"Movie: *{self.clip.name}")
        # The popup stays with the movie that is being shared, and then is the other one's.
        window.click("Button", "Share for Review")
        window.see("AlertMessage", "*in Progress...")
        window.dismiss("AlertMessage", "*in Progress...")
        window.hear('"Long" is shared as version 1')
        window.click("Button", "Share for Review")
        window.see("Button", "Share")
        window.see("StaticText", self.clip.stem)
        window.click("Button", "Share")
        window.hear('"Clip" is shared as version 1')
        window.dismiss("Button", "Copy link")
        self.close(window)

    def test_closing_during_a_share_asks_and_leaves_nothing_behind(self):
        window = self.begin_export()
        window.dismiss("AlertMessage", "Encoding in Progress...")
        window.key("ctrl+q")
        window.click("Button", "Keep Sharing")
        window.see_gone("Button", "Keep Sharing")
        window.activate()
        window.see("StaticText", 'Share: Exporting "Long"')
        window.key("ctrl+q")
        window.click("Button", "Stop and Quit")
        code, out, err = window.finish()
        self.assertEqual((code, out, err), (0, "", ""))
        self.assertEqual(self.exported_files(), [])
        self.assertEqual(processes_of(str(self.state)), [])

    def test_an_export_is_called_off(self):
        window = self.begin_export()
        window.dismiss("AlertMessage", "Encoding in Progress...")
        window.click("MenuItem", "Share")
        window.click("MenuItem", "Cancel the Share")
        window.hear('"Long" was cancelled')
        self.assertEqual(self.exported_files(), [])
        window.process.send_signal(signal.SIGTERM)
        self.assertEqual(window.finish(), (130, "", ""))

    def test_a_share_whose_user_signs_out_says_where_its_movie_is(self):
        window = self.begin_export()
        window.dismiss("AlertMessage", "Encoding in Progress...")
        window.click("MenuItem", "Share")
        window.click("MenuItem", "Sign Out")
        kept = self.state / "cache" / "Long.mp4"
        window.hear(f'has signed out; share it again. The exported movie is kept: "{kept}".')
        window.activate()
        self.close(window)

    def test_a_signal_ends_an_export(self):
        window = self.begin_export()
        window.process.send_signal(signal.SIGTERM)
        self.assertEqual(window.finish(), (130, "", ""))
        self.assertEqual(self.exported_files(), [])
        self.assertEqual(processes_of(str(self.state)), [])

    def test_what_is_exported_is_kept_when_its_upload_ends_with_the_window(self):
        service = self.service("--latency", "300")
        window = self.begin_export(service)
        window.see("AlertMessage", "Upload in Progress...")
        window.process.send_signal(signal.SIGTERM)
        code, _, err = window.finish()
        kept = self.state / "cache" / "Long.mp4"
        self.assertEqual(code, 130)
        self.assertIn(f'The share of "Long" was stopped. The exported movie is kept: "{kept}".', err)
        self.assertTrue(kept.exists())

    def test_a_movie_that_is_none(self):
        text = self.directory / "notes.txt"
        text.write_text("no movie")
        window = self.window(text)
        window.hear("its content is no movie")
        window.click("Button", "Open the Sample Clip")
        window.see("StaticText", "Movie: *Sample clip.mov")
        window.activate()
        self.close(window)

    def test_without_a_display(self):
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        host = Running("quillo-host", "--data", self.state, environment=environment)
        code, out, err = host.finish()
        self.assertEqual((code, out), (1, ""))
        self.assertIn("there is no display", err)
        self.assertEqual(err.count("\n"), 1)
