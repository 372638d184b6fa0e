#include "memory.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/uio.h>
#include <unistd.h>

namespace sa::checked {

bool Memory::probe(const void* address, bool isWritten) {
  const std::uintptr_t number = reinterpret_cast<std::uintptr_t>(address) / 4096;
  Page& page = pages_[number % kPages];
  if (page.number == number && (isWritten ? page.written : page.read) + kCalls > call_) return true;
  char byte = 0;
  const iovec own = {&byte, 1}, other = {const_cast<void*>(address), 1};
  if (process_vm_readv(getpid(), &own, 1, &other, 1, 0) != 1) {
    if (errno == EFAULT) return false;
  } else if (isWritten && process_vm_writev(getpid(), &own, 1, &other, 1, 0) != 1 && errno == EFAULT) {
    return false;
  }
  if (page.number != number) page = {number, 0, 0};
  (isWritten ? page.written : page.read) = call_;
  return true;
}

bool Memory::has(const void* begin, std::size_t bytes, bool isWritten) {
  const auto first = reinterpret_cast<std::uintptr_t>(begin);
  if (bytes == 0) return true;
  if (first + bytes < first) return false;
  if (finds(first, first + bytes, isWritten)) return true;
  read();
  return finds(first, first + bytes, isWritten);
}

bool Memory::finds(std::uintptr_t begin, std::uintptr_t end, bool isWritten) const {
  auto range = std::upper_bound(ranges_.begin(), ranges_.end(), begin,
                                [](std::uintptr_t address, const Range& r) { return address < r.end; });
  for (; range != ranges_.end() && range->begin <= begin && (range->isWritable || !isWritten); ++range) {
    if (end <= range->end) return true;
    begin = range->end; // goes on in the next one
  }
  return false;
}

void Memory::read() {
  ranges_.clear();
  const int file = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  std::string text;
  char buffer[8192];
  for (ssize_t n; (n = ::read(file, buffer, sizeof buffer)) > 0;) text.append(buffer, static_cast<std::size_t>(n));
  close(file);
  // 7f0c1000-7f0c3000 rw-p ...
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    char* next = nullptr;
    const std::uintptr_t begin = std::strtoull(text.c_str() + at, &next, 16);
    const std::uintptr_t end = *next == '-' ? std::strtoull(next + 1, &next, 16) : 0;
    if (end > begin && next[0] == ' ' && next[1] == 'r') {
      const bool isWritable = next[2] == 'w';
      if (!ranges_.empty() && ranges_.back().end == begin && ranges_.back().isWritable == isWritable)
        ranges_.back().end = end;
      else
        ranges_.push_back({begin, end, isWritable});
    }
    if (text.find('\n', at) == std::string::npos) break;
  }
}

} // namespace sa::checked
