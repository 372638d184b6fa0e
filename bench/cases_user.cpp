// Built-in user materials: solids in the midst of damage and of transformation, through the dispatch.
#include "bench_case.h"
#include "plain_user.h"
#include "spx.h"

#include <algorithm>
#include <string>

namespace bench {
namespace {

struct Material {
  std::string name;
  int states;
  double stress, strain; // size of the stress and of an increment
  std::vector<double> props;
  void (*plain)(int32_t, const plain::MaterialBlock&);
  int arithmetic, divisions;
};

void addMaterial(std::vector<Case>& list, Material material) {
  material.name.resize(80, ' ');
  const std::vector<int> columns = {1, 6, 9, 6, material.states, 1, 1, 1, 6, material.states, 1, 1};
  // of the size of the strength, some damage, moderate compression
  const auto fill = [material](int n, const Arrays& a, Random& random) {
    uniform(n, a[0], random, 2000, 3000);
    uniform(6 * n, a[1], random, -material.strain, material.strain);
    uniform(9 * n, a[2], random, -0.01, 0.01);
    uniform(3 * n, a[2], random, 0.98, 1.0);
    uniform(material.states * n, a[4], random, 0.0, 0.005);
    uniform(n, a[7], random, 300, 300);
    uniform(6 * n, a[3], random, -material.stress, material.stress);
  };
  const auto kernel = [material](int32_t n, const Arrays& a) {
    const int32_t three = 3, zero = 0, states = material.states, props = static_cast<int32_t>(material.props.size());
    const double time = 1, dt = 1e-6;
    SPX_USR_BUILTINVUMAT(&zero, &n, &three, &three, &states, &zero, &props, &zero, &time, &time, &dt,
                         material.name.data(), nullptr, nullptr, material.props.data(), a[0], a[1], nullptr, a[7],
                         nullptr, nullptr, nullptr, a[3], a[4], a[5], a[6], a[7], nullptr, a[2], nullptr, a[8], a[9],
                         a[10], a[11], 80);
  };
  const auto plain = [material](int32_t n, const Arrays& a) {
    material.plain(n,
                   {material.props.data(), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[8], a[9], a[10], a[11], 1e-6});
  };
  const std::string shown = material.name.substr(0, material.name.find(' '));
  list.push_back({shown, columns, fill, kernel, plain, material.arithmetic, material.divisions});
}

// The others, in the states in which tests hold them to their loops.
void addRow(std::vector<Case>& list, const plain::UserRow& row) {
  const int comps = row.isSheet ? 4 : 6, gradient = row.isSheet ? 5 : 9;
  const std::vector<int> columns = {1, comps, gradient,   comps, row.states, 1,     1,
                                    1, comps, row.states, 1,     1,          comps, comps};
  const auto fill = [row](int n, const Arrays& a, Random& random) {
    plain::fillUserRow(row, n, a[0], a[1], a[2], a[3], a[4], a[12], a[13],
                       [&random](double low, double high) { return random.uniform(low, high); });
    uniform(n, a[7], random, 300, 300);
  };
  std::string name = row.name;
  name.resize(80, ' ');
  const double dt = 1e-5;
  static const std::vector<double> length(128, 1e-3);
  const auto kernel = [=](int32_t n, const Arrays& a) {
    const int32_t three = 3, shears = comps - 3, zero = 0, states = row.states,
                  props = static_cast<int32_t>(row.props.size());
    const double time = 1;
    SPX_USR_BUILTINVUMAT(&zero, &n, &three, &shears, &states, &zero, &props, &zero, &time, &time, &dt, name.data(),
                         nullptr, length.data(), row.props.data(), a[0], a[1], nullptr, a[7], a[12], nullptr, nullptr,
                         a[3], a[4], a[5], a[6], a[7], a[13], a[2], nullptr, a[8], a[9], a[10], a[11], 80);
  };
  const auto plain = [=](int32_t n, const Arrays& a) {
    row.loop(n, {row.props.data(), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[8], a[9], a[10], a[11], dt, a[12], a[13],
                 length.data()});
  };
  list.push_back({row.name, columns, fill, kernel, plain, row.arithmetic, row.divisions});
}

} // namespace

void addUserCases(std::vector<Case>& list) {
  addMaterial(list, {"TVK_HJC_CONCRETE",
                     5,
                     60e6,
                     2e-5,
                     {14.86e9, .79,  1.6, .007, .61, 48e6, 4e6,    1,     .01, 7, 16e6,
                      .001,    .8e9, .1,  .04,  1,   85e9, -171e9, 208e9, 0,   0},
                     plain::hjcConcrete,
                     400,
                     18});
  for (const plain::UserRow& row : plain::nativeUserRows()) addRow(list, row);
}

} // namespace bench
