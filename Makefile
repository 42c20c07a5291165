# Every target does its own set-up: scripts/setup installs what is missing, or says how.

MAKEFLAGS += --no-print-directory
jobs := $(shell nproc)
configure = cmake --preset $(1) > /dev/null
build = cmake --build --preset $(1) --parallel $(jobs)
run_tests = ctest --preset $(1) --parallel $(jobs)
strict = -D DATUMFIT_WERROR=ON

sources = $(shell find datumfit tests benchmarks examples -name '*.h' -o -name '*.cpp')

.PHONY: help demo test bench asan tsan docs format tidy clean setup

help:
	@echo 'make demo    fits primitives to measured points and shows the results'
	@echo 'make test    builds and runs all tests, plain and under the address and undefined behaviour sanitizers'
	@echo 'make bench   runs the benchmarks; BENCH_ARGS=--benchmark_filter=sphere picks some'
	@echo 'make asan    only the tests under those sanitizers;  make tsan: under the thread sanitizer'
	@echo 'make docs    builds the reference from the headers'
	@echo 'make format  lays out the sources;  make tidy: looks for defects with clang-tidy'
	@echo 'make clean   removes the build folders'

setup:
	@scripts/setup

demo: setup
	@$(call configure,release)
	@$(call build,release) --target datumfit_examples
	@examples/demo.sh build/release/examples

# The tests of both builds run last, so that the closing lines are a test runner's.
test: setup
	$(call configure,release) $(strict)
	$(call build,release)
	$(call configure,asan) $(strict)
	$(call build,asan)
	$(call run_tests,asan)
	$(call run_tests,release)

asan tsan: setup
	$(call configure,$@) $(strict)
	$(call build,$@)
	$(call run_tests,$@)

# The enclosing circle is timed beside that of a public library.
bench:
	@scripts/setup libcgal-dev
	@$(call configure,release)
	@$(call build,release) --target datumfit_benchmarks
	build/release/benchmarks/datumfit_benchmarks $(BENCH_ARGS)

docs:
	@scripts/setup doxygen
	@mkdir -p build/docs
	doxygen docs/Doxyfile
	@echo 'The reference is at build/docs/html/index.html'

format:
	@scripts/setup clang-format
	clang-format -i $(sources)

tidy:
	@scripts/setup clang-tidy
	@$(call configure,release)
	printf '%s\n' $(filter datumfit/%.cpp,$(sources)) | xargs -P $(jobs) -n 4 clang-tidy -p build/release --quiet

clean:
	rm -rf build
