// The built library seen from outside: what it needs, what it is called, what the interface tool finds wrong.
#include "tests/support/files.h"
#include "tests/support/program.h"

#include <regex>

namespace {

using namespace sharedanalysis::test;

// Names of undefined dynamic symbols without their versions.
std::vector<std::string> undefinedSymbols(const std::string& library) {
  std::vector<std::string> names;
  for (const std::string& line : linesOf(shell("nm -D --undefined-only '" + library + "'").out)) {
    const std::string name = line.substr(line.find_last_of(' ') + 1);
    names.push_back(name.substr(0, name.find('@')));
  }
  return names;
}

// Functions that end the process, write to its streams, or bring another library's rounding.
bool isForbidden(const std::string& name) {
  static const std::regex kEnds("_?exit|_Exit|quick_exit|at_quick_exit|abort|raise|kill|__assert_fail|_ZSt9terminatev");
  static const std::regex kWrites(
      "(_IO_|__)?[a-z]*printf(_chk)?|f?puts|f?putc|putchar|_IO_putc|fwrite|write|perror|f(re)?open(64)?|"
      "_ZSt4cout|_ZSt4cerr|_ZSt4clog|_ZNSo.*|_ZNSt8ios_base4Init.*|_ZSt16__ostream_insert.*");
  static const std::regex kMath(
      "_ZGV.*|(__)?(acos|asin|atan|atan2|cos|sin|tan|sincos|acosh|asinh|atanh|cosh|sinh|tanh|exp|exp2|"
      "exp10|expm1|log|log2|log10|log1p|pow|sqrt|cbrt|hypot|fmod|remainder|remquo|modf|fma|erf|erfc|"
      "tgamma|lgamma|floor|ceil|trunc|round|lround|llround|rint|lrint|nearbyint|ldexp|frexp|scalbn|"
      "logb|ilogb|nextafter|fmin|fmax|fdim)(f|l)?(_finite)?");
  return std::regex_match(name, kEnds) || std::regex_match(name, kWrites) || std::regex_match(name, kMath);
}

TEST(Boundary, NeedsNothingThatEndsPrintsOrRounds) {
  // The patterns know the faults ...
  for (const char* name : {"exit", "_exit", "abort", "printf", "vsnprintf", "__fprintf_chk", "puts", "fwrite",
                           "_ZSt4cout", "exp", "expf", "fmod", "powl", "sincos", "__exp_finite", "_ZGVdN4v_cos"})
    EXPECT_TRUE(isForbidden(name)) << name;
  // ... and leave other names alone.
  for (const char* name : {"fflush", "memcpy", "DMPC_GETRANK", "malloc", "strlen"})
    EXPECT_FALSE(isForbidden(name)) << name;
  const std::vector<std::string> names = undefinedSymbols(SA_LIBRARY_FILE);
  // Host services are always undefined: a list without them is no list.
  ASSERT_TRUE(std::find(names.begin(), names.end(), "DMPC_GETRANK") != names.end());
  for (const std::string& name : names) EXPECT_FALSE(isForbidden(name)) << name;
}

TEST(Boundary, CarriesItsVersionInTheName) {
  const std::string text = shell("readelf -d '" SA_LIBRARY_FILE "'").out;
  EXPECT_TRUE(contains(text, "soname: [libSharedAnalysis.so.1]")) << text;
  // Host services stay open to symbols that come earlier in the process.
  EXPECT_FALSE(contains(text, "(SYMBOLIC)") || contains(text, "TEXTREL")) << text;
}

// Where the loader would look in the working directory, or anywhere that moves with it.
std::vector<std::string> movingEntries(const std::string& runPath) {
  std::vector<std::string> moving;
  std::istringstream entries(runPath + ":"); // getline drops one empty entry at the end
  for (std::string entry; std::getline(entries, entry, ':');)
    if (!entry.starts_with('/') && entry != "$ORIGIN" && !entry.starts_with("$ORIGIN/")) moving.push_back(entry);
  return moving;
}

TEST(Boundary, LoadsNothingFromTheWorkingDirectory) {
  for (const char* path : {"", ":/usr/lib", "/usr/lib:", "/usr/lib::/lib", ".", "lib", "../lib", "$ORIGINAL"})
    EXPECT_EQ(movingEntries(path).size(), 1u) << path;
  EXPECT_TRUE(movingEntries("/usr/lib:$ORIGIN:$ORIGIN/../lib").empty());

  std::ifstream list(SA_BUILT_FILES);
  std::size_t looked = 0;
  for (std::string file; std::getline(list, file);) {
    if (!std::filesystem::exists(file)) continue; // benchmarks, for instance, are built on request
    const Outcome outcome = shell("readelf -d '" + file + "'");
    ASSERT_EQ(outcome.code, 0) << file;
    for (const std::string& line : linesOf(outcome.out)) {
      if (!contains(line, "(RUNPATH)") && !contains(line, "(RPATH)")) continue;
      const std::size_t open = line.find('[') + 1;
      EXPECT_TRUE(movingEntries(line.substr(open, line.rfind(']') - open)).empty()) << file << line;
      ++looked;
    }
  }
  // at least the library and this program have one
  EXPECT_GE(looked, 2u);
}

// Declarations with one slip each, and what is found of it.
struct Slip {
  const char *name, *arguments;
  std::vector<std::string> lines;
  std::vector<const char*> findings;
};
const std::string kX = "@param[in] x  (1), -: first", kBlock = "@param[in] n  (1), block: first";
// clang-format off
const Slip kSlips[] = {
    {"SLIP_MISSING", "const int32_t* x, double* y", {kX}, {"SLIP_MISSING: no line for argument y"}},
    {"SLIP_EXTRA", "const int32_t* x", {kX, "@param[in] z  (1), -: no argument"}, {"SLIP_EXTRA has no argument z"}},
    {"SLIP_INPUT", "int32_t* x", {kX}, {"argument x: [in] without const"}},
    {"SLIP_OUTPUT", "const int32_t* y", {"@param[out] y  (1), -: first"}, {"argument y: [out] with const"}},
    {"SLIP_VALUE", "int64_t n", {"@param[out] n  (1), -: first"}, {"argument n: passed by value, yet [out]"}},
    {"SLIP_SHAPE", "const double* x", {"@param[in] x  (m+1), -: first"}, {"the shape uses m+1, which is no other "
     "argument"}},
    {"SLIP_CIRCLE_A", "const double* x", {"@like SLIP_CIRCLE_B"}, {"SLIP_CIRCLE_A: no line for argument x"}},
    {"SLIP_CIRCLE_B", "const double* x", {"@like SLIP_CIRCLE_A"}, {}},
    {"SLIP_LIKE", "void", {"@like SLIP_NOBODY"}, {"is like the unknown SLIP_NOBODY"}},
    // a line that is three hops away, and one that is two
    {"SLIP_FAR", "const int32_t* n, const double* y", {"@like SLIP_NEAR"}, {"SLIP_FAR: no line for argument n"}},
    {"SLIP_NEAR", "const int32_t* n", {"@like SLIP_BOTH"}, {}},
    {"SLIP_BOTH", "const int32_t* n, const double* y", {"@like SLIP_FIRST", "@param[in] y  (1), -: second"}, {}},
    {"SLIP_FIRST", "const int32_t* n", {kBlock}, {}},
    {"SLIP_GRAMMAR", "void", {"@parma[in] x  (1), -: first", "@param[in] x  -: first", "@param[into] x  (1), -: first"},
     {"unknown command @parma", "argument line: no (shape)", "argument line: the direction is none of"}},
    {"SLIP_TWICE", "const double* x", {kX, kX}, {"a second line for x"}},
    {"SLIP_ENTITY", "const int32_t* map", {"@param[in] map  (*), entity of H: first"},
     {"unit \"entity of H\" names no argument"}},
    {"SLIP_BLOCK", "const double* n", {kBlock}, {"unit \"block\" belongs to an int32_t"}}};
// clang-format on

// A header of them, and its name.
std::string slips() {
  const std::string rule = "/* " + std::string(117, '-') + "\n * ", end = "\n * " + std::string(114, '-') + " */\n\n",
                    file = ::testing::TempDir() + "slips.h";
  std::ofstream header(file);
  header << "/** @file slips.h\n *  A header with slips.\n *\n *  CONTENTS\n"
            " *    Lines                              SLIP_...                                              17\n"
            " *    Wrong count                        SLIP_...                                               2\n"
            " *    Wrong title                        SLIP_...                                               1\n"
            " */\n#include <stdint.h>\n\n"
         << rule << "Lines" << end;
  for (const Slip& slip : kSlips) {
    header << "/** A routine.\n";
    for (const std::string& line : slip.lines) header << " *  " << line << '\n';
    header << " */\nvoid " << slip.name << '(' << slip.arguments << ");\n\n";
  }
  header << rule << "Wrong count" << end << "/** The only one. */\nvoid SLIP_COUNT(void);\n\n"
         << rule << "Other title" << end << "void SLIP_NO_COMMENT(void);\n";
  return file;
}

TEST(InterfaceTool, FindsEverySlipOfAHeader) {
  const Outcome outcome = shell(SA_INTERFACE_TOOL " check " + slips() + " 2>&1");
  EXPECT_EQ(outcome.code, 1);
  std::vector<const char*> findings = {"contents: \"Wrong count\" has 1 routines, not 2",
                                       "contents: \"Wrong title\", section: \"Other title\"",
                                       "SLIP_NO_COMMENT has no comment"};
  for (const Slip& slip : kSlips) findings.insert(findings.end(), slip.findings.begin(), slip.findings.end());
  for (const char* finding : findings) EXPECT_TRUE(contains(outcome.out, finding)) << finding << "\n" << outcome.out;
  // Each finding names its place.
  for (const std::string& line : linesOf(outcome.out)) EXPECT_TRUE(contains(line, "slips.h:")) << line;
}

TEST(InterfaceTool, FindsMissingAndExtraSymbols) {
  const std::string headers = " " + slips() + " 2>&1",
                    text = shell(SA_INTERFACE_TOOL " symbols " SA_LIBRARY_FILE + headers).out;
  EXPECT_TRUE(contains(text, "SLIP_COUNT is not exported")) << text;
  EXPECT_TRUE(contains(text, "GLO_UTI_VADDR is exported without declaration")) << text;
  EXPECT_EQ(shell(SA_INTERFACE_TOOL " symbols /nowhere.so" + headers).code, 2);
}

TEST(InterfaceTool, FindsDroppedSymbols) {
  const std::string list = ::testing::TempDir() + "symbols.txt";
  std::ofstream(list) << "GLO_UTI_VADDR@SHAREDANALYSIS_1\nGLO_UTI_VADDR@SHAREDANALYSIS_2\nDROPPED@SHAREDANALYSIS_1\n";
  const Outcome outcome = shell(SA_INTERFACE_TOOL " keeps " SA_LIBRARY_FILE " " + list + " 2>&1");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(linesOf(outcome.out).size(), 2u) << outcome.out;
  EXPECT_TRUE(contains(outcome.out, ":2: GLO_UTI_VADDR@SHAREDANALYSIS_2 now has version")) << outcome.out;
  EXPECT_TRUE(contains(outcome.out, ":3: DROPPED is no longer exported")) << outcome.out;
}

} // namespace
