// Runs one check on every kernel of the headers.
//
//   generic_tests LIB writes|lists|empty|pieces|far|threads|reach|hard [--needs LEVEL]
//   generic_tests LIB hashes FILE [--write] [--needs LEVEL]
//   generic_tests LIB cases FILE        writes calls of all kernels, inputs and results
//   generic_tests LIB torture [--inputs N] [--hours H] [--seed S] [--from PASS] [--shard K/M] [--only KERNEL] [--case C]
//
// With --needs and a processor below the level the program says so and ends with code 77.  Torture runs passes of hard cases
// over all kernels until it has driven N points or H hours have gone by; of M programs side by side each takes every M-th pass.
#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "checks.h"

namespace {

using namespace sa::test;

// ---- the library

const char* volatile watched = "";

void onAlarm(int) {
  const char text[] = " does not return\n";
  if (write(STDERR_FILENO, watched, std::strlen(watched)) < 0 || write(STDERR_FILENO, text, sizeof text - 1) < 0)
    _exit(4);
  _exit(3);
}

// NAME of NAMEINDX, NAMEELSET and the like.
void setWholeForm(Kernel& kernel, const std::vector<Kernel>& kernels) {
  static constexpr std::string_view kForms[][2] = {
      {"INDX", ""}, {"FLDELSET", "ORFLD"}, {"ELSET", ""}, {"EMULT", "MULT"}, {"ELS", ""}};
  for (const auto& [ending, replacement] : kForms) {
    std::string wanted = kernel.info->name;
    const std::size_t at = wanted.rfind(ending);
    if (at == std::string::npos) continue;
    wanted.replace(at, ending.size(), replacement);
    for (const Kernel& other : kernels)
      if (other.info->name == wanted) kernel.wholeInfo = other.info, kernel.wholeAddress = other.address;
  }
}

// The kernels of the registry in the library; throws when it cannot be opened or misses one.
std::vector<Kernel> openKernels(const std::string& library) {
  // Host services are bound when they are called, and kernels call none.
  void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error(dlerror());
  std::vector<Kernel> kernels;
  std::string missing;
  for (const RoutineInfo* info : kernelsOfRegistry()) {
    void* address = dlsym(handle, info->name);
    if (address == nullptr) missing += std::string(" ") + info->name;
    kernels.push_back({info, address, info, address});
  }
  if (!missing.empty()) throw std::runtime_error("the library misses" + missing);
  for (Kernel& kernel : kernels) setWholeForm(kernel, kernels);
  return kernels;
}

// Ends the program with a message when a kernel does not return within a minute.
void watch(const Kernel& kernel) {
  watched = kernel.info->name;
  signal(SIGALRM, onAlarm);
  alarm(60);
}

// Calls of one kernel for programs in other languages that make the same.  Of each: length and letters of the name, count of
// arguments, bits of the returned value, then of each argument 1 or 0 for written or not, the bytes of its data, the data before
// the call and, if written, after it.  Integers have 64 bits.
Findings writeCases(GuardedMemory& memory, const Kernel& kernel, std::ostream& stream) {
  constexpr int kPoints = 9, kMostVariants = 6;
  Findings findings;
  const auto number = [&](std::uint64_t value) { stream.write(reinterpret_cast<const char*>(&value), sizeof value); };
  const auto bytes = [&](const std::vector<unsigned char>& data) {
    stream.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
  };
  const int variants = std::min(variantCount(*kernel.info), kMostVariants);
  for (int variant = 0; variant < variants; ++variant) {
    const KernelCase before = makeCase(*kernel.info, kPoints, variant);
    KernelCase after = before;
    memory.call(kernel.address, after, [&](const std::string& text) { findings.insert(text); });
    const std::string_view name = kernel.info->name;
    number(name.size());
    stream << name;
    number(before.arrays.size());
    number(after.result);
    for (std::size_t k = 0; k < before.arrays.size(); ++k) {
      const bool isWritten = before.arrays[k].info->isWritten();
      number(isWritten ? 1 : 0);
      number(before.arrays[k].bytes.size());
      bytes(before.arrays[k].bytes);
      if (isWritten) bytes(after.arrays[k].bytes);
    }
  }
  return findings;
}

// ---- the program

constexpr std::size_t kFewestKernels = 30;
constexpr int kSkipped = 77;

struct Options {
  std::vector<std::string> words; // LIB CHECK and perhaps FILE
  std::map<std::string, std::string> named = {{"--needs", ""}, {"--only", ""},  {"--inputs", "1e6"}, {"--hours", "1e6"},
                                              {"--seed", "1"}, {"--from", "0"}, {"--shard", "0/1"},  {"--case", ""}};
  bool writesHashes = false;

  const std::string& operator[](const std::string& name) const { return named.at(name); }
  std::uint64_t number(const std::string& name) const { return static_cast<std::uint64_t>(std::stod(named.at(name))); }
};

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--write")
      options.writesHashes = true;
    else if (word.substr(0, 2) != "--")
      options.words.push_back(word);
    else if (options.named.count(word) != 0 && i + 1 < argc)
      options.named[word] = argv[++i];
    else
      throw std::runtime_error("unknown option " + word);
  }
  const std::vector<std::string>& words = options.words;
  if (words.size() != (words.size() > 1 && (words[1] == "hashes" || words[1] == "cases") ? 3U : 2U))
    throw std::runtime_error("usage: generic_tests LIB CHECK [--needs LEVEL] or LIB hashes FILE [--write] [--needs "
                             "LEVEL] or LIB cases FILE");
  return options;
}

bool processorHas(const std::string& level) {
  const bool v3 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi") &&
                  __builtin_cpu_supports("bmi2");
  if (level.empty() || level == "x86-64") return true;
  if (level == "x86-64-v3") return v3;
  if (level == "x86-64-v4")
    return v3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512vl");
  throw std::runtime_error("unknown level " + level);
}

HardCases hardCases(std::uint64_t seed, std::uint64_t first, std::uint64_t count) {
  return {seed, first, count, 0, [](const std::string& text) { std::cout << text << std::flush; }};
}

// Eight cases of each of six ordinary calls; of the calls that are left once a kernel has had its time, one each.
Findings checkSomeHard(GuardedMemory& memory, const Kernel& kernel) {
  constexpr std::clock_t kTime = CLOCKS_PER_SEC / 5;
  const std::clock_t begin = std::clock();
  Findings findings;
  GuardedMemory::limitTime();
  for (std::uint64_t first = 0; first < 48 && findings.empty(); first += 8) {
    HardCases cases = hardCases(1, first, std::clock() - begin < kTime ? 8 : 1);
    findings = checkHard(memory, kernel, cases);
  }
  return findings;
}

Findings runCheck(const std::string& check, GuardedMemory& memory, const Kernel& kernel) {
  static const std::map<std::string, Findings (*)(GuardedMemory&, const Kernel&)> kChecks = {
      {"writes", checkWrites}, {"lists", checkLists},
      {"empty", checkEmpty},   {"pieces", checkPieces},
      {"far", checkFar},       {"reach", checkReach},
      {"hard", checkSomeHard}, {"threads", [](GuardedMemory&, const Kernel& alone) { return checkThreads(alone); }}};
  if (kChecks.count(check) == 0) throw std::runtime_error("unknown check " + check);
  return kChecks.at(check)(memory, kernel);
}

int print(const Kernel& kernel, const Findings& findings) {
  for (const std::string& finding : findings) std::cout << kernel.info->name << ": " << finding << "\n";
  return findings.empty() ? 0 : 1;
}

std::string hex(std::uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
  return text;
}

std::map<std::string, std::string> readHashes(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  std::map<std::string, std::string> hashes;
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line);
    std::string name, hash;
    if (line.empty() || line[0] == '#') continue;
    if (!(words >> name >> hash)) throw std::runtime_error(file + ": cannot read \"" + line + "\"");
    hashes[name] = hash;
  }
  return hashes;
}

void writeHashes(const std::string& file, const std::map<std::string, std::string>& hashes) {
  std::ofstream stream(file);
  stream
      << "# The bits of every kernel: a hash over its outputs for fixed inputs, five block lengths and all variants.  "
         "Each\n"
         "# compiler, optimisation and instruction set must give the same.  After a change of results that is meant:\n"
         "#   generic_tests LIB hashes FILE --write\n";
  for (const auto& [name, hash] : hashes) stream << name << " " << hash << "\n";
  if (!stream.flush()) throw std::runtime_error("cannot write " + file);
}

int compareHashes(const std::map<std::string, std::string>& wanted, const std::map<std::string, std::string>& got) {
  int failed = 0;
  for (const auto& [name, hash] : got) {
    const auto found = wanted.find(name);
    if (found != wanted.end() && found->second == hash) continue;
    std::cout << name << ": hash " << hash << ", recorded " << (found == wanted.end() ? "none" : found->second) << "\n";
    ++failed;
  }
  for (const auto& [name, hash] : wanted) {
    if (got.count(name) != 0) continue;
    std::cout << name << ": recorded, but no kernel of the headers\n";
    ++failed;
  }
  return failed;
}

// Passes of hard cases until the inputs or the time are used up.  Kernels that have failed are not run again.
int torture(const Options& options, std::vector<Kernel> kernels, GuardedMemory& memory) {
  constexpr std::uint64_t kCasesOfPass = 64;
  const auto begin = std::chrono::steady_clock::now();
  const auto hours = [begin] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / 3600;
  };
  std::uint64_t inputs = 0, before = 0, pass = options.number("--from");
  const std::uint64_t shard = options.number("--shard"),
                      shards = std::stoull(options["--shard"].substr(options["--shard"].find('/') + 1));
  std::size_t failed = 0;
  GuardedMemory::limitTime();
  while (pass % shards != shard % shards) ++pass;
  for (; inputs < options.number("--inputs") && hours() < std::stod(options["--hours"]) && !kernels.empty();
       pass += shards) {
    std::vector<Kernel> sound;
    for (const Kernel& kernel : kernels) {
      watch(kernel);
      HardCases cases = hardCases(options.number("--seed"), pass * kCasesOfPass, kCasesOfPass);
      if (!options["--case"].empty()) cases.first = options.number("--case"), cases.count = 1;
      const Findings findings = checkHard(memory, kernel, cases);
      inputs += cases.inputs;
      if (findings.empty()) sound.push_back(kernel);
    }
    failed += kernels.size() - sound.size();
    kernels = sound;
    std::cout << "pass " << pass << ": " << inputs << " inputs, " << failed << " kernels failed, "
              << static_cast<int>(hours() * 3600) << " s" << std::endl;
    if (!options["--case"].empty()) break;
    if (std::exchange(before, inputs) == inputs && failed == 0)
      throw std::runtime_error("no kernel of these takes numbers that could be hard");
  }
  return failed == 0 ? 0 : 1;
}

int run(const Options& options) {
  if (!processorHas(options["--needs"])) {
    std::cout << "skipped: this processor is no " << options["--needs"] << "\n";
    return kSkipped;
  }
  const std::string &check = options.words[1], &file = options.words.back(), &only = options["--only"];
  std::vector<Kernel> kernels = openKernels(options.words[0]);
  if (!only.empty()) std::erase_if(kernels, [&](const Kernel& kernel) { return only != kernel.info->name; });
  if (kernels.empty()) throw std::runtime_error("no kernel " + only);
  GuardedMemory memory;
  if (check == "torture") return torture(options, kernels, memory);
  std::map<std::string, std::string> hashes;
  std::ofstream cases;
  if (check == "cases") cases.open(file, std::ios::binary);
  int failed = 0;
  for (const Kernel& kernel : kernels) {
    watch(kernel);
    Findings findings;
    if (check == "cases")
      findings = writeCases(memory, kernel, cases);
    else if (check == "hashes")
      hashes[kernel.info->name] = hex(hashOutputs(memory, kernel, findings));
    else
      findings = runCheck(check, memory, kernel);
    failed += print(kernel, findings);
  }
  if (check == "cases" && !cases.flush()) throw std::runtime_error("cannot write " + file);
  if (check == "hashes" && options.writesHashes && failed == 0)
    writeHashes(file, hashes);
  else if (check == "hashes")
    failed += compareHashes(readHashes(file), hashes);
  if (check == "reach" && only.empty())
    for (const std::string& row : unusedExceptions())
      std::cout << "no kernel needs the exception " << row << "\n", ++failed;
  std::cout << check << ": " << kernels.size() << " kernels, " << failed << " failed\n";
  if (only.empty() && kernels.size() < kFewestKernels) throw std::runtime_error("that is too few kernels");
  return failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
  try {
    return run(parse(argc, argv));
  } catch (const std::exception& e) {
    std::cerr << "generic_tests: " << e.what() << "\n";
    return 2;
  }
}
