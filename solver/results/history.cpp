#include "solver/results/history.h"

#include "solver/model/text.h"
#include "spx.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace sharedanalysis::solver {
namespace {

const std::array filteredNames{"kinetic_energy",    "strain_energy", "hourglass_energy",   "viscous_energy",
                               "damage_energy",     "external_work", "total_energy",       "momentum_x",
                               "momentum_y",        "momentum_z",    "angular_momentum_x", "angular_momentum_y",
                               "angular_momentum_z"};

std::vector<double> valuesToFilter(const Analysis& analysis) {
  const Energies e = analysis.energies();
  std::vector<double> values{e.kinetic, e.strain, e.hourglass, e.viscous, e.damage, e.external, e.total()};
  for (const auto& momentum : {analysis.linearMomentum(), analysis.angularMomentum()})
    values.insert(values.end(), momentum.begin(), momentum.end());
  return values;
}

// Of one value.
std::size_t wordsOfFilter(const host::LowPass& lowPass) {
  return static_cast<std::size_t>(2 * (lowPass.order / 2) + 2);
}

// The coefficients belong to increments of one length and change with it: the history of a section holds signals, which stay what
// they are.  Increments too long for the cut-off lower it.
std::vector<double> coefficientsFor(host::LowPass lowPass, double increment) {
  lowPass.cutoff = std::min(lowPass.cutoff, 0.45 / increment);
  return host::lowPassCoefficients(lowPass, increment);
}

} // namespace

HistoryFile::HistoryFile(const std::filesystem::path& name, const Case& definition, Start start)
    : file_(name, start), lowPass_(definition.historyFilter) {
  if (start == Start::GoOn) return;
  std::string names =
      "time,increment,stable_increment,kinetic_energy,strain_energy,hourglass_energy,viscous_energy,damage_energy,"
      "external_work,total_energy,balance_error,momentum_x,momentum_y,momentum_z,angular_momentum_x,angular_momentum_y,"
      "angular_momentum_z";
  for (const std::string& measure : measureNames(definition)) names += "," + measure;
  if (lowPass_)
    for (const char* filtered : filteredNames) names += std::string(",filtered_") + filtered;
  file_.put(names);
}

// The bindings name every member, so that none is forgotten.
void HistoryFile::visit(Archive& archive) {
  [[maybe_unused]] auto& [file, lowPass, filteredTime, filtered, memory] = *this;
  file.visit(archive);
  if (!lowPass) return;
  if (archive.isRestoring()) {
    filtered.resize(filteredNames.size());
    memory.resize(filtered.size() * wordsOfFilter(*lowPass));
  }
  archive(filteredTime, filtered, memory);
}

void HistoryFile::filter(const Analysis& analysis) {
  const double time = analysis.progress().time;
  std::vector<double> values = valuesToFilter(analysis);
  const auto count = static_cast<int32_t>(values.size());
  const int32_t one = 1, ordinary = 1, sections = lowPass_->order / 2, unread = 0;
  if (filtered_.empty()) {
    filterHistory_.resize(values.size() * wordsOfFilter(*lowPass_));
    SPX_OPE_INIFILTERFLD(&count, &ordinary, &one, &sections, &unread, values.data(), values.data(),
                         filterHistory_.data());
  } else if (time > filteredTime_) {
    const std::vector<double> coefficients = coefficientsFor(*lowPass_, time - filteredTime_);
    SPX_OPE_FILTERFLD(&count, &one, &unread, &sections, values.data(), &unread, coefficients.data(),
                      filterHistory_.data());
  } else {
    return;
  }
  filteredTime_ = time;
  filtered_ = std::move(values);
}

void HistoryFile::write(const Analysis& analysis, double balanceError) {
  const Progress progress = analysis.progress();
  const Energies energies = analysis.energies();
  std::string line;
  appendCell(line, progress.time);
  line += ',' + std::to_string(progress.increment);
  for (const double value : {progress.stableIncrement, energies.kinetic, energies.strain, energies.hourglass,
                             energies.viscous, energies.damage, energies.external, energies.total(), balanceError})
    appendCell(line, value);
  for (const double value : analysis.linearMomentum()) appendCell(line, value);
  for (const double value : analysis.angularMomentum()) appendCell(line, value);
  for (const double value : analysis.measures()) appendCell(line, value);
  for (const double value : filtered_) appendCell(line, value);
  file_.put(line);
}

void HistoryFile::close() { file_.close(); }

} // namespace sharedanalysis::solver
