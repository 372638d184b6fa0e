#include "kernel_case.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>

#include "host/tables/material_table.h"
#include "tests/support/random.h"

namespace sa::test {
namespace {

using sharedanalysis::test::Random;
namespace tables = sharedanalysis::tables;

bool oneIn(Random& random, int n) { return random.integer(1, n) == 1; }

std::uint64_t hashOf(const std::string& text, std::uint64_t seed) {
  std::uint64_t h = 0xcbf29ce484222325ULL ^ seed;
  for (char c : text) h = (h ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
  return h;
}

bool isPointDimension(const RoutineInfo& routine, std::string_view dimension) {
  return std::ranges::any_of(routine.args(), [&](const ArgumentInfo& a) {
    return dimension == a.name && (a.is("block") || a.is("length") || a.is("last") || a.is("stride"));
  });
}

bool isEntityDimension(const RoutineInfo& routine, std::string_view dimension) {
  const auto isRows = [&](const ArgumentInfo& a) { return dimension == a.name && a.is("rows"); };
  return dimension == "*" || std::ranges::any_of(routine.args(), isRows);
}

// Whether a dimension is the name, or the name with a factor or a number added.
bool usesName(std::string_view dimension, std::string_view name) {
  const std::size_t times = dimension.size() > 1 ? dimension.find('*') : std::string_view::npos;
  if (times != std::string_view::npos) dimension.remove_prefix(times + 1);
  return dimension.starts_with(name) &&
         (dimension.size() == name.size() || dimension[name.size()] == '+' || dimension[name.size()] == '-');
}

// A count that is no dimension counts points: those of a second stage.
bool isPointCount(const RoutineInfo& routine, const ArgumentInfo& argument) {
  if (!argument.is("count") || std::string_view(argument.unit) != "count") return false;
  const std::string name = argument.name;
  for (const ArgumentInfo& other : routine.args()) {
    if (std::string_view(other.unit).starts_with("1..") && usesName(std::string_view(other.unit).substr(3), name))
      return false;
    for (int d = 0; d < other.rank(); ++d)
      if (usesName(other.shape[d], name)) return false;
  }
  return true;
}

// Records begin behind a few that belong to earlier calls, and others follow.  Members of a set are counted behind the elements
// of an earlier group.
constexpr int kCursor = 3, kRecordsMore = 5, kGroupNumber = 3, kGroupSize = 1000;

// How many values an argument takes in turn.
int choices(const ArgumentInfo& argument) {
  const std::string_view unit = argument.unit;
  if (argument.is("code")) return 1 + static_cast<int>(std::count(unit.begin(), unit.end(), '|'));
  if (argument.is("count") || argument.is("index")) return 3;
  return 1;
}

constexpr int kTextLength = 80;

// Materials with properties of the size of the stresses that are made up; surplus properties are 0.0.  Of two rows of one
// routine the second is taken in a third of the variants.  A star in the name stands for the dimension.
struct MaterialData {
  std::string_view routine, name;
  double props[64];
  int states = 0;     // where it takes more than its declaration asks for at least
  int count() const { // of those that are given
    int number = static_cast<int>(std::size(props));
    while (number > 0 && props[number - 1] == 0.0) --number;
    return number;
  }
};
// clang-format off
constexpr MaterialData kMaterials[] = {
    {"SPX_USR_SUPERELASTIC", "TVK_SUPER_ELASTIC_N*", {900, 0.3, 600, 0.35, 0.06, 3, 6, 2, 1, 4, 0.5, 0.3, 0.4, -1}},
    {"SPX_USR_SUPERELASTIC", "TVK_SUPER_ELASTIC_N*_EXP", {900, 0.3, 600, 0.35, 0.06, 3, 6, 2, 1, 4, 0.5, 0.3, 0.4, 1}},
    {"SPX_USR_JH2", "TVK_JH2", {30, 0.93, 0.4, 0.003, 0.35, 0.77, 1, 0.5, 0.5, 6, 3, 0.053, 0.85, 45, -138, 290, 1,
     0.4}},
    {"SPX_USR_JHB", "TVK_JHB", {193, 1.5, 4.9, 12.2, 1, 0.4, 1, 0.009, 1, 0.75, 0.16, 1, 1, 220, 361, 0, 1, 0.4}},
    {"SPX_USR_JHB", "TVK_JHB",
     {193, 1.5, 4.9, 12.2, 1, 0.4, 1, 0.009, 1, 0.75, 0.16, 1, 1, 220, 361, 0, 1, 0.4, 20, 0.3, 300, 200, 0, 0.1}, 5},
    {"SPX_USR_HJCCONCRETE", "TVK_HJC_CONCRETE",
     {150, 0.79, 1.6, 0.007, 0.61, 2, 0.5, 1, 0.01, 7, 1, 0.01, 20, 0.1, 0.04, 1, 850, -1710, 2080, 0.4, 1}},
    {"SPX_USR_MOLDEDPLASTIC", "TVK_MOLDED_PLASTIC",
     {18, 0.38, 1, 0.9, 1.1, 0.95, 1, 1, 0.4, -0.2, 3, 2, 2, 2, 0, 0, 0.5, 0.15, 1.5, 0.1, 2, 2, 0, 4, 0.5, 3.5, 1, 3,
      0, 4, 1,
      0.5, 1, 0.01, 0.8, 1.5, 2, 0.6, 0.8, 0.01, 0.7, 0.9, 2, 1, 0.01, 1.5, 1}},
    {"SPX_USR_THERMOPLASTIC", "TVK_THERMOPLASTIC",
     {18, 0.38, 1, 0.9, 1.1, 0.95, 1, 1, 0.4, -0.2, 3, 2, 2, 2, 0.5, 1.2, 0.5, 0.15, 1.5, 0.1, 2, 2, 0, 4, 0.5, 3.5, 1,
      3, 0, 4,
      1, 0.5, 1, 0.01, 0.8, 1.5, 2, 0.6, 0.8, 0.01, 0.7, 0.9, 2, 1, 0.01, 1.5, 1}},
    {"SPX_USR_RATESENSFOAM", "TVK_RATE_SENSITIVE_FOAM",
     {8, 1, 0.02, 0.3, 2, 0.1, 2, 0.01, 3, 2, 4, 0, 0, 1, 0.1, 3, 0.6, 0, 0, 1.5, 0.1, 4, 0.6, 9, 0.9}, 8},
    {"SPX_USR_FUCHANGISOFOAM", "TVK_FU_CHANG_ISO_FOAM",
     {8, 1, 0.3, 2, 0.1, 2, 0.01, 3, 2, 4, -2, -0.3, 0, 0, 3, 0.6, -3, -0.4, 0, 0, 1.5, 0.1, 9, 0.9}, 7},
    {"SPX_USR_FUCHANGANISOFOAM", "TVK_FU_CHANG_ANISO_FOAM",
     {8, 1, 0.3, 2, 0.1, 2, 1, 0, 2, 0, 0, 0.01, 3, 2, 3, -2, -0.3, 0, 0, 3, 0.6, -3, -1, 0, 0, 9, 0.9, 1, 2, 0, 0, 2,
      0.5, 1, 3,
      2, 2, 0, 0, 1, 0.4, 3, 0.5, 0, 0, 3, 0.5}, 12},
    {"SPX_USR_VISCOUSFOAM", "TVK_VISCOUS_FOAM", {2, 6, 0.1, 1, -3, 0, 20, 5, 2, 8}},
    {"SPX_USR_HONEYCOMB", "TVK_HONEYCOMB",
     {700, 0.3, 8, 0.3, 20, 5, 5, 6, 2, 3, 0.6, 4, 0, 2, 3, 0, 0, 2, 3, -0.5, 4, 0, 1, 0.2, 9, 0.7, 1, 0, 5, 0.7, 2, 0,
      1, 0.3, 6,
      0.7, 1, 0.1, 2, 10}, 3},
    {"SPX_USR_FABRIC", "TVK_FABRIC_INITENER",
     {3, 2, 2, 3, 10, 80, 4, 5, 30, 8, 1, 0.2, 3, 0.6, // curves:
      0, 0, 3, 0.1, 9, 0.2, 0, 0, 5, 0.1, 0, 0, 9, 0.1, 0, 0, 2, 0.05, 9, 0.1}, 12},
    {"SPX_USR_PLYFABRIC", "TVK_PLY_FABRIC",
     {80, 70, 0.2, 30, 4, 3, 3.5, 2.5, 0.2, 0, 0.5, 0.1, 2, 0.3, 0.9, 3, 8, 0.5, 0.95, 2, 0.9}}};
// clang-format on

const MaterialData& materialOf(const RoutineInfo& routine, int variant) {
  const MaterialData* found = nullptr;
  for (const MaterialData& material : kMaterials)
    if (material.routine == routine.name && (found == nullptr || variant / 2 % 3 == 2)) found = &material;
  if (found == nullptr) throw std::logic_error(std::string(routine.name) + ": no material");
  return *found;
}

// What the materials of a routine ask for, beyond its declaration.
int leastCount(const RoutineInfo& routine, std::string_view argument) {
  int least = 0;
  for (const MaterialData& material : kMaterials)
    if (material.routine == routine.name)
      least = std::max(least, argument == "nprops" ? material.count() : argument == "nstatev" ? material.states : 0);
  return least;
}

// Values of the integer scalars that fix the sizes, by name.
class Sizes {
public:
  Sizes(const RoutineInfo& routine, int points, int variant)
      : routine_(routine), points_(points), entities_(std::max(1, points / 2 + 1)) {
    int digits = variant;
    for (const ArgumentInfo& a : routine.args()) {
      choice_[a.name] = digits % choices(a);
      digits /= choices(a);
    }
    const int first = 1 + variant % 3;
    int places = 0;
    for (const ArgumentInfo& a : routine.args()) {
      if (a.is("block") || a.is("length")) values_[a.name] = points;
      if (a.is("stride")) values_[a.name] = points + 3 * (variant % 2);
      if (a.is("rows")) values_[a.name] = entities_ + 2;
      if (a.is("first")) values_[a.name] = first;
      if (a.is("last")) values_[a.name] = first - 1 + points;
      if (a.is("unread")) values_[a.name] = 0;
      if (a.is("cursor")) values_[a.name] = kCursor;
      if (a.is("place")) {
        static constexpr int kPlaces[] = {1, 1, kGroupNumber, kGroupSize}; // number and size of block and group
        values_[a.name] = kPlaces[places++ % 4];
      }
      if (a.is("text")) values_[a.shape[0]] = kTextLength;
    }
    // one direct component goes with one shear component or none
    if (routine.hasRole("text") && choice_["ndir"] == 1) values_["nshr"] = variant / 2 % 2;
  }

  int entities() const { return entities_; }
  int records() const { return points_ + kCursor + kRecordsMore; }
  void set(const std::string& name, int value) { values_[name] = value; }

  // A number, a name, and sums and products of such.
  int operator()(const std::string& text) {
    if (text == "*") return entities_;
    const std::size_t sign = text.find_last_of("+-"), times = text.find('*');
    if (sign != std::string::npos) {
      const int last = (*this)(text.substr(sign + 1));
      return (*this)(text.substr(0, sign)) + (text[sign] == '+' ? last : -last);
    }
    if (times != std::string::npos) return (*this)(text.substr(0, times)) * (*this)(text.substr(times + 1));
    if (text[0] >= '0' && text[0] <= '9') return std::atoi(text.c_str());
    const auto known = values_.find(text);
    if (known != values_.end()) return known->second;
    for (const ArgumentInfo& a : routine_.args())
      if (text == a.name) return values_[text] = chosen(a);
    throw std::logic_error(std::string(routine_.name) + ": no size " + text);
  }

private:
  int chosen(const ArgumentInfo& a) {
    static constexpr int kCounts[] = {3, 1, 2};
    const int choice = choice_[a.name];
    const std::string unit = a.unit;
    if (isPointCount(routine_, a)) return std::min(kCounts[choice], entities_);
    if (unit == "count") return kCounts[choice];
    if (unit.starts_with("count>=")) return std::max((*this)(unit.substr(7)), leastCount(routine_, a.name)) + choice;
    if (a.is("index")) {
      const int high = (*this)(unit.substr(3));
      return choice == 0 ? high : choice == 1 ? 1 : (high + 1) / 2;
    }
    if (a.is("code")) {
      std::size_t at = 4;
      for (int k = 0; k < choice; ++k) at = unit.find('|', at) + 1;
      return std::atoi(unit.c_str() + at);
    }
    throw std::logic_error(std::string(routine_.name) + ": argument " + a.name + " fixes no size");
  }

  const RoutineInfo& routine_;
  int points_, entities_;
  std::map<std::string, int> values_, choice_;
};

Array shapeArray(const RoutineInfo& routine, const ArgumentInfo& info, Sizes& sizes) {
  Array array;
  array.info = &info;
  array.elementSize = info.isReal()                                         ? sizeof(double)
                      : info.is("text")                                     ? sizeof(char)
                      : info.type.find("int64_t") != std::string_view::npos ? sizeof(std::int64_t)
                                                                            : sizeof(std::int32_t);
  for (int d = 0; d < info.rank(); ++d) {
    const std::string dimension = info.shape[d];
    const bool isRecords = info.is("record") && dimension == "*";
    const auto size = static_cast<std::size_t>(std::max(0, isRecords ? sizes.records() : sizes(dimension)));
    const Lines kind = isPointDimension(routine, dimension)    ? Lines::points
                       : isEntityDimension(routine, dimension) ? Lines::entities
                                                               : Lines::none;
    if (kind != Lines::none && array.lines == Lines::none) {
      array.lines = kind;
      array.lineCount = size;
    } else if (array.lines == Lines::none) {
      array.before *= size;
    } else {
      array.after *= size;
    }
  }
  array.bytes.resize(array.elements() * array.elementSize);
  return array;
}

// A symmetric tensor near the identity; some strongly deformed, some singular.  The first three components are direct.
void fillStretch(Random& random, std::vector<double>& v) {
  const int kind = random.integer(0, 15);
  const double direct = kind < 4 ? 0.8 : 0.05, shear = kind < 4 ? 0.08 : 0.02;
  for (std::size_t k = 0; k < v.size(); ++k) {
    const double u = random.uniform(-1.0, 1.0);
    v[k] = k < 3 ? 1.0 + direct * u : shear * u;
  }
  if (kind == 0)
    for (double& x : v) x *= 3.0;
  if (kind == 4 && v.size() > 2) v[2] = 0.0;
  if (kind == 5)
    for (std::size_t k = 0; k < v.size(); ++k) v[k] = k < 3 ? 1.0 : 0.0;
}

// Node coordinates of a distorted unit brick with an offset, node fastest; some inverted, some flat.
void fillBrick(Random& random, std::vector<double>& x) {
  static constexpr double kCorner[3][8] = {
      {0, 1, 1, 0, 0, 1, 1, 0}, {0, 0, 1, 1, 0, 0, 1, 1}, {0, 0, 0, 0, 1, 1, 1, 1}};
  const int kind = random.integer(0, 15);
  for (std::size_t c = 0; c < 3; ++c) {
    const double offset = random.uniform(-10.0, 10.0);
    for (std::size_t node = 0; node < 8; ++node) {
      double corner = kCorner[c][node] + random.uniform(-0.15, 0.15);
      if (c == 2 && kind == 0) corner = -corner;
      if (c == 2 && kind == 1) corner = 0.0;
      x[8 * c + node] = offset + corner;
    }
  }
}

// All values of one point or entity.
void fillReals(Random& random, const ArgumentInfo& info, const std::vector<double>& previous, std::vector<double>& v) {
  static constexpr double kScales[] = {1.0, 1.0, 1.0, 1.0, 1e-3, 1e3, 1e6, 1e-6};
  const std::string_view unit = info.unit;
  const double scale = kScales[random.integer(0, 7)];
  const bool isTensor = v.size() == 3 || v.size() == 4 || v.size() == 6;
  if (info.is("stretch") || (unit == "any" && isTensor && oneIn(random, 2))) {
    fillStretch(random, v);
    if (unit == "any")
      for (double& x : v) x *= scale;
  } else if (unit == "plane stretch") {
    fillStretch(random, v);
    v[2] = 0.1 * (v[2] - 1.0); // a shear in place of the third direct component
  } else if (unit == "axial stretch") {
    v[0] = oneIn(random, 16) ? 0.0 : random.uniform(0.6, 1.6);
  } else if (unit == "locking stretch") {
    v[0] = random.uniform(20.0, 40.0);
  } else if (unit == "expansion") {
    v[0] = random.uniform(-0.05, 0.05);
  } else if (unit == "exponent") {
    v[0] = oneIn(random, 8) ? 0.0 : random.uniform(-4.0, 4.0);
  } else if (unit == "deformation gradient") {
    fillStretch(random, v);
  } else if (unit == "strain") {
    for (double& x : v) x = random.uniform(-1.0, 1.0) * (oneIn(random, 4) ? 0.1 : 0.01);
  } else if (unit == "state") {
    for (double& x : v) x = oneIn(random, 3) ? 0.0 : oneIn(random, 8) ? 1.0 : random.uniform(0.0, 0.5);
  } else if (info.is("mask") || info.is("flag")) {
    for (double& x : v) x = oneIn(random, 4) ? 1.0 : 0.0;
  } else if (unit == "m" && v.size() == 24) {
    fillBrick(random, v);
  } else if (unit == "Pa") {
    for (double& x : v) x = random.uniform(0.1, 10.0) * (oneIn(random, 8) ? -1.0 : 1.0);
  } else {
    for (std::size_t k = 0; k < v.size(); ++k) {
      const int kind = random.integer(0, 31);
      v[k] = kind == 0                       ? 0.0
             : kind == 1                     ? -0.0
             : kind < 4 && !previous.empty() ? previous[k]
             : kind < 6 && k > 0             ? v[k - 1]
                                             : random.uniform(-2.0, 2.0) * (unit == "any" ? scale : 1.0);
    }
  }
}

void fillArray(Array& array, std::uint64_t seed, int entities) {
  const ArgumentInfo& info = *array.info;
  Random random(seed);
  if (info.isOnlyWritten()) {
    for (std::size_t i = 0; i < array.elements(); ++i) array.setBits(i, info.isReal() ? kPoisonReal : kPoisonInteger);
    return;
  }
  std::vector<double> previous, values(array.components());
  for (std::size_t line = 0; line < array.lineCount; ++line) {
    if (info.isReal()) fillReals(random, info, previous, values);
    for (std::size_t c = 0; c < array.components(); ++c) {
      const std::size_t at = array.index(line, c);
      if (info.isReal()) {
        array.setReal(at, values[c]);
      } else {
        array.setInteger(at, info.is("entity") ? random.integer(1, entities) : random.integer(-20, 20));
      }
    }
    previous = values;
  }
}

// Points 1 .. points: every one in order, or two of three in any order.
std::vector<int> makeList(Random& random, int points, bool isWholeBlock) {
  std::vector<int> list;
  for (int i = 1; i <= points; ++i)
    if (isWholeBlock || i == points || random.integer(0, 2) > 0) list.push_back(i);
  if (!isWholeBlock)
    for (int i = static_cast<int>(list.size()) - 1; i > 0; --i) std::swap(list[i], list[random.integer(0, i)]);
  return list;
}

// Members of earlier blocks up to the cursor, the given points, and members of later blocks.
std::vector<int> makeSet(const std::vector<int>& list, int points) {
  const int before = (kGroupNumber - 1) * kGroupSize;
  std::vector<int> set;
  for (int k = 1; k < kCursor; ++k) set.push_back(before - kCursor + k);
  for (int point : list) set.push_back(before + point);
  std::sort(set.begin(), set.end());
  set.push_back(before + points + 1);
  set.push_back(before + points + 2);
  return set;
}

// An array of exactly these values, none of them of a point.
template <class Container>
void setValues(Array& array, const Container& values) {
  array.lines = Lines::none;
  array.lineCount = array.after = 1;
  array.before = values.size();
  array.bytes.resize(values.size() * array.elementSize);
  if (!values.empty()) std::memcpy(array.bytes.data(), values.data(), array.bytes.size());
}

// Name and properties of the material that a routine computes.
void fillMaterial(const RoutineInfo& routine, Array& array, Sizes& sizes, int variant) {
  const MaterialData& material = materialOf(routine, variant);
  if (!array.info->is("text")) {
    for (std::size_t k = 0; k < array.elements(); ++k) array.setReal(k, material.props[k]);
    return;
  }
  std::string name(material.name);
  if (const std::size_t star = name.find('*'); star != std::string::npos)
    name.replace(star, 1, sizes("ndir") == 1 ? "1D" : sizes("nshr") == 1 && variant / 4 % 2 == 0 ? "2D" : "3D");
  name.resize(array.bytes.size(), ' ');
  std::copy(name.begin(), name.end(), array.bytes.begin());
}

// Material tables of every kind, by the option code and the number of points: constant, regular, and general ones of one
// variable, short and long, and of three; their transforms are used by the codes that know them.
struct TablePools {
  tables::Pools pools;
  tables::Table table;
};
TablePools makeTable(Sizes& sizes, int points) {
  using namespace tables;
  TablePools result;
  const int option = sizes("option"), kind = points % 5 % 3;
  const bool isRegular = option < 2 && sizes("extra") == 0;
  Random random(static_cast<std::uint64_t>(7 + kind));
  std::vector<Row> rows;
  if (isRegular) {
    std::vector<Axis> axes;
    std::size_t values = 1;
    for (int v = 0; v < option + sizes("dependencies"); ++v) {
      axes.push_back({-1.0 + 0.25 * v, 0.5, 2 + v});
      values *= static_cast<std::size_t>(2 + v);
    }
    std::vector<double> data(values);
    for (double& x : data) x = random.uniform(-5, 5);
    result.table = addRegularTable(result.pools, option == 1, axes, data);
    return result;
  }
  if (option == 100) {
    result.table = addConstant(result.pools, 4.5, 1);
    return result;
  }
  const Scale root = option == 300 ? Scale::Root : Scale::Linear;
  std::vector<Variable> variables = {
      {state(1), true, false, root, 0.0}, {kTemperature, false, true}, {field(1), true, true}};
  if (kind != 1) {
    variables.pop_back();
    variables.erase(variables.begin() + (option == 300 ? 1 : 0));
  }
  for (int row = 0; row < (kind == 0 ? 7 : 50); ++row) {
    rows.push_back({random.uniform(-5, 5), random.uniform(0, 2)});
    if (kind == 1) rows.back().insert(rows.back().end(), {0.5 * random.integer(-2, 0), 1.0 * random.integer(-1, 1)});
  }
  rows.push_back(rows[3]); // a jump
  rows.back()[0] = 1.0;
  result.table = addTable(result.pools, variables, rows, points % 2 == 0);
  // The temperature is logarithmic.  Said afterwards, so that no logarithm of another library enters the bits.
  for (std::size_t v = 0; v < variables.size(); ++v)
    if (variables[v].source == kTemperature) {
      result.table.header[4] = static_cast<std::int32_t>(v + 1);
      result.table.header[5] = detail::append(result.pools.reals, {0.05});
    }
  return result;
}

std::string targetOf(const Array& map) { return std::string(map.info->unit).substr(10); } // after "entity of "

} // namespace

std::uint64_t Array::canonicalBits(std::size_t element) const {
  const std::uint64_t value = bits(element);
  if (elementSize == sizeof(double) && (value & 0x7fffffffffffffffULL) > 0x7ff0000000000000ULL)
    return 0x7ff8000000000000ULL;
  return value;
}

int variantCount(const RoutineInfo& routine) {
  int product = 1;
  for (const ArgumentInfo& a : routine.args()) product *= choices(a);
  return std::clamp(product, 2, 27);
}

KernelCase makeCase(const RoutineInfo& routine, int points, int variant) {
  Sizes sizes(routine, points, variant);
  KernelCase result;
  result.routine = &routine;
  result.points = points;
  Random listRandom(hashOf(routine.name, points * 64 + variant));
  std::vector<int> list;
  for (const ArgumentInfo& info : routine.args()) {
    if (info.is("first")) result.first = sizes(info.name) - 1;
    if (info.is("cursor")) result.cursor = kCursor;
    if (!info.is("list") && !info.is("set")) continue;
    list = makeList(listRandom, points, variant % 2 == 1);
    if (info.is("set")) list = makeSet(list, points);
    sizes.set(info.shape[0], static_cast<int>(list.size()));
  }
  for (const ArgumentInfo& info : routine.args()) {
    Array array = shapeArray(routine, info, sizes);
    static constexpr std::string_view kSizeRoles[] = {"block", "length", "count",  "rows", "stride", "first",
                                                      "last",  "index",  "unread", "code", "cursor", "place"};
    if (std::find(std::begin(kSizeRoles), std::end(kSizeRoles), info.role) != std::end(kSizeRoles)) {
      array.setInteger(0, sizes(info.name));
    } else if (info.is("list") || info.is("set")) {
      setValues(array, list);
    } else if (info.is("text") || std::string_view(info.unit) == "properties") {
      fillMaterial(routine, array, sizes, variant);
    } else if (array.elementSize == sizeof(std::int64_t) && !info.isReal()) {
      array.setBits(0, static_cast<std::uint64_t>(sizes(info.name)));
    } else if (info.is("table")) {
      const TablePools table = makeTable(sizes, points);
      const bool isPool = std::string_view(info.shape[0]) == "*";
      if (info.isReal())
        setValues(array, table.pools.reals);
      else if (isPool)
        setValues(array, table.pools.ints);
      else
        setValues(array, table.table.header);
    } else {
      const std::uint64_t seed = hashOf(routine.name, hashOf(info.name, points * 64 + variant));
      fillArray(array, seed, sizes.entities());
    }
    result.arrays.push_back(array);
  }
  return result;
}

const Array* KernelCase::find(std::string_view name) const {
  for (const Array& array : arrays)
    if (name == array.info->name) return &array;
  return nullptr;
}

bool KernelCase::isProcessed(std::size_t point) const {
  const int p = static_cast<int>(point);
  if (p < first || p >= first + points) return false;
  for (const Array& array : arrays) {
    if (!array.info->is("list")) continue;
    for (std::size_t k = 0; k < array.elements(); ++k)
      if (array.integer(k) == p + 1) return true;
    return false;
  }
  return true;
}

bool KernelCase::isMapped(const Array& array) const {
  return array.info->is("record") || std::any_of(arrays.begin(), arrays.end(), [&](const Array& map) {
           return map.info->is("entity") && targetOf(map) == array.info->name;
         });
}

std::vector<int> KernelCase::recordsOfPoints() const {
  std::vector<int> records(static_cast<std::size_t>(std::max(0, points)), -1);
  const auto set = std::find_if(arrays.begin(), arrays.end(), [](const Array& a) { return a.info->is("set"); });
  if (set == arrays.end()) {
    for (std::size_t p = 0; p < records.size(); ++p) records[p] = cursor - 1 + static_cast<int>(p);
    return records;
  }
  for (std::size_t k = 0; k < set->elements(); ++k) {
    const int point = set->integer(k) - (kGroupNumber - 1) * kGroupSize;
    if (point >= 1 && point <= points) records[point - 1] = static_cast<int>(k);
  }
  return records;
}

std::vector<bool> KernelCase::reachedEntities(const Array& array, int onlyPoint) const {
  std::vector<bool> reached(array.lineCount, false), through;
  if (array.info->is("record")) {
    const std::vector<int> records = recordsOfPoints();
    for (std::size_t p = 0; p < records.size(); ++p)
      if (records[p] >= 0 && (onlyPoint < 0 || static_cast<int>(p) == onlyPoint)) reached[records[p]] = true;
    return reached;
  }
  const auto mark = [](std::vector<bool>& set, int entity) {
    if (set.size() < static_cast<std::size_t>(entity)) set.resize(static_cast<std::size_t>(entity), false);
    set[entity - 1] = true;
  };
  const auto markPoints = [&](const Array& map, std::vector<bool>& set) {
    for (std::size_t p = 0; p < map.lineCount; ++p)
      if (onlyPoint < 0 ? isProcessed(p) : static_cast<int>(p) == onlyPoint)
        for (std::size_t c = 0; c < map.components(); ++c) mark(set, map.integer(map.index(p, c)));
  };
  // Maps of points first: a map of entities is entered with what they name.
  for (const Array& map : arrays) {
    if (!map.info->is("entity") || map.lines != Lines::points) continue;
    markPoints(map, through);
    if (targetOf(map) == array.info->name) markPoints(map, reached);
  }
  for (const Array& map : arrays) {
    if (!map.info->is("entity") || map.lines != Lines::entities || targetOf(map) != array.info->name) continue;
    for (std::size_t e = 0; e < std::min(through.size(), map.lineCount); ++e)
      for (std::size_t c = 0; through[e] && c < map.components(); ++c) mark(reached, map.integer(map.index(e, c)));
  }
  return reached;
}

void KernelCase::setPoints(int n) {
  points = n;
  for (Array& array : arrays) {
    const ArgumentInfo& info = *array.info;
    if (info.is("block") || info.is("length")) array.setInteger(0, n);
    if (info.is("last")) array.setInteger(0, first + n);
    if (isPointCount(*routine, info)) array.setInteger(0, std::min(array.integer(0), n));
  }
}

int KernelCase::recordsBefore(int point) const {
  const std::vector<int> records = recordsOfPoints();
  return static_cast<int>(std::count_if(records.begin(), records.begin() + point, [](int r) { return r >= 0; }));
}

KernelCase KernelCase::forAllPoints(const RoutineInfo& form, bool isReversed) const {
  KernelCase all = *this;
  all.routine = &form;
  all.arrays.clear();
  std::vector<int> list;
  std::string listLength;
  for (int p = 1; p <= points; ++p) list.push_back(isReversed ? points + 1 - p : p);
  for (const ArgumentInfo& info : form.args()) {
    const Array* own = find(info.name);
    if (own == nullptr) throw std::logic_error(std::string(routine->name) + " has no " + info.name);
    all.arrays.push_back(*own);
    all.arrays.back().info = &info;
    if (!info.is("list") && !info.is("set")) continue;
    if (info.is("set")) list = makeSet(list, points);
    setValues(all.arrays.back(), list);
    listLength = info.shape[0];
  }
  for (Array& array : all.arrays)
    if (listLength == array.info->name) array.setInteger(0, static_cast<int>(list.size()));
  return all;
}

KernelCase KernelCase::piece(int begin, int end) const {
  KernelCase cut;
  const int length = end - begin;
  const bool isRange = routine->hasRole("last");
  const auto from = static_cast<std::size_t>(isRange ? 0 : begin);
  const std::size_t lines = static_cast<std::size_t>(isRange ? first + end : length);
  cut.routine = routine, cut.cursor = cursor, cut.result = result;
  cut.points = length;
  cut.arrays.reserve(arrays.size());
  cut.first = isRange ? first + begin : 0;
  std::vector<int> list;
  std::string listLength;
  bool isFirstPlace = true;
  for (std::size_t a = 0; a < arrays.size(); ++a) {
    const Array& whole = arrays[a];
    Array& part = cut.arrays.emplace_back();
    const ArgumentInfo& info = *whole.info;
    part = {&info, whole.elementSize, whole.lines, whole.before, whole.lineCount, whole.after, {}};
    if (whole.lines != Lines::points) part.bytes = whole.bytes;
    if (info.is("block")) part.setInteger(0, length);
    if (info.is("cursor")) part.setInteger(0, cursor + recordsBefore(begin));
    if (info.is("place") && std::exchange(isFirstPlace, false)) part.setInteger(0, begin + 1); // a block of size 1
    if (info.is("first")) part.setInteger(0, first + begin + 1);
    if (info.is("last")) part.setInteger(0, first + end);
    if (info.is("stride")) part.setInteger(0, length + 1);
    if (isPointCount(*routine, info)) part.setInteger(0, std::clamp(whole.integer(0) - begin, 0, length));
    if (info.is("list")) {
      listLength = info.shape[0];
      for (std::size_t k = 0; k < whole.elements(); ++k)
        if (whole.integer(k) > begin && whole.integer(k) <= end) list.push_back(whole.integer(k) - begin);
      setValues(part, list);
    } else if (whole.lines == Lines::points) {
      const bool isStrided = std::any_of(arrays.begin(), arrays.end(), [&](const Array& other) {
        return other.info->is("stride") &&
               std::any_of(info.shape, info.shape + info.rank(),
                           [&](const char* dimension) { return std::string_view(dimension) == other.info->name; });
      });
      part.lineCount = lines + (isStrided ? 1 : 0);
      part.bytes.assign(part.elements() * part.elementSize, 0xa5);
      for (std::size_t line = 0; line < lines; ++line)
        for (std::size_t c = 0; c < part.components(); ++c)
          part.setBits(part.index(line, c), whole.bits(whole.index(from + line, c)));
    }
  }
  for (Array& array : cut.arrays)
    if (!listLength.empty() && listLength == array.info->name) array.setInteger(0, static_cast<int>(list.size()));
  return cut;
}

void KernelCase::putBack(const KernelCase& piece, int begin) {
  const auto to = static_cast<std::size_t>(routine->hasRole("last") ? 0 : begin);
  for (std::size_t a = 0; a < arrays.size(); ++a) {
    Array& whole = arrays[a];
    const Array& part = piece.arrays[a];
    if (!whole.info->isWritten()) continue;
    if (whole.info->is("cursor")) { // moved by as much; some members leave that to another call
      whole.setInteger(0, whole.integer(0) + part.integer(0) - cursor - recordsBefore(begin));
      continue;
    }
    if (whole.lines != Lines::points) {
      whole.bytes = part.bytes;
      continue;
    }
    for (std::size_t line = 0; line < part.lineCount; ++line) {
      if (!piece.isProcessed(line)) continue;
      for (std::size_t c = 0; c < part.components(); ++c)
        whole.setBits(whole.index(to + line, c), part.bits(part.index(line, c)));
    }
  }
}

} // namespace sa::test
