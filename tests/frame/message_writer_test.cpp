// The message writer against a recording host.
#include "glo.h"
#include "tests/support/recording_host.h"

namespace {

using namespace sharedanalysis::test;

using Lines = std::vector<std::string>;

struct Arguments {
  std::vector<int32_t> ints;
  std::vector<double> reals;
  Lines strings;
  int32_t unit = -6, status = 0;
};

class MessageWriter : public testing::Test {
protected:
  void SetUp() override { resetRecordingHost(); }

  // The by-reference twin with tight texts: a read past their ends shows under the sanitizer.
  static void write(const std::string& type, const std::string& text, const Arguments& arguments = {},
                    decltype(&GLO_UTI_WRITE) entry = GLO_UTI_WRITE) {
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
  static Lines linesOf(const std::string& type, const std::string& text, const Arguments& arguments = {}) {
    return write(type, text, arguments), takeLines();
  }
  static Lines cLinesOf(const std::string& type, const std::string& text, const Arguments& arguments = {}) {
    return cWrite(type, text, arguments), takeLines();
  }
  // Of texts of one line.
  static std::string only(const Lines& lines) {
    return lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " lines";
  }
  static std::string table(const std::string& text, const Arguments& a = {}) { return only(linesOf("Table", text, a)); }
  static std::string cTable(const std::string& text, const Arguments& a = {}) {
    return only(cLinesOf("Table", text, a));
  }
};

TEST_F(MessageWriter, ReplacesPlaceholders) {
  const Arguments arguments{{7, INT32_MIN}, {2.5}, {"SET1"}};
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
  for (int k = 0; k < 2000; ++k)
    if (const double value = std::bit_cast<double>(random()); std::isfinite(value)) values.push_back(value);
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
  EXPECT_EQ(table("%i"), " ") << "codes are upper-case; an empty record is a blank line";
  EXPECT_EQ(table("a%Sb", {{}, {}, {"   "}}), "a        b") << "a blank value leaves 8 blanks";
  EXPECT_EQ(cTable("a%Sb", {{}, {}, {""}}), "a        b");
  EXPECT_EQ(table("\x80\xff%%"), "\x80\xff%") << "characters are bytes";

  // What stands behind the template is not read; arrays that are not there leave blank values; a negative length is an
  // empty text.
  const int32_t unit = -6, status = 0, seven = 7;
  GLO_UTI_WRITE(&unit, &status, "Table", "before%I", &seven, nullptr, nullptr, 5, 7, 0);
  GLO_UTI_WRITE(&unit, &status, "Table", "%I%R%S.", nullptr, nullptr, nullptr, 5, 7, -3);
  glo_uti_CWrite(-6, 0, "Table", "%I%R%S.", nullptr, nullptr, nullptr);
  GLO_UTI_WRITE(&unit, &status, "Table", "text", nullptr, nullptr, nullptr, 5, -4, 0);
  glo_uti_CWrite(-6, 0, nullptr, nullptr, nullptr, nullptr, nullptr);
  const std::string blanks(24, ' ');
  EXPECT_EQ(takeLines(), (Lines{"before", blanks + ".", blanks + ".", " ", "  "}));
}

TEST_F(MessageWriter, HoldsAThousandCharacters) {
  EXPECT_EQ(table(std::string(1200, 'x')), std::string(1000, 'x'));
  EXPECT_EQ(table(std::string(996, 'x') + "%I", {{1234}, {}, {}}), std::string(996, 'x') + "1234");
  EXPECT_EQ(table(std::string(996, 'x') + "%Iy", {{12345}, {}, {}}), std::string(996, 'x')) << "a value is not cut";
  EXPECT_EQ(table(std::string(1000, 'x') + "%%"), std::string(1000, 'x'));
  EXPECT_EQ(table(std::string(993, 'x') + "%S", {{}, {}, {" "}}), std::string(993, 'x')) << "8 blanks do not fit";
  EXPECT_EQ(table("%S", {{}, {}, {std::string(1001, 's')}}), " ");
  EXPECT_EQ(linesOf(" ", std::string(1200, '%')), Lines{std::string(1000, '%')}) << "verbatim";
  // finished text goes to the status channel whole
  const Arguments arguments{{}, {}, {std::string(1000, 'y')}, -6, 1};
  write("Error", "%S", arguments);
  cWrite("Error", "%S", arguments);
  ASSERT_EQ(recordingHost().statuses.size(), 2u);
  for (const RecordedStatus& status : recordingHost().statuses) EXPECT_EQ(status.firstString, arguments.strings[0]);
}

TEST_F(MessageWriter, BreaksAtBlanksOrAtTheFullWidth) {
  for (const auto& [type, header, room] : {std::tuple{"Error", "***ERROR: ", 69},
                                           {"Warning", "***WARNING: ", 67},
                                           {"Note", "***NOTE: ", 70},
                                           {"Info", "  ", 77}}) {
    const std::string kind = type, first = header, indent(first.size(), ' '), a(room, 'a'), rest = a.substr(1),
                      full = "z " + a.substr(2);
    const auto expect = [&](const std::string& text, const Lines& pieces, const char* what) {
      Lines lines{" "};
      for (const std::string& piece : pieces) lines.push_back((lines.size() == 1 ? first : indent) + piece);
      lines.emplace_back(" ");
      EXPECT_EQ(linesOf(kind, text), lines) << what;
    };
    expect(a, {a}, "just fits in one line of 79");
    expect(full, {full}, "no break where the rest fits");
    expect(a + a + "b c", {a, a, "b c"}, "cut hard");
    expect(rest + " b c", {rest + " ", "b c"}, "a blank in the last column");
    expect(a + " b c", {a, " b c"}, "just beyond it");
    expect("z " + a, {"z ", a}, "the only blank far left");
  }
  std::string words, joined;
  for (int k = 0; k < 90; ++k) words += "word" + std::to_string(k) + (k % 7 == 0 ? "  " : " ");
  for (const std::string& line : cLinesOf("Odb_Frame", words)) {
    EXPECT_LE(line.size(), 79u);
    joined += line.substr(2);
  }
  EXPECT_EQ(joined + ' ', words) << "pieces keep their blanks";
}

TEST_F(MessageWriter, WritesTwentyLinesAtMost) {
  std::string words;
  Lines expected{" "};
  for (int k = 0; k < 24; ++k) {
    const std::string word = std::string(39, static_cast<char>('a' + k)) + " ";
    words += word;
    if (k < 20) expected.push_back((k == 0 ? "***WARNING: " : std::string(12, ' ')) + word);
  }
  expected.emplace_back(" ");
  EXPECT_EQ(linesOf("Warning", words), expected);
}

// What each type does to "%I" with the status flag on: lines, and the text that the status channel receives.
TEST_F(MessageWriter, TreatsEachTypeAsItsOwn) {
  const Lines unknown = {"  42"};
  const struct {
    std::string type;
    Lines lines;
    const char* status; // null: nothing is sent
  } types[] = {{" ", {"%I"}, nullptr},
               {"NewLine", {" "}, nullptr},
               {"Status", {"%I"}, "%I"},
               {"Step", {" ", "42", " "}, "%I"},
               {"Table", {"42"}, nullptr},
               {"Info", {" ", "  42", " "}, nullptr},
               {"Error", {" ", "***ERROR: 42", " "}, "message=%S"},
               {"Warning", {" ", "***WARNING: 42", " "}, "message=%S"},
               {"Note", {" ", "***NOTE: 42", " "}, nullptr},
               {"Odb_Frame", unknown, "message=%S"},
               {"StateFrame", unknown, "message=%S"},
               {"Interrupted", unknown, "%I"}};
  const Arguments on{{42}, {1.0}, {"s"}, -6, 1}, off{{42}, {}, {}, -6, 0}, noUnit{{42}, {}, {}, 0, 1};
  for (const auto& c : types)
    for (bool byReference : {true, false}) {
      SCOPED_TRACE(c.type);
      const auto lines = [&](const Arguments& arguments) {
        recordingHost().statuses.clear();
        return byReference ? linesOf(c.type + "      ", "%I  ", arguments) : cLinesOf(c.type, "%I  ", arguments);
      };
      const std::vector<RecordedStatus>& statuses = recordingHost().statuses;
      EXPECT_EQ(lines(on), c.lines);
      ASSERT_EQ(statuses.size(), c.status == nullptr ? 0u : 1u);
      if (c.status != nullptr) {
        const RecordedStatus& record = statuses[0];
        EXPECT_EQ(record.service, byReference ? "IPM_MESSAGE" : "ipm_message_c");
        EXPECT_TRUE(record.type.starts_with(c.type) && record.text.starts_with(c.status)) << record.text;
        EXPECT_EQ(record.firstString, record.text == "message=%S" ? "42" : "s");
        EXPECT_TRUE(record.ints == on.ints.data() && record.reals == on.reals.data());
      }
      EXPECT_EQ(lines(off), c.type == "Status" ? Lines{"42"} : c.lines);
      EXPECT_TRUE(statuses.empty());
      EXPECT_EQ(lines(noUnit), Lines());
      EXPECT_EQ(statuses.size(), c.status == nullptr ? 0u : 1u);
    }
}

TEST_F(MessageWriter, TypesMatchWholeInOneEntryAndByTheirBeginningInTheOther) {
  for (const char* type : {"Errors", "Warnings", "NewLines", "error", "Err", " Error"})
    EXPECT_EQ(linesOf(type, "%%"), Lines{"  %"}) << type;
  EXPECT_EQ(linesOf("", "%%"), Lines{"%%"}) << "a field without characters is blank";
  EXPECT_EQ(cLinesOf("Errors", "%%"), (Lines{" ", "***ERROR: %", " "}));
  EXPECT_EQ(cLinesOf("Warnings", "%%"), (Lines{" ", "***WARNING: %", " "}));
  EXPECT_EQ(cLinesOf("NewLines", "%%"), Lines{" "});
  EXPECT_EQ(cLinesOf(" Error", "%%"), Lines{"%%"}) << "begins with the blank type";
  EXPECT_EQ(cLinesOf("", "%%"), Lines{"  %"}) << "but does not begin with a blank";
}

TEST_F(MessageWriter, LinesAndRecordsCarryTheIdentityOfTheirMessage) {
  const Arguments arguments{{}, {}, {}, -7, 1};
  write("Error", "a", arguments);
  write("Error", "b", arguments, GLO_UTI_WRITECONT);
  write("Error", "c", arguments);
  cWrite("Error", "d", arguments);
  cWrite("NewLine", "", arguments);
  cWrite("Error", "e", arguments);

  using Identities = std::vector<std::pair<int32_t, int32_t>>;
  Identities lines, statuses;
  for (const RecordedLine& line : recordingHost().lines) {
    EXPECT_EQ(line.unit, -7);
    EXPECT_EQ(line.width, 79);
    EXPECT_EQ(line.service, line.thread == 3 ? "LFC_XUT_XPLMSGC" : "lfc_xut_xplmsgC_c");
    if (lines.empty() || lines.back() != std::pair(line.thread, line.message))
      lines.emplace_back(line.thread, line.message);
  }
  for (const RecordedStatus& status : recordingHost().statuses) statuses.emplace_back(status.thread, status.message);
  EXPECT_EQ(lines, (Identities{{3, 100}, {3, 101}, {7, 500}, {7, 501}, {7, 502}}));
  EXPECT_EQ(statuses, (Identities{{3, 100}, {3, 100}, {3, 101}, {7, 500}, {7, 502}}));
  EXPECT_EQ(recordingHost().lines.size(), 3u * 5 + 1);
}

} // namespace
