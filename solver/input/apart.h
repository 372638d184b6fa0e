// Work on input that may be hostile, in a process of its own: a crash, a hang or a flood of memory there is an error here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

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
  explicit Source(std::span<const char> bytes) : bytes_(bytes) {}

  template <class Number>
  void take(std::vector<Number>& values) {
    std::uint64_t count = 0;
    read(&count, sizeof count);
    if (count > bytes_.size() / sizeof(Number)) fail();
    values.resize(static_cast<std::size_t>(count));
    read(values.data(), values.size() * sizeof(Number));
  }
  void take(std::string& text) {
    std::vector<char> letters;
    take(letters);
    text.assign(letters.begin(), letters.end());
  }

private:
  void read(void* bytes, std::size_t count);
  [[noreturn]] static void fail();
  std::span<const char> bytes_;
};

// Runs `work` on an input file in a child process and returns what it has put into its sink.  The child may take memory and
// processor time in proportion to the size of the file, beside a constant.  Throws InputError: the one that `work` threw, or one
// that names the file and says how the process ended.  `reader` is what the work is done by, for that text.  `bytes`: the size of
// all files, where there are several.
std::vector<char> runApart(const std::filesystem::path& file, const std::string& reader,
                           const std::function<void(Sink&)>& work, std::uintmax_t bytes = 0);

} // namespace sharedanalysis::solver
