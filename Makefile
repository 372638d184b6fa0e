# The usual commands; the build itself is described in CMakeLists.txt and CMakePresets.json.
.PHONY: programs demo test bench format clean

export JOBS ?= $(shell nproc)
# further options of the configuration, for instance OPTIONS=-DSA_TEST_LEVELS=ON
OPTIONS ?=

programs:
	@scripts/setup
	@scripts/build release $(OPTIONS) programs

demo:
	@scripts/setup
	@scripts/build release $(OPTIONS) sharedanalysis-explicit
	@scripts/demo

test:
	@scripts/setup
	@scripts/build release $(OPTIONS)
	@ctest --preset release -j $(JOBS) --progress

bench:
	@scripts/setup
	@scripts/build release $(OPTIONS) benchmarks
	@for program in build/release/bin/*_bench; do "$$program" || exit 1; done

format:
	git ls-files --cached --others --exclude-standard '*.c' '*.cpp' '*.h' '*.hpp' | xargs clang-format-14 -i

clean:
	rm -rf build
