// sharedanalysis-convert: meshes of any input as Exodus II, which ranks read in shares.
#include "solver/input/case_reader.h"
#include "solver/input/mesh_reader.h"
#include "solver/model/text.h"
#include "solver/program/instruction_set.h"
#include "solver/results/mesh_file.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>

int main(int argc, char** argv) {
  using namespace sharedanalysis::solver;
  std::signal(SIGXFSZ, SIG_IGN); // a file-size limit is an error of the write
  std::filesystem::path from, to;
  bool quiet = false;
  CLI::App app("Writes a mesh as Exodus II, with its numbers and groups", "sharedanalysis-convert");
  app.add_option("MESH", from, "Mesh (Gmsh, Exodus II), or case (.toml) whose mesh is taken")->required();
  app.add_option("OUT", to, "The Exodus file to be written")->required();
  app.add_flag("-q,--quiet", quiet, "Show errors only");
  app.footer("Exit codes: 0 done, 1 wrong input, 3 the file could not be written.");
  app.set_version_flag("--version", versionText("sharedanalysis-convert"));
  constexpr int wrongInput = 1, notWritten = 3;
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::cerr << "error: " << printable(error.what()) << " (--help lists the options)\n";
    return wrongInput;
  }
  try {
    MeshInput input{from, {}};
    if (from.extension() == ".toml") input = readCase(from).definition.mesh;
    const Mesh mesh = readMesh(input);
    const std::vector<std::string> notes = writeMesh(to, input.name(), mesh);
    if (quiet) return 0;
    for (const std::string& note : notes) std::cout << printable(note) << '\n';
    std::cout << printable(to.string()) << ": " << mesh.nodes() << " nodes, " << mesh.elements() << " bricks\n";
    return 0;
  } catch (const InputError& error) {
    std::cerr << "error: " << printable(error.what()) << '\n';
    return wrongInput;
  } catch (const std::exception& error) {
    std::cerr << "error: " << printable(error.what()) << '\n';
    return notWritten;
  }
}
