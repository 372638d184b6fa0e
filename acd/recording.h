// Recording of diagnostics, shared by the entries and by the block handler.
#pragma once

#include "acd_TypeClass.h"
#include "dia_Values.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace sa::acd {

// The values of a diagnostic, as long as the metadata of its code say; arrays without values are not read.
struct Arrays {
  const int32_t* ints;
  const double* reals;
  const char* const* strings;
  const int32_t *nodes, *elements;
};

enum class Kind { Error, Warning, Element, Contact };

// Where a diagnostic goes: the implicit or the explicit extractor.
enum class Solver { Implicit, Explicit };

struct Diagnostic {
  Kind kind;
  int32_t code, domain, print; // the implicit solver has no domains
  Arrays arrays;

  acd_TypeClass typeClass() const { return kind == Kind::Contact ? acd_TypeClass::Contact : acd_TypeClass::General; }
};

// The print flag of a record: 1 for a diagnostic that is printed, and the mark of an element diagnostic.  Any other
// value counts as 0, so that nothing that a caller gives or another process sends can pass for the mark.
constexpr int32_t kPrinted = 1, kElementMark = 256;
constexpr int32_t recordFlag(int32_t flag) { return (flag & ~(kPrinted | kElementMark)) == 0 ? flag : 0; }

// Adds 1 to a counter of the host, counted from 1, as several threads do at once; nothing where the host has no block.
inline void addOne(int32_t* block, std::size_t place) {
  if (block != nullptr) std::atomic_ref(block[place - 1]).fetch_add(1, std::memory_order_relaxed);
}

// Whether a code may be recorded as what the kind says.
bool isValid(Kind kind, int32_t code);

// Collects the diagnostic in the thread's handler when that is collecting, else files it.
void record(Solver solver, const Diagnostic& diagnostic);

// Hands the diagnostic to the extractor, prints it and tells the status channel.
void file(Solver solver, const Diagnostic& diagnostic);

// Files a received record in the explicit extractor, domain being the rank that it comes from.
void fileRecord(const char* record, int32_t domain);

void internalError(Solver solver, const char* message);

void cutback(int32_t code, bool print);

// A node as it is stored: by instance and label, or in the one instance of a model without parts.
dia_Entity nodeOf(bool inParts, int32_t number);

// Deletes the handler of the calling thread.
void releaseHandler();

} // namespace sa::acd
