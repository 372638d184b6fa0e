#include "history.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace sharedanalysis::solver {
namespace {

void append(std::string& line, double value) {
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  if (!line.empty()) line += ',';
  line.append(text.data(), end);
}

} // namespace

HistoryFile::HistoryFile(const std::filesystem::path& name) : file_(name) {
  file_.put(
      "time,increment,stable_increment,kinetic_energy,strain_energy,hourglass_energy,viscous_energy,damage_energy,"
      "external_work,total_energy,balance_error,momentum_x,momentum_y,momentum_z,angular_momentum_x,angular_momentum_y,"
      "angular_momentum_z");
}

void HistoryFile::write(const Analysis& analysis, double balanceError) {
  const Progress progress = analysis.progress();
  const Energies energies = analysis.energies();
  std::string line;
  append(line, progress.time);
  line += ',' + std::to_string(progress.increment);
  for (const double value : {progress.stableIncrement, energies.kinetic, energies.strain, energies.hourglass,
                             energies.viscous, energies.damage, energies.external, energies.total(), balanceError})
    append(line, value);
  for (const double value : analysis.linearMomentum()) append(line, value);
  for (const double value : analysis.angularMomentum()) append(line, value);
  file_.put(line);
}

void HistoryFile::close() { file_.close(); }

} // namespace sharedanalysis::solver
