// Lists of byte blocks.
#include "dmpC_DataHandler.h"

#include "dmpC_CommContainer.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr int32_t kMessageType = 3, kWord = sizeof(int32_t);

struct Block {
  std::unique_ptr<char[]> bytes;
  int32_t capacity = 0, used = 0;
};

int32_t aligned(int32_t bytes) { return bytes > INT32_MAX - 3 ? bytes : (bytes + 3) / 4 * 4; }

} // namespace

struct dmpC_DataHandler::Blocks {
  int32_t capacity;
  std::vector<Block> list;

  bool has(int32_t block) const { return block >= 0 && static_cast<std::size_t>(block) < list.size(); }
  Block& at(int32_t block) { return list[static_cast<std::size_t>(block)]; }

  // A new block at the end with room for `bytes`; null without memory.
  Block* extend(int32_t bytes) {
    Block block;
    block.bytes.reset(new (std::nothrow) char[static_cast<std::size_t>(std::max(bytes, 1))]);
    if (!block.bytes) return nullptr;
    block.capacity = bytes;
    try {
      list.push_back(std::move(block));
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    return &list.back();
  }
};

dmpC_DataHandler::dmpC_DataHandler(int32_t blockCapacity) : blocks_(new Blocks{std::max(blockCapacity, 0), {}}) {}

dmpC_DataHandler::~dmpC_DataHandler() { delete blocks_; }

char* dmpC_DataHandler::GetBuffer(int32_t bytes) {
  if (bytes < 0) return nullptr;
  Block* last = blocks_->list.empty() ? nullptr : &blocks_->list.back();
  // a deleted block has no bytes left to add to
  if (last == nullptr || !last->bytes || last->capacity - last->used < bytes) {
    last = blocks_->extend(std::max(blocks_->capacity, aligned(bytes)));
    if (last == nullptr) return nullptr;
  }
  char* const buffer = last->bytes.get() + last->used;
  last->used += std::min(aligned(bytes), last->capacity - last->used);
  return buffer;
}

int32_t dmpC_DataHandler::GetNumBlocks() const { return static_cast<int32_t>(blocks_->list.size()); }

const char* dmpC_DataHandler::GetBlock(int32_t block) const {
  return blocks_->has(block) ? blocks_->at(block).bytes.get() : nullptr;
}

int32_t dmpC_DataHandler::GetBlockSize(int32_t block) const {
  return blocks_->has(block) ? blocks_->at(block).used : 0;
}

void dmpC_DataHandler::Add(const char* block, int32_t bytes) {
  Block* const added = bytes < 0 ? nullptr : blocks_->extend(bytes);
  if (added == nullptr) return;
  if (bytes > 0) std::memcpy(added->bytes.get(), block, static_cast<std::size_t>(bytes));
  added->used = bytes;
}

int32_t dmpC_DataHandler::Extract(int32_t block, char* destination, int32_t capacity) const {
  const int32_t bytes = std::min(GetBlockSize(block), std::max(capacity, 0));
  if (bytes > 0) std::memcpy(destination, GetBlock(block), static_cast<std::size_t>(bytes));
  return bytes;
}

void dmpC_DataHandler::Delete(int32_t block) {
  if (blocks_->has(block)) blocks_->at(block) = Block();
}

void dmpC_DataHandler::DeleteAndCompress(int32_t block) {
  if (blocks_->has(block)) blocks_->list.erase(blocks_->list.begin() + block);
}

void dmpC_DataHandler::DeleteAll() { blocks_->list.clear(); }

bool dmpC_DataHandler::Send(int32_t block, int32_t destination, int32_t tag) {
  return blocks_->has(block) && dmpC_CommContainer::GetCommunicator().Send(GetBlock(block), GetBlockSize(block),
                                                                           destination, kMessageType, tag);
}

bool dmpC_DataHandler::SendAll(int32_t destination, int32_t tag) {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  const int32_t count = GetNumBlocks();
  bool sent = communicator.Send(&count, kWord, destination, kMessageType, tag);
  for (int32_t block = 0; block < count && sent; ++block) {
    const int32_t size = GetBlockSize(block);
    sent = communicator.Send(&size, kWord, destination, kMessageType, tag) && Send(block, destination, tag);
  }
  return sent;
}

bool dmpC_DataHandler::Receive(int32_t bytes, int32_t source, int32_t tag) {
  Block* const block = bytes < 0 ? nullptr : blocks_->extend(bytes);
  if (block == nullptr) return false;
  block->used = bytes;
  if (dmpC_CommContainer::GetCommunicator().Receive(block->bytes.get(), bytes, source, kMessageType, tag) == bytes)
    return true;
  blocks_->list.pop_back();
  return false;
}

bool dmpC_DataHandler::ReceiveAll(int32_t source, int32_t tag) {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  int32_t count = 0, size = 0;
  if (communicator.Receive(&count, kWord, source, kMessageType, tag) != kWord || count < 0) return false;
  for (int32_t block = 0; block < count; ++block)
    if (communicator.Receive(&size, kWord, source, kMessageType, tag) != kWord || !Receive(size, source, tag))
      return false;
  return true;
}
