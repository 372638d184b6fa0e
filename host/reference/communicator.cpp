// Ranks: the communicator that the library sees, over whatever transport the process has.
#include "communicator.h"

#include "dmpC_CommContainer.h"
#include "host_services.h"
#include "reference_host.h"

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

// Launchers tell their processes how many they are.
int launchedRanks() {
  for (const char* name : {"OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "MPI_LOCALNRANKS"})
    if (const char* const size = std::getenv(name)) return std::atoi(size);
  return 1;
}

// The library with the transport stands beside this one, or where the loader looks.
void* loadMpi() {
  Dl_info own{};
  if (dladdr(reinterpret_cast<void*>(&launchedRanks), &own) != 0 && own.dli_fname != nullptr) {
    const std::filesystem::path beside = std::filesystem::path(own.dli_fname).parent_path() / "libSharedAnalysisMpi.so";
    if (void* const library = dlopen(beside.c_str(), RTLD_NOW | RTLD_GLOBAL)) return library;
  }
  return dlopen("libSharedAnalysisMpi.so", RTLD_NOW | RTLD_GLOBAL);
}

} // namespace

Transport::Transport() = default;
Transport::~Transport() = default;

void setTransport(std::unique_ptr<Transport> transport) { ranks().transport = std::move(transport); }

int connectRanks() {
  if (ranks().transport || launchedRanks() < 2) return dmpC_CommContainer::GetCommunicator().GetSize();
  void* const library = loadMpi();
  const std::string why = library == nullptr ? dlerror() : "";
  void* const factory = library == nullptr ? nullptr : dlsym(library, "sharedanalysis_mpi_transport");
  if (factory == nullptr)
    throw std::runtime_error(
        "this process was launched on " + std::to_string(launchedRanks()) +
        " ranks, but libSharedAnalysisMpi.so cannot be used: " + (why.empty() ? "it has no transport" : why));
  setTransport(std::unique_ptr<Transport>(reinterpret_cast<Transport* (*)()>(factory)()));
  ranks().ended = false;
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
  return ranks().transport->send(data, bytes, destination, type, tag);
}

int64_t dmpC_Communicator::Receive(void* data, int64_t capacity, int32_t source, int32_t type, int32_t tag) {
  if (!ranks().transport || ranks().ended || source < 0 || source >= GetSize()) return -1;
  return ranks().transport->receive(data, capacity, source, type, tag);
}

int32_t DMPC_GETRANK(void) { return dmpC_CommContainer::GetCommunicator().GetRank(); }
void DMPC_TERMINATECOMM(const int32_t*) { ranks().ended = true; }
