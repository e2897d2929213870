"""What is installed beside a program agrees with the program: manual page, completion, unit, desktop file."""

import re
import subprocess
import unittest

from installed import InstalledTest, run

HOST_COMMANDS = ["", "share", "locations", "choose-location", "sign-in", "sign-out", "trace"]


class Extras(InstalledTest):
    def options_in_help(self, program):
        return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", run(self.prefix / "bin" / program, "--help")))

    def completions(self, program, *words):
        """What bash offers for the last of the words that follow the program's name."""
        script = self.prefix / "share/bash-completion/completions" / program
        line = [program, *words]
        return set(run("bash", "-c", """
            compopt() { :; }  # only within a completion
            source "$1"; shift
            COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
            function=$(complete -p "$1"); function=${function#complete -F }; function=${function% *}
            "$function" "$1" "${@: -1}" "${@: -2:1}"
            printf '%s\\n' "${COMPREPLY[@]}"
            """, "bash", script, *line, cwd=self.work).split())

    def accepted_options(self, command):
        """The options of quillo-host that it takes after `command`."""
        def refusal(option):
            words = [self.prefix / "bin/quillo-host", *filter(None, [command]), option, "--none", "--none"]
            return subprocess.run(words, text=True, stderr=subprocess.PIPE, check=False).stderr
        options = self.options_in_help("quillo-host") - {"--help", "--version"}
        return {option for option in options if "is no option of" not in refusal(option)}

    def test_manual_pages(self):
        for program in ("quillo-host", "quillo-service"):
            page = self.prefix / f"share/man/man1/{program}.1"
            lint = run("mandoc", "-T", "lint", "-W", "warning", page)
            self.assertEqual(lint, "")
            described = set(re.findall(r"^\.It Fl (-\S+)", page.read_text(), re.M))
            self.assertEqual({"-" + option for option in described}, self.options_in_help(program))

    def test_completion(self):
        self.assertEqual(self.completions("quillo-service", "--"), self.options_in_help("quillo-service"))
        for command in HOST_COMMANDS:
            offered = self.completions("quillo-host", *filter(None, [command]), "--")
            self.assertEqual(offered - {"--help", "--version"}, self.accepted_options(command), command)

        (self.work / "A clip.mov").touch()
        (self.work / "states").mkdir()
        for words, expected in [
                (["si"], {"sign-in", "sign-out"}),
                (["--s"], {"--service"}),
                (["share", "A"], {"A", "clip.mov"}),
                (["share", "--data", "st"], {"states"}),
                (["locations", "--backend", ""], {"sdk", "client"}),
                (["locations", "A"], set())]:
            self.assertEqual(self.completions("quillo-host", *words), expected, words)

    def test_the_unit_starts_the_installed_service(self):
        unit = (self.prefix / "lib/systemd/user/quillo-service.service").read_text()
        program, *arguments = re.search(r"^ExecStart=(.*)$", unit, re.M)[1].split()
        self.assertEqual(program, str(self.first_prefix / "bin/quillo-service"))
        options = {word for word in arguments if word.startswith("--")}
        self.assertLessEqual(options, self.options_in_help("quillo-service"))

    def test_the_desktop_file_names_what_is_installed(self):
        entry = (self.prefix / "share/applications/quillo-host.desktop").read_text()
        values = dict(re.findall(r"^(\w+)=(.*)$", entry, re.M))
        self.assertTrue((self.prefix / "bin" / values["Exec"].split()[0]).exists())
        icons = self.prefix / "share/icons/hicolor/scalable/apps"
        self.assertTrue((icons / f"{values['Icon']}.svg").exists())


if __name__ == "__main__":
    unittest.main()
