# The two commands a new user needs: `make run` and `make test`.
# Both install missing packages, configure and build first.

JOBS ?= $(shell nproc 2>/dev/null || echo 2)
FUZZ_SECONDS ?= 60
EXAMPLE ?= examples/example.sql

.PHONY: all deps configure build run screenshots test test-asan bench fuzz docs format format-check clean

all: build

deps:
	@scripts/install-deps.sh

configure: deps
	@cmake --preset default >/dev/null

build: configure
	@cmake --build --preset default -j $(JOBS)

run: build
	@scripts/run.sh $(EXAMPLE)

screenshots: build
	@scripts/screenshots.sh

test: build
	@ctest --preset default -j $(JOBS)

test-asan: deps
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan -j $(JOBS)
	@ctest --preset asan -j $(JOBS)

bench: build
	@scripts/bench.sh

docs: configure
	@cmake --build --preset default --target docs

fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@scripts/fuzz.sh $(FUZZ_SECONDS)

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

format-check:
	@git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror

clean:
	@rm -rf build build-asan build-fuzz
