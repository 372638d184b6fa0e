// The interface as a Fortran module.  Routines without texts are bound as they are; one with texts has a module procedure in
// front of its binding, which adds lengths and zeros that Fortran keeps to itself.
#include "declarations.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <map>
#include <sstream>

namespace sa::tool {
namespace {

constexpr std::size_t kLongestLine = 132, kLongestName = 63;

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// A statement, continued on further lines behind commas.
void statement(const std::string& indent, const std::string& text) {
  std::string line = indent, word;
  std::istringstream words(text);
  while (words >> word) {
    const bool isFirst = line.find_first_not_of(' ') == std::string::npos;
    if (!isFirst && line.size() + word.size() + 3 > kLongestLine) {
      std::cout << line << " &\n";
      line = indent + "    ";
    } else if (!isFirst) {
      line += ' ';
    }
    line += word;
  }
  std::cout << line << "\n";
}

void comment(const std::string& indent, const char* mark, const std::string& text) {
  std::string line = indent + mark + " " + text;
  const std::string next = indent + "!!     ";
  while (line.size() > kLongestLine) {
    const std::size_t blank = line.find_last_of(' ', kLongestLine);
    std::cout << line.substr(0, blank) << "\n";
    line = next + line.substr(blank + 1);
  }
  std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
}

// Names of one routine: Fortran does not tell S from s, the second gets an underscore.
class Names {
public:
  explicit Names(const Routine& routine) {
    std::set<std::string> taken = {lower(routine.name)};
    for (const Argument& argument : routine.arguments) {
      std::string name = argument.name;
      while (!taken.insert(lower(name)).second) name += '_';
      names_[argument.name] = name;
    }
  }
  std::string operator()(const std::string& name) const { return names_.at(name); }
  // A dimension with its names exchanged.
  std::string dimension(const std::string& text) const {
    std::string result, word;
    for (const char c : text + ' ') {
      if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_') {
        word += c;
        continue;
      }
      const auto found = names_.find(word);
      result += found == names_.end() ? word : found->second;
      word.clear();
      if (c != ' ') result += c;
    }
    return result;
  }
  std::string shape(const ArgumentLine& line) const {
    std::string result;
    for (const std::string& text : line.shape) result += (result.empty() ? "(" : ", ") + dimension(text);
    return result + ")";
  }

private:
  std::map<std::string, std::string> names_;
};

std::string kindOf(const std::string& type) {
  if (type.find("double") != std::string::npos) return "real(c_double)";
  if (type.find("float") != std::string::npos) return "real(c_float)";
  if (type.find("int64_t") != std::string::npos) return "integer(c_int64_t)";
  return "integer(c_int32_t)";
}

std::string resultKind(const Routine& routine) {
  return routine.result.back() == '*' ? "type(c_ptr)" : kindOf(routine.result);
}

// An output that a call may fill in part is one that goes in and out to Fortran.
bool mayBePartial(const Routine& routine, const Argument& argument) {
  static const std::set<std::string> kParts = {"list", "set", "first", "record", "stride", "rows", "code"};
  const bool hasPart = std::any_of(routine.arguments.begin(), routine.arguments.end(),
                                   [](const Argument& a) { return kParts.contains(role(a.described->unit)); });
  return argument.described->direction == "out" && !isScalar(*argument.described) && hasPart;
}

std::string intentOf(const ArgumentLine& line) {
  return line.direction == "in,out" ? "intent(inout)" : "intent(" + line.direction + ")";
}

bool isText(const Argument& argument) { return argument.described->unit == "text"; }

bool hasTexts(const Routine& routine) {
  return std::any_of(routine.arguments.begin(), routine.arguments.end(), isText);
}

// The type of an argument that is no text.
std::string plainType(const Routine& routine, const Argument& argument, const Names& names) {
  const ArgumentLine& line = *argument.described;
  std::string text = kindOf(argument.type) + ", ";
  text += mayBePartial(routine, argument) ? "intent(inout)" : intentOf(line);
  if (isPassedByValue(argument)) text += ", value";
  text += " :: " + names(argument.name);
  return isScalar(line) ? text : text + names.shape(line);
}

// As C has it.
std::string boundType(const Routine& routine, const Argument& argument, const Names& names) {
  if (!isText(argument)) return plainType(routine, argument, names);
  const std::string end = intentOf(*argument.described) + " :: " + names(argument.name) + "(*)";
  return (isListOfTexts(argument) ? "type(c_ptr), " : "character(kind=c_char), ") + end;
}

// As a Fortran program has it.
std::string callersType(const Routine& routine, const Argument& argument, const Names& names) {
  if (!isText(argument)) return plainType(routine, argument, names);
  const std::string start = "character(kind=c_char, len=*), " + intentOf(*argument.described) + " :: ";
  if (isListOfTexts(argument)) return start + names(argument.name) + "(:)";
  return start + names(argument.name) + (argument.described->shape.size() > 1 ? "(*)" : "");
}

// Scalars first: the shapes of arrays use them.
template <class Declare>
void declare(const std::string& indent, const Routine& routine, bool withLengths, Declare type) {
  for (const bool scalars : {true, false})
    for (const Argument& argument : routine.arguments)
      if (isScalar(*argument.described) == scalars && (withLengths || !isLengthOfText(routine, argument)))
        statement(indent, type(argument));
}

std::string argumentList(const Routine& routine, const Names& names, bool withLengths) {
  std::string list;
  for (const Argument& argument : routine.arguments)
    if (withLengths || !isLengthOfText(routine, argument)) list += (list.empty() ? "" : ", ") + names(argument.name);
  return "(" + list + ")";
}

void describe(const std::string& indent, const Routine& routine, const Names& names) {
  const char* mark = "!>";
  for (const std::string& line : routine.text) {
    comment(indent, mark, line);
    mark = "!!";
  }
  for (const Argument& argument : routine.arguments) {
    if (isLengthOfText(routine, argument)) continue;
    const ArgumentLine& line = *argument.described;
    const std::string shape = isText(argument) && !isListOfTexts(argument) && line.shape.size() == 1
                                  ? ""
                                  : (isText(argument) ? "(*)" : names.shape(line)) + std::string(", ");
    comment(indent, "!!",
            "@param[" + line.direction + "] " + names(argument.name) + "  " + shape + line.unit + ": " + line.meaning);
  }
}

void writeBinding(const std::string& indent, const Routine& routine) {
  const Names names(routine);
  const bool isFunction = routine.result != "void";
  const std::string kind = isFunction ? "function " : "subroutine ";
  const std::string name = (hasTexts(routine) ? "c_" : "") + routine.name;
  if (!hasTexts(routine)) describe(indent, routine, names);
  statement(indent, kind + name + argumentList(routine, names, true) + " bind(c, name=\"" + routine.name + "\")" +
                        (isFunction ? " result(value_)" : ""));
  statement(indent + "  ", "import :: c_char, c_double, c_float, c_int32_t, c_int64_t, c_ptr");
  declare(indent + "  ", routine, true, [&](const Argument& argument) { return boundType(routine, argument, names); });
  if (isFunction) statement(indent + "  ", resultKind(routine) + " :: value_");
  std::cout << indent << "end " << kind << name << "\n";
}

// The procedure in front of a binding with texts, which it keeps to itself.
void writeProcedure(const Routine& routine) {
  const Names names(routine);
  const bool isFunction = routine.result != "void";
  const std::string kind = isFunction ? "function " : "subroutine ";
  describe("  ", routine, names);
  statement("  ", kind + routine.name + argumentList(routine, names, false) + (isFunction ? " result(value_)" : ""));
  declare("    ", routine, false, [&](const Argument& argument) { return callersType(routine, argument, names); });
  if (isFunction) statement("    ", resultKind(routine) + " :: value_");
  for (const Argument& argument : routine.arguments) {
    if (!isListOfTexts(argument)) continue;
    const std::string name = names(argument.name);
    statement("    ", "character(kind=c_char), target :: texts_(len(" + name + ") + 1, size(" + name + "))");
    statement("    ", "type(c_ptr) :: addresses_(size(" + name + "))");
  }
  std::cout << "    interface\n";
  writeBinding("      ", routine);
  std::cout << "    end interface\n";
  std::string actual;
  for (const Argument& argument : routine.arguments) {
    const std::string name = names(argument.name);
    actual += actual.empty() ? "(" : ", ";
    if (isListOfTexts(argument)) {
      actual += "addresses_";
    } else if (isText(argument) && argument.described->shape[0] == "*") {
      actual += "trim(" + name + ") // c_null_char";
    } else if (isLengthOfText(routine, argument)) {
      for (const Argument& text : routine.arguments)
        if (isText(text) && text.described->shape[0] == argument.name)
          actual += "len(" + names(text.name) + ", c_int64_t)";
    } else {
      actual += name;
    }
  }
  for (const Argument& argument : routine.arguments)
    if (isListOfTexts(argument)) statement("    ", "call terminate(" + names(argument.name) + ", texts_, addresses_)");
  statement("    ", (isFunction ? "value_ = c_" : "call c_") + routine.name + (actual.empty() ? "(" : actual) + ")");
  std::cout << "  end " << kind << routine.name << "\n\n";
}

const char* const kTerminate = R"(  ! Texts with a zero behind each, and where each begins.
  subroutine terminate(texts, terminated, addresses)
    character(kind=c_char, len=*), intent(in) :: texts(:)
    character(kind=c_char), target, intent(out) :: terminated(:, :)
    type(c_ptr), intent(out) :: addresses(:)
    integer :: i, k
    do k = 1, size(texts)
      do i = 1, len_trim(texts(k))
        terminated(i, k) = texts(k)(i:i)
      end do
      terminated(len_trim(texts(k)) + 1, k) = c_null_char
      addresses(k) = c_loc(terminated(1, k))
    end do
  end subroutine terminate

)";

// Those that Fortran can have: a name that ends with an underscore and is there without it too is one name.
std::vector<const Routine*> nameable(const Interface& interface) {
  std::map<std::string, const Routine*> byName;
  std::vector<const Routine*> routines;
  for (const Routine& routine : interface.routines) byName.emplace(routine.name, &routine);
  std::set<std::string> taken;
  for (const Routine& routine : interface.routines) {
    const bool isSpelling =
        routine.name.ends_with('_') && byName.contains(routine.name.substr(0, routine.name.size() - 1));
    if (isSpelling) continue;
    if (!taken.insert(lower(routine.name)).second)
      report(routine.file, routine.line, routine.name + ": Fortran cannot tell it from another routine");
    if (routine.name.size() + 2 > kLongestName)
      report(routine.file, routine.line, routine.name + ": Fortran knows no names of this length");
    routines.push_back(&routine);
  }
  return routines;
}

} // namespace

void writeFortran(const Interface& interface) {
  const std::vector<const Routine*> routines = nameable(interface);
  std::cout
      << "! Written from the headers; do not edit.\n\n"
         "!> Every routine of SharedAnalysis.  Scalars, shapes and intents are those of the C declarations; the "
         "lengths of\n"
         "!! texts are those of the actual arguments.  Texts for routines that take zero-terminated ones lose their "
         "trailing\n"
         "!! blanks and get the zero.\n"
         "module sharedanalysis\n"
         "  use, intrinsic :: iso_c_binding, only: c_char, c_double, c_float, c_int32_t, c_int64_t, c_loc, "
         "c_null_char, c_ptr\n"
         "  implicit none\n"
         "  private :: c_char, c_double, c_float, c_int32_t, c_int64_t, c_loc, c_null_char, c_ptr, terminate\n";
  std::cout << "\n";
  for (const Constant& constant : interface.constants) {
    if (!constant.meaning.empty()) comment("  ", "!>", constant.meaning);
    statement("  ", "integer(c_int32_t), parameter :: " + constant.name + " = " + constant.value);
  }
  std::cout << "\n  interface\n\n";
  for (const Routine* routine : routines) {
    if (hasTexts(*routine)) continue;
    writeBinding("    ", *routine);
    std::cout << "\n";
  }
  std::cout << "  end interface\n\ncontains\n\n" << kTerminate;
  for (const Routine* routine : routines)
    if (hasTexts(*routine)) writeProcedure(*routine);
  std::cout << "end module sharedanalysis\n";
}

} // namespace sa::tool
