#!/usr/bin/env python3
"""batch_page.py <zconf> <scratch folder> [<folder for screenshots>]: a headless Chromium opens the report of a batch, sorts and
filters its table, and looks at what it shows. Exit code 77: there is no Chromium that starts."""

import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True

from job_page import SKIPPED, Browser, equal

HOSTILE = "x<img src=x onerror=document.title=1>.wav"

PRESET = '{"wav":{"container":"wav","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}'

JOBS = 5000

# The first cells of the rows that can be seen, in their order.
SHOWN = "[...document.querySelectorAll('table.jobs tbody tr')].filter(r => !r.hidden).map(r => r.cells[0].textContent).join(' ')"


def make_page(zconf, folder):
    """Job 1 is done, 2 is refused, 3 is done and larger, 4 fails since its output is there already."""
    for name, seconds in (("a.wav", "0.1"), ("c.wav", "0.3"), (HOSTILE, "0.2")):
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", f"sine=d={seconds}", "-c:a", "pcm_s16le",
                        "file:" + name], cwd=folder, check=True)
    (folder / "b.wav").write_text("not media")
    (folder / "wav.json").write_text(PRESET)
    (folder / "out").mkdir()
    (folder / "out" / HOSTILE).write_text("previous")
    subprocess.run([zconf, "batch", "new", "-p", "./wav.json", "--output-dir", "out", "-o", "batch", "a.wav", "b.wav", "c.wav",
                    HOSTILE], cwd=folder, check=True, capture_output=True)
    subprocess.run([zconf, "batch", "run", "batch"], cwd=folder, check=False, capture_output=True)
    subprocess.run([zconf, "batch", "report", "batch", "-o", "report.html"], cwd=folder, check=True)


def choose(browser, selector, value, event):
    browser.ask(f"(() => {{ const e = document.querySelector({selector!r}); e.value = {value!r};"
                f"e.dispatchEvent(new Event({event!r})); }})()")


def sort_by(browser, column):
    browser.click(f"table.jobs th:nth-child({column}) button")


def look_at_sorting(browser):
    browser.expect(SHOWN, "1 2 3 4")
    # By size after, where what is not known comes last in both directions.
    sort_by(browser, 8)
    browser.expect(SHOWN, "1 3 2 4")
    browser.expect("document.querySelector('th:nth-child(8)').getAttribute('aria-sort')", "ascending")
    sort_by(browser, 8)
    browser.expect(SHOWN, "3 1 2 4")
    browser.expect("[...document.querySelectorAll('th[aria-sort]')].map(h => h.getAttribute('aria-sort'))", ["descending"])
    sort_by(browser, 2)
    browser.expect(SHOWN, "1 3 4 2")
    sort_by(browser, 1)
    browser.expect(SHOWN, "1 2 3 4")


def look_at_filtering(browser):
    browser.expect("document.querySelector('#count').textContent", "4 of 4 jobs")
    browser.expect("[...document.querySelector('#state').options].map(o => o.textContent)", ["all", "done", "failed", "refused"])
    choose(browser, "#state", "failed", "change")
    browser.expect(SHOWN, "4")
    choose(browser, "#state", "done", "change")
    browser.expect(SHOWN, "1 3")
    choose(browser, "#search", "C.WAV", "input")
    browser.expect(SHOWN, "3")
    browser.expect("document.querySelector('#count').textContent", "1 of 4 jobs")
    # A link to a row that is filtered out shows all rows again.
    browser.click("#details-2 h3 a")
    browser.expect("location.hash", "#job-2")
    browser.expect(SHOWN, "1 2 3 4")


def look_at_texts(browser):
    browser.expect("document.querySelector('.verdict').textContent",
                   "4 jobs: 2 done, 1 failed, 1 refused. Not all that could be planned is done.")
    browser.expect("document.querySelector('#job-4').cells[2].textContent", "../" + HOSTILE)
    browser.expect("document.querySelector('#details-4 .bad').textContent.includes('exists already')", True)
    browser.expect("document.title", "batch")
    browser.expect("[document.scripts.length, document.images.length, document.styleSheets.length]", [1, 0, 1])
    browser.expect("document.documentElement.scrollWidth > innerWidth", False)


def look_without_script(browser, folder):
    """Whoever forbids scripts reads the same, and sees no control that would do nothing."""
    browser.call("Emulation.setScriptExecutionDisabled", value=True)
    browser.open(folder / "report.html")
    browser.expect(SHOWN, "1 2 3 4")
    browser.expect("document.querySelectorAll('button, select, input').length", 0)
    browser.call("Emulation.setScriptExecutionDisabled", value=False)


def look_at_thousands(browser, folder):
    """Rows enough for a large library are sorted while one waits."""
    html = (folder / "report.html").read_text()
    first, last = (re.search(rf'<tr id="job-{n}">.*?</tr>', html).group() for n in (1, 4))
    rows = [first.replace('"job-1"', f'"job-{n}"').replace('data-key="1">1<', f'data-key="{n}">{n}<').replace("a.wav", f"{n * 7919 % JOBS}.wav")
            for n in range(5, JOBS + 1)]
    (folder / "many.html").write_text(html.replace(last, "\n".join([last, *rows])))
    browser.open(folder / "many.html")
    count = "document.querySelector('#count').textContent"
    browser.expect(count, f"{JOBS} of {JOBS} jobs, the first 200 are shown")
    slowest = 0
    for column in (1, 3, 8, 8):
        slowest = max(slowest, browser.seconds(f"document.querySelector('th:nth-child({column}) button').click(), document.body.offsetHeight"))
    print(f"{JOBS} rows are sorted in {slowest:.2f} s of a processor")
    # It takes a third of that, and took six times as much when each row was laid out.
    equal(slowest < 0.5, True)
    sort_by(browser, 3)
    browser.expect("[...document.querySelectorAll('table.jobs tbody tr')].slice(0, 3).map(r => r.cells[2].textContent)",
                   ["../0.wav", "../1.wav", "../2.wav"])
    choose(browser, "#search", "4321.wav", "input")
    browser.expect(count, f"1 of {JOBS} jobs")
    # Whoever asks for a row sees it, whether it is among the first ones or not.
    browser.ask("location.hash = '#job-2'")
    browser.expect("document.querySelector('#job-2').hidden", False)
    browser.expect(count, f"{JOBS} of {JOBS} jobs, the first 200 are shown")
    browser.ask("scrollTo(0, 0)")
    browser.click("#all")
    browser.expect(count, f"{JOBS} of {JOBS} jobs")
    browser.expect("document.querySelectorAll('table.jobs tbody tr:not([hidden])').length", JOBS)
    browser.expect("getComputedStyle(document.querySelector('#all')).display", "none")
    sort_by(browser, 1)
    browser.expect("document.querySelectorAll('table.jobs tbody tr:not([hidden])').length", 200)
    # On paper, there is nothing to click on.
    browser.ask("dispatchEvent(new Event('beforeprint'))")
    browser.expect("document.querySelectorAll('table.jobs tbody tr:not([hidden])').length", JOBS)


def take_screenshots(browser, folder, pictures):
    for is_dark in (False, True):
        browser.dark(is_dark)
        browser.open(folder / "report.html")
        browser.screenshot(Path(pictures) / ("report_dark.png" if is_dark else "report.png"))


def main():
    zconf, folder = sys.argv[1], Path(sys.argv[2])
    if shutil.which("chromium") is None:
        print("chromium is not installed")
        return SKIPPED
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    make_page(zconf, folder)
    browser = Browser(folder / "profile")
    try:
        try:
            browser.attach()
        except (EOFError, BrokenPipeError):
            print("chromium does not start")
            return SKIPPED
        browser.open(folder / "report.html")
        look_at_texts(browser)
        look_at_sorting(browser)
        look_at_filtering(browser)
        look_at_thousands(browser, folder)
        look_without_script(browser, folder)
        equal(browser.problems, [])
        if len(sys.argv) > 3:
            take_screenshots(browser, folder, sys.argv[3])
    finally:
        browser.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
