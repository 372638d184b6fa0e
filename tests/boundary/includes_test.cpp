// The folders of the sources as floors of a house: includes lead downwards.
#include "tests/support/test.h"

#include <regex>

namespace {

namespace fs = std::filesystem;

// From the ground up.  A file may include what stands in its own folder or in one before it; a folder that is not named is
// an error, so that a new one finds its floor.
const std::vector<std::string> kFloors = {
    "host/include", "include/glo", "include/acd", "include/spx", "include",
    // the library
    "glo/kernel", "glo/frame", "glo/tensors", "glo/vectors", "glo/movement", "glo/output", "acd", "spx/impl/elements",
    "spx/impl/materials", "spx/impl/user", "spx/impl/tables", "spx/impl/output", "spx/impl",
    // what stands beside it
    "checked", "checked/replay", "host/tables", "host/reference", "host/mpi", "host/diagnostics", "solver/model",
    "solver/parallel", "solver/input", "solver/analysis", "solver/results", "solver/program"};

// What the targets of each top folder may see beside themselves.
bool maySee(const std::string& from, const std::string& to) {
  const auto top = [](const std::string& folder) { return folder.substr(0, folder.find('/')); };
  if (top(from) == top(to) || top(to) == "include" || to == "host/include") return true;
  if (top(from) == "spx") return top(to) == "glo" || top(to) == "acd";
  if (top(from) == "acd") return top(to) == "glo";
  return top(from) == "solver" && (top(to) == "host" || to == "checked");
}

std::size_t floorOf(const std::string& folder) {
  return static_cast<std::size_t>(std::find(kFloors.begin(), kFloors.end(), folder) - kFloors.begin());
}

TEST(Includes, LeadDownwards) {
  static const std::regex kInclude("#include \"([^\"]+)\"");
  const fs::path root = SA_SOURCE_DIR;
  int arrows = 0;
  for (const char* top : {"include", "glo", "acd", "spx", "checked", "host", "solver"})
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root / top)) {
      const fs::path file = entry.path();
      if (file.extension() != ".h" && file.extension() != ".cpp") continue;
      const std::string from = fs::relative(file.parent_path(), root).string();
      ASSERT_LT(floorOf(from), kFloors.size()) << from << " has no floor";
      std::ifstream stream(file);
      std::smatch match;
      for (std::string line; std::getline(stream, line);) {
        if (!std::regex_match(line, match, kInclude)) continue;
        std::string to; // the folder of the first file that the build's folders give
        for (const fs::path& base : {file.parent_path(), root, root / "include", root / "host/include",
                                     root / "host/reference", root / "host/tables"})
          if (to.empty() && fs::exists(base / match[1].str()))
            to = fs::relative((base / match[1].str()).parent_path(), root).string();
        ++arrows;
        EXPECT_TRUE(!to.empty() && maySee(from, to) && floorOf(to) <= floorOf(from))
            << fs::relative(file, root).string() << " includes " << match[1] << " of " << to;
      }
    }
  EXPECT_GT(arrows, 300);
}

} // namespace
