"""Reports of runs: what the page holds beside the files of the run, and what it says of files that are missing or damaged."""
import base64
import csv
import html.parser
import json
import math
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = pathlib.Path(os.environ["SA_PROGRAMS"])
EXAMPLES = pathlib.Path(os.environ["SA_EXAMPLES"])
sys.path.insert(0, os.environ["SA_REPORT_MODULES"])
import charts

HOSTILE = "<img src=x onerror=alert(1)></script>&\"'\u202e"
CASE = """title = '''%s'''
mesh = "%s"
material = [{name = "<b>rubber", density = 1100.0, C10 = 2.931034e6, D1 = 3.529412e-8}]
section = [{group = "column", material = "<b>rubber"}]
velocity = [{group = "top", component = "z", value = 4.5}]
history = [{group = "top", name = "top", values = ["displacement", "reaction"]}]
control.end_time = 0.004
output = {interval = 0.001, history_interval = 0.0002}
"""
HAS_VTK = not subprocess.run(["/usr/bin/python3", "-c", "import vtk"], capture_output=True).returncode and shutil.which("xvfb-run")


def run(program, *arguments):
    return subprocess.run([PROGRAMS / program, *map(str, arguments)], capture_output=True, text=True, check=False)


class Page(html.parser.HTMLParser):
    """Reads a page and checks that every element is closed in its turn."""

    def __init__(self, file):
        super().__init__()
        self.open, self.elements, self.source = [], [], pathlib.Path(file).read_text(encoding="utf-8")
        self.feed(self.source)
        self.close()
        assert not self.open, self.open
        self.charts = json.loads(next(data for tag, a, data in self.of("script") if a.get("id") == "numbers"))

    def handle_starttag(self, tag, attributes):
        assert len(attributes) == len(dict(attributes)), (tag, attributes)
        self.elements.append([tag, dict(attributes), ""])
        if tag not in ("meta", "img", "br"):
            self.open.append(self.elements[-1])

    def handle_endtag(self, tag):
        assert self.open and self.open.pop()[0] == tag, (tag, self.getpos())

    def handle_data(self, data):
        for element in self.open:
            element[2] += data

    def of(self, *tags):
        return [element for element in self.elements if element[0] in tags]

    @property
    def text(self):
        return next(data for tag, _, data in self.elements if tag == "body")


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.TemporaryDirectory(prefix="sharedanalysis_test_")
        cls.at = pathlib.Path(cls.directory.name)
        (cls.at / "bar.toml").write_text(CASE % (HOSTILE, EXAMPLES / "twisting_column/column.msh"), encoding="utf-8")
        runs = [run("sharedanalysis-explicit", case, "-q", "-o", cls.at / out)
                for case, out in ((cls.at / "bar.toml", "bar"), (EXAMPLES / "crushed_column/crush.toml", "crush"))]
        assert [outcome.returncode for outcome in runs] == [0, 2], runs
        cls.crushed = runs[1].stderr

    @classmethod
    def tearDownClass(cls):
        cls.directory.cleanup()

    def report(self, results, *options, code=0):
        page = self.at / "page.html"
        outcome = run("sharedanalysis-report", results, "-o", page, *options)
        self.assertEqual(outcome.returncode, code, outcome.stderr)
        return Page(page) if code == 0 else outcome.stderr

    def test_alone_and_escaped(self):
        page = self.report(self.at / "bar")
        self.assertEqual([data for *_, data in page.of("title")], [HOSTILE.replace("\u202e", "\ufffd")])
        for tag, attributes, _ in page.elements:
            self.assertFalse(any(name.startswith("on") for name in attributes), attributes)
            for name in ("src", "href", "action", "data"):
                self.assertTrue(attributes.get(name, "data:").startswith("data:"), attributes)
        self.assertEqual(len(page.of("script")), 2)
        self.assertFalse(page.of("link", "iframe", "object", "embed", "a"))
        self.assertFalse([data for *_, data in page.of("b") if "rubber" in data])
        self.assertIsNone(re.search("https?://|@import|url\\(|\u202e", page.source))
        for part in ("Complete", "7,381", "6,000", "sides (2440 nodes)", "<b>rubber: E 17 MPa, nu 0.45", "has none"):
            self.assertIn(part, page.text)

    def test_charts_have_the_numbers_of_the_history(self):
        page = self.report(self.at / "bar/bar.csv", "--no-pictures")
        names, *rows = csv.reader((self.at / "bar/bar.csv").read_text(encoding="utf-8").splitlines())
        columns = {name: [float(row[k]) for row in rows] for k, name in enumerate(names)}
        self.assertEqual(len(rows), 21)
        drawn = {name: (chart, k) for chart in page.charts for k, name in enumerate(chart["names"])}
        self.assertEqual(set(drawn) | {"time"}, set(columns))
        figures = [k for k, (tag, a, _) in enumerate(page.elements) if "data-chart" in a]
        for name, (chart, k) in drawn.items():
            self.assertEqual(chart["time"], columns["time"])
            self.assertEqual(chart["values"][k], columns[name], name)
            # the curve goes through the points, in the frame that the ticks count from
            inside = page.elements[figures[page.charts.index(chart)]:]
            path = [a["d"] for tag, a, _ in inside if "curve" in a.get("class", "")][k]
            left, upper, width, height = chart["box"]
            x0, x1, y0, y1 = chart["range"]
            for point, time, value in zip(re.findall(r"[ML](\S+) ([^ML]+)", path), columns["time"], columns[name]):
                self.assertAlmostEqual(x0 + (float(point[0]) - left) / width * (x1 - x0), time, delta=1e-4 * (x1 - x0))
                self.assertAlmostEqual(y1 - (float(point[1]) - upper) / height * (y1 - y0), value, delta=1e-4 * (y1 - y0))

    def test_collapsed_run(self):
        page = self.report(self.at / "crush", "--no-pictures")
        reason = re.search("68 bricks distorted beyond computing at time [^;]*", self.crushed)[0]
        row = next(data for tag, _, data in page.of("tr") if "ExcessiveDistortion" in data)
        for part in ("Ended early", reason, "partial"):
            self.assertIn(part, page.text)
        listed = re.search(r"element ((\d+, )+\d+)", row)[1].split(", ")
        self.assertEqual(len(set(listed)), 60)  # and 8 more
        row = next(data for tag, _, data in page.of("tr") if data.startswith("distorted"))
        self.assertRegex(row, f"^distortedcolumn68brick {min(map(int, listed))} at 0.002659 s")
        chart = next(chart for chart in page.charts if chart["names"] == ["distorted"])
        self.assertEqual(chart["values"], [[0, 0, 68]])
        self.assertEqual(set(listed[:8]), set(re.search("number ([0-9, ]+), \\.", reason)[1].split(", ")))

    @unittest.skipUnless(HAS_VTK, "needs VTK and xvfb")
    def test_pictures(self):
        page = self.report(self.at / "bar", "--times", 0, 0.0031, "--field", "displacement")
        # the top has moved 4.5 m/s * 0.003 s
        self.assertIn("displacement, m00.00750.015", [data for _, a, data in page.of("div") if a.get("class") == "scale"])
        self.assertEqual([data for *_, data in page.of("figcaption")][:2], ["0 s", "0.003 s"])
        pictures = [base64.b64decode(a["src"].partition("base64,")[2]) for _, a, _ in page.of("img")]
        for data, (_, attributes, _) in zip(pictures, page.of("img"), strict=True):
            self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual(struct.unpack(">II", data[16:24]), (int(attributes["width"]), int(attributes["height"])))
        self.assertNotEqual(*pictures)
        self.assertIn("the fields have no nonsense", self.report(self.at / "bar", "--field", "nonsense").text)

    def test_missing_and_damaged(self):
        self.assertIn("several jobs", self.report(self.at_with(("a.csv", "time\n"), ("b.exo", "")), code=1))
        self.assertIn("no results", self.report(self.at_with(), code=1))
        self.assertIn("No such file", self.report(self.at / "none.exo", code=1))
        self.assertIn("result of the run", run("sharedanalysis-report", self.at / "bar", "-o", self.at / "bar/bar.sta").stderr)
        self.assertEqual(run("sharedanalysis-report", self.at / "bar", "-o", "/dev/full").returncode, 3)
        self.assertTrue(pathlib.Path("/dev/full").is_char_device())
        exo = (self.at / "crush/crush.exo.partial").read_bytes()
        for size in (3, 500, 5000, 100000):  # in the header, in the model
            page = self.report(self.at_with(("j.exo.partial", exo[:size])))
            for part in ("j.exo.partial was not read", "There is no history", "no diagnostics database", "not drawn", "no status file"):
                self.assertIn(part, page.text)
        page = self.report(self.at_with(("j.csv.partial", "time,</script><i>\n0,1\n1,nan\n2,-1e308\n3,1e308\n4"), ("j.sta", "Status x\n"),
                                        ("j.events.csv", "x\n")))
        for part in ("run goes on", "j.events.csv was not read", "Incomplete lines of j.csv.partial were left out: 1", "1 value is no finite number", "no file of fields"):
            self.assertIn(part, page.text)
        self.assertEqual(page.charts[0]["names"], ["</script><i>"])
        self.assertEqual(page.charts[0]["values"], [[1, None, -1e308, 1e308]])

    def at_with(self, *files):
        directory = pathlib.Path(tempfile.mkdtemp(dir=self.at))
        for name, content in files:
            (directory / name).write_bytes(content if isinstance(content, bytes) else content.encode())
        return directory

    def test_long_histories_keep_their_peaks(self):
        values = [math.sin(k / 500) + 7 * (k == 77777) - 5 * (k == 33333) for k in range(100000)]
        page = self.report(self.at_with(("j.csv", "time,v\n" + "".join(f"{k},{v!r}\n" for k, v in enumerate(values)))))
        chart = page.charts[0]
        self.assertLessEqual(len(chart["time"]), 2002)
        self.assertTrue({0, 33333, 77777, 99999} <= set(chart["time"]))
        self.assertEqual([values[int(t)] for t in chart["time"]], chart["values"][0])

    def test_ticks(self):
        for low, high in ((0, 1), (-3, 7e-9), (0, 3.1e6), (0, 40000), (1, 1 + 1e-9), (3e-290, 7e-290), (-1e308, 1e308), (-0.3, 0.1)):
            low, high = charts.bounds([low, high])
            places, exponent = charts.ticks(low, high, 4)
            self.assertTrue(3 <= len(places) <= 8, places)
            self.assertEqual(len({text for _, text in places}), len(places))
            for value, text in places:
                self.assertTrue(-1e-6 <= (value / 4 - low / 4) / (high / 4 - low / 4) <= 1 + 1e-6, (low, value, high))
                self.assertAlmostEqual(float(f"{text}e{exponent}") / (high / 2 - low / 2), value / (high / 2 - low / 2), delta=0.01)
                self.assertLess(len(text), 14)

    @unittest.skipUnless(shutil.which("chromium"), "needs chromium")
    def test_in_a_browser(self):
        page = self.report(self.at / "bar", "--no-pictures")
        probe = """<script>addEventListener("load", () => {
          const figure = document.querySelector("figure.chart"), svg = figure.querySelector("svg"), box = svg.getBoundingClientRect();
          svg.dispatchEvent(new PointerEvent("pointermove", {clientX: box.right - 1, clientY: box.top + box.height / 2}));
          document.body.dataset.seen = [figure.textContent, innerWidth, document.documentElement.scrollWidth,
            getComputedStyle(document.body).backgroundColor].join("|"); });</script></body>"""
        copy = self.at / "probe.html"
        source = re.sub('<meta http-equiv="Content-Security-Policy"[^>]*>', "", page.source)
        copy.write_text(source.replace("</body>", probe), encoding="utf-8")
        for width, scheme, back in ((500, 0, "rgb(21, 22, 26)"), (1400, 1, "rgb(251, 251, 250)")):
            call = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", f"--user-data-dir={self.at}/browser",
                    f"--blink-settings=preferredColorScheme={scheme}", f"--window-size={width},900", "--dump-dom"]
            for file in (self.at / "page.html", copy):  # the page itself runs its script under its own policy
                shown = subprocess.run([*call, file.as_uri()], capture_output=True, text=True, timeout=120, check=False).stdout
                self.assertGreater(shown.count("</b></li>"), 10)
            seen = re.search('data-seen="([^"]*)"', shown)[1].split("|")
            last = next(values[-1] for values in page.charts[0]["values"])
            self.assertIn("at 0.004 s", seen[0])
            self.assertIn(f"{float(f'{last:.7g}'):.10g}", seen[0])
            self.assertLessEqual(int(seen[2]), int(seen[1]))
            self.assertEqual(seen[3], back)


if __name__ == "__main__":
    unittest.main()
