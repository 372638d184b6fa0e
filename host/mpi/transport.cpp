// Messages over MPI, in a library of its own: only processes that were launched on ranks load it.
#include "communicator.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <list>
#include <mpi.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace sharedanalysis::host {
namespace {

void check(int result, const char* what) {
  if (result != MPI_SUCCESS) throw std::runtime_error(std::string("MPI: ") + what + " failed");
}

// Key of a message: type and tag do not both fit an MPI tag.
struct Name {
  int32_t type, tag;
  bool operator==(const Name&) const = default;
};

class MpiTransport : public Transport {
public:
  MpiTransport() {
    int isInitialised = 0;
    MPI_Initialized(&isInitialised);
    if (isInitialised == 0) {
      int provided = 0;
      check(MPI_Init_thread(nullptr, nullptr, MPI_THREAD_SERIALIZED, &provided), "MPI_Init_thread");
      owns_ = true;
    }
    check(MPI_Comm_dup(MPI_COMM_WORLD, &world_), "MPI_Comm_dup");
    MPI_Comm_set_errhandler(world_, MPI_ERRORS_RETURN);
    MPI_Comm_rank(world_, &rank_);
    MPI_Comm_size(world_, &size_);
    arrived_.resize(static_cast<std::size_t>(size_));
  }

  // Collective: waits for pending messages of all ranks.
  ~MpiTransport() override {
    for (Message& message : sent_) MPI_Wait(&message.request, MPI_STATUS_IGNORE);
    MPI_Comm_free(&world_);
    if (owns_) MPI_Finalize();
  }

  int32_t rank() const override { return rank_; }
  int32_t size() const override { return size_; }
  int64_t longestMessage() const override { return std::numeric_limits<int>::max() - kNameBytes; }

  bool send(const void* data, int64_t bytes, int32_t destination, int32_t type, int32_t tag) override {
    forgetSent();
    const Name name{type, tag};
    Message& message = sent_.emplace_back();
    message.bytes.resize(static_cast<std::size_t>(kNameBytes + bytes));
    std::memcpy(message.bytes.data(), &name, sizeof name);
    if (bytes > 0) std::memcpy(message.bytes.data() + kNameBytes, data, static_cast<std::size_t>(bytes));
    if (MPI_Isend(message.bytes.data(), static_cast<int>(message.bytes.size()), MPI_BYTE, destination, kMpiTag, world_,
                  &message.request) == MPI_SUCCESS)
      return true;
    sent_.pop_back();
    return false;
  }

  int64_t receive(void* data, int64_t capacity, int32_t source, int32_t type, int32_t tag) override {
    const Name name{type, tag};
    std::list<Bytes>& queue = arrived_[static_cast<std::size_t>(source)];
    auto wanted =
        std::find_if(queue.begin(), queue.end(), [&](const Bytes& message) { return nameOf(message) == name; });
    // messages with other keys stay queued in the order of sending
    while (wanted == queue.end()) {
      if (!takeNext(source)) return -1;
      if (nameOf(queue.back()) == name) wanted = std::prev(queue.end());
    }
    const int64_t bytes = static_cast<int64_t>(wanted->size()) - kNameBytes;
    if (bytes > 0 && bytes <= capacity) std::memcpy(data, wanted->data() + kNameBytes, static_cast<std::size_t>(bytes));
    spare_ = std::move(*wanted);
    queue.erase(wanted);
    return bytes;
  }

  void abort(int32_t code) override { MPI_Abort(world_, code); }

private:
  using Bytes = std::vector<char>; // the name, then the message
  static constexpr int64_t kNameBytes = sizeof(Name);
  static constexpr int kMpiTag = 1;

  struct Message {
    Bytes bytes;
    MPI_Request request = MPI_REQUEST_NULL;
  };

  static Name nameOf(const Bytes& message) {
    Name name{};
    std::memcpy(&name, message.data(), sizeof name);
    return name;
  }

  // The next message of a rank to the end of its queue.
  bool takeNext(int32_t source) {
    MPI_Message message = MPI_MESSAGE_NULL;
    MPI_Status status;
    int bytes = 0;
    if (MPI_Mprobe(source, kMpiTag, world_, &message, &status) != MPI_SUCCESS ||
        MPI_Get_count(&status, MPI_BYTE, &bytes) != MPI_SUCCESS)
      return false;
    Bytes next = std::move(spare_);
    next.resize(static_cast<std::size_t>(bytes));
    if (MPI_Mrecv(next.data(), bytes, MPI_BYTE, &message, MPI_STATUS_IGNORE) != MPI_SUCCESS || bytes < kNameBytes)
      return false;
    arrived_[static_cast<std::size_t>(source)].push_back(std::move(next));
    return true;
  }

  void forgetSent() {
    for (auto message = sent_.begin(); message != sent_.end();) {
      int isSent = 0;
      MPI_Test(&message->request, &isSent, MPI_STATUS_IGNORE);
      message = isSent != 0 ? sent_.erase(message) : std::next(message);
    }
  }

  MPI_Comm world_ = MPI_COMM_NULL;
  bool owns_ = false;
  int rank_ = 0, size_ = 1;
  std::list<Message> sent_;
  std::vector<std::list<Bytes>> arrived_; // of each rank, not yet asked for
  Bytes spare_;                           // memory of the message before, for the next one
};

} // namespace
} // namespace sharedanalysis::host

extern "C" __attribute__((visibility("default"))) sharedanalysis::host::Transport* sharedanalysis_mpi_transport() {
  return new sharedanalysis::host::MpiTransport;
}
