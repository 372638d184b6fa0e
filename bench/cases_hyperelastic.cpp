// Hyperelastic materials, softening and failure.
#include "bench_case.h"
#include "plain_kernels.h"
#include "plain_materials.h"
#include "spx.h"

#include <utility>

namespace bench {
namespace {

// A kernel whose arguments are all arrays, behind the number of points.
template <class... Arguments, std::size_t... k>
void callOne(void (*kernel)(const int32_t*, Arguments...), int32_t n, const Arrays& a, std::index_sequence<k...>) {
  kernel(&n, a[k]...);
}
template <class... Arguments>
Case arrayCase(const char* name, void (*kernel)(const int32_t*, Arguments...), void (*plainLoop)(int, const Arrays&),
               std::vector<int> columns, std::function<void(int, const Arrays&, Random&)> fill, int arithmetic,
               Divisions divisions) {
  return {name,
          std::move(columns),
          std::move(fill),
          [kernel](int32_t n, const Arrays& a) { callOne(kernel, n, a, std::index_sequence_for<Arguments...>()); },
          plainLoop,
          arithmetic,
          divisions};
}

void addMaterialCases(std::vector<Case>& list) {
  const auto stretched = [](std::vector<std::pair<double, double>> constants, std::size_t stretch, bool principal) {
    return [=](int n, const Arrays& a, Random& random) {
      for (std::size_t k = 0; k < constants.size(); ++k)
        uniform(n, a[k], random, constants[k].first, constants[k].second);
      if (principal)
        uniform(3 * n, a[stretch], random, 0.7, 1.4);
      else
        fillStretch(n, a[stretch], random);
    };
  };
  using Ranges = std::vector<std::pair<double, double>>;
  const Ranges arrudaBoyce{{0.5, 1}, {3, 5}, {0.1, 1}}, vdw{{0.5, 1}, {8, 12}, {0, 0.3}, {0, 0.2}, {0.1, 1}};
  const Ranges terms{{0.5, 1}, {1, 3}, {0.1, 0.2}, {-4, -2}, {0.1, 0.2}, {4, 6}};
  Ranges foam = terms, sheet = terms;
  for (int k = 0; k < 3; ++k) foam.push_back({0.1, 1}), sheet.push_back({10, 20});
  std::vector<int> long6(27, 1);
  long6.insert(long6.end(), {1, 1, 6});
  list.push_back(arrayCase("SPX_MAT_HYPERPOLY6S33", SPX_MAT_HYPERPOLY6S33, plain::hyperpoly6s33, long6,
                           stretched(Ranges(27, {0.1, 1}), 29, false), 210, 2));
  list.push_back(arrayCase("SPX_MAT_HYPERABS33", SPX_MAT_HYPERABS33, plain::hyperabs33, {1, 1, 1, 1, 6},
                           stretched({{0.5, 1}, {3, 5}}, 4, false), 160, 4));
  list.push_back(arrayCase("SPX_MAT_HYPERAB3DEXP", SPX_MAT_HYPERAB3DEXP, plain::hyperab3dexp, {1, 1, 1, 6, 6, 1, 1, 1},
                           stretched(arrudaBoyce, 3, false), 300, 4));
  list.push_back(arrayCase("SPX_MAT_HYPERVDW3DEXP", SPX_MAT_HYPERVDW3DEXP, plain::hypervdw3dexp,
                           {1, 1, 1, 1, 1, 6, 6, 1, 1, 1}, stretched(vdw, 5, false), 380, {7, 2}));
  list.push_back(arrayCase("SPX_MAT_HYPERINVS33", SPX_MAT_HYPERINVS33, plain::hyperinvs33, {1, 1, 1, 6},
                           stretched({}, 3, false), 130, 2));
  list.push_back(arrayCase("SPX_MAT_OGDEN", SPX_MAT_OGDEN, plain::ogden, {1, 1, 1, 1, 1, 1, 1, 1, 3, 1},
                           stretched(terms, 8, true), 560, 9));
  list.push_back(arrayCase("SPX_MAT_OGDENDERIVATIVE1", SPX_MAT_OGDENDERIVATIVE1, plain::ogdenderivative1,
                           {1, 1, 1, 1, 1, 1, 3, 3, 1}, stretched(terms, 7, true), 590, 11));
  list.push_back(arrayCase(
      "SPX_MAT_HYPEROGDENPSEXP", SPX_MAT_HYPEROGDENPSEXP, plain::hyperogdenpsexp,
      {1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 1, 1, 3, 1, 1},
      [=](int n, const Arrays& a, Random& random) {
        for (std::size_t k = 0; k < 9; ++k) uniform(n, a[k], random, sheet[k].first, sheet[k].second);
        uniform(2 * n, a[9], random, 0.8, 1.3);
        uniform(n, a[9] + 2 * n, random, -0.1, 0.1);
        uniform(n, a[10], random, 0.8, 1.2);
      },
      // at the thickness given, which is the right one from the second call on, and at the end
      2 * 650 + 50, 2 * 9 + 11));
  list.push_back(arrayCase("SPX_MAT_HFOAM", SPX_MAT_HFOAM, plain::hfoam, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 1},
                           stretched(foam, 11, true), 650, 11));
  list.push_back(arrayCase("SPX_MAT_HYPERFOAMMODULIEXP", SPX_MAT_HYPERFOAMMODULIEXP, plain::hyperfoammoduliexp,
                           {1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 1, 1, 1}, stretched(foam, 9, true), 720, 15));
  const auto softened = [](int n, const Arrays& a, Random& random) {
    uniform(n, a[0], random, 1.5, 3);
    for (const std::size_t k : {1, 2, 3, 4}) uniform(n, a[k], random, 0.5, 1.5);
    uniform(n, a[5], random, 0.1, 1.5);
    uniform(n, a[6], random, 0.5, 1);
  };
  list.push_back(
      arrayCase("SPX_MAT_ORMULLINS", SPX_MAT_ORMULLINS, plain::ormullins, {1, 1, 1, 1, 1, 1, 1, 1}, softened, 110, 4));
  list.push_back(arrayCase("SPX_MAT_MULLINSDAMAGEENER", SPX_MAT_MULLINSDAMAGEENER, plain::mullinsdamageener,
                           {1, 1, 1, 1, 1, 1, 1}, softened, 110, 6));
  list.push_back(arrayCase("SPX_MAT_STRESSRATIO3DEXP", SPX_MAT_STRESSRATIO3DEXP, plain::stressratio3dexp, {6, 1},
                           fillTensors, 22, {1, 1}));
  list.push_back({"SPX_MAT_DUCTSTRESSRATIO3DEXP",
                  {6, 1, 1},
                  [](int n, const Arrays& a, Random& random) {
                    fillTensors(n, a, random);
                    for (int i = 0; i < n; ++i) integers(a[2])[i] = i + 1;
                  },
                  [](int32_t n, const Arrays& a) { SPX_MAT_DUCTSTRESSRATIO3DEXP(&n, &n, integers(a[2]), a[0], a[1]); },
                  plain::stressratio3dexp,
                  22,
                  {1, 1},
                  60});
  const auto failing = [](std::size_t ratio, std::size_t rate, std::size_t heat, double hottest) {
    return [=](int n, const Arrays& a, Random& random) {
      uniform(n, a[ratio], random, -1, 2);
      uniform(n, a[rate], random, 0.1, 1000);
      uniform(n, a[heat], random, 0, hottest);
    };
  };
  list.push_back({"SPX_MAT_JCFAILURESTRAIN",
                  {1, 1, 1, 1, 1},
                  [=](int n, const Arrays& a, Random& random) {
                    failing(2, 1, 3, 2000)(n, a, random);
                    for (int i = 0; i < n; ++i) integers(a[4])[i] = i + 1;
                  },
                  [](int32_t n, const Arrays& a) {
                    const double d[] = {0.05, 3.44, 2.12, 0.002, 0.61, 1800, 300, 1};
                    SPX_MAT_JCFAILURESTRAIN(&n, &n, integers(a[4]), a[0], a[1], a[2], a[3], &d[0], &d[1], &d[2], &d[3],
                                            &d[4], &d[5], &d[6], &d[7]);
                  },
                  plain::jcfailurestrain,
                  90,
                  2});
  list.push_back({"SPX_MAT_JCSHRFAILEXP",
                  {1, 1, 1, 1},
                  failing(0, 1, 2, 1),
                  [](int32_t n, const Arrays& a) {
                    const double P[13] = {0, 0, 0, 0, 0, 0, 0, 1, 0.05, 3.44, -2.12, 0.002, 0.61};
                    SPX_MAT_JCSHRFAILEXP(&n, P, a[0], a[1], a[2], a[3]);
                  },
                  plain::jcshrfailexp,
                  95,
                  4});
}

} // namespace

void addHyperelasticCases(std::vector<Case>& list) {
  const auto fillConstants = [](int count) {
    return [count](int n, const Arrays& a, Random& random) {
      for (int k = 0; k < count; ++k) uniform(n, a[k], random, 0.5, 1);
      fillStretch(n, a[count], random);
    };
  };
  const auto energy = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, a[0], a[1], a[2], a[3], a[4], a[6], a[7], a[5]); };
  };
  list.push_back({"SPX_MAT_HYPERPOLYS33",
                  {1, 1, 1, 1, 1, 6, 1, 1},
                  fillConstants(5),
                  energy(SPX_MAT_HYPERPOLYS33),
                  energy(plain::hyperpolys33),
                  150,
                  3});
  const auto stress = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      call(&n, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11]);
    };
  };
  list.push_back({"SPX_MAT_HYPERPOLY3DEXP",
                  {1, 1, 1, 1, 1, 1, 1, 6, 6, 1, 1, 1},
                  fillConstants(7),
                  stress(SPX_MAT_HYPERPOLY3DEXP),
                  stress(plain::hyperpoly3dexp),
                  350,
                  3});
  addMaterialCases(list);
}

} // namespace bench
