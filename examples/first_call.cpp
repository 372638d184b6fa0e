// The shortest complete host: start the library, compute stresses of one block, write a message, stop the library.
//
//   g++ -std=c++20 first_call.cpp $(pkg-config --cflags --libs sharedanalysis-host)
#include "glo.h"
#include "reference_host.h"
#include "spx.h"

#include <cstdio>
#include <vector>

int main() {
  sharedanalysis::host::openJob("first_call", "."); // first_call.msg, .log and .sta
  int32_t components = 0;
  Shared_Analysis_XP_initialize(&components);

  // 100 points of a rubber with shear modulus 1 MPa and bulk modulus 50 MPa, stretched along axis 1.
  const int32_t n = 100;
  const std::vector<double> C10(n, 0.5e6), zero(n, 0.0), rD1(n, 25e6);
  std::vector<double> V(6 * n), stress(6 * n), flag(n), bound(n), bulk(n);
  for (int32_t i = 0; i < n; ++i) {
    V[i] = 1.0 + 0.01 * i; // component 11 of the left stretch; components are n apart
    V[n + i] = V[2 * n + i] = 1.0;
  }
  SPX_MAT_HYPERPOLY3DEXP(&n, C10.data(), zero.data(), zero.data(), zero.data(), zero.data(), rD1.data(), zero.data(),
                         V.data(), stress.data(), flag.data(), bound.data(), bulk.data());

  const double last = stress[n - 1];
  glo_uti_CWrite(-6, 0, "Info", "%I points computed, the last one has a stress of %R Pa", &n, &last, nullptr);
  std::printf("stress of the last point: %.4e Pa\n", last);

  Shared_Analysis_XP_finalize(&components);
  sharedanalysis::host::closeJob();
}
