// sharedanalysis-material: one point of a material along the paths of tests, before a mesh is run.
#include "reference_host.h"
#include "solver/model/text.h"
#include "solver/program/command_line.h"
#include "solver/program/description.h"
#include "solver/program/failure.h"
#include "solver/program/fit.h"
#include "solver/program/fit_case.h"
#include "solver/program/instruction_set.h"
#include "solver/program/job.h"
#include "solver/program/material_path.h"
#include "solver/results/partial_file.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::solver;

std::string moduliOf(const Material& material) {
  const double G = material.shearModulus(), K = material.bulkModulus();
  return "shear modulus " + shortNumber(G / 1e6) + " MPa, bulk modulus " + shortNumber(K / 1e6) +
         " MPa, Poisson's ratio " + shortNumber(poissonRatio(material)) + " at small strain";
}

void describe(const PathCase& definition) {
  std::cout << printable(definition.title) << '\n';
  for (const Material& material : definition.materials) {
    std::cout << "material " << printable(material.name) << ": " << moduliOf(material) << '\n';
    for (const std::string& curve : describeCurves(material)) std::cout << "  " << printable(curve) << '\n';
  }
}

// What was understood of the paths; the library is asked whether it takes the data of user materials.
void check(const PathCase& definition, bool fits) {
  describe(definition);
  for (const MaterialPath& path : definition.paths) {
    checkData(definition.materials[path.material]);
    std::cout << "path " << printable(path.name) << ": " << modeNames()[static_cast<std::size_t>(path.mode)] << ", "
              << counted(path.turns.size(), "leg") << " of " << counted(static_cast<std::size_t>(path.steps), "step")
              << ", material " << printable(definition.materials[path.material].name);
    if (!path.data.stretch.empty()) std::cout << ", " << counted(path.data.stretch.size(), "point") << " of a test";
    std::cout << '\n';
  }
  if (fits) {
    const FitCase fitCase = fitCaseOf(definition);
    Names names;
    for (const FitConstant& constant : fitCase.free) names.push_back(constant.name);
    std::cout << "fit of material " << printable(definition.materials[fitCase.material].name) << ": "
              << joined(names, ", ") << ", " << (fitCase.isRelative ? "relative" : "absolute") << " residuals, "
              << counted(static_cast<std::size_t>(fitCase.starts), "start") << '\n';
  }
  std::cout << "the input is sound; nothing was run\n";
}

void show(const FitResult& result) {
  std::cout << "fit of material " << printable(result.material.name) << ": "
            << counted(result.constants.size(), "constant") << " to " << counted(result.misfits.back().points, "point")
            << " of tests";
  if (result.starts > 1) std::cout << ", reached from " << result.reached << " of " << result.starts << " starts";
  std::cout << '\n';
  for (const FitResult::Constant& c : result.constants) {
    std::cout << "  " << c.name << " = " << shortNumber(c.value) << (*c.unit ? " " : "") << c.unit;
    if (c.error) std::cout << ", standard error " << shortNumber(*c.error);
    std::cout << '\n';
  }
  std::cout << "  " << moduliOf(result.material) << '\n';
  for (const FitResult::Misfit& m : result.misfits)
    std::cout << "  residual of " << (&m == &result.misfits.back() ? "all" : "path " + printable(m.path)) << ": "
              << shortNumber(100 * m.relative) << " %, " << shortNumber(m.rms / 1e6) << " MPa (rms of "
              << counted(m.points, "point") << ")\n";
  for (const std::string& note : result.notes) std::cout << "note: " << printable(note) << '\n';
}

// Puts the fitted material in the place of the case's, and its table into a file.
std::filesystem::path fitAndWrite(PathCase& definition) {
  const FitResult result = fit(definition);
  show(result);
  std::filesystem::path file = definition.outputDirectory / (definition.job + ".fit.toml");
  PartialTextFile text(file);
  text.put(fittedCase(definition, result));
  text.close();
  text.complete();
  definition.materials[fitCaseOf(definition).material] = result.material;
  sharedanalysis::host::openJob(definition.job, definition.outputDirectory); // what trials have said is of no use
  return file;
}

struct Options {
  std::filesystem::path file, directory;
  bool checkOnly = false, fits = false;
};

void run(const Options& options) {
  PathCase definition = readPathCase(options.file);
  const std::filesystem::path& directory = options.directory;
  if (!directory.empty()) definition.outputDirectory = directory;
  expectOtherNames(definition.files, definition.outputDirectory, definition.job,
                   {".csv", ".svg", ".fit.toml", ".msg", ".sta", ".log"});
  if (options.checkOnly) return check(definition, options.fits);
  std::filesystem::create_directories(definition.outputDirectory);
  sharedanalysis::host::openJob(definition.job, definition.outputDirectory); // a kernel may have something to say
  describe(definition);
  std::string written;
  if (options.fits) written = fitAndWrite(definition).string() + ", ";
  std::vector<std::vector<PathPoint>> results;
  for (const MaterialPath& path : definition.paths) {
    results.push_back(follow(path, definition.materials[path.material]));
    const auto [low, high] = std::minmax_element(results.back().begin(), results.back().end(),
                                                 [](const auto& a, const auto& b) { return a.nominal < b.nominal; });
    std::cout << "path " << printable(path.name) << ": " << results.back().size() << " states, nominal stress "
              << shortNumber(low->nominal / 1e6) << " to " << shortNumber(high->nominal / 1e6) << " MPa\n";
  }
  const auto output = [&](const char* extension) { return definition.outputDirectory / (definition.job + extension); };
  writeTable(output(".csv"), definition, results);
  writeDrawing(output(".svg"), definition, results);
  sharedanalysis::host::closeJob();
  std::cout << "wrote " << printable(written + output(".csv").string() + " and " + output(".svg").string()) << '\n';
}

} // namespace

int main(int argc, char** argv) {
  keepWriteErrors();
  Options options;
  CLI::App app("Leads one point of a material along the paths of tests", "sharedanalysis-material");
  app.add_option("CASE", options.file, "Case file with [[material]] and [[path]] tables")->required();
  app.add_option("-o,--output", options.directory, "Directory of the results")->check(someName());
  app.add_flag("--fit", options.fits,
               "Fit constants of a material to the tests of the case, write them to JOB.fit.toml");
  app.add_flag("--check", options.checkOnly, "Read and check the input, show what was understood, write nothing");
  app.footer("Exit codes: 0 done, 1 the case is wrong, 2 a path cannot be followed, 3 something cannot be written.");
  app.set_version_flag("--version", versionText("sharedanalysis-material"));
  if (const auto code = parse(app, argc, argv)) return *code;
  try {
    run(options);
    return exitDone;
  } catch (const PathFailed& error) {
    reportError(error.what());
    return exitEndedEarly;
  } catch (const std::exception&) {
    const RankFailure failure = describeException();
    reportError(failure.text);
    return failure.code;
  }
}
