// The built library seen from outside: what it needs, what it is called, what the interface tool finds wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "library_file.h"

namespace {

using namespace sa::test;

std::string joined(const Output& output) {
  std::string text;
  for (const std::string& line : output.lines) text += line + "\n";
  return text;
}

// Names of undefined dynamic symbols without their versions.
std::vector<std::string> undefinedSymbols(const std::string& library) {
  const Output output = run("nm -D --undefined-only '" + library + "'");
  std::vector<std::string> names;
  for (const std::string& line : output.lines) {
    const std::string name = line.substr(line.find_last_of(' ') + 1);
    names.push_back(name.substr(0, name.find('@')));
  }
  if (output.status != 0) names.clear();
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
  const Output output = run(std::string("readelf -d '") + SA_LIBRARY_FILE + "'");
  ASSERT_EQ(output.status, 0);
  const std::string text = joined(output);
  EXPECT_NE(text.find("soname: [libSharedAnalysis.so.1]"), std::string::npos) << text;
  // Host services stay open to symbols that come earlier in the process.
  EXPECT_EQ(text.find("(SYMBOLIC)"), std::string::npos) << text;
  EXPECT_EQ(text.find("TEXTREL"), std::string::npos) << text;
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
    const Output output = run("readelf -d '" + file + "'");
    ASSERT_EQ(output.status, 0) << file;
    for (const std::string& line : output.lines) {
      if (line.find("(RUNPATH)") == std::string::npos && line.find("(RPATH)") == std::string::npos) continue;
      const std::size_t open = line.find('[') + 1;
      EXPECT_TRUE(movingEntries(line.substr(open, line.rfind(']') - open)).empty()) << file << line;
      ++looked;
    }
  }
  // at least the library and this program have one
  EXPECT_GE(looked, 2u);
}

TEST(InterfaceTool, FindsEverySlipOfAHeader) {
  const Output output = run(std::string(SA_INTERFACE_TOOL) + " check " SA_BOUNDARY_DIR "/slips.h");
  EXPECT_EQ(output.status, 1);
  const std::string text = joined(output);
  for (const char* finding :
       {"SLIP_MISSING: no line for argument y", "SLIP_EXTRA has no argument z", "argument x: [in] without const",
        "argument y: [out] with const", "argument n: passed by value, yet [out]",
        "the shape uses m+1, which is no other argument", "SLIP_CIRCLE_A: no line for argument x",
        "SLIP_FAR: no line for argument n", "is like the unknown SLIP_NOBODY", "unknown command @parma",
        "argument line: no (shape)", "argument line: the direction is none of", "a second line for x",
        "unit \"entity of H\" names no argument", "unit \"block\" belongs to an int32_t",
        "contents: \"Wrong count\" has 1 routines, not 2", "contents: \"Wrong title\", section: \"Other title\"",
        "SLIP_NO_COMMENT has no comment"})
    EXPECT_NE(text.find(finding), std::string::npos) << finding << "\n" << text;
  // Each finding names its place.
  for (const std::string& line : output.lines) EXPECT_NE(line.find("slips.h:"), std::string::npos) << line;
}

TEST(InterfaceTool, FindsMissingAndExtraSymbols) {
  const std::string header = ::testing::TempDir() + "missing.h", headers = " " + header;
  std::ofstream(header) << "void GLO_UTI_NOT_THERE(void);\n";
  const std::string text = joined(run(std::string(SA_INTERFACE_TOOL) + " symbols " SA_LIBRARY_FILE + headers));
  EXPECT_NE(text.find("GLO_UTI_NOT_THERE is not exported"), std::string::npos) << text;
  EXPECT_NE(text.find("GLO_UTI_VADDR is exported without declaration"), std::string::npos) << text;
  EXPECT_EQ(run(std::string(SA_INTERFACE_TOOL) + " symbols /nowhere.so" + headers).status, 2);
}

TEST(InterfaceTool, FindsDroppedSymbols) {
  const std::string list = ::testing::TempDir() + "symbols.txt";
  std::ofstream(list) << "GLO_UTI_VADDR@SHAREDANALYSIS_1\nGLO_UTI_VADDR@SHAREDANALYSIS_2\nDROPPED@SHAREDANALYSIS_1\n";
  const Output output = run(std::string(SA_INTERFACE_TOOL) + " keeps " SA_LIBRARY_FILE " " + list);
  EXPECT_EQ(output.status, 1);
  ASSERT_EQ(output.lines.size(), 2u) << joined(output);
  EXPECT_NE(output.lines[0].find(":2: GLO_UTI_VADDR@SHAREDANALYSIS_2 now has version"), std::string::npos);
  EXPECT_NE(output.lines[1].find(":3: DROPPED is no longer exported"), std::string::npos);
}

} // namespace
