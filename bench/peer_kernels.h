// The same work by Eigen, and copies of as many bytes as data movement needs: what kernels are measured against besides plain
// loops.
#pragma once

#include <cstdint>

namespace peer {

void eigenDirectValues(const int32_t* nblock, const double* S, double* P);         // computeDirect, values only
void eigenDirect(const int32_t* nblock, const double* S, double* P, double* V);    // computeDirect
void eigenIterative(const int32_t* nblock, const double* S, double* P, double* V); // compute
void eigenQuaternions(const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B);
void copyBytes(int64_t bytes, const void* source, void* destination); // std::memcpy

} // namespace peer
