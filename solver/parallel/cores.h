// How many cores the process may use.
#pragma once

#include <filesystem>
#include <string>

namespace sharedanalysis::solver {

// What batch systems, cpusets, taskset and the quotas of containers leave to the process, at least one; the C library may count all of
// the machine.
int usableCores();

// The whole cores of the smallest quota of the control groups (version 1 or 2, mounted at `root`) that the lines of
// /proc/self/cgroup name, or of those above them; 0 without one.
int coresOfQuota(const std::string& groups, const std::filesystem::path& root);

} // namespace sharedanalysis::solver
