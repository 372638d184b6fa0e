// Diagnostics on their way between processes.
#include "acd_block_handler.h"

#include "acd.h"
#include "acd/recording.h"
#include "acd/succeeds.h"
#include "dia_MetadataTable.h"
#include "dmpC_CommContainer.h"
#include "glo/frame/thread_slot.h"
#include "glo/kernel/kernel.h"

#include <cstring>
#include <new>

namespace {

using sa::acd::internalError;
using sa::acd::Solver;

constexpr int32_t kWord = sizeof(int32_t);
constexpr int32_t kFixedWords = 3 * kWord; // code, class and print flag
constexpr uint32_t kEmptyBlock = 0xFFFFFFFF;

dia_Counts countsOf(int32_t code, acd_TypeClass typeClass) {
  return dia_MetadataTable::Instance(static_cast<int32_t>(typeClass)).GetCounts(code);
}

// Bytes of a payload without its strings.
int64_t fixedBytes(const dia_Counts& counts) {
  return kFixedWords + kWord * (static_cast<int64_t>(counts.ints) + counts.nodes + counts.elements) +
         static_cast<int64_t>(sizeof(double)) * counts.reals;
}

const char* textOf(const char* const* strings, int32_t k) {
  return strings == nullptr || strings[k] == nullptr ? "" : strings[k];
}

// Writes values one after the other; where there are none, zeros.
class Packer {
public:
  explicit Packer(char* at) : at_(at) {}
  template <class T>
  void word(T value) {
    bytes(&value, sizeof value);
  }
  template <class T>
  void array(const T* values, int32_t count) {
    bytes(values, static_cast<std::size_t>(count) * sizeof(T));
  }
  void bytes(const void* values, std::size_t count) {
    if (count == 0) return;
    if (values == nullptr)
      std::memset(at_, 0, count);
    else
      std::memcpy(at_, values, count);
    at_ += count;
  }

private:
  char* at_;
};

class Unpacker {
public:
  explicit Unpacker(const char* at) : at_(at) {}
  template <class T>
  void array(T* values, int32_t count) {
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(T);
    if (bytes > 0) std::memcpy(values, at_, bytes);
    at_ += bytes;
  }
  const char* at() const { return at_; }

private:
  const char* at_;
};

int32_t lengthAt(const char* bytes) {
  int32_t length = 0;
  std::memcpy(&length, bytes, sizeof length);
  return length;
}

// A record that cannot be filed for want of memory does not keep back those after it.
void fileRecord(const char* record, int32_t domain) {
  if (!sa::acd::succeeds([=] { sa::acd::fileRecord(record, domain); }))
    internalError(Solver::Explicit, "No memory for a received diagnostic");
}

bool isThisRank(int32_t rank) { return dmpC_CommContainer::GetCommunicator().GetRank() == rank; }

using Slot = sa::ThreadSlot<acd_block_handler>;

} // namespace

acd_block_handler::acd_block_handler() : dmpC_DataHandler(kBlockCapacity), isOwner_(isThisRank(ownerRank_)) {}

acd_block_handler::~acd_block_handler() { delete[] receiveBuffer_; }

void acd_block_handler::SetActive() {
  active_ = true;
  ownerRank_ = 0;
  isOwner_ = isThisRank(ownerRank_); // a diagnostic may have made the handler before the process had its rank
}

bool acd_block_handler::AddDiagnostic(int32_t code, acd_TypeClass typeClass, const int32_t* ints, const double* reals,
                                      const char* const* strings, const int32_t* nodes, const int32_t* elements,
                                      int32_t printFlag) {
  const dia_Counts counts = countsOf(code, typeClass);
  int64_t stringBytes = 0;
  for (int32_t k = 0; k < counts.strings; ++k) stringBytes += static_cast<int64_t>(std::strlen(textOf(strings, k))) + 1;
  const int64_t padding = (kWord - stringBytes % kWord) % kWord;
  const int64_t length = fixedBytes(counts) + stringBytes + padding;
  if (length > INT32_MAX - kWord) return false;
  char* const buffer = GetBuffer(static_cast<int32_t>(length) + kWord);
  if (buffer == nullptr) return false;

  Packer packer(buffer);
  packer.word(static_cast<int32_t>(length));
  packer.word(code);
  packer.word(typeClass);
  packer.array(reals, counts.reals);
  packer.word(sa::acd::recordFlag(printFlag));
  packer.array(ints, counts.ints);
  packer.array(nodes, counts.nodes);
  packer.array(elements, counts.elements);
  for (int32_t k = 0; k < counts.strings; ++k) packer.bytes(textOf(strings, k), std::strlen(textOf(strings, k)) + 1);
  packer.bytes(nullptr, static_cast<std::size_t>(padding));
  return true;
}

void acd_block_handler::endSource() {
  delete[] receiveBuffer_;
  receiveBuffer_ = nullptr;
  receiveLength_ = receiveValid_ = readPosition_ = 0;
}

// What a source sends cannot be trusted any more: its messages are taken up to its terminator and dropped.
void acd_block_handler::rejectSource(int32_t source, int32_t tag, const char* reason) {
  endSource();
  internalError(Solver::Explicit, reason);
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  int32_t word = 0;
  for (int64_t bytes = 0; bytes >= 0;) {
    bytes = communicator.Receive(&word, kWord, source, kMessageType, tag);
    if (bytes == kWord && word == kTerminator) return;
  }
}

// Whether a block with records is in the buffer.
bool acd_block_handler::receiveBlock(int32_t source, int32_t tag) {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  if (receiveLength_ == 0) {
    int32_t length = 0;
    const int64_t bytes = communicator.Receive(&length, kWord, source, kMessageType, tag);
    if (bytes < 0) return endSource(), internalError(Solver::Explicit, "Diagnostics could not be received"), false;
    if (bytes == kWord && length == kTerminator) return endSource(), false;
    if (bytes != kWord || length < kWord)
      return rejectSource(source, tag, "The length of received diagnostics is not valid"), false;
    receiveBuffer_ = new (std::nothrow) char[static_cast<std::size_t>(length)];
    if (receiveBuffer_ == nullptr) return rejectSource(source, tag, "No memory for received diagnostics"), false;
    receiveLength_ = length;
  }
  const int64_t bytes = communicator.Receive(receiveBuffer_, receiveLength_, source, kMessageType, tag);
  if (bytes < 0) return endSource(), internalError(Solver::Explicit, "Diagnostics could not be received"), false;
  if (bytes >= kWord && bytes <= receiveLength_ && static_cast<uint32_t>(lengthAt(receiveBuffer_)) == kEmptyBlock)
    return endSource(), false;
  if (bytes < kWord || bytes > receiveLength_)
    return rejectSource(source, tag, "A received block of diagnostics is longer than announced or empty"), false;
  receiveValid_ = static_cast<int32_t>(bytes);
  readPosition_ = 0;
  return true;
}

const char* acd_block_handler::NextRecord(int32_t source, int32_t tag) {
  if (readPosition_ >= receiveValid_ && !receiveBlock(source, tag)) return nullptr;
  const int32_t rest = receiveValid_ - readPosition_ - kWord;
  const int32_t length = rest < 0 ? -1 : lengthAt(receiveBuffer_ + readPosition_);
  if (length < kFixedWords || length > rest)
    return rejectSource(source, tag, "A received diagnostic is not inside its block"), nullptr;
  const char* const payload = receiveBuffer_ + readPosition_ + kWord;
  readPosition_ += kWord + length;
  return payload;
}

bool acd_block_handler::ExtractDiagnostic(const char* record, int32_t& code, int32_t* ints, double* reals,
                                          char** strings, int32_t* nodes, int32_t* elements, int32_t& printFlag,
                                          acd_TypeClass& typeClass, int32_t& stringCount) {
  const int32_t length = lengthAt(record - kWord);
  Unpacker unpacker(record);
  unpacker.array(&code, 1);
  unpacker.array(&typeClass, 1);
  const dia_Counts counts = countsOf(code, typeClass);
  if (length < fixedBytes(counts)) return false;
  // every string must end inside the record
  const char *text = record + fixedBytes(counts), *const end = record + length;
  for (int32_t k = 0; k < counts.strings; ++k) {
    const void* const zero = std::memchr(text, '\0', static_cast<std::size_t>(end - text));
    if (zero == nullptr) return false;
    text = static_cast<const char*>(zero) + 1;
  }

  unpacker.array(reals, counts.reals);
  unpacker.array(&printFlag, 1);
  unpacker.array(ints, counts.ints);
  unpacker.array(nodes, counts.nodes);
  unpacker.array(elements, counts.elements);
  text = unpacker.at();
  stringCount = counts.strings;
  for (int32_t k = 0; k < counts.strings; ++k) {
    const std::size_t size = std::strlen(text) + 1;
    strings[k] = new char[size];
    std::memcpy(strings[k], text, size);
    text += size;
  }
  return true;
}

void acd_block_handler::SendBlocks(int32_t destination, int32_t tag) {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  if (communicator.GetRank() == destination) return;
  int32_t largest = 0;
  for (int32_t block = 0; block < GetNumBlocks(); ++block)
    largest = GetBlockSize(block) > largest ? GetBlockSize(block) : largest;
  bool sent = largest == 0 || communicator.Send(&largest, kWord, destination, kMessageType, tag);
  for (int32_t block = 0; block < GetNumBlocks(); ++block) {
    if (GetBlockSize(block) > 0) sent = sent && Send(block, destination, tag);
    Delete(block);
  }
  DeleteAll();
  sent = communicator.Send(&kTerminator, kWord, destination, kMessageType, tag) && sent;
  if (!sent) internalError(Solver::Explicit, "Diagnostics could not be sent");
}

void acd_block_handler::Consolidate(acd_block_handler& other) {
  if (&other == this) return;
  for (int32_t block = 0; block < other.GetNumBlocks(); ++block) {
    const char* const bytes = other.GetBlock(block);
    const int32_t size = other.GetBlockSize(block);
    for (int32_t at = 0; at < size;) {
      const int32_t whole = lengthAt(bytes + at) + kWord;
      if (!IsCollecting()) {
        fileRecord(bytes + at + kWord, dmpC_CommContainer::GetCommunicator().GetRank());
      } else if (char* const buffer = GetBuffer(whole)) {
        std::memcpy(buffer, bytes + at, static_cast<std::size_t>(whole));
      } else {
        internalError(Solver::Explicit, "No memory for diagnostics");
      }
      at += whole;
    }
    other.Delete(block);
  }
  other.DeleteAll();
}

template <>
acd_block_handler& thr_ThreadSingleton<acd_block_handler>::Instance() {
  return Slot::get(sa::acd::releaseHandler);
}

void sa::acd::releaseHandler() { Slot::release(); }

SA_EXPORT void acd_handler_setactive_xpl_c(void) {
  // without memory for a handler diagnostics go to the extractor
  sa::acd::succeeds([] { thr_ThreadSingleton<acd_block_handler>::Instance().SetActive(); });
}
SA_EXPORT void ACD_HANDLER_SETACTIVE_XPL(void) { acd_handler_setactive_xpl_c(); }

SA_EXPORT void acd_comm_blocks(void) {
  const bool done = sa::acd::succeeds([] {
    acd_block_handler& handler = thr_ThreadSingleton<acd_block_handler>::Instance();
    if (!handler.IsActive()) return;
    constexpr int32_t tag = 0;
    if (!handler.IsOwner()) return handler.SendBlocks(handler.GetOwnerRank(), tag);
    const int32_t ranks = dmpC_CommContainer::GetCommunicator().GetSize();
    for (int32_t rank = 0; rank < ranks; ++rank) {
      if (rank == handler.GetOwnerRank()) continue;
      while (const char* const record = handler.NextRecord(rank, tag)) fileRecord(record, rank);
    }
  });
  if (!done) internalError(Solver::Explicit, "No memory for diagnostics");
}
