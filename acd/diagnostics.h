// Recording of diagnostics, shared by the entries and by the block handler.
#pragma once

#include "acd_TypeClass.h"
#include "dia_Values.h"

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
