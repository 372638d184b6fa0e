// What the checks have found: told once for each kind and place, counted, summed up at the end.
#pragma once

#include <string>

#include "options.h"

namespace sa::checked {

enum class Kind : unsigned char {
  nullPointer,
  unreadable,
  unwritable,
  misaligned,
  count,
  code,
  index,
  leadingDimension,
  cursor,
  place,
  listRange,
  listRepeats,
  setOrder,
  mapRange,
  overlap,
  mask,
  flag,
  stretch,
  textLength,
  textEnd,
  table,
  unwritten,
  inputChanged,
  otherWritten,
  notFinite,
  missing
};
const char* word(Kind kind);

struct Finding {
  Kind kind;
  std::string routine, argument, entry, text, allowed; // entry: "(3,2)" or nothing
};

// What a report does not have itself: the writer of messages of the library, while a host is there.
struct Writer {
  virtual void write(const std::string& text) = 0; // nothing where there is none
  virtual void endAnalysis() = 0;

protected:
  ~Writer() = default;
};

void setUp(const Options& options, Writer& writer);
// The place is the address that the wrapper returns to.
void report(const Finding& finding, const void* place);
// The kinds and places so far, how often each; only what has come since the last one.
void summarize(bool hasHost);
// "file.cpp:12" where debug information and addr2line are there, else "library+0x1234".
std::string placeOf(const void* address);

} // namespace sa::checked
