// A recorded call as a program of its own.
#include "call.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace sa::replay {
namespace {

using checked::Argument;
using checked::Type;

constexpr std::uint64_t kMost = 1 << 20; // elements that fit into a source

std::span<const Argument> declared(const RecordedCall& call) {
  return checked::argumentsOf(checked::routines()[static_cast<std::size_t>(checked::routineNumber(call.routine))]);
}

void checkSize(const RecordedCall& call) {
  std::uint64_t sum = 0;
  for (const RecordedArgument& a : call.arguments) sum += a.runs.empty() ? 0 : a.runs.back().end();
  if (sum > kMost) throw std::runtime_error("too large for a source file: reduce the call to a point first");
}

// In a form that both languages read back to the last bit.
std::string literal(const unsigned char* at, Type type, bool isPython) {
  char text[64];
  if (type == Type::real || type == Type::single) {
    double value = 0;
    float single = 0;
    std::memcpy(&value, at, type == Type::real ? 8 : 0);
    std::memcpy(&single, at, type == Type::single ? 4 : 0);
    if (type == Type::single) value = static_cast<double>(single);
    if (std::isnan(value)) return isPython ? "nan" : "NAN";
    if (std::isinf(value)) return std::string(value < 0 ? "-" : "") + (isPython ? "inf" : "INFINITY");
    std::snprintf(text, sizeof text, isPython ? "h('%a')" : "%a", value);
    return text;
  }
  if (type == Type::character) return std::to_string(static_cast<int>(*at));
  std::int64_t wide = 0;
  std::int32_t narrow = 0;
  std::memcpy(&wide, at, type == Type::int32 ? 0 : 8);
  std::memcpy(&narrow, at, type == Type::int32 ? 4 : 0);
  return std::to_string(type == Type::int32 ? narrow : wide) + (type != Type::int32 && !isPython ? "LL" : "");
}

std::string listOf(const std::vector<unsigned char>& bytes, Type type, bool isPython) {
  std::string text;
  const std::size_t size = checked::sizeOf(type);
  for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
    text.append(at == 0 ? "" : at / size % 6 == 0 ? ",\n    " : ", ").append(literal(&bytes[at], type, isPython));
  }
  return text;
}

std::string runsText(const std::vector<checked::Run>& runs, const char* open, const char* close) {
  std::string text;
  for (const checked::Run& run : runs)
    text.append(text.empty() ? "" : ", ")
        .append(open)
        .append(std::to_string(run.first))
        .append(", ")
        .append(std::to_string(run.count))
        .append(close);
  return text;
}

const char* cppType(Type type) {
  return type == Type::real        ? "double"
         : type == Type::single    ? "float"
         : type == Type::int32     ? "int32_t"
         : type == Type::character ? "char"
                                   : "int64_t";
}
const char* pythonType(Type type) {
  return type == Type::real        ? "c_double"
         : type == Type::single    ? "c_float"
         : type == Type::int32     ? "c_int32"
         : type == Type::character ? "c_char"
                                   : "c_int64";
}

} // namespace

std::string cppOf(const RecordedCall& call) {
  checkSize(call);
  std::string text =
      "// " + call.routine + ", call " + std::to_string(call.number) + ", increment " + std::to_string(call.increment) +
      "; written by sharedanalysis-replay.\n"
      "//   g++ FILE $(pkg-config --cflags --libs sharedanalysis-host)\n"
      "#include \"acd.h\"\n#include \"glo.h\"\n#include \"spx.h\"\n\n"
      "#include <cmath>\n#include <cstdio>\n#include <cstring>\n#include <vector>\n\nnamespace {\n\n"
      "struct Run {\n  long first, count;\n};\n\n"
      "// An array with values in some places.\n"
      "template <class T>\nstd::vector<T> filledArray(long size, const std::vector<Run>& runs, const std::vector<T>& "
      "values) "
      "{\n"
      "  std::vector<T> result(static_cast<std::size_t>(size) + 1);\n  std::size_t at = 0;\n"
      "  for (const Run& run : runs)\n    for (long n = 0; n < run.count && at < values.size(); ++n)\n"
      "      result[static_cast<std::size_t>(run.first + n)] = values[at++];\n  return result;\n}\n\n"
      "template <class T>\nint differs(const char* name, const std::vector<T>& got, const std::vector<Run>& runs, "
      "const std::vector<T>& recorded) {\n"
      "  std::size_t at = 0;\n  for (const Run& run : runs)\n    for (long n = 0; n < run.count; ++n, ++at) {\n"
      "      const T a = recorded[at], b = got[static_cast<std::size_t>(run.first + n)];\n"
      "      if (std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b)) continue;\n"
      "      std::printf(\"%s, value %ld: recorded %.17g, now %.17g\\n\", name, run.first + n + 1, "
      "static_cast<double>(a), static_cast<double>(b));\n"
      "      return 1;\n    }\n  return 0;\n}\n\n} // namespace\n\nint main() {\n";
  std::string arguments, checks;
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const RecordedArgument& a = call.arguments[k];
    const Argument& d = declared(call)[k];
    const std::string type = cppType(a.type), name = d.name;
    arguments += k == 0 ? "" : ", ";
    if (a.state == RecordedArgument::State::null) {
      arguments += "nullptr";
      continue;
    }
    const std::string runs = runsText(a.runs, "{", "}");
    text.append("  const std::vector<Run> runs_").append(name).append(" = {").append(runs).append("};\n");
    text.append("  std::vector<")
        .append(type)
        .append("> ")
        .append(name)
        .append(" = filledArray<")
        .append(type)
        .append(">(");
    text.append(std::to_string(a.runs.empty() ? 512 : a.runs.back().end()))
        .append(", runs_")
        .append(name)
        .append(", {");
    text.append(listOf(a.before, a.type, false)).append("});\n");
    arguments.append(name).append(d.has(checked::kByValue) ? "[0]" : ".data()");
    if (a.isWritten() && a.state == RecordedArgument::State::kept)
      checks.append("  differences += differs<")
          .append(type)
          .append(">(\"")
          .append(name)
          .append("\", ")
          .append(name)
          .append(", runs_")
          .append(name)
          .append(", {")
          .append(listOf(a.after, a.type, false))
          .append("});\n");
  }
  text.append("  ")
      .append(call.routine)
      .append("(")
      .append(arguments)
      .append(");\n  int differences = 0;\n")
      .append(checks);
  return text.append("  std::puts(differences == 0 ? \"the results are the recorded ones\" : \"the results "
                     "differ\");\n  return differences == 0 ? 0 : 1;\n}\n");
}

std::string pythonOf(const RecordedCall& call) {
  checkSize(call);
  std::string text =
      "\"\"\"" + call.routine + ", call " + std::to_string(call.number) + ", increment " +
      std::to_string(call.increment) +
      "; written by sharedanalysis-replay.\n\npython3 FILE [HOST LIBRARY]\n\"\"\"\n"
      "import ctypes\nimport struct\nimport sys\n\nnan, inf, h = float('nan'), float('inf'), float.fromhex\n\n\n"
      "def array(kind, size, runs, values):\n    result, values = (kind * (size + 1))(), iter(values)\n"
      "    for first, count in runs:\n        for n in range(first, first + count):\n"
      "            result[n] = next(values, result[n])\n    return result\n\n\n"
      "def differs(name, got, runs, recorded):\n    values = iter(recorded)\n    for first, count in runs:\n        "
      "for n in range(first, first + count):\n"
      "            a, b = next(values), got[n]\n            if a == b and str(a) == str(b) or a != a and b != b:\n     "
      "           continue\n"
      "            print(f'{name}, value {n + 1}: recorded {a!r}, now {b!r}')\n            return 1\n    return 0\n\n\n"
      "files = sys.argv[1:] or ['libSharedAnalysisHost.so', 'libSharedAnalysis.so.1']\n"
      "for file in files: # the host first: the library calls it\n"
      "    library = ctypes.CDLL(file, mode=ctypes.RTLD_GLOBAL)\n";
  std::string arguments, checks;
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const RecordedArgument& a = call.arguments[k];
    const Argument& d = declared(call)[k];
    const std::string type = pythonType(a.type), name = std::string("a_") + d.name;
    arguments += k == 0 ? "" : ", ";
    if (a.state == RecordedArgument::State::null) {
      arguments += "None";
      continue;
    }
    const bool isText = a.type == Type::character;
    const std::string runs = a.runs.empty() ? "" : runsText(a.runs, "(", ")") + ",";
    text.append("r_").append(d.name).append(" = [").append(runs).append("]\n");
    text.append(name).append(" = array(ctypes.").append(isText ? "c_ubyte" : type).append(", ");
    text.append(std::to_string(a.runs.empty() ? 512 : a.runs.back().end())).append(", r_").append(d.name).append(", [");
    text.append(listOf(a.before, a.type, true)).append("])\n");
    if (d.has(checked::kByValue))
      arguments.append("ctypes.").append(type).append("(").append(name).append("[0])");
    else
      arguments += name;
    if (a.isWritten() && a.state == RecordedArgument::State::kept)
      checks.append("differences += differs('")
          .append(d.name)
          .append("', ")
          .append(name)
          .append(", r_")
          .append(d.name)
          .append(", [")
          .append(listOf(a.after, a.type, true))
          .append("])\n");
  }
  text.append("library.")
      .append(call.routine)
      .append("(")
      .append(arguments)
      .append(")\ndifferences = 0\n")
      .append(checks);
  return text.append("print('the results are the recorded ones' if differences == 0 else 'the results "
                     "differ')\nsys.exit(differences > 0)\n");
}

} // namespace sa::replay
