// Diagnostics on their way between processes.
//
// A process that is not the owner packs each diagnostic into a record, records into blocks of 256 KiB, and ships the blocks
// to the owner, which files the records as if they had been reported there.  There is one handler for each thread.
//
// A record, all integers 32-bit in the byte order of the machine:
//   offset  0  payload length L, the bytes after this word: a multiple of 4
//           4  diagnostic code
//           8  class of the code: 0 general table, 1 contact table
//          12  reals, 8 bytes each
//        then  print flag: 1 when the diagnostic is printed as well, plus 256 for an element diagnostic; no other value
//        then  integers, node numbers, element numbers, 4 bytes each
//        then  strings, each ending with a zero, back to back
//        then  0 to 3 bytes of zero
// How many values of each kind there are is not stored: both sides take the counts from the metadata of the code.
//
// A message is a 32-bit word or a block, of type 3.  A source that has blocks sends a word with the largest block size and
// then the blocks; every source ends with the word -1.
#pragma once

#include "acd_TypeClass.h"
#include "dmpC_DataHandler.h"
#include "thr_ThreadSingleton.h"

#include <cstdint>

class __attribute__((visibility("default"))) acd_block_handler : public dmpC_DataHandler {
public:
  static constexpr int32_t kBlockCapacity = 0x40000, kMessageType = 3, kTerminator = -1;

  acd_block_handler();
  ~acd_block_handler();

  // Collecting begins, on processes other than the owner, which is rank 0; the process is asked for its rank anew.
  void SetActive();
  bool IsActive() const { return active_; }
  bool IsOwner() const { return isOwner_; }
  int32_t GetOwnerRank() const { return ownerRank_; }
  bool IsCollecting() const { return active_ && !isOwner_; }

  // Appends a record; false when there is no memory for it.  Arrays as acd_error_c takes them, the print flag as a record
  // holds it: any other value counts as 0.
  bool AddDiagnostic(int32_t code, acd_TypeClass typeClass, const int32_t* ints, const double* reals,
                     const char* const* strings, const int32_t* nodes, const int32_t* elements, int32_t printFlag);

  // The payload of the next record from a source, valid until the next call, or null when the source has sent its
  // terminator.  Lengths are checked: what does not fit into what was received is an internal error and ends the source.
  const char* NextRecord(int32_t source, int32_t tag);

  // Unpacks a record, given as NextRecord gives it: the payload, with the word of its length before it, which is read.  The
  // arrays are long enough for its code.  Strings are copied into buffers made with new char[],
  // which the caller deletes.  False, with nothing stored but code and class, when the record does not hold what its code
  // asks for.
  static bool ExtractDiagnostic(const char* record, int32_t& code, int32_t* ints, double* reals, char** strings,
                                int32_t* nodes, int32_t* elements, int32_t& printFlag, acd_TypeClass& typeClass,
                                int32_t& stringCount);

  // Sends all blocks and the terminator, and deletes the blocks; does nothing when this process is the destination.
  void SendBlocks(int32_t destination, int32_t tag);

  // Takes over the records of another handler of this process, whose blocks are deleted: copies them when this handler is
  // collecting, files them otherwise.  The other thread must not be reporting.
  void Consolidate(acd_block_handler& other);

private:
  bool receiveBlock(int32_t source, int32_t tag);
  void endSource();
  void rejectSource(int32_t source, int32_t tag, const char* reason);

  int32_t ownerRank_ = 0;
  bool active_ = false, isOwner_;
  char* receiveBuffer_ = nullptr;
  int32_t receiveLength_ = 0; // capacity of the buffer, 0 when no block is awaited
  int32_t receiveValid_ = 0;  // bytes of the block in the buffer
  int32_t readPosition_ = 0;  // of the next record in them
};

// The handler of the calling thread: made inactive on first use, deleted at the end of the thread or by acd_finalize
// together with what it still holds.  After that the thread's next use makes another one, which is inactive.
template <>
__attribute__((visibility("default"))) acd_block_handler& thr_ThreadSingleton<acd_block_handler>::Instance();
