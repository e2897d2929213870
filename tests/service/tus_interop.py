"""A stock tus client (Debian's python3-tuspy) uploads to the service and resumes after a cut."""

import hashlib
import json
import os
import random
import subprocess
import sys
import tempfile
import urllib.parse
import urllib.request

from tusclient import client as tus


def call(url, token=None, form=None):
    request = urllib.request.Request(url)
    if token:
        request.add_header("Authorization", "Bearer " + token)
        request.add_header("Tus-Resumable", "1.0.0")
    data = urllib.parse.urlencode(form).encode() if form else None
    with urllib.request.urlopen(request, data, timeout=60) as answer:
        return json.load(answer)


def local_user_secret(url):
    """Reads the local user's secret (docs/service-api.md)."""
    directories = os.environ.get("XDG_RUNTIME_DIR"), os.path.expanduser("~/.cache")
    port = url.rsplit(":", 1)[1]
    for directory in filter(None, directories):
        path = os.path.join(directory, "quillo", port, "127.0.0.1.secret")
        if os.path.exists(path):
            with open(path) as file:
                return file.read().strip()
    raise FileNotFoundError(f"no secret of the service at {url}")


def first_folder(url, token):
    account = call(url + "/v1/accounts", token)["accounts"][0]["id"]
    workspace = call(f"{url}/v1/accounts/{account}/workspaces", token)["workspaces"][0]["id"]
    return call(f"{url}/v1/workspaces/{workspace}/projects", token)["projects"][0]["root_folder"]["id"]


def upload(url, token, path, **options):
    client = tus.TusClient(url + "/v1/uploads", headers={"Authorization": "Bearer " + token})
    uploader = client.uploader(
        path,
        metadata={"filename": "Schnitt – final.mp4", "folder_id": first_folder(url, token)},
        **options,
    )
    return uploader


def main(program):
    with tempfile.TemporaryDirectory() as directory:
        content = random.Random(7).randbytes(5_000_000)
        path = os.path.join(directory, "movie.mp4")
        with open(path, "wb") as movie:
            movie.write(content)
        service = subprocess.Popen(
            [program, "--data", os.path.join(directory, "data"), "--trust-local-user",
             "--stop-with-stdin", "--drop-upload-after", "3000000"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        try:
            url = service.stdout.readline().split()[-1]
            token = call(url + "/oauth/token", form={
                "client_id": "tuspy", "grant_type": "urn:quillo:grant-type:local-user",
                "local_user_secret": local_user_secret(url)})["access_token"]
            for options in ({"chunk_size": 1_000_000, "upload_checksum": True}, {"chunk_size": 5_000_000}):
                # The service cuts the connection once; the client gets the offset and resumes.
                uploader = upload(url, token, path, retries=3, retry_delay=0, **options)
                uploader.upload()
                asset = call(uploader.url + "/asset", token)
                assert asset["sha256"] == hashlib.sha256(content).hexdigest(), asset
                assert asset["asset"]["name"] == "Schnitt – final.mp4", asset
        finally:
            service.stdin.close()
            service.wait(timeout=60)
        assert service.returncode == 0, service.returncode


if __name__ == "__main__":
    main(sys.argv[1])
