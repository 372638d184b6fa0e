// sharedanalysis-explicit: explicit dynamics of hyperelastic solids on the kernels of SharedAnalysis.
#include "glo.h"
#include "host_services.h"
#include "reference_host.h"
#include "solver/model/model.h"
#include "solver/program/command_line.h"
#include "solver/program/instruction_set.h"
#include "solver/program/job.h"
#include "solver/program/watch.h"

#include <CLI/CLI.hpp>

namespace {

// Initialises the library, finalises it at the end.
class Library {
public:
  Library() { Shared_Analysis_XP_initialize(&components_); }
  ~Library() { Shared_Analysis_XP_finalize(&components_); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

private:
  int32_t components_ = 0;
};

// Connects the ranks, disconnects them at the end.
class Connection {
public:
  Connection() { sharedanalysis::host::connectRanks(); }
  ~Connection() { sharedanalysis::host::disconnectRanks(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  bool isRoot() const { return DMPC_GETRANK() == 0; }
};

} // namespace

int main(int argc, char** argv) {
  using namespace sharedanalysis;
  using namespace sharedanalysis::solver;
  keepWriteErrors();

  JobOptions options;
  std::string restart, checked, record, files;
  CLI::App app("Explicit dynamics of hyperelastic solids meshed with 8-node bricks", "sharedanalysis-explicit");
  app.add_option("CASE", options.caseFile, "Case file (TOML)")->required();
  app.add_option("-t,--threads", options.threads,
                 "Threads of each rank; without this option OMP_NUM_THREADS, or the cores, on several ranks one")
      ->check(CLI::Range(1, 1024));
  app.add_option("-o,--output", options.outputDirectory, "Directory of the results, instead of output.directory")
      ->check(someName());
  app.add_flag("--digest", options.digest, "Also write hashes of all fields, for sharedanalysis-compare");
  app.add_option("--files", files, "One file of fields, or one of every rank for sharedanalysis-join")
      ->check(CLI::IsMember({"one", "ranks"}));
  app.add_option("--restart", restart,
                 "Go on from this restart file of an earlier run, without FILE from the one beside its results")
      ->expected(0, 1)
      ->type_name("[FILE]");
  app.add_option("--rank-timeout", options.rankTimeout,
                 "Seconds after which a rank that another one waits for is taken for lost, and all are ended")
      ->check(positiveNumber())
      ->type_name("SECONDS");
  app.add_flag("--rank-files", options.rankFiles,
               "Message, log and status files of every rank, also of those that have nothing to say");
  app.add_flag("--check", options.checkOnly, "Read and check the input, write nothing");
  app.add_flag("--checked{full}", checked,
               "Check every call of the library; --checked=cheap for a few in a hundred of the time, or words of "
               "SHAREDANALYSIS_CHECK");
  app.add_option("--record", record, "Record calls of the library to FILE[,FILTER...], as SHAREDANALYSIS_RECORD does")
      ->check(someName())
      ->type_name("FILE");
  app.add_flag("-q,--quiet", options.quiet, "Show errors only");
  app.set_version_flag("--version", versionText("sharedanalysis-explicit"));
  try {
    watchLibrary(argc, argv);
    const Connection connection;
    if (const auto code = parse(app, argc, argv, connection.isRoot())) return *code;
    if (app.count("--restart") > 0) options.restart = restart;
    if (!files.empty()) options.filesByRank = files == "ranks";
    const Library library;
    return runJob(options);
  } catch (const InputError& error) {
    reportError(error.what());
    return exitInput;
  } catch (const std::exception& error) { // of the connection, or of the checking library
    reportError(error.what());
    return exitEndedEarly;
  }
}
