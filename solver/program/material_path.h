// One point of a material led along a path, as a test would do it: stretch or stress prescribed, the free directions without
// stress.
#pragma once

#include "solver/input/case_table.h"
#include "solver/model/model.h"
#include "solver/program/path_mode.h"

#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct TestData {
  std::vector<double> stretch, stress; // nominal
};

struct MaterialPath {
  std::string name;
  std::size_t material; // index into PathCase::materials
  Mode mode = Mode::Uniaxial;
  bool byStress = false;     // turns are nominal stresses in Pa, else stretches (of shear: amounts)
  std::vector<double> turns; // visited one after the other from the undeformed state
  int steps = 100;           // of each leg
  double stepTime = 1;       // s, of each step, for materials that depend on the rate
  TestData data;
};

struct PathCase {
  std::filesystem::path file, outputDirectory;
  std::string job, title;
  std::vector<Material> materials;
  std::vector<Table> materialTables;
  std::vector<MaterialPath> paths;
  std::optional<Table> fit;                   // empty where the case has none
  std::vector<std::filesystem::path> files{}; // that are read: the case, curves and tests
};

PathCase readPathCase(const std::filesystem::path& file);

struct PathPoint {
  double stretch; // of shear: the amount
  double free;    // stretch of the free directions; 1 where there are none
  double J;
  double nominal;      // stress over the undeformed area; of shear the shear stress
  double cauchy[6];    // S33, Pa
  double stored, lost; // J/m3
};

// A material cannot be led along a path: the text names both and the stretch.
class PathFailed : public InputError {
public:
  using InputError::InputError;
};

// The states on the path, the undeformed one first.  Throws PathFailed where a stress is not reached, or no free stretch without
// stress is found.
std::vector<PathPoint> follow(const MaterialPath& path, const Material& material);

// All paths into one table, and a drawing of nominal stress over stretch with the data of tests beside the curves.
void writeTable(const std::filesystem::path& file, const PathCase& definition,
                const std::vector<std::vector<PathPoint>>& results);
void writeDrawing(const std::filesystem::path& file, const PathCase& definition,
                  const std::vector<std::vector<PathPoint>>& results);

} // namespace sharedanalysis::solver
