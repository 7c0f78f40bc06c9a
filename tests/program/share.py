"""A network share that can stop answering: a file system in this process, mounted where the test says.

    with StoppingShare({"film.mpg": "/path/of/film.mpg"}) as share:
        ...share.folder...
        share.stop()      # from now on nothing is answered
        share.go_on()

One flat folder of files that can only be read. Needs root and /dev/fuse: `available()` tells. Leaving the
block takes the mount away, and with it whatever still waits for an answer.
"""
import ctypes
import errno
import os
import shutil
import stat
import struct
import tempfile
import threading

LOOKUP, FORGET, GETATTR, OPEN, READ, STATFS, RELEASE, FLUSH, INIT, OPENDIR, READDIR, RELEASEDIR, INTERRUPT, BATCH_FORGET = (
    1, 2, 3, 14, 15, 17, 18, 25, 26, 27, 28, 29, 36, 42)
NO_REPLY = (FORGET, INTERRUPT, BATCH_FORGET)
ROOT = 1
MOUNT_FLAGS = 1 | 2 | 4    # read only, no set-user-id, no devices
DETACH = 2
LONGEST_HOLD = 120    # seconds
libc = ctypes.CDLL(None, use_errno=True)


def available():
    return os.geteuid() == 0 and os.access("/dev/fuse", os.R_OK | os.W_OK)


class StoppingShare:
    def __init__(self, files):
        self.names = list(files)
        self.paths = list(files.values())
        self.running = threading.Event()
        self.running.set()
        self.held = threading.Event()    # a request has met the stop
        self.folder = tempfile.mkdtemp(prefix="nuvid-share-")
        self.device = os.open("/dev/fuse", os.O_RDWR | os.O_CLOEXEC)
        options = f"fd={self.device},rootmode=40000,user_id=0,group_id=0,allow_other".encode()
        if libc.mount(b"share", self.folder.encode(), b"fuse", MOUNT_FLAGS, options) != 0:
            number = ctypes.get_errno()
            os.close(self.device)
            raise OSError(number, os.strerror(number))
        self.server = threading.Thread(target=self._serve, daemon=True)
        self.server.start()

    def stop(self):
        self.held.clear()
        self.running.clear()

    def go_on(self):
        self.running.set()

    def path(self, name):
        return os.path.join(self.folder, name)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.running.set()
        libc.umount2(self.folder.encode(), DETACH)
        self.server.join(5)
        os.close(self.device)
        shutil.rmtree(self.folder, ignore_errors=True)

    # --- the file system
    def _serve(self):
        while True:
            try:
                request = os.read(self.device, 1 << 20)
            except OSError as error:
                if error.errno in (errno.EINTR, errno.EAGAIN, errno.ENOENT):
                    continue
                return    # unmounted
            _, code, unique, node = struct.unpack_from("<IIQQ", request)
            if not self.running.is_set():
                self.held.set()
                self.running.wait(LONGEST_HOLD)    # a test that fails must still be able to end its player
            if code in NO_REPLY:
                continue
            answer = self._answer(code, node, request[40:])
            number, data = (-answer, b"") if isinstance(answer, int) else (0, answer)
            try:
                os.write(self.device, struct.pack("<IiQ", 16 + len(data), number, unique) + data)
            except OSError as error:
                if error.errno == errno.ENODEV:
                    return

    def _answer(self, code, node, body):
        if code == INIT:
            return struct.pack("<IIIIHHIIHHI", 7, 31, 1 << 17, 0, 16, 12, 1 << 17, 1, 0, 0, 0) + bytes(28)
        if code == LOOKUP:
            name = body.rstrip(b"\0").decode("utf-8", "surrogateescape")
            if name not in self.names:
                return errno.ENOENT
            number = self.names.index(name) + 2
            return struct.pack("<QQQQII", number, 0, 0, 0, 0, 0) + self._attributes(number)
        if code == GETATTR:
            return struct.pack("<QII", 0, 0, 0) + self._attributes(node)
        if code in (OPEN, OPENDIR):
            return struct.pack("<QII", 0, 0, 0)
        if code == READ:
            _, offset, size = struct.unpack_from("<QQI", body)
            with open(self.paths[node - 2], "rb") as file:
                file.seek(offset)
                return file.read(size)
        if code == READDIR:
            _, offset, size = struct.unpack_from("<QQI", body)
            return self._entries(offset, size)
        if code == STATFS:
            return struct.pack("<QQQQQIIII", 0, 0, 0, 0, 0, 4096, 255, 4096, 0) + bytes(24)
        if code in (RELEASE, RELEASEDIR, FLUSH):
            return b""
        return errno.ENOSYS

    def _attributes(self, node):
        if node == ROOT:
            size, mode = 0, stat.S_IFDIR | 0o755
        else:
            size, mode = os.path.getsize(self.paths[node - 2]), stat.S_IFREG | 0o444
        return struct.pack("<QQQQQQIIIIIIIIII", node, size, (size + 511) // 512, 0, 0, 0, 0, 0, 0, mode, 1, 0, 0, 0, 4096, 0)

    def _entries(self, offset, size):
        data = b""
        for number, name in list(enumerate(self.names))[offset:]:
            raw = os.fsencode(name)
            entry = struct.pack("<QQII", number + 2, number + 1, len(raw), stat.S_IFREG >> 12) + raw
            entry += bytes(-len(entry) % 8)
            if len(data) + len(entry) > size:
                break
            data += entry
        return data
