#include "solver/parallel/cores.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <sstream>
#include <thread>

namespace sharedanalysis::solver {
namespace {

// "200000 100000": microseconds of computing in each so many; "max" or -1: no quota.
double coresOf(std::istream&& quota, std::istream&& period) {
  double used = 0, all = 0;
  return quota >> used && period >> all && used > 0 && all > 0 ? used / all : 0;
}

double coresOfGroup(const std::filesystem::path& directory, bool isFirstVersion) {
  if (isFirstVersion)
    return coresOf(std::ifstream(directory / "cpu.cfs_quota_us"), std::ifstream(directory / "cpu.cfs_period_us"));
  std::ifstream file(directory / "cpu.max");
  std::string quota, period;
  file >> quota >> period;
  return coresOf(std::istringstream(quota), std::istringstream(period));
}

} // namespace

int coresOfQuota(const std::string& groups, const std::filesystem::path& root) {
  double fewest = 0;
  std::istringstream lines(groups);
  for (std::string line; std::getline(lines, line);) { // "4:cpu,cpuacct:/a/b", "0::/a/b"
    const std::size_t first = line.find(':'), second = line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string controllers = ',' + line.substr(first + 1, second - first - 1) + ',';
    const bool isFirstVersion = controllers.find(",cpu,") != std::string::npos;
    if (!isFirstVersion && controllers != ",,") continue;
    const std::filesystem::path mount = isFirstVersion ? root / "cpu" : root;
    std::filesystem::path group = std::filesystem::path(line.substr(second + 1)).relative_path();
    for (;; group = group.parent_path()) {
      const double cores = coresOfGroup(mount / group, isFirstVersion);
      if (cores > 0) fewest = fewest > 0 ? std::min(fewest, cores) : cores;
      if (group.empty()) break;
    }
  }
  constexpr double kMost = 1 << 20;
  return fewest > 0 ? std::max(1, static_cast<int>(std::min(fewest, kMost))) : 0;
}

int usableCores() {
  cpu_set_t set;
  int cores = sched_getaffinity(0, sizeof set, &set) == 0
                  ? CPU_COUNT(&set)
                  : static_cast<int>(std::thread::hardware_concurrency()); // more cores than the set has room for
  std::ifstream file("/proc/self/cgroup");
  const std::string groups{std::istreambuf_iterator<char>(file), {}};
  if (const int quota = coresOfQuota(groups, "/sys/fs/cgroup"); quota > 0) cores = std::min(cores, quota);
  return std::max(1, cores);
}

} // namespace sharedanalysis::solver
