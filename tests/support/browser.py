"""A page of a headless Chromium, controlled through its DevTools protocol."""
import base64
import json
import os
import subprocess
import time
import urllib.request

import websocket

LIMIT_S = 60


class Browser:
    """One page of a separate Chromium process, controlled through its DevTools protocol."""

    def __init__(self, directory):
        self.errors = []
        self.requests = []  # addresses, once the domain Network is enabled
        self.count = 0
        self.directory = directory
        profile = os.path.join(directory, "profile")
        self.process = subprocess.Popen(
            ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run",
             "--disable-dev-shm-usage", "--disable-background-networking", "--mute-audio",
             "--remote-debugging-port=0", "--remote-allow-origins=*",
             "--user-data-dir=" + profile, "about:blank"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        port_file = os.path.join(profile, "DevToolsActivePort")
        port = until("Chromium starts", lambda: self.port_in(port_file))
        pages = json.load(urllib.request.urlopen(f"http://127.0.0.1:{port}/json"))
        page = next(page for page in pages if page["type"] == "page")
        self.socket = websocket.create_connection(page["webSocketDebuggerUrl"], timeout=LIMIT_S)
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")

    @staticmethod
    def port_in(path):
        if not os.path.exists(path):
            return None
        with open(path, encoding="ascii") as file:
            lines = file.read().splitlines()
        return lines[0] if len(lines) > 1 else None

    def call(self, method, **parameters):
        self.count += 1
        self.socket.send(json.dumps({"id": self.count, "method": method, "params": parameters}))
        while True:
            message = json.loads(self.socket.recv())
            self.note(message)
            if message.get("id") == self.count:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]

    def note(self, message):
        method, parameters = message.get("method"), message.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.errors.append(str(parameters["exceptionDetails"]))
        if method == "Runtime.consoleAPICalled" and parameters["type"] in ("error", "warning"):
            self.errors.append(str(parameters["args"]))
        if method == "Network.requestWillBeSent":
            self.requests.append(parameters["request"]["url"])
        if method == "Log.entryAdded" and parameters["entry"]["level"] in ("error", "warning"):
            self.errors.append(parameters["entry"]["text"])

    def open(self, url):
        """Navigates to a page and waits until it has loaded."""
        self.call("Page.navigate", url=url)
        until(url, lambda: self.value(f"location.href === {json.dumps(url)} && document.readyState === 'complete'"))

    def value(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(expression + ": " + str(result["exceptionDetails"]))
        return result["result"].get("value")

    def press(self, key, code):
        text = {"text": "\r"} if key == "Enter" else {}
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key,
                      windowsVirtualKeyCode=code, **(text if kind == "keyDown" else {}))

    def look(self, width, height, scheme):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

    def shoot(self, name):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        with open(os.path.join(self.directory, name + ".png"), "wb") as file:
            file.write(base64.b64decode(data))

    def close(self):
        self.socket.close()
        self.process.terminate()
        self.process.wait()


class Failed(Exception):
    """A check failed."""


def until(what, found):
    """Waits until `found()` returns a true value, and returns it."""
    deadline = time.monotonic() + LIMIT_S
    while time.monotonic() < deadline:
        result = found()
        if result:
            return result
        time.sleep(0.02)
    raise Failed(f"{what}: not within {LIMIT_S} s")


def check(what, is_so):
    if not is_so:
        raise Failed(what)
