#include "solver/input/netcdf_size.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

namespace sharedanalysis::solver {
namespace {

// The header of a file in the formats CDF-1, CDF-2 and CDF-5: dimensions, attributes, and arrays with their places.
class Header {
public:
  explicit Header(const std::filesystem::path& file) : stream_(file, std::ios::binary) {
    std::array<char, 4> magic{};
    stream_.read(magic.data(), magic.size());
    const char version = magic[3];
    if (std::string_view(magic.data(), 3) != "CDF" || (version != 1 && version != 2 && version != 5)) return;
    countBytes_ = version == 5 ? 8 : 4;
    offsetBytes_ = version == 1 ? 4 : 8;
    const uint64_t records = count();
    list([&] {
      name();
      isUnlimited_.push_back(count() == 0);
    });
    attributes();
    list([&] { array(); });
    if (recordArrays_ > 0 && records > 0) end_ = std::max(end_, firstRecord_ + records * record_);
    isRead_ = static_cast<bool>(stream_);
  }
  bool isOther() const { return countBytes_ == 0; }
  bool isRead() const { return isRead_; }
  uint64_t end() const { return end_; } // of the last array

private:
  uint64_t number(int bytes) {
    uint64_t value = 0;
    for (int k = 0; k < bytes; ++k) value = value << 8 | static_cast<unsigned char>(stream_.get());
    return value;
  }
  uint64_t count() { return number(countBytes_); }
  void skip(uint64_t bytes) { stream_.ignore(static_cast<std::streamsize>((bytes + 3) / 4 * 4)); }
  void name() { skip(count()); }

  template <class Entry>
  void list(const Entry& entry) {
    number(4); // kind of its entries
    const uint64_t entries = count();
    for (uint64_t k = 0; k < entries && stream_; ++k) entry();
  }

  // Of the values of a type.
  uint64_t typeSize() {
    constexpr std::array<uint64_t, 12> sizes{0, 1, 1, 2, 4, 4, 8, 1, 2, 4, 8, 8};
    const uint64_t type = number(4);
    return type < sizes.size() ? sizes[type] : 0;
  }

  void attributes() {
    list([&] {
      name();
      const uint64_t size = typeSize();
      skip(count() * size);
    });
  }

  void array() {
    name();
    const uint64_t dimensions = count();
    bool isOfRecords = false;
    for (uint64_t k = 0; k < dimensions && stream_; ++k) {
      const uint64_t dimension = count();
      isOfRecords = isOfRecords || (k == 0 && dimension < isUnlimited_.size() && isUnlimited_[dimension]);
    }
    attributes();
    const uint64_t padding = typeSize() < 4 ? 3 : 0; // that may be left out behind small values
    const uint64_t size = count(), begin = number(offsetBytes_);
    if (!isOfRecords) {
      end_ = std::max(end_, begin + size - std::min(size, padding));
      return;
    }
    firstRecord_ = recordArrays_ == 0 ? begin : std::min(firstRecord_, begin);
    record_ += size - std::min(size, recordArrays_ == 0 ? padding : 0);
    ++recordArrays_;
  }

  std::ifstream stream_;
  int countBytes_ = 0, offsetBytes_ = 0;
  bool isRead_ = false;
  std::vector<bool> isUnlimited_;
  uint64_t recordArrays_ = 0, firstRecord_ = 0, record_ = 0, end_ = 0;
};

} // namespace

bool isWholeNetcdf(const std::filesystem::path& file) {
  const Header header(file);
  if (header.isOther()) return true;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  return !error && header.isRead() && header.end() <= size;
}

} // namespace sharedanalysis::solver
