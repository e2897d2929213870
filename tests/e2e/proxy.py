"""A proxy before a service, at which a test stops what goes through."""

import os
import pathlib
import re
import socket
import threading

from programs import local_user_secret_file

REQUEST = re.compile(rb"(POST|PATCH|PUT|DELETE|HEAD) (\S+) HTTP/1\.1\r\n")


class Proxy:
    """Passes bytes on, and calls `on_request(method, path)` before each request that may change something. Its answer,
    if it is a function, is called in place of passing on the service's answer to that request."""

    def __init__(self, service):
        self.upstream = int(service.url.rsplit(":", 1)[1])
        self.on_request = lambda method, path: None
        self.listener = socket.create_server(("127.0.0.1", 0))
        port = self.listener.getsockname()[1]
        self.url = f"http://127.0.0.1:{port}"
        # The service trusts its user by a secret that is found by the port.
        secret = local_user_secret_file(service.url)
        self.secret = secret.parent.parent / str(port) / secret.name
        self.secret.parent.mkdir(mode=0o700)
        self.secret.touch(mode=0o600)
        self.secret.write_text(secret.read_text())
        threading.Thread(target=self._accept, daemon=True).start()

    def stop(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        self.secret.unlink()
        self.secret.parent.rmdir()

    def _accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            server = socket.create_connection(("127.0.0.1", self.upstream))
            state = {"instead": None}
            threading.Thread(target=self._to_service, args=(client, server, state), daemon=True).start()
            threading.Thread(target=self._to_client, args=(client, server, state), daemon=True).start()

    def _to_service(self, client, server, state):
        with client:
            try:
                while data := client.recv(1 << 16):
                    # A request begins a piece: the client sends none before it has the answer to the last one.
                    if match := REQUEST.match(data):
                        state["instead"] = self.on_request(match[1].decode(), match[2].decode())
                    server.sendall(data)
            except OSError:
                pass
            try:
                server.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    @staticmethod
    def _to_client(client, server, state):
        with server:
            try:
                while data := server.recv(1 << 16):
                    if instead := state["instead"]:
                        instead()
                        return
                    client.sendall(data)
            except OSError:
                pass
            try:
                client.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
