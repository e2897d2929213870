"""A host that dies in the middle of a movie's first share: sharing again completes it, and makes nothing twice."""

import re
import shutil

from programs import EndToEnd, call
from proxy import Proxy

ID = re.compile(r"[0-9a-f]{8}-[0-9a-f-]{27}|/v1/uploads/[^/?]+")


def step_of(method, path):
    """A request without what differs from share to share."""
    return f"{method} {ID.sub('*', path)}"


class DeathTests(EndToEnd):

    def setUp(self):
        super().setUp()
        self.proxy = Proxy(self.service())
        self.addCleanup(self.proxy.stop)

    def steps_of_a_first_share(self):
        steps = []
        self.proxy.on_request = lambda method, path: steps.append(step_of(method, path))
        self.check_link(self.share(self.copy("First"), service=self.proxy))
        self.proxy.on_request = lambda method, path: None
        return [step for step in steps if "/oauth/" not in step]

    def copy(self, name):
        return shutil.copy(self.clip, self.directory / f"{name}.mov")

    def share_and_die(self, movie, number, delivered):
        """Kills the host at its request of that number, before the service gets it or after it has answered."""
        host = self.start_host("share", movie, service=self.proxy)
        count = 0

        def on_request(_, path):
            nonlocal count
            if "/oauth/" in path:
                return None
            count += 1
            if count != number + 1:
                return None
            if delivered:
                return host.process.kill
            host.process.kill()
            raise OSError("not passed on")

        self.proxy.on_request = on_request
        host.finish()
        self.proxy.on_request = lambda method, path: None

    def test_a_share_that_died_at_any_step_is_completed_by_the_next(self):
        steps = self.steps_of_a_first_share()
        self.assertGreaterEqual(len(steps), 4, steps)
        for number, step in enumerate(steps):
            for delivered in (False, True):
                with self.subTest(step=step, delivered=delivered):
                    name = f"Take {number}{'b' if delivered else 'a'}"
                    movie = self.copy(name)
                    self.share_and_die(movie, number, delivered)
                    shared = self.share(movie, service=self.proxy)
                    self.check_link(shared)
                    self.assertEqual(self.exported_files(), [])
                    children = call(self.proxy, "GET", f"/v1/folders/{shared['folder_id']}/children")
                    named = [child for child in children["assets"] if child["name"].startswith(name)]
                    self.assertEqual(len(named), 1, "one version stack")
                    again = self.share(movie, service=self.proxy)
                    self.assertEqual((again["link"], again["version"]), (shared["link"], shared["version"] + 1))
