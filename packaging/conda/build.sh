#!/usr/bin/env bash
# Run by conda-build in the sources.
set -euo pipefail
cmake -S . -B build/conda -G Ninja ${CMAKE_ARGS:-} -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$PREFIX" \
  -DCMAKE_INSTALL_LIBDIR=lib -DSA_BUILD_TESTS=OFF -DSA_BUILD_BENCH=OFF -DSA_BUILD_SOLVER=OFF
cmake --build build/conda --target programs
cmake --install build/conda
SHAREDANALYSIS_BUILD=build/conda "$PYTHON" -m pip install --no-build-isolation --no-deps ./python
