"""What became of each mutant, as JSON, from which a run goes on, and as a table."""

import collections
import json
import os

from mutation.operators import collapse

FIELDS = ("file", "function", "kind", "context", "before", "after", "nth")


def key_of(entry):
    """A mutant's key (Mutant.key) from an entry of the list of equivalent ones."""
    return tuple(entry.get(field, 0 if field == "nth" else "") for field in FIELDS)


class Report:
    def __init__(self, base, arguments, files):
        self.base, self.arguments = base, arguments
        self.entries = {}
        self.shown = []
        if os.path.exists(base + ".json"):
            with open(base + ".json") as file:
                self.entries = {e["id"]: e for e in json.load(file)}

    def describe(self, mutant):
        return (f"{mutant.id()} {mutant.path}:{mutant.line} {mutant.kind}: {shorten(mutant.before)} -> "
                f"{shorten(mutant.after)}")

    def known(self, mutant, text, retry):
        """What an earlier run found, unless the file has changed since or the survivors are to be tried again."""
        entry = self.entries.get(mutant.id())
        if not entry or entry["text"] != text or (retry and entry["outcome"] == "survived"):
            return None
        self.show(mutant.id())
        return entry["outcome"], entry["by"], entry["seconds"]

    def add(self, mutant, text, outcome, by, seconds):
        entry = dict(zip(FIELDS, mutant.key()), id=mutant.id(), line=mutant.line, text=text, outcome=outcome, by=by,
                     seconds=round(seconds, 1))
        self.entries[mutant.id()] = entry
        self.show(mutant.id())
        # In one step, so that a run that is killed leaves a whole file.
        with open(self.base + ".json.new", "w") as file:
            json.dump(list(self.entries.values()), file, indent=1)
        os.replace(self.base + ".json.new", self.base + ".json")

    def show(self, identifier):
        if identifier not in self.shown:
            self.shown.append(identifier)

    def finish(self, out):
        """Writes the table of this run's mutants, and prints the figures."""
        entries = [self.entries[i] for i in self.shown]
        lines = [f"# Mutants of {' '.join(self.arguments.paths) or 'the tree'}, seed {self.arguments.seed}", ""]
        lines += figures(entries)
        for outcome in ("survived", "killed", "equivalent", "did not compile"):
            chosen = [e for e in entries if e["outcome"] == outcome]
            if not chosen:
                continue
            lines += ["", f"## {outcome} ({len(chosen)})", "", "| mutant | place | kind | edit | by or why | s |",
                      "|---|---|---|---|---|---|"]
            for e in sorted(chosen, key=lambda e: (e["file"], e["line"])):
                lines.append("| " + " | ".join(cell(c) for c in (
                    e["id"], f"{e['file']}:{e['line']} {e['function']}", e["kind"],
                    f"`{shorten(e['before'], 90)}` -> `{shorten(e['after'], 90)}`", e["by"], f"{e['seconds']:.0f}")) + " |")
        with open(self.base + ".md", "w") as file:
            file.write("\n".join(lines) + "\n")
        print("\n".join(figures(entries)), file=out)
        print(f"{self.base}.md", file=out)


def figures(entries):
    by_folder = collections.defaultdict(collections.Counter)
    for e in entries:
        by_folder[e["file"].split("/")[0]][e["outcome"]] += 1
        by_folder["all"][e["outcome"]] += 1
    lines = ["| folder | killed | survived | rate | equivalent | did not compile |", "|---|---|---|---|---|---|"]
    for folder in sorted(by_folder, key=lambda f: (f == "all", f)):
        c = by_folder[folder]
        rate = 100 * c["killed"] / max(1, c["killed"] + c["survived"])
        lines.append(f"| {folder} | {c['killed']} | {c['survived']} | {rate:.0f} % | {c['equivalent']} | {c['did not compile']} |")
    spent = [e["seconds"] for e in entries if e["outcome"] in ("killed", "survived")]
    if spent:
        lines += ["", f"{sum(spent) / len(spent):.0f} s for each mutant that was tried."]
    return lines


def shorten(text, length=60):
    text = collapse(text)
    return text if len(text) <= length else text[:length - 3] + "..."


def cell(text):
    return str(text).replace("|", "\\|")
