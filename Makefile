# One command each; every one installs what is missing first and is quick when nothing is.
#   make run      build, make the sample data, run the dialog on it (a screenshot in out/ where there is no screen)
#   make test     build everything with warnings as errors, lint, run all tests
#   make bench    print the figures, one line each, beside its limit or alternative; tools/bench.sh --json for machines,
#                 tools/bench-compare.sh OLD NEW for what changed between two builds
#   make asan | tsan | fuzz | mutants | lint | tidy | format | shots | install
SHELL := /bin/bash
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
export LC_ALL := C.UTF-8

.PHONY: all run test bench asan tsan fuzz mutants lint tidy format shots install package setup release sample-data clean
all: release

setup:
	@tools/setup.sh

release: setup
	@[ -f build/release/build.ninja ] || cmake --preset release
	@cmake --build --preset release -j $(JOBS)
	@ln -sf bin/zelvar build/release/zelvar

sample-data: release
	@tools/sample-data.sh out/sample

run: sample-data
	@tools/run.sh

# ROOM=lists builds and runs the tests of one room. HEADERS=ON compiles each header alone, too: a third of the work.
test: setup
	@[ -f build/dev/build.ninja ] && [ -z "$(HEADERS)" ] || cmake --preset dev $(if $(HEADERS),-DZELVAR_CHECK_HEADERS=$(HEADERS))
	@cmake --build --preset dev -j $(JOBS) $(if $(ROOM),--target $(ROOM)_test)
	@ctest --preset dev -j $(JOBS) $(if $(ROOM),-R '^$(ROOM)\.')

bench: setup
	@[ -f build/release/build.ninja ] || cmake --preset release
	@cmake --build --preset release -j $(JOBS) --target all benches
	@tools/bench.sh

asan tsan: setup
	@[ -f build/$@/build.ninja ] || cmake --preset $@
	@cmake --build --preset $@ -j $(JOBS)
	@ctest --preset $@ -j $(JOBS)

# FUZZ_SECONDS a target; the engine needs clang.
fuzz: setup
	@tools/fuzz.sh $(or $(FUZZ_SECONDS),60)

# What the tests notice of COUNT small changes drawn from SEED, in all rooms or in ROOM.
mutants: setup
	@tools/mutants.sh --seed $(or $(SEED),1) --count $(or $(COUNT),300) $(if $(ROOM),--room $(ROOM)) -j $(JOBS)

lint: setup
	@tools/lint.sh
	@tools/translations.sh --check

# What clang-tidy says of the sources that differ from main (TIDY_ALL=1: of all).
tidy: setup
	@tools/tidy.sh

format:
	@git ls-files -co --exclude-standard '*.h' '*.cpp' | xargs clang-format -i

shots: setup
	@[ -f build/dev/build.ninja ] || cmake --preset dev
	@cmake --build --preset dev -j $(JOBS)
	@tools/shots.sh out/shots

install: release
	@cmake --install build/release --prefix $(PREFIX)

package:
	@tools/setup.sh debhelper dpkg-dev lintian appstream desktop-file-utils
	@tools/package.sh build/package

clean:
	rm -rf build out
