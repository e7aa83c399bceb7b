# Convenience front end. `make run` and `make test` do all the set-up a
# fresh Debian machine needs: install packages, configure, build.

BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PLATFORM ?= tolvex-plus

ASAN_BUILD_DIR ?= build-asan
# Leaks inside Qt's own start-up are listed, with reasons, in the suppressions file.
SANITIZER_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

.PHONY: all deps configure build run test test-asan bench format clean

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DBUILD_TESTING=ON >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	$(BUILD_DIR)/apps/vantix-sim/vantix-sim --platform $(PLATFORM)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# Benchmarks with their baselines and targets (bench/README.md); not part of `make test`.
bench: build
	@./scripts/bench.sh $(BUILD_DIR)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD_DIR) -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON -DVANTIX_SANITIZE=ON >/dev/null
	@cmake --build $(ASAN_BUILD_DIR) -j $(JOBS)
	cd $(ASAN_BUILD_DIR) && $(SANITIZER_ENV) ctest --output-on-failure -j $(JOBS)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR) $(ASAN_BUILD_DIR)
