#include "peer_kernels.h"

#include "peer_formulas.h"

#include <Eigen/Dense>
#include <cstring>
#include <map>
#include <memory>
#include <numeric>

#ifdef SA_PEER_GSL
#include <gsl/gsl_interp.h>
#include <gsl/gsl_interp2d.h>
#include <gsl/gsl_sort_int.h>
#endif

namespace peer {
namespace {

using Peers = std::map<std::string, std::vector<Peer>>;

// ---- several points at a time

template <class N>
void addFormulas([[maybe_unused]] const std::string& package, [[maybe_unused]] Peers& peers) {
  using F = Formulas<N>;
  const auto add = [&](const char* kernel, void (*run)(int, const Arrays&)) {
    peers[kernel].push_back({package, run});
  };
  add("GLO_UTI_PRINCS33", F::princs33);
  add("GLO_UTI_EIG33ANAL", F::eig33anal);
  add("GLO_UTI_PRINCS31", F::princs31);
  add("GLO_UTI_QUAT3DALGEBRA", F::quaternions);
  add("SPX_OPE_C3D8ROPER2", F::c3d8roper2);
  add("SPX_MAT_HYPERPOLYS33", F::hyperpolys33);
  add("SPX_MAT_HYPERPOLY3DEXP", F::hyperpoly3dexp);
  add("SPX_MAT_HYPERABS33", F::hyperabs33);
  add("SPX_MAT_HYPERVDW3DEXP", F::hypervdw3dexp);
  add("SPX_MAT_OGDEN", F::ogden);
  add("SPX_MAT_HFOAM", F::hfoam);
  add("SPX_MAT_ORMULLINS", F::ormullins);
  add("SPX_MAT_STRESSRATIO3DEXP", F::stressratio3dexp);
  add("SPX_MAT_DUCTSTRESSRATIO3DEXP", F::stressratio3dexp);
  add("SPX_MAT_JCFAILURESTRAIN", F::jcfailurestrain);
  add("exp", F::template each<F::expOf>);
  add("log", F::template each<F::logOf>);
  add("cos", F::template each<F::cosOf>);
  add("acos", F::template each<F::acosOf>);
}

// ---- Eigen

using Solver = Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>;

Eigen::Matrix3d load(const double* S, int n, int i) {
  Eigen::Matrix3d A;
  A << S[i], S[i + 3 * n], S[i + 5 * n], S[i + 3 * n], S[i + n], S[i + 4 * n], S[i + 5 * n], S[i + 4 * n], S[i + 2 * n];
  return A;
}
template <int options, bool isDirect>
void eigenvalues(int n, const Arrays& a) {
  Solver solver;
  for (int i = 0; i < n; ++i) {
    if constexpr (isDirect)
      solver.computeDirect(load(a[0], n, i), options);
    else
      solver.compute(load(a[0], n, i), options);
    for (int b = 0; b < 3; ++b) {
      a[1][b * n + i] = solver.eigenvalues()[b];
      if constexpr (options == Eigen::ComputeEigenvectors)
        for (int r = 0; r < 3; ++r) a[2][(3 * b + r) * n + i] = solver.eigenvectors()(r, b);
    }
  }
}
void quaternions(int n, const Arrays& a) {
  for (int i = 0; i < n; ++i) {
    const auto of = [&](const double* q) { return Eigen::Quaterniond(q[i + 3 * n], q[i], q[i + n], q[i + 2 * n]); };
    const Eigen::Quaterniond q = (of(a[1]) * of(a[2])).normalized();
    for (int k = 0; k < 4; ++k) a[0][k * n + i] = q.coeffs()[k];
  }
}
void addEigen(Peers& peers) {
  constexpr auto both = Eigen::ComputeEigenvectors, values = Eigen::EigenvaluesOnly;
  for (const char* kernel : {"GLO_UTI_PRINCS33", "GLO_UTI_EIG33V"})
    peers[kernel].push_back({"Eigen direct", eigenvalues<both, true>});
  peers["GLO_UTI_EIG33V"].push_back({"Eigen iterative", eigenvalues<both, false>});
  for (const char* kernel : {"GLO_UTI_EIG33ANAL", "GLO_UTI_EIG33VECTOR", "GLO_UTI_EIG33"})
    peers[kernel].push_back({"Eigen direct", eigenvalues<values, true>});
  peers["GLO_UTI_QUAT3DALGEBRA"].push_back({"Eigen", quaternions});
  peers["SPX_ODB_ORIENT3D"].push_back({"Eigen", [](int n, const Arrays& a) {
                                         for (int i = 0; i < n; ++i) {
                                           const Eigen::Quaterniond q(a[0][i], a[0][n + i], a[0][2 * n + i],
                                                                      a[0][3 * n + i]);
                                           Eigen::Map<Eigen::Vector4d>(a[1] + 4 * i) = q.conjugate().coeffs();
                                         }
                                       }});
}

} // namespace

std::vector<Peer> peersOf(const std::string& kernel) {
  static const Peers all = [] {
    Peers peers;
#ifdef SA_PEER_XSIMD
    addFormulas<Xsimd>("xsimd", peers);
#endif
#ifdef SA_PEER_SLEEF
    addFormulas<Sleef>("SLEEF", peers);
#endif
    addEigen(peers);
    return peers;
  }();
  const auto found = all.find(kernel);
  return found == all.end() ? std::vector<Peer>{} : found->second;
}

Call c3d8oper([[maybe_unused]] const double* const dN[3]) {
#ifdef SA_PEER_XSIMD
  return [d0 = dN[0], d1 = dN[1], d2 = dN[2]](int n, const Arrays& a) {
    const double* const tables[] = {d0, d1, d2};
    Formulas<Xsimd>::c3d8oper(n, tables, a);
  };
#else
  return {};
#endif
}

using Columns = Eigen::Map<Eigen::Array<double, Eigen::Dynamic, 3>>;
using Records = Eigen::Map<Eigen::Array<double, 3, Eigen::Dynamic>>;
using Places = Eigen::Map<const Eigen::ArrayXi>;

Call gather(const std::vector<double>& G, const int* entities) {
  return [&G, entities](int n, const Arrays& a) {
    const Eigen::Map<const Eigen::Array<double, Eigen::Dynamic, 3>> all(G.data(), *entities, 3);
    const Eigen::ArrayXi places = Places(reinterpret_cast<const int*>(a[0]), n) - 1;
    Columns(a[1], n, 3) = all(places, Eigen::all);
  };
}
Call assemble(std::vector<double>& G) {
  return [&G](int n, const Arrays& a) {
    const Places map(reinterpret_cast<const int*>(a[0]), n);
    const Columns L(a[1], n, 3);
    Records all(G.data(), 3, static_cast<Eigen::Index>(G.size() / 3));
    for (int i = 0; i < n; ++i) all.col(map[i] - 1) += L.row(i).transpose();
  };
}

Call filter(int components, int sections, const double* c) {
  return [=](int n, const Arrays& a) {
    using Values = Eigen::Map<Eigen::ArrayXd>;
    const int size = n * components;
    Values x(a[0], size);
    const auto slot = [&](int k) { return Values(a[1] + static_cast<std::ptrdiff_t>(k) * size, size); };
    for (int s = 0; s < sections; ++s) {
      Values in1 = slot(2 * s), in2 = slot(2 * s + 1), out1 = slot(2 * s + 2), out2 = slot(2 * s + 3);
      const double* k = c + 5 * s;
      const Eigen::ArrayXd y = k[0] * x + k[1] * in1 + k[2] * in2 - k[3] * out1 - k[4] * out2;
      in2 = in1;
      in1 = x;
      x = y;
    }
    slot(2 * sections + 1) = slot(2 * sections);
    slot(2 * sections) = x;
  };
}

Call copy(int64_t bytesPerPoint, std::size_t from, std::size_t to) {
  return [=](int n, const Arrays& a) { std::memcpy(a[to], a[from], static_cast<std::size_t>(n * bytesPerPoint / 2)); };
}

void stableSort(int32_t* list, const int32_t* keys, const int32_t* n) {
  std::stable_sort(list, list + *n, [keys](int32_t a, int32_t b) { return keys[a - 1] < keys[b - 1]; });
}

#ifdef SA_PEER_GSL
Sort gslSort() {
  return [](int32_t* list, const int32_t* keys, const int32_t* n) {
    thread_local std::vector<std::size_t> order;
    order.resize(static_cast<std::size_t>(*n));
    gsl_sort_int_index(order.data(), keys, 1, order.size());
    std::transform(order.begin(), order.end(), list, [](std::size_t k) { return static_cast<int32_t>(k + 1); });
  };
}

Call gslLine(int rows, const double* table) {
  struct Line {
    std::vector<double> x, f;
    std::shared_ptr<gsl_interp> line;
    std::shared_ptr<gsl_interp_accel> place{gsl_interp_accel_alloc(), gsl_interp_accel_free};
  } t;
  for (int r = 0; r < rows; ++r) t.f.push_back(table[2 * r]), t.x.push_back(table[2 * r + 1]);
  t.line.reset(gsl_interp_alloc(gsl_interp_linear, t.x.size()), gsl_interp_free);
  gsl_interp_init(t.line.get(), t.x.data(), t.f.data(), t.x.size());
  return [t](int n, const Arrays& a) {
    for (int i = 0; i < n; ++i) {
      const double x = std::clamp(a[0][i], t.x.front(), t.x.back());
      a[1][i] = gsl_interp_eval(t.line.get(), t.x.data(), t.f.data(), x, t.place.get());
      a[2][i] = gsl_interp_eval_deriv(t.line.get(), t.x.data(), t.f.data(), x, t.place.get());
    }
  };
}

Call gslGrid(int groups, int rows, const double* table) {
  struct Grid {
    std::vector<double> x, y, f;
    std::shared_ptr<gsl_interp2d> plane;
    std::shared_ptr<gsl_interp_accel> atX{gsl_interp_accel_alloc(), gsl_interp_accel_free},
        atY{gsl_interp_accel_alloc(), gsl_interp_accel_free};
  } t;
  for (int r = 0; r < rows; ++r) t.x.push_back(table[3 * r + 1]);
  for (int g = 0; g < groups; ++g) t.y.push_back(table[3 * g * rows + 2]);
  for (int r = 0; r < groups * rows; ++r) t.f.push_back(table[3 * r]);
  t.plane.reset(gsl_interp2d_alloc(gsl_interp2d_bilinear, t.x.size(), t.y.size()), gsl_interp2d_free);
  gsl_interp2d_init(t.plane.get(), t.x.data(), t.y.data(), t.f.data(), t.x.size(), t.y.size());
  return [t](int n, const Arrays& a) {
    for (int i = 0; i < n; ++i) {
      const double x = std::clamp(a[0][i], t.x.front(), t.x.back()), y = std::clamp(a[1][i], t.y.front(), t.y.back());
      const auto by = [&](auto evaluate) {
        return evaluate(t.plane.get(), t.x.data(), t.y.data(), t.f.data(), x, y, t.atX.get(), t.atY.get());
      };
      a[2][i] = by(gsl_interp2d_eval);
      a[3][i] = by(gsl_interp2d_eval_deriv_x);
      a[4][i] = by(gsl_interp2d_eval_deriv_y);
    }
  };
}
#else
Sort gslSort() { return nullptr; }
Call gslLine(int, const double*) { return {}; }
Call gslGrid(int, int, const double*) { return {}; }
#endif

} // namespace peer
