"""The copy of the tree that is mutated, how it is built, and the tests that look at it."""

import ctypes
import hashlib
import json
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import tempfile
import time

GIB = 1 << 30


class Workspace:
    """A copy of the tree below FOLDER, kept from run to run."""

    def __init__(self, root, folder):
        self.root, self.folder = root, folder
        self.tree, self.build = os.path.join(folder, "tree"), os.path.join(folder, "build")
        os.makedirs(self.tree, exist_ok=True)
        self.commands = {}

    # -- the copy

    def sync(self):
        """Makes the copy the same as the tree, and returns a digest of it. A file that is the same keeps its time."""
        listed = subprocess.run(["git", "ls-files", "-z", "-co", "--exclude-standard"], cwd=self.root, check=True,
                                capture_output=True).stdout.decode().split("\0")
        files = sorted({f for f in listed if f and os.path.isfile(os.path.join(self.root, f))})
        digest = hashlib.sha1()
        for file in files:
            source, target = os.path.join(self.root, file), os.path.join(self.tree, file)
            data = read(source)
            digest.update(f"{file}\0{len(data)}\0".encode() + data)
            if not os.path.isfile(target) or read(target) != data:
                os.makedirs(os.path.dirname(target), exist_ok=True)
                write(target, data)
                shutil.copymode(source, target)
        for directory, _, names in os.walk(self.tree):
            for name in names:
                path = os.path.join(directory, name)
                if os.path.relpath(path, self.tree) not in files and "__pycache__" not in path:
                    os.remove(path)
        self.files = files
        return digest.hexdigest()

    def read(self, path):
        return read(os.path.join(self.tree, path))

    def write(self, path, data):
        write(os.path.join(self.tree, path), data)

    # -- the build

    def configure(self):
        """Without optimization and debug information, which is quickest to build; warnings are no errors: a mutant
        that leaves a variable unused is one that a test has to notice."""
        command = ["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
                   "-DQUILLO_WERROR=OFF", "-DQUILLO_BENCH=OFF", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_C_COMPILER=clang",
                   "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_C_FLAGS_DEBUG=-O0 -g0", "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0"]
        result = self.call(command, limit=600)
        if result.status != 0:
            raise SystemExit(f"mutate: cmake failed:\n{result.output[-4000:]}")
        with open(os.path.join(self.build, "compile_commands.json")) as file:
            for entry in json.load(file):
                path = os.path.relpath(os.path.join(entry["directory"], entry["file"]), self.tree)
                words = shlex.split(entry["command"])
                self.commands.setdefault(path, []).append((words[words.index("-o") + 1], words))
        self.tests = self.read_tests()

    def ninja(self, *targets, limit=3600):
        return self.call(["ninja", "-C", self.build, *targets], limit=limit)

    def read_tests(self):
        """The tests of ctest: those of a GoogleTest program by its name, and the names of all others."""
        listing = self.call(["ctest", "--test-dir", self.build, "--show-only=json-v1"], limit=120, merge=False)
        programs, self.others = {}, []
        for test in json.loads(listing.output)["tests"]:
            # ctest names no command as long as the program is not built; then the test has the program's name.
            command = test.get("command") or [os.path.join(self.build, "bin", test["name"])]
            made = [os.path.relpath(w, self.build) for w in command if w.startswith(self.build + "/bin/")]
            listed = self.call(["ninja", "-C", self.build, "-t", "inputs", *made], limit=120) if made else None
            inputs = listed.output if listed and listed.status == 0 else ""
            settings = {p["name"]: p["value"] for p in test.get("properties", [])}
            if made and "libgtest" in inputs and command[0].find("node") < 0:
                programs[test["name"]] = Program(test["name"], made[-1], command, settings, set(inputs.split("\n")))
            elif not re.search(r"_install$|_exports$|^(includes|translations_.*|public_headers|hardening)$|^fuzz_", test["name"]):
                self.others.append(test["name"])
        return programs

    def objects(self, path):
        """The objects that are compiled from a file: of a source its own, of a header those that include it."""
        if path in self.commands:
            return [o for o, _ in self.commands[path]]
        wanted = os.path.join(self.tree, path)
        if not hasattr(self, "dependents"):
            self.dependents, target = {}, None
            for line in self.call(["ninja", "-C", self.build, "-t", "deps"], limit=300).output.split("\n"):
                if line and not line.startswith(" "):
                    target = line.split(":")[0]
                elif line.strip():
                    full = os.path.normpath(os.path.join(self.build, line.strip()))
                    if full.startswith(self.tree):
                        self.dependents.setdefault(full, []).append(target)
        return self.dependents.get(wanted, [])

    def arguments(self, path):
        """The compiler's arguments for a file; for a header those of a source that includes it, or lies nearest."""
        if path in self.commands:
            words = self.commands[path][0][1]
        else:
            users = set(self.objects(path))
            entries = [(p, w) for p, made in self.commands.items() for o, w in made]
            inside = [(p, w) for p, w in entries if any(o in users for o, _ in self.commands[p]) and not p.startswith("tests/")]
            near = max(inside or entries, key=lambda e: len(os.path.commonprefix([e[0], path])))
            words = near[1]
        words = words[next(i for i, w in enumerate(words) if "clang" in os.path.basename(w)) + 1:]
        kept, skip = [], False
        for word in words:
            if skip or word in ("-c", "-o") or word.endswith(".cpp"):
                skip = word == "-o"
                continue
            kept.append(word)
        # GCC's headers are found by the compiler itself; the library of its parser has to be told where its own are.
        return ["-x", "c++", "-resource-dir", resource_directory(), "-w", *kept]

    # -- running

    def call(self, command, limit, environment=None, directory=None, merge=True):
        return run(command, limit, environment, directory or self.folder, merge)

    def run_tests(self, program, wanted, limit, fail_fast=True):
        """Runs the tests of a program that match WANTED, a filter. A home and a folder for temporary files of their own
        take what a mutant writes in the wrong place."""
        home = tempfile.mkdtemp(prefix="mutate-")
        environment = dict(os.environ, HOME=home, TMPDIR=home, GTEST_FILTER=wanted, GTEST_COLOR="no")
        for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"):
            environment.pop(name, None)
        if fail_fast:
            environment["GTEST_FAIL_FAST"] = "1"
        settings = program.settings.get("ENVIRONMENT", [])
        environment.update(e.split("=", 1) for e in ([settings] if isinstance(settings, str) else settings))
        try:
            return self.call(program.command, limit, environment, program.settings.get("WORKING_DIRECTORY", self.build))
        finally:
            shutil.rmtree(home, ignore_errors=True)


class Program:
    """A GoogleTest program as ctest runs it."""

    def __init__(self, name, target, command, settings, inputs):
        self.name, self.target, self.command, self.settings, self.inputs = name, target, command, settings, inputs


class Result:
    def __init__(self, status, output, seconds, late):
        self.status, self.output, self.seconds, self.late = status, output, seconds, late

    def failed_tests(self):
        """The tests of GoogleTest that failed, or that a crash or the limit of time has ended."""
        failed = list(dict.fromkeys(re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", self.output, re.M)))
        begun = re.findall(r"^\[ RUN      \] (\S+)", self.output, re.M)
        ended = set(re.findall(r"^\[(?:       OK |  FAILED  |  SKIPPED )\] (\S+?)(?:,| |$)", self.output, re.M))
        if not failed and (self.late or self.status != 0) and begun and begun[-1] not in ended:
            failed = [begun[-1]]
        return failed


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


def resource_directory(known=[]):
    if not known:
        known.append(subprocess.run(["clang", "-print-resource-dir"], capture_output=True, text=True,
                                    check=True).stdout.strip())
    return known[0]


def descendants(pid):
    result = []
    try:
        for thread in os.listdir(f"/proc/{pid}/task"):
            with open(f"/proc/{pid}/task/{thread}/children") as file:
                for child in map(int, file.read().split()):
                    result += [child, *descendants(child)]
    except (FileNotFoundError, ProcessLookupError):
        pass
    return result


def end_descendants():
    """Ends all that this process has started, and waits for it."""
    while True:
        for pid in descendants(os.getpid()):
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        try:
            while True:
                os.waitpid(-1, 0)
        except ChildProcessError:
            pass
        if not descendants(os.getpid()):
            return


def limits():
    # A mutant may ask for all memory or write without an end.
    resource.setrlimit(resource.RLIMIT_AS, (16 * GIB, 16 * GIB))
    resource.setrlimit(resource.RLIMIT_FSIZE, (4 * GIB, 4 * GIB))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    os.nice(5)


def run(command, limit, environment=None, directory=None, merge=True):
    """Runs a command to its end or to the limit of seconds, and ends what it has left behind."""
    # What a test starts and leaves behind becomes a child of this process, which ends it.
    ctypes.CDLL(None).prctl(36, 1, 0, 0, 0)  # PR_SET_CHILD_SUBREAPER
    begin = time.monotonic()
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(command, stdout=output, stderr=subprocess.STDOUT if merge else subprocess.DEVNULL,
                                   stdin=subprocess.DEVNULL, cwd=directory, env=environment, start_new_session=True,
                                   preexec_fn=limits)
        late = False
        try:
            process.wait(limit)
        except subprocess.TimeoutExpired:
            late = True
        finally:
            end_descendants()
        output.seek(max(0, output.seek(0, os.SEEK_END) - 64 * 1024 * 1024))
        text = output.read().decode(errors="replace")
    return Result(process.poll(), text, time.monotonic() - begin, late)
