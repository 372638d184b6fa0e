# The usual commands; the build itself is described in CMakeLists.txt and CMakePresets.json.
.PHONY: programs demo docs packages test torture bench bench-compare format clean

export JOBS ?= $(shell nproc)
# further options of the configuration, for instance OPTIONS=-DSA_TEST_LEVELS=x86-64
OPTIONS ?=

programs:
	@scripts/setup
	@scripts/build release $(OPTIONS) programs

# in a tree of its own, compiled for this machine's instruction set alone: three in one take twice as long
demo:
	@scripts/setup
	@scripts/build quick $(OPTIONS) sharedanalysis-explicit sharedanalysis-diagnostics
	@scripts/demo build/quick

# the reference site: build/release/site/index.html
docs:
	@scripts/setup --docs
	@scripts/build release $(OPTIONS) docs
	@echo "build/release/site/index.html"

# in the demo's tree; the library for all machines is built and tested by .ci/run
test:
	@scripts/setup
	@scripts/build quick $(OPTIONS)
	@ctest --preset quick -j $(JOBS) --progress

# Debian packages: build/release/packages; scripts/check_packages tries them in a clean system
packages:
	@scripts/setup --packages
	@scripts/packages $(OPTIONS)

# hard data for every kernel, for hours: docs/robustness.md
INPUTS ?= 100000000
SEED ?= 1
torture:
	@scripts/setup
	@scripts/build release $(OPTIONS) SharedAnalysis generic_tests
	@scripts/torture $(INPUTS) $(SEED)

bench:
	@scripts/setup
	@scripts/build release $(OPTIONS) benchmarks
	@for program in build/release/bin/*_bench; do "$$program" || exit 1; done

# The kernels of this tree and of the commit BASE in turns; fails when one has become slower.  ROWS=words of row names.
bench-compare:
	@scripts/setup
	@scripts/build release $(OPTIONS) kernel_bench
	@scripts/bench_compare $(BASE) --rows $(ROWS)

format:
	git ls-files --cached --others --exclude-standard '*.c' '*.cpp' '*.h' '*.hpp' | xargs clang-format-14 -i

clean:
	rm -rf build
