// A table of yield stress against plastic strain and temperature, laid out in the pools and looked up for a block of points.
//
//   g++ -std=c++20 material_table.cpp $(pkg-config --cflags --libs sharedanalysis-host)
#include "material_table.h"
#include "spx.h"

#include <cstdio>

int main() {
  using namespace sharedanalysis::tables;
  Pools pools; // of all tables of an analysis
  // Plastic strain is field variable 1, so that its derivative, the hardening modulus, is returned; a state variable's is not.
  // The temperatures need not have the same strains.  MPa, K.
  const Table yield =
      addTable(pools, {{.source = field(1)}, {.source = kTemperature}},
               {{300, 0.0, 293}, {350, 0.1, 293}, {400, 0.3, 293}, {200, 0.0, 493}, {235, 0.05, 493}, {260, 0.1, 493}});

  const int32_t n = 4, derivatives = 1;
  const double strain[n] = {0.0, 0.05, 0.2, 1.0}, temperature[n] = {293, 373, 293, 600};
  double stress[n], byStrain[n], byTemperature[n];
  SPX_GET_GETVALUE(&derivatives, pools.ints.data(), pools.reals.data(), yield.header.data(), &n, &yield.option, strain,
                   nullptr, temperature, stress, byStrain, byTemperature);

  std::printf("strain  temperature  yield stress  hardening  per kelvin\n");
  for (int i = 0; i < n; ++i)
    std::printf("%.4f  %11.0f  %12.1f  %9.1f  %10.3f\n", strain[i], temperature[i], stress[i], byStrain[i],
                byTemperature[i]);
}
