# The usual commands; the build itself is described in CMakeLists.txt and CMakePresets.json.
.PHONY: demo test bench release format clean

JOBS ?= $(shell nproc)

release:
	scripts/setup
	cmake --preset release
	cmake --build --preset release -j $(JOBS)

demo: release
	scripts/demo

test: release
	ctest --preset release -j $(JOBS)

bench: release
	for program in build/release/bin/*_bench; do "$$program" || exit 1; done

format:
	git ls-files --cached --others --exclude-standard '*.c' '*.cpp' '*.h' '*.hpp' | xargs clang-format-14 -i

clean:
	rm -rf build
