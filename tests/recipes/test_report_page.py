"""The pages of reports in a browser: every picture shows, nothing is fetched, nothing is complained of."""

import csv
import json
import pathlib
import subprocess

import pytest

import velscore
from conftest import ROOT

BROWSER = [
    "chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--host-resolver-rules=MAP * ~NOTFOUND",
]  # fmt: skip

EXAMPLES = sorted(path.parent.name for path in (ROOT / "examples").glob("*/model.pmml"))
PHONE, DESK = 390, 1200

# A copy of the page tells the frame around it how it is laid out.
TELL = """<script>addEventListener("load", () => parent.postMessage(JSON.stringify({
  width: document.documentElement.scrollWidth,
  pictures: [...document.querySelectorAll("svg")].map(s => [s.clientWidth, s.clientHeight]),
}), "*"));</script>"""
FRAME = """<!DOCTYPE html><script>addEventListener("message", e => { document.title = e.data; });</script>
<iframe src="copy.html" style="border: 0; width: %dpx; height: 900px"></iframe>"""


def browse(folder: pathlib.Path, page: str, *options: str) -> subprocess.CompletedProcess:
    profile = folder / f"profile-{page}"
    return subprocess.run(
        [*BROWSER, f"--user-data-dir={profile}", *options, (folder / page).as_uri()],
        capture_output=True, check=True, text=True, timeout=120,
    )  # fmt: skip


@pytest.fixture(scope="module", params=EXAMPLES)
def folder(request: pytest.FixtureRequest, tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    """A folder with the page of an example."""
    made = tmp_path_factory.mktemp("page")
    example = ROOT / "examples" / request.param
    with open(example / "cases.csv", newline="") as file:
        cases = list(csv.DictReader(file))
    velscore.report(example / "model.pmml", cases, path=made / "page.html")
    return made


def without_policy(page: str) -> str:
    """A page that may run scripts and fetch."""
    start = page.index("<meta http-equiv")
    return page[:start] + page[page.index(">", start) + 1 :]


def fetched(log: pathlib.Path) -> set[str]:
    """What a browser asked for over any network, but for what it asks by itself."""
    urls = set()
    for event in json.loads(log.read_text())["events"]:
        parameters = event.get("params", {})
        url = parameters.get("url", "")
        if url.startswith(("http", "ws", "ftp")) and "file://" in json.dumps(parameters):
            urls.add(url)
    return urls


def test_nothing_is_fetched_and_nothing_complained_of(folder: pathlib.Path) -> None:
    log = folder / "net.json"
    seen = browse(folder, "page.html", "--dump-dom", f"--log-net-log={log}", "--enable-logging=stderr")
    assert "</html>" in seen.stdout
    assert "CONSOLE" not in seen.stderr
    assert fetched(log) == set()


def test_what_is_fetched_or_complained_of_would_be_seen(folder: pathlib.Path) -> None:
    text = (folder / "page.html").read_text()
    loose = without_policy(text)
    (folder / "bad.html").write_text(loose.replace("</body>", '<img src="http://localhost:9/x.png"></body>'))
    log = folder / "bad.json"
    browse(folder, "bad.html", "--dump-dom", f"--log-net-log={log}")
    assert "http://localhost:9/x.png" in fetched(log)
    (folder / "bad.html").write_text(text.replace("</body>", "<script>1</script></body>"))
    assert "CONSOLE" in browse(folder, "bad.html", "--dump-dom", "--enable-logging=stderr").stderr


@pytest.mark.parametrize("width", [PHONE, DESK])
def test_every_picture_shows_and_the_page_is_no_wider_than_the_screen(folder: pathlib.Path, width: int) -> None:
    text = (folder / "page.html").read_text()
    (folder / "copy.html").write_text(without_policy(text).replace("</head>", TELL + "</head>"))
    (folder / "frame.html").write_text(FRAME % width)
    told = browse(folder, "frame.html", "--dump-dom", "--virtual-time-budget=10000").stdout
    title = told[told.index("<title>") + 7 : told.index("</title>")]
    layout = json.loads(title)
    assert layout["width"] <= width
    assert len(layout["pictures"]) == text.count("<figure") >= 4
    for across, down in layout["pictures"]:
        assert across >= 300 and down >= 80
