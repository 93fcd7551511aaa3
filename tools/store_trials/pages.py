"""The store's pages in a headless Chromium: pictures at two widths, used by keys alone."""
from __future__ import annotations

import asyncio
import base64
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path
from typing import Any

import aiohttp

from ground import Ground
from store_client import Client

BROWSER = "chromium-headless-shell"
WIDTHS = {"phone": (360, 740), "desk": (1280, 800)}
EVIL = b"""<!doctype html><title>stored</title><p>A stored page</p><form action="/i/x/accept" method=post>
<input name=user></form><script>document.title = 'acted'; fetch('/');</script>
<img src=x onerror="document.title = 'acted'">"""
_FACTS = """(() => { const all = s => [...document.querySelectorAll(s)]; return {
  wide: document.documentElement.scrollWidth - innerWidth,
  scripts: all('script').length,
  unlabelled: all('input').filter(i => !i.labels.length).length,
  small: all('li a, button, input').filter(e => e.getBoundingClientRect().height < 44).length,
  letters: parseFloat(getComputedStyle(document.body).fontSize),
  stops: all('a[href], input, button').length, headings: all('h1').length,
  lang: document.documentElement.lang }; })()"""
_FOCUS = """(() => { const e = document.activeElement;
  return [[...document.querySelectorAll('a[href], input, button')].indexOf(e),
          getComputedStyle(e).outlineStyle]; })()"""


class Browser:
    """One page of a headless Chromium, told what to do over its own protocol."""

    def __init__(self, line: aiohttp.ClientWebSocketResponse, folder: Path) -> None:
        self._line = line
        self._folder = folder
        self._asked = 0
        self.problems: list[str] = []
        self.taken: list[str] = []

    async def ask(self, method: str, **params: object) -> dict[str, Any]:
        self._asked += 1
        await self._line.send_json({"id": self._asked, "method": method, "params": params})
        while True:
            message = json.loads((await asyncio.wait_for(self._line.receive(), 30)).data)
            if message.get("id") == self._asked:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return dict(message["result"])

    async def value(self, expression: str) -> Any:
        result = await self.ask("Runtime.evaluate", expression=expression, returnByValue=True)
        return result["result"].get("value")

    async def settle(self) -> None:
        """Waits until the page that is coming is there."""
        for _ in range(100):
            await asyncio.sleep(0.1)
            if await self.value("document.readyState") == "complete":
                return

    async def open(self, address: str) -> None:
        await self.ask("Page.navigate", url=address)
        await self.settle()

    async def key(self, key: str) -> None:
        code = {"Tab": 9, "Enter": 13}[key]
        text = {"text": "\r"} if key == "Enter" else {}
        for kind in ("keyDown", "keyUp"):
            await self.ask("Input.dispatchKeyEvent", type=kind, key=key, code=key,
                           windowsVirtualKeyCode=code, **(text if kind == "keyDown" else {}))

    async def picture(self, name: str) -> None:
        """Takes the page as it stands at each width, and notes what is wrong with it."""
        for width, (across, down) in WIDTHS.items():
            await self.ask("Emulation.setDeviceMetricsOverride", width=across, height=down,
                           deviceScaleFactor=1, mobile=width == "phone")
            facts = await self.value(_FACTS)
            for fact, well in (("wide", facts["wide"] <= 0), ("scripts", not facts["scripts"]),
                               ("unlabelled", not facts["unlabelled"]), ("small", not facts["small"]),
                               ("letters", facts["letters"] >= 16), ("headings", facts["headings"] == 1),
                               ("lang", facts["lang"] == "en")):
                if not well:
                    self.problems.append(f"{name} ({width}): {fact} is {facts[fact]}")
            shot = await self.ask("Page.captureScreenshot", captureBeyondViewport=True)
            file = self._folder / f"{name}-{width}.png"
            file.write_bytes(base64.b64decode(shot["data"]))
            self.taken.append(file.name)
        await self._walk(name)

    async def _walk(self, name: str) -> None:
        """Each thing to be used is reached by Tab in its turn, and shows it."""
        count = await self.value("document.querySelectorAll('a[href], input, button').length")
        seen = set()
        for _ in range(count + 1):
            await self.key("Tab")
            number, outline = await self.value(_FOCUS)
            seen.add(number)
            if number >= 0 and outline == "none":
                self.problems.append(f"{name}: what Tab comes to as number {number} does not show it")
        if seen - {-1} != set(range(count)):
            self.problems.append(f"{name}: Tab comes to {sorted(seen)} of {count}")

    async def type_at(self, selector: str, texts: list[str]) -> None:
        """Fills fields from one on, by keys, and sends the form by Enter."""
        await self.value(f"document.querySelector({json.dumps(selector)}).focus()")
        for number, text in enumerate(texts):
            if number:
                await self.key("Tab")
            if text:
                await self.ask("Input.insertText", text=text)
        await self.key("Enter")
        await asyncio.sleep(0.5)
        await self.settle()


def _fill(ground: Ground) -> tuple[Client, dict[str, str]]:
    """Demo's public folder with names of all kinds, a letter, a stored page; returns links."""
    client = Client(ground)
    client.login("demo", "demo")
    folder = client.make("Holidays <b>2026 & a name that goes on and on " + "without-a-blank" * 8)
    client.ask("set_dir_access", dir_id=folder, access=1)
    client.ask("set_dir_description", dir_id=folder, description="By the lake.\nTake what you like.")
    for name, size in (("Café – 秋 – שלום.jpg", 120_000), ("x" * 120 + ".txt", 10),
                       ("<script>alert(1).html", 0), ("Plan.pdf", 3_500_000), ("a.txt", 1)):
        data = EVIL if name.startswith("<script>") else b"x" * size
        client.ask("set_file_access", file_id=client.put(name, data, folder), access=1)
    listed = client.ask("list_dir", dir_id=folder).entries()
    links = {"folder": next(node["Link"] for node in client.ask("list_dir", dir_id=0).entries()
                            if node["ID"] == folder),
             "evil": next(node["Link"] for node in listed if node["Name"].startswith("<script>")),
             "picture": client.find("Dusk.jpg", client.find("Pictures")["ID"])["Link"]}
    client.ask("share_folder", dir_id=folder, email="new@example.test")
    letter, = (ground.data / "outbox").glob("*.eml")
    found = re.search(r"https://\S+", letter.read_text())
    assert found
    links["letter"] = found[0]
    return client, links


async def _use(browser: Browser, base: str, links: dict[str, str]) -> None:
    for name, address in (("front", base + "/"), ("not-there", base + "/l/nothing"),
                          ("folder", links["folder"]), ("invitation", links["letter"])):
        await browser.open(address)
        await browser.picture(name)
    await browser.type_at("form[action$=register] [name=user]", ["x", "New", "One", "secret", "other"])
    await browser.picture("registration-refused")
    kept = await browser.value("document.querySelector('form[action$=register] [name=first_name]').value")
    alert = await browser.value("document.querySelectorAll('[role=alert]').length")
    if (kept, alert) != ("New", 1):
        browser.problems.append(f"a refused registration keeps '{kept}' and shows {alert} alerts")
    await browser.value("document.querySelector('form[action$=register] [name=user]').value = ''")
    await browser.type_at("form[action$=register] [name=user]", ["newcomer", "", "", "secret", "secret"])
    await browser.picture("invitation-taken")
    if "yours" not in str(await browser.value("document.querySelector('h1').textContent")):
        browser.problems.append("the registration by keys did not take the folder")
    await browser.open(links["letter"])
    await browser.picture("invitation-over")

    await browser.open(links["evil"])
    found = await browser.value("document.title + ' ' + self.origin + ' ' + document.body.innerText.trim()")
    if found != "stored null A stored page":
        browser.problems.append(f"a stored page acts as '{found}'")
    await browser.open(links["picture"])
    if not await browser.value("document.images.length && document.images[0].naturalWidth > 0"):
        browser.problems.append("a stored picture is not shown")


async def _browse(ground: Ground, links: dict[str, str], folder: Path, profile: str) -> Browser:
    process = await asyncio.create_subprocess_exec(
        BROWSER, "--remote-debugging-port=0", f"--user-data-dir={profile}", "--no-sandbox",
        "--ignore-certificate-errors", "--hide-scrollbars", "about:blank",
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, start_new_session=True)
    assert process.stderr
    try:
        while True:
            told = (await asyncio.wait_for(process.stderr.readline(), 30)).decode()
            if not told:
                raise RuntimeError(f"{BROWSER} did not start")
            at = re.search(r"ws://([\d.:]+)/", told)
            if at:
                break
        async with aiohttp.ClientSession() as session:
            async with session.get(f"http://{at[1]}/json/list") as answer:
                page = next(one for one in await answer.json() if one["type"] == "page")
            async with session.ws_connect(page["webSocketDebuggerUrl"], max_msg_size=1 << 26) as line:
                browser = Browser(line, folder)
                await browser.ask("Page.enable")
                await _use(browser, ground.facts["https_url"], links)
                return browser
    finally:
        # Its helpers, too: they hold the pipe open.
        os.killpg(process.pid, signal.SIGKILL)
        await process.wait()


def run(folder: Path) -> bool:
    """Takes the pictures into `folder`; True when each page is as it should be."""
    if not shutil.which(BROWSER):
        raise SystemExit(f"trials: {BROWSER} is missing; install the Debian package of that name")
    folder.mkdir(parents=True, exist_ok=True)
    ground = Ground()
    profile = tempfile.mkdtemp(prefix="quilldeck-browser-")
    try:
        _, links = _fill(ground)
        browser = asyncio.run(_browse(ground, links, folder, profile))
        complaints = ground.complaints()
    finally:
        shutil.rmtree(profile, ignore_errors=True)
        ground.close()
    for problem in browser.problems + complaints:
        print(f"  {problem}")
    print(f"pages: {len(browser.taken)} pictures in {folder}, {len(browser.problems)} problems")
    return not browser.problems and not complaints
