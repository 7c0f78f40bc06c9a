"""A real browser without a window, driven over its debugging port."""
import contextlib
import http.client
import json
import re
import shutil
import subprocess
import tempfile
import time

import nuvid
from websocket import WebSocket

PROGRAM = next((path for path in map(shutil.which, ("chromium", "chromium-browser", "google-chrome")) if path), None)


class Browser:
    """One page. `size` is that of a phone's screen in CSS pixels."""

    def __init__(self, size=(390, 844)):
        self.folder = tempfile.mkdtemp(prefix="nuvid-browser-")
        self.process = subprocess.Popen(
            [PROGRAM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
             "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--disable-extensions", "--no-default-browser-check",
             "--remote-debugging-port=0", f"--user-data-dir={self.folder}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.number = 0
        self.events = []
        try:
            port = self._port()
            link = http.client.HTTPConnection("127.0.0.1", port, timeout=20)
            link.request("GET", "/json/list")
            pages = [page for page in json.load(link.getresponse()) if page["type"] == "page"]
            link.close()
            self.link = WebSocket("127.0.0.1", port, re.sub(r"^ws://[^/]+", "", pages[0]["webSocketDebuggerUrl"]), seconds=20)
            for domain in ("Page", "Runtime", "Network", "Log"):
                self.ask(f"{domain}.enable")
            self.resize(size)
        except BaseException:
            self.close()
            raise

    def _port(self):
        for line in self.process.stderr:
            found = re.search(r"ws://127\.0\.0\.1:(\d+)/", line)
            if found:
                return int(found.group(1))
        raise AssertionError("the browser does not start")

    def ask(self, method, **parameters):
        self.number += 1
        self.link.send(json.dumps({"id": self.number, "method": method, "params": parameters}))
        deadline = time.monotonic() + 30 * nuvid.SLOW
        while time.monotonic() < deadline:
            message = json.loads(self.link.receive(30 * nuvid.SLOW)[1] or b"{}")
            if message.get("id") == self.number:
                assert "error" not in message, message
                return message["result"]
            self.events.append(message)
        raise AssertionError(f"no answer to {method}")

    def resize(self, size):
        self.ask("Emulation.setDeviceMetricsOverride", width=size[0], height=size[1], deviceScaleFactor=2, mobile=True)
        self.ask("Emulation.setTouchEmulationEnabled", enabled=True)

    def open(self, address):
        self.ask("Page.navigate", url=address)

    def value(self, expression):
        """What a script's expression gives; promises are waited for."""
        answer = self.ask("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        assert "exceptionDetails" not in answer, answer["exceptionDetails"]
        return answer["result"].get("value")

    def wait(self, expression, seconds=15):
        patient = f"(() => {{ try {{ return {expression}; }} catch {{ return null; }} }})()"    # the page may still be loading
        return nuvid.wait_for(lambda: self.value(patient), seconds, lambda: f"{expression}\n{self.value('document.body.innerText')}\n{self.troubles()}")

    def box(self, selector):
        """Left, top, width and height of an element on the page."""
        return self.value(f"(() => {{ const b = document.querySelector({json.dumps(selector)}).getBoundingClientRect(); return [b.x, b.y, b.width, b.height]; }})()")

    def touch(self, selector):
        """A finger on the middle of an element."""
        x, y, width, height = self.box(selector)
        at = [{"x": x + width / 2, "y": y + height / 2}]
        self.ask("Input.dispatchTouchEvent", type="touchStart", touchPoints=at)
        self.ask("Input.dispatchTouchEvent", type="touchEnd", touchPoints=[])

    def type(self, text):
        for character in text:
            self.ask("Input.dispatchKeyEvent", type="keyDown", text=character, key=character)
            self.ask("Input.dispatchKeyEvent", type="keyUp", key=character)

    def troubles(self):
        """What the page complained of: errors of scripts, refused requests."""
        found = []
        for event in self.events:
            parameters = event.get("params", {})
            if event.get("method") == "Runtime.exceptionThrown":
                found.append(parameters["exceptionDetails"].get("exception", {}).get("description", "exception"))
            elif event.get("method") == "Log.entryAdded" and parameters["entry"]["level"] == "error":
                found.append(parameters["entry"]["text"])
        return found

    def addresses(self):
        """Everything that was asked for over the network."""
        return {event["params"]["request"]["url"] for event in self.events if event.get("method") == "Network.requestWillBeSent"}

    def close(self):
        with contextlib.suppress(Exception):
            self.link.close()
        self.process.kill()
        self.process.wait()
        self.process.stderr.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
