#include "solver/program/instruction_set.h"

#include "glo.h"

#include <dlfcn.h>

namespace sharedanalysis::solver {
namespace {

// Where the loader has chosen a library made for one instruction set alone, its folder says for which.
std::string folderOfLibrary() {
  Dl_info library{};
  if (dladdr(reinterpret_cast<void*>(&GLO_UTI_EIG33), &library) == 0 || library.dli_fname == nullptr) return "";
  return library.dli_fname;
}

} // namespace

std::string instructionSet() {
  const std::string library = folderOfLibrary();
  if (library.find("glibc-hwcaps/x86-64-v4/") != std::string::npos) return "AVX-512";
  if (library.find("glibc-hwcaps/x86-64-v3/") != std::string::npos) return "AVX2";
#ifdef SA_MULTIVERSION
  // as the clones are chosen
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx512f") ? "AVX-512" : __builtin_cpu_supports("avx2") ? "AVX2" : "SSE2";
#elif defined(__AVX512F__)
  return "AVX-512";
#elif defined(__AVX2__)
  return "AVX2";
#else
  return "SSE2";
#endif
}

std::string versionText(const std::string& program) {
  return program + " " SHAREDANALYSIS_VERSION ", kernels with " + instructionSet();
}

} // namespace sharedanalysis::solver
