# The two everyday commands: `make run` and `make test`. Both install what is
# missing, configure and build first.
JOBS ?= 2
MAKEFLAGS += --no-print-directory
ROOT ?= build/root

.PHONY: all deps sim device asan tsan build-fuzz run test test-target test-vm arm-deps test-arm fuzz soak bench pictures clean

all: sim

deps:
	@./scripts/install-deps.sh

build/%/CMakeCache.txt: | deps
	@cmake --preset $* >/dev/null

sim asan tsan device: %: deps build/%/CMakeCache.txt
	@cmake --build --preset $@ -j$(JOBS)

# The fuzz tree (clang): the harnesses and what they link, nothing else.
build-fuzz: deps build/fuzz/CMakeCache.txt
	@cmake --build --preset fuzz -j$(JOBS)

PORT ?= 8080

run: sim
	build/sim/bin/motordash-sim run --root "$(ROOT)" --port $(PORT)

test: sim asan tsan build-fuzz
	ctest --preset sim
	ctest --preset asan
	ctest --preset tsan
	ctest --preset fuzz

# Each fuzz harness for FUZZ_SECONDS over its corpus, with its executions a second and
# coverage; new inputs, crashes and logs go to build/fuzz/scratch/NAME.
FUZZ_SECONDS ?= 60
fuzz: build-fuzz
	@status=0; for corpus in tests/fuzz/corpus/*; do name=$${corpus##*/}; \
	    sh tests/fuzz/run_fuzzer.sh build/fuzz/bin/fuzz_$$name $(FUZZ_SECONDS) $$corpus build/fuzz/scratch/$$name \
	    || status=1; done; exit $$status

# The ASan+UBSan tree's dash for SOAK_MINUTES at full load, checked and reported
# (tools/soak); `make soak SOAK_MINUTES=1` is the short one. The calibration link's
# secrets are the ones the asan tree was configured with.
SOAK_MINUTES ?= 10
soak: asan
	@secrets=$$(sed -n 's/^MOTORDASH_XCP_SECRETS:[A-Z]*=//p' build/asan/CMakeCache.txt); \
	if [ -z "$$secrets" ]; then echo "build/asan has no XCP secrets: configure it again with cmake --preset asan" >&2; \
	exit 2; fi; XCP_SECRETS=$$secrets build/asan/bin/motordash-soak --minutes $(SOAK_MINUTES)

# The device build on Debian's kernel in a virtual machine (scripts/vm/run.sh): fetches
# the kernel, boots it twice and prints "N passed, N failed".
test-vm: deps
	@JOBS=$(JOBS) ./scripts/vm/run.sh

# The unit tests built for the dash's 32-bit ARM (armhf) and run under qemu-arm, and the
# shipping program compiled for it. One test is left out: it starts its own program
# again in a new process, which user-mode emulation cannot do without a binfmt handler.
ARM_UNIT_TESTS = $(shell grep -ho '^add_executable.unit_[a-z_0-9]*' tests/unit/*/CMakeLists.txt | cut -c16-)
arm-deps: deps
	@./scripts/install-target-deps.sh
build/armhf/CMakeCache.txt build/device-armhf/CMakeCache.txt: | arm-deps
test-arm: arm-deps build/armhf/CMakeCache.txt build/device-armhf/CMakeCache.txt
	@cmake --build build/armhf -j$(JOBS) --target $(ARM_UNIT_TESTS)
	@cmake --build build/device-armhf -j$(JOBS) --target motordash
	ctest --test-dir build/armhf/tests/unit -j$(JOBS) --output-on-failure -E '^CanFreshStart\.'

# The shipping code where `make test` cannot reach it: the device build on a real kernel
# in a virtual machine, the unit tests on the dash's ARM under emulation, and a
# one-minute soak of the sanitized dash at full load. CI runs it after `make test`.
test-target: test-vm test-arm
	@$(MAKE) soak SOAK_MINUTES=1

# Rewrites the stored reference pictures (tests/pictures) from what the code draws now.
# Look at every changed picture before committing it.
pictures: sim
	MOTORDASH_UPDATE_PICTURES=1 ctest --preset sim
	@git status --short tests/pictures

bench: sim
	build/sim/bin/motordash-bench

clean:
	rm -rf build
