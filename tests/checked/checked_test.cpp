// Misuse of the library that the checking library finds and names, and sound calls that it passes on.
#include "acd.h"
#include "checked/layout.h"
#include "glo.h"
#include "spx.h"
#include "tests/support/files.h"

#include <dlfcn.h>
#include <sys/mman.h>

namespace sa::test {
namespace {

using namespace sharedanalysis::test;

// Set before the first call is made.
const std::string kLog = "/tmp/sharedanalysis_checked_" + std::to_string(getpid()) + ".log";
const bool kIsSet = setenv("SHAREDANALYSIS_CHECK", ("full,log=" + kLog).c_str(), 1) == 0 &&
                    setenv("SHAREDANALYSIS_CHECKED_LIBRARY", SA_FAULTY_LIBRARY, 1) == 0;

const struct Remove {
  ~Remove() { std::remove(kLog.c_str()); }
} atEnd;

// Lines since the last look.
std::string findings() {
  static std::size_t seen = 0;
  const std::string all = std::filesystem::exists(kLog) ? readFile(kLog) : "",
                    fresh = all.substr(std::min(seen, all.size()));
  seen = all.size();
  return fresh;
}

// A call of any routine with sound arguments, of zeros, ones and unit tensors, for tests that spoil one of them.
class SoundCall {
public:
  static constexpr std::int32_t kPoints = 4, kEntities = 6;

  explicit SoundCall(const checked::Routine& routine) : routine_(&routine) {
    const std::span<const checked::Argument> arguments = checked::argumentsOf(routine);
    addresses_.resize(arguments.size() + 1);
    // bounds may name arguments that come later
    for (int round = 0; round < 3; ++round)
      for (std::size_t k = 0; k < arguments.size(); ++k) setScalar(k, arguments[k]);
    const checked::Layout layout(routine, addresses_.data());
    for (std::size_t k = 0; k < arguments.size(); ++k) fill(k, arguments[k], layout);
  }

  const checked::Routine& routine() const { return *routine_; }
  const void** addresses() { return addresses_.data(); }
  int argument(std::string_view name) const {
    const std::span<const checked::Argument> arguments = checked::argumentsOf(*routine_);
    for (std::size_t k = 0; k < arguments.size(); ++k)
      if (name == arguments[k].name) return static_cast<int>(k);
    return -1;
  }
  template <class T>
  T* as(std::size_t k) {
    return reinterpret_cast<T*>(memory_[k].data());
  }

private:
  using Bytes = std::vector<double>; // for its alignment
  void setScalar(std::size_t k, const checked::Argument& a) {
    if (memory_.size() <= k) memory_.resize(k + 1);
    if (memory_[k].empty()) memory_[k].resize(4096, 0.0);
    addresses_[k] = memory_[k].data();
    if (!a.has(checked::kScalar) && !a.has(checked::kByValue)) return;
    using checked::Role;
    std::int32_t value = 1;
    if (a.is(Role::block) || a.is(Role::length) || a.is(Role::stride) || a.is(Role::last) ||
        std::string_view(a.name) == "nblock" || std::string_view(a.name) == "blockSize")
      value = kPoints;
    if (a.is(Role::stride)) value = kPoints + 2;
    if (a.is(Role::rows)) value = kEntities;
    if (a.is(Role::code)) value = std::atoi(a.unit + 5);
    if (a.is(Role::count) && a.has(checked::kBounded)) value = std::max(1, sizeNow(a.bound));
    if (a.is(Role::count) && !a.has(checked::kBounded) && std::string_view(a.name) != "nblock") value = 3;
    if (a.has(checked::kTextLength)) value = 8;
    if (a.type == checked::Type::real)
      *as<double>(k) = 0.5;
    else if (a.type == checked::Type::int64)
      *as<std::int64_t>(k) = value;
    else
      *as<std::int32_t>(k) = value;
  }
  std::int32_t sizeNow(const checked::Dimension& d) {
    std::int32_t value = d.constant;
    for (int n = 0; n < 3; ++n)
      if (d.arguments[n] >= 0 && static_cast<std::size_t>(d.arguments[n]) < memory_.size())
        value += (n == 0 ? d.factor : 1) * *as<std::int32_t>(static_cast<std::size_t>(d.arguments[n]));
    return value;
  }
  void fill(std::size_t k, const checked::Argument& a, const checked::Layout& layout) {
    using checked::Role;
    if (!a.isArray()) return;
    const checked::Array& array = layout.array(k);
    const std::int64_t lines = array.lineCount > 0 ? array.lineCount : kEntities + 8;
    const std::int64_t elements = std::min<std::int64_t>(array.before * lines * array.after, 4096);
    for (std::int64_t n = 0; n < elements; ++n) {
      const std::int64_t component = array.after > 1 || array.before == 1 ? n / lines : n % array.before;
      const auto place = static_cast<std::size_t>(n);
      if (a.type == checked::Type::character) as<char>(k)[place] = ' ';
      if (a.type == checked::Type::int32)
        as<std::int32_t>(k)[place] = static_cast<std::int32_t>(a.is(Role::list) || a.is(Role::set) ? n + 1 : 1);
      if (a.type == checked::Type::real)
        as<double>(k)[place] = a.is(Role::mask) || a.is(Role::flag)               ? 0.0
                               : a.is(Role::stretch)                              ? (component < 3 ? 1.0 : 0.0)
                               : a.is(Role::planeStretch)                         ? (component < 2 ? 1.0 : 0.0)
                               : a.is(Role::axialStretch)                         ? 1.0
                               : std::string_view(a.unit) == "m" && component > 0 ? 0.25 * static_cast<double>(n % 7)
                                                                                  : 0.5;
    }
    if (a.is(Role::text) && array.isOpen && a.rank == 1) as<char>(k)[0] = 0; // a terminated text
  }

  const checked::Routine* routine_;
  std::deque<Bytes> memory_;
  std::vector<const void*> addresses_;
};

// Each site is a place of its own.
template <int Site>
void make(SoundCall& call) {
  void* const address = dlsym(RTLD_DEFAULT, call.routine().name);
  ASSERT_NE(address, nullptr) << call.routine().name;
  std::int64_t result[2] = {};
  call.routine().call(address, call.addresses(), result);
}

// One page without any access and one that can be read alone.
unsigned char* page(int protection) {
  static unsigned char* const none =
      static_cast<unsigned char*>(mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  static unsigned char* const read =
      static_cast<unsigned char*>(mmap(nullptr, 1 << 16, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  return protection == PROT_NONE ? none : read;
}

struct Misuse {
  const char *routine, *argument, *change, *finding;
};
// change: null, odd, none, read: the address; N: of a scalar; K=V: entry K of an array; @ARGUMENT: the address of that one;
// >ARGUMENT: one beyond it.  What is allowed has no finding.
constexpr Misuse kMisuses[] = {
#include "misuses.inc"
};

void spoil(SoundCall& call, const Misuse& misuse) {
  const int found = call.argument(misuse.argument);
  ASSERT_GE(found, 0) << misuse.routine << " has no " << misuse.argument;
  const auto k = static_cast<std::size_t>(found);
  const checked::Argument& a = checked::argumentsOf(call.routine())[k];
  const std::string change = misuse.change;
  const void*& address = call.addresses()[k];
  const std::size_t equals = change.find('=');
  const auto put = [&](std::size_t entry, double value) {
    if (a.type == checked::Type::real) call.as<double>(k)[entry] = value;
    if (a.type == checked::Type::int32) call.as<std::int32_t>(k)[entry] = static_cast<std::int32_t>(value);
    if (a.type == checked::Type::int64) call.as<std::int64_t>(k)[entry] = static_cast<std::int64_t>(value);
    if (a.type == checked::Type::character) call.as<char>(k)[entry] = static_cast<char>(value);
  };
  if (change == "null") {
    address = nullptr;
  } else if (change == "odd") {
    address = static_cast<const char*>(address) + 3;
  } else if (change == "none" || change == "read") {
    address = page(change == "none" ? PROT_NONE : PROT_READ);
  } else if (change == "end") { // begins well, and does not end
    address = page(PROT_NONE) - 8;
  } else if (call.argument(change.substr(1)) >= 0 && (change[0] == '>' || change[0] == '@')) {
    address = static_cast<const char*>(call.addresses()[call.argument(change.substr(1))]) + (change[0] == '>' ? 8 : 0);
  } else if (equals != std::string::npos) {
    put(std::stoul(change) - 1, std::stod(change.substr(equals + 1)));
  } else {
    put(0, std::stod(change));
  }
}

TEST(Checked, EveryMisuseIsFoundAndNamed) {
  int kinds = 0;
  for (const Misuse& misuse : kMisuses) {
#ifdef SA_SANITIZED // what is found is made all the same, and they end the program
    if (std::string_view(misuse.change) == "odd") continue;
#endif
    const int number = checked::routineNumber(misuse.routine);
    ASSERT_GE(number, 0) << misuse.routine;
    SoundCall call(checked::routines()[number]);
    spoil(call, misuse);
    make<1>(call);
    const std::string found = findings();
    const std::string wanted = std::string(misuse.routine) + ", argument " + misuse.argument;
    const bool isAllowed = *misuse.finding == '\0';
    const bool isNamed =
        isAllowed ? found.empty()
                  : contains(found, wanted) && contains(found, misuse.finding) && contains(found, "; called from ");
    EXPECT_TRUE(isNamed) << misuse.routine << ", " << misuse.argument << " " << misuse.change << ": " << found;
    ++kinds;
  }
  EXPECT_GE(kinds, 60);
}

// A null pointer in place of the last number that it needs is found in every routine that needs one, and the call left out.
TEST(Checked, EveryRoutineIsCovered) {
  std::size_t covered = 0;
  void* const behind = dlopen(SA_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(behind, nullptr) << dlerror();
  for (const checked::Routine& routine : checked::routines()) {
    void* const own = dlsym(RTLD_DEFAULT, routine.name);
    ASSERT_NE(own, nullptr) << routine.name;
    EXPECT_NE(own, dlsym(behind, routine.name)) << routine.name << " is not led through the checks";
    SoundCall call(routine);
    const std::span<const checked::Argument> arguments = checked::argumentsOf(routine);
    for (std::size_t k = arguments.size(); k-- > 0;) {
      const checked::Argument& a = arguments[k];
      if (a.has(checked::kByValue) || a.has(checked::kOptional) || a.is(checked::Role::table) ||
          !a.has(checked::kScalar))
        continue;
      call.addresses()[k] = nullptr;
      make<2>(call);
      EXPECT_TRUE(contains(findings(), std::string(routine.name) + ", argument " + a.name + ": null pointer"))
          << routine.name;
      break;
    }
    ++covered;
  }
  EXPECT_EQ(covered, checked::routines().size());
}

TEST(Checked, SoundCallsAreSilentOnEveryThread) {
  findings();
  const auto work = [] {
    for (const char* name :
         {"GLO_UTI_GATHERR", "GLO_UTI_EIG33V", "GLO_OPE_GENASSEM", "SPX_MAT_HYPERINVS33", "SPX_OPE_FILTERFLD",
          "GLO_UTI_ODBPRINC33QUAT", "SPX_OPE_GREENSTRAIN3DH8", "SPX_MAT_DUCTSTRESSRATIO3DEXP"}) {
      SoundCall call(checked::routines()[checked::routineNumber(name)]);
      for (int times = 0; times < 20; ++times) make<3>(call);
    }
  };
  std::vector<std::thread> threads;
  for (int n = 0; n < 4; ++n) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(findings(), "");
}

} // namespace
} // namespace sa::test
