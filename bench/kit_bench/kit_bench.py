#!/usr/bin/env python3
"""What the host kit costs its host: at start, beside the same program without it, and when its popup is opened.

    bench/kit_bench/kit_bench.py build/release/bin [rounds]

A round starts each program once, in turn, on Qt's platform without a screen. Time is the processor's, of all threads, from the
program's start to its first picture; memory is what it has written to. "first run" has no files of the kit yet.
"""

import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile


def run(program, home):
    environment = {"PATH": os.environ["PATH"], "HOME": str(home), "XDG_RUNTIME_DIR": str(home), "QT_QPA_PLATFORM": "offscreen",
                   "QUILLO_SERVICE_URL": "http://127.0.0.1:9"}
    return json.loads(subprocess.run([program], env=environment, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout)


def main():
    binaries = pathlib.Path(sys.argv[1]).resolve()
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 21
    with tempfile.TemporaryDirectory() as home:
        first = run(binaries / "kit_bench_kit", home)
        plain, kit = zip(*((run(binaries / "kit_bench_plain", home), run(binaries / "kit_bench_kit", home))
                           for _ in range(rounds)))

    def median(runs, key):
        return statistics.median(one[key] for one in runs)

    print("| what | without | with the kit | more |\n|---|---|---|---|")
    for key, what in (("start_ms", "start, ms"), ("written_mb", "memory, MB")):
        without, with_kit = median(plain, key), median(kit, key)
        print(f"| {what} | {without:.1f} | {with_kit:.1f} | {with_kit - without:.1f} |")
    openings = [one["openings_ms"] for one in kit]
    print("\n| from click to first picture, ms | |\n|---|---|")
    print(f"| first run | {first['openings_ms'][0]:.1f} |")
    print(f"| cold | {statistics.median(one[0] for one in openings):.1f} |")
    print(f"| warm | {statistics.median(ms for one in openings for ms in one[1:]):.1f} |")
    print(f"| longest event | {median(kit, 'longest_turn_ms'):.1f} |")
    print(f"| longest event of the first run | {first['longest_turn_ms']:.1f} |")


if __name__ == "__main__":
    main()
