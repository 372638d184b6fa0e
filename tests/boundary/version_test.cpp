// What is written by hand for packages agrees with the build.
#include "tests/support/files.h"

#include <regex>

namespace {

std::string textOf(const std::string& file) { return sharedanalysis::test::readFile(SA_SOURCE_DIR "/" + file); }

TEST(Version, IsTheSameEverywhere) {
  const std::regex kNumber(R"(\d+\.\d+\.\d+)");
  const struct {
    const char *file, *before;
  } places[] = {{"CMakeLists.txt", "project(SharedAnalysis VERSION "},
                {"CHANGELOG.md", "# Changes\n\n## "}, // the first heading
                {"python/pyproject.toml", "\nversion = \""},
                {"python/sharedanalysis/__init__.py", "__version__ = \""},
                {"packaging/spack/packages/sharedanalysis/package.py", "version(\""},
                {"packaging/conda/meta.yaml", "set version = \""}};
  const std::string first = textOf(places[0].file);
  std::smatch version;
  ASSERT_TRUE(std::regex_search(first, version, kNumber)); // of the minimum CMake there are two parts
  for (const auto& [file, before] : places) {
    const std::string text = textOf(file);
    const std::size_t at = text.find(before);
    EXPECT_TRUE(at != std::string::npos && text.substr(at + std::string(before).size()).starts_with(version.str()))
        << file;
  }
}

TEST(Recipes, KnowTheOptionsOfTheBuild) {
  const std::string options = textOf("CMakeLists.txt");
  const std::regex kOption("SA_[A-Z]+(_[A-Z]+)*");
  for (const char* file : {"packaging/spack/packages/sharedanalysis/package.py", "packaging/conda/build.sh"}) {
    const std::string text = textOf(file);
    EXPECT_TRUE(std::regex_search(text, kOption)) << file;
    for (std::sregex_iterator found(text.begin(), text.end(), kOption), end; found != end; ++found)
      EXPECT_NE(options.find("option(" + found->str() + " "), std::string::npos) << file << ": " << found->str();
  }
}

} // namespace
