#include "solver/results/partial_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace sharedanalysis::solver {

namespace {

std::filesystem::path partialName(const std::filesystem::path& name) { return name.string() + ".partial"; }

// "4.0", as fileOfRank() names files
bool isRank(const std::string& text) {
  const std::size_t dot = text.find('.');
  const auto isNumber = [](const std::string& word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
  };
  return dot != std::string::npos && isNumber(text.substr(0, dot)) && text.size() == 2 * dot + 1 &&
         isNumber(text.substr(dot + 1));
}

} // namespace

void expectOtherNames(const std::vector<std::filesystem::path>& read, const std::filesystem::path& directory,
                      const std::string& job, const std::vector<std::string>& endings) {
  for (const std::filesystem::path& file : read) {
    const std::string name = file.filename().string();
    std::error_code none;
    if (!name.starts_with(job) || !std::filesystem::equivalent(file, directory / name, none)) continue;
    for (const std::string& ending : endings)
      if (name == job + ending || name.starts_with(job + ending + "."))
        throw InputError(file.string() + ": is read, and results of job \"" + job +
                         "\" would take its place, expected another job or directory of results");
  }
}

std::filesystem::path fileOfRank(const std::filesystem::path& name, int32_t rank, int32_t ranks) {
  const std::string all = std::to_string(ranks), own = std::to_string(rank);
  return name.string() + '.' + all + '.' + std::string(all.size() - std::min(all.size(), own.size()), '0') + own;
}

std::vector<std::filesystem::path> filesOfRanks(const std::filesystem::path& name) {
  const std::filesystem::path directory = name.has_parent_path() ? name.parent_path() : ".";
  const std::string begin = name.filename().string() + '.', end = ".partial";
  std::error_code error;
  std::vector<std::filesystem::path> found;
  for (std::filesystem::directory_iterator entry(directory, error), last; !error && entry != last;
       entry.increment(error)) {
    std::string text = entry->path().filename().string();
    if (!text.starts_with(begin)) continue;
    text.erase(0, begin.size());
    if (text.ends_with(end)) text.resize(text.size() - end.size());
    if (isRank(text)) found.push_back(entry->path());
  }
  std::sort(found.begin(), found.end());
  return found;
}

void removeFilesOfRanks(const std::filesystem::path& name) {
  for (const std::filesystem::path& file : filesOfRanks(name)) {
    std::error_code error;
    std::filesystem::remove(file, error);
    if (error) throw WriteError(file, "the older file cannot be removed: " + error.message());
  }
}

PartialFile::PartialFile(const std::filesystem::path& name, Start start) : name_(name), partial_(partialName(name)) {
  if (start == Start::New) removeEarlier(name_);
}

void PartialFile::removeEarlier(const std::filesystem::path& name) {
  for (const auto& file : {name, partialName(name)}) {
    std::error_code error;
    std::filesystem::remove(file, error);
    if (error) throw WriteError(file, "the older file cannot be removed: " + error.message());
  }
}

void PartialFile::synchronise() const {
  const int file = ::open(partial_.c_str(), O_RDONLY | O_CLOEXEC);
  const bool done = file >= 0 && ::fsync(file) == 0;
  const int reason = errno;
  if (file >= 0) ::close(file);
  if (!done) throw WriteError(partial_, std::strerror(reason));
}

void PartialFile::complete() const {
  std::error_code error;
  std::filesystem::rename(partial_, name_, error);
  if (error) throw WriteError(name_, error.message());
}

PartialTextFile::PartialTextFile(const std::filesystem::path& name, Start start) : PartialFile(name, start) {
  if (start == Start::GoOn) return;
  stream_.reset(std::fopen(path().c_str(), "wxe"));
  if (!stream_) throw WriteError(path(), std::strerror(errno));
}

void PartialTextFile::visit(Archive& archive) {
  auto hash = static_cast<int64_t>(hash_.value());
  archive(bytes_, hash);
  if (!archive.isRestoring()) return;
  reopen();
  if (static_cast<int64_t>(hash_.value()) != hash)
    throw InputError(path().string() + ": is not what the restart file goes on from");
}

// What stands behind the bytes that were put stays until more is put: all other files are looked at first.
void PartialTextFile::reopen() {
  const auto fail = [&](const char* what) { throw InputError(path().string() + ": " + what); };
  const int descriptor = ::open(path().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) fail(errno == ENOENT ? "is not there, and the run would go on in it" : std::strerror(errno));
  stream_.reset(::fdopen(descriptor, "r+"));
  struct stat status = {};
  if (!stream_ || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) fail("is no file");
  if (bytes_ < 0 || bytes_ > status.st_size) fail("is shorter than the restart file says");
  hash_ = {};
  std::string piece(std::size_t{1} << 16, ' ');
  for (int64_t rest = bytes_; rest > 0;) {
    piece.resize(static_cast<std::size_t>(std::min<int64_t>(rest, static_cast<int64_t>(piece.size()))));
    if (std::fread(piece.data(), 1, piece.size(), stream_.get()) != piece.size()) fail("cannot be read");
    hash_.addLetters(piece);
    rest -= static_cast<int64_t>(piece.size());
  }
  isReopened_ = true;
}

void PartialTextFile::cutOff() {
  if (!std::exchange(isReopened_, false)) return;
  if (::ftruncate(::fileno(stream_.get()), bytes_) != 0 || std::fseek(stream_.get(), 0, SEEK_END) != 0)
    throw WriteError(path(), std::strerror(errno));
}

void PartialTextFile::put(const std::string& line) {
  cutOff();
  errno = 0;
  const std::string text = line + '\n';
  if (std::fwrite(text.data(), 1, text.size(), stream_.get()) != text.size() || std::fflush(stream_.get()) != 0)
    throw WriteError(path(), std::strerror(errno));
  bytes_ += static_cast<int64_t>(text.size());
  hash_.addLetters(text);
}

void PartialTextFile::close() {
  cutOff();
  if (std::fclose(stream_.release()) != 0) throw WriteError(path(), std::strerror(errno));
  synchronise();
}

} // namespace sharedanalysis::solver
