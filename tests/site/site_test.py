"""The reference site of a build tree: site_test.py TREE.  The browser is $CHROMIUM; without it pages are read, not looked at."""
import html.parser
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import urllib.parse

TREE = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(__file__).resolve().parents[2]
SITE = TREE / "generated/tested-site"
BROWSER = os.environ.get("CHROMIUM")
ROUTINES = json.loads((TREE / "python/sharedanalysis/interface.json").read_text())["routines"]


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.loaded = set(), [], []
        self.text = path.read_text()
        self.feed(self.text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id":
                self.anchors.add(value)
            elif name in ("href", "src") and value:
                (self.links if tag == "a" else self.loaded).append(value)


def browser(page, *options):
    with tempfile.TemporaryDirectory() as profile:
        run = subprocess.run([BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--dump-dom",
                              "--virtual-time-budget=5000", f"--user-data-dir={profile}", *options, page],
                             capture_output=True, text=True, timeout=120)
    return run.stdout


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        subprocess.run([ROOT / "docs/site/build", TREE, SITE], check=True)
        cls.pages = {path.relative_to(SITE).as_posix(): Page(path) for path in SITE.rglob("*.html")}

    def test_every_routine_has_a_whole_entry(self):
        entries = {}
        for page in self.pages.values():
            for entry in re.split(r'(?=<dl class="c function">)', page.text)[1:]:
                entries[re.search(r'id="c\.(\w+)"', entry)[1]] = entry
        self.assertEqual(set(entries), {r["name"] for r in ROUTINES})
        for routine in ROUTINES:
            entry, name = entries[routine["name"]], routine["name"]
            self.assertEqual(re.findall(r"<tr><td><code>(\w+)</code>", entry), [a["name"] for a in routine["arguments"]], name)
            for part in ("Fortran</summary>", "Python</summary>", "sharedanalysis." + name, "Declared in", "Source", "Tests"):
                self.assertIn(part, re.sub(r"<span[^>]*>|</span>", "", entry), name)
        row = re.search(r"\| `GLO_UTI_EIG33ANAL` \| ([\d.]+) \| ([\d.]+) \*\*([\d.]+)", (ROOT / "bench/README.md").read_text())
        self.assertIn("{} ns a point; a plain loop {}, ratio {}".format(*row.groups()), entries["GLO_UTI_EIG33ANAL"])
        self.assertIn("J<sup>−2/3</sup>", self.pages["reference/spx-hyperelastic.html"].text)

    def test_links_lead_somewhere_and_nothing_is_fetched(self):
        for name, page in self.pages.items():
            for link in page.links + page.loaded:
                url = urllib.parse.urlsplit(link)
                with self.subTest(name, link=link):
                    self.assertEqual((url.scheme, url.netloc), ("", ""))
                    target = os.path.normpath(os.path.join(os.path.dirname(name), urllib.parse.unquote(url.path))) if url.path else name
                    self.assertTrue((SITE / target).is_file())
                    if url.fragment and target in self.pages:
                        self.assertIn(url.fragment, self.pages[target].anchors)
        for sheet in SITE.rglob("*.css"):
            self.assertNotRegex(sheet.read_text(), r"url\(\s*['\"]?(https?:)?//|@import")

    def test_programs_have_their_options_in_manual_pages(self):
        for file in (TREE / "generated/help").glob("*.txt"):
            options = re.findall(r"^ *(?=-).*?(--[a-z]+)", file.read_text(), re.M)
            page = (TREE / "generated/man1" / (file.stem + ".1")).read_text().replace("\\-", "-")
            self.assertEqual(re.findall(r"^\\fB.*?(--[a-z]+)", page, re.M), options, file.stem)
            self.assertTrue(options and f"{file.stem} - " in page and file.stem in self.pages["programs.html"].text)

    @unittest.skipUnless(BROWSER, "no Chromium")
    def test_the_search_finds_routines(self):
        for query, name in (("glo_uti_eig33v", "GLO_UTI_EIG33V"), ("HYPERAB3D", "SPX_MAT_HYPERAB3DEXP"),
                            ("compression tests at several speeds", "SPX_USR_RATESENSFOAM")):
            found = re.findall(r'<li><a href="([^"]*)"', browser(f"{(SITE / 'search.html').as_uri()}?q={urllib.parse.quote(query)}"))
            self.assertTrue(found and found[0].endswith("#c." + name), (query, found[:3]))

    @unittest.skipUnless(BROWSER, "no Chromium")
    def test_pages_fit_narrow_and_wide_in_light_and_dark(self):
        script = ("<script>addEventListener('load', () => { const style = getComputedStyle(document.body); document.title = "
                  "[document.documentElement.scrollWidth - innerWidth, style.backgroundColor, style.color].join('|'); })</script>")
        for name in ("reference/spx-user_foams.html", "manual/user-materials.html"):
            probe = SITE / (name + ".probe.html")
            probe.write_text(self.pages[name].text.replace("</head>", script + "</head>"))
            for mode in (0, 1):  # dark, light
                for width in (420, 1400):
                    with self.subTest(name, mode=mode, width=width):
                        dom = browser(probe.as_uri(), f"--window-size={width},900", f"--blink-settings=preferredColorScheme={mode}")
                        excess, *colours = re.search(r"<title>([^<]*)</title>", dom)[1].split("|")
                        back, text = [sum(map(int, re.findall(r"\d+", colour)[:3])) / 3 for colour in colours]
                        self.assertLessEqual(int(excess), 0)
                        self.assertGreater((text - back) * (1 - 2 * mode), 150)
            probe.unlink()


if __name__ == "__main__":
    unittest.main()
