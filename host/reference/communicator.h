// Transport of messages between the processes of a job; one process alone has none.
#pragma once

#include "host_service.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace sharedanalysis::host {

// Messages between two ranks arrive in the order in which they were sent.  Used by one thread at a time.
class SA_HOST_SERVICE Transport {
public:
  Transport();
  virtual ~Transport();
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;

  virtual int32_t rank() const = 0;
  virtual int32_t size() const = 0;
  virtual int64_t longestMessage() const = 0; // bytes
  // Takes a copy: the message may leave later, and any number may be on their way.
  virtual bool send(const void* data, int64_t bytes, int32_t destination, int32_t type, int32_t tag) = 0;
  // As dmpC_Communicator::Receive.
  virtual int64_t receive(void* data, int64_t capacity, int32_t source, int32_t type, int32_t tag) = 0;
  // Waits for a message of any rank with the type and tag, and leaves it where it is; source -1 when nothing can be received.
  struct Waiting {
    int32_t source = -1;
    int64_t bytes = 0;
  };
  virtual Waiting waitForAny(int32_t type, int32_t tag) = 0;
  // A rank for each point of this rank, (3, points), so that all ranks have about as many points and those of one rank lie together.
  // All ranks call it; false when there is no such partition.
  virtual bool partition(const std::vector<double>& points, std::vector<int32_t>& ranks) = 0;
  // Ends the processes of all ranks at once, with an exit code.
  virtual void abort(int32_t code) = 0;
  // A message that has not come after so many seconds does not come: nothing can be received.  0, as at the start, waits forever.
  virtual void waitAtMost(double seconds) = 0;
};

// That of the process; null when it is alone.
SA_HOST_SERVICE Transport* transport();
// The transport of the process from now on; null is one process alone, as at the start.
SA_HOST_SERVICE void setTransport(std::unique_ptr<Transport> transport);

} // namespace sharedanalysis::host
