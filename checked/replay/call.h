// A recorded call in memory of its own, made again.
#pragma once

#include <string>
#include <vector>

#include "checked/layout.h"
#include "checked/record.h"

namespace sa::replay {

using checked::RecordedArgument;
using checked::RecordedCall;

// A library that is opened beside others.
class Library {
public:
  // An empty path: the one that this program is built with.  Throws std::runtime_error.
  explicit Library(const std::string& path);
  void* routine(const std::string& name) const;
  const std::string& name() const { return name_; }

private:
  std::string name_;
  void* handle_;
};

// Arrays between pages that cannot be touched.
class Call {
public:
  // Throws std::runtime_error for a call that is not of a known routine or whose arguments do not fit its declaration.
  explicit Call(const RecordedCall& recorded);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  const checked::Routine& routine() const { return *routine_; }
  const RecordedCall& recorded() const { return *recorded_; }
  const void* const* addresses() const { return addresses_.data(); }
  // The recorded arguments again.
  void reset();
  // Makes the call and returns what is written, in the order of the runs; nothing and a reason where it cannot be made.
  bool run(void* routine, std::string& fault);
  std::vector<unsigned char> written(std::size_t k) const;
  const std::vector<unsigned char>& result() const { return result_; }

private:
  struct Memory {
    unsigned char *pages = nullptr, *data = nullptr;
    std::size_t bytes = 0;
  };
  void allocate(std::size_t k, std::size_t bytes);
  static void free(Memory& m);
  const RecordedCall* recorded_;
  const checked::Routine* routine_;
  std::vector<Memory> memory_;
  std::vector<const void*> addresses_;
  std::vector<unsigned char> result_;
};

// Where two sets of results or inputs first differ; all NaN are one value.
struct Difference {
  std::size_t argument = 0; // beyond the arguments: the value returned
  std::string name, entry, first, second;
  std::uint64_t element = 0;
};
bool isSameValue(const unsigned char* a, const unsigned char* b, checked::Type type);
std::string valueText(const unsigned char* at, checked::Type type);
// The recorded results and those of a call just made.  False when there is none.
bool firstDifference(const Call& call, Difference& difference);
// What the two calls got, or what they gave.
bool firstDifference(const RecordedCall& a, const RecordedCall& b, bool isOfInputs, Difference& difference);
// The first output that is NaN or infinite.
bool firstNotFinite(const RecordedCall& call, Difference& difference);
std::string entryText(const RecordedCall& call, std::size_t argument, std::uint64_t element);

// The same call for one of its points alone.  Throws std::runtime_error where a call has no points of its own.
RecordedCall pointOf(const RecordedCall& call, std::int64_t point);
std::int64_t pointsOf(const RecordedCall& call);

// A program that makes the call and compares, without this project's tools.
std::string cppOf(const RecordedCall& call);
std::string pythonOf(const RecordedCall& call);

} // namespace sa::replay
