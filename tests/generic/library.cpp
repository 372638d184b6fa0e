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
    kernels.push_back({info, address});
  }
  if (!missing.empty()) throw std::runtime_error("the library misses" + missing);
  return kernels;
}

void watch(const Kernel& kernel) {
  watched = kernel.info->name;
  signal(SIGALRM, onAlarm);
  alarm(60);
}

} // namespace sa::test
