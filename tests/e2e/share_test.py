"""Sharing that goes well."""

import json
import os
import pty
import re
import shutil
import socket
import subprocess

from programs import ACCOUNT, BIN, PATIENCE, RIVER, EndToEnd, Service, call, encode, names_in


class ShareTests(EndToEnd):

    def test_a_movie_shared_again_becomes_a_version_under_the_same_link(self):
        service = self.service()
        first = self.share(self.clip, "--to", f"{RIVER}/editorial/REELS", service=service)
        self.check_link(first)
        self.assertTrue(first["link"].startswith(service.url + "/r/"))
        self.assertTrue(first["link"].endswith(first["link_id"]))
        self.assertEqual((first["version"], first["new_link"]), (1, True))
        self.assertEqual(first["folder_path"], f"{RIVER}/Editorial/Reels")
        self.assertEqual(self.exported_files(), [])

        # By another way to the same file, to the folder of the first share, under another name.
        alias = self.directory / "alias.mov"
        alias.symlink_to(self.clip)
        second = self.share(alias, "--name", "Cut: 2/3?", service=service)
        self.check_link(second)
        self.assertEqual((second["version"], second["new_link"]), (2, False))
        for same in ("link", "link_id", "version_stack_id", "folder_id", "folder_path"):
            self.assertEqual(second[same], first[same])
        self.assertNotEqual(second["asset_id"], first["asset_id"])
        self.assertEqual(self.exported_files(), [])

        out, _ = self.host("locations", "--json", "--depth", "6", service=service)
        self.assertIn(first["version_stack_id"], out)

    def test_a_share_that_cannot_be_noted_goes_on(self):
        notes = self.state / "state" / "unlinked-stacks"
        notes.parent.mkdir(parents=True)
        notes.write_text("no directory")
        self.check_link(self.share(self.clip, service=self.service()))

    def test_only_the_link_goes_to_standard_output(self):
        out, err = self.host("share", self.clip, service=self.service())
        self.assertRegex(out, r"\Ahttp://127\.0\.0\.1:\d+/r/[0-9a-f-]{36}\n\Z")
        self.assertIn("Shared as version 1 under a new link", err)

    def test_the_sounds_that_are_left_out_are_named(self):
        movie = self.directory / "Sounds.mkv"
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=d=1", "-map", "0", "-map", "0",
                        "-map", "0", "-metadata:s:a:0", "title=Commentary", "-metadata:s:a:1", "language=ger",
                        "-disposition:a:0", "0", "-disposition:a:1", "default", "-disposition:a:2", "0", movie],
                       check=True)
        _, error = self.host("share", movie, service=self.service())
        self.assertIn("The sound is ger; left out: Commentary, track 3\n", error)

    def test_a_service_of_its_own_keeps_links_valid(self):
        first = self.share(self.clip)
        second = self.share(self.clip)
        self.assertEqual((second["version"], second["link"]), (2, first["link"]))
        service = Service(self.state / "service")
        self.addCleanup(service.stop)
        self.check_link(second)

    def test_a_service_of_its_own_that_loses_its_port(self):
        first = self.share(self.clip)
        port = re.match(r"http://127\.0\.0\.1:(\d+)/", first["link"])[1]
        with socket.socket() as other:
            other.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            other.bind(("127.0.0.1", int(port)))
            other.listen()
            out, err = self.host("share", self.clip)
        self.assertEqual(out, first["link"] + "\n")
        self.assertIn(f"could not have its former port {port}", err)
        self.assertRegex(err, rf"run: quillo-service .* --port {port}\n")

    def test_a_service_that_has_lost_what_was_shared(self):
        service = self.service()
        first = self.share(self.clip, service=service)
        service.stop()
        shutil.rmtree(self.directory / "service")
        again = self.service("--port", service.url.rsplit(":", 1)[1])
        self.assertEqual(again.url, service.url)
        second = self.share(self.clip, service=again)
        self.check_link(second)
        self.assertEqual((second["version"], second["new_link"]), (1, True))
        self.assertNotEqual(second["link"], first["link"])

    def test_two_services_are_kept_apart(self):
        first = self.share(self.clip)
        second = self.share(self.clip, service=self.service())
        self.check_link(second)
        self.assertEqual((second["version"], second["new_link"]), (1, True))
        self.assertNotEqual(second["link"], first["link"])

    def test_odd_names(self):
        service = self.service()
        for name in ("-y", "100%d", "it's \"quoted\"", "🎬 Ümlaut", "a" * 250, "semi;$(touch x)`y`",
                     "line\nfeed"):
            with self.subTest(name=name):
                movie = self.directory / name
                movie.write_bytes(self.clip.read_bytes())
                self.check_link(self.share(movie, service=service))
        for name in ("🎬" * 150, "a/b\\c:d*e?f\"g<h>i|j", ".", "..", "%s%n"):
            with self.subTest(name=name):
                self.check_link(self.share(self.clip, "--name", name, service=service))

    def test_eight_at_once(self):
        service = self.service()
        movies = [self.clip] * 4
        for index in range(4):  # four movies of one name, in four folders
            folder = self.directory / str(index)
            folder.mkdir()
            movies.append(encode(folder / "Clip.mov", 1 + index))
        hosts = [self.start_host("share", movie, "--json", service=service) for movie in movies]
        results = []
        for host in hosts:
            code, out, err = host.finish()
            self.assertEqual(code, 0, err)
            results.append(json.loads(out))
        same, others = results[:4], results[4:]
        self.assertEqual(sorted(shared["version"] for shared in same), [1, 2, 3, 4])
        self.assertEqual(len({shared["link"] for shared in same}), 1)
        self.assertEqual(len({shared["link"] for shared in others}), 4)
        for shared in others:
            self.check_link(shared)
        self.assertEqual(self.exported_files(), [])

    def test_a_terminal_shows_a_bar(self):
        movie = encode(self.directory / "long.mov", 20)
        reading, writing = pty.openpty()
        with subprocess.Popen([BIN / "quillo-host", "share", movie, "--data", self.state],
                              stdout=subprocess.PIPE, stderr=writing) as host:
            os.close(writing)
            shown = b""
            try:
                while part := os.read(reading, 4096):
                    shown += part
            except OSError:
                pass  # the other end is closed
            self.assertEqual(host.wait(PATIENCE), 0)
            self.assertRegex(host.stdout.read(), rb"\Ahttp://\S+\n\Z")
        os.close(reading)
        self.assertRegex(shown, rb"\rExporting \[#*\.*\] +\d+ %")
        self.assertIn(b"Uploaded\r\n", shown)

    def test_places_are_listed(self):
        service = self.service()
        out, _ = self.host("locations", "--depth", "3", service=service)
        lines = out.splitlines()
        self.assertEqual(lines[:2], ["Robin Ellery", "  Harbour Street Studio"])
        self.assertIn("      The Long River", lines)
        self.assertNotIn("        Editorial", lines)

        out, _ = self.host("locations", "--json", service=service)
        place = json.loads(out)
        for name, kind in ((ACCOUNT, "account"), ("Feature Films", "workspace"),
                           ("The Long River", "project"), ("Editorial", "folder")):
            place = next(child for child in place["children"] if child["name"] == name)
            self.assertEqual(place["type"], kind)

    def test_the_client_library_shares_and_follows_changes(self):
        service = self.service()
        client = ("--backend", "client")
        first = self.share(self.clip, *client, "--to", f"{RIVER}/VFX", service=service)
        self.check_link(first)
        self.assertEqual(first["folder_path"], f"{RIVER}/VFX")
        second = self.share(self.clip, service=service)
        self.assertEqual((second["version"], second["link"]), (2, first["link"]))
        self.assertEqual(self.host("locations", "--depth", "3", *client, service=service)[0],
                         self.host("locations", "--depth", "3", service=service)[0])

        watch = self.start_host("locations", "--watch", "--json", *client, service=service)
        printed = json.JSONDecoder()
        text = ""

        def next_places():
            nonlocal text
            while True:
                try:
                    places, end = printed.raw_decode(text)
                    text = text[end:].lstrip()
                    return places
                except json.JSONDecodeError:
                    line = watch.process.stdout.readline()
                    self.assertTrue(line, "the host has ended")
                    text += line

        account = next(place for place in next_places()["children"] if place["name"] == ACCOUNT)
        made = call(service, "POST", f"/v1/accounts/{account['id']}/workspaces", {"name": "Trailers"})
        self.assertIn("Trailers", names_in(next_places()))
        workspace = f"/v1/workspaces/{made['workspace']['id']}"
        call(service, "PATCH", workspace, {"name": "Teasers"})
        names = names_in(next_places())
        self.assertIn("Teasers", names)
        self.assertNotIn("Trailers", names)
        service.stop()
        service = self.service("--port", service.url.rsplit(":", 1)[1])
        call(service, "DELETE", workspace)
        self.assertNotIn("Teasers", names_in(next_places()))
        watch.process.terminate()
        self.assertEqual(watch.finish()[0], 130)

    def test_a_kept_sign_in_that_the_service_has_lost(self):
        service = self.service()
        for backend in ("sdk", "client"):
            self.host("locations", "--depth", "1", "--backend", backend, service=service)
            service.stop()
            shutil.rmtree(self.directory / "service")
            service = self.service("--port", service.url.rsplit(":", 1)[1])
            out, _ = self.host("locations", "--depth", "1", "--backend", backend, service=service)
            self.assertIn(ACCOUNT, out)
