// The generic checks on kernels that are wrong on purpose, one fault each, and on sound ones beside them: each fault is
// found, and the sound kernels pass.  A kernel stands beside its declaration and what must be said of it.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <iostream>
#include <map>
#include <thread>

#include "checks.h"
#include "glo/kernel/arithmetic.h"

namespace {

using namespace sa::test;
using Arguments = std::vector<ArgumentInfo>;

ArgumentInfo in(const char* name, const char* role, const char* shape = "1", const char* unit = nullptr) {
  return {name, role, "const int32_t*", "in", {shape}, unit != nullptr ? unit : role};
}
ArgumentInfo real(const char* name, const char* direction, const char* shape, const char* second = nullptr,
                  const char* role = "any", const char* third = nullptr) {
  const bool isInput = std::string_view(direction) == "in";
  return {name, role, isInput ? "const double*" : "double*", direction, {shape, second, third}, role};
}
const ArgumentInfo kN = in("n", "block"), kX = real("x", "in", "n"), kY = real("y", "out", "n"),
                   kCursor{"cursor", "cursor", "int32_t*", "in,out", {"1"}, "cursor"},
                   kRecord = real("y", "out", "1", "*", "record"), kEntities = real("y", "in,out", "*");
const Arguments kPlain = {kN, kX, kY}, kUnread = {kN, in("unused", "unread"), kX, kY},
                kListed = {kN, in("count", "count"), in("list", "list", "count"), kX, kY},
                kTwo = {kN, in("ld", "stride"), real("x", "in", "ld", "2"), real("y", "out", "ld", "2")},
                kThree = {kN, in("ld", "stride"), real("x", "in", "ld", "3"), real("y", "out", "ld", "3")},
                kMapped = {kN, in("map", "entity", "n", "entity of y"), kX, kEntities},
                kRecords = {kN, kCursor, kX, kRecord},
                kParts = {kN,
                          in("parts", "count"),
                          in("part", "index", "1", "1..parts"),
                          kCursor,
                          kX,
                          real("y", "out", "1", "parts", "record", "*")},
                kSet = {kN,
                        in("blockNumber", "place"),
                        in("blockSize", "place"),
                        in("groupNumber", "place"),
                        in("groupSize", "place"),
                        in("last", "count"),
                        in("set", "set", "last"),
                        kCursor,
                        kX,
                        kRecord},
                kRange = {in("first", "first"),
                          in("last", "last"),
                          in("map", "entity", "last", "entity of z"),
                          in("map2", "entity", "*", "entity of y"),
                          real("x", "in", "2", "last"),
                          real("z", "in", "*"),
                          kEntities};

struct Planted {
  const char* name;
  const Arguments& arguments;
  void* kernel;
  std::vector<std::pair<const char*, const char*>> findings; // check and what it must say; none: sound
  const char* whole = nullptr;                               // what it does for listed points
};

// ---- kernels: each was meant to be y = 2 x

using Ints = const int32_t*;
using Reals = const double*;

void twice(Ints n, Reals x, double* y) {
  const sa::OwnArithmetic arithmetic;
  for (int i = 0; i < *n; ++i) y[i] = 2.0 * x[i];
}
void twiceAsCaller(Ints n, Reals x, double* y) {
  for (int i = 0; i < *n; ++i) y[i] = 2.0 * x[i];
}
// Members of a set with the values of their points, or of the first points in their place.
void writeMembers(int before, int n, int last, Ints set, int32_t* cursor, Reals x, double* y, bool ofFirst = false) {
  const sa::OwnArithmetic arithmetic;
  for (int first = 0; n > 0 && *cursor <= last && set[*cursor - 1] - before <= n; ++*cursor) {
    const int point = set[*cursor - 1] - before;
    if (point >= 1) y[*cursor - 1] = 2.0 * x[ofFirst ? first++ : point - 1];
  }
}

template <class Kernel>
void* address(Kernel kernel) {
  return reinterpret_cast<void*>(+kernel);
}
#define POINTS (Ints n, Reals x, double* y)
#define LISTED (Ints n, Ints count, [[maybe_unused]] Ints list, Reals x, double* y)
#define STRIDED (Ints n, Ints ld, Reals x, double* y)
#define RECORDS (Ints n, int32_t * cursor, Reals x, double* y)
#define PARTS (Ints n, Ints parts, [[maybe_unused]] Ints part, int32_t * cursor, Reals x, double* y)
#define SET                                                                                                            \
  (Ints n, Ints blockNumber, Ints blockSize, [[maybe_unused]] Ints groupNumber, [[maybe_unused]] Ints groupSize,       \
   Ints last, Ints set, int32_t * cursor, Reals x, double* y)
#define BODY(parameters, ...) address([] parameters { __VA_ARGS__ })
#define ALL for (int i = 0; i < *n; ++i)
// y[i] is the value for each point.
#define EACH(value) BODY(POINTS, const sa::OwnArithmetic own; for (int i = 0; i < *n; ++i) y[i] = value;)

// clang-format off
const Planted kPlanted[] = {
    {"stores full vectors of 8", kPlain,
     BODY(POINTS, for (int i = 0; i < *n; i += 8)
                    for (int k = 0; k < 8; ++k) y[i + k] = i + k < *n ? 2.0 * x[i + k] : 0.0;),
     {{"writes", "touches memory past the end of an argument: y"}}},
    {"begins one value too early", kPlain, BODY(POINTS, if (*n > 0) y[-1] = 0.0; twice(n, x, y);),
     {{"writes", "writes before the first value of y"}}},
    {"reads the next value", kPlain, EACH(x[i + 1] > 1e308 ? 0.0 : 2.0 * x[i]),
     {{"writes", "touches memory past the end of an argument: x"}}},
    {"doubles in place first", kPlain, EACH(const_cast<double*>(x)[i] *= 2.0), {{"writes", "changes the input x"}}},
    {"forgets the last point of odd blocks", kPlain,
     BODY(POINTS, const int32_t even = *n - *n % 2; twice(&even, x, y);), {{"writes", "leaves values of y unwritten"}}},
    {"stops after 136 points", kPlain, BODY(POINTS, const int32_t most = *n < 136 ? *n : 136; twice(&most, x, y);),
     {{"writes", "leaves values of y unwritten"}}},
    {"tests for the end after the first point", kPlain,
     BODY(POINTS, int i = 0; do y[i] = 2.0 * x[i]; while (++i < *n);), {{"empty", "length 0 changes y"}}},
    {"rounds differently in full groups of 4 and in the rest", kPlain, EACH(i < *n - *n % 4 ? 0.2 * x[i] : x[i] / 5.0),
     {{"pieces", "going point by point changes the bits of y"},
      {"hard", "splitting a block with hard data changes the bits of y"}}},
    {"adds nothing, but by way of the neighbour", kPlain, EACH(2.0 * x[i] + 0.0 * x[i > 0 ? i - 1 : 0]),
     {{"reach", "spoils other points in y"}, {"hard", "hard data of one point change another in y"}}},
    {"works through one static scratch", kPlain,
     BODY(POINTS, static volatile double scratch[136];
          for (int start = 0; start < *n; start += 136) {
            const int length = *n - start < 136 ? *n - start : 136;
            for (int i = 0; i < length; ++i) scratch[i] = 2.0 * x[start + i];
            if (*n == 137) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            for (int i = 0; i < length; ++i) y[start + i] = scratch[i];
            for (int i = 0; i < length; ++i) scratch[i] = 0.0;
          }),
     {{"threads", "another thread changes the bits of y"}}},
    {"scales up what is tiny, the smallest number for ever", kPlain,
     BODY(POINTS, const sa::OwnArithmetic own;
          ALL { // the loop is kept by the optimiser
            for (volatile double tiny = std::fabs(x[i]); tiny > 0.0 && tiny < 1e-300;) tiny = tiny * 1.4;
            y[i] = 2.0 * x[i];
          }),
     {{"hard", "does not return"}}},
    {"doubles in the environment of the caller", kPlain, address(twiceAsCaller),
     {{"hard", "traps on a floating-point operation"}}},
    {"masks traps and gives them back, but not the flags", kPlain,
     BODY(POINTS, fenv_t callers; std::feholdexcept(&callers); std::fesetround(FE_TONEAREST); twiceAsCaller(n, x, y);
          std::feupdateenv(&callers);),
     {{"hard", "leaves a floating-point flag"}}},
    {"rounds as the caller does", kPlain,
     BODY(POINTS, fenv_t callers; std::feholdexcept(&callers); ALL y[i] = 2.0 / 3.0 * x[i] * 3.0;
          std::fesetenv(&callers);),
     {{"hard", "the caller's environment changes the bits of y"}}},
    {"leaves an environment of its own behind", kPlain,
     BODY(POINTS, std::fesetenv(FE_DFL_ENV); twiceAsCaller(n, x, y);),
     {{"hard", "changes the floating-point environment of its caller"}}},
    {"takes a NaN for zero", kPlain, EACH(x[i] < 0.0 || x[i] > 0.0 ? 2.0 * x[i] : 0.0),
     {{"reach", "NaN in x does not reach y"}}},
    {"reads an argument that it says it does not", kUnread,
     BODY((Ints n, Ints unused, Reals x, double* y), ALL y[i] = *unused == 12345 ? x[i] : 2.0 * x[i];),
     {{"writes", "touches memory past the end of an argument: unused"}}},
    {"writes the points that are not listed too", kListed, BODY(LISTED, if (*count > 0) twice(n, x, y);),
     {{"writes", "changes values of other points in y"}}},
    {"doubles", kPlain, address(twice), {}},
    {"gives listed points the values of their neighbours", kListed,
     BODY(LISTED, for (int k = 0; *n > 0 && k < *count; ++k) y[list[k] - 1] = 2.0 * x[list[k] % *n];),
     {{"lists", "gives listed points other values of y than a call for all"}}, "doubles"},
    {"fills the rows beyond the block", kTwo, // a leading dimension may be large
     BODY(STRIDED, const auto all = static_cast<int32_t>(2U * *ld); if (*n > 0) twice(&all, x, y);),
     {{"writes", "changes values of other points in y"}}},
    {"offsets of 32 bits", kThree,
     BODY(STRIDED, const sa::OwnArithmetic own;
          for (uint32_t c = 0; c < 3; ++c)
            ALL {
              const auto at = static_cast<int32_t>(c * static_cast<uint32_t>(*ld)) + i;
              y[at] = 2.0 * x[at];
            }),
     {{"far", "touches other memory where columns or entities are far apart"}}},
    {"counts entities from 0", kMapped,
     BODY((Ints n, Ints map, Reals x, double* y), ALL y[map[i] > 1 ? map[i] - 2 : 0] = 2.0 * x[i];),
     {{"writes", "changes values of other points in y"}}},
    {"writes each record one place too late", kRecords, BODY(RECORDS, ALL y[(*cursor)++] = 2.0 * x[i];),
     {{"writes", "changes values of other points in y"}}},
    {"moves the cursor by one", kRecords, BODY(RECORDS, twice(n, x, y + *cursor - 1); if (*n > 0) ++*cursor;),
     {{"pieces", "splitting the block changes the bits of cursor"}, {"writes", "leaves cursor at another record"}}},
    {"writes the first part of each record", kParts,
     BODY(PARTS, ALL y[(*cursor)++ * *parts - *parts] = 2.0 * x[i];),
     {{"writes", "changes other parts of records in y"}, {"writes", "leaves cursor at another record"}}},
    {"takes members for points of the block without regard to its group", kSet,
     BODY(SET, writeMembers((*blockNumber - 1) * *blockSize, *n, *last, set, cursor, x, y);),
     {{"writes", "leaves values of y unwritten"}}},
    {"gives members the values of the first points", kSet,
     BODY(SET, const int before = (*blockNumber - 1) * *blockSize + (*groupNumber - 1) * *groupSize;
          writeMembers(before, *n, *last, set, cursor, x, y, true);),
     {{"lists", "gives listed points other values of y than a call for all"}}},
    // sound
    {"a list", kListed,
     BODY(LISTED, const sa::OwnArithmetic own;
          for (int k = 0; *n > 0 && k < *count; ++k) y[list[k] - 1] = 2.0 * x[list[k] - 1];), {}},
    {"a set", kSet,
     BODY(SET, const int before = (*blockNumber - 1) * *blockSize + (*groupNumber - 1) * *groupSize;
          writeMembers(before, *n, *last, set, cursor, x, y);), {}},
    {"parts of records", kParts,
     BODY(PARTS, const sa::OwnArithmetic own;
          ALL y[(*cursor - 1 + i) * *parts + *part - 1] = 2.0 * x[i];
          if (*part == *parts && *n > 0) *cursor += *n;), {}},
    {"a range by way of two maps", kRange,
     BODY((Ints first, Ints last, Ints map, Ints map2, Reals x, Reals z, double* y), const sa::OwnArithmetic own;
          for (int i = *first - 1; i < *last; ++i)
            y[map2[map[i] - 1] - 1] += x[2 * i] * z[map[i] - 1] + x[2 * i + 1];), {}},
};
// clang-format on

RoutineInfo declared(const Planted& planted) {
  RoutineInfo info{planted.name, "void", {}};
  std::copy(planted.arguments.begin(), planted.arguments.end(), info.arguments);
  return info;
}

// Whether the checks find in a kernel what they must, or nothing.
bool isAsExpected(const Planted& planted, GuardedMemory& memory) {
  const RoutineInfo info = declared(planted);
  Kernel kernel{&info, planted.kernel, &info, planted.kernel};
  RoutineInfo wholeInfo;
  for (const Planted& other : kPlanted)
    if (planted.whole != nullptr && std::string_view(planted.whole) == other.name)
      wholeInfo = declared(other), kernel.wholeInfo = &wholeInfo, kernel.wholeAddress = other.kernel;
  HardCases hard{1, 0, 48, 0, {}};
  std::map<std::string, Findings> found = {
      {"writes", checkWrites(memory, kernel)}, {"lists", checkLists(memory, kernel)},
      {"empty", checkEmpty(memory, kernel)},   {"pieces", checkPieces(memory, kernel)},
      {"far", checkFar(memory, kernel)},       {"hard", checkHard(memory, kernel, hard)},
      {"reach", checkReach(memory, kernel)},   {"threads", checkThreads(kernel)}};
  bool isGood = true;
  for (const auto& [check, finding] : planted.findings) isGood = isGood && found[check].count(finding) == 1;
  for (const auto& [check, findings] : found) isGood = isGood && (!planted.findings.empty() || findings.empty());
  if (isGood) return true;
  std::cout << "a kernel that " << planted.name << " gives:\n";
  for (const auto& [check, findings] : found)
    for (const std::string& finding : findings) std::cout << "  " << check << ": " << finding << "\n";
  return false;
}

} // namespace

int main() {
  try {
    GuardedMemory memory;
    GuardedMemory::limitTime();
    int failed = 0;
    for (const Planted& planted : kPlanted) failed += isAsExpected(planted, memory) ? 0 : 1;
    std::cout << std::size(kPlanted) << " kernels, " << failed << " not as expected\n";
    return failed == 0 ? 0 : 1;
  } catch (const std::exception& e) {
    std::cerr << "planted_faults: " << e.what() << "\n";
    return 2;
  }
}
