# Convenience front end. `make run` and `make test` do all the set-up a
# fresh Debian machine needs: install packages, configure, build.

BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
PLATFORM ?= tolvex-plus

ASAN_BUILD_DIR ?= build-asan
# Leaks inside Qt's own start-up are listed, with reasons, in the suppressions file.
# Full stacks on allocation (fast_unwind_on_malloc=0): Qt is built without frame
# pointers, and the suppressions must see the Qt frames behind an allocation.
SANITIZER_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1:fast_unwind_on_malloc=0 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

# Installing and packaging build in a folder of their own (scripts/release-build.sh):
# no tests, Debian's hardened flags.
RELEASE_BUILD_DIR ?= build-release
PREFIX ?= /usr/local

.PHONY: all deps configure build run test test-asan fuzz bench format clean install package test-install

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

# DESTDIR=/some/stage, from the command line or the environment, stages the install.
install: deps
	@JOBS=$(JOBS) ./scripts/release-build.sh $(RELEASE_BUILD_DIR) $(PREFIX)
	cmake --install $(RELEASE_BUILD_DIR)

# Debian packages (libvantix0, libvantix-dev, vantix-tools) in $(RELEASE_BUILD_DIR)/packages,
# checked by scripts/check-packages.sh: contents, dependencies, lintian.
package: deps
	@JOBS=$(JOBS) ./scripts/release-build.sh $(RELEASE_BUILD_DIR) /usr
	cd $(RELEASE_BUILD_DIR) && cpack
	@./scripts/check-packages.sh $(RELEASE_BUILD_DIR)

# Installs into a temporary prefix and builds and runs programs against it alone.
test-install: deps
	@JOBS=$(JOBS) ./scripts/test-install.sh $(RELEASE_BUILD_DIR)

# Benchmarks with their baselines and targets (bench/README.md); not part of `make test`.
bench: build
	@./scripts/bench.sh $(BUILD_DIR)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD_DIR) -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=ON -DVANTIX_SANITIZE=ON >/dev/null
	@cmake --build $(ASAN_BUILD_DIR) -j $(JOBS)
	cd $(ASAN_BUILD_DIR) && $(SANITIZER_ENV) ctest --output-on-failure -j $(JOBS)

# libFuzzer targets (fuzz/): built with clang in a folder of their own and run
# one after the other, each for FUZZ_SECONDS, from the committed seeds in
# fuzz/corpus/<target>. New inputs collect in fuzz-out/corpus/<target>, crashing
# ones in fuzz-out/crashes/<target>; a crash becomes a file under
# fuzz/regressions/<target>, which CTest replays. fuzz/<target>.dict lists the
# words of its input. Scratch files go to memory (/dev/shm) where there is one.
# The Systems the targets start serve no control socket (VANTIX_CONTROL=off).
FUZZ_BUILD_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?= controlline debugcommand nvram osrelease
FUZZ_TMPDIR ?= $(shell test -d /dev/shm && echo /dev/shm || echo /tmp)
FUZZ_ENV = TMPDIR=$(FUZZ_TMPDIR) ASAN_OPTIONS=detect_leaks=1:fast_unwind_on_malloc=0 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 QT_QPA_PLATFORM=offscreen VANTIX_CONTROL=off

fuzz: deps
	@CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD_DIR) -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
		-DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF -DVANTIX_FUZZ=ON >/dev/null
	@cmake --build $(FUZZ_BUILD_DIR) -j $(JOBS) --target $(addprefix fuzz_,$(FUZZ_TARGETS))
	@status=0; for t in $(FUZZ_TARGETS); do \
		mkdir -p fuzz-out/corpus/$$t fuzz-out/crashes/$$t; \
		echo "fuzz: $$t for $(FUZZ_SECONDS) s"; \
		$(FUZZ_ENV) $(FUZZ_BUILD_DIR)/fuzz/fuzz_$$t -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 \
			-dict=fuzz/$$t.dict -artifact_prefix=fuzz-out/crashes/$$t/ fuzz-out/corpus/$$t fuzz/corpus/$$t \
			|| status=1; \
	done; exit $$status

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR) $(ASAN_BUILD_DIR) $(FUZZ_BUILD_DIR) $(RELEASE_BUILD_DIR) fuzz-out
