// The generic checks on kernels that are wrong on purpose: each fault must be found, and the sound kernels pass.
#include <exception>
#include <iostream>
#include <map>

#include "library.h"

namespace {

using namespace sa::test;

struct Expectation {
  const char *kernel, *check, *finding; // no check: sound
};

const Expectation kExpectations[] = {
    {"FAULTY_WRITES_PAST_END", "writes", "touches memory past the end of an argument: y"},
    {"FAULTY_WRITES_BEFORE", "writes", "writes before the first value of y"},
    {"FAULTY_READS_PAST_END", "writes", "touches memory past the end of an argument: x"},
    {"FAULTY_CHANGES_INPUT", "writes", "changes the input x"},
    {"FAULTY_MISSES_A_POINT", "writes", "leaves values of y unwritten"},
    {"FAULTY_STOPS_AT_SCRATCH", "writes", "leaves values of y unwritten"},
    {"FAULTY_WORKS_ON_EMPTY", "empty", "length 0 changes y"},
    {"FAULTY_DEPENDS_ON_PLACE", "pieces", "going point by point changes the bits of y"},
    {"FAULTY_LEAKS_NAN", "reach", "spoils other points in y"},
    {"FAULTY_SHARES_SCRATCH", "threads", "another thread changes the bits of y"},
    {"FAULTY_READS_UNREAD", "writes", "touches memory past the end of an argument: unused"},
    {"FAULTY_IGNORES_LIST", "writes", "changes values of other points in y"},
    {"FAULTY_FILLS_STRIDE", "writes", "changes values of other points in y"},
    {"FAULTY_SHORT_OFFSET", "far", "touches other memory where columns or entities are far apart"},
    {"FAULTY_ENTITY_FROM_ZERO", "writes", "changes values of other points in y"},
    {"FAULTY_RECORD_FROM_ZERO", "writes", "changes values of other points in y"},
    {"FAULTY_KEEPS_CURSOR", "pieces", "splitting the block changes the bits of cursor"},
    {"FAULTY_IGNORES_PLACE", "writes", "leaves values of y unwritten"},
    {"FAULTY_FIRST_PART", "writes", "changes other parts of records in y"},
    {"FAULTY_NEXT_POINT", nullptr, nullptr},
    {"FAULTY_NEXT_POINTINDX", "lists", "gives listed points other values of y than a call for all"},
    {"FAULTY_COUNTS_MEMBERS", "lists", "gives listed points other values of y than a call for all"},
    // one more finding of kernels above
    {"FAULTY_DEPENDS_ON_PLACE", "hard", "splitting a block with hard data changes the bits of y"},
    {"FAULTY_FIRST_PART", "writes", "leaves cursor at another record"},
    {"FAULTY_KEEPS_CURSOR", "writes", "leaves cursor at another record"},
    {"FAULTY_LEAKS_NAN", "hard", "hard data of one point change another in y"},
    {"FAULTY_DOES_NOT_RETURN", "hard", "does not return"},
    {"FAULTY_TRAPS", "hard", "traps on a floating-point operation"},
    {"FAULTY_LEAVES_FLAGS", "hard", "leaves a floating-point flag"},
    {"FAULTY_ROUNDS_AS_CALLER", "hard", "the caller's environment changes the bits of y"},
    {"FAULTY_KEEPS_ENVIRONMENT", "hard", "changes the floating-point environment of its caller"},
    {"FAULTY_SWALLOWS_NAN", "reach", "NaN in x does not reach y"},
    {"SOUND_LIST", nullptr, nullptr},
    {"SOUND_RANGE", nullptr, nullptr},
    {"SOUND_SET", nullptr, nullptr},
    {"SOUND_PART", nullptr, nullptr},
};

std::map<std::string, Findings> allFindings(GuardedMemory& memory, const Kernel& kernel) {
  HardCases hard{1, 0, 48, 0, {}};
  return {{"writes", checkWrites(memory, kernel)}, {"lists", checkLists(memory, kernel)},
          {"empty", checkEmpty(memory, kernel)},   {"pieces", checkPieces(memory, kernel)},
          {"far", checkFar(memory, kernel)},       {"hard", checkHard(memory, kernel, hard)},
          {"reach", checkReach(memory, kernel)},   {"threads", checkThreads(kernel)}};
}

bool isAsExpected(const Expectation& expected, std::map<std::string, Findings>& findings) {
  if (expected.check != nullptr) return findings[expected.check].count(expected.finding) == 1;
  for (const auto& [check, found] : findings)
    if (!found.empty()) return false;
  return true;
}

int run(const std::string& library) {
  const std::vector<Kernel> kernels = openKernels(library);
  GuardedMemory memory;
  GuardedMemory::limitTime();
  int failed = 0;
  for (const Kernel& kernel : kernels) {
    watch(kernel);
    std::map<std::string, Findings> findings = allFindings(memory, kernel);
    int rows = 0;
    bool isGood = true;
    for (const Expectation& expected : kExpectations) {
      if (kernel.info->name != std::string(expected.kernel)) continue;
      ++rows;
      isGood = isGood && isAsExpected(expected, findings);
    }
    if (isGood && rows > 0) continue;
    ++failed;
    std::cout << kernel.info->name << " with " << rows << " expectations gives:\n";
    for (const auto& [check, found] : findings)
      for (const std::string& finding : found) std::cout << "  " << check << ": " << finding << "\n";
  }
  std::cout << kernels.size() << " kernels, " << failed << " not as expected\n";
  return failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::runtime_error("usage: planted_faults LIB");
    return run(argv[1]);
  } catch (const std::exception& e) {
    std::cerr << "planted_faults: " << e.what() << "\n";
    return 2;
  }
}
