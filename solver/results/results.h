// Fields of a run in Exodus II files.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/parallel/ordered.h"
#include "solver/results/exodus_writer.h"
#include "solver/results/field_names.h"
#include "solver/results/partial_file.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Bytes of the fields of so many output times, without heads of files.
double sizeOfFields(const Mesh& mesh, const Case& definition, double times);

// One file that the root writes, or as the case has chosen one of every rank, of its own bricks and their nodes.  Blocks are the
// sections, node sets the groups of faces, edges and points; numbers are those of the mesh.  Node variables are displacement,
// velocity and reaction (_x _y _z), element variables stress (_xx _yy _zz _xy _yz _xz), strain_energy_density, mask and the
// derived fields, as many as the case has chosen, global variables the energies.  Everything is in double precision.  The files
// can be opened by a viewer after every write.  Every rank calls the members, which throw WriteError.
class ResultsFile {
public:
  // info: lines that go into the file as they are, cut to 80 characters.  Mesh and case outlive the file.
  ResultsFile(const std::filesystem::path& name, const Mesh& mesh, const Case& definition,
              const std::vector<std::string>& info, const Ranks& ranks, Start start = Start::New);

  // How many times it has.  Restoring opens the files; times beyond stay in them until they are written anew.  Throws InputError
  // for files that do not fit, and for those of another number of ranks.
  void visit(Archive& archive);
  void write(double time, const FieldSource& fields, const Energies& energies);
  // No write() afterwards.
  void close();
  // Brings what was written to the device.
  void synchronise() const;
  // Gives closed files their names: where every rank has one, that of the root comes last.
  void complete() const;
  int64_t count() const { return count_; }

private:
  // How the ranks' values come into files.
  struct Contents {
    Listing nodes;
    std::vector<Listing> blocks{}, sets{};
    std::vector<int64_t> nodePlaces{}; // in the file of this rank, of each node of the mesh
    FieldsHead head{};
  };
  std::vector<const Group*> groupsOf(Kind kind) const; // blocks or sets
  Contents contentsOfAll() const;
  Contents contentsOfRank() const;
  void nameGroups(Contents& contents) const;
  bool isByRank() const { return definition_.filesByRank; }
  void writeModel(const Contents& contents);
  void checkNumbers() const;
  void writeNodeVector(std::span<const double> values);
  void writeElementField(std::span<const double> values, int components);
  void writeDerivedFields(const FieldSource& source);
  void writeDerivedFields(std::size_t firstField, std::size_t endField, unsigned choice, const FieldSource& source);

  const Mesh& mesh_;
  const Case& definition_;
  Ranks ranks_;
  std::optional<PartialFile> file_; // of this rank
  std::unique_ptr<ExodusWriter> writer_;
  int64_t count_ = 0;
  double lastTime_ = 0;
  int nodeVariables_ = 0, elementVariables_ = 0; // written at this time so far
  std::optional<FieldsHead> restored_;           // of the files that a run goes on with
  Listing nodes_{{}, Ordered(0)};                // of a file of this rank
  std::vector<Listing> blocks_;
};

} // namespace sharedanalysis::solver
