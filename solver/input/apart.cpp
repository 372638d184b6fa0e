#include "solver/input/apart.h"

#include "solver/model/memory.h"
#include "solver/model/model.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace sharedanalysis::solver {
namespace {

// Beside what the process has already: a mesh library takes about 20 bytes for each byte of a text.
constexpr rlim_t kMemory = 1'000'000'000, kMemoryPerByte = 64; // bytes
constexpr rlim_t kSeconds = 30, kBytesPerSecond = 1'000'000;

// The shadow memory of the address and thread sanitizers goes beyond any limit.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHasShadowMemory = true;
#elif defined(__has_feature)
constexpr bool kHasShadowMemory = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kHasShadowMemory = false;
#endif

constexpr std::size_t kInMemory = std::size_t{1} << 24; // bytes of what was handed over
const std::string kNoRoom = "what was read has no room in the directory for temporary files: ";

constexpr int kDone = 0, kInputError = 3;

rlim_t addressSpaceInUse() {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void limit(int resource, rlim_t value) {
  rlimit now{};
  if (getrlimit(static_cast<__rlimit_resource>(resource), &now) != 0) return;
  now.rlim_cur = std::min(now.rlim_max, value);
  setrlimit(static_cast<__rlimit_resource>(resource), &now);
}

void limitTo(std::uintmax_t fileSize) {
  const auto size = static_cast<rlim_t>(fileSize);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, kSeconds + size / kBytesPerSecond);
  if (!kHasShadowMemory) limit(RLIMIT_AS, addressSpaceInUse() + kMemory + kMemoryPerByte * size);
}

// The child: its exit code says whether the pipe holds the work or the text of an error.
[[noreturn]] void runChild(int descriptor, pid_t parent, std::uintmax_t fileSize,
                           const std::function<void(Sink&)>& work) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1); // it died meanwhile
  for (const int signal : {SIGINT, SIGTERM, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(signal, SIG_DFL);
  limitTo(fileSize);
  Sink sink(descriptor);
  int code = kDone;
  try {
    work(sink);
  } catch (const InputError& error) {
    sink.put(std::string(error.what()));
    code = kInputError;
  } catch (const std::bad_alloc&) {
    code = ENOMEM;
  } catch (...) {
    code = 1;
  }
  _exit(code);
}

void readAll(int descriptor, HandOver& all) {
  std::vector<char> part(1 << 20);
  for (;;) {
    const ssize_t count = read(descriptor, part.data(), part.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    all.add(part.data(), static_cast<std::size_t>(count));
  }
}

std::string ending(int status) {
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) return "takes too much time over it";
  if (WIFSIGNALED(status)) return std::string("ends by a signal over it: ") + strsignal(WTERMSIG(status));
  if (WEXITSTATUS(status) == ENOMEM) return "needs more memory for it than its size justifies";
  return "ends over it with exit code " + std::to_string(WEXITSTATUS(status));
}

} // namespace

void Sink::write(const void* bytes, std::size_t count) const {
  const auto* next = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::write(descriptor_, next, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) throw std::system_error(errno, std::generic_category(), "cannot hand over what was read");
    next += written;
    count -= static_cast<std::size_t>(written);
  }
}

HandOver::~HandOver() {
  if (file_ >= 0) close(file_);
}

HandOver::HandOver(HandOver&& other) noexcept
    : bytes_(std::move(other.bytes_)), file_(std::exchange(other.file_, -1)), size_(other.size_) {}

void HandOver::add(const char* bytes, std::size_t count) {
  if (file_ < 0 && size_ + count > kInMemory) {
    std::error_code none;
    std::string name = (std::filesystem::temp_directory_path(none) / "sharedanalysis-XXXXXX").string();
    if (!none) file_ = mkostemp(name.data(), O_CLOEXEC);
    if (file_ < 0) throw InputError(kNoRoom + (none ? "TMPDIR: " + none.message() : std::strerror(errno)));
    unlink(name.c_str());
    store(bytes_.data(), bytes_.size());
    release(bytes_);
  }
  if (file_ < 0)
    bytes_.insert(bytes_.end(), bytes, bytes + count);
  else
    store(bytes, count);
  size_ += count;
}

void HandOver::store(const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(file_, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) throw InputError(kNoRoom + std::strerror(errno));
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

void HandOver::read(std::size_t at, void* bytes, std::size_t count) const {
  if (file_ < 0 && count > 0) std::memcpy(bytes, bytes_.data() + at, count);
  for (std::size_t done = 0; file_ >= 0 && done < count;) {
    const ssize_t part = pread(file_, static_cast<char*>(bytes) + done, count - done, static_cast<off_t>(at + done));
    if (part < 0 && errno == EINTR) continue;
    if (part <= 0) throw std::runtime_error("what was read of a mesh is not there any more");
    done += static_cast<std::size_t>(part);
  }
}

void Source::read(void* bytes, std::size_t count) {
  if (count > bytes_.size() - at_) fail();
  bytes_.read(at_, bytes, count);
  at_ += count;
}

void Source::skip(std::size_t count) {
  if (count > bytes_.size() - at_) fail();
  at_ += count;
}

void Source::fail() { throw std::runtime_error("what a reading process handed over is not whole"); }

HandOver runApart(const std::filesystem::path& file, const std::string& reader, const std::function<void(Sink&)>& work,
                  std::uintmax_t bytesOfAll) {
  std::error_code noSize;
  const std::uintmax_t size = bytesOfAll > 0 ? bytesOfAll : std::filesystem::file_size(file, noSize);
  int ends[2];
  if (pipe(ends) != 0) throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
  const pid_t parent = getpid(), child = fork();
  if (child == 0) {
    close(ends[0]);
    runChild(ends[1], parent, noSize ? 0 : size, work);
  }
  close(ends[1]);
  if (child < 0) {
    close(ends[0]);
    throw std::system_error(errno, std::generic_category(), "cannot start a process");
  }
  HandOver bytes;
  std::string noRoom;
  try {
    readAll(ends[0], bytes);
  } catch (const InputError& error) {
    noRoom = error.what();
  }
  close(ends[0]); // which ends the child where it still writes
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!noRoom.empty()) throw InputError(file.string() + ": " + noRoom);
  if (WIFEXITED(status) && WEXITSTATUS(status) == kDone) return bytes;
  if (WIFEXITED(status) && WEXITSTATUS(status) == kInputError) {
    std::string text;
    Source(bytes).take(text);
    throw InputError(text);
  }
  throw InputError(file.string() + ": is broken: " + reader + " " + ending(status));
}

} // namespace sharedanalysis::solver
