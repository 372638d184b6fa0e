// Reports of host components on the message file.
#pragma once

#include "wip_WipReporter.h"

// Errors, warnings and notes become messages of the message writer.  Errors and warnings of more than 475 characters are cut
// at their last blank in the first 475, or behind the 475th where there is none after the first word, and followed by a
// warning that says so.  Notes are not cut here; a message holds 1000 characters in 20 lines at most, and the rest is dropped.
// A report is a text, not a template: percent signs in it are printed, and a zero byte shows as a blank.
class __attribute__((visibility("default"))) spx_WipReporter : public wip_WipReporter {
public:
  explicit spx_WipReporter(aio_ostream& stream);
  ~spx_WipReporter() override;

  // Modes 0, 1, 2: writes an "Error".  Any other: throws aio_TextException with the cut text.
  void Error(const std::string& text, int mode) override;
  void Warning(const std::string& text) override;
  // Modes 0 and 1: writes each as an "Error".  Mode 2: writes nothing.  Any other: throws aio_TextException with the first
  // text, cut.  After the list every mode but 1 throws aio_TextException "Multiple error messages.".
  void Errors(const std::vector<std::string>& texts, int mode) override;
  void Warnings(const std::vector<std::string>& texts) override;
  void Note(const std::string& text) override;

  // Nothing to show in a batch run.
  void BeginPhase(const std::string&) override {}
  void EndPhase(const std::string&) override {}
  void Milestone(const std::string&, int, int) override {}
  void Progress(double) override {}

  // Make no sense in a batch run: aio_AssertionException.
  void Verbose(const std::string& text) override;
  void Display(const std::string& text) override;
  void Interrupted() override;
  void CommandDone() override;

protected:
  aio_ostream& Stream() override { return stream_; }

private:
  aio_ostream& stream_;
};
