"""Signing in to a service that trusts nobody on this machine: in a browser, through the user."""

import os
import re
import signal
import socket
import unittest.mock
import urllib.parse
import urllib.request

from browsers import BrowserTest
from programs import PATIENCE
from window import WindowTest


class BrowserTests(BrowserTest):

    def sign_in(self, service, user="allow"):
        return self.host("sign-in", "--browser", self.browser(user), service=service)

    def test_who_allows_it_is_signed_in_and_shares(self):
        service = self.service(trusting=False)
        out, err = self.sign_in(service)
        self.assertIn("as Robin Ellery", out)
        self.assertIn("sign in in the browser", err)
        self.assertIn(service.url, self.tokens)
        self.assertEqual(len(self.secrets), 2)
        self.check_link(self.share(self.clip, "--browser", self.browser("crash"), service=service))
        self.host("sign-out", service=service)
        self.assertNotIn(service.url, self.tokens)

    def test_the_desktop_has_a_browser_of_its_own(self):
        program = self.browser("allow", name="xdg-open")
        path = f"{program.parent}:{os.environ['PATH']}"
        with unittest.mock.patch.dict(os.environ, PATH=path):
            out, _ = self.host("sign-in", service=self.service(trusting=False))
        self.assertIn("as Robin Ellery", out)

    def test_a_slip_and_a_stranger_change_nothing(self):
        service = self.service(trusting=False)
        for user in ("mistype", "be_led_astray"):
            with self.subTest(user=user):
                self.assertIn("as Robin Ellery", self.sign_in(service, user)[0])
                self.host("sign-out", service=service)

    def test_who_is_not_signed_in_is_told_why(self):
        service = self.service(trusting=False)
        crash = self.browser("crash", name="crash")
        for program, reason in ((self.browser("deny"), "the access was denied in the browser"),
                                (crash, f"{crash} ended with exit status 7"),
                                ("/no/such/browser", "cannot run /no/such/browser")):
            with self.subTest(program=program):
                line = self.refusal(3, "sign-in", "--browser", program, service=service)
                self.assertIn(reason, line)
                self.assertNotIn("is it running", line)
                self.assertNotIn(service.url, self.tokens)

    def test_a_sign_in_that_is_given_up_leaves_nothing_behind(self):
        service = self.service(trusting=False)
        for number, code in ((signal.SIGINT, 130), (signal.SIGKILL, -signal.SIGKILL)):
            with self.subTest(signal=number):
                os.mkfifo(self.log)
                host = self.start_host("sign-in", "--browser", self.browser("look"),
                                       service=service)
                [page] = self.log.read_text().splitlines()  # waits for the browser
                self.log.unlink()
                host.process.send_signal(number)
                self.assertEqual(host.finish()[0], code)
                self.assertNotIn(service.url, self.tokens)
                back = urllib.parse.parse_qs(urllib.parse.urlsplit(page).query)["redirect_uri"][0]
                with self.assertRaises(ConnectionRefusedError):
                    socket.create_connection(("127.0.0.1", urllib.parse.urlsplit(back).port))

    def test_a_session_that_is_over_opens_the_browser_once(self):
        service = self.service(trusting=False)
        self.sign_in(service)
        for expired in (False, True):
            with self.subTest(expired=expired):
                refresh = re.search(r'"refresh_token":\s*"([^"]+)"', self.tokens)[1]
                urllib.request.urlopen(service.url + "/oauth/revoke",
                                       f"token={refresh}".encode(), PATIENCE).close()
                if expired:
                    kept = self.state / "config" / "quillo-tokens.json"
                    kept.write_text(re.sub(r'("expires_at":\s*)\d+', r"\g<1>1", self.tokens))
                visits = len(self.visited())
                self.assertIn("as Robin Ellery", self.sign_in(service)[0])
                pages = [url for url in self.visited()[visits:] if "response_type=" in url]
                self.assertEqual(len(pages), 1)


class BrowserWindowTests(BrowserTest, WindowTest):

    def test_the_popup_goes_on_when_the_user_comes_back(self):
        service = self.service(trusting=False)
        window = self.window(self.clip, "--browser", self.browser("deny"), service=service)
        window.click("Button", "Share for Review")
        window.click("Button", "Sign in to Quillo")
        window.hear("the access was denied in the browser")
        self.browser("crash")
        window.click("Button", "Sign in to Quillo")
        window.hear("ended with exit status 7")
        self.browser("allow")
        self.sign_in(window)
        window.see("Link", "Select Quillo Location...")
        window.dismiss("Button", "Share")
        self.close(window)
