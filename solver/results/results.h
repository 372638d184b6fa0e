// Fields of a run in an Exodus II file.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/results/field_names.h"
#include "solver/results/partial_file.h"

#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Blocks are the sections, node sets the groups of faces, edges and points; numbers are those of the mesh file.  Node
// variables are displacement, velocity and reaction (_x _y _z), element variables stress (_xx _yy _zz _xy _yz _xz),
// strain_energy_density, mask and the derived fields, as many as the case has chosen, global variables the energies.  Everything is in double precision.  The file can be
// opened by a viewer after every write.  All members throw WriteError.
// Bytes of a file of fields with so many output times, without its head.
double sizeOfFields(const Mesh& mesh, const Case& definition, double times);

class ResultsFile {
public:
  // info: lines that go into the file as they are, cut to 80 characters.  Mesh and case outlive the file.
  ResultsFile(const std::filesystem::path& name, const Mesh& mesh, const Case& definition,
              const std::vector<std::string>& info, Start start = Start::New);
  ~ResultsFile();
  ResultsFile(const ResultsFile&) = delete;
  ResultsFile& operator=(const ResultsFile&) = delete;

  // How many times it has.  Restoring opens the file; times beyond stay in it until they are written anew.
  void visit(Archive& archive);
  void write(double time, const Fields& fields, const Energies& energies);
  // No write() afterwards.
  void close();
  const PartialFile& file() const { return file_; }
  int count() const { return static_cast<int>(count_); }

private:
  struct Block {
    std::string name;
    std::vector<int32_t> elements;
  };

  void check(int status) const;
  void reopen();
  void writeModel(const Mesh& mesh, const Case& definition);
  void writeBlocks(const Mesh& mesh);
  void writeNodeSets(const Mesh& mesh);
  void writeInfo(const std::vector<std::string>& info);
  void declareVariables();
  void writeNodeVector(std::string_view field, std::span<const double> values);
  void writeElementField(std::string_view field, std::span<const double> values, std::size_t components);
  void writeDerivedFields(const Fields& fields);

  PartialFile file_;
  const Mesh& mesh_;
  int id_ = -1;
  int64_t count_ = 0;
  double lastTime_ = 0;
  const std::vector<std::string>& fields_;       // that the case has chosen
  int nodeVariables_ = 0, elementVariables_ = 0; // written at this time so far
  std::vector<Block> blocks_;
  std::vector<double> scratch_;
};

} // namespace sharedanalysis::solver
