// sharedanalysis-convert: meshes of any input as Exodus II, which ranks read in shares.
#include "solver/input/case_reader.h"
#include "solver/input/mesh_reader.h"
#include "solver/model/text.h"
#include "solver/program/command_line.h"
#include "solver/program/instruction_set.h"
#include "solver/results/mesh_file.h"

#include <CLI/CLI.hpp>
#include <iostream>

int main(int argc, char** argv) {
  using namespace sharedanalysis;
  using namespace sharedanalysis::solver;
  keepWriteErrors();
  std::filesystem::path from, to;
  bool quiet = false;
  CLI::App app("Writes a mesh as Exodus II, with its numbers and groups", "sharedanalysis-convert");
  app.add_option("MESH", from, "Mesh (Gmsh, Exodus II), or case (.toml) whose mesh is taken")->required();
  app.add_option("OUT", to, "The Exodus file to be written")->required()->check(someName());
  app.add_flag("-q,--quiet", quiet, "Show errors only");
  app.footer("Exit codes: 0 done, 1 wrong input, 3 the file could not be written.");
  app.set_version_flag("--version", versionText("sharedanalysis-convert"));
  if (const auto code = parse(app, argc, argv)) return *code;
  try {
    MeshInput input{from, {}};
    if (from.extension() == ".toml") input = readCase(from).definition.mesh;
    for (const std::filesystem::path& file : {from, input.file})
      if (std::error_code none; std::filesystem::equivalent(file, to, none))
        throw InputError(to.string() + ": is what is read, expected the name of another file");
    const Mesh mesh = readMesh(input);
    const std::vector<std::string> notes = writeMesh(to, input.name(), mesh);
    if (quiet) return exitDone;
    for (const std::string& note : notes) std::cout << printable(note) << '\n';
    std::cout << printable(to.string()) << ": " << mesh.nodes() << " nodes, " << mesh.elements() << " bricks\n";
    return exitDone;
  } catch (const InputError& error) {
    reportError(error.what());
    return exitInput;
  } catch (const std::exception& error) {
    reportError(error.what());
    return exitNotWritten;
  }
}
