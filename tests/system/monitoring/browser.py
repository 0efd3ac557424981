"""A browser without a window, which tests ask over the pipes of its debugging protocol."""

import base64
import json
import os
import subprocess


class Browser:
    def __init__(self, profile):
        commands, self._commands = os.pipe()
        self._answers, answers = os.pipe()
        # The browser takes commands from descriptor 3 and answers on 4. Below 10 they could be each other's place.
        script = f"exec 3<&{commands} 4>&{answers}; exec \"$@\""
        self._process = subprocess.Popen(
            ["bash", "-c", script, "bash", "chromium", "--headless=new", "--no-sandbox", "--disable-gpu",
             "--hide-scrollbars", "--disable-dev-shm-usage", f"--user-data-dir={profile}",
             "--remote-debugging-pipe"],
            pass_fds=(commands, answers), stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self._answers = os.fdopen(self._answers, "rb")
        self._session = {}
        self._number = 0

    def close(self):
        self._process.kill()
        self._process.wait()
        os.close(self._commands)
        self._answers.close()

    def open(self, url):
        target = self._call("Target.createTarget", url=url)["targetId"]
        session = self._call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        self._session = {"sessionId": session}

    def resize(self, width, height, scheme="light"):
        self._call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                   mobile=width < 600)
        self._call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def evaluate(self, expression):
        return self._call("Runtime.evaluate", expression=expression, returnByValue=True)["result"].get("value")

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._call("Page.captureScreenshot")["data"]))

    def _call(self, method, **parameters):
        self._number += 1
        message = {"id": self._number, "method": method, "params": parameters, **self._session}
        os.write(self._commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = json.loads(self._read())
            if answer.get("id") == self._number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]

    def _read(self):
        text = b""
        while not text.endswith(b"\0"):
            byte = self._answers.read(1)
            if not byte:
                raise RuntimeError("the browser has ended")
            text += byte
        return text[:-1]
