#!/usr/bin/python3
"""Operates the panel page in headless Chromium, as an operator would.

panel_page.py ADDRESS CVNSIM DIRECTORY: ADDRESS is the output of `cvnsim panel`, CVNSIM a command line
that changes the same board, DIRECTORY receives the browser's files and the screenshots. HDMI port 0 of
the board sends bars to the main window. Prints all failures and exits with status 1 if there are any.
"""
import os
import subprocess
import sys
import urllib.error
import urllib.request

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from browser import Browser, Failed, check, until  # noqa: E402


def color(browser, x, y):
    """A pixel of the picture on the page, such as [255, 0, 0]; empty before the first picture."""
    return browser.value(f"""(() => {{
        const image = document.getElementById('picture');
        if (!image || !image.complete || image.naturalWidth !== 960) return [];
        const canvas = document.createElement('canvas');
        canvas.width = 960;
        canvas.height = 540;
        const context = canvas.getContext('2d');
        context.drawImage(image, 0, 0);
        return [...context.getImageData({x}, {y}, 1, 1).data].slice(0, 3);
    }})()""")


FOCUSABLE = "a[href], button, input, select, summary, [tabindex='0']"


def reaches_all(browser):
    """Steps through the page with Tab and returns the elements that cannot be reached."""
    browser.value(f"""
        window.reached = new Set();
        document.addEventListener('focusin', (event) => window.reached.add(event.target));
        window.wanted = [...document.querySelectorAll("{FOCUSABLE}")].filter(
            (one) => one.checkVisibility() && !one.disabled);
        document.activeElement.blur();""")
    for _ in range(browser.value("window.wanted.length") + 5):
        browser.press("Tab", 9)
    return browser.value("""window.wanted.filter((one) => !window.reached.has(one)).map(
        (one) => one.outerHTML.slice(0, 80))""")


def button(label):
    return f"document.querySelector('button[aria-label=\"{label}\"]')"


def answer(address, headers=None, data=None):
    """Status of a request that does not come from the test's browser."""
    request = urllib.request.Request(address, headers=headers or {}, data=data)
    try:
        return urllib.request.urlopen(request).status
    except urllib.error.HTTPError as error:
        return error.code


def check_refusals(address, has_cable):
    origin = address[:address.index("/", len("http://"))]
    token = address.rstrip("/").rsplit("/", 1)[1]
    check("a valid request", answer(address) == 200)
    forbidden = [
        (origin + "/", {}, None),
        (origin + "/state.json", {}, None),
        (origin + "/" + "0" * len(token) + "/", {}, None),
        (origin + "/" + "0" * len(token) + "/command", {}, b"unplug 0"),
        (address, {"Host": "board.example"}, None),
        (address + "command", {"Origin": "http://board.example"}, b"unplug 0"),
        (address + "command", {"Origin": "null"}, b"unplug 0"),
        (address + "command", {"Sec-Fetch-Site": "cross-site"}, b"unplug 0"),
    ]
    for request in forbidden:
        check(f"refuses {request}", answer(*request) == 403)
    check("GET cannot send commands", answer(address + "command") == 405)
    check("the size of a command is limited", answer(address + "command", {}, b"x" * 9000) == 413)
    check("rejected requests have no effect", has_cable())


def work(browser, address, cvnsim):
    def has_cable():
        state = subprocess.run(cvnsim + " state", shell=True, capture_output=True, check=True,
                               encoding="utf-8")
        return "port 0: no cable" not in state.stdout

    check_refusals(address, has_cable)
    browser.look(1400, 1000, "light")
    browser.call("Page.navigate", url=address)
    until("the bars appear", lambda: color(browser, 660, 270) == [255, 0, 0])
    until("the ports appear", lambda: browser.value("document.querySelectorAll('fieldset').length") == 7)
    browser.shoot("live")

    missed = reaches_all(browser)
    check(f"not reachable by keyboard: {missed}", not missed)
    browser.value(button("Unplug, HDMI 0") + ".focus()")
    browser.press("Enter", 13)
    until("the picture goes black", lambda: color(browser, 660, 270) == [0, 0, 0])
    check("the cable is unplugged", not has_cable())
    until("the page shows the unplugged cable", lambda: browser.value(button("Unplug, HDMI 0") + ".disabled"))
    browser.shoot("unplugged")

    subprocess.run(f"{cvnsim} lock 0 0 && {cvnsim} plug 0 1920x1080p60", shell=True, check=True)
    until("the bars appear again", lambda: color(browser, 660, 270) == [255, 0, 0])
    browser.value("""(() => { const select = document.querySelector('select');
        select.value = 'checkerboard'; select.dispatchEvent(new Event('change')); })()""")
    until("another picture", lambda: color(browser, 45, 15) == [255, 255, 255])
    browser.value("""document.getElementById('line').value = 'plug 9 nothing';
        document.querySelector('#command button').click()""")
    until("an invalid command is rejected", lambda: browser.value(
        "document.getElementById('answer').textContent") == "invalid port '9': expected 0 to 3")

    for scheme, width in (("dark", 1400), ("light", 375), ("dark", 375)):
        browser.look(width, 900, scheme)
        check(f"the page fits {width} pixels", browser.value(
            "document.documentElement.scrollWidth <= window.innerWidth"))
        browser.shoot(f"{scheme}-{width}")
    check("colours follow the scheme", browser.value(
        "getComputedStyle(document.body).backgroundColor") == "rgb(20, 23, 29)")
    check(f"errors in the browser's console: {browser.errors}", not browser.errors)

    # A page from another origin that uses the address.
    browser.call("Page.navigate", url="data:text/html,elsewhere")
    until("the other page", lambda: browser.value("document.body?.textContent") == "elsewhere")
    browser.value(f"""fetch('{address}command', {{method: 'POST', mode: 'no-cors', body: 'unplug 0'}})
        .then(() => 0, () => 0)""")
    check("a page from another origin cannot unplug the cable", has_cable())


def main():
    address, cvnsim, directory = sys.argv[1:]
    browser = Browser(directory)
    try:
        work(browser, address, cvnsim)
    except Failed as failure:
        print(f"{failure}", file=sys.stderr)
        browser.shoot("failed")
        return 1
    finally:
        browser.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
