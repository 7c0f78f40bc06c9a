"""A WebSocket client of the plain kind (RFC 6455), for the phone remote and for driving a browser."""
import base64
import os
import socket
import struct
import time

TEXT, BINARY, CLOSE, PING, PONG = 1, 2, 8, 9, 10


class Refused(Exception):
    """The answer to the handshake was not 101; `status` is what it was."""

    def __init__(self, status):
        super().__init__(f"status {status}")
        self.status = status


class WebSocket:
    def __init__(self, host, port, path, fields=(), seconds=10):
        self.socket = socket.create_connection((host, port), timeout=seconds)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        key = base64.b64encode(os.urandom(16)).decode()
        lines = [f"GET {path} HTTP/1.1", "Upgrade: websocket", "Connection: Upgrade", f"Sec-WebSocket-Key: {key}", "Sec-WebSocket-Version: 13"]
        names = {name.lower() for name, _ in fields}
        if "host" not in names:
            lines.append(f"Host: {host}:{port}")
        lines += [f"{name}: {value}" for name, value in fields]
        self.socket.sendall(("\r\n".join(lines) + "\r\n\r\n").encode("latin-1"))
        self.got = b""
        while b"\r\n\r\n" not in self.got:
            piece = self.socket.recv(4096)
            if not piece:
                break
            self.got += piece
        head, _, self.got = self.got.partition(b"\r\n\r\n")
        status = head.split(b"\r\n")[0].split()
        if len(status) < 2 or status[1] != b"101":
            self.close()
            raise Refused(int(status[1]) if len(status) > 1 else 0)

    def send(self, payload, opcode=TEXT):
        data = payload.encode() if isinstance(payload, str) else payload
        mask = os.urandom(4)
        size = len(data)
        head = bytes([0x80 | opcode])
        if size < 126:
            head += bytes([0x80 | size])
        elif size < 65536:
            head += bytes([0x80 | 126]) + struct.pack(">H", size)
        else:
            head += bytes([0x80 | 127]) + struct.pack(">Q", size)
        repeated = mask * (size // 4 + 1)
        masked = (int.from_bytes(data, "big") ^ int.from_bytes(repeated[:size], "big")).to_bytes(size, "big")
        self.socket.sendall(head + mask + masked)

    def _frame(self):
        """The first whole frame of what has come, as (head, payload); None while there is none."""
        if len(self.got) < 2:
            return None
        at, size = 2, self.got[1] & 127
        if size >= 126:
            at = 4 if size == 126 else 10
            if len(self.got) < at:
                return None
            size = int.from_bytes(self.got[2:at], "big")
        if len(self.got) < at + size:
            return None
        head, payload, self.got = self.got[0], self.got[at:at + size], self.got[at + size:]
        return head, payload

    def receive(self, seconds=10):
        """The next message as (opcode, bytes); (CLOSE, b"") at the end. Pieces are put together, pings answered. After a
        TimeoutError nothing is lost."""
        whole, kind = b"", 0
        deadline = time.monotonic() + seconds
        while True:
            frame = self._frame()
            if frame is None:
                self.socket.settimeout(max(0.001, deadline - time.monotonic()))
                piece = self.socket.recv(65536)
                if not piece:
                    return CLOSE, b""
                self.got += piece
                continue
            head, payload = frame
            opcode = head & 15
            if opcode == PING:
                self.send(payload, PONG)
            elif opcode == CLOSE:
                return CLOSE, payload
            elif opcode != PONG:
                kind = opcode or kind
                whole += payload
                if head & 0x80:
                    return kind, whole

    def close(self):
        self.socket.close()
