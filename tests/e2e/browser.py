"""A browser and its user, as far as a sign-in needs them. Run as "browser.py USER LOG URL";
where it has been is written to LOG."""

import html.parser
import http.cookiejar
import sys
import urllib.error
import urllib.parse
import urllib.request

PASSWORD = "review"


class Form(html.parser.HTMLParser):
    """The fields of a page's form, as they stand there."""

    def __init__(self, page):
        super().__init__()
        self.fields = {}
        self.feed(page)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        if tag == "input":
            self.fields[attributes["name"]] = attributes.get("value", "")


class Browser:

    def __init__(self, log):
        self.log = log
        cookies = urllib.request.HTTPCookieProcessor(http.cookiejar.CookieJar())
        self.opener = urllib.request.build_opener(cookies)

    def visit(self, url, form=None):
        """The status and the text of the page where that leads."""
        body = urllib.parse.urlencode(form).encode() if form else None
        try:
            answer = self.opener.open(url, body)
        except urllib.error.HTTPError as error:
            answer = error
        with answer, open(self.log, "a", encoding="utf8") as log:
            log.write(answer.geturl() + "\n")
            return answer.status, answer.read().decode()

    def submit(self, url, page, **changes):
        return self.visit(urllib.parse.urljoin(url, "/oauth/authorize"),
                          Form(page).fields | changes)


def expect(answer, status, text):
    if answer[0] != status or text not in answer[1]:
        sys.exit(f"expected {status} {text}")


def allow(browser, url):
    status, page = browser.visit(url)
    expect((status, page), 200, "Sign in to Quillo")
    expect(browser.submit(url, page, password=PASSWORD, decision="allow"), 200,
           "You can close this window")


def mistype(browser, url):
    _, page = browser.visit(url)
    wrong = browser.submit(url, page, password="revue", decision="allow")
    expect(wrong, 403, "not the password")
    expect(browser.submit(url, wrong[1], password=PASSWORD, decision="allow"), 200,
           "You can close this window")


def deny(browser, url):
    _, page = browser.visit(url)
    expect(browser.submit(url, page, decision="deny"), 200, "Not signed in")


def be_led_astray(browser, url):
    """Another page sends the browser back with a code of somebody else's before the user allows."""
    back = urllib.parse.parse_qs(urllib.parse.urlsplit(url).query)["redirect_uri"][0]
    expect(browser.visit(back + "?code=another&state=another"), 400, "under way")
    allow(browser, url)


def look(browser, url):
    expect(browser.visit(url), 200, "Sign in to Quillo")


def crash(_browser, _url):
    sys.exit(7)


if __name__ == "__main__":
    {user.__name__: user for user in (allow, mistype, deny, be_led_astray, look, crash)}[
        sys.argv[1]](Browser(sys.argv[2]), sys.argv[3])
