#include "guarded_call.h"

#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <utility>

namespace sa::test {
namespace {

constexpr std::size_t kArguments = 64, kPage = 4096, kSlot = 256 * kPage; // the last page of a slot is the guard
constexpr std::size_t kCanary = 128;
constexpr unsigned char kCanaryByte = 0xc9;

thread_local sigjmp_buf afterFault;
thread_local volatile bool isCalling = false;
thread_local unsigned char* volatile faultAddress = nullptr;
thread_local volatile std::uint64_t callNumber = 0;

void onFault(int signal, siginfo_t* info, void*) {
  if (!isCalling) {
    // Not ours: the default action shall follow.
    ::signal(signal, SIG_DFL);
    return;
  }
  faultAddress = static_cast<unsigned char*>(info->si_addr);
  siglongjmp(afterFault, signal);
}

// Ticks of the process's own time: a loaded machine does not shorten the limit.
constexpr int kTickMicroseconds = 50000, kTicks = 20;

void onTick(int signal) {
  static std::uint64_t seen = 0;
  static int ticks = 0;
  if (!isCalling || callNumber != seen) ticks = 0;
  seen = callNumber;
  if (isCalling && ++ticks > kTicks) siglongjmp(afterFault, signal);
}

constexpr int kErrors = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;
constexpr unsigned kStickyFlags = 0x3f,
                   kFlushes = 0x8040; // of the control register: flush to zero, denormals are zeros

unsigned enter(const Environment& environment) {
  std::fesetround(environment.rounding);
  if (environment.flushes) _mm_setcsr(_mm_getcsr() | kFlushes);
  std::feclearexcept(FE_ALL_EXCEPT);
  if (environment.traps) feenableexcept(kErrors);
  return _mm_getcsr();
}

// Back to the usual environment; what the call has left behind is complained of.
void leave(const Environment& environment, unsigned before, const Complain& complain) {
  const bool isKept = ((_mm_getcsr() ^ before) & ~kStickyFlags) == 0 && std::fegetround() == environment.rounding;
  const bool isQuiet = std::fetestexcept(kErrors) == 0;
  std::fesetenv(FE_DFL_ENV);
  if (!isKept) complain("changes the floating-point environment of its caller");
  if (!isQuiet) complain("leaves a floating-point flag");
}

void catchFaults() {
  struct sigaction action = {};
  action.sa_sigaction = onFault;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
  sigaction(SIGFPE, &action, nullptr);
}

template <std::size_t>
using Pointer = void*;

// The routine takes N pointers.
template <class Result, std::size_t... I>
Result callWith(void* routine, void* const* arguments, std::index_sequence<I...>) {
  return reinterpret_cast<Result (*)(Pointer<I>...)>(routine)(arguments[I]...);
}
template <class Result, std::size_t N>
Result callN(void* routine, void* const* arguments) {
  return callWith<Result>(routine, arguments, std::make_index_sequence<N>());
}
template <class Result, std::size_t... N>
constexpr auto callTable(std::index_sequence<N...>) {
  return std::array<Result (*)(void*, void* const*), sizeof...(N)>{callN<Result, N>...};
}
template <class Result>
Result callPointers(void* routine, void* const* arguments, std::size_t count) {
  static constexpr auto kTable = callTable<Result>(std::make_index_sequence<kArguments + 1>());
  return kTable.at(count)(routine, arguments);
}

std::uint64_t callAny(void* routine, std::string_view resultType, void* const* arguments, std::size_t count) {
  std::uint64_t bits = 0;
  if (resultType == "void") {
    callPointers<void>(routine, arguments, count);
  } else if (resultType == "double") {
    const double value = callPointers<double>(routine, arguments, count);
    std::memcpy(&bits, &value, sizeof value);
    if (value != value) bits = 0x7ff8000000000000ULL;
  } else if (resultType == "int32_t") {
    bits = static_cast<std::uint32_t>(callPointers<std::int32_t>(routine, arguments, count));
  } else {
    throw std::logic_error("no way to call a routine that returns " + std::string(resultType));
  }
  return bits;
}

// The call itself: 0, or the signal that ended it.
int invoke(void* routine, KernelCase& data, void* const* pointers, const Complain& complain,
           const Environment* environment) {
  callNumber = callNumber + 1;
  const int fault = sigsetjmp(afterFault, 0); // the handlers block no signals
  if (fault == 0) {
    const unsigned before = environment == nullptr ? 0 : enter(*environment);
    isCalling = true;
    data.result = callAny(routine, data.routine->result, pointers, data.arrays.size());
    isCalling = false;
    if (environment != nullptr) leave(*environment, before, complain);
  } else {
    isCalling = false;
    std::fesetenv(FE_DFL_ENV);
  }
  return fault;
}

// A 64-bit integer by value is passed as an address is.
void* byValue(const KernelCase& data, const Array& array) {
  if (array.elementSize != sizeof(void*))
    throw std::logic_error(std::string(data.routine->name) + " takes an argument by value that is no int64_t");
  return reinterpret_cast<void*>(array.bits(0));
}

// Two columns of so many points are beyond 32 bits, and so are records of two of so many entities.
constexpr int kFar = 1'200'000'001;

bool isLeading(const Array& array) { return array.info->is("stride") || array.info->is("rows"); }

// Numbered through from a high one on, where nobody says how many there are, and unless the call moves their numbers about.
bool hasHighEntities(const KernelCase& data, const Array& array) {
  return array.lines == Lines::entities && !array.info->is("record") &&
         std::string_view(array.info->shape[array.info->rank() - 1]) == "*" &&
         std::none_of(data.arrays.begin(), data.arrays.end(),
                      [](const Array& map) { return map.info->is("entity") && map.info->isWritten(); });
}

// An array of columns far apart, or of entities of high numbers.
class FarArray {
public:
  FarArray(const KernelCase& data, const Array& array) : lineCount_(array.lineCount), array_(array) {
    for (int d = 0; d < array.info->rank(); ++d)
      if (const Array* length = data.find(array.info->shape[d]); length != nullptr && isLeading(*length))
        lineCount_ = array.after > 1 ? kFar : lineCount_;
    if (hasHighEntities(data, array)) first_ = kFar * array.before * array.elementSize;
    size_ = offset(array.elements() - 1) + array.elementSize;
    memory_ = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory_ == MAP_FAILED) throw std::runtime_error("no addresses for an array of distant columns");
    for (std::size_t k = 0; k < array.elements(); ++k)
      std::memcpy(bytes() + offset(k), &array.bytes[k * array.elementSize], array.elementSize);
  }
  ~FarArray() { munmap(memory_, size_); }
  FarArray(const FarArray&) = delete;
  FarArray& operator=(const FarArray&) = delete;

  void* address() const { return bytes() - first_; }
  void readInto(Array& array) const {
    for (std::size_t k = 0; k < array.elements(); ++k)
      std::memcpy(&array.bytes[k * array.elementSize], bytes() + offset(k), array.elementSize);
  }

private:
  unsigned char* bytes() const { return static_cast<unsigned char*>(memory_); }
  std::size_t offset(std::size_t element) const {
    const std::size_t column = array_.before * array_.lineCount;
    return (element / column * array_.before * lineCount_ + element % column) * array_.elementSize;
  }
  std::size_t lineCount_, first_ = 0, size_ = 0;
  void* memory_ = nullptr;
  const Array& array_;
};

} // namespace

GuardedMemory::GuardedMemory() {
  void* memory =
      mmap(nullptr, kArguments * kSlot, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error("no memory for the arguments");
  base_ = static_cast<unsigned char*>(memory);
  for (std::size_t i = 0; i < kArguments; ++i)
    if (mprotect(slotEnd(i), kPage, PROT_NONE) != 0) throw std::runtime_error("no guard page");
  catchFaults();
}

GuardedMemory::~GuardedMemory() { munmap(base_, kArguments * kSlot); }

unsigned char* GuardedMemory::slotEnd(std::size_t argument) const { return base_ + (argument + 1) * kSlot - kPage; }

void GuardedMemory::limitTime() {
  struct sigaction action = {};
  action.sa_handler = onTick;
  action.sa_flags = SA_NODEFER;
  sigaction(SIGVTALRM, &action, nullptr);
  const itimerval every = {{0, kTickMicroseconds}, {0, kTickMicroseconds}};
  if (setitimer(ITIMER_VIRTUAL, &every, nullptr) != 0) throw std::runtime_error("no timer");
}

bool GuardedMemory::call(void* routine, KernelCase& data, const Complain& complain, const Environment* environment) {
  const std::size_t count = data.arrays.size();
  void* pointers[kArguments] = {};
  for (std::size_t i = 0; i < count; ++i) {
    const Array& array = data.arrays[i];
    if (array.info->isByValue()) {
      pointers[i] = byValue(data, array);
      continue;
    }
    if (array.bytes.size() + kCanary + kPage > kSlot) throw std::logic_error("an array is too long for its slot");
    unsigned char* start = slotEnd(i) - (array.info->is("unread") ? 0 : array.bytes.size());
    if (!array.info->is("unread")) {
      std::fill(start - kCanary, start, kCanaryByte);
      std::copy(array.bytes.begin(), array.bytes.end(), start);
    }
    pointers[i] = start;
  }

  bool isSound = true;
  if (const int fault = invoke(routine, data, pointers, complain, environment); fault != 0) {
    if (fault == SIGVTALRM || fault == SIGFPE) {
      complain(fault == SIGFPE ? "traps on a floating-point operation" : "does not return");
      return false;
    }
    std::string where = "far from every argument";
    for (std::size_t i = 0; i < count; ++i)
      if (faultAddress >= slotEnd(i) && faultAddress < slotEnd(i) + kPage) where = data.arrays[i].info->name;
    complain("touches memory past the end of an argument: " + where);
    return false;
  }

  for (std::size_t i = 0; i < count; ++i) {
    Array& array = data.arrays[i];
    if (array.info->is("unread") || array.info->isByValue()) continue;
    const auto* start = static_cast<const unsigned char*>(pointers[i]);
    if (!std::all_of(start - kCanary, start, [](unsigned char c) { return c == kCanaryByte; })) {
      complain(std::string("writes before the first value of ") + array.info->name);
      isSound = false;
    }
    if (array.info->isWritten()) {
      std::copy(start, start + array.bytes.size(), array.bytes.begin());
    } else if (!std::equal(array.bytes.begin(), array.bytes.end(), start)) {
      complain(std::string("changes the input ") + array.info->name);
      isSound = false;
    }
  }
  return isSound;
}

bool GuardedMemory::callFar(void* routine, KernelCase& data, const Complain& complain) {
  KernelCase far = data;
  for (Array& array : far.arrays) {
    if (isLeading(array)) array.setInteger(0, kFar);
    if (!array.info->is("entity")) continue;
    const Array* target = far.find(std::string(array.info->unit).substr(10)); // after "entity of "
    if (target == nullptr || !hasHighEntities(far, *target)) continue;
    for (std::size_t k = 0; k < array.elements(); ++k) array.setInteger(k, array.integer(k) + kFar);
  }
  void* pointers[kArguments] = {};
  std::vector<std::unique_ptr<FarArray>> places(far.arrays.size());
  for (std::size_t i = 0; i < far.arrays.size(); ++i) {
    const Array& array = far.arrays[i];
    if (array.info->isByValue()) {
      pointers[i] = byValue(far, array);
    } else if (array.elements() > 0) {
      places[i] = std::make_unique<FarArray>(far, array);
      pointers[i] = places[i]->address();
    }
  }
  if (invoke(routine, far, pointers, complain, nullptr) != 0) {
    complain("touches other memory where columns or entities are far apart");
    return false;
  }
  data.result = far.result;
  for (std::size_t i = 0; i < far.arrays.size(); ++i)
    if (places[i] && far.arrays[i].info->isWritten()) places[i]->readInto(data.arrays[i]);
  return true;
}

} // namespace sa::test
