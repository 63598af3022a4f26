#!/usr/bin/env python3
"""job_page.py <zconf> <scratch folder> [<folder for screenshots>]: a headless Chromium opens pages of jobs, clicks on a
node, and looks at what it shows. Exit code 77: there is no Chromium that starts."""

import base64
import json
import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

SKIPPED = 77

HOSTILE = '</script><script>document.title = "run"</script><!-- <img src="x" onerror="document.title = 1"> javascript:x'


class Browser:
    """Chromium, driven through the pipes of its debugging protocol."""

    def __init__(self, profile):
        to_browser, self.output = os.pipe()
        self.input, from_browser = os.pipe()
        # The protocol has the descriptors 3 and 4, which the shell gives the two pipes.
        self.process = subprocess.Popen(
            ["bash", "-c", f'exec 3<&{to_browser} 4>&{from_browser}; exec "$@"', "-", "chromium", "--headless",
             "--no-sandbox", "--disable-gpu", "--disable-extensions", "--no-first-run", "--remote-debugging-pipe", "--window-size=1500,1000",
             f"--user-data-dir={profile}", "about:blank"],
            pass_fds=(to_browser, from_browser), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.buffer = b""
        self.count = 0
        self.session = None
        self.problems = []

    def read(self):
        while b"\0" not in self.buffer:
            block = os.read(self.input, 1 << 16)
            if not block:
                raise EOFError("Chromium has ended")
            self.buffer += block
        text, _, self.buffer = self.buffer.partition(b"\0")
        message = json.loads(text)
        if message.get("method") in ("Runtime.exceptionThrown", "Log.entryAdded", "Runtime.consoleAPICalled"):
            self.problems.append(message["params"])
        return message

    def call(self, method, **parameters):
        self.count += 1
        message = {"id": self.count, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.output, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.read()
            if answer.get("id") == self.count:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def attach(self):
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")

    def open(self, path):
        self.call("Page.navigate", url=path.resolve().as_uri())
        while self.read().get("method") != "Page.loadEventFired":
            pass

    def ask(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        assert "exceptionDetails" not in result, result
        return result["result"].get("value")

    def expect(self, expression, expected):
        """That this is so, or becomes so soon: what follows a click comes after it."""
        end = time.monotonic() + 10
        while (found := self.ask(expression)) != expected:
            if time.monotonic() > end:
                raise AssertionError(f"{expression}: found {found!r}, expected {expected!r}")
            time.sleep(0.02)

    def click(self, selector):
        """With the mouse, in the middle of what is shown."""
        box = self.ask(f"(() => {{ const b = document.querySelector({selector!r}).getBoundingClientRect();"
                       "return [b.x + b.width / 2, b.y + b.height / 2]; })()")
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=box[0], y=box[1], button="left", clickCount=1)

    def press(self, key):
        for kind in ("keyDown", "keyUp"):
            text = {"text": "\r"} if key == "Enter" and kind == "keyDown" else {}
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key,
                      windowsVirtualKeyCode={"Tab": 9, "Enter": 13, "Escape": 27}[key], **text)

    def seconds(self, expression):
        """What the page takes of a processor to do it, however busy the machine is."""
        self.call("Performance.enable", timeDomain="threadTicks")
        before = self.metric("TaskDuration")
        self.ask(expression)
        return self.metric("TaskDuration") - before

    def metric(self, name):
        return next(m["value"] for m in self.call("Performance.getMetrics")["metrics"] if m["name"] == name)

    def dark(self, is_dark):
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": "dark" if is_dark else "light"}])

    def screenshot(self, path):
        path.write_bytes(base64.b64decode(self.call("Page.captureScreenshot", captureBeyondViewport=False)["data"]))

    def close(self):
        self.process.kill()
        self.process.wait()


def equal(found, expected):
    if found != expected:
        raise AssertionError(f"found {found!r}, expected {expected!r}")


# The headings of the records that can be seen.
SHOWN = ("[...document.querySelectorAll('.record')].filter(r => getComputedStyle(r).display !== 'none')"
         ".map(r => r.querySelector('h3').textContent)")
MARKED = "[...document.querySelectorAll('svg a[aria-current]')].map(a => a.getAttribute('href'))"

ALL = ["Node 1: source", "Node 2: target", "Node 3: streamRaw", "Link 1 -> 3: no record", "Link 3 -> 2: format_codec_audio"]


def make_pages(zconf, folder):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.2", "-c:a", "pcm_s16le", "in.wav"],
                   cwd=folder, check=True)

    def job(title, bitrate):
        return {"vertices": [
            {"id": 1, "data": {"data": {"source": {"$$TYPE_ID$$": "sourceFile", "filePath": "in.wav"}}}},
            {"id": 2, "data": {"data": {"target": {"container": "mp3", "filePath": "out.mp3", "metadata": {"title": title}}}}},
            {"id": 3, "data": {"data": {"streamRaw": {"id": 0}}}}],
            "edges": [{"id": 1, "from": 1, "to": 3},
                      {"id": 2, "from": 3, "to": 2, "data": {"data": {"format_codec_audio": {
                          "codec_id": "CODEC_ID_MP3", "bitrate": bitrate, "sample_rate": 44100, "layout": "MONO"}}}}]}

    for name, contents in (("good", job("Holiday", 128000)), ("faulty", job(HOSTILE, "fast"))):
        (folder / f"{name}.json").write_text(json.dumps(contents))
        subprocess.run([zconf, "job", "draw", f"{name}.json", "-o", f"{name}.html"], cwd=folder, check=True)


def look_at_good(browser, folder):
    browser.open(folder / "good.html")
    browser.expect("document.title", "good.json")
    browser.expect("document.querySelector('.verdict').textContent", "3 nodes and 2 links. It can be run.")
    browser.expect("document.querySelectorAll('.faulty').length", 0)
    browser.expect(SHOWN, ALL)
    browser.expect("getComputedStyle(document.body).backgroundColor", "rgb(255, 255, 255)")
    browser.expect("[...document.querySelectorAll('tr.same th, tr.changed th')].map(t => t.textContent)",
          ["container", "codec_id", "bitrate", "sample_rate", "layout"])

    # A click shows a record; Escape shows all of them again.
    browser.click("svg a[href='#node-2'] rect")
    browser.expect("location.hash", "#node-2")
    browser.expect(SHOWN, ["Node 2: target"])
    browser.expect(MARKED, ["#node-2"])
    browser.expect("document.getElementById('node-2').innerText.includes('Holiday')", True)
    browser.press("Escape")
    browser.expect(SHOWN, ALL)

    # A link without a record has only a line to click on. Its middle is halfway between the boxes.
    browser.click("svg a[href='#link-1-to-3'] .reach")
    browser.expect(SHOWN, ["Link 1 -> 3: no record"])

    # The keyboard does the same, and goes on with the links of the record.
    browser.ask("document.querySelector(\"svg a[href='#link-3-to-2']\").focus()")
    browser.press("Enter")
    browser.expect(SHOWN, ["Link 3 -> 2: format_codec_audio"])
    browser.press("Tab")
    browser.expect("[document.activeElement.closest('.record')?.id, document.activeElement.getAttribute('href')]",
          ["link-3-to-2", "#node-3"])

    browser.dark(True)
    browser.expect("getComputedStyle(document.body).backgroundColor", "rgb(22, 25, 27)")
    browser.dark(False)


def look_at_faulty(browser, folder):
    browser.open(folder / "faulty.html")
    browser.expect("document.title", "faulty.json")
    browser.expect("document.querySelector('.verdict .bad').textContent", "It cannot be run: 1 fault.")
    browser.expect("document.querySelector('#fault-1').textContent",
          "link 3 -> 2, audio stream 0, bitrate: expected an integer from 1 to 2147483647, found 'fast'")
    browser.expect("[...document.querySelectorAll('svg .faulty')].map(a => a.getAttribute('href'))", ["#link-3-to-2"])
    browser.click("#fault-1 a")
    browser.expect(SHOWN, ["Link 3 -> 2: format_codec_audio"])
    # Texts are shown as they are, and nothing of them runs or is there.
    browser.click("svg a[href='#node-2'] rect")
    browser.expect(f"document.getElementById('node-2').textContent.includes({json.dumps(HOSTILE)})", True)
    browser.expect("[document.scripts.length, document.images.length, document.styleSheets.length]", [1, 0, 1])


def look_without_script(browser, folder):
    """Whoever forbids scripts reads the same."""
    browser.call("Emulation.setScriptExecutionDisabled", value=True)
    browser.open(folder / "good.html")
    browser.click("svg a[href='#node-3'] rect")
    browser.expect(SHOWN, ["Node 3: streamRaw"])
    browser.expect(MARKED, [])
    browser.call("Emulation.setScriptExecutionDisabled", value=False)


def look_at_policy(browser, folder):
    """What is not the page's own does not run, even if it came into the page."""
    page = (folder / "good.html").read_text()
    (folder / "changed.html").write_text(
        page.replace("<main>", "<main><script>document.title = 'run';</script><img src='x.png' onerror='document.title = 2'/>"))
    browser.problems.clear()
    browser.open(folder / "changed.html")
    browser.expect("document.title", "good.json")
    equal(len([p for p in browser.problems if "Content Security Policy" in json.dumps(p)]) >= 2, True)
    browser.problems.clear()


def take_screenshots(browser, folder, pictures):
    for name, fragment, is_dark in (("good", "node-2", False), ("faulty", "link-3-to-2", True)):
        browser.dark(is_dark)
        browser.open(folder / f"{name}.html")
        browser.click(f"svg a[href='#{fragment}'] rect")
        browser.screenshot(Path(pictures) / f"{name}.png")


def main():
    zconf, folder = sys.argv[1], Path(sys.argv[2])
    if shutil.which("chromium") is None:
        print("chromium is not installed")
        return SKIPPED
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    make_pages(zconf, folder)
    browser = Browser(folder / "profile")
    try:
        try:
            browser.attach()
        except (EOFError, BrokenPipeError):
            print("chromium does not start")
            return SKIPPED
        look_at_good(browser, folder)
        look_at_faulty(browser, folder)
        look_without_script(browser, folder)
        equal(browser.problems, [])
        look_at_policy(browser, folder)
        if len(sys.argv) > 3:
            take_screenshots(browser, folder, sys.argv[3])
    finally:
        browser.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
