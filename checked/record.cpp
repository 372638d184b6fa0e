#include "record.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace sa::checked {
namespace {

class Encoder {
public:
  void byte(unsigned value) { text.push_back(static_cast<char>(value)); }
  void number(std::uint64_t value) { // seven bits a byte, the lowest first
    for (; value >= 0x80; value >>= 7) byte(static_cast<unsigned>(value & 0x7f) | 0x80U);
    byte(static_cast<unsigned>(value));
  }
  void signedNumber(std::int64_t value) {
    number((static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63));
  }
  // Elements: runs of one value, and values as they come.
  void values(const std::vector<unsigned char>& bytes, std::size_t size) {
    const std::size_t count = bytes.size() / size;
    const auto same = [&](std::size_t a, std::size_t b) {
      return std::memcmp(&bytes[a * size], &bytes[b * size], size) == 0;
    };
    for (std::size_t at = 0; at < count;) {
      std::size_t end = at + 1;
      while (end < count && same(at, end)) ++end;
      if (end - at >= 3) {
        number((end - at) << 1 | 1);
        text.append(reinterpret_cast<const char*>(&bytes[at * size]), size);
      } else {
        while (end < count && !(end + 2 < count && same(end, end + 1) && same(end, end + 2))) ++end;
        number((end - at) << 1);
        text.append(reinterpret_cast<const char*>(&bytes[at * size]), (end - at) * size);
      }
      at = end;
    }
  }
  std::string text;
};

class Decoder {
public:
  explicit Decoder(std::string_view bytes) : rest_(bytes) {}
  bool isSound() const { return isSound_; }
  bool isAtEnd() const { return rest_.empty(); }
  unsigned byte() {
    const std::string_view one = take(1);
    return one.empty() ? 0 : static_cast<unsigned char>(one[0]);
  }
  std::uint64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const unsigned next = byte();
      value |= static_cast<std::uint64_t>(next & 0x7fU) << shift;
      if (next < 0x80 || !isSound_) return value;
    }
    isSound_ = false;
    return 0;
  }
  std::int64_t signedNumber() {
    const std::uint64_t value = number();
    return static_cast<std::int64_t>((value >> 1) ^ (0 - (value & 1)));
  }
  std::string_view take(std::uint64_t count) {
    if (count > rest_.size()) {
      isSound_ = false;
      rest_ = {};
      return {};
    }
    const std::string_view part = rest_.substr(0, static_cast<std::size_t>(count));
    rest_.remove_prefix(static_cast<std::size_t>(count));
    return part;
  }
  void values(std::vector<unsigned char>& bytes, std::uint64_t count, std::size_t size, std::uint64_t& room) {
    if (size == 0 || count > room / size) {
      isSound_ = false;
      return;
    }
    room -= count * size;
    for (std::uint64_t done = 0; done < count && isSound_;) {
      const std::uint64_t head = number(), length = head >> 1;
      if (length == 0 || length > count - done) {
        isSound_ = false;
        return;
      }
      const std::string_view part = take((head & 1) != 0 ? size : length * size);
      for (std::uint64_t n = 0; n < ((head & 1) != 0 ? length : 1) && isSound_; ++n)
        bytes.insert(bytes.end(), part.begin(), part.end());
      done += length;
    }
  }

private:
  std::string_view rest_;
  bool isSound_ = true;
};

template <class T>
T load(std::string_view text, std::size_t at) {
  T value;
  std::memcpy(&value, text.data() + at, sizeof value);
  return value;
}

template <class T>
void append(std::string& text, T value) {
  text.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// What an output was before, taken out of what it is: unchanged values become zeros.
std::vector<unsigned char> difference(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
  std::vector<unsigned char> result(a);
  for (std::size_t n = 0; n < result.size() && n < b.size(); ++n) result[n] ^= b[n];
  return result;
}

} // namespace

std::uint64_t checksum(std::string_view bytes) { // Fowler, Noll and Vo, 64 bits
  std::uint64_t h = 0xcbf29ce484222325ULL;
  for (const char c : bytes) h = (h ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
  return h;
}

std::uint32_t digestOf(const Routine& routine) {
  std::string text = routine.name;
  for (const Argument& a : argumentsOf(routine))
    text.append(",")
        .append(a.name)
        .append(":")
        .append(std::to_string(static_cast<int>(a.type)))
        .append(std::to_string(static_cast<int>(a.direction)));
  const std::uint64_t h = checksum(text);
  return static_cast<std::uint32_t>(h ^ (h >> 32));
}

std::string fileHead() {
  std::string text(kMagic, sizeof kMagic);
  append(text, kVersion);
  append(text, kOrder);
  return text;
}

std::string encode(const RecordedCall& call) {
  Encoder body;
  body.number(call.number);
  body.signedNumber(call.increment);
  body.number(call.thread);
  body.number(call.nanoseconds);
  body.number(call.routine.size());
  body.text += call.routine;
  body.number(call.declaration);
  body.number(call.arguments.size());
  for (const RecordedArgument& a : call.arguments) {
    body.byte(static_cast<unsigned>(a.state) | static_cast<unsigned>(a.type) << 2 |
              static_cast<unsigned>(a.direction) << 5);
    if (a.state != RecordedArgument::State::kept) continue;
    body.number(a.runs.size());
    std::uint64_t end = 0;
    for (const Run& run : a.runs) {
      body.number(run.first - end);
      body.number(run.count);
      end = run.end();
    }
    if (a.isRead()) body.values(a.before, sizeOf(a.type));
    if (a.isWritten()) body.values(a.isRead() ? difference(a.after, a.before) : a.after, sizeOf(a.type));
  }
  body.number(call.result.size());
  body.text.append(call.result.begin(), call.result.end());
  std::string record;
  append(record, kMark);
  append(record, static_cast<std::uint32_t>(body.text.size()));
  append(record, checksum(body.text));
  return record + body.text;
}

std::optional<RecordedCall> decode(std::string_view bytes, std::string& fault) {
  Decoder body(bytes);
  RecordedCall call;
  std::uint64_t room = kMostBytes;
  call.number = body.number();
  call.increment = body.signedNumber();
  call.thread = body.number();
  call.nanoseconds = body.number();
  call.routine = std::string(body.take(std::min<std::uint64_t>(body.number(), 256)));
  call.declaration = static_cast<std::uint32_t>(body.number());
  const std::uint64_t count = body.number();
  fault = "a call that ends early";
  if (!body.isSound() || count > kMostArguments) return std::nullopt;
  for (std::uint64_t k = 0; k < count && body.isSound(); ++k) {
    RecordedArgument a;
    const unsigned head = body.byte();
    if ((head & 3U) > 2 || (head >> 2 & 7U) > static_cast<unsigned>(Type::address) || head >> 5 > 2)
      return std::nullopt;
    a.state = static_cast<RecordedArgument::State>(head & 3U);
    a.type = static_cast<Type>(head >> 2 & 7U);
    a.direction = static_cast<Direction>(head >> 5);
    if (a.state == RecordedArgument::State::kept) {
      const std::uint64_t runs = body.number(), size = sizeOf(a.type);
      std::uint64_t end = 0, elements = 0;
      for (std::uint64_t n = 0; n < runs && body.isSound(); ++n) {
        const std::uint64_t gap = body.number(), length = body.number();
        if (gap > kMostReach || length > kMostReach || end > kMostReach || size == 0) return std::nullopt;
        a.runs.push_back({end + gap, length});
        end += gap + length;
        elements += length;
      }
      if (end > kMostReach / 8) return std::nullopt;
      if (a.isRead()) body.values(a.before, elements, size, room);
      if (a.isWritten()) body.values(a.after, elements, size, room);
      if (a.isRead() && a.isWritten()) a.after = difference(a.after, a.before);
    }
    call.arguments.push_back(std::move(a));
  }
  const std::uint64_t length = body.number();
  if (length > 8) return std::nullopt;
  const std::string_view result = body.take(length);
  call.result.assign(result.begin(), result.end());
  if (!body.isSound() || !body.isAtEnd()) return std::nullopt;
  fault.clear();
  return call;
}

Recording::Recording(std::string bytes) : bytes_(std::move(bytes)) {}

std::optional<Recording> Recording::open(const std::string& file, std::string& fault) {
  std::error_code none;
  if (std::filesystem::exists(file, none) && !std::filesystem::is_regular_file(file, none)) {
    fault = file + " is no file"; // a device may have no end
    return std::nullopt;
  }
  std::ifstream stream(file, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (!stream && bytes.empty()) {
    fault = "cannot read " + file;
  } else if (bytes.size() < kFileHead || std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0) {
    fault = file + " is no recording";
  } else if (load<std::uint32_t>(bytes, 12) != kOrder) {
    fault = file + " is of a machine with another order of bytes";
  } else if (const auto version = load<std::uint32_t>(bytes, 8); version != kVersion) {
    fault = file + " has version " + std::to_string(version) + ", not " + std::to_string(kVersion);
  } else {
    return Recording(std::move(bytes));
  }
  return std::nullopt;
}

std::optional<RecordedCall> Recording::next() {
  while (at_ < bytes_.size()) {
    const std::string_view rest = std::string_view(bytes_).substr(at_);
    const std::string place = "byte " + std::to_string(at_) + ": ";
    std::string fault;
    if (rest.size() < kRecordHead) {
      fault = "unfinished";
    } else if (load<std::uint32_t>(rest, 0) != kMark) {
      fault = "no call";
    } else if (const std::size_t length = load<std::uint32_t>(rest, 4); length > rest.size() - kRecordHead) {
      fault = "unfinished";
    } else if (const std::string_view body = rest.substr(kRecordHead, length);
               load<std::uint64_t>(rest, 8) != checksum(body)) {
      fault = "damaged";
    } else if (auto call = decode(body, fault)) {
      at_ += kRecordHead + length;
      return call;
    }
    faults_.push_back(place + fault);
    // goes on where the next mark is
    std::string mark;
    append(mark, kMark);
    const std::size_t found = bytes_.find(mark, at_ + 1);
    at_ = found == std::string::npos ? bytes_.size() : found;
  }
  return std::nullopt;
}

} // namespace sa::checked
