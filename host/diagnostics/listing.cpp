#include "output.h"
#include "words.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace sharedanalysis::diagnostics {
namespace {

using host::counted;
using host::joined;
using host::printable;

constexpr std::string_view kNoInstance = "";

// ---- words

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

// A time of the wall.
std::string seconds(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value >= 1000 && value < 1e9 ? "%.0f s" : "%.3g s", value);
  return text;
}

std::string number(const std::optional<double>& value) { return value ? number(*value) : "-"; }

// Adds "3 errors" to a list, unless the count is 0.
void addCount(std::vector<std::string>& words, int64_t count, const std::string& word) {
  if (count > 0) words.push_back(counted(count, word));
}

std::string range(const std::optional<double>& smallest, const std::optional<double>& largest) {
  const std::string from = number(smallest), to = number(largest); // digits that are not shown may differ
  return from == to ? from : from + " to " + to;
}

std::string words(const Occurrence& where) {
  std::vector<std::string> list;
  if (where.step) list.push_back("step " + std::to_string(*where.step));
  if (where.increment) list.push_back("increment " + std::to_string(*where.increment));
  if (where.time) list.push_back("time " + number(*where.time));
  return list.empty() ? "outside of steps" : joined(list, " ");
}

// Characters of a UTF-8 text.
std::size_t length(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// ---- page

enum class Colour { None, Red, Yellow, Bold };

class Page {
public:
  explicit Page(const Terminal& terminal) : terminal_(terminal) {}

  void heading(const std::string& text) {
    if (!text_.empty()) text_ += '\n';
    text_ += coloured(text, Colour::Bold) + '\n';
  }

  // A paragraph, broken between words where the terminal ends; later lines are indented by two more.
  void paragraph(std::size_t indent, const std::string& text, Colour colour = Colour::None,
                 std::size_t colouredLength = 0) {
    const std::string shown = printable(text);
    std::string line(indent, ' ');
    std::size_t used = indent, begin = 0;
    bool lineIsEmpty = true;
    while (begin < shown.size()) {
      const std::size_t end = std::min(shown.find(' ', begin), shown.size());
      const std::string word = shown.substr(begin, end - begin);
      if (!lineIsEmpty && used + 1 + length(word) > std::max(terminal_.width, kNarrowest)) {
        text_ += line + '\n';
        line.assign(indent + 2, ' ');
        used = indent + 2;
        lineIsEmpty = true;
      }
      if (!lineIsEmpty) {
        line += ' ';
        ++used;
      }
      line += begin < colouredLength ? coloured(word, colour) : word;
      used += length(word);
      lineIsEmpty = false;
      begin = end + 1;
    }
    text_ += line + '\n';
  }

  // As it is, without blanks at its end.
  void line(const std::string& text) { text_ += text.substr(0, text.find_last_not_of(' ') + 1) + '\n'; }

  void note(const std::string& text) { paragraph(2, "(" + text + ")"); }

  std::size_t width() const { return terminal_.width; }
  const std::string& text() const { return text_; }

private:
  static constexpr std::size_t kNarrowest = 20;

  std::string coloured(const std::string& text, Colour colour) const {
    if (!terminal_.colours || colour == Colour::None) return text;
    const char* const start = colour == Colour::Red ? "\033[31m" : colour == Colour::Yellow ? "\033[33m" : "\033[1m";
    return start + text + "\033[0m";
  }

  Terminal terminal_;
  std::string text_;
};

// ---- table

enum class Cells { Numbers, Counts, Texts };

struct Column {
  std::string title;
  Cells kind;
  std::vector<std::string> cells;
};

bool isBlank(const Column& column) {
  return std::all_of(column.cells.begin(), column.cells.end(),
                     [](const std::string& cell) { return cell.empty() || cell == "0"; });
}

std::size_t widthOf(const Column& column) {
  std::size_t width = length(column.title);
  for (const std::string& cell : column.cells) width = std::max(width, length(cell));
  return width;
}

std::string padded(const std::string& text, std::size_t width, Cells kind) {
  const std::string blanks(width - std::min(width, length(text)), ' ');
  return kind == Cells::Texts ? text + blanks : blanks + text;
}

// Omits columns without information.  On a terminal narrower than the table each row is a paragraph.
void table(Page& page, std::vector<Column> columns) {
  std::erase_if(columns, isBlank);
  if (columns.empty()) return;
  std::size_t total = 0;
  for (const Column& column : columns) total += 2 + widthOf(column);
  const std::size_t rows = columns.front().cells.size();
  if (total > page.width()) {
    for (std::size_t row = 0; row < rows; ++row) {
      std::vector<std::string> words;
      for (const Column& column : columns) {
        const std::string& cell = column.cells[row];
        if (cell.empty() || (column.kind == Cells::Counts && cell == "0")) continue;
        words.push_back(column.title.empty() ? cell : column.title + " " + cell);
      }
      page.paragraph(2, joined(words));
    }
    return;
  }
  const auto line = [&](const auto& cellOf) {
    std::string text;
    for (const Column& column : columns) text += "  " + padded(cellOf(column), widthOf(column), column.kind);
    return text;
  };
  page.line(line([](const Column& column) { return column.title; }));
  for (std::size_t row = 0; row < rows; ++row) page.line(line([=](const Column& column) { return column.cells[row]; }));
}

// ---- parts of the listing

Colour colourOf(const Run& run) {
  const bool isBad = run.status == 2 || run.incomplete || (run.status < 1 && !run.ended && run.state != "running");
  return isBad ? Colour::Red : Colour::None;
}

// "2026-11-21T08:03:28Z" as it is read
std::string timeOfDay(std::string utc) {
  if (utc.size() == 20 && utc[10] == 'T' && utc.back() == 'Z') {
    utc[10] = ' ';
    utc.back() = ' ';
    utc += "UTC";
  }
  return utc;
}

void addRun(Page& page, const Run& run) {
  page.paragraph(0, run.job + ": " + run.state, colourOf(run), SIZE_MAX);
  std::string start = "started " + timeOfDay(run.started) + " on " + run.host;
  if (run.elapsed) start += ", took " + seconds(*run.elapsed);
  page.paragraph(2, start);
  std::vector<std::string> words;
  if (run.domains) words.push_back(counted(*run.domains, "domain"));
  if (run.doublePrecision) words.emplace_back(*run.doublePrecision != 0 ? "double precision" : "single precision");
  if (run.rank != 0) words.push_back("file of rank " + std::to_string(run.rank));
  if (!words.empty()) page.paragraph(2, joined(words));
  if (run.incomplete) page.paragraph(2, "incomplete: records were lost by a write error", Colour::Red, SIZE_MAX);
}

void addSteps(Page& page, const std::vector<Step>& steps) {
  page.heading("Steps");
  if (steps.empty()) page.note("none");
  for (const Step& step : steps) {
    std::vector<std::string> words = {step.solver, "procedure " + std::to_string(step.procedure)};
    words.insert(words.end(), step.attributes.begin(), step.attributes.end());
    page.paragraph(2, std::to_string(step.number) + " " + step.name + ": " + joined(words));

    words = {counted(step.increments, "increment")};
    if (step.smallest) words.push_back("of " + range(step.smallest, step.largest));
    if (step.time) words.push_back("to time " + number(*step.time));
    std::string text = joined(words, " ");
    words.clear();
    addCount(words, step.attempts, "attempt");
    addCount(words, step.iterations, "iteration");
    addCount(words, step.cutbacks, "cutback");
    addCount(words, step.errors, "error");
    addCount(words, step.warnings, "warning");
    if (step.wall) words.push_back("took " + seconds(*step.wall));
    if (!words.empty()) text += ", " + joined(words);
    page.paragraph(4, text);
  }
}

void addIncrements(Page& page, const Record& record) {
  if (record.increments.empty()) return;
  page.heading("Increments");
  if (record.groupCount > record.increments.size())
    page.note(counted(static_cast<int64_t>(record.groupCount - record.increments.size()), "earlier line") +
              "; --all shows them");
  std::vector<Column> columns;
  for (const char* title : {"step", "increment"}) columns.push_back({title, Cells::Numbers, {}});
  for (const char* title : {"size", "time"}) columns.push_back({title, Cells::Texts, {}});
  for (const char* title : {"attempts", "iterations", "cutbacks", "errors", "warnings"})
    columns.push_back({title, Cells::Counts, {}});
  columns.push_back({"", Cells::Texts, {}}); // state
  for (const IncrementGroup& group : record.increments) {
    std::string numbers = std::to_string(group.first);
    if (group.last != group.first) numbers.append("-").append(std::to_string(group.last));
    const std::string cells[] = {group.step ? std::to_string(*group.step) : "",
                                 numbers,
                                 range(group.smallest, group.largest),
                                 number(group.time),
                                 std::to_string(group.attempts),
                                 std::to_string(group.iterations),
                                 std::to_string(group.cutbacks),
                                 std::to_string(group.errors),
                                 std::to_string(group.warnings),
                                 group.state == "converged" ? "" : group.state};
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].cells.push_back(cells[k]);
  }
  table(page, columns);
}

// "12, 13 of WHEEL-1, 7 of TYRE-1"; without instances "12, 13, 7"
std::string listOf(const std::vector<PlaceCount>& places, bool inParts) {
  std::string text;
  for (std::size_t k = 0; k < places.size(); ++k) {
    if (k > 0) text += ", ";
    text += std::to_string(places[k].label);
    if (places[k].count > 1) text += " (" + std::to_string(places[k].count) + " times)";
    const bool last = k + 1 == places.size() || places[k + 1].instance != places[k].instance;
    if (inParts && last && places[k].instance != kNoInstance) text += " of " + places[k].instance;
  }
  return text;
}

void addPlaces(Page& page, const Problem& problem, bool inParts) {
  std::size_t shown = 0;
  std::vector<std::string> lists;
  for (const char* kind : {"element", "node"}) {
    std::vector<PlaceCount> places;
    for (const PlaceCount& place : problem.places)
      if (place.kind == kind) places.push_back(place);
    if (places.empty()) continue;
    shown += places.size();
    lists.push_back(std::string(kind) + (places.size() > 1 ? "s " : " ") + listOf(places, inParts));
  }
  if (lists.empty()) return;
  std::string text = joined(lists, "; ");
  if (problem.placeCount > shown) text += " and " + std::to_string(problem.placeCount - shown) + " more";
  page.paragraph(4, text);
}

std::string labelOf(const Problem& problem) {
  std::string label = problem.kind;
  for (char& c : label) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return problem.isError && problem.kind != "error" ? label + " ERROR" : label;
}

// Type codes are read in hexadecimal; the reason of a cutback is a number.
std::string codeOf(const Problem& problem) {
  char text[32];
  std::snprintf(text, sizeof text, problem.kind == "cutback" ? "%lld" : "0x%08llX",
                static_cast<long long>(problem.code));
  return text;
}

void addProblem(Page& page, const Problem& problem, bool inParts) {
  const std::string label = labelOf(problem);
  std::string text = label;
  if (!problem.name.empty() && problem.kind != "internal") text += " " + problem.name;
  text += " (" + codeOf(problem) + "), " + (problem.count == 1 ? "once" : std::to_string(problem.count) + " times");
  page.paragraph(2, text, problem.isError ? Colour::Red : Colour::Yellow, label.size());
  if (!problem.text.empty()) page.paragraph(4, problem.text);
  const std::string first = words(problem.first), last = words(problem.last);
  page.paragraph(4, problem.count == 1 ? first
                    : first == last    ? "all in " + first
                                       : "first " + first + "; last " + last);
  addPlaces(page, problem, inParts);
}

void addProblems(Page& page, const Record& record, bool isNarrowed) {
  page.heading("Problems");
  if (record.problems.empty()) page.note(isNarrowed ? "none of these" : "none");
  for (const Problem& problem : record.problems) addProblem(page, problem, record.run.inParts);
  if (record.problemCount > record.problems.size())
    page.note(std::to_string(record.problemCount - record.problems.size()) + " more; --all shows them");
}

void addMessages(Page& page, const Record& record) {
  page.heading("Messages");
  if (record.messages.empty()) page.note("none");
  for (const Message& message : record.messages) {
    std::string where = words(message.where);
    if (message.attempt) where += " attempt " + std::to_string(*message.attempt);
    if (message.iteration) where += " iteration " + std::to_string(*message.iteration);
    if (message.domain) where += " domain " + std::to_string(*message.domain);
    const std::string name = message.name.empty() || message.kind == "internal" ? message.kind : message.name;
    page.paragraph(2, std::to_string(message.id) + " " + where + ": " + name + ": " + message.text);
  }
  const auto shown = static_cast<int64_t>(record.messages.size());
  if (record.messageCount > shown) page.note(std::to_string(record.messageCount - shown) + " more; --all shows them");
}

} // namespace

std::string listing(const Record& record, const Selection& selection, const Terminal& terminal) {
  Page page(terminal);
  addRun(page, record.run);
  addSteps(page, record.steps);
  addIncrements(page, record);
  addProblems(page, record, selection.isNarrowed());
  if (selection.isNarrowed()) addMessages(page, record);
  return page.text();
}

} // namespace sharedanalysis::diagnostics
