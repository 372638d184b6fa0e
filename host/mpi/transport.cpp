// Messages over MPI.  A separate library, loaded by processes that a launcher has started only.
#include "communicator.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <list>
#include <memory>
#include <mpi.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include <zoltan_cpp.h>

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
      if (takeNext(source) < 0) return -1;
      if (nameOf(queue.back()) == name) wanted = std::prev(queue.end());
    }
    const int64_t bytes = static_cast<int64_t>(wanted->size()) - kNameBytes;
    if (bytes > 0 && bytes <= capacity) std::memcpy(data, wanted->data() + kNameBytes, static_cast<std::size_t>(bytes));
    spare_ = std::move(*wanted);
    queue.erase(wanted);
    return bytes;
  }

  Waiting waitForAny(int32_t type, int32_t tag) override {
    const Name name{type, tag};
    for (std::size_t source = 0; source < arrived_.size(); ++source)
      for (const Bytes& message : arrived_[source])
        if (nameOf(message) == name) return waiting(static_cast<int32_t>(source), message);
    for (;;) {
      const int32_t source = takeNext(MPI_ANY_SOURCE);
      if (source < 0) return {};
      const Bytes& message = arrived_[static_cast<std::size_t>(source)].back();
      if (nameOf(message) == name) return waiting(source, message);
    }
  }

  // Recursive bisection of the coordinates: as many nodes on either side of each plane.
  bool partition(const std::vector<double>& points, std::vector<int32_t>& ranks) override {
    float version = 0;
    if (Zoltan_Initialize(0, nullptr, &version) != ZOLTAN_OK) return false;
    const std::unique_ptr<Zoltan> zoltan = std::make_unique<Zoltan>(world_);
    for (const auto& [key, value] : {std::pair{"DEBUG_LEVEL", "0"}, // first: it also speaks of the others
                                     {"LB_METHOD", "RCB"},
                                     {"NUM_GID_ENTRIES", "2"},
                                     {"NUM_LID_ENTRIES", "0"},
                                     {"OBJ_WEIGHT_DIM", "0"},
                                     {"RETURN_LISTS", "PART"},
                                     {"RCB_RECTILINEAR_BLOCKS", "0"},
                                     {"IMBALANCE_TOL", "1.01"}})
      zoltan->Set_Param(key, value);
    Points own{points, rank_};
    zoltan->Set_Num_Obj_Fn(Points::count, &own);
    zoltan->Set_Obj_List_Fn(Points::list, &own);
    zoltan->Set_Num_Geom_Fn(Points::dimensions, &own);
    zoltan->Set_Geom_Multi_Fn(Points::coordinates, &own);
    int isChanged = 0, idEntries = 0, localEntries = 0, imports = 0, exports = 0;
    ZOLTAN_ID_PTR importIds = nullptr, importLocal = nullptr, exportIds = nullptr, exportLocal = nullptr;
    int *importRanks = nullptr, *importParts = nullptr, *exportRanks = nullptr, *exportParts = nullptr;
    const int status =
        zoltan->LB_Partition(isChanged, idEntries, localEntries, imports, importIds, importLocal, importRanks,
                             importParts, exports, exportIds, exportLocal, exportRanks, exportParts);
    const bool isDone = status == ZOLTAN_OK || status == ZOLTAN_WARN;
    ranks.assign(points.size() / 3, rank_);
    // the list is in the order of the points, each with its place as the second word of its name
    for (int k = 0; isDone && k < exports; ++k) ranks[exportIds[2 * k + 1]] = exportParts[k];
    Zoltan::LB_Free_Part(&importIds, &importLocal, &importRanks, &importParts);
    Zoltan::LB_Free_Part(&exportIds, &exportLocal, &exportRanks, &exportParts);
    return isDone;
  }

  void abort(int32_t code) override { MPI_Abort(world_, code); }
  void waitAtMost(double seconds) override { longestWait_ = seconds; }

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

  static Waiting waiting(int32_t source, const Bytes& message) {
    return {source, static_cast<int64_t>(message.size()) - kNameBytes};
  }

  // What Zoltan asks of the points of a rank.
  struct Points {
    const std::vector<double>& all; // (3, points)
    int32_t rank;

    static int count(void* data, int* error) {
      *error = ZOLTAN_OK;
      return static_cast<int>(static_cast<Points*>(data)->all.size() / 3);
    }
    static void list(void* data, int, int, ZOLTAN_ID_PTR ids, ZOLTAN_ID_PTR, int, float*, int* error) {
      *error = ZOLTAN_OK;
      const Points& own = *static_cast<Points*>(data);
      for (std::size_t k = 0; k < own.all.size() / 3; ++k) {
        ids[2 * k] = static_cast<ZOLTAN_ID_TYPE>(own.rank);
        ids[2 * k + 1] = static_cast<ZOLTAN_ID_TYPE>(k);
      }
    }
    static int dimensions(void*, int* error) {
      *error = ZOLTAN_OK;
      return 3;
    }
    static void coordinates(void* data, int, int, int count, ZOLTAN_ID_PTR ids, ZOLTAN_ID_PTR, int, double* values,
                            int* error) {
      *error = ZOLTAN_OK;
      const Points& own = *static_cast<Points*>(data);
      for (int k = 0; k < count; ++k)
        for (int c = 0; c < 3; ++c) values[3 * k + c] = own.all[3 * static_cast<std::size_t>(ids[2 * k + 1]) + c];
    }
  };

  // The next message of a rank, or of any, to the end of its queue; the rank, -1 when nothing can be received.
  int32_t takeNext(int source) {
    MPI_Message message = MPI_MESSAGE_NULL;
    MPI_Status status;
    int bytes = 0;
    if (!findNext(source, message, status) || MPI_Get_count(&status, MPI_BYTE, &bytes) != MPI_SUCCESS) return -1;
    Bytes next = std::move(spare_);
    next.resize(static_cast<std::size_t>(bytes));
    if (MPI_Mrecv(next.data(), bytes, MPI_BYTE, &message, MPI_STATUS_IGNORE) != MPI_SUCCESS || bytes < kNameBytes)
      return -1;
    arrived_[static_cast<std::size_t>(status.MPI_SOURCE)].push_back(std::move(next));
    return status.MPI_SOURCE;
  }

  // Waits for it; false when it does not come in time.
  bool findNext(int source, MPI_Message& message, MPI_Status& status) const {
    if (longestWait_ <= 0) return MPI_Mprobe(source, kMpiTag, world_, &message, &status) == MPI_SUCCESS;
    // most messages come soon: for that long nothing is lost by looking all the time
    constexpr double kSoon = 0.01, kStopped = 1;
    constexpr std::chrono::microseconds kNap{200};
    double start = MPI_Wtime(), last = start;
    for (;;) {
      int isThere = 0;
      if (MPI_Improbe(source, kMpiTag, world_, &isThere, &message, &status) != MPI_SUCCESS) return false;
      if (isThere != 0) return true;
      const double now = MPI_Wtime();
      if (now - last > kStopped) start += now - last; // this process was stopped itself: that is nobody's fault
      const double waited = (last = now) - start;
      if (waited > longestWait_) return false;
      if (waited > kSoon)
        std::this_thread::sleep_for(kNap);
      else
        std::this_thread::yield();
    }
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
  double longestWait_ = 0; // seconds; 0 is forever
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
