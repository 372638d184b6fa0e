// The communicator of one process, the block lists, and messages between real ranks.
#include "dmpC_CommContainer.h"
#include "dmpC_DataHandler.h"
#include "host_services.h"
#include "reference_host.h"
#include "tests/support/files.h"
#include "tests/support/program.h"

namespace {

using namespace sharedanalysis;

TEST(Communicator, OneProcessHasNobodyToTalkTo) {
  dmpC_Communicator& communicator = dmpC_CommContainer::GetCommunicator();
  EXPECT_EQ(host::connectRanks(), 1);
  EXPECT_EQ(communicator.GetRank(), 0);
  EXPECT_EQ(communicator.GetSize(), 1);
  int32_t word = 7;
  for (int32_t rank : {0, 1}) EXPECT_FALSE(communicator.Send(&word, sizeof word, rank, 3, 0));
  EXPECT_EQ(communicator.Receive(&word, sizeof word, 1, 3, 0), -1);
  EXPECT_EQ(word, 7);
  host::abortRanks(3); // ends nothing
  host::disconnectRanks();
}

// All blocks, each with a bar behind it.
std::string blocksOf(const dmpC_DataHandler& handler) {
  std::string text;
  for (int32_t block = 0; block < handler.GetNumBlocks(); ++block)
    text += std::string(handler.GetBlock(block), handler.GetBlock(block) + handler.GetBlockSize(block)) + "|";
  return text;
}

TEST(DataHandler, PiecesNeverCrossBlocks) {
  dmpC_DataHandler handler(16);
  EXPECT_EQ(handler.GetNumBlocks(), 0);
  EXPECT_EQ(handler.GetBlock(0), nullptr);
  EXPECT_EQ(handler.GetBlockSize(-1), 0);
  EXPECT_EQ(handler.GetBuffer(-1), nullptr);
  const std::string large(40, 'x'); // has a block of its own
  for (const std::string& piece : {std::string("12345678"), std::string("abcdefgh"), std::string("next"), large})
    std::memcpy(handler.GetBuffer(static_cast<int32_t>(piece.size())), piece.data(), piece.size());
  handler.Add("added", 5);
  EXPECT_EQ(blocksOf(handler), "12345678abcdefgh|next|" + large + "|added|");
  for (int k = 0; k < 2; ++k) EXPECT_EQ(reinterpret_cast<uintptr_t>(handler.GetBuffer(3)) % 4, 0u); // stays aligned
}

TEST(DataHandler, BlocksAreTakenOutAndDeleted) {
  dmpC_DataHandler handler(64);
  for (const char* text : {"one.", "two.", "tri."}) handler.Add(text, 4);
  char bytes[9] = "........";
  EXPECT_EQ(handler.Extract(1, bytes, 3), 3);
  EXPECT_EQ(std::string(bytes, 4), "two.");
  EXPECT_EQ(handler.Extract(7, bytes, 3), 0);
  handler.Delete(0); // the others keep their numbers
  EXPECT_EQ(blocksOf(handler), "|two.|tri.|");
  handler.DeleteAndCompress(0);
  EXPECT_EQ(blocksOf(handler), "two.|tri.|");
  handler.Delete(1);
  ASSERT_NE(handler.GetBuffer(4), nullptr); // a deleted block takes nothing more
  EXPECT_EQ(handler.GetNumBlocks(), 3);
  handler.DeleteAll();
  EXPECT_EQ(handler.GetNumBlocks(), 0);
}

#ifdef SA_RANKS_PROGRAM
TEST(Ranks, OrderLargeMessagesAndAMillionDiagnostics) {
  if (!test::setUpRanks()) GTEST_SKIP() << "mpirun not found";
  const test::TemporaryDirectory directory;
  for (const char* ranks : {"2", "4"}) {
    const test::Outcome outcome = test::shell(std::string("timeout 100 mpirun --oversubscribe -n ") + ranks +
                                              " " SA_RANKS_PROGRAM " " + directory.path().string());
    EXPECT_EQ(outcome.code, 0) << ranks << " ranks: " << outcome.err;
    std::fputs(outcome.out.c_str(), stdout);
  }
}

// A host library that stands alone, as on a machine that has no MPI.
TEST(Ranks, WithoutTheMpiLibraryALaunchSaysWhatIsMissing) {
  const test::TemporaryDirectory directory;
  std::filesystem::copy(SA_HOST_LIBRARY, directory.path());
  const auto answer = [&](const std::string& environment) {
    const test::Outcome outcome =
        test::shell(environment + "LD_LIBRARY_PATH=" + directory.path().string() + " " SA_RANKS_PROGRAM " .");
    EXPECT_EQ(outcome.code, 2) << environment;
    return outcome.err;
  };
  EXPECT_EQ(answer("OMPI_COMM_WORLD_SIZE=3 ")
                .find("this process was launched on 3 ranks, but libSharedAnalysisMpi.so "
                      "cannot be used: libSharedAnalysisMpi.so: cannot open shared object"),
            0U);
  EXPECT_EQ(answer("PMIX_RANK=0 ").find("this process was launched on ranks, but "), 0U);
  EXPECT_EQ(answer("OMPI_COMM_WORLD_SIZE=1 "), "not on ranks\n");
}
#endif

} // namespace
