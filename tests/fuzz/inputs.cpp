// Bytes from anywhere as what the programs read, for clang's fuzzer; the environment variable SA_FUZZ_INPUT names the kind.
// Whatever they hold, a reader returns or throws what its program answers with an exit code.
#include "glo.h"
#include "host/diagnostics/output.h"
#include "reference_host.h"
#include "solver/input/case_reader.h"
#include "solver/input/gmsh_mesh.h"
#include "solver/model/text.h"
#include "solver/program/fit_case.h"
#include "solver/program/problems.h"
#include "solver/program/schedule.h"
#include "solver/results/comparison.h"
#include "solver/results/event_file.h"
#include "solver/results/restart_file.h"
#include "tests/solver/models.h"

#include <cstdio>
#include <unistd.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::solver;

// Of this process, where writing costs nothing.
std::filesystem::path folder() {
  static const std::filesystem::path path = [] {
    const std::filesystem::path own = "/dev/shm/sharedanalysis_fuzz." + std::to_string(getpid());
    std::filesystem::create_directories(own);
    return own;
  }();
  return path;
}
std::filesystem::path written(const char* name, std::string_view bytes) {
  const std::filesystem::path file = folder() / name;
  std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return file;
}
// Two files in one input.
std::pair<std::string_view, std::string_view> parts(std::string_view bytes) {
  constexpr std::string_view kBetween = "\n%%%%\n";
  const std::size_t at = bytes.find(kBetween);
  return at == bytes.npos ? std::pair(bytes, std::string_view{})
                          : std::pair(bytes.substr(0, at), bytes.substr(at + kBetween.size()));
}

const Mesh& bricks() {
  static const Mesh mesh = test::box({1, 1, 2}, {1, 1, 2});
  return mesh;
}

// The first increments of what the case asks for.
void readCases(std::string_view bytes) {
  const CaseFile file = readCase(written("case.toml", bytes));
  checkGroups(file, bricks(), Ranks::alone());
  for (const Material& material : file.definition.materials) checkData(material);
  Analysis analysis(bricks(), file.definition, 1);
  analysis.advanceTo(file.definition.endTime, 3);
  analysis.takeEvents(kMostEvents);
  analysis.fields();
}

void readMeshes(std::string_view bytes) { checkMeshText(written("mesh.msh", bytes)); }

void readMaterials(std::string_view bytes) {
  const auto [text, table] = parts(bytes);
  written("data.csv", table);
  const PathCase definition = readPathCase(written("path.toml", text));
  for (const Material& material : definition.materials) checkData(material);
  if (definition.fit) fitCaseOf(definition);
  for (const MaterialPath& path : definition.paths)
    if (path.steps * static_cast<int64_t>(path.turns.size()) < 50) follow(path, definition.materials[path.material]);
}

void readDigests(std::string_view bytes) {
  const auto [one, other] = parts(bytes);
  printable(compareRuns(written("a.digest", one), written("b.digest", other)).text);
}

// A file, or numbers put anywhere into a sound state, as a file with the right sums might have them.
void readStates(std::string_view bytes) {
  static const Case definition = [] {
    Case c = test::caseOf(test::neoHooke(1e6, 0.3, 1000), 1);
    c.motions.push_back({"z0", {test::constant(0), test::constant(0), test::constant(0)}});
    c.initialVelocities.push_back({.group = "z1", .velocity = {1, 0, -5}});
    c.planes.push_back(RigidPlane{"floor", "", {0, 0, 0}, {0, 0, 1}, 0.3, test::constant(0), {0, 0, 1}});
    c.materials[0].mullins = Mullins{1.5, 1e3, 0.1};
    c.materials[0].failure = DuctileFailure{.d1 = 0.5};
    c.outputInterval = c.historyInterval = 0.1;
    return c;
  }();
  Analysis analysis(bricks(), definition, 1);
  analysis.advanceTo(1, 5);
  test::State state = test::stateOf(analysis);
  if (bytes.starts_with("restart\n") || bytes.size() < 10) {
    std::array<uint64_t, 4> heading{}; // the case as the file has it
    std::memcpy(heading.data(), bytes.data(), std::min(bytes.size(), sizeof heading));
    RestartReader reader(written("x.restart", bytes), heading[3], Ranks());
    analysis.restore(reader.state().course, [&] { return reader.next(); });
    return;
  }
  // those of the course are also what results go on from
  std::vector<double>& words = state.course;
  const std::size_t ofCourse = words.size();
  words.insert(words.end(), state.records.begin(), state.records.end());
  for (; bytes.size() >= 10; bytes.remove_prefix(10)) {
    uint16_t at = 0;
    std::memcpy(&at, bytes.data(), sizeof at);
    std::memcpy(&words[at % words.size()], bytes.data() + sizeof at, sizeof(double));
  }
  Archive archive(Archive::Task::Restore, words.data(), words.size());
  Schedule times(0.1, 1);
  Problems problems(bricks());
  EnergyCheck check;
  Analysis other(bricks(), definition, 1);
  const auto records = words.begin() + static_cast<std::ptrdiff_t>(ofCourse);
  test::restore(other, {{words.begin(), records}, {records, words.end()}});
  other.advanceTo(1, 5);
  other.takeEvents(kMostEvents);
  other.fields();
  times.visit(archive), problems.visit(archive), check.visit(archive);
  times.next();
  problems.lines();
}

void readDatabases(std::string_view bytes) {
  try {
    const diagnostics::Selection selection;
    const diagnostics::Record record = diagnostics::readRecord(written("x.diagnostics.sqlite", bytes), selection);
    diagnostics::json(record);
    diagnostics::listing(record, selection, {});
  } catch (const diagnostics::Failure&) {
  }
}

// The one that SA_FUZZ_INPUT names.
using Reader = void (*)(std::string_view);
Reader chosen() {
  static const std::map<std::string_view, Reader> readers{{"case", readCases},         {"mesh", readMeshes},
                                                          {"material", readMaterials}, {"digest", readDigests},
                                                          {"state", readStates},       {"database", readDatabases}};
  const char* name = std::getenv("SA_FUZZ_INPUT");
  const auto found = readers.find(name == nullptr ? "" : name);
  if (found == readers.end()) std::fputs("SA_FUZZ_INPUT names no kind of input\n", stderr), std::exit(1);
  return found->second;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static int32_t components = 0;
  if (components == 0) Shared_Analysis_XP_initialize(&components);
  if (host::threadError()) host::openJob("forgotten", folder()); // a refused material has ended the analysis
  try {
    static const Reader reader = chosen();
    reader({reinterpret_cast<const char*>(data), size});
  } catch (const InputError&) {
  }
  return 0;
}
