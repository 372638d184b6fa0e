#include "solver/program/output.h"

#include "reference_host.h"
#include "solver/model/memory.h"
#include "solver/model/text.h"
#include "solver/program/messages.h"

#include <system_error>

namespace sharedanalysis::solver {

namespace {

// A strain energy is the difference of numbers near one, in units of the modulus: at strains below 1e-7 it is rounding for the most
// part.
constexpr double kRounding = 1e-14;

} // namespace

std::filesystem::path resultFile(const Case& definition, const char* extension) {
  return definition.outputDirectory / (definition.job + extension);
}

Output::Output(const Case& definition, const Mesh& mesh, const std::vector<std::string>& info, const Ranks& ranks,
               double energyScale, bool digest, Start start)
    : check_(kRounding * energyScale), ranks_(ranks), fieldsPath_(resultFile(definition, fieldsExtension)),
      historyPath_(resultFile(definition, historyExtension)), filesByRank_(definition.filesByRank) {
  if (ranks.isRoot()) {
    history_.emplace(historyPath_, definition, start);
    events_.emplace(resultFile(definition, eventsExtension), definition, start);
  }
  results_.emplace(fieldsPath_, mesh, definition, info, ranks, start);
  makeDigest_ = [&definition, &mesh, this](Start how) {
    digest_.emplace(resultFile(definition, digestExtension), definition.job, mesh, ranks_, how);
  };
  if (digest) makeDigest_(start);
  returnFreeMemory();
}

std::string Output::fieldsName() const {
  const std::string name = fieldsPath_.string();
  return filesByRank_ ? name + "." + std::to_string(ranks_.size()) + ".*" : name;
}

// Only the root saves.
void Output::visit(Archive& archive) {
  check_.visit(archive);
  int64_t hasDigest = digest_ ? 1 : 0;
  archive(hasDigest);
  if (hasDigest == 0 && digest_)
    throw InputError(digest_->name().string() +
                     ": the run that is to go on was without --digest, and so are its results");
  if (hasDigest != 0 && !digest_) makeDigest_(Start::GoOn);
  results_->visit(archive);
  if (history_) history_->visit(archive);
  if (events_) events_->visit(archive);
  if (digest_) digest_->visit(archive);
}

void Output::synchronise() const {
  if (history_) history_->file().synchronise();
  if (events_) events_->file().synchronise();
  results_->synchronise();
  if (digest_) digest_->synchronise();
}

void Output::filterHistory(const Analysis& analysis) {
  analysis.energies(); // every rank has a part in them
  if (history_) history_->filter(analysis);
}

void Output::writeEvents(const BrickEvents& events) {
  if (events_) events_->write(events);
}

std::string Output::eventsText() const {
  if (!events_ || events_->count() == 0) return {};
  return ", " + counted(static_cast<std::size_t>(events_->count()), "event") + " in " + events_->file().name().string();
}

void Output::writeHistory(const Analysis& analysis) {
  check_.update(analysis.energies());
  if (history_) history_->write(analysis, check_.error());
}

void Output::writeFields(const Analysis& analysis) {
  const Progress now = analysis.progress();
  const Energies energies = analysis.energies();
  const FieldSource fields = [&](unsigned choice) { return analysis.fields(choice); };
  results_->write(now.time, fields, energies);
  if (digest_) digest_->write(now, fields, energies);
  if (ranks_.isRoot())
    message("Status", "increment %S time %R stable increment %R kinetic energy %R total energy %R energy error %R",
            {std::to_string(now.increment)},
            {now.time, now.stableIncrement, energies.kinetic, energies.total(), check_.error()});
  if (const std::error_code error = host::writeError())
    throw std::system_error(error, "a message, status or diagnostics file could not be written");
}

void Output::close() {
  if (history_) history_->close();
  if (events_) events_->close();
  results_->close();
  if (digest_) digest_->close();
}

void Output::complete() const {
  if (history_) history_->file().complete();
  if (events_) events_->file().complete();
  results_->complete();
  if (digest_) digest_->complete();
}

} // namespace sharedanalysis::solver
