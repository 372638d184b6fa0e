#include "solver/input/case_reader.h"

#include "solver/input/box_mesh.h"
#include "solver/input/case_table.h"
#include "solver/input/material_reader.h"
#include "solver/model/text.h"
#include "solver/parallel/faces.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>

namespace sharedanalysis::solver {
namespace {

const Names componentNames{"x", "y", "z"};

std::size_t componentNumber(const Table& table, const char* key, const std::string& name) {
  const auto found = std::find(componentNames.begin(), componentNames.end(), name);
  if (found == componentNames.end()) table.fail(key, "\"" + name + R"(" is no component, expected "x", "y" or "z")");
  return static_cast<std::size_t>(found - componentNames.begin());
}

// The keys of a history, in every table that has one.
const Names historyKeys{"value", "time", "curve"};

Names with(const Names& more, Names keys) {
  keys.insert(keys.end(), more.begin(), more.end());
  return keys;
}

History readHistory(const Table& table, const std::string& unit) {
  if (!table.isArray("value")) {
    for (const char* key : {"time", "curve"})
      if (table.has(key)) table.fail(key, std::string(key) + " needs an array of values, expected value = [...]");
    return {{0.0}, {table.real("value", anyNumber, unit)}};
  }
  History history{table.reals("time", "s"), table.reals("value", unit)};
  const std::string curve = table.text("curve", "linear");
  if (curve != "linear" && curve != "smooth")
    table.fail("curve", "curve is \"" + curve + R"(", expected "linear" or "smooth")");
  history.curve = curve == "smooth" ? Curve::Smooth : Curve::Linear;
  if (history.time.size() != history.value.size())
    table.fail("value", "value has " + counted(history.value.size(), "number") + " and time has " +
                            std::to_string(history.time.size()) + ", expected as many of both");
  for (std::size_t k = 1; k < history.time.size(); ++k)
    if (!(history.time[k - 1] < history.time[k]))
      table.fail("time", "time goes from " + shortNumber(history.time[k - 1]) + " to " + shortNumber(history.time[k]) +
                             ", expected increasing times in s");
  return history;
}

std::array<double, 3> readUnitVector(const Table& table, const char* key, const std::array<double, 3>& otherwise) {
  std::array<double, 3> vector = table.vector(key, "", otherwise);
  const double length = std::hypot(vector[0], vector[1], vector[2]);
  if (!(length > 0) || !std::isfinite(length))
    table.fail(key, std::string(key) + " has no direction, expected a vector that is not zero");
  for (double& component : vector) component /= length;
  return vector;
}

InitialVelocity readInitialVelocity(const Table& table) {
  InitialVelocity initial;
  if (!table.has("velocity") && !table.has("rate"))
    table.fail(nullptr, "initial_velocity has neither velocity nor rate, expected one of them or both");
  for (const char* key : {"origin", "axis", "profile_length"})
    if (table.has(key) && !table.has("rate"))
      table.fail(key, std::string(key) + " is given without rate, expected both");
  initial.group = table.text("group", "");
  initial.velocity = table.vector("velocity", "m/s", {});
  initial.origin = table.vector("origin", "m", {});
  initial.axis = readUnitVector(table, "axis", {0, 0, 1});
  initial.rate = table.real("rate", anyNumber, "rad/s", 0);
  if (table.has("profile_length")) initial.profileLength = table.real("profile_length", positive, "m");
  return initial;
}

// An interval of output: so many records and no more.
host::LowPass readFilter(const Table& table) {
  static constexpr Range evenOrder{"an even number from 2 to 20",
                                   [](double x) { return x >= 2 && x <= 20 && std::fmod(x, 2) == 0; }};
  const std::map<std::string, host::FilterType> types{{"butterworth", host::FilterType::butterworth},
                                                      {"chebyshev1", host::FilterType::chebyshev1},
                                                      {"chebyshev2", host::FilterType::chebyshev2}};
  host::LowPass filter;
  const std::string type = table.text("filter_type", "butterworth");
  const auto found = types.find(type);
  if (found == types.end())
    table.fail("filter_type",
               "filter_type is \"" + type + R"(", expected "butterworth", "chebyshev1" or "chebyshev2")");
  filter.type = found->second;
  filter.cutoff = table.real("filter_cutoff", positive, "Hz");
  filter.order = static_cast<int>(table.real("filter_order", evenOrder, "", filter.order));
  const auto decibels = [&](const char* key, host::FilterType owner, double otherwise) {
    if (table.has(key) && filter.type != owner)
      table.fail(key, std::string(key) + " does not belong to filter_type \"" + type + "\"");
    return table.real(key, positive, "dB", otherwise);
  };
  filter.ripple = decibels("filter_ripple", host::FilterType::chebyshev1, filter.ripple);
  filter.attenuation = decibels("filter_attenuation", host::FilterType::chebyshev2, filter.attenuation);
  return filter;
}

double readInterval(const Table& table, const char* key, double endTime, int standardCount) {
  const double interval = table.real(key, positive, "s", endTime / standardCount);
  constexpr double mostRecords = 1e5;
  if (endTime / interval > mostRecords)
    table.fail(key, std::string(key) + " is " + shortNumber(interval) +
                        ", which makes more than 100000 records, expected at least " +
                        shortNumber(endTime / mostRecords) + " s");
  return interval;
}

class CaseBuilder {
public:
  CaseBuilder(const std::filesystem::path& file, const std::string& text)
      : file_(file), root_(file, text, rootKeys()) {}
  CaseFile build() {
    general();
    materials();
    sections();
    motions();
    loads();
    planes();
    groupHistories();
    control();
    output();
    result_.files = root_.files();
    return std::move(result_);
  }

private:
  static Names rootKeys() {
    Names keys{"title",   "job",      "mesh",  "material", "section",
               "fix",     "symmetry", "plane", "history",  "initial_velocity",
               "gravity", "control",  "output"};
    for (const MotionKind& kind : motionKinds) keys.push_back(kind.key);
    for (const LoadKind& kind : loadKinds) keys.push_back(kind.key);
    return keys;
  }

  std::string group(const Table& table, Members members) {
    result_.groups.push_back({table.text("group"), table.place("group"), members});
    return result_.groups.back().group;
  }

  void general() {
    case_.file = file_;
    case_.job = root_.job();
    if (case_.job.ends_with(".events"))
      root_.fail("job", "job is \"" + case_.job + "\", expected a name without .events, which events of a job have");
    case_.title = root_.text("title", case_.job);
    if (root_.isTable("mesh"))
      case_.mesh.box = readBox(root_.table("mesh", {"box"}));
    else
      case_.mesh.file = root_.besideCase(root_.path("mesh"));
  }

  void materials() {
    materials_ = root_.tables("material", materialKeys());
    if (materials_.empty()) throw InputError(file_.string() + ": no material, expected [[material]]");
    for (const Table& table : materials_) {
      const std::string name = table.text("name");
      if (std::find(names_.begin(), names_.end(), name) != names_.end())
        table.fail("name", "a material \"" + name + "\" is there already, expected another name");
      names_.push_back(name);
      if (isTabulated(table))
        for (double temperature : table.reals("temperatures", "K")) readMaterial(table, temperature); // is it sound?
      else
        add(names_.size() - 1, 0, solidMaterial(table));
    }
  }

  static Material solidMaterial(const Table& table) {
    Material material = readMaterial(table);
    if (material.isSheet() && !(material.acrossModulus > 0))
      table.fail("user", "user material \"" + material.userName +
                             "\" is one of plane stress, expected across_modulus in Pa, by which bricks resist across");
    return material;
  }

  std::size_t add(std::size_t table, double temperature, Material material) {
    case_.materials.push_back(std::move(material));
    return places_[{table, temperature}] = case_.materials.size() - 1;
  }

  // The material of a section, as one of the case: a tabulated one is there once for each temperature.
  std::size_t materialOf(const Table& section) {
    const std::string name = section.text("material");
    const auto found = std::find(names_.begin(), names_.end(), name);
    if (found == names_.end()) {
      Names known;
      for (const std::string& one : names_) known.push_back("\"" + one + "\"");
      section.fail("material", "no material \"" + name + "\", expected " + joined(known, " or "));
    }
    const auto index = static_cast<std::size_t>(found - names_.begin());
    const Table& table = materials_[index];
    if (!isTabulated(table) && section.has("temperature"))
      section.fail("temperature", "material \"" + name + "\" does not depend on temperature, expected none");
    const double temperature = isTabulated(table) ? section.real("temperature", anyNumber, "K") : 0;
    const auto place = places_.find({index, temperature});
    if (place != places_.end()) return place->second;
    Material material = readMaterial(table, temperature);
    material.name += " at " + shortNumber(temperature) + " K";
    return add(index, temperature, std::move(material));
  }

  void sections() {
    for (const Table& table : root_.tables("section", {"group", "material", "temperature"})) {
      const std::size_t material = materialOf(table);
      case_.sections.push_back({group(table, Members::Bricks), material});
    }
    if (case_.sections.empty()) throw InputError(file_.string() + ": no section, expected [[section]]");
  }

  void motions() {
    for (const Table& table : root_.tables("fix", {"group", "components"})) {
      PrescribedMotion motion{group(table, Members::Any), {}};
      for (const std::string& name : table.texts("components", R"(an array of "x", "y" and "z")"))
        motion.velocity[componentNumber(table, "components", name)] = History{{0.0}, {0.0}};
      case_.motions.push_back(std::move(motion));
    }
    for (const MotionKind& kind : motionKinds)
      for (const Table& table : root_.tables(kind.key, with(historyKeys, {"group", "component"}))) {
        PrescribedMotion motion{group(table, Members::Any), {}};
        const std::size_t component = componentNumber(table, "component", table.text("component"));
        History history = readHistory(table, kind.unit);
        history.quantity = kind.quantity;
        if (history.quantity == Quantity::Displacement && valueAt(history, 0) != 0)
          table.fail("value", "the displacement at time 0 is " + shortNumber(valueAt(history, 0)) +
                                  ", expected 0, where the mesh is");
        motion.velocity[component] = std::move(history);
        case_.motions.push_back(std::move(motion));
      }
    for (const Table& table : root_.tables("symmetry", {"group", "normal"}))
      case_.symmetryPlanes.push_back(
          {group(table, Members::Any), readUnitVector(table, "normal", table.vector("normal", ""))});
    for (const Table& table :
         root_.tables("initial_velocity", {"group", "velocity", "rate", "axis", "origin", "profile_length"})) {
      case_.initialVelocities.push_back(readInitialVelocity(table));
      if (table.has("group")) group(table, Members::Any);
    }
    const Table gravity = root_.table("gravity", {"acceleration"});
    case_.gravity = gravity.vector("acceleration", "m/s2", {});
  }

  // Names go into the heads of columns.
  std::string nameOf(const Table& table, const std::string& otherwise) {
    const std::string name = table.text("name", otherwise);
    if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.") !=
        std::string::npos)
      table.fail("name", "name is \"" + printable(name) + "\", expected letters, digits, \"_\", \"-\" and \".\"");
    if (!columns_.insert(name).second)
      table.fail("name", "the name \"" + name + "\" is there already, expected another one");
    return name;
  }

  // Along an axis or any direction.
  static std::array<double, 3> readDirection(const Table& table) {
    if (table.has("component") == table.has("direction"))
      table.fail(table.has("component") ? "direction" : nullptr, "expected component or direction, one of them");
    std::array<double, 3> direction{};
    if (table.has("component"))
      direction[componentNumber(table, "component", table.text("component"))] = 1;
    else
      direction = readUnitVector(table, "direction", {});
    return direction;
  }

  void loads() {
    for (const LoadKind& kind : loadKinds) {
      Names keys = with(historyKeys, {"group", "name"});
      if (kind.directed) keys = with({"component", "direction"}, keys);
      if (kind.share == Share::Nodes) keys.push_back("per_node");
      int count = 0;
      for (const Table& table : root_.tables(kind.key, keys)) {
        Load load{&kind, nameOf(table, std::string(kind.key) + "_" + std::to_string(++count)),
                  group(table, kind.members), readHistory(table, kind.unit)};
        if (kind.directed) load.direction = readDirection(table);
        if (kind.share == Share::Nodes) load.perNode = table.flag("per_node", false);
        case_.loads.push_back(std::move(load));
      }
    }
  }

  void planes() {
    int count = 0;
    for (const Table& table : root_.tables(
             "plane", with(historyKeys, {"name", "group", "point", "normal", "friction", "component", "direction"}))) {
      RigidPlane plane;
      plane.name = nameOf(table, "plane_" + std::to_string(++count));
      if (table.has("group")) plane.group = group(table, Members::Any);
      plane.point = table.vector("point", "m");
      plane.normal = readUnitVector(table, "normal", table.vector("normal", ""));
      plane.friction = table.real("friction", notNegative, "", 0);
      for (const char* key : {"time", "curve", "component", "direction"})
        if (table.has(key) && !table.has("value"))
          table.fail(key, std::string(key) + " is given without value, the velocity of the plane, expected both");
      plane.direction = plane.normal;
      if (table.has("value")) plane.velocity = readHistory(table, "m/s");
      if (table.has("component") || table.has("direction")) plane.direction = readDirection(table);
      case_.planes.push_back(std::move(plane));
    }
  }

  void groupHistories() {
    Names known;
    for (const GroupQuantity& quantity : groupQuantities) known.push_back(std::string("\"") + quantity.key + "\"");
    const std::string expected = "an array of " + joined(known, ", ");
    for (const Table& table : root_.tables("history", {"group", "name", "values"})) {
      GroupHistory history;
      Members members = Members::Any;
      for (const std::string& name : table.texts("values", expected)) {
        const auto found = std::find_if(groupQuantities.begin(), groupQuantities.end(),
                                        [&](const GroupQuantity& quantity) { return name == quantity.key; });
        if (found == groupQuantities.end())
          table.fail("values", "\"" + printable(name) + "\" is no value of a group, expected " + expected);
        if (std::find(history.quantities.begin(), history.quantities.end(), &*found) != history.quantities.end())
          table.fail("values", "\"" + name + "\" is there twice");
        if (found->members == Members::Bricks) members = Members::Bricks;
        history.quantities.push_back(&*found);
      }
      history.group = group(table, members);
      history.name = nameOf(table, "group_" + std::to_string(case_.groupHistories.size() + 1));
      case_.groupHistories.push_back(std::move(history));
    }
  }

  void control() {
    const Table table =
        root_.table("control", {"end_time", "safety_factor", "hourglass", "linear_viscosity", "quadratic_viscosity",
                                "smallest_increment_ratio", "damping", "quasi_static"});
    case_.endTime = table.real("end_time", positive, "s");
    case_.safetyFactor = table.real("safety_factor", fraction, "", case_.safetyFactor);
    case_.hourglassCoefficient = table.real("hourglass", zeroToOne, "", case_.hourglassCoefficient);
    case_.linearViscosity = table.real("linear_viscosity", notNegative, "", case_.linearViscosity);
    case_.quadraticViscosity = table.real("quadratic_viscosity", notNegative, "", case_.quadraticViscosity);
    case_.damping = table.real("damping", notNegative, "1/s", 0);
    case_.quasiStatic = table.flag("quasi_static", false);
    if (case_.quasiStatic && table.has("damping"))
      table.fail("damping", "damping is given with quasi_static, which chooses it, expected one of them");
    case_.smallestIncrementRatio = table.real("smallest_increment_ratio", fraction, "", case_.smallestIncrementRatio);
  }

  void output() {
    const Table table =
        root_.table("output", {"interval", "history_interval", "restart_interval", "directory", "fields", "files",
                               "filter_cutoff", "filter_type", "filter_order", "filter_ripple", "filter_attenuation"});
    case_.outputInterval = readInterval(table, "interval", case_.endTime, 20);
    case_.historyInterval = readInterval(table, "history_interval", case_.endTime, 200);
    if (table.has("restart_interval"))
      case_.restartInterval = readInterval(table, "restart_interval", case_.endTime, 1);
    case_.outputDirectory = table.has("directory") ? file_.parent_path() / table.path("directory") : ".";
    if (table.has("fields")) {
      const Names known(outputFields.begin(), outputFields.end());
      case_.fields = table.texts("fields", "an array of names of fields");
      for (const std::string& field : case_.fields)
        if (std::find(known.begin(), known.end(), field) == known.end())
          table.fail("fields", "\"" + printable(field) + "\" is no field, expected one of " + joined(known, ", "));
    }
    const std::string files = table.text("files", "one");
    if (files != "one" && files != "ranks")
      table.fail("files", "files is \"" + printable(files) + "\", expected \"one\" or \"ranks\"");
    case_.filesByRank = files == "ranks";
    if (table.has("filter_cutoff")) case_.historyFilter = readFilter(table);
    for (const char* key : {"filter_type", "filter_order", "filter_ripple", "filter_attenuation"})
      if (table.has(key) && !case_.historyFilter)
        table.fail(key, std::string(key) + " belongs to a filter, and filter_cutoff is missing in output");
  }

  std::filesystem::path file_;
  Table root_;
  std::vector<Table> materials_;
  Names names_; // of these
  // Number of a table and temperature: the material of the case.
  std::map<std::pair<std::size_t, double>, std::size_t> places_;
  std::set<std::string> columns_; // names in their heads
  CaseFile result_;
  Case& case_ = result_.definition;
};

} // namespace

CaseFile readCase(const std::filesystem::path& file) {
  const std::string text = readText(file);
  CaseFile result = CaseBuilder(file, text).build();
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) result.lines.push_back(line);
  return result;
}

namespace {

void checkGroup(const GroupReference& reference, const Mesh& mesh, const Ranks& ranks) {
  const auto fits = [&](const Group& group) {
    return reference.members == Members::Any || group.dimension == (reference.members == Members::Bricks ? 3 : 2);
  };
  const Group* group = mesh.findGroup(reference.group);
  if (!group || !fits(*group)) {
    Names names;
    for (const Group& known : mesh.groups)
      if (fits(known)) names.push_back("\"" + known.name + "\"");
    throw InputError(reference.place + ": " +
                     (group ? "group \"" + reference.group + "\" is not one of " +
                                  (reference.members == Members::Bricks ? "bricks" : "faces")
                            : "the mesh has no group \"" + reference.group + "\"") +
                     ", expected one of " + joined(names, ", "));
  }
  if (mesh.membersOf(*group).nodes == 0)
    throw InputError(reference.place + ": group \"" + reference.group + "\" has no node of a brick");
  if (reference.members != Members::Faces) return;
  try {
    facesOf(mesh, *group, ranks);
  } catch (const InputError& error) {
    throw InputError(reference.place + ": " + error.what());
  }
}

} // namespace

void checkGroups(const CaseFile& caseFile, const Mesh& mesh, const Ranks& ranks) {
  for (const GroupReference& reference : caseFile.groups) checkGroup(reference, mesh, ranks);

  // the sections come first among the references
  const std::vector<Section>& sections = caseFile.definition.sections;
  std::vector<const Section*> owner(mesh.elementNumbers.size(), nullptr);
  Faults faults;
  for (std::size_t s = 0; s < sections.size(); ++s) {
    for (const int32_t element : mesh.findGroup(sections[s].group)->elements) {
      const Section*& holder = owner[static_cast<std::size_t>(element)];
      if (holder)
        faults.add(mesh.elementPosition(element),
                   caseFile.groups[s].place + ": brick " +
                       std::to_string(mesh.elementNumbers[static_cast<std::size_t>(element)]) + " of group \"" +
                       sections[s].group + "\" has a section already, by group \"" + holder->group + "\"");
      holder = &sections[s];
    }
  }
  faults.throwFirst(ranks);
  Found without;
  for (int32_t e = 0; e < mesh.elements(); ++e)
    if (owner[static_cast<std::size_t>(e)] == nullptr && mesh.ownsElement(e))
      without.add(mesh.elementPosition(e), mesh.elementNumbers[static_cast<std::size_t>(e)]);
  without.join(ranks);
  if (without.count > 0)
    throw InputError(caseFile.definition.file.string() + ": " +
                     counted(static_cast<std::size_t>(without.count), "brick") +
                     " without a section, the first is number " + std::to_string(without.number) +
                     ", expected a [[section]] for every brick");
}

} // namespace sharedanalysis::solver
