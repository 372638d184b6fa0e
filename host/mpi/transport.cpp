// Messages over MPI, in a library of its own: only processes that were launched on ranks load it.
#include "communicator.h"

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
    int* bound = nullptr;
    int isSet = 0;
    MPI_Comm_get_attr(world_, MPI_TAG_UB, &bound, &isSet);
    if (isSet != 0) largestTag_ = *bound;
  }

  // What is on its way arrives before the end: everyone finishes together.
  ~MpiTransport() override {
    for (Pending& pending : pending_) MPI_Wait(&pending.request, MPI_STATUS_IGNORE);
    MPI_Comm_free(&world_);
    if (owns_) MPI_Finalize();
  }

  int32_t rank() const override { return rank_; }
  int32_t size() const override { return size_; }

  bool send(const void* data, int64_t bytes, int32_t destination, int32_t type, int32_t tag) override {
    const int mpiTag = tagOf(type, tag);
    if (bytes > std::numeric_limits<int>::max() || mpiTag < 0) return false;
    forgetSent();
    const char* const first = static_cast<const char*>(data);
    Pending& pending = pending_.emplace_back();
    pending.bytes.assign(first, first + bytes);
    if (MPI_Isend(pending.bytes.data(), static_cast<int>(bytes), MPI_BYTE, destination, mpiTag, world_,
                  &pending.request) == MPI_SUCCESS)
      return true;
    pending_.pop_back();
    return false;
  }

  int64_t receive(void* data, int64_t capacity, int32_t source, int32_t type, int32_t tag) override {
    const int mpiTag = tagOf(type, tag);
    MPI_Message message = MPI_MESSAGE_NULL;
    MPI_Status status;
    int bytes = 0;
    if (mpiTag < 0 || MPI_Mprobe(source, mpiTag, world_, &message, &status) != MPI_SUCCESS ||
        MPI_Get_count(&status, MPI_BYTE, &bytes) != MPI_SUCCESS)
      return -1;
    if (bytes <= capacity)
      return MPI_Mrecv(data, bytes, MPI_BYTE, &message, MPI_STATUS_IGNORE) == MPI_SUCCESS ? bytes : -1;
    std::vector<char> dropped(static_cast<std::size_t>(bytes)); // too long for the receiver, who learns its length
    return MPI_Mrecv(dropped.data(), bytes, MPI_BYTE, &message, MPI_STATUS_IGNORE) == MPI_SUCCESS ? bytes : -1;
  }

  void abort(int code) override { MPI_Abort(world_, code); }

private:
  struct Pending {
    std::vector<char> bytes;
    MPI_Request request = MPI_REQUEST_NULL;
  };

  // Types and tags share the tags of MPI.
  int tagOf(int32_t type, int32_t tag) const {
    constexpr int kTags = 4096;
    if (type < 0 || tag < 0 || tag >= kTags || type > largestTag_ / kTags - 1) return -1;
    return type * kTags + tag;
  }

  void forgetSent() {
    for (auto pending = pending_.begin(); pending != pending_.end();) {
      int isSent = 0;
      MPI_Test(&pending->request, &isSent, MPI_STATUS_IGNORE);
      pending = isSent != 0 ? pending_.erase(pending) : std::next(pending);
    }
  }

  MPI_Comm world_ = MPI_COMM_NULL;
  bool owns_ = false;
  int rank_ = 0, size_ = 1, largestTag_ = 32767;
  std::list<Pending> pending_;
};

} // namespace
} // namespace sharedanalysis::host

extern "C" __attribute__((visibility("default"))) sharedanalysis::host::Transport* sharedanalysis_mpi_transport() {
  return new sharedanalysis::host::MpiTransport;
}
