// Runs one check on every kernel of the headers.
//
//   generic_tests LIB writes|lists|empty|pieces|far|threads|reach|hard [--needs LEVEL]
//   generic_tests LIB hashes FILE [--write] [--needs LEVEL]
//   generic_tests LIB cases FILE        writes calls of all kernels, inputs and results
//   generic_tests LIB torture [--inputs N] [--hours H] [--seed S] [--from PASS] [--shard K/M] [--only KERNEL] [--case C]
//
// With --needs and a processor below the level the program says so and ends with code 77.  Torture runs passes of hard cases
// over all kernels until it has driven N points or H hours have gone by; of M programs side by side each takes every M-th pass.
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "case_file.h"
#include "library.h"

namespace {

using namespace sa::test;

constexpr std::size_t kFewestKernels = 30;
constexpr int kSkipped = 77;

struct Options {
  std::string library, check, file, level, only;
  bool writesHashes = false;
  std::uint64_t inputs = 1000000, seed = 1, from = 0, shard = 0, shards = 1;
  double hours = 1e6;
  std::optional<std::uint64_t> hardCase;
};

Options parse(int argc, char** argv) {
  Options options;
  const auto number = [](auto& to) { return [&to](const std::string& value) { to = std::stoull(value); }; };
  const std::map<std::string, std::function<void(const std::string&)>> known = {
      {"--needs", [&](const std::string& value) { options.level = value; }},
      {"--only", [&](const std::string& value) { options.only = value; }},
      {"--inputs", [&](const std::string& value) { options.inputs = static_cast<std::uint64_t>(std::stod(value)); }},
      {"--hours", [&](const std::string& value) { options.hours = std::stod(value); }},
      {"--seed", number(options.seed)},
      {"--from", number(options.from)},
      {"--case", number(options.hardCase)},
      {"--shard", [&](const std::string& value) {
         options.shard = std::stoull(value);
         options.shards = std::stoull(value.substr(value.find('/') + 1)); // throws without a /
       }}};
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--write")
      options.writesHashes = true;
    else if (word.substr(0, 2) != "--")
      words.push_back(word);
    else if (known.count(word) != 0 && i + 1 < argc)
      known.at(word)(argv[++i]);
    else
      throw std::runtime_error("unknown option " + word);
  }
  if (words.size() != (words.size() > 1 && (words[1] == "hashes" || words[1] == "cases") ? 3U : 2U))
    throw std::runtime_error("usage: generic_tests LIB CHECK [--needs LEVEL] or LIB hashes FILE [--write] [--needs "
                             "LEVEL] or LIB cases FILE");
  options.library = words[0];
  options.check = words[1];
  if (words.size() > 2) options.file = words[2];
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
  std::uint64_t inputs = 0, pass = options.from;
  std::size_t failed = 0;
  GuardedMemory::limitTime();
  while (pass % options.shards != options.shard % options.shards) ++pass;
  for (; inputs < options.inputs && hours() < options.hours && !kernels.empty(); pass += options.shards) {
    std::vector<Kernel> sound;
    for (const Kernel& kernel : kernels) {
      watch(kernel);
      HardCases cases = hardCases(options.seed, pass * kCasesOfPass, kCasesOfPass);
      if (options.hardCase) cases.first = *options.hardCase, cases.count = 1;
      const Findings findings = checkHard(memory, kernel, cases);
      inputs += cases.inputs;
      if (findings.empty()) sound.push_back(kernel);
    }
    failed += kernels.size() - sound.size();
    kernels = sound;
    std::cout << "pass " << pass << ": " << inputs << " inputs, " << failed << " kernels failed, "
              << static_cast<int>(hours() * 3600) << " s" << std::endl;
    if (options.hardCase) break;
  }
  return failed == 0 ? 0 : 1;
}

int run(const Options& options) {
  if (!processorHas(options.level)) {
    std::cout << "skipped: this processor is no " << options.level << "\n";
    return kSkipped;
  }
  std::vector<Kernel> kernels = openKernels(options.library);
  if (!options.only.empty())
    std::erase_if(kernels, [&](const Kernel& kernel) { return options.only != kernel.info->name; });
  GuardedMemory memory;
  if (options.check == "torture") return torture(options, kernels, memory);
  std::map<std::string, std::string> hashes;
  std::ofstream cases;
  if (options.check == "cases") cases.open(options.file, std::ios::binary);
  int failed = 0;
  for (const Kernel& kernel : kernels) {
    watch(kernel);
    if (options.check == "cases") {
      failed += print(kernel, writeCases(memory, kernel, cases));
    } else if (options.check == "hashes") {
      Findings findings;
      hashes[kernel.info->name] = hex(hashOutputs(memory, kernel, findings));
      failed += print(kernel, findings);
    } else {
      failed += print(kernel, runCheck(options.check, memory, kernel));
    }
  }
  if (options.check == "cases" && !cases.flush()) throw std::runtime_error("cannot write " + options.file);
  if (options.check == "hashes" && options.writesHashes && failed == 0) {
    writeHashes(options.file, hashes);
  } else if (options.check == "hashes") {
    failed += compareHashes(readHashes(options.file), hashes);
  }
  if (options.check == "reach" && options.only.empty())
    for (const std::string& row : unusedExceptions())
      std::cout << "no kernel needs the exception " << row << "\n", ++failed;
  std::cout << options.check << ": " << kernels.size() << " kernels, " << failed << " failed\n";
  if (options.only.empty() && kernels.size() < kFewestKernels) throw std::runtime_error("that is too few kernels");
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
