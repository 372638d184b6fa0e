#include "solver/results/restart_file.h"

#include "solver/model/hash.h"
#include "solver/parallel/faults.h"
#include "solver/results/partial_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

// A file has the heading, the words of the run and of the course, pieces of records, each after the number of its words, and a
// hash of all of them.  Words are those of the machine.
constexpr uint64_t kMagic = 0x0a74726174736572U, kFormat = 4; // "restart" and a line feed
struct Heading {
  uint64_t magic = kMagic, format = kFormat, release = 0, input = 0;
  uint64_t run = 0, course = 0, words = 0; // how many, of the pieces with their numbers
  uint64_t parts = 0;                      // none: the records are here
  uint64_t part = 0;                       // counted from 1; 0 is the file itself
  uint64_t generation = 0, state = 0;      // the number in the names of parts; what no other state has

  std::array<uint64_t, 11> all() const {
    return {magic, format, release, input, run, course, words, parts, part, generation, state};
  }
};
constexpr uint64_t kMostOfRun = 1 << 16, kMostOfCourse = 1 << 10;

uint64_t releaseHash() {
  Hash hash;
  hash.add(std::string_view(SHAREDANALYSIS_VERSION));
  return hash.value();
}

std::filesystem::path nameOfPart(const std::filesystem::path& file, uint64_t generation, uint64_t rank) {
  return file.string() + '.' + std::to_string(generation) + '.' + std::to_string(rank);
}

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, Close>;

// A file that is written anew.
class Writer {
public:
  explicit Writer(const std::filesystem::path& file) : file_(file) {
    std::error_code error;
    std::filesystem::remove(file_, error); // that a killed run has left
    errno = 0;
    stream_.reset(std::fopen(file_.c_str(), "wxe"));
    if (!stream_) throw WriteError(file_, std::strerror(errno));
    const Heading later;
    write(&later, sizeof later);
  }
  ~Writer() {
    std::error_code error;
    if (stream_) std::filesystem::remove(file_, error); // it is not whole
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void put(const std::vector<double>& words) {
    for (const double word : words) hash_.add(word);
    write(words.data(), sizeof(double) * words.size());
  }
  void putPiece(const std::vector<double>& words) {
    const uint64_t count = words.size();
    hash_.add(count);
    write(&count, sizeof count);
    put(words);
    words_ += 1 + count;
  }
  // Afterwards it is on the device.
  void finish(Heading heading) {
    heading.words = words_;
    for (const uint64_t word : heading.all()) hash_.add(word);
    const uint64_t hash = hash_.value();
    write(&hash, sizeof hash);
    check(std::fseek(stream_.get(), 0, SEEK_SET) == 0);
    write(&heading, sizeof heading);
    check(std::fflush(stream_.get()) == 0 && ::fsync(::fileno(stream_.get())) == 0);
    stream_.reset();
  }

private:
  void write(const void* data, std::size_t bytes) { check(std::fwrite(data, 1, bytes, stream_.get()) == bytes); }
  void check(bool isDone) const {
    if (!isDone) throw WriteError(file_, std::strerror(errno));
  }

  std::filesystem::path file_;
  Stream stream_;
  Hash hash_;
  uint64_t words_ = 0;
};

// Of the state that is there, 0 when there is none.
uint64_t presentGeneration(const std::filesystem::path& file) {
  Heading heading;
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return 0;
  const bool isRead = ::read(descriptor, &heading, sizeof heading) == static_cast<ssize_t>(sizeof heading);
  ::close(descriptor);
  return isRead && heading.magic == kMagic && heading.format == kFormat ? heading.generation : 0;
}

// Those of other states than `kept`.
void removeParts(const std::filesystem::path& file, uint64_t kept) {
  std::error_code error;
  const std::filesystem::path directory = file.has_parent_path() ? file.parent_path() : ".";
  const std::string begin = file.filename().string() + '.';
  std::vector<std::filesystem::path> old;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (!name.starts_with(begin)) continue;
    uint64_t generation = 0, rank = 0;
    const char* const last = name.data() + name.size();
    const auto [dot, wrong] = std::from_chars(name.data() + begin.size(), last, generation);
    if (wrong != std::errc{} || dot == last || *dot != '.') continue;
    const auto [behind, wrongRank] = std::from_chars(dot + 1, last, rank);
    if (wrongRank == std::errc{} && behind == last && generation != kept) old.push_back(entry->path());
  }
  for (const std::filesystem::path& part : old) {
    std::filesystem::remove(part, error);
    if (error) throw WriteError(part, "the older file cannot be removed: " + error.message());
  }
}

// So that the new name is there before the parts of the older state go.
void synchroniseDirectory(const std::filesystem::path& file) {
  const std::filesystem::path directory = file.has_parent_path() ? file.parent_path() : ".";
  const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor); // where that is not possible, nothing is
  ::close(descriptor);
}

void broadcastSized(const Ranks& ranks, std::vector<double>& words) {
  std::vector<int64_t> size{static_cast<int64_t>(words.size())};
  ranks.broadcast(size);
  words.resize(static_cast<std::size_t>(size[0]));
  ranks.broadcast(words);
}

} // namespace

void writeRestart(const std::filesystem::path& file, uint64_t input, const RestartState& state, const Ranks& ranks,
                  const std::function<void(const RecordSink&)>& save) {
  std::vector<int64_t> names(2); // the same on every rank
  if (ranks.isRoot()) {
    names[0] = static_cast<int64_t>(presentGeneration(file) + 1);
    names[1] = std::chrono::system_clock::now().time_since_epoch().count() ^ static_cast<int64_t>(::getpid()) << 40;
  }
  ranks.broadcast(names);
  Heading heading;
  heading.release = releaseHash();
  heading.input = input;
  heading.generation = static_cast<uint64_t>(names[0]);
  heading.state = static_cast<uint64_t>(names[1]);
  heading.parts = ranks.areSeveral() ? static_cast<uint64_t>(ranks.size()) : 0;
  const auto saveTo = [&](Writer& writer) { save([&](const std::vector<double>& words) { writer.putPiece(words); }); };
  if (ranks.areSeveral()) {
    Writer part(nameOfPart(file, heading.generation, static_cast<uint64_t>(ranks.rank())));
    saveTo(part);
    heading.part = static_cast<uint64_t>(ranks.rank()) + 1;
    part.finish(heading);
    heading.part = 0;
  }
  ranks.synchronise();
  if (!ranks.isRoot()) return;
  const std::filesystem::path fresh = file.string() + ".partial";
  Writer writer(fresh);
  writer.put(state.run);
  writer.put(state.course);
  if (!ranks.areSeveral()) saveTo(writer);
  heading.run = state.run.size();
  heading.course = state.course.size();
  writer.finish(heading);
  std::error_code error;
  std::filesystem::rename(fresh, file, error);
  if (error) {
    const std::string reason = error.message();
    std::filesystem::remove(fresh, error);
    throw WriteError(file, reason);
  }
  synchroniseDirectory(file);
  removeParts(file, heading.generation);
}

void removeRestart(const std::filesystem::path& file) {
  PartialFile::removeEarlier(file);
  removeParts(file, 0); // no state has this number
}

// One that is sound, from its first word on.
class RestartReader::File {
public:
  File(const std::filesystem::path& name, uint64_t input) : name_(name) {
    const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); // a pipe must not be waited for
    if (descriptor < 0)
      fail(std::string("cannot be opened: ") + std::strerror(errno) +
           (errno == ENOENT ? "; a run that is complete has no state, nor has one before its first" : ""));
    stream_.reset(::fdopen(descriptor, "rb"));
    struct stat status = {};
    if (!stream_ || ::fstat(descriptor, &status) != 0) fail("cannot be read");
    if (!S_ISREG(status.st_mode)) fail("is no file");
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size < sizeof heading) fail("this is no restart file, or it is cut off");
    get(&heading, sizeof heading);
    if (heading.magic != kMagic) fail("this is no restart file of sharedanalysis-explicit");
    if (heading.format != kFormat || heading.release != releaseHash())
      fail("the restart file was written by another release of the program");
    if (heading.input != input) fail("the restart file belongs to another case or mesh, or to an earlier text of them");
    if (heading.run > kMostOfRun || heading.course > kMostOfCourse)
      fail("the restart file is damaged: its sizes are wrong");
    const uint64_t words = heading.run + heading.course + 1;
    const uint64_t there = (size - sizeof heading) / sizeof(uint64_t);
    if (words > there || heading.words > there - words) fail("the restart file is cut off");
    if (size != sizeof heading + sizeof(uint64_t) * (words + heading.words))
      fail("the restart file is damaged: it is too long");
    verify(words - 1 + heading.words);
    left_ = heading.words;
  }

  [[noreturn]] void fail(const std::string& what) const { throw InputError(name_.string() + ": " + what); }
  std::vector<double> take(uint64_t count) {
    std::vector<double> words(count);
    get(words.data(), sizeof(double) * count);
    return words;
  }
  std::vector<double> nextPiece() {
    if (left_ == 0) return {};
    uint64_t count = 0;
    get(&count, sizeof count);
    if (count == 0 || count > --left_) throw InputError("a part is damaged: its sizes are wrong");
    left_ -= count;
    return take(count);
  }

  Heading heading;

private:
  void get(void* data, std::size_t bytes) const {
    if (std::fread(data, 1, bytes, stream_.get()) != bytes) fail("cannot be read, or is cut off");
  }
  void verify(uint64_t count) const {
    Hash hash;
    std::array<double, 4096> words;
    while (count > 0) {
      const std::size_t some = std::min<uint64_t>(count, words.size());
      get(words.data(), sizeof(double) * some);
      for (std::size_t k = 0; k < some; ++k) hash.add(words[k]);
      count -= some;
    }
    for (const uint64_t word : heading.all()) hash.add(word);
    uint64_t expected = 0;
    get(&expected, sizeof expected);
    if (expected != hash.value()) fail("the restart file is damaged: its checksum is wrong");
    if (std::fseek(stream_.get(), sizeof heading, SEEK_SET) != 0) fail("cannot be read");
  }

  std::filesystem::path name_;
  Stream stream_;
  uint64_t left_ = 0; // words of the pieces
};

RestartReader::RestartReader(const std::filesystem::path& file, uint64_t input, const Ranks& ranks) {
  std::vector<uint64_t> names(3); // parts, generation, state
  if (ranks.isRoot()) {
    present_ = std::make_unique<File>(file, input);
    const Heading& heading = present_->heading;
    if (heading.part != 0)
      present_->fail("this is a part of a restart file; it is named without the numbers at its end");
    state_.run = present_->take(heading.run);
    state_.course = present_->take(heading.course);
    names = {heading.parts, heading.generation, heading.state};
  }
  ranks.broadcast(names);
  broadcastSized(ranks, state_.run);
  broadcastSized(ranks, state_.course);
  Faults faults;
  const auto size = static_cast<uint64_t>(ranks.size());
  for (uint64_t part = static_cast<uint64_t>(ranks.rank()); part < names[0]; part += size) {
    const auto open = [=, name = nameOfPart(file, names[1], part)] {
      auto one = std::make_unique<File>(name, input);
      const Heading& heading = one->heading;
      if (heading.part != part + 1 || heading.parts != names[0] || heading.state != names[2])
        one->fail("belongs to another state than " + file.string());
      return one;
    };
    try {
      open();
    } catch (const InputError& error) {
      faults.add(static_cast<int64_t>(part), error.what());
      break;
    }
    parts_.insert(parts_.begin(), open);
  }
  faults.throwFirst(ranks);
}

RestartReader::~RestartReader() = default;

std::vector<double> RestartReader::next() {
  for (;;) {
    if (present_) {
      std::vector<double> words = present_->nextPiece();
      if (!words.empty()) return words;
      present_.reset();
    }
    if (parts_.empty()) return {};
    present_ = parts_.back()();
    parts_.pop_back();
  }
}

} // namespace sharedanalysis::solver
