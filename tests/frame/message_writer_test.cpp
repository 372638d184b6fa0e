// The message writer against a recording host.
#include "dsm_ker_ThreadData.h"
#include "glo.h"
#include "tests/support/recording_host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace sharedanalysis::test;

struct Arguments {
  std::vector<int32_t> ints;
  std::vector<double> reals;
  std::vector<std::string> strings;
  int32_t unit = -6, status = 0;
};

using ByReference = void (*)(const int32_t*, const int32_t*, const char*, const char*, const int32_t*, const double*,
                             const char*, int64_t, int64_t, int64_t);

class MessageWriter : public testing::Test {
protected:
  void SetUp() override { resetRecordingHost(); }

  // The by-reference twin with tight texts: a read past their ends shows under the sanitizer.
  static void write(const std::string& type, const std::string& text, const Arguments& arguments = {},
                    ByReference entry = GLO_UTI_WRITE) {
    std::size_t length = 0;
    for (const std::string& s : arguments.strings) length = std::max(length, s.size());
    std::vector<char> strings;
    for (std::string s : arguments.strings) {
      s.resize(length, ' ');
      strings.insert(strings.end(), s.begin(), s.end());
    }
    const std::vector<char> tightType(type.begin(), type.end()), tightText(text.begin(), text.end());
    entry(&arguments.unit, &arguments.status, tightType.data(), tightText.data(), arguments.ints.data(),
          arguments.reals.data(), strings.data(), static_cast<int64_t>(type.size()), static_cast<int64_t>(text.size()),
          static_cast<int64_t>(length));
  }

  static void cWrite(const std::string& type, const std::string& text, const Arguments& arguments = {}) {
    std::vector<const char*> strings;
    for (const std::string& s : arguments.strings) strings.push_back(s.c_str());
    glo_uti_CWrite(arguments.unit, arguments.status, type.c_str(), text.c_str(), arguments.ints.data(),
                   arguments.reals.data(), strings.data());
  }

  static std::vector<RecordedStatus> takeStatuses() {
    std::vector<RecordedStatus> statuses;
    statuses.swap(recordingHost().statuses);
    return statuses;
  }
  static std::string onlyLine() {
    const auto lines = takeLines();
    return lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " lines";
  }
  static std::string table(const std::string& text, const Arguments& arguments = {}) {
    write("Table", text, arguments);
    return onlyLine();
  }
  static std::string cTable(const std::string& text, const Arguments& arguments = {}) {
    cWrite("Table", text, arguments);
    return onlyLine();
  }
};

using Lines = std::vector<std::string>;

TEST_F(MessageWriter, ReplacesPlaceholders) {
  const Arguments arguments{{7, -2147483648}, {2.5}, {"SET1"}};
  EXPECT_EQ(table("Value %I of %R in %S%%", arguments), "Value 7 of 2.50000E+00 in SET1%");
  EXPECT_EQ(cTable("Value %I of %R in %S%%", arguments), "Value 7 of 2.50000e+00 in SET1%");
  EXPECT_EQ(table("%I%I", arguments), "7-2147483648") << "wider than its field of 10";
  EXPECT_EQ(table("%S%I%S", {{1}, {}, {"  two ", "three"}}), "two1three") << "cursors are independent";
}

TEST_F(MessageWriter, RealsReadAsTheFieldOfPrintf) {
  std::mt19937_64 random(12);
  std::vector<double> values = {0.0,      -0.0,      1.0,    999999.5, 9.999995,
                                1e100,    -1e-100,   5e-324, 2.5e15,   std::numeric_limits<double>::max(),
                                INFINITY, -INFINITY, NAN};
  for (int k = 0; k < 2000; ++k) {
    const uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isfinite(value)) values.push_back(value);
  }
  for (double value : values) {
    char field[40];
    std::snprintf(field, sizeof field, "%.5e", value);
    EXPECT_EQ(cTable("%R", {{}, {value}, {}}), field);
    std::string upper = field;
    if (std::isfinite(value)) upper[upper.find('e')] = 'E';
    EXPECT_EQ(table("%R", {{}, {value}, {}}), upper);
  }
}

TEST_F(MessageWriter, ForgivesBadTemplates) {
  EXPECT_EQ(table("before%Qafter"), "before");
  EXPECT_EQ(table("before%"), "before");
  EXPECT_EQ(table("before%   "), "before") << "trailing blanks do not count";
  const int32_t unit = -6, status = 0, seven = 7;
  GLO_UTI_WRITE(&unit, &status, "Table", "before%I", &seven, nullptr, nullptr, 5, 7, 0);
  EXPECT_EQ(takeLines(), Lines{"before"}) << "what stands behind the template is not read";
  EXPECT_EQ(table("%i"), " ") << "codes are upper-case; an empty record is a blank line";
  EXPECT_EQ(table("a%Sb", {{}, {}, {"   "}}), "a        b") << "a blank value leaves 8 blanks";
  EXPECT_EQ(cTable("a%Sb", {{}, {}, {""}}), "a        b");
  EXPECT_EQ(table("\x80\xff%%"), "\x80\xff%") << "characters are bytes";

  // Arrays that are not there leave blank values; a negative length is an empty text.
  GLO_UTI_WRITE(&unit, &status, "Table", "%I%R%S.", nullptr, nullptr, nullptr, 5, 7, -3);
  EXPECT_EQ(takeLines(), Lines{std::string(24, ' ') + "."});
  glo_uti_CWrite(-6, 0, "Table", "%I%R%S.", nullptr, nullptr, nullptr);
  EXPECT_EQ(takeLines(), Lines{std::string(24, ' ') + "."});
  GLO_UTI_WRITE(&unit, &status, "Table", "text", nullptr, nullptr, nullptr, 5, -4, 0);
  EXPECT_EQ(takeLines(), Lines{" "});
  glo_uti_CWrite(-6, 0, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(takeLines(), Lines{"  "});
}

TEST_F(MessageWriter, HoldsAThousandCharacters) {
  EXPECT_EQ(table(std::string(1200, 'x')), std::string(1000, 'x'));
  EXPECT_EQ(table(std::string(996, 'x') + "%I", {{1234}, {}, {}}), std::string(996, 'x') + "1234");
  EXPECT_EQ(table(std::string(996, 'x') + "%Iy", {{12345}, {}, {}}), std::string(996, 'x')) << "a value is not cut";
  EXPECT_EQ(table(std::string(1000, 'x') + "%%"), std::string(1000, 'x'));
  EXPECT_EQ(table(std::string(993, 'x') + "%S", {{}, {}, {" "}}), std::string(993, 'x')) << "8 blanks do not fit";
  EXPECT_EQ(table("%S", {{}, {}, {std::string(1001, 's')}}), " ");
  write(" ", std::string(1200, '%'));
  EXPECT_EQ(takeLines(), Lines{std::string(1000, '%')}) << "verbatim";
}

TEST_F(MessageWriter, BreaksAtBlanksOrAtTheFullWidth) {
  write("Error", std::string(150, 'x'));
  const std::string blanks(10, ' ');
  EXPECT_EQ(takeLines(), (Lines{" ", "***ERROR: " + std::string(69, 'x'), blanks + std::string(69, 'x'),
                                blanks + std::string(12, 'x'), " "}));

  struct Case {
    const char* type;
    std::string header;
    std::size_t room;
  };
  for (const Case& c : {Case{"Error", "***ERROR: ", 69}, Case{"Warning", "***WARNING: ", 67},
                        Case{"Note", "***NOTE: ", 70}, Case{"Info", "  ", 77}}) {
    const std::string indent(c.header.size(), ' '), a(c.room, 'a'), tail = "b c";
    const std::string lastColumn = a.substr(1) + " ", beyond = a + " b c";
    write(c.type, a);
    EXPECT_EQ(takeLines(), (Lines{" ", c.header + a, " "})) << "just fits in one line of 79";
    const std::string full = "z " + a.substr(2);
    write(c.type, full);
    EXPECT_EQ(takeLines(), (Lines{" ", c.header + full, " "})) << "no break where the rest fits";
    write(c.type, a + tail);
    EXPECT_EQ(takeLines(), (Lines{" ", c.header + a, indent + tail, " "})) << "cut hard";
    write(c.type, lastColumn + tail);
    EXPECT_EQ(takeLines(), (Lines{" ", c.header + lastColumn, indent + tail, " "})) << "a blank in the last column";
    write(c.type, beyond);
    EXPECT_EQ(takeLines(), (Lines{" ", c.header + a, indent + beyond.substr(a.size()), " "})) << "just beyond it";
    write(c.type, "z " + a);
    EXPECT_EQ(takeLines(), (Lines{" ", c.header + "z ", indent + a, " "})) << "the only blank far left";
  }

  std::string words;
  for (int k = 0; k < 90; ++k) words += "word" + std::to_string(k) + (k % 7 == 0 ? "  " : " ");
  cWrite("Odb_Frame", words);
  std::string joined;
  for (const std::string& line : takeLines()) {
    EXPECT_LE(line.size(), 79u);
    joined += line.substr(2);
  }
  EXPECT_EQ(joined + ' ', words) << "pieces keep their blanks";
}

TEST_F(MessageWriter, WritesTwentyLinesAtMost) {
  std::string words;
  for (int k = 0; k < 24; ++k) words += std::string(39, static_cast<char>('a' + k)) + " ";
  write("Warning", words);
  const auto lines = takeLines();
  ASSERT_EQ(lines.size(), 22u);
  EXPECT_EQ(lines[1], "***WARNING: " + std::string(39, 'a') + " ");
  EXPECT_EQ(lines[20], std::string(12, ' ') + std::string(39, 't') + " ");
  EXPECT_EQ(lines[21], " ");
}

// What each type does to "%I" with the status flag on: lines, and the text that the status channel receives.
struct TypeCase {
  const char* type;
  Lines lines;
  const char* status; // null: nothing is sent
};
const Lines kUnknown = {"  42"};
const TypeCase kTypes[] = {
    {" ", {"%I"}, nullptr},
    {"NewLine", {" "}, nullptr},
    {"Status", {"%I"}, "%I"},
    {"Step", {" ", "42", " "}, "%I"},
    {"Table", {"42"}, nullptr},
    {"Info", {" ", "  42", " "}, nullptr},
    {"Error", {" ", "***ERROR: 42", " "}, "message=%S"},
    {"Warning", {" ", "***WARNING: 42", " "}, "message=%S"},
    {"Note", {" ", "***NOTE: 42", " "}, nullptr},
    {"Odb_Frame", kUnknown, "message=%S"},
    {"StateFrame", kUnknown, "message=%S"},
    {"Interrupted", kUnknown, "%I"},
};

TEST_F(MessageWriter, TreatsEachTypeAsItsOwn) {
  const Arguments on{{42}, {1.0}, {"s"}, -6, 1}, off{{42}, {}, {}, -6, 0}, noUnit{{42}, {}, {}, 0, 1};
  for (const TypeCase& c : kTypes) {
    SCOPED_TRACE(c.type);
    for (bool byReference : {true, false}) {
      const auto send = [&](const Arguments& arguments) {
        if (byReference) {
          write(std::string(c.type) + "      ", "%I  ", arguments); // as a padded field
        } else {
          cWrite(c.type, "%I  ", arguments);
        }
      };
      send(on);
      EXPECT_EQ(takeLines(), c.lines);
      const auto statuses = takeStatuses();
      ASSERT_EQ(statuses.size(), c.status == nullptr ? 0u : 1u);
      if (c.status != nullptr) {
        const RecordedStatus& record = statuses[0];
        EXPECT_EQ(record.service, byReference ? "IPM_MESSAGE" : "ipm_message_c");
        EXPECT_EQ(record.type.substr(0, std::strlen(c.type)), c.type);
        EXPECT_EQ(record.text.substr(0, std::strlen(c.status)), c.status);
        EXPECT_EQ(record.firstString, record.text == "message=%S" ? "42" : "s");
        EXPECT_EQ(record.ints, on.ints.data());
        EXPECT_EQ(record.reals, on.reals.data());
      }

      send(off);
      EXPECT_EQ(takeLines(), std::string(c.type) == "Status" ? Lines{"42"} : c.lines);
      EXPECT_TRUE(takeStatuses().empty());

      send(noUnit);
      EXPECT_TRUE(takeLines().empty());
      EXPECT_EQ(takeStatuses().size(), c.status == nullptr ? 0u : 1u);
    }
  }
}

TEST_F(MessageWriter, TypesMatchWholeInOneEntryAndByTheirBeginningInTheOther) {
  for (const char* type : {"Errors", "Warnings", "NewLines"}) {
    write(type, "%%");
    EXPECT_EQ(takeLines(), Lines{"  %"}) << type;
  }
  cWrite("Errors", "%%");
  EXPECT_EQ(takeLines(), (Lines{" ", "***ERROR: %", " "}));
  cWrite("Warnings", "%%");
  EXPECT_EQ(takeLines(), (Lines{" ", "***WARNING: %", " "}));
  cWrite("NewLines", "%%");
  EXPECT_EQ(takeLines(), Lines{" "});
  cWrite(" Error", "%%");
  EXPECT_EQ(takeLines(), Lines{"%%"}) << "begins with the blank type";
  write("", "%%");
  EXPECT_EQ(takeLines(), Lines{"%%"}) << "a field without characters is blank";
  cWrite("", "%%");
  EXPECT_EQ(takeLines(), Lines{"  %"}) << "but does not begin with a blank";
  for (const char* type : {"error", "Err", " Error"}) {
    write(type, "%%");
    EXPECT_EQ(takeLines(), Lines{"  %"}) << type;
  }
}

TEST_F(MessageWriter, LinesAndRecordsCarryTheIdentityOfTheirMessage) {
  const Arguments arguments{{}, {}, {}, -7, 1};
  write("Error", "a", arguments);
  write("Error", "b", arguments, GLO_UTI_WRITECONT);
  write("Error", "c", arguments);
  cWrite("Error", "d", arguments);
  cWrite("NewLine", "", arguments);
  cWrite("Error", "e", arguments);

  std::vector<std::pair<int32_t, int32_t>> lines, statuses;
  for (const RecordedLine& line : recordingHost().lines) {
    EXPECT_EQ(line.unit, -7);
    EXPECT_EQ(line.width, 79);
    EXPECT_EQ(line.service, line.thread == 3 ? "LFC_XUT_XPLMSGC" : "lfc_xut_xplmsgC_c");
    if (lines.empty() || lines.back() != std::pair(line.thread, line.message))
      lines.emplace_back(line.thread, line.message);
  }
  for (const RecordedStatus& status : recordingHost().statuses) statuses.emplace_back(status.thread, status.message);
  using Identities = std::vector<std::pair<int32_t, int32_t>>;
  EXPECT_EQ(lines, (Identities{{3, 100}, {3, 101}, {7, 500}, {7, 501}, {7, 502}}));
  EXPECT_EQ(statuses, (Identities{{3, 100}, {3, 100}, {3, 101}, {7, 500}, {7, 502}}));
  EXPECT_EQ(recordingHost().lines.size(), 3u * 5 + 1);
}

TEST_F(MessageWriter, FinishedTextGoesToTheStatusChannelWhole) {
  const Arguments arguments{{}, {}, {std::string(1000, 'y')}, -6, 1};
  write("Error", "%S", arguments);
  cWrite("Error", "%S", arguments);
  const auto statuses = takeStatuses();
  ASSERT_EQ(statuses.size(), 2u);
  for (const RecordedStatus& status : statuses) EXPECT_EQ(status.firstString, arguments.strings[0]);
}

TEST_F(MessageWriter, KeepsThreadsApart) {
  constexpr int kThreads = 4, kMessages = 200;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t] {
      for (int k = 0; k < kMessages; ++k) write("Table", "%I %I", {{t, k}, {}, {}});
    });
  for (std::thread& thread : threads) thread.join();
  std::vector<int> next(kThreads, 0);
  for (const std::string& line : takeLines()) {
    int t = -1, k = -1;
    ASSERT_EQ(std::sscanf(line.c_str(), "%d %d", &t, &k), 2) << line;
    ASSERT_EQ(k, next.at(static_cast<std::size_t>(t))++);
  }
  EXPECT_EQ(next, std::vector<int>(kThreads, kMessages));
}

} // namespace
