"""A stand-in server for what a real application does not do on request:
another protocol version, no greeting, a last word before dropping."""

import json
import socket
import threading
from typing import List, Optional


class FakeServer:
    """Listens at ``path``; greets with ``greeting`` (None: not at all),
    keeps the request lines it reads, answers each ``line`` OK unless
    ``answer`` is False."""

    def __init__(self, path: str, greeting: Optional[dict] = None, answer: bool = True):
        self.path = path
        self.greeting = greeting
        self.answer = answer
        self.requests = []  # type: List[dict]
        self.connection = None  # type: Optional[socket.socket]
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._listener.bind(path)
        self._listener.listen(1)
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def _serve(self) -> None:
        self.connection, _ = self._listener.accept()
        if self.greeting is not None:
            self.send({"vantix": self.greeting})
        with self.connection.makefile("rb") as reader:
            for line in reader:
                request = json.loads(line)
                self.requests.append(request)
                if self.answer:
                    self.send({"id": request["id"], "ok": True, "text": "OK"})

    def send(self, message: dict) -> None:
        assert self.connection is not None
        self.connection.sendall(json.dumps(message).encode() + b"\n")

    def close(self) -> None:
        if self.connection is not None:
            # The reader's file keeps the socket open; shutting it down ends it for the client.
            self.connection.shutdown(socket.SHUT_RDWR)
            self.connection.close()
        self._listener.close()


GREETING = {"application": "fake", "capabilities": ["line", "describe", "events", "log", "cancel"], "pid": 1,
            "platform": "PT_TOLVEX", "platformName": "tolvex", "protocol": 1, "version": "0"}
