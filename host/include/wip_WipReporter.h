// How components report while they work: abstract, with one implementation for each kind of program.
//
// The class is complete in this header, so that a library can derive from it whatever host loads it.
#pragma once

#include "aio_ostream.h"

#include <stdexcept>
#include <string>
#include <vector>

// Carries the text of an error to the handler.
class aio_TextException : public std::runtime_error {
public:
  aio_TextException(const std::string& text, const char* file, int line)
      : std::runtime_error(text), file_(file), line_(line) {}
  const char* file() const { return file_; }
  int line() const { return line_; }

private:
  const char* file_;
  int line_;
};

// A condition that must hold did not; the text is the condition.
class aio_AssertionException : public aio_TextException {
public:
  using aio_TextException::aio_TextException;
};

class wip_WipReporter {
public:
  // What a program can show; all on for a program without a window.
  explicit wip_WipReporter(bool errors = true, bool warnings = true, bool notes = true, bool progress = true,
                           bool facilities = true)
      : errors_(errors), warnings_(warnings), notes_(notes), progress_(progress), facilities_(facilities) {}
  virtual ~wip_WipReporter() = default;
  wip_WipReporter(const wip_WipReporter&) = delete;
  wip_WipReporter& operator=(const wip_WipReporter&) = delete;

  // The mode says whether the operation goes on: a mode other than 0, 1 and 2 has the text raised as an exception.
  virtual void Error(const std::string& text, int mode) = 0;
  virtual void Warning(const std::string& text) = 0;
  virtual void Errors(const std::vector<std::string>& texts, int mode) = 0;
  virtual void Warnings(const std::vector<std::string>& texts) = 0;
  // A line about a component, for the stream of the reporter.
  virtual void FacilityMessage(const std::string& facility, const std::string& text) {
    if (facilities_) Stream().write(facility + ": " + text + "\n");
  }
  virtual void Verbose(const std::string& text) = 0;
  virtual void BeginPhase(const std::string& name) = 0;
  virtual void EndPhase(const std::string& name) = 0;
  virtual void Milestone(const std::string& name, int step, int steps) = 0;
  virtual void Progress(double fraction) = 0;
  virtual void Note(const std::string& text) = 0;
  virtual void Display(const std::string& text) = 0;
  virtual void Interrupted() = 0;
  virtual void CommandDone() = 0;

protected:
  virtual aio_ostream& Stream() = 0;
  bool errors_, warnings_, notes_, progress_, facilities_;
};
