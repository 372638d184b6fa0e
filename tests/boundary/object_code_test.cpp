// The machine code of the kernels: each copy for an instruction set uses that set's full vectors and has everything inlined.
// A copy that calls shared code runs the slow baseline version of it, with the right bits and no other sign.
#include "tests/support/files.h"
#include "tests/support/program.h"

#include <regex>

namespace {

using namespace sharedanalysis::test;

// Instructions of each function, as disassembled: "vmulpd %zmm0,...", without addresses.
struct Function {
  std::string name;
  std::vector<std::string> instructions;
};
std::vector<Function> disassemble(const std::string& library) {
  std::vector<Function> functions;
  for (const std::string& line : linesOf(shell("objdump -d --no-show-raw-insn '" + library + "'").out)) {
    // "0000000000008160 <name>:" and "    8160:\tvmulpd ..."
    const std::size_t open = line.find(" <"), tab = line.find('\t');
    if (tab == std::string::npos && open != std::string::npos && line.ends_with(">:"))
      functions.push_back({line.substr(open + 2, line.size() - open - 4), {}});
    else if (tab != std::string::npos && !functions.empty())
      functions.back().instructions.push_back(line.substr(tab + 1));
  }
  return functions;
}

// Kernels whose loops take scalars through maps, lists or comparisons one after another; there is nothing to vectorise.
const std::set<std::string> kWithoutVectors = {
    "GLO_UTI_INSSORTI",    // a sort moves list entries
    "GLO_UTI_INSSORTR",    // a sort moves list entries
    "GLO_UTI_CHKSORTI",    // integers alone
    "GLO_UTI_GATHERI",     // integers alone
    "GLO_ASM_GATHERINT",   // integers alone
    "GLO_ASM_SCATTERINT",  // integers alone, in point order
    "GLO_ASM_INITINT",     // integers alone, in point order
    "GLO_UTI_VSUMI",       // integers alone
    "GLO_UTI_VCOPYRINDX",  // point by point through a list
    "GLO_UTI_BROADCAST0D", // these become calls of memset
    "GLO_UTI_BROADCAST0R", "GLO_UTI_BROADCAST0I", "GLO_UTI_BROADCAST0S",
};
// Maps may repeat and points keep their order, or single values are picked from records or go there: scalar loads and stores.
const std::regex kThroughMaps(
    "GLO_(UTI_.*(GATHER|SCATTER).*|UTI_ODBDIRCOPY.*|ASM_(GATHER|SCATTER).*|OPE_.*ASSEM.*)|"
    "SPX_ODB_(ORIENT2D(L3BEAM)?(ELSET)?|ORIENT3D(ELSET)?INVERT)|SPX_OPE_USERELEM(TO|FROM)CAT.*|SPX_OPE_INI.*FLDELSET");

// Copies move bits: full registers of any type will do.
const std::regex
    kCopies("GLO_UTI_(COPYR|.*BROADCAST.*|INITROTATIONMATRIX)|SPX_OPE_INI.*FLD|SPX_GET_CONSTCONDUCTIVITY[23]D");

// Records by shuffles of four points: 256 bits are the longest.
const std::set<std::string> kInFours = {"GLO_UTI_ODB3DSTRAIN"};

// What a body may call: block moves of the C library, the compiler's unwinding, and what holds no vector code: the recursion of
// the sorts, and the look at the breakpoints of a table, once a block.
const std::regex
    kAllowedCalls(".*<((memcpy|memmove|memset|memcmp|_Unwind_Resume)(@.*)?|_ZN2sa12_GLOBAL__N_19mergeRuns.*|"
                  "_ZN2sa5table17SharedBreakpoints6layOut.*)>");

struct Clone {
  std::string kernel, set;
};

// "_ZN2saL13GLO_UTI_VADDR_clonesE....avx2" or "....avx2.1": kernel and instruction set; empty for other symbols.
Clone cloneOf(const std::string& symbol) {
  static const std::regex kPattern(
      "_ZN2sa(?:4user)?(?:12_GLOBAL__N_1)?L?\\d+(\\w+)_clonesE\\w*\\.(avx512f|avx2|default)(?:\\.\\d+)?");
  std::smatch match;
  if (!std::regex_match(symbol, match, kPattern)) return {};
  return {match[1], match[2]};
}

std::string registerOf(const Clone& clone) {
  if (clone.set == "default") return "%xmm";
  return clone.set == "avx512f" && kInFours.count(clone.kernel) == 0 ? "%zmm" : "%ymm";
}

bool usesVectors(const std::string& instruction, const Clone& clone) {
  static const std::regex kPackedDouble("[a-z0-9]*pd[0-9a-z]*\\s.*"), kMove("v?mov(ap|up|dq)[a-z0-9]*\\s.*");
  if (instruction.find(registerOf(clone)) == std::string::npos) return false;
  return std::regex_match(instruction, kPackedDouble) ||
         (std::regex_match(clone.kernel, kCopies) && std::regex_match(instruction, kMove));
}

// What is wrong with the body of a clone; identical bodies share code, then one only jumps to the other.
std::string fault(const std::map<std::string, const Function*>& bySymbol, const Function* body, const Clone& clone) {
  static const std::regex kJump("jmp +[0-9a-f]+ <([^+>]+)>"), kFused("vfn?m(add|sub).*");
  std::smatch match;
  for (int hops = 0; hops < 3 && !body->instructions.empty(); ++hops) {
    if (!std::regex_search(body->instructions[0], match, kJump)) break;
    const auto target = bySymbol.find(match[1]);
    if (target == bySymbol.end() || cloneOf(target->first).set != clone.set) return "jumps to " + match[1].str();
    body = target->second;
  }
  bool hasVectors = false;
  for (const std::string& instruction : body->instructions) {
    if (instruction.rfind("call", 0) == 0 && !std::regex_match(instruction, kAllowedCalls))
      return "has the call: " + instruction;
    if (std::regex_match(instruction, kFused)) return "rounds once: " + instruction;
    hasVectors = hasVectors || usesVectors(instruction, clone);
  }
  if (hasVectors || kWithoutVectors.count(clone.kernel) != 0 || std::regex_match(clone.kernel, kThroughMaps)) return "";
  return "has no packed double instruction on " + registerOf(clone);
}

// Faults of all clones of a library, and the number of kernels that have three clones.
std::map<std::string, std::string> faults(const std::string& library, std::size_t& kernels) {
  const std::vector<Function> functions = disassemble(library);
  std::map<std::string, const Function*> bySymbol;
  for (const Function& function : functions) bySymbol[function.name] = &function;
  std::map<std::string, std::string> found;
  std::map<std::string, std::set<std::string>> sets;
  for (const Function& function : functions) {
    const Clone clone = cloneOf(function.name);
    if (clone.kernel.empty()) continue;
    sets[clone.kernel].insert(clone.set);
    const std::string text = fault(bySymbol, &function, clone);
    if (!text.empty()) found[clone.kernel + " for " + clone.set] = text;
  }
  for (const auto& [kernel, present] : sets)
    if (present.size() != 3) found[kernel] = "is not compiled for three instruction sets";
  kernels = sets.size();
  return found;
}

TEST(ObjectCode, KernelsAreInlinedAndVectorised) {
  std::size_t kernels = 0;
  for (const auto& [clone, text] : faults(SA_LIBRARY_FILE, kernels)) ADD_FAILURE() << clone << " " << text;
  EXPECT_GE(kernels, 30U);
}

TEST(ObjectCode, FindsPlantedFaults) {
  std::size_t kernels = 0;
  const std::map<std::string, std::string> found = faults(SA_TOY_FILE, kernels);
  EXPECT_EQ(kernels, 3U);
  for (const char* set : {"avx512f", "avx2"}) {
    EXPECT_EQ(found.count(std::string("TOY_SOUND for ") + set), 0U);
    EXPECT_EQ(found.count(std::string("TOY_CALLS for ") + set), 1U);
    EXPECT_EQ(found.count(std::string("TOY_SCALAR for ") + set), 1U);
  }
}

} // namespace
