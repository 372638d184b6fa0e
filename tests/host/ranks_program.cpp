// Run on ranks by a test, in a directory of its own: messages keep their order and size; no diagnostic of a million is lost.
#include "acd.h"
#include "dia_Codes.h"
#include "dmpC_CommContainer.h"
#include "glo.h"
#include "host_services.h"
#include "reference_host.h"
#include "tests/support/database.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace sharedanalysis;

int faults = 0;
void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "rank %d: %s\n", dmpC_CommContainer::GetCommunicator().GetRank(), what);
  ++faults;
}

// Everyone sends to everyone before anyone receives.
void exchange() {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  const int32_t rank = communicator.GetRank(), size = communicator.GetSize();
  constexpr int count = 200;
  const std::vector<int32_t> large(1 << 20, rank); // 4 MB: far beyond what a transport keeps by itself
  for (int32_t other = 0; other < size; ++other) {
    if (other == rank) continue;
    for (int32_t k = 0; k < count; ++k) expect(communicator.Send(&k, sizeof k, other, 3, 1), "a word was not sent");
    expect(communicator.Send(large.data(), 4 << 20, other, 3, 2), "a large message was not sent");
    expect(communicator.Send(nullptr, 0, other, 4, 1), "an empty message was not sent");
  }
  std::vector<int32_t> received(1 << 20);
  for (int32_t other = 0; other < size; ++other) {
    if (other == rank) continue;
    // types and tags are told apart, whatever came first
    expect(communicator.Receive(nullptr, 0, other, 4, 1) == 0, "an empty message has no length 0");
    expect(communicator.Receive(received.data(), 4 << 20, other, 3, 2) == 4 << 20 && received.back() == other,
           "a large message came wrong");
    for (int32_t k = 0; k < count - 1; ++k) {
      int32_t word = -1;
      expect(communicator.Receive(&word, sizeof word, other, 3, 1) == 4 && word == k, "words are out of order");
    }
    char small[2] = {'o', 'k'};
    expect(communicator.Receive(small, 2, other, 3, 1) == 4 && small[0] == 'o', "a long message was stored");
  }
  // any numbers are types and tags
  constexpr int32_t names[][2] = {{INT32_MAX, INT32_MIN}, {-1, 0}, {0, 4096}, {1, 0}};
  for (const auto& [type, tag] : names)
    expect(communicator.Send(&type, sizeof type, (rank + 1) % size, type, tag), "a type or tag is not taken");
  for (int k = 3; k >= 0; --k) {
    int32_t type = 0;
    communicator.Receive(&type, sizeof type, (rank + size - 1) % size, names[k][0], names[k][1]);
    expect(type == names[k][0], "types and tags are confused");
  }
  expect(!communicator.Send(&rank, 4, size, 3, 0) && !communicator.Send(&rank, 4, -1, 3, 0), "sent to nobody");
}

void diagnose(const std::filesystem::path& directory) {
  const int32_t rank = dmpC_CommContainer::GetCommunicator().GetRank();
  const int32_t size = dmpC_CommContainer::GetCommunicator().GetSize();
  const host::JobFiles files = host::openJob("ranks" + std::to_string(rank), directory);
  int32_t components = 0;
  Shared_Analysis_XP_initialize(&components);
  acd_handler_setactive_xpl_c();
  const int32_t all = size > 2 ? 1000000 : 100000, own = all / size;
  const auto start = std::chrono::steady_clock::now();
  for (int32_t k = 1; k <= own; ++k)
    acd_error_xpl_c(dia_Codes::ExcessiveDistortion, rank, nullptr, nullptr, nullptr, nullptr, &k);
  acd_comm_blocks();
  const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
  if (rank == 0) expect(acd_get_numerrors_xpl_c() == own * size, "diagnostics were lost");
  Shared_Analysis_XP_finalize(&components);
  // longer than MPI can count: refused before a byte is read
  expect(!dmpC_CommContainer::GetCommunicator().Send(&rank, int64_t{3} << 30, (rank + 1) % size, 3, 1),
         "3 GiB were sent");
  host::closeJob();
  std::ifstream messages(files.message);
  const std::string text{std::istreambuf_iterator<char>(messages), {}};
  expect(text.find("A message of 3221225472 bytes to rank") != std::string::npos,
         "a message that is too long is not told");
  if (rank != 0) return;
  test::Database database(directory / "ranks0.diagnostics.sqlite");
  expect(database.number("SELECT count(*) FROM diagnostics") == all, "the database has not all of them");
  for (int32_t other = 0; other < size; ++other)
    expect(database.number(
               "SELECT sum(label) FROM elements e JOIN diagnostics d ON d.id = e.diagnostic WHERE d.domain = " +
               std::to_string(other)) == static_cast<int64_t>(own) * (own + 1) / 2,
           "elements of a rank are wrong");
  // ranks follow each other, each in the order of recording
  expect(
      database.number("SELECT count(*) FROM (SELECT domain, lag(domain) OVER (ORDER BY id) AS before FROM diagnostics) "
                      "WHERE domain < before") == 0,
      "the order of the ranks is wrong");
  std::printf("%d diagnostics of %d ranks recorded and stored in %.2f s\n", all, size, spent.count());
}

// After the end of communication nothing is sent, and what has arrived stays where it is.
void endCommunication() {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  const int32_t rank = communicator.GetRank(), code = 1;
  int32_t word = 0;
  expect(communicator.Send(&rank, 4, rank, 3, 2), "nothing is sent before the end");
  DMPC_TERMINATECOMM(&code);
  expect(communicator.Receive(&word, 4, rank, 3, 2) == -1 && !communicator.Send(&rank, 4, rank, 3, 2),
         "the end of communication ends nothing");
}

} // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 2) throw std::runtime_error("usage: ranks_program DIRECTORY");
    if (host::connectRanks() < 2) throw std::runtime_error("not on ranks");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
  exchange();
  diagnose(argv[1]);
  endCommunication();
  host::disconnectRanks();
  return faults == 0 ? 0 : 1;
}
