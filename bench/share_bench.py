#!/usr/bin/env python3
"""From start to link: what quillo-host and quillo-service add to the export of a short movie.

    bench/share_bench.py build/release/bin [rounds]

A service is started once. Each round shares a clip of five seconds; an ffmpeg put before the real one in PATH
notes how long the very export in it took. What is left of the round is ours: the start of the host, the look into
the movie, signing in, the tree, the link, the upload, the publication and the end.
"""

import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

NOTING = """#!/bin/sh
date +%s.%N > '{note}'
'{ffmpeg}' "$@"
status=$?
date +%s.%N >> '{note}'
exit $status
"""


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    directory = pathlib.Path(tempfile.mkdtemp(prefix="quillo-share-"))
    ffmpeg = shutil.which("ffmpeg")
    clip, note = directory / "clip.mov", directory / "note"
    subprocess.run([ffmpeg, "-nostdin", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=1280x720:d=5", "-f", "lavfi",
                    "-i", "sine=d=5", "-c:v", "libx264", "-preset", "ultrafast", clip], check=True)
    wrapper = directory / "bin" / "ffmpeg"
    wrapper.parent.mkdir()
    wrapper.write_text(NOTING.format(ffmpeg=ffmpeg, note=note))
    wrapper.chmod(0o755)
    environment = dict(os.environ, PATH=f"{wrapper.parent}:{os.environ['PATH']}")

    service = subprocess.Popen([programs / "quillo-service", "--data", directory / "service", "--trust-local-user"],
                               stdout=subprocess.PIPE, text=True)
    try:
        url = service.stdout.readline().split()[-1]
        ours, exports = [], []
        for _ in range(rounds + 1):
            begin = time.monotonic()
            subprocess.run([programs / "quillo-host", "share", clip, "--service", url, "--data", directory / "state"],
                           env=environment, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            whole = time.monotonic() - begin
            began, ended = map(float, note.read_text().split())
            exports.append(ended - began)
            ours.append(whole - exports[-1])
    finally:
        service.terminate()
        service.wait()
        shutil.rmtree(directory)
    # The first round signs in, makes the link, and finds nothing in the caches.
    print(f"first share: export {exports[0]:.2f} s, ours {ours[0]:.2f} s")
    print(f"{rounds} more:    export {statistics.median(exports[1:]):.2f} s, ours {statistics.median(ours[1:]):.2f} s, "
          f"at least {min(ours[1:]):.2f} s (medians)")


if __name__ == "__main__":
    main()
