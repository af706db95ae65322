# The two commands of the README, and the rest of the daily work.
#   make run    installs what is missing, builds, runs the program on the bundled sample
#   make test   installs what is missing, builds, runs every test
SHELL := /bin/bash
JOBS ?= $(shell nproc)
BUILD ?= build
CMAKE_FLAGS ?=

.PHONY: all deps configure build test check-sanitize run bench fuzz fuzz-run clean

all: build

deps:
	@scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -G Ninja $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The headless layers and the canvas control with their tests again, under AddressSanitizer and
# UndefinedBehaviorSanitizer.
check-sanitize: deps
	cmake -S . -B build-asan -G Ninja -DTESSAVO_SANITIZE=ON -DTESSAVO_BENCH=OFF -DTESSAVO_CORE_ONLY=ON -DTESSAVO_WITH_CANVAS=ON
	cmake --build build-asan -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir build-asan -L 'core|ui' --output-on-failure -j $(JOBS)

run: build
	@scripts/run.sh $(BUILD)

bench: deps
	cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release -DTESSAVO_TESTS=OFF -DTESSAVO_CORE_ONLY=OFF
	cmake --build build-release --target bench_raster bench_palette bench_gif bench_drawing bench_canvas bench_paint bench_png bench_tga_pcx bench_icons -j $(JOBS)
	build-release/bench/bench_raster
	build-release/bench/bench_palette
	build-release/bench/bench_gif
	build-release/bench/bench_drawing
	build-release/bench/bench_paint
	build-release/bench/bench_png
	build-release/bench/bench_tga_pcx
	build-release/bench/bench_icons
	QT_QPA_PLATFORM=offscreen build-release/bench/bench_canvas

# libFuzzer targets, built with clang and the sanitizers in build-fuzz.
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DTESSAVO_FUZZ=ON -DTESSAVO_TESTS=OFF -DTESSAVO_BENCH=OFF
	cmake --build build-fuzz -j $(JOBS)

FUZZ_SECONDS ?= 60
fuzz-run: fuzz
	@scripts/fuzz-run.sh build-fuzz $(FUZZ_SECONDS)

clean:
	rm -rf build build-asan build-release build-fuzz
