// A list of byte blocks that is filled piece by piece and travels between processes.
#pragma once

#include "host_service.h"

#include <cstdint>

// A piece never crosses blocks: what does not fit into the current block begins a new one, and a piece longer than the
// capacity has a block of its own.  Blocks are counted from 0.
class SA_HOST_SERVICE dmpC_DataHandler {
public:
  explicit dmpC_DataHandler(int32_t blockCapacity);
  ~dmpC_DataHandler();
  dmpC_DataHandler(const dmpC_DataHandler&) = delete;
  dmpC_DataHandler& operator=(const dmpC_DataHandler&) = delete;

  // Room for `bytes` bytes at the end of the list, aligned to 4; valid until the next call of a member that is not const.
  // The content is undefined.  Null when `bytes` is negative.
  char* GetBuffer(int32_t bytes);

  int32_t GetNumBlocks() const;
  const char* GetBlock(int32_t block) const;  // null when there is none of the number
  int32_t GetBlockSize(int32_t block) const;  // bytes in use, 0 when there is none
  void Add(const char* block, int32_t bytes); // a copy as a new block
  // Copies the first bytes of a block; returns how many, at most `capacity`.
  int32_t Extract(int32_t block, char* destination, int32_t capacity) const;

  void Delete(int32_t block);            // frees its bytes; the others keep their numbers
  void DeleteAndCompress(int32_t block); // removes it; those after it move up
  void DeleteAll();                      // the list is empty

  // Whole blocks as messages of type 3; false when one could not be sent or received.
  bool Send(int32_t block, int32_t destination, int32_t tag);
  bool SendAll(int32_t destination, int32_t tag); // the number of blocks, then for each its size and its bytes
  bool Receive(int32_t bytes, int32_t source, int32_t tag); // one message of that length, added as a block
  bool ReceiveAll(int32_t source, int32_t tag);             // what SendAll sends, added

private:
  struct Blocks;
  Blocks* blocks_;
};
