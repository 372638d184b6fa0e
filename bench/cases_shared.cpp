// Tensors, vector mathematics, data movement and sorts.
#include "bench_case.h"
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "peer_kernels.h"
#include "plain_kernels.h"

#include <numeric>

namespace bench {
namespace {

#define SA_MATH_LOOP(function)                                                                                         \
  SA_CLONES                                                                                                            \
  void function##Loop(int n, const double* x, double* y) {                                                             \
    sa::forPoints(n, [=](int i) SA_POINT { y[i] = sa::vm::function(x[i]); });                                          \
  }
SA_MATH_LOOP(exp)
SA_MATH_LOOP(expClamped)
SA_MATH_LOOP(log)
SA_MATH_LOOP(logPositive)
SA_MATH_LOOP(cos)
SA_MATH_LOOP(acos)

template <class Loop, class Plain>
Case mathCase(const char* name, Loop loop, Plain plain, double low, double high, int arithmetic, Divisions divisions) {
  return {name,
          {1, 1},
          [=](int n, const Arrays& a, Random& random) { uniform(n, a[0], random, low, high); },
          [=](int32_t n, const Arrays& a) { loop(n, a[0], a[1]); },
          [=](int32_t n, const Arrays& a) { plain(&n, a[0], a[1]); },
          arithmetic,
          divisions};
}

// S in, P and perhaps V out.
template <class Kernel, class Plain>
Case principalCase(const char* name, Kernel kernel, Plain plain, int values, int directions, int arithmetic,
                   Divisions divisions, int bytes = 0) {
  return {name,
          {6, values, directions},
          fillTensors,
          [=](int32_t n, const Arrays& a) {
            if constexpr (std::is_invocable_v<Kernel, int32_t*, double*, double*, double*>)
              kernel(&n, a[0], a[1], a[2]);
            else
              kernel(&n, a[0], a[1]);
          },
          [=]() -> std::function<void(int32_t, const Arrays&)> {
            if constexpr (std::is_same_v<Plain, std::nullptr_t>)
              return {};
            else
              return [=](int32_t n, const Arrays& a) {
                if constexpr (std::is_invocable_v<Plain, int32_t*, double*, double*, double*>)
                  plain(&n, a[0], a[1], a[2]);
                else
                  plain(&n, a[0], a[1]);
              };
          }(),
          arithmetic,
          divisions,
          bytes};
}

template <class Call>
Case mapCase(const char* name, Order order, Call kernel, Call plain, int arithmetic, int bytes, int accesses,
             peer::Call eigen) {
  return {name,
          {1, 3},
          [=](int n, const Arrays& a, Random& random) { fillMap(n, a[0], random, order); },
          kernel,
          plain,
          arithmetic,
          0,
          bytes,
          accesses,
          peerIf("Eigen", std::move(eigen))};
}

// Kernels without plain loops of their own.
void addMeasuredByPeers(std::vector<Case>& list) {
  list.push_back(principalCase("GLO_UTI_EIG33", GLO_UTI_EIG33, nullptr, 3, 0, 4 * 3 * 25, {4 * 3 * 3, 4 * 3 * 2}));
  list.push_back(principalCase("GLO_UTI_EIG33V", GLO_UTI_EIG33V, nullptr, 3, 9, 4 * 3 * 40, {4 * 3 * 3, 4 * 3 * 2}));
  list.push_back({"GLO_UTI_QUAT3DALGEBRA",
                  {4, 4, 4},
                  [](int n, const Arrays& a, Random& random) {
                    uniform(4 * n, a[1], random, -1, 1);
                    uniform(4 * n, a[2], random, -1, 1);
                  },
                  [](int32_t n, const Arrays& a) {
                    const int32_t op = 1;
                    GLO_UTI_QUAT3DALGEBRA(&n, &op, a[0], a[1], a[2]);
                  },
                  nullptr,
                  37,
                  {1, 1}});
  list.push_back({"GLO_UTI_BROADCASTR",
                  {2},
                  [](int, const Arrays&, Random&) {},
                  [](int32_t n, const Arrays& a) {
                    const double value = 1;
                    const int32_t values = 2 * n;
                    GLO_UTI_BROADCASTR(&values, &value, a[0]);
                  },
                  nullptr});
  list.push_back({"GLO_UTI_SCATTERR ordered",
                  {1, 3},
                  [](int n, const Arrays& a, Random& random) { fillMap(n, a[0], random, Order::Ordered); },
                  [](int32_t n, const Arrays& a) {
                    const int32_t components = 3, ld = global().entities;
                    GLO_UTI_SCATTERR(&n, &components, &ld, integers(a[0]), a[1], global().values.data());
                  },
                  nullptr,
                  0,
                  0,
                  52,
                  4});
}
constexpr int kKeySets = 200; // an even number

} // namespace

void addSharedCases(std::vector<Case>& list) {
  list.push_back(
      principalCase("GLO_UTI_PRINCS33", GLO_UTI_PRINCS33, plain::princs33, 3, 9, 3 * 3 * 55, {3 * 3, 3 * 3 * 2}));
  list.push_back(principalCase("GLO_UTI_EIG33ANAL", GLO_UTI_EIG33ANAL, plain::eig33anal, 3, 0, 165, {2, 2}));
  list.push_back(principalCase("GLO_UTI_EIG33VECTOR", GLO_UTI_EIG33VECTOR, plain::eig33vector, 3, 0, 3 * 3 * 25,
                               {3 * 3 * 4, 3 * 3 * 2}));
  list.push_back(principalCase("GLO_UTI_PRINCS31", GLO_UTI_PRINCS31, plain::princs31, 3, 9, 27, {3, 2}, 128));
  list.push_back({"GLO_UTI_SQRTV",
                  {6, 6},
                  [](int n, const Arrays& a, Random& random) { fillStretch(n, a[0], random); },
                  [](int32_t n, const Arrays& a) { GLO_UTI_SQRTV(&n, a[0], a[1]); },
                  [](int32_t n, const Arrays& a) { plain::sqrtv(&n, a[0], a[1]); },
                  150,
                  {4, 3}});

  using Call = std::function<void(int32_t, const Arrays&)>;
  const auto gather = [](auto call) -> Call {
    return [call](int32_t n, const Arrays& a) {
      const int32_t components = 3, ld = global().entities;
      call(&n, &components, &ld, integers(a[0]), a[1], global().values.data());
    };
  };
  const auto assemble = [](auto call) -> Call {
    return [call](int32_t n, const Arrays& a) {
      const int32_t components = 3, ld = 3, unused = 0;
      call(&n, &components, &ld, &unused, global().values.data(), a[1], integers(a[0]));
    };
  };
  list.push_back(mapCase("GLO_UTI_GATHERR ordered", Order::Ordered, gather(GLO_UTI_GATHERR), gather(plain::gatherr), 0,
                         52, 4, peer::gather(global().values, &global().entities)));
  list.push_back(mapCase("GLO_UTI_GATHERR random", Order::Random, gather(GLO_UTI_GATHERR), gather(plain::gatherr), 0,
                         52, 4, peer::gather(global().values, &global().entities)));
  list.push_back(mapCase("GLO_OPE_GENASSEM ordered", Order::Ordered, assemble(GLO_OPE_GENASSEM),
                         assemble(plain::genassem), 3, 76, 5, peer::assemble(global().values)));
  list.push_back(mapCase("GLO_OPE_GENASSEM random", Order::Random, assemble(GLO_OPE_GENASSEM),
                         assemble(plain::genassem), 3, 76, 5, peer::assemble(global().values)));

  list.push_back({"GLO_UTI_COPYR",
                  {1, 1},
                  [](int n, const Arrays& a, Random& random) { uniform(n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) { GLO_UTI_COPYR(&n, a[0], a[1]); },
                  [](int32_t n, const Arrays& a) { plain::copyr(&n, a[0], a[1]); },
                  0,
                  0,
                  16,
                  0,
                  {{"memcpy", peer::copy(16, 0, 1)}}});
  list.push_back({"GLO_UTI_VADDR",
                  {1, 1, 1},
                  [](int n, const Arrays& a, Random& random) { uniform(2 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) { GLO_UTI_VADDR(&n, a[2], a[0], a[1]); },
                  [](int32_t n, const Arrays& a) { plain::vaddr(&n, a[2], a[0], a[1]); },
                  1,
                  0});

  // other keys every time: the branches of a sort that sees the same keys again would be known
  const auto sort = [](auto call) {
    return [call, turn = 0](int32_t n, const Arrays& a) mutable {
      turn = (turn + 1) % kKeySets;
      std::iota(integers(a[0]), integers(a[0]) + n, 1);
      call(integers(a[0]), integers(a[1]) + turn * n, &n);
    };
  };
  list.push_back({"GLO_UTI_INSSORTI",
                  {1, kKeySets / 2},
                  [](int n, const Arrays& a, Random& random) {
                    for (int i = 0; i < kKeySets * n; ++i) integers(a[1])[i] = random.integer(0, 1000);
                  },
                  sort(GLO_UTI_INSSORTI),
                  sort(plain::inssorti),
                  64, // n/2 comparisons of half the length of a number
                  0,
                  12,
                  0,
                  {{"stable_sort", sort(peer::stableSort)}}});
  if (peer::gslSort() != nullptr) list.back().peers.push_back({"GSL", sort(peer::gslSort())});

  addMeasuredByPeers(list);
  list.push_back(mathCase("exp", expLoop, plain::exp, -20, 20, 38, 0));
  list.push_back(mathCase("exp, never subnormal", expClampedLoop, plain::exp, -20, 20, 36, 0));
  list.push_back(mathCase("log", logLoop, plain::log, 0.1, 10, 31, 1));
  list.push_back(mathCase("log, normal positive", logPositiveLoop, plain::log, 0.1, 10, 31, 1));
  list.push_back(mathCase("cos", cosLoop, plain::cos, -3, 3, 45, 0));
  list.push_back(mathCase("acos", acosLoop, plain::acos, -1, 1, 45, {1, 1}));
}

} // namespace bench
