"""Clients that do the service no good: it serves the others all the same, and holds no memory for them."""

import contextlib
import resource
import socket
import threading
import time
import unittest
import urllib.parse
import urllib.request

from programs import BIN, PATIENCE, EndToEnd

IDLE = 10_000
DRIPPING = 1_000
DESCRIPTORS_FOR_OTHERS = 500


def allow_descriptors():
    """How many sockets this process may open."""
    _, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
    return most - DESCRIPTORS_FOR_OTHERS


def is_sanitized(program):
    return b"__asan_init" in (BIN / program).read_bytes()


class Crowd:
    """Connections that keep silent, and others that send a request's head byte by byte."""

    def __init__(self, address, idle, dripping):
        self.address = address
        self.over = threading.Event()
        self.idle = [self.connect() for _ in range(idle)]
        self.dripping = [self.connect() for _ in range(dripping)]
        self.thread = threading.Thread(target=self.drip)
        self.thread.start()

    def connect(self):
        return socket.create_connection(self.address, timeout=PATIENCE)

    def drip(self):
        while not self.over.wait(0.5):
            for place, connection in enumerate(self.dripping):
                try:
                    connection.send(b"G")
                except OSError:  # dropped, as it should be
                    connection.close()
                    self.dripping[place] = self.connect()

    def end(self):
        self.over.set()
        self.thread.join()
        for connection in self.idle + self.dripping:
            connection.close()


class CrowdTests(EndToEnd):

    @staticmethod
    def address_of(service):
        url = urllib.parse.urlsplit(service.url)
        return url.hostname, url.port

    def test_a_share_goes_through_a_crowd(self):
        room = allow_descriptors()
        idle = min(IDLE, room * IDLE // (IDLE + DRIPPING))
        service = self.service()
        crowd = Crowd(self.address_of(service), idle, idle * DRIPPING // IDLE)
        self.addCleanup(crowd.end)
        took = []
        for _ in range(50):
            began = time.monotonic()
            with urllib.request.urlopen(service.url + "/healthz", timeout=PATIENCE) as answer:
                self.assertEqual(answer.read(), b"ok")
            took.append(time.monotonic() - began)
        self.check_link(self.share(self.clip, service=service))
        print(f"{idle} idle connections, {len(crowd.dripping)} dripping heads: /healthz within "
              f"{max(took) * 1000:.0f} ms in each of {len(took)} requests", flush=True)

    @unittest.skipIf(is_sanitized("quillo-service"), "a sanitizer has memory of its own")
    def test_bodies_of_strangers_take_no_memory(self):
        service = self.service()
        status = f"/proc/{service.process.pid}/status"

        def kibibytes(what):
            with open(status, encoding="ascii") as file:
                return next(int(line.split()[1]) for line in file if line.startswith(what))

        def send(request, body):
            with socket.create_connection(self.address_of(service), timeout=PATIENCE) as connection:
                connection.sendall(request + b"\r\nHost: x\r\n\r\n")
                with contextlib.suppress(OSError):  # once the service has had enough
                    for _ in range(256):
                        connection.sendall(body)

        with urllib.request.urlopen(service.url + "/healthz", timeout=PATIENCE):
            before = kibibytes("VmRSS")
        large = b"\r\nContent-Length: 2147483648"
        chunk = b"10000\r\n" + bytes(1 << 16) + b"\r\n"
        requests = [
            (b"DELETE /v1/accounts HTTP/1.1" + large, bytes(1 << 16)),
            (b"FETCH /v1/accounts HTTP/1.1" + large, bytes(1 << 16)),
            (b"POST /v1/accounts HTTP/1.1\r\nContent-Encoding: gzip" + large, bytes(1 << 16)),
            (b"PATCH /v1/uploads/x HTTP/1.1\r\nTransfer-Encoding: chunked", chunk),
        ]
        clients = [threading.Thread(target=send, args=requests[i % 4]) for i in range(64)]
        for client in clients:
            client.start()
        for client in clients:
            client.join()
        grown = (kibibytes("VmHWM") - before) / 1024
        print(f"64 clients that send without a token: {grown:.1f} MiB more at the most", flush=True)
        self.assertLess(grown, 16)
