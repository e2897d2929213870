"""The window of quillo-host on a screen of its own, driven by the mouse and the keyboard."""

import ctypes
import json
import os
import pathlib
import struct
import subprocess
import threading
import time
from fnmatch import fnmatchcase

from programs import ACCOUNT, PATIENCE, EndToEnd, Running


class Screen:
    """An X server without a monitor, and without a window manager."""

    def __init__(self):
        reading, writing = os.pipe()
        # The process is this object's; it is ended by stop().
        self.process = subprocess.Popen(  # pylint: disable=consider-using-with
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x960x24", "-nolisten", "tcp"],
            pass_fds=[writing], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as number:
            self.name = f":{number.readline().strip()}"
        self.environment = {**os.environ, "DISPLAY": self.name, "QT_QPA_PLATFORM": "xcb"}

    def stop(self):
        self.process.terminate()
        self.process.wait(PATIENCE)

    def close(self, window):
        """Sends a window the message by which window managers have it closed."""
        library = ctypes.CDLL("libX11.so.6")
        library.XOpenDisplay.restype = ctypes.c_void_p
        library.XInternAtom.restype = ctypes.c_ulong
        display = ctypes.c_void_p(library.XOpenDisplay(self.name.encode()))
        protocols, delete = (library.XInternAtom(display, name, False)
                             for name in (b"WM_PROTOCOLS", b"WM_DELETE_WINDOW"))
        # An XClientMessageEvent, padded to the size of an XEvent.
        event = struct.pack("iLiPLLi4x5l", 33, 0, True, 0, window, protocols, 32, delete, 0, 0,
                            0, 0).ljust(192, b"\0")
        library.XSendEvent(display, ctypes.c_ulong(window), False, ctypes.c_long(0), event)
        library.XCloseDisplay(display)

    def run(self, *command):
        """What the command, which uses the screen, prints."""
        return subprocess.run(command, env=self.environment, check=True, text=True,
                              stdout=subprocess.PIPE, timeout=PATIENCE).stdout

    def clipboard(self):
        return self.run("xclip", "-selection", "clipboard", "-out")


class Window(Running):
    """A quillo-host with a window. What its windows show is known from the lines that it writes for
    each change, and is waited for."""

    def __init__(self, screen, directory, *arguments):
        self.screen = screen
        self.items = []
        self.messages = []
        self.changed = threading.Condition()
        events = directory / "events"
        os.mkfifo(events)
        # Open for both: it neither waits for the window nor ends with it.
        self.pipe = os.open(events, os.O_RDWR)
        super().__init__("quillo-host", *arguments, "--events", events,
                         environment=screen.environment)
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        with os.fdopen(self.pipe, encoding="utf8", closefd=False) as lines:
            while (event := json.loads(lines.readline())) != "end":
                with self.changed:
                    self.items = event.get("screen", self.items)
                    if "message" in event:
                        self.messages.append(event["message"])
                    self.changed.notify_all()

    def stop_reading(self):
        if self.reader.is_alive():
            os.write(self.pipe, b'"end"\n')
            self.reader.join()
            os.close(self.pipe)

    def finish(self):
        result = super().finish()
        self.stop_reading()
        return result

    def abandon(self):
        super().abandon()
        self.stop_reading()

    def wait(self, find, what):
        """Returns what `find` does, once that is something."""
        deadline = time.monotonic() + PATIENCE
        with self.changed:
            while not (found := find()):
                if not self.changed.wait(deadline - time.monotonic()) or not self.reader.is_alive():
                    raise AssertionError(f"no {what}: {self.items} {self.messages}")
            return found

    def find(self, role, name):
        """The item whose name matches the pattern `name`, if it can be used."""
        return next((item for item in self.items if item["role"] == role and
                     fnmatchcase(item["name"], name) and not item.get("disabled")), None)

    def see(self, role, name):
        return self.wait(lambda: self.find(role, name), f"{role} {name!r}")

    def see_gone(self, role, name):
        self.wait(lambda: not self.find(role, name), f"end of {role} {name!r}")

    def hear(self, text):
        """The first message that holds `text`."""
        return self.wait(lambda: next((line for line in self.messages if text in line), None),
                         f"message {text!r}")

    def activate(self):
        """Gives the window the keyboard, as a window manager would."""
        self.screen.run("xdotool", "search", "--sync", "--onlyvisible", "--name", "quillo-host",
                        "windowfocus")
        self.wait(self.focused, "focus")

    def close_box(self):
        """Asks the window that is open to close, as a window manager's close box does."""
        found = self.screen.run("xdotool", "search", "--sync", "--onlyvisible", "--class",
                                "quillo-host")
        self.screen.close(int(found.split()[-1]))

    def click(self, role, name):
        item = self.see(role, name)
        x, y = item["x"] + item["width"] // 2, item["y"] + item["height"] // 2
        self.screen.run("xdotool", "mousemove", str(x), str(y), "click", "1")

    def key(self, *keys):
        self.screen.run("xdotool", "key", *keys)

    def dismiss(self, role, name):
        """Closes the popup, in which there is this item; the keys go to the window again."""
        self.key("Escape")
        self.see_gone(role, name)
        self.wait(self.focused, "focus")

    def focused(self):
        """What the keys go to, the innermost of it, by role and name."""
        return next(((item["role"], item["name"]) for item in reversed(self.items)
                     if item.get("focused")), None)

    def go_to(self, role, name, key="Tab"):
        """Presses the key until the item has the keyboard's focus."""
        self.see(role, name)
        seen = []
        while (now := self.wait(self.focused, "focus"))[0] != role or not fnmatchcase(now[1], name):
            if len(seen) > 50:
                raise AssertionError(f"{key} does not lead to {role} {name!r}, but to {seen}")
            seen.append(now)
            self.key(key)
            self.wait(lambda: self.focused() not in (None, seen[-1]), f"focus after {now}")

    def press(self, role, name, key="Tab"):
        """Works a control by the keyboard alone."""
        self.go_to(role, name, key)
        self.key("Return")


class WindowTest(EndToEnd):
    """A screen, and windows on it."""

    def setUp(self):
        super().setUp()
        self.screen = Screen()
        self.addCleanup(self.screen.stop)

    def window(self, *arguments, service=None):
        where = ["--service", service.url] if service else []
        place = pathlib.Path(self.directory, f"window {time.monotonic_ns()}")
        place.mkdir()
        # A command comes first.
        window = Window(self.screen, place, *arguments, "--data", self.state, *where)
        self.addCleanup(window.abandon)
        return window

    def sign_in(self, window, work="click"):
        """Signs in from the popup; who it is that shares is settled then."""
        getattr(window, work)("Button", "Sign in to Quillo")
        window.hear("Signed in as ")

    def go_to_folders_by_keyboard(self, window):
        """Opens the popup, signs in, and goes on to the folders of a project, all by keys."""
        window.see("Button", "Share for Review")
        window.activate()
        window.key("ctrl+shift+e")
        self.sign_in(window, "press")
        window.press("Link", "Select Quillo Location...")
        window.see("ListItem", "*")
        window.go_to("ComboBox", "Account")
        window.key("Down")
        window.press("ListItem", ACCOUNT, "Down")
        window.go_to("ListItem", "*")
        window.press("ListItem", "The Long River", "Down")
        window.go_to("TreeItem", "*")

    def close(self, window, expect=0):
        """Ends the window as the user does; what it printed."""
        window.key("ctrl+q")
        code, out, err = window.finish()
        self.output += out + err
        self.note_secrets()
        self.assertEqual(code, expect, err)
        return err
