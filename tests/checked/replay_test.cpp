// Recordings of the explicit program and of all kernels, made again, compared, reduced, spoiled.
#include "checked/record.h"
#include "tests/support/files.h"
#include "tests/support/program.h"

namespace sa::test {
namespace {

using namespace sharedanalysis::test;

// Runs a program with the checking library before all others.
Outcome recorded(const std::vector<std::string>& words, const std::string& record, const char* check = "off") {
  const char* const chosen = std::getenv("SHAREDANALYSIS_CHECKED_LIBRARY"); // of the other tests
  const std::string behind = chosen != nullptr ? chosen : "";
  unsetenv("SHAREDANALYSIS_CHECKED_LIBRARY");
  setenv("SHAREDANALYSIS_RECORD", record.c_str(), 1);
  setenv("SHAREDANALYSIS_CHECK", check, 1);
  setenv("LD_PRELOAD", SA_CHECKED_LIBRARY, 1);
  const Outcome outcome = Program(words).wait();
  for (const char* name : {"SHAREDANALYSIS_RECORD", "SHAREDANALYSIS_CHECK", "LD_PRELOAD"}) unsetenv(name);
  if (!behind.empty()) setenv("SHAREDANALYSIS_CHECKED_LIBRARY", behind.c_str(), 1);
  return outcome;
}
Outcome run(const std::vector<std::string>& words) { return Program(words).wait(); }
Outcome replayed(std::vector<std::string> words) {
  words.insert(words.begin(), SA_REPLAY_PROGRAM);
  return Program(words).wait();
}
void expectIn(const Outcome& outcome, int code, const std::string& text) {
  EXPECT_EQ(outcome.code, code) << outcome.out << outcome.err;
  EXPECT_TRUE(contains(outcome.out + outcome.err, text)) << outcome.out << outcome.err;
}

// Every kernel with ordinary arguments, two calls each.
const std::string& allKernels() {
  static const struct File {
    std::string name;
    ~File() { std::remove(name.c_str()); }
  } file = {[] {
    const std::string name = "/tmp/sharedanalysis_all_kernels_" + std::to_string(getpid()) + ".rec";
    recorded({SA_GENERIC_PROGRAM, SA_CHECKED_LIBRARY, "writes"}, name + ",call=1-2");
    return name;
  }()};
  return file.name;
}

TEST(Replay, EveryKernelGivesTheRecordedBits) {
  expectIn(replayed({allKernels()}), 0, ", 0 differ");
  expectIn(replayed({allKernels(), "--compare", allKernels()}), 0, "are the same");
  expectIn(replayed({allKernels(), "--time", "2"}), 0, "ns a point");
}

TEST(Replay, NamesTheFirstDifferenceAndReducesIt) {
  const WorkingDirectory here;
  const Outcome outcome = replayed(
      {allKernels(), "--library", SA_FAULTY_LIBRARY, "--reduce", "one.rec", "--cpp", "one.cpp", "--python", "one.py"});
  expectIn(outcome, 1, "GLO_UTI_VMULTR, call ");
  EXPECT_TRUE(contains(outcome.out, "  result(1)\n    recorded ")) << outcome.out;
  EXPECT_TRUE(contains(outcome.out, "reduced to point 1")) << outcome.out;
  expectIn(replayed({"one.rec"}), 0, "1 call of 1 routine, 0 differ");
  expectIn(replayed({"one.rec", "--library", SA_FAULTY_LIBRARY}), 1, "result(1)");
  expectIn(run({"/usr/bin/python3", "one.py", SA_HOST_LIBRARY, SA_LIBRARY_FILE}), 0,
           "the results are the recorded ones");
  expectIn(run({"/usr/bin/python3", "one.py", SA_HOST_LIBRARY, SA_FAULTY_LIBRARY}), 1, "result, value 1: recorded");
  EXPECT_TRUE(contains(readFile("one.cpp"), "GLO_UTI_VMULTR(n.data(), result.data(), a.data(), b.data());"));
}

TEST(Replay, FilterChoosesCallsAndResultsStay) {
  const WorkingDirectory here;
  const std::string crush = SA_EXAMPLES "/crushed_column/crush.toml";
  run({SA_SOLVER_PROGRAM, crush, "-q", "--digest", "-o", "plain"});
  recorded({SA_SOLVER_PROGRAM, crush, "-q", "--digest", "-o", "watched"}, "calls.rec,increment=3-4,routine=SPX_*",
           "cheap,log=log");
  expectIn(run({SA_COMPARE_PROGRAM, "plain", "watched"}), 0, "the same");
  EXPECT_EQ(readFile("log"), "");
  expectIn(replayed({"calls.rec"}), 0, ", 0 differ");
  EXPECT_EQ(replayed({"calls.rec", "--list=no"}).code, 2);
  const std::string list = replayed({"calls.rec", "--list"}).out;
  EXPECT_TRUE(contains(list, "SPX_MAT_HYPERPOLY3DEXP increment 3 ")) << list;
  EXPECT_FALSE(contains(list, "GLO_") || contains(list, "increment 5"));
  // a file that ends anywhere loses its last call alone
  const std::string whole = readFile("calls.rec");
  writeFile("cut.rec", whole.substr(0, whole.size() - 7));
  expectIn(replayed({"cut.rec"}), 0, "unfinished");
  writeFile("other.rec", "no recording at all");
  expectIn(replayed({"other.rec"}), 2, "is no recording");
  // nothing else is written over
  expectIn(run({SA_SOLVER_PROGRAM, crush, "-q", "--record", "other.rec"}), 1, "is no recording, and is not replaced");
  recorded({SA_SOLVER_PROGRAM, crush, "-q"}, "other.rec");
  EXPECT_EQ(readFile("other.rec"), "no recording at all");
  expectIn(replayed({"calls.rec", "--cpp", "calls.rec"}), 2, "is what is read");
  expectIn(replayed({"calls.rec", "--call", "999999999"}), 2, "has no call 999999999");
  expectIn(replayed({"calls.rec", "--call", "-1"}), 2, "error: --call: Value -1 not in range 1 to");
  expectIn(replayed({"/dev/zero"}), 2, "is no file");
}

TEST(Replay, ExplicitProgramOffersBoth) {
  const WorkingDirectory here;
  const std::string crush = SA_EXAMPLES "/crushed_column/crush.toml";
  const Outcome outcome =
      run({SA_SOLVER_PROGRAM, crush, "-q", "-o", "out", "--checked=cheap,log=log", "--record", "calls.rec,call=1-2"});
  EXPECT_EQ(outcome.code, run({SA_SOLVER_PROGRAM, crush, "-q", "-o", "out"}).code) << outcome.err;
  EXPECT_TRUE(std::filesystem::exists("log"));
  EXPECT_EQ(readFile("log"), "");
  expectIn(replayed({"calls.rec"}), 0, ", 0 differ");
}

// Bytes of calls are replaced, and the sums over them set right, so that the spoiled calls are made.
TEST(Replay, SpoiledRecordingsDoNotEndTheProgram) {
  const WorkingDirectory here;
  const std::string all = readFile(allKernels());
  std::mt19937 random(7);
  std::string spoiled = checked::fileHead();
  for (std::size_t at = checked::kFileHead; at + checked::kRecordHead < all.size();) {
    std::uint32_t length = 0;
    std::memcpy(&length, &all[at + 4], 4);
    std::string body = all.substr(at + checked::kRecordHead, length);
    at += checked::kRecordHead + length;
    for (unsigned n = random() % 4; n > 0; --n)
      body[random() % (random() % 2 == 0 ? body.size() : std::min<std::size_t>(body.size(), 120))] =
          static_cast<char>(random());
    if (random() % 16 == 0) body.resize(random() % body.size());
    const std::uint64_t sum = checked::checksum(body);
    const auto size = static_cast<std::uint32_t>(body.size());
    spoiled.append(reinterpret_cast<const char*>(&checked::kMark), 4).append(reinterpret_cast<const char*>(&size), 4);
    spoiled.append(reinterpret_cast<const char*>(&sum), 8).append(body);
  }
  writeFile("spoiled.rec", spoiled);
  expectIn(replayed({"spoiled.rec"}), 1, "cannot be made");
  expectIn(replayed({"spoiled.rec", "--compare", allKernels()}), 1, "are the same");
}

} // namespace
} // namespace sa::test
