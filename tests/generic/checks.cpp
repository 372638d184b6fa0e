#include "checks.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <thread>

namespace sa::test {
namespace {

// Round about powers of two, vector widths and the 136 points of a kernel's scratch.
constexpr int kLengths[] = {1, 2, 7, 8, 63, 64, 128, 135, 136, 137, 272, 300};

std::string name(const Array& array) { return array.info->name; }

Complain into(Findings& findings) {
  return [&findings](const std::string& text) { findings.insert(text); };
}

// Runs all variants at a short and a long length, and one variant at every other.
template <class Run>
void forCases(const Kernel& kernel, Run run) {
  const int variants = variantCount(*kernel.info);
  int turn = 0;
  for (int n : kLengths) {
    const bool isFull = n == 7 || n == 137;
    for (int v = 0; v < (isFull ? variants : 1); ++v) run(makeCase(*kernel.info, n, isFull ? v : turn++ % variants));
  }
}

bool isSameLine(const Array& a, const Array& b, std::size_t line, std::size_t lineOfB) {
  for (std::size_t c = 0; c < a.components(); ++c)
    if (a.canonicalBits(a.index(line, c)) != b.canonicalBits(b.index(lineOfB, c))) return false;
  return true;
}
bool isSameLine(const Array& a, const Array& b, std::size_t line) { return isSameLine(a, b, line, line); }

// Records of nothing but results; others have components of more than one call.
bool isFullRecord(const Array& array) {
  for (int d = 0; d < array.info->rank(); ++d)
    if (std::string_view(array.info->shape[d]).find_first_not_of("0123456789*") != std::string_view::npos) return false;
  return array.info->is("record");
}

// One sub-record of many: which of the parts of a record the call writes, and of how many; 0 of 1 for others.
struct Part {
  std::size_t number = 0, count = 1;
};
Part partOf(const KernelCase& data, const Array& array) {
  const int dimension = array.info->rank() - 2;
  if (!array.info->is("record") || dimension < 0) return {};
  const std::string parts = array.info->shape[dimension];
  for (const Array& index : data.arrays)
    if (index.info->is("index") && index.info->unit == "1.." + parts)
      return {static_cast<std::size_t>(index.integer(0) - 1), static_cast<std::size_t>(data.find(parts)->integer(0))};
  return {};
}

// Moved by the records of the points, by the last of their sub-records.
void compareCursor(const KernelCase& before, const Array& now, Findings& findings) {
  Part part;
  for (const Array& array : before.arrays)
    if (array.info->is("record")) part = partOf(before, array);
  const int records = part.number + 1 == part.count ? before.recordsBefore(before.points) : 0;
  if (now.integer(0) != before.cursor + records) findings.insert("leaves " + name(now) + " at another record");
}

// Written where it must be, untouched elsewhere.
void compareWrites(const KernelCase& before, const Array& old, const Array& now, Findings& findings) {
  if (old.info->is("cursor")) return compareCursor(before, now, findings);
  const bool isMapped = before.isMapped(old);
  const std::vector<bool> reached = before.reachedEntities(old);
  const Part part = partOf(before, old);
  for (std::size_t line = 0; line < old.lineCount; ++line) {
    const bool isProcessed = old.lines != Lines::points || before.isProcessed(line);
    const bool mayChange = isProcessed && (old.lines != Lines::entities || !isMapped || reached[line]);
    for (std::size_t c = 0; c < old.components(); ++c) {
      const std::size_t at = old.index(line, c);
      if (!mayChange && now.bits(at) != old.bits(at)) findings.insert("changes values of other points in " + name(old));
      if (c * part.count / old.components() != part.number && now.bits(at) != old.bits(at))
        findings.insert("changes other parts of records in " + name(old));
      const bool isWhole = old.lines != Lines::entities || (isFullRecord(old) && reached[line]);
      if (old.info->isOnlyWritten() && isWhole && isProcessed && now.isPoisoned(at))
        findings.insert("leaves values of " + name(old) + " unwritten");
    }
  }
}

} // namespace

void compareOutputs(const KernelCase& expected, const KernelCase& got, const std::string& what, Findings& findings) {
  for (std::size_t a = 0; a < expected.arrays.size(); ++a) {
    const Array& e = expected.arrays[a];
    if (!e.info->isWritten() || e.bytes == got.arrays[a].bytes) continue;
    for (std::size_t line = 0; line < e.lineCount; ++line)
      if (!isSameLine(e, got.arrays[a], line)) findings.insert(what + " changes the bits of " + name(e));
  }
  if (expected.result != got.result) findings.insert(what + " changes the result");
}

void compareOtherPoints(const KernelCase& sound, const KernelCase& spoiled, int point, Findings& findings) {
  for (std::size_t a = 0; a < sound.arrays.size(); ++a) {
    const Array& s = sound.arrays[a];
    if (!s.info->isWritten() || s.lines == Lines::none) continue;
    const std::vector<bool> reached = sound.reachedEntities(s, point);
    for (std::size_t line = 0; line < s.lineCount; ++line) {
      const bool isOwn =
          s.lines == Lines::points ? static_cast<int>(line) == point : line < reached.size() && reached[line];
      if (!isOwn && !isSameLine(s, spoiled.arrays[a], line)) findings.insert("spoils other points in " + name(s));
    }
  }
}

KernelCase runInPieces(GuardedMemory& memory, const Kernel& kernel, const KernelCase& start,
                       const std::vector<int>& pattern, Findings& findings) {
  KernelCase whole = start;
  std::size_t turn = 0;
  for (int begin = 0; begin < start.points;) {
    const int end = std::min(start.points, begin + pattern[turn++ % pattern.size()]);
    KernelCase piece = whole.piece(begin, end);
    if (!memory.call(kernel.address, piece, into(findings))) break;
    whole.putBack(piece, begin);
    begin = end;
  }
  return whole;
}

Findings checkWrites(GuardedMemory& memory, const Kernel& kernel) {
  Findings findings;
  forCases(kernel, [&](const KernelCase& before) {
    KernelCase after = before;
    if (!memory.call(kernel.address, after, into(findings))) return;
    for (std::size_t a = 0; a < before.arrays.size(); ++a)
      if (before.arrays[a].info->isWritten()) compareWrites(before, before.arrays[a], after.arrays[a], findings);
  });
  return findings;
}

Findings checkEmpty(GuardedMemory& memory, const Kernel& kernel) {
#ifdef SA_SANITIZED
  constexpr int kEmpty[] = {0, -1}; // clang's own count of a simd loop, n - 1 of any n, would be reported
#else
  constexpr int kEmpty[] = {0, -1, std::numeric_limits<int>::min()}; // one less than the last is a large number
#endif
  Findings findings;
  const auto expectNothing = [&](const KernelCase& before, const std::string& what) {
    KernelCase after = before;
    if (!memory.call(kernel.address, after, into(findings))) return;
    for (std::size_t a = 0; a < before.arrays.size(); ++a)
      if (before.arrays[a].bytes != after.arrays[a].bytes) findings.insert(what + " changes " + name(before.arrays[a]));
    if (after.result != 0) findings.insert(what + " has a result");
  };
  for (int v = 0; v < variantCount(*kernel.info); ++v) {
    for (int n : kEmpty) {
      KernelCase data = makeCase(*kernel.info, 5, v);
      data.setPoints(n);
      expectNothing(data, "length " + std::to_string(n));
    }
    if (!kernel.info->hasRole("list") && !kernel.info->hasRole("set")) continue;
    const KernelCase given = makeCase(*kernel.info, 5, v);
    const auto isList = [](const Array& array) { return array.info->is("list") || array.info->is("set"); };
    const std::string length = std::find_if(given.arrays.begin(), given.arrays.end(), isList)->info->shape[0];
    for (int n : kEmpty) {
      KernelCase data = given;
      for (Array& array : data.arrays)
        if (length == array.info->name) array.setInteger(0, n);
      expectNothing(data, "a list of length " + std::to_string(n));
    }
  }
  return findings;
}

Findings checkLists(GuardedMemory& memory, const Kernel& kernel) {
  Findings findings;
  if (!kernel.info->hasRole("list") && !kernel.info->hasRole("set")) return findings;
  const auto compare = [&](const KernelCase& start, KernelCase whole) {
    KernelCase listed = start;
    if (!memory.call(kernel.address, listed, into(findings))) return;
    if (!memory.call(kernel.wholeAddress, whole, into(findings))) return;
    const std::vector<int> records = start.recordsOfPoints(), wholeRecords = whole.recordsOfPoints();
    for (const Array& got : listed.arrays) {
      if (!got.info->isWritten() || got.info->is("cursor")) continue;
      const Array* wanted = whole.find(got.info->name);
      for (std::size_t p = 0; p < records.size(); ++p) {
        const bool isRecord = got.info->is("record");
        if (isRecord ? records[p] < 0 : !start.isProcessed(p)) continue;
        const std::size_t line = isRecord ? static_cast<std::size_t>(records[p]) : p;
        if (!isSameLine(got, *wanted, line, isRecord ? static_cast<std::size_t>(wholeRecords[p]) : p))
          findings.insert("gives listed points other values of " + name(got) + " than a call for all");
      }
    }
  };
  forCases(kernel, [&](const KernelCase& start) {
    compare(start, start.forAllPoints(*kernel.wholeInfo));
    compare(start.forAllPoints(*kernel.info, true), start.forAllPoints(*kernel.wholeInfo));
  });
  return findings;
}

Findings checkPieces(GuardedMemory& memory, const Kernel& kernel) {
  Findings findings;
  if (kernel.info->hasRole("length")) return findings; // an array treated as a whole
  forCases(kernel, [&](const KernelCase& start) {
    KernelCase atOnce = start;
    if (!memory.call(kernel.address, atOnce, into(findings))) return;
    const KernelCase pieces = runInPieces(memory, kernel, start, {3, 1, 8, 64, 17, 5}, findings);
    compareOutputs(atOnce, pieces, "splitting the block", findings);
    const KernelCase points = runInPieces(memory, kernel, start, {1}, findings);
    compareOutputs(atOnce, points, "going point by point", findings);
  });
  return findings;
}

Findings checkThreads(const Kernel& kernel) {
  Findings findings;
  std::mutex mutex;
  const KernelCase start = makeCase(*kernel.info, 137, 0);
  KernelCase expected = start;
  GuardedMemory memory;
  if (!memory.call(kernel.address, expected, into(findings))) return findings;
  const auto work = [&] {
    GuardedMemory own;
    Findings found;
    for (int i = 0; i < 5; ++i) {
      KernelCase data = start;
      if (own.call(kernel.address, data, into(found))) compareOutputs(expected, data, "another thread", found);
    }
    const std::lock_guard<std::mutex> lock(mutex);
    findings.merge(found);
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  return findings;
}

Findings checkFar(GuardedMemory& memory, const Kernel& kernel) {
  Findings findings;
  for (int v = 0; v < variantCount(*kernel.info); ++v) {
    const KernelCase start = makeCase(*kernel.info, 7, v);
    KernelCase near = start, far = start;
    if (memory.call(kernel.address, near, into(findings)) &&
        GuardedMemory::callFar(kernel.address, far, into(findings)))
      compareOutputs(near, far, "the distance of columns or entities", findings);
  }
  return findings;
}

std::uint64_t hashOutputs(GuardedMemory& memory, const Kernel& kernel, Findings& findings) {
  std::uint64_t hash = 0xcbf29ce484222325ULL; // Fowler, Noll and Vo, 64 bits
  const auto add = [&](std::uint64_t bits) {
    for (int shift = 0; shift < 64; shift += 8) hash = (hash ^ ((bits >> shift) & 0xff)) * 0x100000001b3ULL;
  };
  for (int n : {1, 7, 64, 136, 300}) {
    for (int v = 0; v < variantCount(*kernel.info); ++v) {
      KernelCase data = makeCase(*kernel.info, n, v);
      if (!memory.call(kernel.address, data, into(findings))) continue;
      for (const Array& array : data.arrays)
        for (std::size_t i = 0; array.info->isWritten() && i < array.elements(); ++i) add(array.canonicalBits(i));
      add(data.result);
    }
  }
  return hash;
}

} // namespace sa::test
