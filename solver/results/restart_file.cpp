#include "solver/results/restart_file.h"

#include "solver/results/hash.h"
#include "solver/results/partial_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

// The heading, the words of the run and of the model, and a hash of all of them.  Words are those of the machine.
constexpr uint64_t kMagic = 0x0a74726174736572U, kFormat = 2; // "restart" and a line feed
struct Heading {
  uint64_t magic = kMagic, format = kFormat, release = 0, input = 0, run = 0, model = 0;
};
constexpr uint64_t kMostOfRun = 1 << 16;

uint64_t releaseHash() {
  Hash hash;
  hash.add(std::string_view(SHAREDANALYSIS_VERSION));
  return hash.value();
}

uint64_t hashOf(const Heading& heading, const RestartState& state) {
  Hash hash;
  for (const uint64_t word :
       {heading.magic, heading.format, heading.release, heading.input, heading.run, heading.model})
    hash.add(word);
  for (const std::vector<double>* words : {&state.run, &state.model})
    for (const double word : *words) hash.add(word);
  return hash.value();
}

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

} // namespace

void writeRestart(const std::filesystem::path& file, uint64_t input, const RestartState& state) {
  const std::filesystem::path fresh = file.string() + ".partial";
  std::error_code error;
  std::filesystem::remove(fresh, error); // that a killed run has left
  const Heading heading{kMagic, kFormat, releaseHash(), input, state.run.size(), state.model.size()};
  const uint64_t hash = hashOf(heading, state);
  errno = 0;
  File stream(std::fopen(fresh.c_str(), "wxe"));
  if (!stream) throw WriteError(fresh, std::strerror(errno));
  const auto put = [&](const void* data, std::size_t bytes) {
    return std::fwrite(data, 1, bytes, stream.get()) == bytes;
  };
  const bool isWhole = put(&heading, sizeof heading) && put(state.run.data(), sizeof(double) * state.run.size()) &&
                       put(state.model.data(), sizeof(double) * state.model.size()) && put(&hash, sizeof hash) &&
                       std::fflush(stream.get()) == 0 && ::fsync(::fileno(stream.get())) == 0;
  const int reason = errno;
  stream.reset();
  if (isWhole) std::filesystem::rename(fresh, file, error);
  if (isWhole && !error) return;
  const std::string text = isWhole ? error.message() : std::strerror(reason);
  std::filesystem::remove(fresh, error);
  throw WriteError(file, text);
}

RestartState readRestart(const std::filesystem::path& file, uint64_t input, std::size_t modelSize) {
  const auto fail = [&](const std::string& what) { throw InputError(file.string() + ": " + what); };
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); // a pipe must not be waited for
  if (descriptor < 0) fail(std::string("cannot be opened: ") + std::strerror(errno));
  const File stream(::fdopen(descriptor, "rb"));
  struct stat status = {};
  if (!stream || ::fstat(descriptor, &status) != 0) fail("cannot be read");
  if (!S_ISREG(status.st_mode)) fail("is no file");
  const auto get = [&](void* data, std::size_t bytes) {
    if (std::fread(data, 1, bytes, stream.get()) != bytes) fail("cannot be read, or is cut off");
  };
  const auto size = static_cast<uint64_t>(status.st_size);
  Heading heading;
  if (size < sizeof heading) fail("this is no restart file, or it is cut off");
  get(&heading, sizeof heading);
  if (heading.magic != kMagic) fail("this is no restart file of sharedanalysis-explicit");
  if (heading.format != kFormat || heading.release != releaseHash())
    fail("the restart file was written by another release of the program");
  if (heading.input != input) fail("the restart file belongs to another case or mesh, or to an earlier text of them");
  if (heading.model != modelSize || heading.run > kMostOfRun) fail("the restart file is damaged: its sizes are wrong");
  const uint64_t expected = sizeof heading + 8 * (heading.run + heading.model + 1);
  if (size < expected) fail("the restart file is cut off");
  if (size > expected) fail("the restart file is damaged: it is too long");
  RestartState state{std::vector<double>(heading.run), std::vector<double>(heading.model)};
  uint64_t hash = 0;
  get(state.run.data(), sizeof(double) * state.run.size());
  get(state.model.data(), sizeof(double) * state.model.size());
  get(&hash, sizeof hash);
  if (hash != hashOf(heading, state)) fail("the restart file is damaged: its checksum is wrong");
  return state;
}

} // namespace sharedanalysis::solver
