# Thin wrapper around CMake. `make run` and `make test` are the two set-up commands.
RELEASE_DIR := build/release
TEST_DIR    := build/test
RUN_DIR     := build/run
GEN         := -G Ninja

.PHONY: run test bench format clean

run:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR) --target mxsbutil
	@sh examples/run.sh $(RELEASE_DIR)/mxsbutil $(RUN_DIR)

test:
	cmake -S . -B $(TEST_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Debug -DMG_SANITIZE=ON -DMG_WERROR=ON -DMG_BENCH=OFF
	cmake --build $(TEST_DIR)
	ctest --test-dir $(TEST_DIR) --output-on-failure -j2

bench:
	cmake -S . -B $(RELEASE_DIR) $(GEN) -DCMAKE_BUILD_TYPE=Release -DMG_TESTS=OFF
	cmake --build $(RELEASE_DIR)
	@for b in $(RELEASE_DIR)/bench_*; do [ -x "$$b" ] && "$$b"; done; true
	@sh bench/package_256m.sh $(RELEASE_DIR)/mxsbutil

format:
	find exsource mgsource tests bench fuzz -name '*.cpp' -o -name '*.h' | xargs clang-format -i

clean:
	rm -rf build
