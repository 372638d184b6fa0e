# The site as Sphinx builds it from what pages.py writes.  Nothing in it is fetched: it opens from disk.
import pathlib

from pygments.formatters import HtmlFormatter

project = "SharedAnalysis"
extensions = ["myst_parser"]
myst_heading_anchors = 4
root_doc = "index"
exclude_patterns = ["extra"]
templates_path = ["templates"]
html_theme = "basic"
html_title = "SharedAnalysis"
html_static_path = ["_static"]
html_extra_path = ["extra"]
html_css_files = ["site.css", "dark.css"]
html_js_files = [("routines.js", {"defer": "defer"}), ("search.js", {"defer": "defer"})]
html_sidebars = {"**": ["localtoc.html", "globaltoc.html"], "search": ["globaltoc.html"], "index": []}
html_copy_source = False
html_show_sourcelink = False
html_show_search_summary = False  # it would be fetched, which a browser refuses to pages from disk
html_use_index = False
pygments_style = "tango"
highlight_language = "text"
suppress_warnings = ["myst.header", "misc.highlighting_failure"]

# Code on a dark page has colours of its own.
_dark = HtmlFormatter(style="native").get_style_defs(".highlight")
(pathlib.Path(__file__).parent / "_static/dark.css").write_text(
    "@media (prefers-color-scheme: dark) {\n" + _dark.replace("background: #202020", "background: none") + "\n}\n")
