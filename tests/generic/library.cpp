#include "library.h"

#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace sa::test {
namespace {

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

} // namespace

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

void watch(const Kernel& kernel) {
  watched = kernel.info->name;
  signal(SIGALRM, onAlarm);
  alarm(60);
}

} // namespace sa::test
