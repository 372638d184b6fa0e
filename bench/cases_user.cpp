// Built-in user materials: solids in the midst of damage and of transformation, through the dispatch.
#include "bench_case.h"
#include "plain_user.h"
#include "spx.h"

#include <string>

namespace bench {
namespace {

// In the states in which tests hold kernels and loops to each other.
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
  for (const plain::UserRow& row : plain::nativeUserRows()) addRow(list, row);
}

} // namespace bench
