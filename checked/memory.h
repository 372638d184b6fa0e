// What memory of this process may be read and written, without touching it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sa::checked {

// One object a thread.  The kernel's list of mappings is read when an address lies in none of those known and kept; a mapping
// may have gone since, so that probe() asks the kernel about single bytes as well.
class Memory {
public:
  bool canRead(const void* begin, std::size_t bytes) { return has(begin, bytes, false); }
  bool canWrite(const void* begin, std::size_t bytes) { return has(begin, bytes, true); }
  // A call begins.  A page that was asked about in one of the last calls is not asked about again.
  void beginCall() { ++call_; }
  // Copies a byte out and, for one that the caller is about to let a routine write, back again, by system calls that fail where a
  // program would be ended.  True where these calls are not allowed.
  bool probe(const void* address, bool isWritten);
  void forget() { ranges_.clear(); }

private:
  struct Range {
    std::uintptr_t begin, end;
    bool isWritable;
  };
  bool has(const void* begin, std::size_t bytes, bool isWritten);
  bool finds(std::uintptr_t begin, std::uintptr_t end, bool isWritten) const;
  void read();
  std::vector<Range> ranges_;
  static constexpr unsigned kPages = 256, kCalls = 16;
  struct Page {
    std::uintptr_t number = 0;
    std::uint64_t read = 0, written = 0; // call that asked
  };
  Page pages_[kPages] = {};
  std::uint64_t call_ = kCalls;
};

} // namespace sa::checked
