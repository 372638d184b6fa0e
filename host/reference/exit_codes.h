// The exit codes of all programs.
#pragma once

namespace sharedanalysis {

enum ExitCode : int {
  exitDone = 0,
  exitInput = 1,       // command line or input is wrong, missing or cannot be read: nothing was done
  exitEndedEarly = 2,  // the computation cannot go on
  exitNotWritten = 3,  // results or output
  exitNothingLeft = 4, // every brick has failed
  exitDifferent = 5,   // two runs
  exitNewer = 6,       // a file of a newer release
  exitDamaged = 7,     // a database is damaged or nothing was recorded in it
  exitInterrupted = 130
};

} // namespace sharedanalysis
