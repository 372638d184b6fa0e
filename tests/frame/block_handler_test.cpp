// Records, blocks and their way to the owner.
#include "acd.h"
#include "acd_block_handler.h"
#include "host_services.h"
#include "tests/support/random.h"
#include "tests/support/recording_diagnostics.h"
#include "tests/support/threads.h"

namespace {

using namespace sharedanalysis::test;

// Bytes as another rank might have sent them; whatever comes, the owner ends in order.
// Messages: a control byte, whose low bit says whether a word of the true length comes before the block, and the block's
// length in two bytes.  The owner takes them until nothing is left.
void receiveAnything(const uint8_t* data, std::size_t size) {
  RecordingDiagnostics& host = recordingDiagnostics();
  host.calls.clear();
  host.rank = 0;
  host.ranks = 2;
  auto& queue = host.incoming[1];
  queue.clear();
  for (std::size_t at = 0; at + 3 <= size;) {
    std::size_t length = data[at + 1] + 256u * data[at + 2];
    const bool announced = (data[at] & 1) != 0;
    at += 3;
    length = std::min(length, size - at);
    if (announced) queue.push_back(word(static_cast<int32_t>(length)));
    queue.emplace_back(reinterpret_cast<const char*>(data + at), length);
    at += length;
  }
  acd_handler_setactive_xpl_c();
  acd_comm_blocks();
}

acd_block_handler& ownHandler() { return thr_ThreadSingleton<acd_block_handler>::Instance(); }

class BlockHandler : public RecordedDiagnostics {
protected:
  void SetUp() override {
    RecordedDiagnostics::SetUp();
    recordingDiagnostics().ranks = 2;
  }
  // What a rank does in a thread of its own, which has its own handler.
  template <class Body>
  static void onRank(int32_t rank, Body body) {
    recordingDiagnostics().rank = rank;
    std::thread(body).join();
    recordingDiagnostics().rank = 0;
  }
  // What rank 1 has sent comes to rank 0.
  static void deliver() {
    for (const auto& message : recordingDiagnostics().sent) {
      EXPECT_TRUE(message.destination == 0 && message.type == 3 && message.tag == 0);
      recordingDiagnostics().incoming[1].push_back(message.bytes);
    }
    recordingDiagnostics().sent.clear();
  }
  static Calls ownerCalls() {
    onRank(0, [] {
      acd_handler_setactive_xpl_c();
      recordingDiagnostics().calls.clear();
      acd_comm_blocks();
    });
    return recordingDiagnostics().calls;
  }
  static void error(int32_t number) {
    const int32_t ints[] = {number, -8, 9};
    acd_error_xpl_c(codes::Error, 0, ints, kReals, nullptr, kNode, nullptr);
  }
  static void plainError() { acd_error_c(codes::Error + 1, nullptr, nullptr, nullptr, nullptr, nullptr); }
  // As the owner files it.
  static std::string filed(int32_t number) {
    return "Xpl AddError 41000100 1 ( i" + std::to_string(number) + " i-8 i9 r1.5 r-2.5 nPART-1-1:1005 )";
  }

  static constexpr int32_t kInts[] = {7, -8, 9}, kNode[] = {1005}, kElement[] = {2077}, kNodes[] = {1001, 1002};
  static constexpr double kReals[] = {1.5, -2.5};
};

TEST_F(BlockHandler, RecordsHaveTheirBytes) {
  onRank(1, [] {
    acd_block_handler& handler = ownHandler();
    EXPECT_FALSE(handler.IsActive() || handler.IsOwner() || handler.IsCollecting());
    const int32_t error = codes::Error, domain = 9;
    ACD_HANDLER_SETACTIVE_XPL();
    EXPECT_TRUE(handler.IsCollecting());
    ACD_ERROR_XPL(&error, &domain, kInts, kReals, nullptr, kNode, nullptr, 0);
    const char* const string[] = {"four"};
    acd_warning_c(codes::Warning, nullptr, nullptr, string, nullptr, kElement, 0);
    ASSERT_EQ(handler.GetNumBlocks(), 1);
    // 2 reals, 3 integers, 1 node: 44 bytes after the length
    const std::string first = word(44) + word(codes::Error) + word(0) + word(1.5) + word(-2.5) + word(1) + word(7) +
                              word(-8) + word(9) + word(1005);
    // 5 bytes of text are followed by 3 bytes of zero
    const std::string second =
        word(24) + word(codes::Warning) + word(0) + word(0) + word(2077) + std::string("four\0\0\0\0", 8);
    EXPECT_EQ(std::string(handler.GetBlock(0), handler.GetBlockSize(0)), first + second);
  });
  EXPECT_EQ(recordingDiagnostics().calls, (Calls{"setErrorCode -2"})); // the extractor has heard nothing
  EXPECT_EQ(CLINES[18], 1);
}

TEST_F(BlockHandler, TheOwnerFilesWhatOthersHaveCollected) {
  onRank(1, [] {
    acd_handler_setactive_xpl_c();
    const char* const texts[] = {"", "a longer text"};
    acd_error_c(codes::ErrorOfTexts, nullptr, nullptr, texts, nullptr, nullptr);
    error(7);
    acd_element_diagnostic_xpl_c(codes::Element, 0, nullptr, nullptr, nullptr, nullptr, kElement);
    acd_contact_diagnostic_xpl_c(codes::Contact, 0, nullptr, kReals, nullptr, kNodes, nullptr);
    const char* const string[] = {nullptr};
    acd_warning_c(codes::Warning, nullptr, nullptr, string, nullptr, kElement, 1);
    acd_comm_blocks();
    acd_comm_blocks(); // the second time there is nothing but the terminator
  });
  const auto& sent = recordingDiagnostics().sent;
  ASSERT_EQ(sent.size(), 4u);
  EXPECT_EQ(sent[0].bytes, word(static_cast<int32_t>(sent[1].bytes.size())));
  EXPECT_EQ(sent[2].bytes + sent[3].bytes, word(-1) + word(-1));
  deliver();
  acd_set_execode_xpl_c(1);
  EXPECT_EQ(ownerCalls(), (Calls{"setErrorCode -2", "Xpl AddError 41000300 1 ( \"\" \"a longer text\" )",
                                 "setErrorCode -2", filed(7), "Xpl AddElementDiagnostic 2000400 1 ( ePART-1-1:2077 )",
                                 "Xpl AddContactDiagnostic 3000500 1 ( r1.5 nPART-1-1:1001 nPART-1-1:1002 )",
                                 "Xpl AddWarning 1000200 1 ( \"\" ePART-1-1:2077 )"}));
  // printed as local ones are
  EXPECT_EQ(recordingHost().lines.size(), 6u);
  EXPECT_EQ(ownerCalls(), Calls());
  EXPECT_TRUE(recordingDiagnostics().incoming[1].empty());
}

// The mark of an element diagnostic travels in the print flag: no value of a caller can pass for it.
TEST_F(BlockHandler, PrintFlagsOfAnyValueKeepTheirKind) {
  const int32_t flags[] = {0, 1, 2, -1, 255, 256, 257, INT32_MIN, INT32_MAX};
  const char* const string[] = {"s"};
  onRank(1, [&] {
    acd_handler_setactive_xpl_c();
    for (int32_t flag : flags) {
      acd_warning_c(codes::Warning, nullptr, nullptr, string, nullptr, kElement, flag);
      acd_element_diagnostic_c(codes::Element, nullptr, nullptr, nullptr, nullptr, kElement, flag);
      acd_contact_diagnostic_c(codes::Contact, nullptr, kReals, nullptr, kNodes, nullptr, flag);
    }
    // values that only a record may have
    acd_block_handler& handler = ownHandler();
    for (int32_t flag : {-1, 512})
      EXPECT_TRUE(handler.AddDiagnostic(codes::Warning, acd_TypeClass::General, nullptr, nullptr, string, nullptr,
                                        kElement, flag));
    acd_comm_blocks();
  });
  deliver();
  acd_set_execode_xpl_c(1);
  Calls expected;
  for ([[maybe_unused]] int32_t flag : flags)
    for (const char* call :
         {"Xpl AddWarning 1000200 1 ( \"s\" ePART-1-1:2077 )", "Xpl AddElementDiagnostic 2000400 1 ( ePART-1-1:2077 )",
          "Xpl AddContactDiagnostic 3000500 1 ( r1.5 nPART-1-1:1001 nPART-1-1:1002 )"})
      expected.emplace_back(call);
  expected.insert(expected.end(), 2, expected.front());
  EXPECT_EQ(ownerCalls(), expected);
  EXPECT_EQ(recordingHost().lines.size(), 2u) << "printed is the warning whose flag is 1, after an empty line";
}

TEST_F(BlockHandler, ThreadsLoseNoCount) {
  constexpr int kThreads = 4, kEach = 2000000, kErrors = 2000;
  recordingDiagnostics().rank = 1;
  runThreads(kThreads, [](int) {
    acd_handler_setactive_xpl_c();
    for (int k = 0; k < kErrors; ++k) error(7);
  });
  runThreads(kThreads, [](int) { // they count at once
    for (int k = 0; k < kEach; ++k) ACD_INC_KNPSOL(), ACD_INC_KNESOL(), ACD_INC_KWARN();
  });
  recordingDiagnostics().rank = 0;
  EXPECT_EQ(CLINES[18], kThreads * kErrors);
  for (int32_t counter : {CLINES[16], CWARN[0], CWARN[1]}) EXPECT_EQ(counter, kThreads * kEach);
}

TEST_F(BlockHandler, InactiveHandlersDoNothing) {
  onRank(1, [] {
    acd_comm_blocks();
    plainError(); // goes to the extractor of its process
  });
  EXPECT_TRUE(recordingDiagnostics().sent.empty());
  EXPECT_EQ(recordingDiagnostics().calls.back(), "AddError 41000101 ( )");
  recordingDiagnostics().incoming[1].push_back(word(-1));
  onRank(0, [] { acd_comm_blocks(); });
  EXPECT_EQ(recordingDiagnostics().incoming[1].size(), 1u);
}

TEST_F(BlockHandler, RandomDiagnosticsArriveAsTheyWere) {
  Random random(1);
  Calls expected;
  onRank(1, [&] {
    acd_handler_setactive_xpl_c();
    for (int k = 0; k < 20000; ++k) {
      // now and then a text that fills a block, or more than one
      const auto text = [&] {
        const int length = random.integer(0, 500) == 0 ? random.integer(200000, 400000) : random.integer(0, 40);
        return std::string(length, static_cast<char>(random.integer(33, 126)));
      };
      const std::string texts[] = {text(), text()};
      const char* const strings[] = {texts[0].c_str(), texts[1].c_str()};
      acd_error_xpl_c(codes::ErrorOfTexts, 0, nullptr, nullptr, strings, nullptr, nullptr);
      error(k);
      expected.insert(expected.end(),
                      {"setErrorCode -2", "Xpl AddError 41000300 1 ( \"" + texts[0] + "\" \"" + texts[1] + "\" )",
                       "setErrorCode -2", filed(k)});
    }
    acd_comm_blocks();
  });
  EXPECT_GT(recordingDiagnostics().sent.size(), 10u);
  deliver();
  EXPECT_EQ(ownerCalls(), expected);
}

TEST_F(BlockHandler, ConsolidationGathersTheThreadsOfAProcess) {
  const auto workerOf = [&](acd_block_handler& gatherer) {
    std::thread([&] {
      acd_handler_setactive_xpl_c();
      error(2), error(3);
      gatherer.Consolidate(ownHandler());
      EXPECT_EQ(ownHandler().GetNumBlocks(), 0);
    }).join();
  };
  onRank(1, [&] {
    acd_handler_setactive_xpl_c();
    error(1);
    workerOf(ownHandler());
    ownHandler().Consolidate(ownHandler()); // keeps what it has
    error(4);
    acd_comm_blocks();
  });
  deliver();
  Calls expected;
  for (int k = 1; k <= 4; ++k) expected.insert(expected.end(), {"setErrorCode -2", filed(k)});
  EXPECT_EQ(ownerCalls(), expected);

  // a gatherer that does not collect files at once, under its own rank
  onRank(1, [&] { workerOf(ownHandler()); });
  EXPECT_EQ(recordingDiagnostics().calls.back(), filed(3));
}

TEST_F(BlockHandler, LivesAsLongAsItsThread) {
  acd_block_handler* own = nullptr;
  onRank(1, [&] {
    own = &ownHandler();
    std::thread([&] { EXPECT_NE(&ownHandler(), own); }).join();
    own->SetActive();
    EXPECT_FALSE(own->IsOwner());
    recordingDiagnostics().rank = 0; // as when ranks are connected late
    own->SetActive();
    EXPECT_TRUE(own->IsOwner());
    recordingDiagnostics().rank = 1;
    int32_t components = 0;
    acd_initialize(&components);
    acd_finalize(&components);
    EXPECT_FALSE(ownHandler().IsActive()); // another one
  });
}

TEST_F(BlockHandler, ReceivedLengthsAreNotTrusted) {
  const std::string sound = word(12) + word(codes::Error + 1) + word(0) + word(0);
  const auto cut = [&](int32_t length, int32_t code, const std::string& more = "") {
    return word(length) + word(code) + word(0) + word(0) + more;
  };
  const char *const length = "length of received", *const inside = "not inside its block",
                    *const agree = "does not agree", *const nothing = "could not be received";
  // clang-format off
  const struct {
    const char* what;
    Calls messages;
    int filed;
    const char* reason; // null: ends in order
  } cases[] = {
      {"blocks and terminator", {word(16), sound, sound, word(-1)}, 2, nullptr},
      {"a block that begins with -1 ends the source", {word(16), sound, word(-1) + sound}, 1, nullptr},
      {"negative length", {word(-2), sound, word(-1)}, 0, length},
      {"length of two bytes", {"ab", word(-1)}, 0, length},
      {"block longer than announced", {word(8), sound, word(-1)}, 0, "longer than announced"},
      {"empty block", {word(16), "", word(-1)}, 0, "longer than announced or empty"},
      {"record longer than its block", {word(16), cut(13, codes::Error + 1), word(-1)}, 0, inside},
      {"record without code", {word(16), cut(8, codes::Error + 1), word(-1)}, 0, inside},
      {"negative record", {word(16), cut(-16, codes::Error + 1), word(-1)}, 0, inside},
      {"cut record after a sound one", {word(32), sound + sound.substr(0, 9), word(-1)}, 1, inside},
      {"a length and two bytes", {word(32), sound + "ab", word(-1)}, 1, inside},
      {"unknown code", {word(16), cut(12, codes::Unknown), word(-1)}, 0, agree},
      {"too short for its code", {word(16), cut(12, codes::Error), word(-1)}, 0, agree},
      {"text without end", {word(24), cut(20, codes::ErrorOfTexts, {"a\0bcdefg", 8}), word(-1)}, 0, agree},
      {"nothing comes", {}, 0, nothing},
      {"the block does not come", {word(16)}, 0, nothing},
  };
  // clang-format on
  for (const auto& c : cases) {
    recordingDiagnostics().incoming[1].assign(c.messages.begin(), c.messages.end());
    int errors = 0, reasons = 0;
    for (const std::string& call : ownerCalls()) {
      errors += call.starts_with("Xpl AddError");
      if (!call.starts_with("Xpl AddInternalError")) continue;
      reasons += c.reason != nullptr && call.find(c.reason) != std::string::npos;
    }
    EXPECT_EQ(errors, c.filed) << c.what;
    EXPECT_EQ(reasons, c.reason != nullptr) << c.what;
    EXPECT_TRUE(recordingDiagnostics().incoming[1].empty()) << c.what; // the next exchange begins afresh
  }
}

TEST_F(BlockHandler, AnyBytesEndInOrder) {
  Random random(5);
  const std::string one = word(12) + word(codes::Error + 1) + word(0) + word(0),
                    sound = one + word(24) + word(codes::Warning) + word(0) + word(0) + word(2077) +
                            std::string("four\0\0\0\0", 8);
  onRank(0, [&] {
    for (int round = 0; round < 800; ++round) {
      std::string bytes;
      for (int message = random.integer(1, 4); message > 0; --message) {
        std::string block = random.integer(0, 4) == 0 ? word(-1) : sound;
        for (int faults = random.integer(0, 3); faults > 0; --faults)
          block[random.integer(0, static_cast<int>(block.size()) - 1)] = static_cast<char>(random.integer(-128, 127));
        block.resize(block.size() - (random.integer(0, 3) == 0 ? random.integer(0, 3) : 0));
        bytes += static_cast<char>(random.integer(0, 1));
        bytes += static_cast<char>(block.size());
        bytes += '\0';
        bytes += block;
      }
      receiveAnything(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      // what came is forgotten: a sound exchange after it arrives whole
      recordingDiagnostics().calls.clear();
      recordingDiagnostics().incoming[1].assign({word(16), one, word(-1)});
      acd_comm_blocks();
      ASSERT_EQ(recordingDiagnostics().calls, (Calls{"setErrorCode -2", "Xpl AddError 41000101 1 ( )"})) << round;
    }
  });
}

TEST_F(BlockHandler, SendsThatFailAreToldToTheHost) {
  recordingDiagnostics().failSends = true;
  onRank(1, [] {
    acd_handler_setactive_xpl_c();
    plainError();
    acd_comm_blocks();
  });
  EXPECT_EQ(recordingDiagnostics().calls.back(), "Xpl AddInternalError Diagnostics could not be sent");
}

} // namespace

#ifdef SA_FUZZ
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  receiveAnything(data, size);
  return 0;
}
#endif
