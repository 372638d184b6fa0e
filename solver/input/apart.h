// Work on input that may be hostile, in a process of its own: a crash, a hang or a flood of memory there is an error here.
#pragma once

#include "solver/parallel/mesh_slice.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Bytes that a process has handed over.  Those of a large mesh are in a file without a name, in the directory for temporary files
// (TMPDIR), which goes with this object.
class HandOver {
public:
  HandOver() = default;
  ~HandOver();
  HandOver(HandOver&& other) noexcept;
  HandOver& operator=(HandOver&& other) = delete;

  std::size_t size() const { return size_; }
  // Throws InputError when there is no room.
  void add(const char* bytes, std::size_t count);
  void read(std::size_t at, void* bytes, std::size_t count) const;

private:
  void store(const char* bytes, std::size_t count);

  std::vector<char> bytes_;
  int file_ = -1;
  std::size_t size_ = 0;
};

// What the process hands over, as plain bytes in order.
class Sink {
public:
  explicit Sink(int descriptor) : descriptor_(descriptor) {}

  template <class Number>
  void put(const std::vector<Number>& values) {
    const std::uint64_t count = values.size();
    write(&count, sizeof count);
    write(values.data(), values.size() * sizeof(Number));
  }
  void put(const std::string& text) { put(std::vector<char>(text.begin(), text.end())); }

private:
  void write(const void* bytes, std::size_t count) const;
  int descriptor_;
};

class Source {
public:
  explicit Source(const HandOver& bytes) : bytes_(bytes) {} // which stay

  template <class Number>
  void take(std::vector<Number>& values) {
    takeShare(values, 1, 0, 1);
  }
  // The share of a rank (firstOfShare) of what was put, counted in entities of so many numbers; the others are passed over.
  template <class Number>
  void takeShare(std::vector<Number>& values, int64_t numbers, int64_t rank, int64_t size) {
    std::uint64_t count = 0;
    read(&count, sizeof count);
    if (count > (bytes_.size() - at_) / sizeof(Number)) fail();
    const int64_t entities = static_cast<int64_t>(count) / numbers;
    const auto first = static_cast<std::size_t>(numbers * firstOfShare(entities, rank, size)),
               end = static_cast<std::size_t>(numbers * firstOfShare(entities, rank + 1, size));
    values.resize(end - first);
    skip(first * sizeof(Number));
    read(values.data(), values.size() * sizeof(Number));
    skip((static_cast<std::size_t>(count) - end) * sizeof(Number));
  }
  void take(std::string& text) {
    std::vector<char> letters;
    take(letters);
    text.assign(letters.begin(), letters.end());
  }

private:
  void read(void* bytes, std::size_t count);
  void skip(std::size_t count);
  [[noreturn]] static void fail();

  const HandOver& bytes_;
  std::size_t at_ = 0;
};

// Runs `work` on an input file in a child process and returns what it has put into its sink.  The child may take memory and
// processor time in proportion to the size of the file, beside a constant.  Throws InputError: the one that `work` threw, or one
// that names the file and says how the process ended.  `reader` is what the work is done by, for that text.  `bytes`: the size of
// all files, where there are several.
HandOver runApart(const std::filesystem::path& file, const std::string& reader, const std::function<void(Sink&)>& work,
                  std::uintmax_t bytes = 0);

} // namespace sharedanalysis::solver
