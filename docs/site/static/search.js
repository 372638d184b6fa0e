// Routines are found by name, in any spelling, and by the words of their declarations; Sphinx finds words of pages.
if (typeof Search !== "undefined") {
  Search.performObjectSearch = (term, terms) => {
    const words = [...terms].filter((word) => !stopwords.includes(word));
    if (words.length === 0 || term !== words[0]) return []; // asked for each term, answered once for all
    const shown = new Option();
    const results = [];
    for (const [name, page, brief, others] of kRoutines) {
      const lower = name.toLowerCase(), first = brief.toLowerCase();
      let score = 0;
      for (const word of words) {
        const stem = word.length > 3 ? word.replace(/(es|s)$/, "") : word;
        const found = lower === word ? 90 : lower.startsWith(word) ? 60 : lower.includes(word) ? 50 : first.includes(stem) ? 40 :
            others.includes(stem) ? 20 : 0;
        if (found === 0) { score = 0; break; }
        score += found / words.length;
      }
      if (score === 0) continue;
      shown.textContent = brief;
      const file = Search._index.docnames.indexOf(page);
      results.push([page, name, "#c." + name, shown.innerHTML, Math.round(100 * score) / 100 - lower.length / 1000, Search._index.filenames[file]]);
    }
    return results;
  };
}
