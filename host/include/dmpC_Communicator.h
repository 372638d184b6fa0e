// Point-to-point messages between the processes of a distributed analysis.
#pragma once

#include "host_service.h"

#include <cstdint>

// Messages between two ranks arrive in the order in which they were sent.  A message carries a type and a tag; receiver and
// sender name the same ones.  One thread of a process communicates at a time; rank and size any thread asks for.
class SA_HOST_SERVICE dmpC_Communicator {
public:
  int32_t GetRank() const; // 0 where there is but one process
  int32_t GetSize() const; // 1 where there is but one process

  // Returns false when the message could not be sent.  It may return before the message has arrived.
  bool Send(const void* data, int64_t bytes, int32_t destination, int32_t type, int32_t tag);
  // Waits for a message.  Returns its length in bytes, also when it is longer than `capacity`, of which then nothing is
  // stored; or -1 when nothing can be received.
  int64_t Receive(void* data, int64_t capacity, int32_t source, int32_t type, int32_t tag);

protected:
  dmpC_Communicator() = default;
  ~dmpC_Communicator() = default;
  dmpC_Communicator(const dmpC_Communicator&) = delete;
  dmpC_Communicator& operator=(const dmpC_Communicator&) = delete;
};
