# Thin wrapper around CMake. `make run` and `make test` are the two set-up commands;
# `make test-windows` is the third, for the 32-bit Windows build under Wine.
RELEASE_DIR := build/release
TEST_DIR    := build/test
CLANG_DIR   := build/test-clang
RUN_DIR     := build/run
WIN_DIR     := build/mingw32
GCC_DIR     := build/test-release
SOFT_DIR    := build/test-soft
WIN64_DIR   := build/mingw64
GEN         := -G Ninja
# Two build jobs: the machines this runs on have two cores.
JOBS        ?= 2

.PHONY: run test test-clang test-release test-soft test-windows test-windows64 fuzz-ci install bench format clean

run:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR) -j$(JOBS) --target mxsbutil
	@sh examples/run.sh $(RELEASE_DIR)/mxsbutil $(RUN_DIR)

test:
	cmake -S . -B $(TEST_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Debug -DMG_SANITIZE=ON -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(TEST_DIR) -j$(JOBS)
	ctest --test-dir $(TEST_DIR) --output-on-failure -j2

# The same tests built with Clang, in Release and without sanitizers (CI runs it after test);
# the benchmarks are built too where Google Benchmark is installed, so that they compile cleanly.
test-clang:
	cmake -S . -B $(CLANG_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_WERROR=ON -DMG_BENCH=ON \
		-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
	cmake --build $(CLANG_DIR) -j$(JOBS)
	ctest --test-dir $(CLANG_DIR) --output-on-failure -j2

# The same tests built with GCC in Release, as make run and make bench build the code: the
# optimizer's own warnings are errors here (CI runs it).
test-release:
	cmake -S . -B $(GCC_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_WERROR=ON -DMG_BENCH=ON \
		-DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++
	cmake --build $(GCC_DIR) -j$(JOBS)
	ctest --test-dir $(GCC_DIR) --output-on-failure -j2

# The software stand-ins of the 80-bit unit (MG_SOFT_EXTENDED), which hosts without the unit
# build, optimized and under the sanitizers: the number, scanning and format suites and their
# fuzz corpora must pass as they do on the unit (CI runs it).
test-soft:
	cmake -S . -B $(SOFT_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_SANITIZE=ON \
		-DMG_SOFT_EXTENDED=ON -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(SOFT_DIR) -j$(JOBS) --target test_numbers test_format replay_numbers replay_format
	ctest --test-dir $(SOFT_DIR) --output-on-failure -j2 -R '^(numbers|format|fuzz_numbers|fuzz_format)$$'

# The short fuzz run of CI: every fuzz target a fixed number of executions from its corpus with a
# fixed seed, under the sanitizers (Clang with its fuzzer runtime, Debian: libclang-rt-14-dev).
fuzz-ci:
	JOBS=$(JOBS) sh fuzz/ci.sh build/fuzz-ci

# Installs the Release build under PREFIX (default /usr/local).
PREFIX ?= /usr/local
install:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR) -j$(JOBS) --target mxsbutil mgrsrc mg mxhost mghost
	cmake --install $(RELEASE_DIR) --prefix $(PREFIX)

# Cross-builds everything for 32-bit Windows and runs every suite under Wine, in a Wine prefix
# and with a Wine server of its own, stopped again at the end. Under load Wine now and then
# fails to start a program at all ("ShellExecuteEx failed"), so a failed suite gets a second
# run; a suite that really fails, fails both.
test-windows:
	cmake -S . -B $(WIN_DIR) $(GEN) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw32.cmake -DCMAKE_BUILD_TYPE=Debug -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(WIN_DIR) -j$(JOBS)
	@env=$$(sh cmake/wine-env.sh build) || exit 1; eval "$$env"; \
	ctest --test-dir $(WIN_DIR) --output-on-failure -j2 --repeat until-pass:2; status=$$?; \
	wineserver -k; exit $$status

# The same for 64-bit Windows, with a 64-bit Wine prefix of its own.
test-windows64:
	cmake -S . -B $(WIN64_DIR) $(GEN) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw64.cmake -DCMAKE_BUILD_TYPE=Debug -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(WIN64_DIR) -j$(JOBS)
	@env=$$(sh cmake/wine-env.sh build win64) || exit 1; eval "$$env"; \
	ctest --test-dir $(WIN64_DIR) --output-on-failure -j2 --repeat until-pass:2; status=$$?; \
	wineserver -k; exit $$status

bench:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR) -j$(JOBS)
	@for b in $(RELEASE_DIR)/bench_*; do [ -x "$$b" ] && "$$b"; done; true
	@sh bench/package_256m.sh $(RELEASE_DIR)/mxsbutil

format:
	find exsource mgsource tests bench fuzz -name '*.cpp' -o -name '*.h' | xargs clang-format -i

clean:
	rm -rf build
