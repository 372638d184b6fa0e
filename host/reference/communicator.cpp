// The communicator of the library, over the transport of the process.
#include "communicator.h"

#include "dmpC_CommContainer.h"
#include "host_services.h"
#include "reference_host.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace sharedanalysis::host {
namespace {

struct Ranks {
  std::unique_ptr<Transport> transport;
  std::atomic<bool> ended{false}; // communication was ended by DMPC_TERMINATECOMM
};
Ranks& ranks() {
  static Ranks& instance = *new Ranks;
  return instance;
}

class Communicator : public dmpC_Communicator {
public:
  Communicator() = default;
};

// How many processes the launcher says it has started; unknown where it gives the rank alone.
constexpr int kUnknown = 0;
int launchedRanks() {
  for (const char* name : {"OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "MV2_COMM_WORLD_SIZE"})
    if (const char* const size = std::getenv(name)) return std::max(std::atoi(size), 1);
  return std::getenv("PMIX_RANK") != nullptr ? kUnknown : 1;
}

// The library with the transport stands beside this one, or where the loader looks.
void* loadMpi() {
  constexpr const char* kName = "libSharedAnalysisMpi.so";
  Dl_info own{};
  if (dladdr(reinterpret_cast<void*>(&launchedRanks), &own) != 0 && own.dli_fname != nullptr) {
    const std::filesystem::path beside = std::filesystem::path(own.dli_fname).parent_path() / kName;
    std::error_code error;
    // the library exists but cannot be loaded: report why
    if (std::filesystem::exists(beside, error)) return dlopen(beside.c_str(), RTLD_NOW | RTLD_GLOBAL);
  }
  return dlopen(kName, RTLD_NOW | RTLD_GLOBAL);
}

using Factory = Transport* (*)();

Factory transportFactory() {
  void* const library = loadMpi();
  void* const factory = library == nullptr ? nullptr : dlsym(library, "sharedanalysis_mpi_transport");
  if (factory != nullptr) return reinterpret_cast<Factory>(factory);
  const char* const reason = dlerror();
  const std::string count = launchedRanks() == kUnknown ? "ranks" : std::to_string(launchedRanks()) + " ranks";
  throw std::runtime_error("this process was launched on " + count + ", but libSharedAnalysisMpi.so cannot be used: " +
                           (reason == nullptr ? "it has no transport" : reason));
}

// Messages longer than the transport takes are the sender's mistake: it learns which one.
void reportTooLong(int64_t bytes, int32_t destination) {
  const std::string text = "A message of " + std::to_string(bytes) + " bytes to rank " + std::to_string(destination) +
                           " is longer than the longest one, " + std::to_string(ranks().transport->longestMessage()) +
                           " bytes";
  LFC_XUT_ERRMSG(text.c_str(), static_cast<int64_t>(text.size()));
}

} // namespace

Transport::Transport() = default;
Transport::~Transport() = default;

Transport* transport() { return ranks().transport.get(); }

void setTransport(std::unique_ptr<Transport> transport) { ranks().transport = std::move(transport); }

int connectRanks() {
  if (!ranks().transport && launchedRanks() != 1) {
    setTransport(std::unique_ptr<Transport>(transportFactory()()));
    ranks().ended = false;
  }
  return dmpC_CommContainer::GetCommunicator().GetSize();
}

void disconnectRanks() { ranks().transport.reset(); }

void abortRanks(int code) {
  if (ranks().transport) ranks().transport->abort(code);
}

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

dmpC_Communicator& dmpC_CommContainer::GetCommunicator() {
  static Communicator communicator;
  return communicator;
}

int32_t dmpC_Communicator::GetRank() const { return ranks().transport ? ranks().transport->rank() : 0; }
int32_t dmpC_Communicator::GetSize() const { return ranks().transport ? ranks().transport->size() : 1; }

bool dmpC_Communicator::Send(const void* data, int64_t bytes, int32_t destination, int32_t type, int32_t tag) {
  if (!ranks().transport || ranks().ended || bytes < 0 || destination < 0 || destination >= GetSize()) return false;
  if (bytes > ranks().transport->longestMessage()) return reportTooLong(bytes, destination), false;
  return ranks().transport->send(data, bytes, destination, type, tag);
}

int64_t dmpC_Communicator::Receive(void* data, int64_t capacity, int32_t source, int32_t type, int32_t tag) {
  if (!ranks().transport || ranks().ended || source < 0 || source >= GetSize()) return -1;
  return ranks().transport->receive(data, capacity, source, type, tag);
}

int32_t DMPC_GETRANK(void) { return dmpC_CommContainer::GetCommunicator().GetRank(); }
void DMPC_TERMINATECOMM(const int32_t*) { ranks().ended = true; }
