# The two everyday commands: `make run` and `make test`. Both install what is
# missing, configure and build first.
JOBS ?= 2
MAKEFLAGS += --no-print-directory
ROOT ?= build/root

.PHONY: all deps sim device asan tsan run test bench clean

all: sim

deps:
	@./scripts/install-deps.sh

build/%/CMakeCache.txt: | deps
	@cmake --preset $* >/dev/null

sim asan tsan device: %: deps build/%/CMakeCache.txt
	@cmake --build --preset $@ -j$(JOBS)

run: sim
	@scripts/run-sim.sh build/sim/bin "$(ROOT)"

test: sim asan tsan
	ctest --preset sim
	ctest --preset asan
	ctest --preset tsan

bench: sim
	build/sim/bin/motordash-bench

clean:
	rm -rf build
