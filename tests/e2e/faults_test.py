"""A service that fails on the way: what was to be shared arrives all the same."""

import json

from programs import RIVER, EndToEnd, Service, encode

CHUNK = 8 << 20  # bytes that are uploaded at once


class FaultTests(EndToEnd):

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # Exported it is several chunks long.
        cls.noise = encode(cls.movies / "Noise.mov", 6, size="640x360",
                           filters=",noise=alls=100:allf=t")

    def test_an_upload_survives_the_death_of_the_service(self):
        service = self.service("--latency", "300")
        host = self.start_host("share", self.noise, "--json", service=service)
        host.wait_for(host.process.stderr, r"Uploading.* \d+ %")
        service.process.kill()
        service.finish()
        again = Service(self.directory / "service", "--latency", "20")
        self.addCleanup(again.stop)
        self.assertEqual(again.url, service.url)
        code, out, err = host.finish()
        self.assertEqual(code, 0, err)
        shared = json.loads(out)
        self.assertGreater(shared["bytes"], 2 * CHUNK)
        self.check_link(shared)
        self.assertEqual(self.exported_files(), [])

    def test_an_upload_survives_a_cut_connection(self):
        for cut in (CHUNK + 12345, 1 << 40):  # in the middle, and past the end
            with self.subTest(cut=cut):
                service = Service(self.directory / str(cut), "--drop-upload-after", str(cut))
                self.addCleanup(service.stop)
                self.check_link(self.share(self.noise, service=service))

    def test_a_share_survives_refusals(self):
        service = self.service("--fail", "0.2")
        for version in (1, 2):
            shared = self.share(self.clip, "--to", f"{RIVER}/VFX/Shot 2", service=service)
            self.assertEqual(shared["version"], version)
        self.check_link(shared)

    def test_the_list_of_places_keeps_to_the_limits(self):
        depth = ("locations", "--json", "--depth", "4")
        expected, _ = self.host(*depth, service=self.service())
        slow = Service(self.directory / "slow", "--limit", "5/1")
        self.addCleanup(slow.stop)
        self.assertEqual(self.host(*depth, service=slow)[0], expected)
