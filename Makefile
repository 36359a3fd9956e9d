# QorMath over CMake. Quick start: `make run` draws the gallery, `make test`
# builds and runs the tests twice (Debug with AddressSanitizer and UBSan, then
# Release with -march=native) and checks both builds compute identical bits.

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
BUILD ?= build
WERROR ?= OFF
FUZZ_SECONDS ?= 60

DEPS := cmake make g++ pkg-config python3 libgtest-dev libbenchmark-dev libtbb-dev libcli11-dev
BENCH_PEERS := libeigen3-dev lib2geom-dev libboost-dev libagg-dev libcairo2-dev
FUZZ_DEPS := clang libclang-rt-14-dev

CONFIGURE = cmake -S . -B $(BUILD)/$(1) -DQORMATH_WERROR=$(WERROR) $(2) >/dev/null
COMPILE = cmake --build $(BUILD)/$(1) -j $(JOBS) $(2)
CHECK = ctest --test-dir $(BUILD)/$(1) --output-on-failure -j $(JOBS)

.PHONY: all deps test test-debug test-native test-threads run bench fuzz install-check clean

all: run

deps:
	@scripts/deps.sh $(DEPS)

test: deps test-debug test-native test-threads
	@scripts/compare-fingerprints.sh $(BUILD)/debug-san/tests/qormath_fingerprint $(BUILD)/release-native/tests/qormath_fingerprint

test-debug:
	$(call CONFIGURE,debug-san,-DCMAKE_BUILD_TYPE=Debug -DQORMATH_SANITIZE=ON -DQORMATH_BUILD_BENCH=OFF)
	$(call COMPILE,debug-san)
	$(call CHECK,debug-san)

test-native:
	$(call CONFIGURE,release-native,-DCMAKE_BUILD_TYPE=Release -DQORMATH_NATIVE=ON -DQORMATH_BUILD_BENCH=ON)
	$(call COMPILE,release-native)
	$(call CHECK,release-native)

# The multi-threaded code (vector field row loops, per-thread random engines)
# once more under ThreadSanitizer.
test-threads:
	$(call CONFIGURE,tsan,-DCMAKE_BUILD_TYPE=RelWithDebInfo -DQORMATH_SANITIZE_THREAD=ON -DQORMATH_BUILD_BENCH=OFF -DQORMATH_BUILD_TOOLS=OFF)
	$(call COMPILE,tsan,--target qormath_concurrency_tests)
	$(call CHECK,tsan) -R '^concurrency\.'

run: deps
	$(call CONFIGURE,release,-DCMAKE_BUILD_TYPE=Release -DQORMATH_BUILD_TESTS=OFF -DQORMATH_BUILD_BENCH=OFF)
	$(call COMPILE,release,--target qormath)
	$(BUILD)/release/tools/qormath gallery --out out/gallery.svg

bench: deps
	@scripts/deps.sh --optional $(BENCH_PEERS)
	$(call CONFIGURE,bench,-DCMAKE_BUILD_TYPE=Release -DQORMATH_BUILD_TESTS=OFF -DQORMATH_BUILD_TOOLS=OFF -DQORMATH_BUILD_BENCH=ON)
	$(call COMPILE,bench,--target bench_report)

fuzz: deps
	@scripts/deps.sh $(FUZZ_DEPS)
	CXX=clang++ $(call CONFIGURE,fuzz,-DCMAKE_BUILD_TYPE=RelWithDebInfo -DQORMATH_BUILD_FUZZ=ON -DQORMATH_BUILD_TESTS=OFF -DQORMATH_BUILD_TOOLS=OFF -DQORMATH_BUILD_BENCH=OFF)
	$(call COMPILE,fuzz)
	scripts/run-fuzzers.sh $(BUILD)/fuzz/fuzz $(FUZZ_SECONDS)

clean:
	rm -rf $(BUILD) out
