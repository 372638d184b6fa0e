// sharedanalysis-join: one file of fields from those of the ranks of a run.
#include "solver/results/join.h"
#include "exit_codes.h"
#include "solver/model/model.h"
#include "solver/model/text.h"
#include "solver/program/instruction_set.h"

#include <CLI/CLI.hpp>
#include <iostream>

int main(int argc, char** argv) {
  using namespace sharedanalysis;
  using namespace sharedanalysis::solver;
  std::filesystem::path part;
  std::optional<std::filesystem::path> file;
  bool quiet = false;
  CLI::App app("Joins the files of fields that the ranks of a run have written to one", "sharedanalysis-join");
  app.add_option("FILE", part, "Any file of the set, as job.exo.4.0")->required();
  app.add_option("-o,--output", file, "The one file, without this option job.exo beside them");
  app.add_flag("-q,--quiet", quiet, "Show errors only");
  app.footer("Exit codes: 0 joined, 1 a file is missing, damaged or of another run, 3 the result cannot be written.");
  app.set_version_flag("--version", versionText("sharedanalysis-join"));
  const auto fail = [](const std::string& text, int code) {
    std::cerr << "error: " << printable(text) << '\n';
    return code;
  };
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    return fail(std::string(error.what()) + " (--help lists the options)", exitInput);
  }
  try {
    const JoinedFile joined = joinFiles(part, file);
    if (!quiet)
      std::cout << printable(joined.file.string()) << ": " << joined.nodes << " nodes and " << joined.elements
                << " elements of " << counted(static_cast<std::size_t>(joined.parts), "file") << " at "
                << counted(static_cast<std::size_t>(joined.times), "time") << '\n';
    return exitDone;
  } catch (const InputError& error) {
    return fail(error.what(), exitInput);
  } catch (const std::exception& error) {
    return fail(error.what(), exitNotWritten);
  }
}
