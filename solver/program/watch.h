// The library watched: every call checked, or recorded.
#pragma once

namespace sharedanalysis::solver {

// Where the command line asks for it, begins the program anew with libSharedAnalysisChecked.so before the library; returns where it
// does not, and in the program begun anew.  Comes before anything else: ranks are connected once.  Throws InputError
// where a recording cannot be written, std::runtime_error.
void watchLibrary(int argc, char** argv);

} // namespace sharedanalysis::solver
