"""The example of a reverse proxy with TLS, in front of the real service."""

import base64
import http.client
import json
import pathlib
import socket
import ssl
import subprocess
import unittest
import urllib.parse

from programs import PATIENCE, EndToEnd, Running, local_user_secret_file

EXAMPLE = pathlib.Path(__file__).parents[2] / "packaging" / "nginx" / "quillo-service.conf"
NAME = "review.example"
FORM = {"Content_Type": "application/x-www-form-urlencoded"}
JSON = {"Content_Type": "application/json"}


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


class ReverseProxyTests(EndToEnd):
    def setUp(self):
        super().setUp()
        self.service_process = self.service("--public-address", f"https://{NAME}", "--proxy", "127.0.0.1",
                                            "--log", "requests")
        self.certificate = self.directory / "certificate.pem"
        key = self.directory / "key.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                        "-nodes", "-subj", f"/CN={NAME}", "-addext", f"subjectAltName=DNS:{NAME}",
                        "-keyout", key, "-out", self.certificate], check=True, capture_output=True)
        self.port = free_port()
        address = urllib.parse.urlsplit(self.service_process.url)
        # Nothing but what the example says has to be changed.
        example = EXAMPLE.read_text()
        for line, here in (("server 127.0.0.1:8080;", f"server 127.0.0.1:{address.port};"),
                           ("listen 443 ", f"listen 127.0.0.1:{self.port} "),
                           ("/etc/ssl/certs/review.example.pem", str(self.certificate)),
                           ("/etc/ssl/private/review.example.key", str(key))):
            self.assertEqual(example.count(line), 1, line)
            example = example.replace(line, here)
        temporary = "".join(f"{module}_temp_path {self.directory}/{module};\n"
                            for module in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
        configuration = self.directory / "nginx.conf"
        configuration.write_text(
            f"daemon off; master_process off; pid {self.directory}/nginx.pid; error_log stderr notice;\n"
            f"events {{}}\nhttp {{ access_log off; {temporary}\n{example} }}\n")
        self.nginx = Running("/usr/sbin/nginx", "-p", self.directory, "-c", configuration)
        self.addCleanup(self.nginx.abandon)
        self.nginx.wait_for(self.nginx.process.stderr, "start worker process|using the|nginx/")

    def connect(self):
        """A connection to the proxy, which has to prove that it is the public name's."""
        trust = ssl.create_default_context(cafile=self.certificate)

        class Connection(http.client.HTTPSConnection):
            def connect(inner):
                plain = socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)
                inner.sock = trust.wrap_socket(plain, server_hostname=NAME)

        connection = Connection(NAME, timeout=PATIENCE)
        self.addCleanup(connection.close)
        return connection

    def ask(self, connection, method, path, body=None, **headers):
        connection.request(method, path, body, {name.replace("_", "-"): text for name, text in headers.items()})
        answer = connection.getresponse()
        return answer, answer.read()

    def sign_in(self):
        """A token; by the service's own address, since the local user's sign-in is for this machine."""
        form = (b"client_id=test&grant_type=urn:quillo:grant-type:local-user&local_user_secret="
                + local_user_secret_file(self.service_process.url).read_text().strip().encode())
        refused, _ = self.ask(self.connect(), "POST", "/oauth/token", form, **FORM)
        self.assertEqual(refused.status, 400)
        address = urllib.parse.urlsplit(self.service_process.url)
        direct = http.client.HTTPConnection(address.hostname, address.port, timeout=PATIENCE)
        self.addCleanup(direct.close)
        _, granted = self.ask(direct, "POST", "/oauth/token", form, **FORM)
        return "Bearer " + json.loads(granted)["access_token"]

    def test_takes_movies_and_shows_them_under_the_public_name(self):
        token = self.sign_in()
        https = self.connect()
        ask = lambda *arguments, **headers: self.ask(https, *arguments, Authorization=token, **headers)
        account = json.loads(ask("GET", "/v1/accounts")[1])["accounts"][0]["id"]
        workspace = json.loads(ask("GET", f"/v1/accounts/{account}/workspaces")[1])["workspaces"][0]["id"]
        project = json.loads(ask("GET", f"/v1/workspaces/{workspace}/projects")[1])["projects"][0]
        answer, link = ask("POST", f"/v1/projects/{project['id']}/review-links", '{"name": "Review"}', **JSON)
        url = json.loads(link)["review_link"]["url"]
        self.assertRegex(url, f"^https://{NAME}/r/")
        page, _ = ask("GET", url.removeprefix(f"https://{NAME}"))
        self.assertEqual(page.status, 200)
        self.assertRegex(page.getheader("X-Request-Id"), "^[0-9a-f]{32}$")  # as nginx makes them
        for path in ("/metrics", "/nowhere"):
            self.assertEqual(ask("GET", path)[0].status, 404)
        _, metadata = ask("GET", "/.well-known/oauth-authorization-server")
        self.assertEqual(json.loads(metadata)["issuer"], f"https://{NAME}")

        # More than nginx would take by itself, cut in the middle: what has arrived is not sent again.
        movie = bytes(range(256)) * 16384
        folder = project["root_folder"]["id"]
        created, _ = ask("POST", "/v1/uploads", Tus_Resumable="1.0.0", Upload_Length=str(len(movie)),
                         Upload_Metadata=metadata_of(filename="movie.mp4", folder_id=folder))
        self.assertEqual(created.status, 201)
        place = urllib.parse.urlsplit(created.getheader("Location")).path
        tus = {"Tus_Resumable": "1.0.0", "Content_Type": "application/offset+octet-stream"}
        cut = self.connect()
        cut.putrequest("PATCH", place)
        for name, text in {**tus, "Upload_Offset": "0", "Content_Length": str(len(movie)),
                           "Authorization": token}.items():
            cut.putheader(name.replace("_", "-"), text)
        cut.endheaders()
        cut.send(movie[: len(movie) // 2])
        cut.close()
        self.service_process.wait_for(self.service_process.process.stderr, '"method":"PATCH"')
        head, _ = ask("HEAD", place, Tus_Resumable="1.0.0")
        offset = int(head.getheader("Upload-Offset"))
        self.assertTrue(0 < offset <= len(movie) // 2, offset)
        whole, _ = ask("PATCH", place, movie[offset:], Upload_Offset=str(offset), **tus)
        self.assertEqual(whole.status, 204)
        _, asset = ask("GET", place + "/asset")
        self.assertEqual(json.loads(asset)["bytes"], len(movie))


def metadata_of(**values):
    return ",".join(f"{key} {base64.b64encode(text.encode()).decode()}" for key, text in values.items())


if __name__ == "__main__":
    unittest.main()
