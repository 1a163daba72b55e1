# The front door. `make demo` and `make test` do everything from a fresh clone; HACKING.md tells the rest.
JOBS ?= $(shell nproc)
# What the demonstration shows: any source file in a language that stands under Packages/.
FILE ?= Tests/Corpus/javascript/sample/text.js
FUZZ_SECONDS ?= 60

.PHONY: help demo test asan tsan bench fuzz install-dependencies clean

help:
	@echo 'make demo [FILE=...]        show a source file in colour'
	@echo 'make test                   build everything and run all tests'
	@echo 'make asan, make tsan        the same with address checks; the concurrent tests with thread checks'
	@echo 'make bench                  build and run the benchmarks'
	@echo 'make fuzz [FUZZ_SECONDS=60] search for inputs that break a reader, so long for each target'

install-dependencies:
	@scripts/install-dependencies

demo: install-dependencies
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target quorvane-highlight
	build/release/bin/quorvane-highlight $(FILE)

test: install-dependencies
	cmake --preset debug
	cmake --build --preset debug --parallel $(JOBS)
	ctest --preset debug --parallel $(JOBS)

asan: install-dependencies
	cmake --preset asan
	cmake --build --preset asan --parallel $(JOBS)
	ctest --preset asan --parallel $(JOBS)

# The thread checks are for what runs on several threads; the rest would only take time.
tsan: install-dependencies
	cmake --preset tsan
	cmake --build --preset tsan --parallel $(JOBS) --target concurrency-tests
	ctest --preset tsan --parallel $(JOBS) --label-regex concurrency

bench: install-dependencies
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target benchmarks
	@set -e; for program in build/release/bin/*-benchmarks; do $$program; done

fuzz:
	@scripts/install-dependencies --ci
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS)
	scripts/fuzz $(FUZZ_SECONDS)

clean:
	rm -rf build
