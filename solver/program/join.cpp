// sharedanalysis-join: one file of fields from those of the ranks of a run.
#include "solver/results/join.h"
#include "solver/model/model.h"
#include "solver/model/text.h"
#include "solver/program/command_line.h"
#include "solver/program/instruction_set.h"

#include <CLI/CLI.hpp>
#include <iostream>

int main(int argc, char** argv) {
  using namespace sharedanalysis;
  using namespace sharedanalysis::solver;
  keepWriteErrors();
  std::filesystem::path part;
  std::optional<std::filesystem::path> file;
  bool quiet = false;
  CLI::App app("Joins the files of fields that the ranks of a run have written to one", "sharedanalysis-join");
  app.add_option("FILE", part, "Any file of the set, as job.exo.4.0")->required();
  app.add_option("-o,--output", file, "The one file, without this option job.exo beside them")->check(someName());
  app.add_flag("-q,--quiet", quiet, "Show errors only");
  app.footer("Exit codes: 0 joined, 1 a file is missing, damaged or of another run, 3 the result cannot be written.");
  app.set_version_flag("--version", versionText("sharedanalysis-join"));
  if (const auto code = parse(app, argc, argv)) return *code;
  try {
    const JoinedFile joined = joinFiles(part, file);
    if (!quiet)
      std::cout << printable(joined.file.string()) << ": " << joined.nodes << " nodes and " << joined.elements
                << " elements of " << counted(static_cast<std::size_t>(joined.parts), "file") << " at "
                << counted(static_cast<std::size_t>(joined.times), "time") << '\n';
    return exitDone;
  } catch (const InputError& error) {
    reportError(error.what());
    return exitInput;
  } catch (const std::exception& error) {
    reportError(error.what());
    return exitNotWritten;
  }
}
