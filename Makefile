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

.PHONY: all deps configure build run panel test test-asan fuzz bench format clean install package test-install

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DBUILD_TESTING=ON >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	$(BUILD_DIR)/apps/vantix-sim/vantix-sim --platform $(PLATFORM)

# The control panel attached to a fresh simulator in the background; the
# simulator reads its console from a pipe that stays open until the panel
# quits, and then ends by itself. PANEL_ARGS go to the panel (--tab network).
PANEL_ARGS ?=
panel: build
	@fifo=$$(mktemp -u); mkfifo $$fifo; \
	$(BUILD_DIR)/apps/vantix-sim/vantix-sim --platform $(PLATFORM) --quiet < $$fifo & sim_pid=$$!; \
	exec 3>$$fifo; rm -f $$fifo; \
	trap 'exec 3>&-; wait $$sim_pid' EXIT INT TERM; \
	tries=0; until $(BUILD_DIR)/apps/vantix-ctl/vantix-ctl --pid $$sim_pid devices >/dev/null 2>&1; do \
		tries=$$((tries + 1)); if [ $$tries -gt 100 ] || ! kill -0 $$sim_pid 2>/dev/null; then \
			echo "panel: vantix-sim did not start" >&2; exit 2; fi; sleep 0.1; done; \
	$(BUILD_DIR)/apps/vantix-panel/vantix-panel --pid $$sim_pid $(PANEL_ARGS)

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
# BENCH_ARGS=--record makes this run the one later runs are compared with (bench/recorded.json).
bench: build
	@./scripts/bench.sh $(BUILD_DIR) $(BENCH_ARGS)

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
FUZZ_TARGETS ?= controlline debugcommand framing nvram osrelease
FUZZ_TMPDIR ?= $(shell test -d /dev/shm && echo /dev/shm || echo /tmp)
# The fast unwinder: the one suppression needs the slow one only for QtGui, which no fuzz target loads,
# and the slow one made every allocation cost ten times as much. A quarantine of 16 MB rather than
# 256: the leak checks of new inputs scan a heap a quarter the size, which doubled the control-line
# target's executions per second; a use after free within one input is still caught.
FUZZ_ENV = TMPDIR=$(FUZZ_TMPDIR) ASAN_OPTIONS=detect_leaks=1:quarantine_size_mb=16 \
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
