"""What the store shows in a browser: small pages without a script, for any width and for keys."""
from __future__ import annotations

import base64
import hashlib
import html

from aiohttp import web

_STYLE = """
:root { color-scheme: light dark; }
body { font: 1.125rem/1.5 system-ui, sans-serif; max-width: 38rem; margin: 0 auto; padding: 1.5rem;
  overflow-wrap: anywhere; }
h1 { font-size: 1.6rem; line-height: 1.25; }
h2 { font-size: 1.25rem; margin-top: 2rem; }
ul { list-style: none; padding: 0; }
li { border-top: 1px solid #8888; }
li a { display: flex; justify-content: space-between; gap: 1rem; padding: .75rem .25rem;
  min-height: 1.5rem; text-decoration: none; }
li bdi { text-decoration: underline; }
li span { white-space: nowrap; }
form { margin: 1rem 0; }
label { display: block; margin: .75rem 0; }
input { display: block; box-sizing: border-box; width: 100%; font: inherit; padding: .6rem;
  border: 1px solid #888; border-radius: .3rem; }
button { font: inherit; padding: .6rem 1.2rem; min-height: 2.75rem; border: 1px solid #888;
  border-radius: .3rem; cursor: pointer; }
a:focus-visible, input:focus-visible, button:focus-visible { outline: 3px solid #06c;
  outline-offset: 2px; }
.note { white-space: pre-line; }
.wrong { border-left: .3rem solid #c00; padding-left: .75rem; }
footer { margin-top: 3rem; border-top: 1px solid #8888; font-size: .9rem; }
"""
_HASH = base64.b64encode(hashlib.sha256(_STYLE.encode()).digest()).decode()
PAGE_POLICY = (f"default-src 'none'; style-src 'sha256-{_HASH}'; form-action 'self'; base-uri 'none'; "
               "frame-ancestors 'none'")
COMMON = {
    "X-Content-Type-Options": "nosniff",
    # Addresses here are secrets, and no other site is to hear of them.
    "Referrer-Policy": "no-referrer",
    "Cross-Origin-Opener-Policy": "same-origin",
    "X-Robots-Tag": "noindex, nofollow",
    "Server": "Quilldeck store",
}
"""Headers of every answer."""


def page(title: str, body: str, status: int = 200) -> web.Response:
    """A whole page; `title` is plain text, `body` is HTML whose texts are escaped already."""
    shown = html.escape(title)
    return web.Response(status=status, content_type="text/html", charset="utf-8", headers={
        "Content-Security-Policy": PAGE_POLICY, "Cache-Control": "no-store"}, text=(
        '<!doctype html>\n<html lang="en"><head><meta charset="utf-8">'
        '<meta name="viewport" content="width=device-width, initial-scale=1">'
        f"<title>{shown} – Quilldeck</title><style>{_STYLE}</style></head>\n"
        f'<body><main><h1 dir="auto">{shown}</h1>\n{body}\n</main>'
        "<footer><p>Quilldeck store</p></footer></body></html>\n"))


def text(value: str, kind: str = "note") -> str:
    """A paragraph of plain text, whose line ends stay."""
    return f'<p class="{kind}" dir="auto">{html.escape(value)}</p>' if value else ""


def problem(value: str) -> str:
    """What went wrong, said at once to who cannot see it."""
    return f'<p class="wrong" role="alert">{html.escape(value)}</p>' if value else ""


def links(entries: list[tuple[str, str, str]]) -> str:
    """A list of links: address, name, and what stands behind the name."""
    return "<ul>" + "".join(
        f'<li><a href="{html.escape(address)}"><bdi>{html.escape(name)}</bdi>'
        f"<span>{html.escape(more)}</span></a></li>\n" for address, name, more in entries) + "</ul>"


def form(action: str, button: str, fields: list[tuple[str, str, str, str]] | None = None,
         values: dict[str, str] | None = None) -> str:
    """A form that posts; each field is name, label, type and what a browser may fill in. With the
    `values` of an answer that was refused it is where the user goes on."""
    lines = "".join(
        f'<label>{html.escape(label)}<input name="{name}" type="{kind}" autocomplete="{fill}" '
        f'maxlength="256" autocapitalize="none"'
        + (f' value="{html.escape((values or {}).get(name, ""))}"' if kind != "password" else "")
        + (" required" if name not in ("first_name", "last_name") else "")
        + (" autofocus" if values is not None and number == 0 else "") + "></label>\n"
        for number, (name, label, kind, fill) in enumerate(fields or ()))
    return (f'<form method="post" action="{html.escape(action)}">{lines}'
            f"<button>{html.escape(button)}</button></form>\n")


def size(count: int) -> str:
    """A count of bytes for people."""
    if count == 1:
        return "1 byte"
    value = float(count)
    for unit in ("bytes", "KB", "MB", "GB"):
        if value < 1024:
            return f"{value:.0f} {unit}" if unit == "bytes" or value >= 10 else f"{value:.1f} {unit}"
        value /= 1024
    return f"{value:.1f} TB"


def not_there() -> web.Response:
    """For links that lead nowhere, or nowhere any more."""
    return page("There is nothing here", text(
        "The link is wrong, or what it led to is gone or not shown any more.\n"
        "Ask whoever sent it to you for a new one."), 404)
