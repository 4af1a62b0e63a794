# Thin wrapper around CMake. `make run` and `make test` are the two set-up commands;
# `make test-windows` is the third, for the 32-bit Windows build under Wine.
RELEASE_DIR := build/release
TEST_DIR    := build/test
CLANG_DIR   := build/test-clang
RUN_DIR     := build/run
WIN_DIR     := build/mingw32
WIN64_DIR   := build/mingw64
GEN         := -G Ninja

.PHONY: run test test-clang test-windows test-windows64 install bench format clean

run:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR) --target mxsbutil
	@sh examples/run.sh $(RELEASE_DIR)/mxsbutil $(RUN_DIR)

test:
	cmake -S . -B $(TEST_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Debug -DMG_SANITIZE=ON -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(TEST_DIR)
	ctest --test-dir $(TEST_DIR) --output-on-failure -j2

# The same tests built with Clang, in Release and without sanitizers (CI runs it after test);
# the benchmarks are built too where Google Benchmark is installed, so that they compile cleanly.
test-clang:
	cmake -S . -B $(CLANG_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_WERROR=ON -DMG_BENCH=ON \
		-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
	cmake --build $(CLANG_DIR)
	ctest --test-dir $(CLANG_DIR) --output-on-failure -j2

# Installs the Release build under PREFIX (default /usr/local).
PREFIX ?= /usr/local
install:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR) --target mxsbutil mgrsrc mg mxhost mghost
	cmake --install $(RELEASE_DIR) --prefix $(PREFIX)

# Cross-builds everything for 32-bit Windows and runs every suite under Wine, in a Wine prefix
# and with a Wine server of its own, stopped again at the end.
test-windows:
	cmake -S . -B $(WIN_DIR) $(GEN) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw32.cmake -DCMAKE_BUILD_TYPE=Debug -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(WIN_DIR)
	@env=$$(sh cmake/wine-env.sh build) || exit 1; eval "$$env"; \
	ctest --test-dir $(WIN_DIR) --output-on-failure -j2; status=$$?; \
	wineserver -k; exit $$status

# The same for 64-bit Windows, with a 64-bit Wine prefix of its own.
test-windows64:
	cmake -S . -B $(WIN64_DIR) $(GEN) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw64.cmake -DCMAKE_BUILD_TYPE=Debug -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(WIN64_DIR)
	@env=$$(sh cmake/wine-env.sh build win64) || exit 1; eval "$$env"; \
	ctest --test-dir $(WIN64_DIR) --output-on-failure -j2; status=$$?; \
	wineserver -k; exit $$status

bench:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR)
	@for b in $(RELEASE_DIR)/bench_*; do [ -x "$$b" ] && "$$b"; done; true
	@sh bench/package_256m.sh $(RELEASE_DIR)/mxsbutil

format:
	find exsource mgsource tests bench fuzz -name '*.cpp' -o -name '*.h' | xargs clang-format -i

clean:
	rm -rf build
