"""What goes wrong before a movie is on its way: a clear line, a code of its own, nothing left behind."""

import http.server
import json
import os
import resource
import socket
import subprocess
import threading
import uuid

from programs import ACCOUNT, RIVER, EndToEnd, Service, encode


class ErrorTests(EndToEnd):

    def test_places_that_are_not_there(self):
        service = self.service()
        for to, reason in (
                ("Nobody", 'no "Nobody" among the accounts; there is "Harbour Street Studio", '
                           '"Northlight Pictures".'),
                (f"{ACCOUNT}/Films", 'no "Films" in "Northlight Pictures"; there is "Commercials"'),
                (f"{RIVER}/Nowhere/X", 'no "Nowhere" in "The Long River"; there is "Deliverables"'),
                (f"{RIVER}/Editorial/Reels/Reel 1/X", 'in "Reel 1"; there is nothing.'),
                (f"{RIVER}/Editorial/Long River rough cut.mp4", 'no "Long River rough cut.mp4"'),
                (f"{ACCOUNT}/Feature Films", 'is no project yet; go on with one of "Paper Lanterns"'),
        ):
            with self.subTest(to=to):
                line = self.refusal(4, "share", self.clip, "--to", to, service=service)
                self.assertIn(reason, line)
        self.assertEqual(self.exported_files(), [])

    def test_a_long_list_of_places_is_cut(self):
        service = self.service("--sample", "large")
        workspace = f"{ACCOUNT}/مشهد workspace 1"
        line = self.refusal(4, "share", self.clip, "--to", f"{workspace}/X", service=service)
        self.assertLess(line.count('", "'), 20)
        self.assertRegex(line, r"and \d+ more\.$")

    def test_no_place_at_all(self):
        service = self.service("--sample", "none")
        self.assertIn("no project", self.refusal(4, "share", self.clip, service=service))
        self.assertEqual(self.host("locations", service=service)[0], "Robin Ellery\n")

    def test_a_movie_that_cannot_be_read_to_its_end(self):
        whole = encode(self.movies / "Whole.mkv", 4)
        cut = self.directory / "Cut.mkv"
        data = whole.read_bytes()
        cut.write_bytes(data[:len(data) * 6 // 10])
        service = self.service()
        line = self.refusal(5, "share", cut, service=service)
        self.assertRegex(line, r'"[^"]*/Cut\.mkv" is damaged: only 0:0[12] of 0:04 could be read; copy it again, or '
                               r"export it again from the program that made it\. --accept-damaged shares what there is\.")
        self.assertEqual(self.exported_files(), [])
        shared = self.share(cut, "--accept-damaged", service=service)
        self.assertEqual(shared["version"], 1)
        self.check_link(shared)

    def test_movies_that_are_none(self):
        notes = self.directory / "notes.txt"
        notes.write_text("To do: the titles.\n")
        for movie, reason in ((self.directory / "missing.mov", "no such file"),
                              (self.directory / "two\nlines", "two\ufffdlines"),
                              (self.directory, "is a directory"),
                              (notes, "its content is no movie")):
            with self.subTest(movie=movie):
                line = self.refusal(5, "share", movie)
                self.assertIn(str(movie).replace("\n", "\ufffd"), line)
                self.assertIn(reason, line)

    def test_a_movie_is_never_exported_onto_itself(self):
        service = self.service()
        cache = self.state / "cache"
        cache.mkdir(parents=True)
        movie = encode(cache / "Clip.mp4")
        before = movie.read_bytes()
        line = self.refusal(5, "share", movie, service=service)
        self.assertIn("--name", line)
        self.assertEqual(movie.read_bytes(), before)
        self.check_link(self.share(movie, "--name", "Another", service=service))
        self.assertEqual(movie.read_bytes(), before)

    def test_a_full_disk(self):
        service = self.service()
        movie = encode(self.directory / "noise.mov", 3, filters=",noise=alls=80:allf=t")
        limit = 64 * 1024  # of a file's size: as near to a full disk as this gets without one
        before = resource.getrlimit(resource.RLIMIT_FSIZE)
        self.share(self.clip, service=service)  # makes the store, which must fit
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, before[1]))
        try:
            line = self.refusal(5, "share", movie, service=service)
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, before)
        self.assertIn("Cannot export", line)
        self.assertEqual(self.exported_files(), [])
        self.check_link(self.share(movie, service=service))

    def test_no_service(self):
        with socket.socket() as unused:
            unused.bind(("127.0.0.1", 0))  # bound and not listening: nobody else takes the port
            address = f"http://127.0.0.1:{unused.getsockname()[1]}"
            for command in (("share", self.clip), ("locations",), ("sign-in",)):
                with self.subTest(command=command):
                    line = self.refusal(3, *command, "--service", address)
                    self.assertIn(address, line)

    def test_places_that_may_not_be_read(self):
        answers = {"/oauth/token": {"access_token": "a" * 30, "refresh_token": "r" * 30,
                                    "token_type": "Bearer", "expires_in": 3600},
                   "/v1/me": {"user": {"id": str(uuid.uuid4()), "name": "Robin"}},
                   "/v1/accounts": {"accounts": [{"id": str(uuid.uuid4()), "name": "Acme"}]}}

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.rfile.read(int(self.headers.get("Content-Length", 0)))
                refusal = {"error": {"code": "forbidden", "message": "You are no member."}}
                body = json.dumps(answers.get(self.path, refusal)).encode()
                self.send_response(200 if self.path in answers else 403)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            do_POST = do_GET

            def log_message(self, *_):
                pass

        with http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler) as server:
            threading.Thread(target=server.serve_forever).start()
            try:
                address = f"http://127.0.0.1:{server.server_port}"
                for command in (("share", self.clip), ("locations",)):
                    line = self.refusal(4, *command, "--service", address)
                    self.assertIn("403 (You are no member.)", line)
            finally:
                server.shutdown()

    def test_an_address_that_is_none(self):
        for address in ("ftp://127.0.0.1", "127.0.0.1:80", "http://user@127.0.0.1", "http://h/path"):
            self.assertIn(address, self.refusal(2, "locations", "--service", address))

    def test_plain_http_to_another_machine_has_to_be_allowed_and_is_warned_of(self):
        port = self.service().url.rsplit(":", 1)[1]
        address = f"http://0.0.0.0:{port}"  # not a loopback address, and yet this machine
        self.assertIn("--insecure-http", self.refusal(2, "locations", "--service", address))
        _, _, err = self.start_host("locations", "--insecure-http", "--service", address).finish()
        warnings = [line for line in err.splitlines() if line.startswith("Warning: ")]
        self.assertEqual(len(warnings), 1, err)
        self.assertIn(address, warnings[0])

    def test_its_own_service_is_in_use(self):
        service = Service(self.state / "service")
        self.addCleanup(service.stop)
        self.assertIn("another quillo-service", self.refusal(3, "locations"))

    def test_output_that_cannot_be_written(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            host = self.start_host("locations", service=self.service())
            code = host.finish()[0]
            self.assertEqual(code, 0)
            ended = subprocess.run([*host.process.args], stdout=full, stderr=subprocess.PIPE,
                                   check=False, env=os.environ)
        self.assertEqual(ended.returncode, 1)
        self.assertIn(b"standard output", ended.stderr)
