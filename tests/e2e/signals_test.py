"""The user, or the system, stops the host: it ends at once, cleanly, and nothing runs on."""

import pathlib
import signal

from programs import EndToEnd, encode, processes_of, wait_for_end


class SignalTests(EndToEnd):

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.long = encode(cls.movies / "Long.mov", 60, size="640x360")

    def export(self):
        """A host in the midst of an export, with a service of its own."""
        host = self.start_host("share", self.long)
        host.wait_for(host.process.stderr, r"Exporting \[.* \d+ %")
        return host

    def test_an_export_is_called_off_whatever_signals_came_before(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(signal=number):
                host = self.export()
                for stray in (signal.SIGUSR1, signal.SIGUSR2, signal.SIGALRM, signal.SIGSTOP,
                              signal.SIGCONT):
                    host.process.send_signal(stray)
                host.process.send_signal(number)
                code, out, err = host.finish()
                self.assertEqual((code, out), (130, ""), err)
                self.assertTrue(err.endswith("quillo-host: Interrupted.\n"), err)
                self.assertEqual(self.exported_files(), [])
                self.assertEqual(processes_of(str(self.directory)), [])

    def test_what_is_exported_is_kept_when_its_upload_is_called_off(self):
        service = self.service("--latency", "300")
        host = self.start_host("share", self.clip, service=service)
        host.wait_for(host.process.stderr, r"^Uploading")
        host.process.send_signal(signal.SIGINT)
        code, out, err = host.finish()
        self.assertEqual((code, out), (130, ""), err)
        kept = self.state / "cache" / "Clip.mp4"
        self.assertIn(f'Interrupted. The exported movie is kept: "{kept}".', err)
        self.assertTrue(kept.exists())
        service.stop()

        again = self.service()
        shared = self.share(self.clip, service=again)
        self.check_link(shared)
        self.assertEqual(self.exported_files(), [])

    def test_what_the_host_has_started_dies_with_it(self):
        host = self.export()
        started = [pid for pid in processes_of(str(self.directory)) if pid != host.process.pid]
        names = {pathlib.Path(f"/proc/{pid}/comm").read_text(encoding="utf8").strip()
                 for pid in started}
        self.assertEqual(names, {"ffmpeg", "quillo-service"})
        host.process.kill()
        host.finish()
        for pid in started:
            wait_for_end(pid)
        # What the dead host had locked is free.
        self.assertEqual(self.share(self.clip, "--name", "Long")["version"], 1)
