"""The programs under test, run as a user runs them, and the movies that they are given."""

import hashlib
import json
import os
import pathlib
import re
import select
import shutil
import subprocess
import tempfile
import unittest
import urllib.error
import urllib.request

BIN = pathlib.Path(os.environ["QUILLO_BIN"])
PATIENCE = 240  # seconds until something that must happen counts as missing
LISTENING = re.compile(r"quillo-service listening on (http://127\.0\.0\.1:\d+)")

ACCOUNT = "Northlight Pictures"
RIVER = f"{ACCOUNT}/Feature Films/The Long River"


def encode(path, seconds=1, *, size="160x90", filters=""):
    """Writes a movie; noise in the picture makes it large."""
    picture = f"testsrc2=s={size}:d={seconds}{filters}"
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", picture,
                    "-f", "lavfi", "-i", f"sine=d={seconds}", "-c:v", "libx264", "-preset",
                    "ultrafast", f"file:{path}"], check=True)
    return path


def processes_of(word):
    """The IDs of the running programs that have `word` in an argument."""
    found = []
    for entry in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if entry.joinpath("cmdline").read_bytes().find(os.fsencode(word)) >= 0:
                found.append(int(entry.name))
        except OSError:
            pass  # it has ended meanwhile
    return [pid for pid in found if pid != os.getpid()]


def wait_for_end(pid):
    """Returns when the process, which need not be a child of this one, has ended."""
    try:
        descriptor = os.pidfd_open(pid)
    except ProcessLookupError:
        return
    try:
        if not select.select([descriptor], [], [], PATIENCE)[0]:
            raise AssertionError(f"process {pid} still runs")
    finally:
        os.close(descriptor)


class Running:
    """A program whose output is read line by line."""

    def __init__(self, program, *arguments, environment=None):
        self.process = subprocess.Popen([BIN / program, *arguments], text=True, env=environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE)

    def wait_for(self, stream, pattern):
        """Reads on until a line matches; returns the match."""
        seen = []
        for line in stream:
            seen.append(line)
            if match := re.search(pattern, line):
                return match
        raise AssertionError(f"no line matched {pattern}: {seen}")

    def finish(self):
        """The exit status, and what had not been read of standard output and standard error."""
        out, err = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, out, err

    def abandon(self):
        """Ends it if a failed test has left it behind."""
        self.process.kill()
        self.process.communicate()


class Service(Running):
    """A quillo-service; started again, it takes its former port."""

    def __init__(self, data, *arguments, trusting=True, environment=None):
        trust = ["--trust-local-user"] if trusting else []
        super().__init__("quillo-service", "--data", data, *trust, *arguments,
                         environment=environment)
        self.url = self.wait_for(self.process.stdout, LISTENING)[1]

    def stop(self):
        self.process.terminate()
        self.finish()


def local_user_secret_file(url):
    """Where the service keeps what proves its user (docs/service-api.md)."""
    places = [os.environ.get("XDG_RUNTIME_DIR"), pathlib.Path.home() / ".cache"]
    port = url.rsplit(":", 1)[1]
    files = [pathlib.Path(place) / "quillo" / port / "127.0.0.1.secret" for place in places if place]
    return next(file for file in files if file.exists())


def call(service, method, path, body=None):
    """Asks the service, as its sample user, for what the host does not offer."""
    def ask(request):
        with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
            return json.loads(answer.read() or "null")

    granted = ask(urllib.request.Request(
        service.url + "/oauth/token",
        b"client_id=test&grant_type=urn:quillo:grant-type:local-user&local_user_secret="
        + local_user_secret_file(service.url).read_text().strip().encode()))
    return ask(urllib.request.Request(
        service.url + path, body and json.dumps(body).encode(),
        {"Authorization": "Bearer " + granted["access_token"]}, method=method))


def names_in(place):
    """The names of a place and of all that is listed below it."""
    return [place["name"]] + [name for child in place["children"] for name in names_in(child)]


class EndToEnd(unittest.TestCase):
    """A temporary directory, with a movie in it, and the host's state."""

    @classmethod
    def setUpClass(cls):
        cls.movies = pathlib.Path(tempfile.mkdtemp(prefix="quillo-movies-"))
        cls.addClassCleanup(shutil.rmtree, cls.movies)
        cls.clip = encode(cls.movies / "Clip.mov")

    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="quillo-e2e-"))
        self.addCleanup(shutil.rmtree, self.directory)
        self.addCleanup(self.check_for_leaks)
        self.state = self.directory / "state"
        self.output = ""
        self.secrets = set()

    def check_for_leaks(self):
        """No token has been shown, and nothing that was started here still runs."""
        for secret in self.secrets:
            self.assertNotIn(secret, self.output)
        self.assertEqual(processes_of(str(self.directory)), [])

    @property
    def tokens(self):
        """The text of the file that keeps the tokens."""
        kept = self.state / "config" / "quillo-tokens.json"
        return kept.read_text() if kept.exists() else ""

    def note_secrets(self):
        self.secrets.update(re.findall(r'"(?:access|refresh)\w*":\s*"([^"]+)"', self.tokens))

    @staticmethod
    def status_with(token, service):
        """How the service answers a request that carries the token."""
        request = urllib.request.Request(service.url + "/v1/me",
                                         headers={"Authorization": f"Bearer {token}"})
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
                return answer.status
        except urllib.error.HTTPError as error:
            return error.code

    def service(self, *arguments, trusting=True):
        service = Service(self.directory / "service", *arguments, trusting=trusting)
        self.addCleanup(service.stop)
        return service

    def start_host(self, *arguments, service=None):
        command, *rest = arguments
        where = ["--service", service.url] if service else []
        host = Running("quillo-host", command, "--data", self.state, *where, *rest)
        self.addCleanup(host.abandon)
        return host

    def host(self, *arguments, service=None, expect=0):
        """Runs the host to its end; what it printed to standard output and standard error."""
        code, out, err = self.start_host(*arguments, service=service).finish()
        self.output += out + err
        self.note_secrets()
        self.assertEqual(code, expect, err)
        return out, err

    def share(self, movie, *arguments, service=None):
        out, _ = self.host("share", "--json", *arguments, "--", movie, service=service)
        return json.loads(out)

    def refusal(self, code, *arguments, service=None):
        """The one line with which the host refuses."""
        out, err = self.host(*arguments, service=service, expect=code)
        self.assertEqual(out, "")
        lines = [line for line in err.splitlines() if line.startswith("quillo-host: ")]
        self.assertEqual(len(lines), 1, err)
        return lines[0]

    def exported_files(self):
        cache = self.state / "cache"
        return sorted(path.name for path in cache.iterdir()) if cache.exists() else []

    def check_link(self, shared):
        """The link leads to the very movie that was exported."""
        with urllib.request.urlopen(shared["link"] + "/movie", timeout=PATIENCE) as answer:
            movie = answer.read()
        self.assertEqual(len(movie), shared["bytes"])
        self.assertEqual(hashlib.sha256(movie).hexdigest(), shared["sha256"])
