#!/usr/bin/env python3
"""Writes the sources of the reference site: a page a family with an entry a routine, the manual and what they link to.

    docs/site/pages.py BUILD_TREE FOLDER

Everything about a routine comes from the description of the interface (BUILD_TREE/python/sharedanalysis/interface.json), the Fortran
module, the package of Python, bench/README.md and a search of the sources for its name; nothing is written by hand.
"""
import collections
import html
import json
import os
import pathlib
import re
import shutil
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
PARTS = {"glo": "Shared services", "spx": "Explicit solver", "acd": "Diagnostics"}
MANUAL = ["README", "docs/first-run", "docs/embedding", "docs/checking-and-replay", "docs/fortran", "docs/python", "docs/explicit-solver", "docs/material-driver", "docs/user-materials",
          "docs/material-tables", "docs/output-filters", "docs/diagnostics-database", "docs/ranks-and-reproducibility", "docs/scaling", "docs/robustness",
          "docs/vector-math", "docs/abi", "packaging/README", "bench/README", "CONTRIBUTING", "CHANGELOG", "docs/licence"]
GENERIC = "tests/generic/checks.cpp"


class Site:
    def __init__(self, tree, folder):
        self.tree, self.folder = tree, folder
        self.description = json.loads((tree / "python/sharedanalysis/interface.json").read_text())
        self.routines = self.description["routines"]
        self.page = {r["name"]: self.page_of(r["file"]) for r in self.routines}
        self.names = re.compile(r"\b(?:" + "|".join(sorted(self.page, key=len, reverse=True)) + r")\b")
        self.linked = set()  # files of the tree that pages link to

    @staticmethod
    def page_of(file):
        return "reference/" + file.removesuffix(".h").replace("/", "-")

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    # ---- text of the declarations

    def set(self, line, keep_width=False):
        """A line with its formulas set: powers raised, relations and roots by their signs, routines as links."""
        line = re.sub(r"->", "→", line.replace(">=", "≥").replace("<=", "≤"))
        line = html.escape(re.sub(r"\bsqrt(?= ?\()", "√", line), quote=False)
        line = re.sub(r"\^(?:\(([^()]*(?:\([^()]*\))?[^()]*)\)|(-?[0-9.]*[0-9]|[A-Za-z]\w*))",
                      lambda m: f"<sup>{(m[1] or m[2]).replace('-', '−')}</sup>", line)
        if keep_width:  # what is gone comes back in the next gap, so that columns stay
            shown = lambda text: len(html.unescape(re.sub(r"<[^>]*>", "", text)))
            parts, lost, original = re.split(r"( {3,})", line), 0, re.split(r"( {3,})", keep_width)
            for k, part in enumerate(parts):
                if k % 2:
                    parts[k], lost = part + " " * lost, 0
                else:
                    lost += len(original[k]) - shown(part)
            line = "".join(parts)
        return self.names.sub(lambda m: f'<a href="{os.path.basename(self.page[m[0]])}.html#c.{m[0]}">{m[0]}</a>', line)

    def text(self, text):
        """Paragraphs are filled; tables and lists, whose lines are indented or have columns, stay as they are."""
        blocks = []
        for line in text.split("\n"):
            kind = None if not line.strip() else "pre" if line.startswith(" ") or "   " in line else "p"
            is_end = blocks and blocks[-1][0] == "p" and len(blocks[-1][1][-1]) < 96 and blocks[-1][1][-1].endswith((".", ":"))
            if not blocks or blocks[-1][0] != kind or is_end:
                blocks.append((kind, []))
            blocks[-1][1].append(line)
        result = []
        for kind, lines in blocks:
            if kind == "p":
                result.append(f"<p>{self.set(' '.join(lines))}</p>")
            elif kind == "pre":
                lines = textwrap.dedent("\n".join(lines)).split("\n")
                result.append("<pre class=\"columns\">" + "\n".join(self.set(line, line) for line in lines) + "</pre>")
        return "\n".join(result)

    # ---- what is known of a routine from elsewhere

    def find_uses(self):
        """Files of the sources and of the tests that name a routine."""
        self.sources, self.tests = collections.defaultdict(list), collections.defaultdict(list)
        for places, uses in ((("glo", "acd", "spx"), self.sources), (("tests",), self.tests)):
            for path in sorted(p for place in places for p in (ROOT / place).rglob("*") if p.suffix in (".cpp", ".py", ".f90")):
                named = {name for name in set(re.findall(r"\w+", path.read_text())) if name in self.page}
                for name in named:
                    uses[name].append(path.relative_to(ROOT).as_posix())
        for name, files in self.sources.items():  # of several the one that defines it
            defines = re.compile(r"^\s*(?:SA_\w+\(|[\w*& ]+\s)" + name + r"\b", re.M)
            self.sources[name] = [f for f in files if defines.search((ROOT / f).read_text())] or files
        pasted = {name: files[0] for name, files in self.sources.items()}  # beginnings of names that macros put together
        for path in sorted(p for place in ("glo", "acd", "spx") for p in (ROOT / place).rglob("*.cpp")):
            for start in re.findall(r"\b([A-Za-z]{3}_\w{4,})##", path.read_text()):
                pasted.setdefault(start, path.relative_to(ROOT).as_posix())
        for name in self.page.keys() - self.sources.keys():
            start = max((s for s in pasted if name.startswith(s)), key=len, default=None)
            if start is None:
                raise SystemExit(f"pages.py: no source of {name}")
            self.sources[name] = [pasted[start]]

    def read_benchmarks(self):
        """Rows of bench/README.md, the user materials by the names that a case gives them."""
        user = dict(re.findall(r'"(TVK_\w+)",\s*(SPX_USR_\w+)', (ROOT / "spx/impl/user/dispatch.cpp").read_text()))
        self.figures, heads = collections.defaultdict(list), None
        for line in (ROOT / "bench/README.md").read_text().splitlines():
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            if not line.startswith("|"):
                heads = None
            elif heads is None:
                heads = cells
            elif found := re.match(r"`(\w+)`,?(.*)", cells[0]):
                name = user.get(found[1], found[1])
                variant = found[2].strip()
                for place, head in enumerate(heads):
                    if pair := re.match(r"([\d.]+) / ([\d.]+) = \*\*([\d.]+)\*\*", cells[place]):
                        figure = f"{pair[1]} ns a point, a plain loop {pair[2]}, ratio {pair[3]}"
                    elif head in ("hot", "swept"):  # then the plain loop and the fastest peer, where there are any
                        beside = [f"{html.escape(other[1].strip() or 'a plain loop')} {other[2]}, ratio {other[3]}"
                                  for cell in cells[place + 1:place + 3]
                                  if (other := re.match(r"([A-Za-z_ ]*)([\d.]+) \*\*([\d.]+)\*\*", cell))]
                        figure = "; ".join([f"{cells[place]} ns a point", *beside])
                    else:
                        continue
                    what = ", ".join(filter(None, (variant, head.split(":")[0])))
                    self.figures[name].append(f"{figure} ({what})")

    def read_fortran(self):
        """Interfaces of the module; of a procedure that adds lengths of texts its head."""
        module = next(self.tree.glob("fortran/sharedanalysis.f90")).read_text()
        self.fortran = {}
        for found in re.finditer(r"^( +)((?:\w+\([\w ]*\) )?(?:subroutine|function)) (\w+)\(((?:.|\n)*?)^\1end (?:subroutine|function)[^\n]*", module, re.M):
            if found[3] in self.page:
                lines = [line.removeprefix(found[1]) for line in found[0].splitlines() if "import ::" not in line]
                head = []  # a procedure's, without its body
                for line in lines:
                    if re.match(r"  +(interface|call|result_? =|type\(c_ptr\) :: \w+_\(|character\(.*target :: )", line):
                        break
                    head.append(line)
                self.fortran[found[3]] = "\n".join(head if head == lines else head + [lines[-1]])

    def read_python(self):
        sys.path.insert(0, str(self.tree / "python"))
        from sharedanalysis import describe  # needs NumPy, not the library
        self.python = {name: describe(name) for name in self.page}

    # ---- pages

    def link(self, path, label=None, depth="../"):
        self.linked.add(path)
        return f'<a href="{depth}files/{path}.txt">{html.escape(label or path)}</a>'

    def entry(self, r):
        name = r["name"]
        arguments = ", ".join(a["type"] + " " + a["name"] for a in r["arguments"]) or "void"
        rows = "".join(
            f"<tr><td><code>{a['name']}</code></td><td>{a['direction'].replace(',', ', ')}</td>"
            f"<td>({html.escape(', '.join(a['shape']))})</td><td>{self.set(a['unit'])}</td><td>{self.set(a['meaning'])}</td></tr>"
            for a in r["arguments"])
        table = ("<table class=\"arguments\"><thead><tr><th>argument</th><th>direction</th><th>shape</th><th>unit</th><th>meaning</th></tr>"
                 f"</thead><tbody>{rows}</tbody></table>" if rows else "")
        python = self.python[name]
        returned = python.returned()
        call = f"{name}({python.signature()})" + (" -> " + ", ".join(returned) if returned else "")
        generic = [self.link(GENERIC, "generic tests of every kernel")] if python.is_kernel else []
        generic += [self.link("tests/bindings/python_test.py", "from Python")] if "tests/bindings/python_test.py" not in self.tests[name] else []
        facts = [("Declared in", self.link("include/" + r["file"], f"include/{r['file']}, line {r['line']}")),
                 ("Source", ", ".join(self.link(f) for f in self.sources[name])),
                 ("Tests", ", ".join(generic + [self.link(f) for f in self.tests[name]])),
                 ("Benchmark", "<br>".join(self.figures[name]))]
        facts = "".join(f"<dt>{what}</dt><dd>{value}</dd>" for what, value in facts if value)
        raw = lambda text: ".. raw:: html\n\n" + indented(text)
        code = lambda language, text: f".. code-block:: {language}\n\n" + indented(text)
        body = "\n\n".join([
            raw(self.text(r["text"]) + table), raw("<details><summary>Fortran</summary>"), code("fortran", self.fortran[name]),
            raw("</details><details><summary>Python</summary>"), code("text", "sharedanalysis." + call),
            raw(f"</details><dl class=\"facts\">{facts}</dl>")])
        return f".. c:function:: {r['result']} {name}({arguments})\n   :noindexentry:\n\n{indented(body)}\n"

    def family(self, family):
        file = family["file"]
        title = family["title"]
        parts = [title, "=" * len(title), "", f"``#include \"{file.split('/')[0]}.h\"``, header ``{file}``. :doc:`conventions`.", ""]
        for section in self.description["sections"]:
            routines = [r for r in self.routines if (r["file"], r["section"]) == (file, section["title"])]
            if section["file"] != file or not routines:
                continue
            if section["title"] != title:
                parts += [section["title"], "-" * len(section["title"]), ""]
            names = "".join(f'<li><a href="#c.{r["name"]}">{r["name"]}</a> {html.escape(r["brief"])}</li>' for r in routines)
            parts += [".. raw:: html", "", indented(f"{self.text(section['text'])}\n<ul class=\"routines\">{names}</ul>"), ""]
            parts += [self.entry(r) for r in routines]
        self.write(self.page_of(file) + ".rst", "\n".join(parts))

    def conventions(self):
        title = "Conventions of all routines"
        parts = [title, "=" * len(title), ""]
        for part, name in PARTS.items():
            comment = re.search(r"/\*\* @file \w+\.h\n(.*?)\*/", (ROOT / f"include/{part}.h").read_text(), re.S)[1]
            text = re.sub(r"^ \*  ?", "", comment, flags=re.M)
            text = text.split("CONTENTS\n")[0].replace("CONVENTIONS\n", "")
            text = "\n".join(line.rstrip(" *") for line in text.splitlines())
            parts += [name, "-" * len(name), "", ".. raw:: html", "", indented(self.text(text.strip("\n"))), ""]
        self.write("reference/conventions.rst", "\n".join(parts))

    def classes(self):
        title = "Classes"
        parts = [title, "=" * len(title), ""]
        for name in ("acd_block_handler.h", "acd_TypeClass.h", "spx_WipReporter.h"):
            parts += [name, "-" * len(name), "", ".. code-block:: cpp", "", indented((ROOT / "include" / name).read_text()), ""]
        self.write("reference/classes.rst", "\n".join(parts))

    def programs(self):
        """What each program says of itself, as its manual page has it."""
        helps = sorted((self.tree / "generated/help").glob("*.txt"))
        title = "Programs"
        parts = [title, "=" * len(title), "", "Each has a manual page of section 1: ``man sharedanalysis-explicit``.", ""]
        for file in helps:
            parts += [file.stem, "-" * len(file.stem), "", ".. code-block:: text", "", indented(file.read_text()), ""]
        self.write("programs.rst", "\n".join(parts))

    def manual(self, page):
        """A page of the manual, its links to files of the tree turned into links within the site."""
        source = ROOT / (page + ".md")
        pages = {p + ".md": self.manual_page(p) for p in MANUAL}
        here = self.manual_page(page)

        def turned(match):
            label, target = match[1], match[2]
            path, _, anchor = target.partition("#")
            if re.match(r"\w+:", target) or not path:
                return match[0]
            path = os.path.relpath(os.path.normpath(source.parent / path), ROOT)
            relative = lambda to: os.path.relpath(to, os.path.dirname(here) or ".")
            if path in pages:
                return f"{label}({relative(pages[path])}.md{'#' + anchor if anchor else ''})"
            if re.fullmatch(r"include/\w+/\w+\.h", path):
                return f"{label}({relative(self.page_of(path[8:]))}.rst)"
            if path == "include":
                return f"{label}({relative('index')}.rst)"
            if re.search(r"\.(png|svg)$", path):
                to = self.folder / "images" / os.path.basename(path)
                to.parent.mkdir(exist_ok=True)
                shutil.copy(ROOT / path, to)
                return f"{label}({relative('images/' + to.name)})"
            self.linked.add(path)
            return f"<a href=\"{'../' * here.count('/')}files/{path}.txt\">{label[1:-1].replace('`', '')}</a>"

        text = re.sub(r"(!?\[[^\]\[]*\])\(([^)\s]+)\)", turned, source.read_text())
        self.write(here + ".md", re.sub(r"<!--.*?-->\n?", "", text))

    @staticmethod
    def manual_page(page):
        return {"README": "readme", "bench/README": "manual/benchmarks", "packaging/README": "manual/packages"}.get(page) or "manual/" + os.path.basename(page).lower()

    def contents(self):
        families = self.description["families"]
        assert {f["file"] for f in families} == {r["file"] for r in self.routines}

        def tree(caption, entries):
            return [".. toctree::", f"   :caption: {caption}", "   :maxdepth: 1", "", *(f"   {entry}" for entry in entries), ""]
        present = [self.manual_page(p) for p in MANUAL]
        parts = ["SharedAnalysis", "==============", "", f"{len(self.routines)} routines of finite-element structural analysis, for C, C++,"
                 " Fortran and Python. The search finds a routine by its name in any spelling, by a part of it, or by words of what it does."
                 " Every built-in material has its pictures in :doc:`manual/user-materials`.", ""]
        parts += tree("Manual", ["Overview <readme>", *present[1:], "programs"])
        parts += tree("Reference", ["reference/conventions"])
        for part, name in PARTS.items():
            parts += tree(name, [self.page_of(f["file"]) for f in families if f["file"].startswith(part + "/")])
        parts += tree("Classes", ["Classes of the interface <reference/classes>"])
        self.write("index.rst", "\n".join(parts))

    def search(self):
        """Name, page, first sentence and further words of each routine, for search.js."""
        by_name = {r["name"]: r for r in self.routines}
        titles = {f["file"]: f["title"] for f in self.description["families"]}
        rows = []
        for r in self.routines:
            words, todo, seen = [titles[r["file"]], r["section"]], [r["name"]], set()
            while todo:  # "X for listed points" is found by what X does
                name = todo.pop()
                if name not in seen:
                    seen.add(name)
                    words.append(by_name[name]["text"])
                    todo += self.names.findall(by_name[name]["brief"])
            found = sorted(set(re.findall(r"[a-z][a-z0-9-]+", " ".join(words).lower())))
            rows.append([r["name"], self.page[r["name"]], r["brief"], " ".join(found)])
        self.write("_static/routines.js", "const kRoutines = " + json.dumps(rows, separators=(",", ":")) + ";\n")

    def run(self):
        if unlisted := {f"docs/{path.stem}" for path in (ROOT / "docs").glob("*.md")} - set(MANUAL):
            raise SystemExit(f"pages.py: {', '.join(sorted(unlisted))} stands in no list of pages")
        self.find_uses()
        self.read_benchmarks()
        self.read_fortran()
        self.read_python()
        for family in self.description["families"]:
            self.family(family)
        self.conventions()
        self.classes()
        self.programs()
        for page in MANUAL:
            self.manual(page)
        self.contents()
        self.search()
        for path in sorted(self.linked):
            copy = self.folder / "extra/files" / (path + ".txt")
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_text((ROOT / path).read_text())
        for file in ("conf.py", "templates", "static"):
            place = ROOT / "docs/site" / file
            if place.is_dir():
                shutil.copytree(place, self.folder / {"static": "_static"}.get(file, file), dirs_exist_ok=True)
            else:
                shutil.copy(place, self.folder)


def indented(text):
    return "\n".join("   " + line if line else line for line in text.split("\n"))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    Site(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])).run()
