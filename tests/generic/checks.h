// What every kernel must do whatever it computes; derived from the registry alone.
#pragma once

#include <set>
#include <string>

#include "guarded_call.h"

namespace sa::test {

// A kernel of a loaded library.
struct Kernel {
  const RoutineInfo* info = nullptr;
  void* address = nullptr;
  // The routine that does for all points what this one does for those of a list, or this one.
  const RoutineInfo* wholeInfo = nullptr;
  void* wholeAddress = nullptr;
};

// Findings of one check on one kernel; equal ones count once.
using Findings = std::set<std::string>;

// Blocks of many lengths: nothing is touched outside the arrays, inputs keep their bits, every output of the processed
// points is written, and nothing else; a cursor moves by the records of the call.
Findings checkWrites(GuardedMemory& memory, const Kernel& kernel);
// Lengths 0 and -1 and empty lists touch nothing.
Findings checkEmpty(GuardedMemory& memory, const Kernel& kernel);
// A list or set of points gives what a call for all points gives there: of NAME for NAMEINDX, NAMEELSET and the like, of the
// routine itself where it has no such form.
Findings checkLists(GuardedMemory& memory, const Kernel& kernel);
// A block at once, in pieces and point by point: the same bits.
Findings checkPieces(GuardedMemory& memory, const Kernel& kernel);
// Points with hard data beside ordinary ones, called in floating-point environments of any kind: the call
// returns, keeps within its arrays, does not trap, leaves the environment as it was and gives the bits of the usual
// environment, of any splitting, and to the ordinary points those of an ordinary call.
struct HardCases {
  std::uint64_t seed = 1, first = 0, count = 0;
  std::uint64_t inputs = 0; // points with hard data so far
  Complain details;         // told what it takes to run the first case of every finding again
};
Findings checkHard(GuardedMemory& memory, const Kernel& kernel, HardCases& cases);
// A value on which a result depends is replaced by NaN: so is the result, in ordinary points and in such without shear.
// Another number, NaN, infinity, huge and tiny values in one point leave all others their bits.
Findings checkReach(GuardedMemory& memory, const Kernel& kernel);
// Rows of the list of exceptions to it that no kernel so far has needed.
Findings unusedExceptions();
// Calls from several threads at once give the bits of one thread.
Findings checkThreads(const Kernel& kernel);
// Leading dimensions and entity numbers beyond a thousand million give the bits of small ones.
Findings checkFar(GuardedMemory& memory, const Kernel& kernel);
// A number that stands for the bits of all outputs over several lengths and variants, NaNs made equal.
std::uint64_t hashOutputs(GuardedMemory& memory, const Kernel& kernel, Findings& findings);

// Outputs and result equal, NaNs alike.
void compareOutputs(const KernelCase& expected, const KernelCase& got, const std::string& what, Findings& findings);
// One point was given other values: the others are as they were.
void compareOtherPoints(const KernelCase& sound, const KernelCase& spoiled, int point, Findings& findings);
// Pieces of the lengths of the pattern, over and over.
KernelCase runInPieces(GuardedMemory& memory, const Kernel& kernel, const KernelCase& start,
                       const std::vector<int>& pattern, Findings& findings);

} // namespace sa::test
