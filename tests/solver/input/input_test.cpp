// What the program answers to input that is wrong: the exit code, and a text that leads to the mistake.
#include "solver/input/box_mesh.h"
#include "solver/input/case_reader.h"
#include "solver/input/gmsh_mesh.h"
#include "solver/input/mesh_reader.h"
#include "solver/parallel/distribution.h"
#include "solver/program/job.h"
#include "solver/results/mesh_file.h"
#include "tests/solver/files.h"

#include <sys/stat.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using solver::Mesh;

class Input : public SolverTest {
protected:
  void SetUp() override {
    SolverTest::SetUp();
    writeFile("box.msh", meshText(numberedBox({1, 1, 4}, {1, 1, 4})));
  }

  // What is said about a case and the files beside it.
  static std::string answer(const std::string& caseText, ExitCode expected = exitInput) {
    writeFile("case.toml", caseText);
    return answerTo("case.toml", expected);
  }
  static std::string answerTo(const std::filesystem::path& caseFile, ExitCode expected = exitInput) {
    const std::set<std::string> before = filesIn(".");
    testing::internal::CaptureStderr();
    const ExitCode code =
        solver::runJob({.caseFile = caseFile, .outputDirectory = {}, .threads = 1, .checkOnly = false, .quiet = true});
    std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(code, expected) << text;
    EXPECT_EQ(filesIn(".") == before, expected == exitInput) << "wrong input leaves no files";
    if (text.starts_with("error: ") && text.ends_with('\n')) return text.substr(7, text.size() - 8);
    return text;
  }
  static std::string answerToMesh(const std::string& text) {
    writeFile("box.msh", text);
    return answer(barCase);
  }

private:
  WorkingDirectory directory_;
};

class Mistakes : public Input {
protected:
  static void expect(const std::string& text, const std::string& wanted) {
    EXPECT_EQ(answer(text), "case.toml" + wanted) << text;
  }
  // Rows of what is replaced in a case, by what, and the answer.
  static void check(const std::string& mistakes, const std::string& text = barCase) {
    for (const Row& row : tableOf(mistakes)) expect(replaced(text, row[0], row[1]), row[2]);
  }
  // Rows of lines behind the case and a heading, and the answer.
  static void checkBehind(const std::string& heading, const std::string& mistakes) {
    const std::string begin = barCase + (heading.empty() ? "" : tableOf(heading + " =>")[0][0] + "\n");
    for (const Row& row : tableOf(mistakes)) expect(begin + row[0], row[1]);
  }
};

TEST_F(Input, SoundInputIsRun) {
  EXPECT_EQ(answer(barCase, exitDone), "");
  EXPECT_TRUE(std::filesystem::exists("case.exo"));
}

TEST_F(Input, CaseFilesThatCannotBeRead) {
  std::filesystem::create_directory("directory");
  EXPECT_EQ(answerTo("missing.toml"), "missing.toml: cannot be opened: No such file or directory");
  EXPECT_EQ(answerTo("directory"), "directory: is a directory, expected a case file");
  EXPECT_EQ(answer(""), "case.toml:1:1: mesh is missing, expected a text in quotes");
  writeFile("case.exo", "a mesh"); // results must not take its place
  EXPECT_EQ(answer(replaced(barCase, "box.msh", "case.exo")),
            "case.exo: is read, and results of job \"case\" would take its place, expected another job or directory of "
            "results");
}

TEST_F(Mistakes, BrokenToml) {
  const std::tuple<const char*, const char*, const char*> mistakes[] = {
      {"end_time = 0.05", "end_time = ", ":25:12: "},
      {"[control]", "[control", ":24:9: "},
      {"\"rubber\"\ndensity", "\"rubber\ndensity", ":4:"},
      {"end_time = 0.05", "end_time = 1e999", ":25:"},
      {"= 0.05", "= 1\nend_time = 2", ":26:"},
      {"mesh =", "$MeshFormat\nmesh =", ":1:1: "},
      {"mesh =", "mesh = \xff", ":1:7: "}};
  for (const auto& [from, to, place] : mistakes)
    EXPECT_TRUE(answer(replaced(barCase, from, to)).starts_with("case.toml" + std::string(place))) << to;
}

TEST_F(Mistakes, Keys) {
  check(R"(
density -> densty => :5:1: unknown key "densty" in material, did you mean "density"?
[control] -> [contrl] => :24:2: unknown key "contrl", did you mean "control"?
end_time -> endtime => :25:1: unknown key "endtime" in control, did you mean "end_time"?
group = "z0" -> group = "z0"; quux = 1 => :19:1: unknown key "quux" in fix, expected one of group, components
mesh = "box.msh" -> => :1:1: mesh is missing, expected a text in quotes
name = "rubber" -> => :3:1: name is missing in material, expected a text in quotes
density = 1000 -> => :3:1: density is missing in material, expected a positive number in kg/m3
D1 = 1e-7 -> => :3:1: D1 is missing in material, expected a positive number in 1/Pa
group = "z0" -> => :17:1: group is missing in fix, expected a text in quotes
end_time = 0.05 -> => :24:1: end_time is missing in control, expected a positive number in s
velocity = [0, 0, -1] -> => :21:1: initial_velocity has neither velocity nor rate, expected one of them or both
velocity = [0, 0, -1] -> velocity = [0, 0, 0]; origin = [0, 0, 0] => :23:10: origin is given without rate, expected
    both)");
}

TEST_F(Mistakes, TablesThatAreNotThere) {
  const std::string text(barCase);
  expect("mesh = \"box.msh\"\n" + text.substr(text.find("[control]")), ": no material, expected [[material]]");
  expect(text.substr(0, text.find("[[section]]")) + text.substr(text.find("[[fix]]")),
         ": no section, expected [[section]]");
}

TEST_F(Mistakes, Types) {
  check(R"(
"box.msh" -> 3 => :1:8: mesh is a number, expected a text in quotes
"box.msh" -> "" => :1:8: mesh is empty, expected a text in quotes
density = 1000 -> density = "1000" => :5:11: density is a text, expected a positive number in kg/m3
density = 1000 -> density = [1000] => :5:11: density is an array, expected a positive number in kg/m3
density = 1000 -> density = true => :5:11: density is true or false, expected a positive number in kg/m3
density = 1000 -> density = 2000-01-01 => :5:11: density is a date or time, expected a positive number in kg/m3
[[material]] -> [material] => :3:1: material is a table, expected [[material]]
[control] -> [[control]] => :24:1: control is an array, expected [control]
[0, 0, -1] -> -1 => :22:12: velocity is a number, expected an array of numbers in m/s
[0, 0, -1] -> [0, -1] => :22:12: velocity has 2 numbers, expected 3 (x, y, z) in m/s
[0, 0, -1] -> [0, 0, "down"] => :22:19: velocity is a text, expected a finite number in m/s
["x", "y", "z"] -> "xyz" => :19:14: components is a text, expected an array of "x", "y" and "z"
["x", "y", "z"] -> [] => :19:14: components is empty, expected an array of "x", "y" and "z"
"z"] -> "w"] => :19:14: "w" is no component, expected "x", "y" or "z")");
}

TEST_F(Mistakes, NumbersWithoutSense) {
  check(R"(
1000 -> -1000 => :5:11: density is -1000, expected a positive number in kg/m3
1000 -> 1e-300 => :5:11: density of material "rubber" is 1e-300 kg/m3, its shear modulus 2e+06 Pa and its bulk modulus
    2e+07 Pa, which make a wave speed of 4.761e+153 m/s, expected a density of 1e-60 to 1e60 kg/m3 and a speed of 1e-9
    to 1e15 m/s
1000 -> 0 => :5:11: density is 0, expected a positive number in kg/m3
1000 -> nan => :5:11: density is nan, expected a positive number in kg/m3
1000 -> inf => :5:11: density is inf, expected a positive number in kg/m3
1e-7 -> -1e-7 => :7:6: D1 is -1e-07, expected a positive number in 1/Pa
1e-7 -> 0 => :7:6: D1 is 0, expected a positive number in 1/Pa
1e-7 -> 1e-320 => :7:6: D1 of material "rubber" is too small for its reciprocal
1e-7 -> 1e-7; D2 = -1 => :8:6: D2 is -1, expected a number that is not negative in 1/Pa
C10 = 1e6 -> C10 = 1e6; C01 = -1e6 => :6:7: C10 + C01 of material "rubber" is 0, expected a positive number in Pa
    (half the shear modulus)
0.05 -> 0 => :25:12: end_time is 0, expected a positive number in s
0.05 -> -0.05 => :25:12: end_time is -0.05, expected a positive number in s
0.05 -> inf => :25:12: end_time is inf, expected a positive number in s
-1] -> nan] => :22:19: velocity is nan, expected a finite number in m/s
-1] -> -1]; rate = 1; axis = [0, 0, 0] => :24:8: axis has no direction, expected a vector that is not zero
-1] -> -1]; rate = 1; profile_length = 0 => :24:18: profile_length is 0, expected a positive number in m)");
}

TEST_F(Mistakes, ControlAndOutput) {
  checkBehind("", R"(
safety_factor = 1.1 => :26:17: safety_factor is 1.1, expected a number above 0 and not above 1
hourglass = -0.1 => :26:13: hourglass is -0.1, expected a number from 0 to 1
linear_viscosity = -1 => :26:20: linear_viscosity is -1, expected a number that is not negative
damping = 0; quasi_static = true => :26:11: damping is given with quasi_static, which chooses it, expected one of them)");
  checkBehind("[output]", R"(
interval = 0 => :27:12: interval is 0, expected a positive number in s
fields = ["strain"] => :27:10: "strain" is no field, expected one of displacement, velocity, reaction, stress,
    strain_energy_density, mask, principal_stress, principal_rotation, principal_direction, material_orientation
history_interval = 2e-7 => :27:20: history_interval is 2e-07, which makes more than 100000 records, expected at least
    5e-07 s
restart_interval = -1 => :27:20: restart_interval is -1, expected a positive number in s
filter_cutoff = 0 => :27:17: filter_cutoff is 0, expected a positive number in Hz
filter_order = 4 => :27:16: filter_order belongs to a filter, and filter_cutoff is missing in output)");
  checkBehind("[output]; filter_cutoff = 9", R"(
filter_order = 3 => :28:16: filter_order is 3, expected an even number from 2 to 20
filter_type = "bessel" => :28:15: filter_type is "bessel", expected "butterworth", "chebyshev1" or "chebyshev2"
filter_ripple = 1 => :28:17: filter_ripple does not belong to filter_type "butterworth")");
}

TEST_F(Mistakes, Histories) {
  checkBehind("[[velocity]]; group = \"z1\"", R"(
component = "r"; value = 1 => :28:13: "r" is no component, expected "x", "y" or "z"
value = 1 => :26:1: component is missing in velocity, expected a text in quotes)");
  checkBehind("[[velocity]]; group = \"z1\"; component = \"x\"", R"(
time = [0, 1, 1]; value = [0, 1, 2] => :29:8: time goes from 1 to 1, expected increasing times in s
time = [0, 2, 1]; value = [0, 1, 2] => :29:8: time goes from 2 to 1, expected increasing times in s
time = [0, 1]; value = [0] => :30:9: value has 1 number and time has 2, expected as many of both
value = [0, 1] => :26:1: time is missing in velocity, expected an array of numbers in s
time = [0, 1]; value = 1 => :29:8: time needs an array of values, expected value = [...]
time = []; value = [] => :29:8: time is empty, expected an array of numbers in s
time = [0, 1]; value = [0, inf] => :30:13: value is inf, expected a finite number in m/s
time = [0, 1]; value = [0, 1]; curve = "round" => :31:9: curve is "round", expected "linear" or "smooth"
value = 1; curve = "smooth" => :30:9: curve needs an array of values, expected value = [...])");
  checkBehind("[[history]]; group = \"z1\"", R"(
values = ["force"] => :28:10: "force" is no value of a group, expected an array of "displacement", "velocity",
    "reaction", "energy"
values = ["velocity", "velocity"] => :28:10: "velocity" is there twice
values = ["energy"] => :27:9: group "z1" is not one of bricks, expected one of "lower", "upper")");
}

TEST_F(Mistakes, Loads) {
  checkBehind("[[force]]; group = \"z1\"; value = 1", R"(
=> :26:1: expected component or direction, one of them
component = "x"; direction = [1, 0, 0] => :30:13: expected component or direction, one of them
direction = [0, 0, 0] => :29:13: direction has no direction, expected a vector that is not zero
component = "x"; per_node = 1 => :30:12: per_node is a number, expected true or false
component = "x"; name = "a,b" => :30:8: name is "a,b", expected letters, digits, "_", "-" and ".")");
  checkBehind("[[pressure]]; group = \"z1\"", R"(
value = 1; name = "p"; [[pressure]]; group = "z0"; value = 1; name = "p" => :33:8: the name "p" is there already,
    expected another one
value = true => :28:9: value is true or false, expected a finite number in Pa
value = 1; direction = [1, 0, 0] => :29:1: unknown key "direction" in pressure, expected one of group, name, value,
    time, curve)");
  checkBehind("[[plane]]; point = [0, 0, 0]; normal = [0, 0, 1]", R"(
friction = -1 => :29:12: friction is -1, expected a number that is not negative
component = "x" => :29:13: component is given without value, the velocity of the plane, expected both)");
  checkBehind("", R"(
[[symmetry]]; group = "z1" => :26:1: normal is missing in symmetry, expected an array of numbers
[[pressure]]; group = "upper"; value = 1 => :27:9: group "upper" is not one of faces, expected one of "x0", "x1",
    "y0", "y1", "z0", "z1"
[[local_gravity]]; group = "z1"; component = "x"; value = 1 => :27:9: group "z1" is not one of bricks, expected one of
    "lower", "upper"
[[plane]]; normal = [0, 0, 1] => :26:1: point is missing in plane, expected an array of numbers in m
[[plane]]; point = [0, 0, 0.5]; normal = [0, 0, 2]; name = "floor" => , mesh box.msh: 4 nodes behind plane "floor" at
    the start, the first is number 17, expected all on the side of its normal)");
  // it comes to a foot that is held; a top is led to it, 0.04 + 0.02/11 by a speed that turns, and two of its nodes are near
  checkBehind("", R"(
[[plane]]; point = [0, 0, -0.01]; normal = [0, 0, 1]; value = 1; name = "floor" => , mesh box.msh: 4 nodes that
    supports or prescribed motion lead behind plane "floor", the first is number 17, by up to 0.04 m; expected a group
    of the plane without them, or room for their motion
[[velocity]]; group = "z1"; component = "z"; time = [0, 0.02, 0.03]; value = [2, 2, -9]; [[plane]]; point = [0, 0,
    4.01]; normal = [0, 0.05, -1]; name = "top" => , mesh box.msh: 2 nodes that supports or prescribed motion lead
    behind plane "top", the first is number 177, by up to 0.03178 m; expected a group of the plane without them, or
    room for their motion)");

  // faces that are not on the surface of one brick, in a mesh that has such
  const std::string mesh = meshText(numberedBox({1, 1, 4}, {1, 1, 4})),
                    pressed = "[[pressure]]\ngroup = \"z0\"\nvalue = 1";
  const std::size_t at = mesh.find("$EndElements");
  const auto withFace = [&](const std::string& face) {
    std::string text = mesh.substr(0, at) + "9999 3 2 5 5 " + face + "\n" + mesh.substr(at);
    const std::size_t count = text.find("$Elements\n") + 10, end = text.find('\n', count);
    text.replace(count, end - count, std::to_string(std::stoi(text.substr(count, end - count)) + 1));
    writeFile("box.msh", text);
  };
  withFace("57 67 87 77");
  expect(barCase + pressed,
         ":27:9: a face of group \"z0\" is between bricks 103 and 106, expected faces with a brick on one side");
  withFace("17 67 87 77");
  expect(barCase + pressed,
         ":27:9: group \"z0\" has 1 face that no brick has, expected quadrilaterals on the four corners of a "
         "brick's face");
}

TEST_F(Mistakes, GroupsAndSections) {
  check(R"(
"z0" -> "foot" => :18:9: the mesh has no group "foot", expected one of "x0", "x1", "y0", "y1", "z0", "z1", "lower",
    "upper"
"lower" -> "z0" => :10:9: group "z0" is not one of bricks, expected one of "lower", "upper"
"upper"; material = "rubber" -> "upper"; material = "steel" => :15:12: no material "steel", expected "rubber"
"upper" -> "lower" => :14:9: brick 103 of group "lower" has a section already, by group "lower"
[[section]]; group = "lower"; material = "rubber" -> => : 2 bricks without a section, the first is number 103,
    expected a [[section]] for every brick
[[section]] -> [[material]]; name = "rubber"; density = 1; C10 = 1; D1 = 1; [[section]] => :10:8: a material "rubber"
    is there already, expected another name
[[fix]] -> [[velocity]]; group = "z0"; component = "y"; value = 2; [[fix]] => , mesh box.msh: groups "z0" and "z0"
    prescribe different motion of component y of node 17
-1] -> -1]; group = "foot" => :23:9: the mesh has no group "foot", expected one of "x0", "x1", "y0", "y1", "z0", "z1",
    "lower", "upper"
mesh = -> job = "a.events"; mesh = => :1:7: job is "a.events", expected a name without .events, which events of a job
    have
mesh = -> job = "a\u0000b"; mesh = => :1:7: job is "a b", expected a name without control characters
mesh = -> job = "a/b"; mesh = => :1:7: job is "a/b", expected a name for files, without directories)");
}

// The bar with a warm and a hot half of one material.
constexpr const char* kTwoTemperatures = "material = \"rubber\"\ntemperature = 310\n\n[[section]]\n"
                                         "group = \"upper\"\nmaterial = \"rubber\"\ntemperature = 500.5";
std::string warmBar() {
  const std::string tabulated = replaced(barCase, "C10 = 1e6", "temperatures = [300, 340]\nC10 = [1e6, 2e6]");
  return replaced(tabulated, "material = \"rubber\"\n\n[[section]]\ngroup = \"upper\"\nmaterial = \"rubber\"",
                  kTwoTemperatures);
}

TEST_F(Input, ConstantsThatDependOnTemperature) {
  EXPECT_EQ(answer(warmBar(), exitDone), "");
  const solver::Case definition = solver::readCase("case.toml").definition;
  ASSERT_EQ(definition.materials.size(), 2u);
  EXPECT_EQ(definition.materials[definition.sections[0].material].name, "rubber at 310 K");
  EXPECT_DOUBLE_EQ(definition.materials[definition.sections[0].material].constants[0], 1.25e6);
  EXPECT_DOUBLE_EQ(definition.materials[definition.sections[1].material].constants[0], 2e6); // held beyond the end
  EXPECT_EQ(definition.materials[1].density, 1000);
  EXPECT_EQ(definition.materials[1].constants[5], 1e7); // 1/D1, a single number

  // the run is that with the numbers looked up by hand
  const auto motion = [](const std::string& text) {
    for (const std::string& file : filesIn("."))
      if (file.starts_with("case.")) std::filesystem::remove(file);
    EXPECT_EQ(answer(text, exitDone), "");
    return readFile("case.csv");
  };
  const std::string same = replaced(warmBar(), "temperature = 500.5", "temperature = 310");
  EXPECT_EQ(motion(same), motion(replaced(barCase, "C10 = 1e6", "C10 = 1.25e6")));
  EXPECT_EQ(solver::readCase("case.toml").definition.materials.size(), 1u);
}

TEST_F(Mistakes, Tables) {
  check(R"(
340] -> 290] => :6:16: temperatures does not increase at 290, expected each number to be above the one before
[1e6, 2e6] -> [1e6, 2e6, 3e6] => :7:7: C10 has 3 numbers, expected one number or 2
[1e6, 2e6] -> [1e6, -2e6] => :7:7: C10 + C01 of material "rubber" is -2e+06, expected a positive number in Pa (half
    the shear modulus)
D1 = 1e-7 -> D1 = [1e-7, 0] => :8:13: D1 is 0, expected a positive number in 1/Pa
temperature = 310 -> => :10:1: temperature is missing in section, expected a finite number in K
temperatures = [300, 340]; C10 = [1e6, 2e6] -> C10 = 1e6 => :12:15: material "rubber" does not depend on temperature,
    expected none
temperatures = [300, 340] -> => :7:7: C10 is an array, expected a finite number in Pa)",
        warmBar());
}

TEST_F(Input, MeshFilesThatCannotBeRead) {
  const std::string whole = readFile("box.msh"),
                    notMesh =
                        "is neither a Gmsh mesh file (.msh), which begins with $MeshFormat, nor an Exodus II file",
                    head = "$Nodes\n20\n17 0 ";
  std::filesystem::create_directory("directory.msh");
  EXPECT_EQ(answer(replaced(barCase, "box.msh", "other.msh")),
            "other.msh: cannot be opened: No such file or directory");
  EXPECT_EQ(answer(replaced(barCase, "box.msh", "directory.msh")), "directory.msh: " + notMesh);
  EXPECT_EQ(answerToMesh(""), "box.msh: " + notMesh);
  EXPECT_EQ(answerToMesh("Box(1) = {0, 0, 0, 1, 1, 1};"), "box.msh: " + notMesh);
  EXPECT_EQ(answerToMesh(whole.substr(0, whole.find("$EndNodes") + 10)), "box.msh: the mesh has no 8-node bricks");
  EXPECT_EQ(answerToMesh(replaced(whole, head + "0 0", head + "nan 0")),
            "box.msh: a coordinate of node 17 is not a finite number");
  const std::string text = answerToMesh(replaced(whole, head + "0 0", head + "zero 0"));
  EXPECT_TRUE(text.starts_with("box.msh: Gmsh cannot read this mesh, it is broken or not whole")) << text;
}

// Wherever a file ends too early, it is not taken for a smaller mesh, nor half a number for a number.
TEST_F(Input, MeshFilesThatAreCutOff) {
  for (const std::string& whole :
       {meshText(box({1, 1, 2}, {1, 1, 2})), readFile(SA_EXAMPLES "/twisting_column/column.msh")}) {
    const std::size_t end = whole.find("$EndElements"), step = whole.size() > 10000 ? 97 : 3;
    const std::size_t first = end - std::min<std::size_t>(end, 1000);
    for (std::size_t size = first; size < end; size += end - size < 20 ? 1 : step) {
      const std::string text = answerToMesh(whole.substr(0, size));
      EXPECT_TRUE(text.starts_with("box.msh: ")) << size << " of " << end << " bytes: " << text;
    }
  }
}

// One element of another kind beside nothing else.
TEST_F(Input, OtherElements) {
  const struct {
    int type, nodes;
    const char* name;
  } kinds[] = {{4, 4, "Tetrahedron 4"}, {11, 10, "Tetrahedron 10"}, {7, 5, "Pyramid 5"}, {17, 20, "Hexahedron 20"}};
  for (const auto& kind : kinds) {
    std::ostringstream text;
    text << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n" << kind.nodes << '\n';
    for (int n = 1; n <= kind.nodes; ++n) text << n << ' ' << n % 3 << ' ' << n % 5 << ' ' << n % 7 << '\n';
    text << "$EndNodes\n$Elements\n1\n1 " << kind.type << " 2 1 1";
    for (int n = 1; n <= kind.nodes; ++n) text << ' ' << n;
    text << "\n$EndElements\n";
    EXPECT_EQ(answerToMesh(text.str()), std::string("box.msh: the mesh has 1 element of type \"") + kind.name +
                                            "\"; solids must be 8-node bricks (\"Hexahedron 8\")");
  }
  // faces alone are no solid
  EXPECT_EQ(
      answerToMesh("$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$Nodes\n4\n1 0 0 0\n2 1 0 0\n3 1 1 0\n4 0 1 0\n$EndNodes\n"
                   "$Elements\n1\n1 3 2 1 1 1 2 3 4\n$EndElements\n"),
      "box.msh: the mesh has no 8-node bricks");
}

TEST_F(Input, BricksThatCannotBeUsed) {
  const Mesh sound = numberedBox({1, 1, 4}, {1, 1, 4});
  const auto expectVolume = [](const Mesh& mesh, const std::string& bricks) {
    EXPECT_EQ(answerToMesh(meshText(mesh)), "case.toml, mesh box.msh: bricks with zero or negative volume: " + bricks);
  };
  Mesh inverted = sound; // foot and head of the second brick in exchange
  std::swap_ranges(&inverted.connectivity[8], &inverted.connectivity[12], &inverted.connectivity[12]);
  expectVolume(inverted, "106 (1 in all)");

  Mesh flat = sound; // the topmost layer of nodes falls on the one below
  for (std::size_t i = 16; i < 20; ++i) flat.coordinates[3 * i + 2] = 3;
  expectVolume(flat, "112 (1 in all)");

  Mesh mirrored = numberedBox({1, 1, 20}, {1, 1, 20});
  for (std::size_t i = 0; i < mirrored.nodeNumbers.size(); ++i) mirrored.coordinates[3 * i] *= -1;
  expectVolume(mirrored, "103, 106, 109, 112, 115, 118, 121, 124, ... (20 in all)");

  EXPECT_EQ(answerToMesh(replaced(meshText(sound), "\n106 5 2 7 7", "\n106 5 2 0 9")),
            "box.msh: 1 brick of 4 in no physical volume, the first is number 106");
}

// What stands beside a mesh is not run, what is no file is not waited for, and what Gmsh cannot bear ends as an error.
TEST_F(Input, HostileMeshes) {
  const std::string sound = meshText(numberedBox({1, 1, 4}, {1, 1, 4}));
  writeFile("box.msh.opt", "SystemCall \"touch ran\";\n");
  ASSERT_EQ(mkfifo("pipe.msh", 0600), 0);
  EXPECT_EQ(answer(replaced(barCase, "box.msh", "pipe.msh")),
            "pipe.msh: is no file with a mesh but a pipe or a device");

  const struct {
    std::string mesh, answer;
  } rows[] = {
      {replaced(sound, "$Nodes\n20\n", "$Nodes\n19\n"), "box.msh: $Nodes has 20 lines, its first one announces 19"},
      {replaced(sound, "$Nodes\n20\n", "$Nodes\n99999999999\n"), "box.msh: $Nodes has 20 lines"},
      {replaced(sound, "\n197 ", "\n5000000197 "), "box.msh: $Nodes has the number 5000000197, above 2147483647"},
      {replaced(sound, "106 5 2 7 7", "106 5 999999999 7 7"), "box.msh: "}};
  for (const auto& row : rows) EXPECT_TRUE(answerToMesh(row.mesh).starts_with(row.answer)) << answerToMesh(row.mesh);
  EXPECT_FALSE(std::filesystem::exists("ran")) << "commands beside the mesh";
}

// Groups by name, whatever their order; faces as sets of corners.
using GroupContent = std::tuple<int, std::vector<int32_t>, std::vector<int32_t>, std::set<std::set<int32_t>>>;
std::map<std::string, GroupContent> contents(const Mesh& mesh) {
  std::map<std::string, GroupContent> all;
  for (const solver::Group& group : mesh.groups) {
    std::set<std::set<int32_t>> faces;
    for (std::size_t k = 0; k < group.faces.size(); k += 4) faces.insert({&group.faces[k], &group.faces[k] + 4});
    all[group.name] = {group.dimension, group.nodes, group.elements, faces};
  }
  return all;
}
void expectSame(const Mesh& mesh, const Mesh& wanted, const std::string& what) {
  EXPECT_EQ(mesh.coordinates, wanted.coordinates) << what;
  EXPECT_EQ(mesh.nodeNumbers, wanted.nodeNumbers) << what;
  EXPECT_EQ(mesh.connectivity, wanted.connectivity) << what;
  EXPECT_EQ(mesh.elementNumbers, wanted.elementNumbers) << what;
  EXPECT_TRUE(contents(mesh) == contents(wanted)) << what;
}

// The same mesh with nodes and bricks in another order in memory, and some nodes of no brick.
Mesh shuffled(const Mesh& mesh) {
  Random random(3);
  const auto places = [&](int32_t count) {
    std::vector<int32_t> order(count);
    std::iota(order.begin(), order.end(), 0);
    for (int32_t k = count - 1; k > 0; --k) std::swap(order[k], order[static_cast<int32_t>(random.uniform(0, k))]);
    return order;
  };
  const std::vector<int32_t> nodes = places(mesh.nodes()), bricks = places(mesh.elements());
  Mesh result = mesh;
  for (int32_t n = 0; n < mesh.nodes(); ++n) {
    result.nodeNumbers[nodes[n]] = mesh.nodeNumbers[n];
    std::copy_n(&mesh.coordinates[3 * n], 3, &result.coordinates[3 * nodes[n]]);
  }
  for (int32_t e = 0; e < mesh.elements(); ++e) {
    result.elementNumbers[bricks[e]] = mesh.elementNumbers[e];
    for (int k = 0; k < 8; ++k) result.connectivity[8 * bricks[e] + k] = nodes[mesh.connectivity[8 * e + k]];
  }
  for (solver::Group& group : result.groups) {
    for (std::vector<int32_t>* list : {&group.nodes, &group.faces})
      for (int32_t& node : *list) node = nodes[node];
    for (int32_t& brick : group.elements) brick = bricks[brick];
  }
  for (const int64_t number : {3, 5000, 4}) {
    result.nodeNumbers.push_back(number);
    result.coordinates.insert(result.coordinates.end(), 3, 0.25);
  }
  return result;
}

// A box with its groups: a table of the case, shares of it, a Gmsh file of it, an Exodus file of it and of another order.
TEST_F(Input, InputsOfOneModelAreOneMesh) {
  Mesh wanted = box({3, 2, 5}, {0.3, 0.7, 1.1});
  std::erase_if(wanted.groups, [](const solver::Group& group) { return group.name == "surface"; });
  solver::BoxMesh table;
  table.layers = {{{{3, 0.3, 1, ""}}, {{2, 0.7, 1, ""}}, {{5, 1.1, 1, "all"}}}};
  writeFile("one.msh", meshText(wanted));
  const solver::GmshMesh gmsh("one.msh");
  for (int64_t size = 1; size <= 5; ++size) {
    std::vector<solver::MeshSlice> boxes, shares;
    for (int64_t rank = 0; rank < size; ++rank) {
      boxes.push_back(solver::shareOfBox(table, rank, size));
      shares.push_back(gmsh.share(rank, size));
      for (int64_t n = 0; n < std::ssize(boxes.back().nodeNumbers); ++n)
        EXPECT_EQ(solver::shareOf(boxes.back().firstNode + n, wanted.nodes(), size), rank);
    }
    expectSame(solver::joinedMesh(boxes), wanted, "box of " + std::to_string(size));
    expectSame(solver::joinedMesh(shares), wanted, "Gmsh in " + std::to_string(size));
  }
  EXPECT_TRUE(solver::writeMesh("box", "box", wanted).empty()) << "recognised by content";
  expectSame(solver::readMesh({"box", {}}), wanted, "Exodus");

  Mesh numbered = numberedBox({3, 2, 5}, {0.3, 0.7, 1.1});
  numbered.nodeNumbers.back() = int64_t{1} << 40; // does not fit into 32 bits
  for (solver::Group& group : numbered.groups)    // as the nodes of their bricks
    for (const int32_t brick : group.elements) {
      const std::set<int32_t> corners(&numbered.connectivity[8 * brick], &numbered.connectivity[8 * brick] + 8);
      std::set<int32_t> nodes(group.nodes.begin(), group.nodes.end());
      nodes.insert(corners.begin(), corners.end());
      group.nodes.assign(nodes.begin(), nodes.end());
    }
  solver::Group points{"points", 0, {1, 5, 17}, {}};
  numbered.groups.insert(numbered.groups.begin(), points);
  solver::writeMesh("other.exo", "other", shuffled(numbered));
  expectSame(solver::readMesh({"other.exo", {}}), numbered, "Exodus in another order");
}

// Numbers beyond 32 bits.
TEST_F(Input, ShareOfALargeBox) {
  solver::BoxMesh large;
  large.layers = {{{{2000, 2, 1, ""}}, {{3000, 3, 1, ""}}, {{4000, 4, 1, "all"}}}};
  const solver::MeshSlice slice = solver::shareOfBox(large, 999999, 1000000);
  EXPECT_EQ(slice.elements, 24'000'000'000);
  EXPECT_EQ(slice.nodes, 2001LL * 3001 * 4001);
  EXPECT_EQ(slice.elementNumbers.size(), 24000u);
  EXPECT_EQ(slice.elementNumbers.back(), slice.elements);
  EXPECT_EQ(slice.connectivity.back(), slice.nodes - 2) << "before the last along x";
  EXPECT_EQ(slice.connectivity.end()[-2], slice.nodes - 1);
  EXPECT_EQ(slice.connectivity.end()[-8], slice.nodes - 1 - 2001 * 3001 - 2001 - 1);
  EXPECT_EQ(std::vector<double>(slice.coordinates.end() - 3, slice.coordinates.end()), (std::vector<double>{2, 3, 4}));
}

// Thicknesses in arithmetic progression, two layers of one volume around another.
TEST_F(Input, BoxesWithLayers) {
  solver::BoxMesh layered;
  layered.layers = {{{{2, 3, 2, ""}}, {{1, 1, 1, ""}}, {{1, 0.5, 1, "skin"}, {3, 6, 3, "core"}, {2, 1, 1, "skin"}}}};
  layered.origin = {10, 0, -1};
  const Mesh mesh = solver::joinedMesh({solver::shareOfBox(layered, 0, 2), solver::shareOfBox(layered, 1, 2)});
  const double x[] = {10, 11, 13}, z[] = {-1, -0.5, 0.5, 2.5, 5.5, 6, 6.5};
  for (int32_t n = 0; n < mesh.nodes(); ++n) {
    EXPECT_DOUBLE_EQ(mesh.coordinates[3 * n], x[n % 3]);
    EXPECT_DOUBLE_EQ(mesh.coordinates[3 * n + 2], z[n / 6]);
  }
  EXPECT_EQ(mesh.findGroup("core")->elements, (std::vector<int32_t>{2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(mesh.findGroup("skin")->elements, (std::vector<int32_t>{0, 1, 8, 9, 10, 11}));
  EXPECT_EQ(mesh.findGroup("core")->nodes.size(), 4 * 6u);
  EXPECT_EQ(mesh.findGroup("skin")->nodes.size(), 5 * 6u);
}

TEST_F(Mistakes, Boxes) {
  for (const Row& row : tableOf(R"(
=> :1:8: box is missing in mesh, expected [mesh.box]
cube = 1 => :1:9: unknown key "cube" in mesh, expected one of box
box = 1 => :1:15: box is a number, expected [box]
box = {size = [1, 1, 1]} => :1:15: bricks is missing in box, expected an array of numbers
box = {bricks = [1, 2.5, 1], size = [1, 1, 1]} => :1:29: bricks has 2.5, expected three times a whole number from 1 to
    1000000
box = {bricks = [1, 1, 1], size = [1, 1, 0]} => :1:50: size has 0, expected three times a positive number in m
box = {bricks = [1, 1, 1], size = [1, 1, 1], faces = ["a"]} => :1:62: faces has 1 name, expected six (two across each
    of x, y, z)
box = {bricks = [1, 1, 1], size = [1, 1, 1], volume = "x0"} => :1:15: two groups have the name "x0"
box = {bricks = [1, 1, 9], size = [1, 1, 1], origin = [0, 0, 1e17]} => :1:43: bricks along z are too thin to be told
    apart at their coordinates
box = {bricks = [1, 1, 3], size = [1, 1, 1], layer = [{group = "a", bricks = 2, size = 1}]} => :1:32: bricks has 3
    along z, expected the 2 of the layers
box = {bricks = [1, 1, 3], size = [1, 2, 1], layers_along = "y", layer = [{group = "a", bricks = 1, size = 1}]} =>
    :1:47: size has 2 m along y, expected the 1 m of the layers
box = {bricks = [1, 1, 3], size = [1, 1, 1], layers_along = "y"} => :1:69: layers_along is given without layers)"))
    expect(replaced(barCase, "\"box.msh\"", "{" + row[0] + "}"), row[1]);
}

// Wherever an Exodus file ends too early or a word of it is spoiled, it is an error or another mesh, never the end of the program.
TEST_F(Input, ExodusFilesThatCannotBeRead) {
  const Mesh sound = numberedBox({1, 1, 4}, {1, 1, 4});
  const struct {
    std::function<void(Mesh&)> spoil;
    std::string answer;
    bool isOfBoth = false; // formats
  } rows[] = {
      {[](Mesh& m) { m.nodeNumbers[3] = 27; }, "two nodes have the number 27"},
      {[](Mesh& m) { m.elementNumbers[3] = 103; }, "two bricks have the number 103"},
      {[](Mesh& m) { m.coordinates[5] = NAN; }, "a coordinate of node 27 is not a finite number"},
      {[](Mesh& m) { std::copy_n(&m.connectivity[0], 8, &m.connectivity[8]); },
       "bricks 103 and 106 have the same nodes", true},
      // a corner pushed through the opposite edge of its face, and one on its neighbour
      {[](Mesh& m) { m.coordinates[48] = m.coordinates[49] = .7; }, "brick 112 is turned over at its node 177", true},
      {[](Mesh& m) { m.connectivity[17] = m.connectivity[16]; }, "brick 109 has the same node at two corners", true}};
  for (const auto& row : rows) {
    Mesh mesh = sound;
    row.spoil(mesh);
    solver::writeMesh("box.msh", "box", mesh);
    EXPECT_EQ(answer(barCase), "box.msh: " + row.answer);
    const std::string other = row.isOfBoth ? answerToMesh(meshText(mesh)) : "box.msh: " + row.answer;
    EXPECT_TRUE(other.starts_with("box.msh: " + row.answer.substr(0, 30))) << other; // another corner may be named
  }

  // in both formats of the library
  for (const int64_t number : {int64_t{177}, int64_t{1} << 40}) {
    Mesh mesh = sound;
    mesh.nodeNumbers[16] = number;
    solver::writeMesh("sound.exo", "box", mesh);
    const std::string whole = readFile("sound.exo");
    for (std::size_t size = whole.size() - 8; size > 4; size -= std::min(size, whole.size() / 12)) {
      const std::string text = answerToMesh(whole.substr(0, size));
      EXPECT_TRUE(text.starts_with("box.msh: ")) << size << ": " << text;
    }
    for (std::size_t at = 4; at + 8 < whole.size(); at += whole.size() / 25) {
      std::string spoiled = whole;
      spoiled.replace(at, 8, "\xff\xff\xff\xff\x7f\xff\xff\xff");
      writeFile("box.msh", spoiled);
      const std::string said = thrown<solver::InputError>([] { solver::readMesh({"box.msh", {}}); });
      EXPECT_TRUE(said.starts_with("box.msh: ") || said == "nothing") << at << ": " << said;
    }
  }
}

TEST_F(Input, BricksThatNoBlockCanHave) {
  const auto expectRefusal = [](const Mesh& mesh, const std::string& wanted) {
    EXPECT_EQ(thrown<solver::InputError>([&] { solver::writeMesh("out.exo", "box", mesh); }),
              "box: brick " + wanted + "; an Exodus file has every brick in one element block");
  };
  Mesh mesh = numberedBox({1, 1, 4}, {1, 1, 4});
  mesh.groups.back().elements.insert(mesh.groups.back().elements.begin(), 1);
  expectRefusal(mesh, "106 is in volumes \"lower\" and \"upper\"");
  mesh.groups.back().elements = {3};
  expectRefusal(mesh, "109 is in no volume");
}

} // namespace
