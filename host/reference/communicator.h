// Transport of messages between the processes of a job; one process alone has none.
#pragma once

#include "host_service.h"

#include <cstdint>
#include <memory>

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
  // Ends the processes of all ranks at once, with an exit code.
  virtual void abort(int32_t code) = 0;
};

// The transport of the process from now on; null is one process alone, as at the start.
SA_HOST_SERVICE void setTransport(std::unique_ptr<Transport> transport);

} // namespace sharedanalysis::host
