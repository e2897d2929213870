"""What scripts/mutate makes of a small C++ file, and what it reads from the output of tests."""

import io
import json
import os
import sys
import tempfile
import types
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "scripts"))

from mutation import operators, report, workspace  # noqa: E402

SAMPLE = """\
#define TWICE(x) ((x) + (x))
namespace shop {
enum class State { Open, Closed };
struct Item {
  int price = 3;
  bool operator==(Item const& other) const { return price == other.price; }
};
void Note(char const*);
void Move(int from, int to, bool quick);
struct Till {
  int Sum(int first, int second);
  Item* Find(Item* item, bool known);
  int total;
  State state;
};
int Till::Sum(int first, int second) {
  if (first < second && total != 7)
    total += first * second;
  Note("summed");
  Move(first, second, true);
  state = State::Closed;
  while (total > 1) {
    --total;
    break;
  }
  return TWICE(total);
}
Item* Till::Find(Item* item, bool known) {
  auto check = [&] { return known; };
  if (bool const sure = check(); !sure)
    return nullptr;
  return *item == Item{} ? item : nullptr;
}
int Half(unsigned cents) { return cents / 2; }
double Rate() { return 0.5; }
bool IsOpen(State state) { return state == State::Open; }
}
"""


def find(text):
    finder = operators.Finder("sample.cpp", text.encode(), ["-x", "c++", "-std=c++20"])
    assert not finder.errors, finder.errors
    return finder.mutants()


def line_of(mutant, text):
    """The mutated line, which is how a case names a mutant."""
    return operators.collapse(mutant.apply(text.encode()).decode().split("\n")[mutant.line - 1])


class OperatorsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.mutants = find(SAMPLE)

    def lines(self, kind, function):
        return {line_of(m, SAMPLE) for m in self.mutants if m.kind == kind and m.function == function}

    def test_each_kind_makes_its_edits(self):
        self.maxDiff = None
        for kind, function, expected in (
            ("comparison", "shop::Till::Sum", {
                "if (first <= second && total != 7)", "if (first >= second && total != 7)",
                "if (first < second && total == 7)", "while (total >= 1) {", "while (total <= 1) {"}),
            ("comparison", "shop::Till::Find", {"return *item != Item{} ? item : nullptr;"}),
            ("connective", "shop::Till::Sum", {
                "if (first < second || total != 7)", "if (first < second)", "if (total != 7)"}),
            ("arithmetic", "shop::Till::Sum", {
                "total -= first * second;", "total = first * second;", "total += first / second;", "++total;"}),
            ("arithmetic", "shop::Half", {"int Half(unsigned cents) { return cents * 2; }"}),
            ("constant", "shop::Till::Sum", {
                "if (first < second && total != 6)", "if (first < second && total != 8)",
                "if (first < second && total != 0)", 'Note("");', "Move(first, second, false);",
                "state = State::Open;", "while (total > 0) {", "while (total > 2) {"}),
            ("constant", "shop::Item", {"int price = 2;", "int price = 4;", "int price = 0;"}),
            ("constant", "shop::Rate", {
                "double Rate() { return 1.5; }", "double Rate() { return 0.25; }", "double Rate() { return 0.0; }"}),
            ("condition", "shop::Till::Sum", {
                "if (!(first < second && total != 7))", "while (!(total > 1)) {"}),
            ("condition", "shop::Till::Find", {
                "if (bool const sure = check(); !(!sure))", "if (bool const sure = check(); sure)",
                "return !(*item == Item{}) ? item : nullptr;"}),
            ("argument", "shop::Till::Sum", {
                "Move(second, second, true);", "Move(first, first, true);"}),
            ("return", "shop::Half", {
                "int Half(unsigned cents) { return 0; }", "int Half(unsigned cents) { return (cents / 2) + 1; }"}),
            ("return", "shop::IsOpen", {
                "bool IsOpen(State state) { return true; }", "bool IsOpen(State state) { return false; }"}),
            ("return", "shop::Till::Find", {
                "auto check = [&] { return true; };", "auto check = [&] { return false; };", "return nullptr;"}),
            ("return", "shop::Rate", {"double Rate() { return 0; }"}),
        ):
            with self.subTest(kind=kind, function=function):
                self.assertEqual(self.lines(kind, function), expected)

    def test_statements_go_and_change_places(self):
        drops = {m.before for m in self.mutants if m.kind == "drop" and m.function == "shop::Till::Sum"}
        self.assertEqual({operators.collapse(d) for d in drops}, {
            "if (first < second && total != 7) total += first * second;", "total += first * second;",
            'Note("summed");', "Move(first, second, true);", "state = State::Closed;",
            "while (total > 1) { --total; break; }", "--total;", "break;"})
        swaps = {operators.collapse(m.after) for m in self.mutants if m.kind == "swap"}
        self.assertEqual(swaps, {
            'Note("summed"); if (first < second && total != 7) total += first * second;',
            'Move(first, second, true); Note("summed");',
            "state = State::Closed; Move(first, second, true);",
            "while (total > 1) { --total; break; } state = State::Closed;"})

    def test_the_use_of_a_macro_is_taken_whole(self):
        lines = {line_of(m, SAMPLE) for m in self.mutants if "TWICE" in m.before + m.after}
        self.assertEqual(lines, {"return 0;", "return (TWICE(total)) + 1;"})
        self.assertFalse([m for m in self.mutants if m.line == 1])

    def test_every_mutant_differs_and_keeps_the_lines(self):
        for m in self.mutants:
            text = m.apply(SAMPLE.encode()).decode()
            self.assertNotEqual(text, SAMPLE)
            self.assertEqual(text.count("\n"), SAMPLE.count("\n"), m)

    def test_a_mutant_keeps_its_key_when_lines_move(self):
        moved = find("// A comment.\n\n" + SAMPLE.replace("void Note", "\nvoid Other();\nvoid Note"))
        self.assertEqual({m.id() for m in self.mutants}, {m.id() for m in moved})
        self.assertEqual(len({m.id() for m in self.mutants}), len(self.mutants))

    def test_edits_that_are_alike_are_counted(self):
        text = "void F();\nvoid G() {\n  F();\n  F();\n}\n"
        drops = [m for m in find(text) if m.kind == "drop"]
        self.assertEqual([m.nth for m in drops], [0, 1])


class ResultTest(unittest.TestCase):
    def test_names_what_killed(self):
        for output, status, late, expected in (
            ("[ RUN      ] A.B\n[  FAILED  ] A.B (3 ms)\n[  FAILED  ] 1 test, listed below:\n[  FAILED  ] A.B\n", 1, False,
             ["A.B"]),
            ("[ RUN      ] A.B\n[       OK ] A.B (3 ms)\n[ RUN      ] A.C/1\nSegmentation", -11, False, ["A.C/1"]),
            ("[ RUN      ] A.B\n", -9, True, ["A.B"]),
            ("[ RUN      ] A.B\n[       OK ] A.B (3 ms)\n", 0, False, []),
            ("[ RUN      ] A.B\n[       OK ] A.B (3 ms)\n", 1, False, []),
        ):
            with self.subTest(output=output):
                self.assertEqual(workspace.Result(status, output, 0, late).failed_tests(), expected)

    def test_nothing_outlives_a_command(self):
        with tempfile.TemporaryDirectory() as folder:
            file = os.path.join(folder, "pid")
            # In a session of its own, as a daemon is: killing the group would not reach it.
            result = workspace.run(["sh", "-c", f"setsid sleep 600 & echo $! > {file}"], 600)
            self.assertEqual((result.status, result.late), (0, False))
            with open(file) as left:
                self.assertFalse(os.path.exists(f"/proc/{left.read().strip()}"))

    def test_a_command_without_an_end_is_ended(self):
        self.assertTrue(workspace.run(["sleep", "600"], 0).late)


class ReportTest(unittest.TestCase):
    def test_goes_on_from_the_file(self):
        mutant = next(m for m in find(SAMPLE) if m.kind == "drop")
        arguments = types.SimpleNamespace(paths=["service"], seed=4)
        with tempfile.TemporaryDirectory() as folder:
            base = os.path.join(folder, "run")
            first = report.Report(base, arguments, [])
            first.add(mutant, "text 1", "survived", "", 3)
            for text, retry, expected in (("text 1", False, ("survived", "", 3)), ("text 2", False, None),
                                          ("text 1", True, None)):
                with self.subTest(text=text, retry=retry):
                    self.assertEqual(report.Report(base, arguments, []).known(mutant, text, retry), expected)
            first.finish(io.StringIO())
            with open(base + ".md") as file:
                self.assertIn("| sample.cpp | 0 | 1 | 0 % | 0 | 0 |", file.read())

    def test_equivalent_mutants_have_reasons_and_files(self):
        with open(os.path.join(ROOT, "tests", "equivalent_mutants.json")) as file:
            entries = json.load(file)
        for entry in entries:
            with self.subTest(entry=entry):
                self.assertGreater(len(entry["reason"]), 20)
                self.assertIn(entry["kind"], operators.KINDS)
                with open(os.path.join(ROOT, entry["file"])) as file:
                    self.assertIn(entry["context"], operators.collapse(file.read()))
        self.assertEqual(len({report.key_of(e) for e in entries}), len(entries))


if __name__ == "__main__":
    unittest.main()
