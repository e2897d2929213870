"""Signing in and out: what is kept, and what the service knows of it."""

import re
import socket

from programs import EndToEnd, Service


class SignInTests(EndToEnd):

    def sign_in(self, service=None):
        """The access token that is kept afterwards."""
        self.host("sign-in", service=service)
        return re.search(r'"access_token":\s*"([^"]+)"', self.tokens)[1]

    def test_a_session_from_its_beginning_to_its_end(self):
        service = self.service()
        self.assertIn("as Robin Ellery", self.host("sign-in", service=service)[0])
        kept = self.state / "config" / "quillo-tokens.json"
        self.assertEqual(kept.stat().st_mode & 0o777, 0o600)
        self.assertIn(service.url, self.tokens)
        self.assertEqual(len(self.secrets), 2)

        out, _ = self.host("trace", service=service)
        self.assertRegex(out, r'(?m)^            Proj :  "Paper Lanterns"  [0-9a-f-]{36}$')
        self.assertRegex(out, r"nodes count = \d+")

        self.assertIn("Signed out", self.host("sign-out", service=service)[0])
        self.assertNotIn(service.url, self.tokens)

    def test_the_service_rejects_the_token_once_the_user_has_signed_out(self):
        service = self.service("--latency", "200")
        token = self.sign_in(service)
        self.assertEqual(self.status_with(token, service), 200)
        self.host("sign-out", service=service)
        self.assertEqual(self.status_with(token, service), 401)

    def test_a_service_of_its_own_hears_of_the_sign_out_before_it_ends(self):
        token = self.sign_in()
        self.host("sign-out")
        service = Service(self.state / "service")
        self.addCleanup(service.stop)
        self.assertEqual(self.status_with(token, service), 401)

    def test_signing_out_needs_no_service(self):
        service = self.service()
        for listening in (False, True):  # nobody there, and somebody who never answers
            with self.subTest(listening=listening), socket.socket() as other:
                self.sign_in(service)
                other.bind(("127.0.0.1", 0))
                if listening:
                    other.listen()
                address = f"http://127.0.0.1:{other.getsockname()[1]}"
                kept = self.state / "config" / "quillo-tokens.json"
                kept.write_text(self.tokens.replace(service.url, address))
                out, _ = self.host("sign-out", "--service", address)
                self.assertIn("Signed out", out)
                self.assertNotIn(address, self.tokens)
