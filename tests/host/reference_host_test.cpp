// The reference host behind the library: files, identity, errors, signals.
#include "dsm_ker_ThreadData.h"
#include "glo.h"
#include "host_services.h"
#include "kprC_Step.h"
#include "reference_host.h"
#include "tests/support/files.h"
#include "tests/support/program.h"
#include "tests/support/threads.h"

#include <csignal>
#include <ctime>
#include <regex>

namespace {

using namespace sharedanalysis::host;
using namespace sharedanalysis::test;
namespace fs = std::filesystem;

void write(const std::string& type, const std::string& text, int32_t unit = -6, int32_t status = 0) {
  GLO_UTI_WRITE(&unit, &status, type.c_str(), text.c_str(), nullptr, nullptr, nullptr,
                static_cast<int64_t>(type.size()), static_cast<int64_t>(text.size()), 0);
}

void expectThrown(const auto& call, int code, const fs::path& file) {
  const std::string said = thrown<std::system_error>(call);
  EXPECT_TRUE(contains(said, file.string()) && contains(said, std::generic_category().message(code))) << said;
}
void exitWith(int32_t code) { GLO_UTI_EXIT(&code); }
std::string procedureType(int32_t id, std::size_t length) {
  std::string keyword(length, '#');
  GLO_GETPROCEDURETYPE(&id, keyword.data(), static_cast<int64_t>(length));
  return keyword;
}

class ReferenceHost : public testing::Test {
protected:
  void TearDown() override {
    closeJob();
    withdrawKill();
  }
  const TemporaryDirectory temporary;
  const fs::path& directory = temporary.path();
};

TEST_F(ReferenceHost, FilesMessagesByChannel) {
  std::ofstream(directory / "plate.msg") << "of an older run\n";
  const JobFiles files = openJob("plate", directory);
  EXPECT_EQ(files.message, directory / "plate.msg");

  write("Error", "Element %%", -6, 1);
  write("Step", "STEP 1", -7);
  write("Table", "to another channel", 5);
  const int32_t ints[] = {12};
  const double reals[] = {0.5};
  const char* const strings[] = {"TIP\nTOE"};
  glo_uti_CWrite(0, 1, "Increment", "%I at %R of %S", ints, reals, strings);
  // a full message, a longer text of a diagnostic, a sign before a letter that is no code
  const std::string full(1000, 'x'), longer(5000, 'y');
  const char* const texts[] = {longer.c_str()};
  write("StateFrame", full, 0, 1);
  const int32_t identity[] = {0, 0};
  ipm_message_c("Error", "message=%s", nullptr, nullptr, texts, identity);
  write("Step", "100%%s", 0, 1);
  const int64_t unfiled = unfiledRecords();
  closeJob();

  EXPECT_EQ(readFile(files.message), "\n***ERROR: Element %\n\n");
  EXPECT_EQ(readFile(files.log), "\nSTEP 1\n\n");
  EXPECT_EQ(readFile(files.status),
            "Error message=Element %\nIncrement 12 at 5.00000e-01 of TIP TOE\nStateFrame message=" + full +
                "\nError message=" + longer + "\nStep 100%s\n");

  write("Table", "after the job");
  EXPECT_EQ(unfiledRecords(), unfiled + 1) << "counted, not written";
}

TEST_F(ReferenceHost, StatusRecordsAndFlushesBringFilesUpToDate) {
  const JobFiles files = openJob("live", directory);
  write("Warning", "hot", -6, 1);
  EXPECT_EQ(readFile(files.status), "Warning message=hot\n");
  EXPECT_EQ(readFile(files.message), "\n***WARNING: hot\n\n");
  // a template takes its values on the status channel, with the exponent letter of the entry
  const int32_t none = 0, status = 1;
  const double half = 0.5;
  GLO_UTI_WRITE(&none, &status, "Status", "x %R", nullptr, &half, nullptr, 6, 4, 0);
  glo_uti_CWrite(none, status, "Status", "x %R", nullptr, &half, nullptr);
  EXPECT_EQ(readFile(files.status), "Warning message=hot\nStatus x 5.00000E-01\nStatus x 5.00000e-01\n");
  write("Table", "row");
  const int32_t messageFile = -6;
  LFC_XUT_XPLMSGFLUSH(&messageFile);
  EXPECT_EQ(readFile(files.message), "\n***WARNING: hot\n\nrow\n");
}

TEST_F(ReferenceHost, MessagesOfThreadsStayWholeAndTogether) {
  constexpr int kThreads = 6, kMessages = 150;
  const JobFiles files = openJob("threads", directory);
  const int64_t unfiled = unfiledRecords();
  runThreads(kThreads, [](int t) {
    const std::string text = "from %I number %I " + std::string(60, 'x') + " again from %I number %I";
    for (int k = 0; k < kMessages; ++k) {
      const int32_t unit = -6, status = k % 10 == 0, ints[] = {t, k, t, k};
      if (k % 2 == 0) {
        GLO_UTI_WRITE(&unit, &status, "Error", text.c_str(), ints, nullptr, nullptr, 5,
                      static_cast<int64_t>(text.size()), 0);
        GLO_UTI_WRITECONT(&unit, &status, "Table", "continued %I %I", ints, nullptr, nullptr, 5, 15, 0);
      } else {
        glo_uti_CWrite(unit, status, "Error", text.c_str(), ints, nullptr, nullptr);
      }
    }
  });
  closeJob();
  EXPECT_EQ(unfiledRecords(), unfiled);

  // Every message is a run of undisturbed lines, and each thread's come in its own order.  A status record may
  // bring the lines of its own message out early, never those of another one.
  const std::vector<std::string> all = linesOf(readFile(files.message));
  std::vector<int> next(kThreads, 0);
  int apart = 0;
  for (std::size_t line = 0; line < all.size();) {
    if (all[line].starts_with("continued")) { // came out after its status record
      ++apart, ++line;
      continue;
    }
    ASSERT_LE(line + 5, all.size());
    int thread = -1, number = -1;
    ASSERT_EQ(std::sscanf(all[line + 1].c_str(), "***ERROR: from %d number %d", &thread, &number), 2) << all[line + 1];
    ASSERT_EQ(number, next.at(thread)++);
    const std::string which = std::to_string(thread) + " number " + std::to_string(number), indent(10, ' ');
    std::vector<std::string> message{"", "***ERROR: from " + which, indent + std::string(60, 'x') + " again",
                                     indent + "from " + which, ""};
    if (number % 2 == 0 && number % 10 != 0)
      message.push_back("continued " + std::to_string(thread) + " " + std::to_string(number));
    for (const std::string& expected : message) ASSERT_EQ(line < all.size() ? all[line++] : "nothing", expected);
  }
  EXPECT_EQ(next, std::vector<int>(kThreads, kMessages));
  EXPECT_EQ(apart, kThreads * kMessages / 10);
  EXPECT_EQ(linesOf(readFile(files.status)).size(), static_cast<std::size_t>(kThreads * kMessages / 10));
}

TEST_F(ReferenceHost, ThreadsAndMessagesAreNumbered) {
  const int32_t own = DSM_KER_THREADID();
  const int32_t message = DSM_KER_MESSAGEID();
  EXPECT_EQ(DSM_KER_LASTMESSAGEID(), message);
  dsm_ker_ThreadData& data = thr_ThreadSingleton<dsm_ker_ThreadData>::Instance();
  EXPECT_EQ(data.threadNumber, own);
  EXPECT_EQ(data.messageNumber++, message + 1) << "one count behind both entries of the writer";
  EXPECT_EQ(DSM_KER_LASTMESSAGEID(), message + 1);

  std::set<int32_t> numbers = {own};
  for (int k = 0; k < 3; ++k)
    std::thread([&] {
      numbers.insert(DSM_KER_THREADID());
      EXPECT_EQ(DSM_KER_MESSAGEID(), 1) << "a thread counts its own messages";
      EXPECT_EQ(DSM_KER_THREADID(), thr_ThreadSingleton<dsm_ker_ThreadData>::Instance().threadNumber);
    }).join();
  EXPECT_EQ(numbers.size(), 4u);
  EXPECT_EQ(DSM_KER_LASTMESSAGEID(), message + 1);
}

TEST_F(ReferenceHost, MessagesGoOnInAnotherFileAndOutliveTheirThread) {
  const JobFiles files = openJob("both", directory);
  std::thread([] {
    write("Table", "last words");
    const int32_t log = -7, status = 0;
    GLO_UTI_WRITECONT(&log, &status, "Table", "to the log", nullptr, nullptr, nullptr, 5, 10, 0);
  }).join();
  closeJob();
  EXPECT_EQ(readFile(files.message), "last words\n");
  EXPECT_EQ(readFile(files.log), "to the log\n");
}

TEST_F(ReferenceHost, ReportsWhatItCannotOpenAndWhatItLost) {
  expectThrown([&] { openJob("job", directory / "nowhere"); }, ENOENT, directory / "nowhere" / "job.msg");
  closeJob(); // nothing is open

  const JobFiles files = openJob("full", directory);
  EXPECT_FALSE(writeError());
  {
    const SmallFiles limit(300);
    write("Info", std::string(500, 'x'));
    write("Warning", "still running", -6, 1);
    EXPECT_EQ(writeError().value(), EFBIG);
    expectThrown(closeJob, EFBIG, files.message);
  }
  EXPECT_EQ(readFile(files.status), "Warning message=still running\n") << "the other files are complete";
  openJob("fresh", directory);
  EXPECT_FALSE(writeError());
}

TEST_F(ReferenceHost, EndOfAnalysisLeavesItsMark) {
  const JobFiles files = openJob("end", directory);
  EXPECT_EQ(jobStatus(), -1);
  exitWith(22);
  EXPECT_EQ(jobStatus(), 1);
  EXPECT_FALSE(threadError());
  EXPECT_TRUE(transmitterClosing());
  exitWith(20);
  EXPECT_EQ(jobStatus(), 2);
  EXPECT_TRUE(threadError());
  requestKill();
  exitWith(22);
  EXPECT_EQ(jobStatus(), 3);
  EXPECT_EQ(readFile(files.status), "Completed message=Phase complete\n"
                                    "Aborted message=Analysis failed due to Errors\n"
                                    "Interrupted message=Analysis terminated by external signal\n");
  openJob("again", directory);
  EXPECT_EQ(jobStatus(), -1);
  EXPECT_FALSE(threadError() || transmitterClosing());
  EXPECT_TRUE(killSignal()) << "a request that came before the job stands";
}

TEST_F(ReferenceHost, ThreadsMayEndTheAnalysisAtOnce) {
  const JobFiles files = openJob("ends", directory);
  constexpr int kThreads = 4;
  runThreads(kThreads, [](int) { exitWith(20); });
  EXPECT_EQ(jobStatus(), 2);
  EXPECT_TRUE(threadError());
  EXPECT_EQ(linesOf(readFile(files.status)),
            std::vector<std::string>(kThreads, "Aborted message=Analysis failed due to Errors"));
}

TEST_F(ReferenceHost, AbortEndsTheJobAndNotTheProcess) {
  const JobFiles files = openJob("abort", directory);
  int32_t offset = 0, position = 0;
  const int32_t size = -1;
  GLO_UTI_ALLO(&offset, &position, &size);
  EXPECT_EQ(jobStatus(), 2);
  EXPECT_TRUE(threadError());
  EXPECT_EQ(procedureType(14, 10), "Unknown   ");
  closeJob();
  EXPECT_EQ(readFile(files.message), "\n***ERROR: A negative storage request value is not allowed.\n\n"
                                     "\n***ERROR: UNKNOWN PROCEDURE TYPE ID: 14\n\n");
}

TEST_F(ReferenceHost, SignalsBecomeKillRequests) {
  using Handler = void (*)(int);
  const Handler interrupt = std::signal(SIGINT, SIG_DFL), terminate = std::signal(SIGTERM, SIG_DFL);
  for (int signal : {SIGINT, SIGTERM}) {
    installSignalHandlers();
    EXPECT_EQ(ELI_GETKILLSIGNAL(), 0);
    std::raise(signal);
    EXPECT_NE(ELI_GETKILLSIGNAL(), 0);
    EXPECT_TRUE(std::signal(signal, SIG_DFL) == SIG_DFL) << "a second signal ends the process";
    withdrawKill();
  }
  std::signal(SIGINT, interrupt), std::signal(SIGTERM, terminate);
}

TEST_F(ReferenceHost, CountsLiveComponents) {
  int32_t counter = 0;
  Shared_Analysis_XP_initialize(&counter);
  EXPECT_EQ(counter, 17);
  EXPECT_EQ(liveComponents(), 13);
  Shared_Analysis_XP_finalize(&counter);
  EXPECT_EQ(counter, 0);
  EXPECT_EQ(liveComponents(), 0);
}

TEST_F(ReferenceHost, NamesItselfAndItsSteps) {
  char text[100];
  GLO_UTI_GETVERSIONDATETIME(text, sizeof text);
  const std::string banner(text, sizeof text);
  EXPECT_TRUE(banner.starts_with("SharedAnalysis Reference Host 1.0  ")) << banner;
  const std::time_t now = std::time(nullptr);
  std::tm today = {};
  const std::string year = std::to_string(localtime_r(&now, &today)->tm_year + 1900);
  EXPECT_TRUE(std::regex_match(banner.substr(banner.size() - 32),
                               std::regex(" DATE (0[1-9]|[12]\\d|3[01])-[A-Z][a-z]{2}-" + year +
                                          "  TIME ([01]\\d|2[0-3]):[0-5]\\d:([0-5]\\d|60)")))
      << banner;

  EXPECT_EQ(procedureType(17, 18), "*DYNAMIC, EXPLICIT");
#define SA_KEYWORD(step) step::constructorCmd(),
  const std::set<std::string> keywords = {SA_HOST_STEPS(SA_KEYWORD)};
#undef SA_KEYWORD
  EXPECT_EQ(keywords.size(), 22u) << "no two step classes share a keyword";
}

} // namespace
