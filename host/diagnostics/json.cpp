#include "output.h"

#include <nlohmann/json.hpp>

namespace sharedanalysis::diagnostics {
namespace {

using Json = nlohmann::ordered_json;

template <class Value>
Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

Json jsonOf(const Run& run) {
  return {{"job", run.job},
          {"host", run.host},
          {"process", run.process},
          {"program", run.program},
          {"started", run.started},
          {"ended", orNull(run.ended)},
          {"elapsed", orNull(run.elapsed)},
          {"status", run.status},
          {"state", run.state},
          {"rank", run.rank},
          {"domains", orNull(run.domains)},
          {"double_precision", run.doublePrecision ? Json(*run.doublePrecision != 0) : Json()},
          {"in_parts", run.inParts},
          {"incomplete", run.incomplete}};
}

Json jsonOf(const Step& step) {
  return {{"number", step.number},
          {"name", step.name},
          {"solver", step.solver},
          {"procedure", step.procedure},
          {"attributes", step.attributes},
          {"increments", step.increments},
          {"attempts", step.attempts},
          {"iterations", step.iterations},
          {"cutbacks", step.cutbacks},
          {"errors", step.errors},
          {"warnings", step.warnings},
          {"time", orNull(step.time)},
          {"smallest_time_increment", orNull(step.smallest)},
          {"largest_time_increment", orNull(step.largest)},
          {"wall", orNull(step.wall)}};
}

Json jsonOf(const IncrementGroup& group) {
  return {{"step", orNull(group.step)},
          {"first", group.first},
          {"last", group.last},
          {"count", group.count},
          {"state", group.state},
          {"time", orNull(group.time)},
          {"smallest_time_increment", orNull(group.smallest)},
          {"largest_time_increment", orNull(group.largest)},
          {"attempts", group.attempts},
          {"iterations", group.iterations},
          {"cutbacks", group.cutbacks},
          {"errors", group.errors},
          {"warnings", group.warnings}};
}

Json jsonOf(const Occurrence& occurrence) {
  return {{"step", orNull(occurrence.step)},
          {"increment", orNull(occurrence.increment)},
          {"time", orNull(occurrence.time)}};
}

Json jsonOf(const PlaceCount& place) {
  return {{"kind", place.kind}, {"instance", place.instance}, {"label", place.label}, {"count", place.count}};
}

Json jsonOf(const Problem& problem);
Json jsonOf(const Message& message);

template <class Value>
Json listOf(const std::vector<Value>& values) {
  Json list = Json::array();
  for (const Value& value : values) list.push_back(jsonOf(value));
  return list;
}

Json jsonOf(const Problem& problem) {
  return {{"class", problem.kind},           {"code", problem.code},         {"name", problem.name},
          {"is_error", problem.isError},     {"count", problem.count},       {"text", problem.text},
          {"first", jsonOf(problem.first)},  {"last", jsonOf(problem.last)}, {"place_count", problem.placeCount},
          {"places", listOf(problem.places)}};
}

Json jsonOf(const Message& message) {
  Json object = {{"id", message.id}, {"class", message.kind}, {"name", message.name}};
  object.update(jsonOf(message.where));
  object.update({{"attempt", orNull(message.attempt)},
                 {"iteration", orNull(message.iteration)},
                 {"domain", orNull(message.domain)},
                 {"text", message.text}});
  return object;
}

} // namespace

std::string json(const Record& record) {
  const Json whole = {{"format", 1},
                      {"file", record.file.string()},
                      {"run", jsonOf(record.run)},
                      {"steps", listOf(record.steps)},
                      {"increment_group_count", record.groupCount},
                      {"increments", listOf(record.increments)},
                      {"problem_count", record.problemCount},
                      {"problems", listOf(record.problems)},
                      {"message_count", record.messageCount},
                      {"messages", listOf(record.messages)}};
  // texts of solvers may be invalid UTF-8
  return whole.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace sharedanalysis::diagnostics
