"""Requests that no well-behaved client would send."""

import json
import socket

from service import PATIENCE


class Answer:
    def __init__(self, text):
        head, _, body = text.partition(b"\r\n\r\n")
        lines = head.decode("latin-1").split("\r\n")
        self.status = int(lines[0].split(" ")[1])
        self.headers = {name.strip().lower(): value.strip()
                        for name, _, value in (line.partition(":") for line in lines[1:])}
        self.body = body

    @property
    def error(self):
        """The named error, which has all of its parts."""
        error = json.loads(self.body)["error"]
        assert error["name"] and error["code"] and error["sentence"] and error["remedy"]
        return error


class Connection:
    def __init__(self, service, patience=PATIENCE):
        self.port = service.port
        self.socket = socket.create_connection(("127.0.0.1", service.port), timeout=patience)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, text):
        self.socket.sendall(text if isinstance(text, bytes) else text.encode())

    def request(self, method, path, body=b"", **headers):
        """Whole, with header names given with underscores; None leaves a header out."""
        fields = {"Host": f"127.0.0.1:{self.port}"}
        if body:
            fields |= {"Content-Type": "application/json", "Content-Length": len(body)}
        fields |= {name.replace("_", "-"): value for name, value in headers.items()}
        lines = [f"{name}: {value}" for name, value in fields.items() if value is not None]
        self.send(f"{method} {path} HTTP/1.1\r\n" + "\r\n".join(lines) + "\r\n\r\n")
        if body:
            self.send(body)

    def receive(self):
        """The next answer; None when the connection was closed without one."""
        text = b""
        while b"\r\n\r\n" not in text:
            some = self.receive_some()
            if not some:
                return None
            text += some
        length = int(Answer(text).headers.get("content-length", 0))
        while len(text.partition(b"\r\n\r\n")[2]) < length:
            some = self.receive_some()
            if not some:
                break
            text += some
        return Answer(text)

    def receive_some(self):
        try:
            return self.socket.recv(65536)
        except ConnectionError:
            return b""


def ask(service, method, path, body=b"", **headers):
    """One request on a connection of its own."""
    with Connection(service) as one:
        try:
            one.request(method, path, body, **headers)
        except ConnectionError:
            pass  # it was answered before all of it was sent
        return one.receive()
