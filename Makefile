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
	@[ -d "$(ROOT)" ] || build/sim/bin/motordash-sim init "$(ROOT)"
	@echo "Device root: $(ROOT)  (screenshot: build/sim/bin/motordash-sim screenshot $(ROOT) screen.png)"
	DASH_ROOT="$(abspath $(ROOT))" build/sim/bin/motordash

test: sim asan tsan
	ctest --preset sim
	ctest --preset asan
	ctest --preset tsan

bench: sim
	build/sim/bin/motordash-bench

clean:
	rm -rf build
