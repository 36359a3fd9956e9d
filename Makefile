# QorMath over CMake. Quick start: `make run` draws the gallery, `make test`
# builds and runs the tests twice (Debug with AddressSanitizer and UBSan, then
# Release with -march=native) and checks both builds compute identical bits,
# then that an application can build against the library.

MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)
BUILD ?= build
WERROR ?= OFF
FUZZ_SECONDS ?= 60

DEPS := cmake make g++ pkg-config python3 libgtest-dev libbenchmark-dev libtbb-dev libcli11-dev
BENCH_PEERS := libeigen3-dev lib2geom-dev libboost-dev libagg-dev libcairo2-dev
FUZZ_DEPS := clang libclang-rt-14-dev
BENCHES := bench_matrix bench_flatten bench_roots bench_analysis bench_intersect bench_fit bench_field

CONFIGURE = cmake -S . -B $(BUILD)/$(1) -DQORMATH_WERROR=$(WERROR) $(2) >/dev/null
COMPILE = cmake --build $(BUILD)/$(1) -j $(JOBS) $(2)
CHECK = ctest --test-dir $(BUILD)/$(1) --output-on-failure -j $(JOBS)
NATIVE_FLAGS := -DCMAKE_BUILD_TYPE=Release -DQORMATH_NATIVE=ON -DQORMATH_BUILD_BENCH=ON

.PHONY: all deps test test-debug test-native test-threads consumer-check run bench fuzz docs clean

all: run

deps:
	@scripts/deps.sh $(DEPS)

test: deps test-debug test-native test-threads
	@scripts/compare-fingerprints.sh $(BUILD)/debug-san/tests/qormath_fingerprint $(BUILD)/release-native/tests/qormath_fingerprint
	@$(MAKE) consumer-check

test-debug:
	$(call CONFIGURE,debug-san,-DCMAKE_BUILD_TYPE=Debug -DQORMATH_SANITIZE=ON -DQORMATH_BUILD_BENCH=OFF)
	$(call COMPILE,debug-san)
	$(call CHECK,debug-san)

test-native:
	$(call CONFIGURE,release-native,$(NATIVE_FLAGS))
	$(call COMPILE,release-native)
	$(call CHECK,release-native)

# The multi-threaded code (vector field row loops, per-thread random engines)
# once more under ThreadSanitizer.
test-threads:
	$(call CONFIGURE,tsan,-DCMAKE_BUILD_TYPE=RelWithDebInfo -DQORMATH_SANITIZE_THREAD=ON -DQORMATH_BUILD_BENCH=OFF -DQORMATH_BUILD_TOOLS=OFF)
	$(call COMPILE,tsan,--target qormath_concurrency_tests)
	$(call CHECK,tsan) -R '^concurrency\.'

# An application's view: find_package against a fresh install of the Release
# build, add_subdirectory of this checkout, and pkg-config; tests/consumer.
consumer-check:
	$(call CONFIGURE,release-native,$(NATIVE_FLAGS))
	$(call COMPILE,release-native,--target QorMath)
	JOBS=$(JOBS) WERROR=$(WERROR) scripts/consumer-check.sh $(BUILD)/release-native

run: deps
	$(call CONFIGURE,release,-DCMAKE_BUILD_TYPE=Release -DQORMATH_BUILD_TESTS=OFF -DQORMATH_BUILD_BENCH=OFF)
	$(call COMPILE,release,--target qormath)
	$(BUILD)/release/tools/qormath gallery --out out/gallery.svg

# Prints ours/peer per case and writes the same tables, with the machine and
# the peers' versions, to BENCHMARKS.md; the raw JSON stays in $(BUILD)/bench/results.
bench: deps
	@scripts/deps.sh --optional $(BENCH_PEERS)
	$(call CONFIGURE,bench,-DCMAKE_BUILD_TYPE=Release -DQORMATH_BUILD_TESTS=OFF -DQORMATH_BUILD_TOOLS=OFF -DQORMATH_BUILD_BENCH=ON)
	$(call COMPILE,bench,--target $(BENCHES))
	python3 bench/report.py $(BENCHES:%=$(BUILD)/bench/bench/%) --min-time 0.2 \
		--json-dir $(BUILD)/bench/results --markdown BENCHMARKS.md

fuzz: deps
	@scripts/deps.sh $(FUZZ_DEPS)
	CXX=clang++ $(call CONFIGURE,fuzz,-DCMAKE_BUILD_TYPE=RelWithDebInfo -DQORMATH_BUILD_FUZZ=ON -DQORMATH_BUILD_TESTS=OFF -DQORMATH_BUILD_TOOLS=OFF -DQORMATH_BUILD_BENCH=OFF)
	$(call COMPILE,fuzz)
	scripts/run-fuzzers.sh $(BUILD)/fuzz/fuzz $(FUZZ_SECONDS)

# The HTML reference of the public headers (README.md as its main page), with
# doxygen's warnings, one per undocumented or mis-documented declaration.
docs:
	@scripts/deps.sh doxygen
	@rm -rf $(BUILD)/docs/html && mkdir -p $(BUILD)/docs
	@{ cat docs/Doxyfile; echo 'OUTPUT_DIRECTORY = $(BUILD)/docs'; echo 'WARN_LOGFILE = $(BUILD)/docs/warnings.log'; } | doxygen -
	@cat $(BUILD)/docs/warnings.log
	@echo "doxygen warnings: $$(grep -c 'warning:' $(BUILD)/docs/warnings.log)"
	@echo "API reference: $(abspath $(BUILD))/docs/html/index.html"

clean:
	rm -rf $(BUILD) out
