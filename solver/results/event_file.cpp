#include "solver/results/event_file.h"

#include "solver/model/text.h"

#include <cmath>

namespace sharedanalysis::solver {
namespace {

std::string beginningOf(const BrickEvent& event) {
  std::string line;
  appendCell(line, event.time);
  line.append(1, ',').append(std::to_string(event.increment));
  return line;
}

} // namespace

EventFile::EventFile(const std::filesystem::path& name, const Case& definition, Start start) : file_(name, start) {
  for (const Section& section : definition.sections)
    names_.push_back(cellOf(section.group) + ',' + cellOf(definition.materials[section.material].name));
  if (start == Start::New) file_.put("time,increment,element,group,material,event,value");
}

// The bindings name every member, so that none is forgotten.
void EventFile::visit(Archive& archive) {
  [[maybe_unused]] auto& [file, names, lines, omitted, last] = *this;
  file.visit(archive);
  archive(lines, omitted, last.time, last.increment);
  if (lines < 0 || lines > kMostEvents || omitted < 0) throw InputError("its events are none that a run has");
}

void EventFile::write(const BrickEvents& events) {
  std::string text;
  for (const BrickEvent& event : events.first) {
    if (room() == 0) break;
    ++lines_;
    --omitted_;
    if (!text.empty()) text += '\n';
    text +=
        beginningOf(event) + ',' + std::to_string(event.number) + ',' + names_[static_cast<std::size_t>(event.section)];
    text.append(1, ',').append(eventNames[static_cast<std::size_t>(event.kind)]).append(1, ',');
    if (std::isfinite(event.value)) text += exactNumber(event.value);
  }
  omitted_ += events.count; // but those that were written
  if (events.count > 0) last_ = events.last;
  if (!text.empty()) file_.put(text);
}

void EventFile::close() {
  if (omitted_ > 0) file_.put(beginningOf(last_) + ",,,,omitted," + std::to_string(omitted_));
  file_.close();
}

} // namespace sharedanalysis::solver
