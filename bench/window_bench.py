#!/usr/bin/env python3
"""What a share takes of the window's thread, which must never block: the longest handling of one event.

    bench/window_bench.py build/release/bin [latency in ms]

Shares a movie from the window, on an X server of its own, with a service that lets each answer wait. Prints the
longest events, by the class that received them, or whose window did, and their type (a number of QEvent::Type: 43
runs the main thread's queue and what was posted to a thread, 77 and 206 draw). "too long" counts those that took more
than 16 ms, "worked" is the part of the longest in which the thread had a processor; for the rest another program had
it, or the thread waited. The longest of the main thread's queue is the host's own: it starts ffmpeg for the export.
"""

import json
import os
import pathlib
import sys

SHOWN = 12

os.environ["QUILLO_BIN"] = str(pathlib.Path(sys.argv[1]).resolve())
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "e2e"))
from programs import RIVER  # pylint: disable=wrong-import-position
from window import WindowTest  # pylint: disable=wrong-import-position


class Share(WindowTest):
    """One share with the mouse, measured."""

    latency = sys.argv[2] if len(sys.argv) > 2 else "500"

    def runTest(self):
        service = self.service("--latency", self.latency)
        self.share(self.clip, "--to", f"{RIVER}/Editorial", service=service)
        report = self.directory / "watchdog"
        window = self.window(self.clip, "--watchdog", report, service=service)
        window.click("Button", "Share for Review")
        self.sign_in(window)
        window.see("Button", "Share")
        window.click("Link", "Feature Films/*")
        window.click("Button", "Cancel")
        window.click("Button", "Share")
        window.click("Button", "Copy link")
        window.see("AlertMessage", "Copied")
        window.dismiss("Button", "Copy link")
        self.close(window)
        events = json.loads(report.read_text())
        print(f"{'receiver':40} {'type':>5} {'count':>6} {'too long':>8} {'longest':>8} "
              f"{'worked':>8}   (ms)")
        for event in events[:SHOWN]:
            print(f"{event['receiver']:40} {event['type']:5} {event['count']:6} "
                  f"{event['too_long']:8} {event['longest_ms']:8.1f} {event['worked_ms']:8.1f}")


if __name__ == "__main__":
    Share.setUpClass()
    test = Share()
    try:
        test.debug()
    finally:
        Share.doClassCleanups()
