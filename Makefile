# Convenience front end. `make run` and `make test` do all the set-up a
# fresh Debian machine needs: install packages, configure, build.

BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PLATFORM ?= tolvex-plus

.PHONY: all deps configure build run test format clean

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

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)
