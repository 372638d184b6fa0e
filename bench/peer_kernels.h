// The same work by other packages, where they are installed: xsimd, SLEEF, Eigen, GSL and the standard library.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace peer {

using Arrays = std::vector<double*>;
using Call = std::function<void(int, const Arrays&)>;
struct Peer {
  std::string package;
  Call run; // the arrays of the kernel's case
};

// The peers of a kernel that need nothing but its arrays.
std::vector<Peer> peersOf(const std::string& kernel);

// Those that need more; without a package the call is empty.
Call c3d8oper(const double* const dN[3]);
Call gather(const std::vector<double>& G, const int* entities); // three components, columns of a global array
Call assemble(std::vector<double>& G);
Call filter(int components, int sections, const double* coefficients);
Call copy(int64_t bytesPerPoint, std::size_t from,
          std::size_t to); // std::memcpy: reads and writes half of the bytes each
// list := 1 .. n in rising order of keys, equal ones as they come
void stableSort(int32_t* list, const int32_t* keys, const int32_t* n);
using Sort = void (*)(int32_t* list, const int32_t* keys, const int32_t* n);
Sort gslSort();
// (x, value, derivative) by a line of `rows` rows (value, abscissa), and (x, y, value, d/dx, d/dy) by a grid of (value, x, y)
Call gslLine(int rows, const double* table);
Call gslGrid(int groups, int rows, const double* table);

} // namespace peer
