# The two everyday commands: `make run` and `make test`. Both install what is
# missing, configure and build first.
JOBS ?= 2
MAKEFLAGS += --no-print-directory
ROOT ?= build/root

.PHONY: all deps sim device asan tsan run test bench pictures clean

all: sim

deps:
	@./scripts/install-deps.sh

build/%/CMakeCache.txt: | deps
	@cmake --preset $* >/dev/null

sim asan tsan device: %: deps build/%/CMakeCache.txt
	@cmake --build --preset $@ -j$(JOBS)

PORT ?= 8080

run: sim
	build/sim/bin/motordash-sim run --root "$(ROOT)" --port $(PORT)

test: sim asan tsan
	ctest --preset sim
	ctest --preset asan
	ctest --preset tsan

# Rewrites the stored reference pictures (tests/pictures) from what the code draws now.
# Look at every changed picture before committing it.
pictures: sim
	MOTORDASH_UPDATE_PICTURES=1 ctest --preset sim
	@git status --short tests/pictures

bench: sim
	build/sim/bin/motordash-bench

clean:
	rm -rf build
