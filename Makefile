# The front door. `make run` and `make test` need nothing but a Debian 12 machine.
PRESET ?= release
BUILD := build/$(PRESET)
PREFIX ?= /usr/local
PICTURES ?= pictures
FILE ?=
# ON makes every warning an error.
WERROR ?= OFF
# Which of how many parts of the real files, where a target works through them.
SHARE ?= 1/1

.PHONY: run test roundtrip conformance conformance-cases bench fuzz asan tsan soak corpus-asan memcheck matrix \
    python packages check optional tidy abi docs format install clean build

build:
	@cmake --preset $(PRESET) -DCMAKE_COMPILE_WARNING_AS_ERROR=$(WERROR) $(CMAKE_ARGS) >/dev/null
	@cmake --build --preset $(PRESET) $(BUILD_ARGS)

# Renders the samples, and larger ones that it makes, or FILE=...
run:
	@scripts/install_packages.sh run
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_TESTS=OFF"
	@scripts/run_samples.sh $(BUILD)/bin/quorvex $(PICTURES) $(FILE)

test:
	@scripts/install_packages.sh test
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_TESTS=ON"
	@ctest --preset $(PRESET)

# The Python package: its types, and its tests against this build.
python:
	@scripts/install_packages.sh python
	@$(MAKE) --no-print-directory build BUILD_ARGS="--target QuorvexU"
	@scripts/run_python_tests.sh $(BUILD)

# Debian packages in build/packages, and whether hosts run against what they hold.
packages:
	@scripts/install_packages.sh packages
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_TOOLS=ON" \
	    BUILD_ARGS="--target QuorvexU quorvex quorvex_manual"
	@rm -rf build/packages
	@cpack --config $(BUILD)/CPackConfig.cmake -B build/packages >$(BUILD)/cpack.log 2>&1 || \
	    { cat $(BUILD)/cpack.log; exit 1; }
	@rm -rf build/packages/_CPack_Packages
	@scripts/check_packages.sh build/packages

# Converts every real file to every target and holds the results against independent tools; SHARE=1/8
# takes an eighth of the files.
roundtrip:
	@scripts/install_packages.sh roundtrip
	@$(MAKE) --no-print-directory build BUILD_ARGS="--target quorvex"
	@scripts/run_roundtrip.sh $(BUILD)/bin/quorvex $(SHARE)

# Holds the command against the display suite; ADAPTER=dcmtk or pydicom takes another tool.
ADAPTER ?= quorvex
conformance:
	@scripts/install_packages.sh conformance
ifeq ($(ADAPTER),quorvex)
	@$(MAKE) --no-print-directory build BUILD_ARGS="--target quorvex"
	@conformance/run --adapter quorvex --program $(BUILD)/bin/quorvex --quiet \
	    --page $(BUILD)/display-suite.html
else
	@mkdir -p build
	@conformance/run --adapter $(ADAPTER) --quiet --page build/display-suite-$(ADAPTER).html
endif

# Makes the cases of the display suite anew, with what DCMTK agrees to.
conformance-cases:
	@scripts/install_packages.sh conformance
	@/usr/bin/python3 -W ignore conformance/make_cases.py
	@conformance/confirm
	@/usr/bin/python3 -W ignore conformance/make_cases.py

# The same tests under the address and undefined-behaviour sanitizers.
asan:
	@$(MAKE) --no-print-directory test PRESET=asan

# Eight threads on every real file, up to LARGEST KiB, under the thread sanitizer.
LARGEST ?= 100000
tsan:
	@scripts/install_packages.sh test
	@$(MAKE) --no-print-directory build PRESET=tsan BUILD_ARGS="--target quorvex_threads"
	@scripts/run_stress.sh threads build/tsan $(LARGEST)

# Opens, renders, converts and drops so many objects, and ends with the memory it began with.
SOAK_OBJECTS ?= 20000
soak:
	@scripts/install_packages.sh test
	@$(MAKE) --no-print-directory build BUILD_ARGS="--target quorvex_soak"
	@scripts/run_stress.sh soak $(BUILD) $(SOAK_OBJECTS)

# Every real file through every verb of the command under sanitizers; SHARE=1/8 takes an eighth of them.
corpus-asan:
	@scripts/install_packages.sh test
	@$(MAKE) --no-print-directory build PRESET=asan BUILD_ARGS="--target quorvex"
	@scripts/run_stress.sh verbs build/asan $(SHARE)

# Generated JPEG 2000 streams of every kind, ours against two libraries; STREAMS begin at FIRST.
FIRST ?= 0
STREAMS ?= 3000
matrix:
	@scripts/install_packages.sh matrix
	@$(MAKE) --no-print-directory build \
		BUILD_ARGS="--target quorvex_jpeg2000_ht_matrix quorvex_jpeg2000_mq_matrix"
	@$(BUILD)/bin/quorvex_jpeg2000_ht_matrix $(FIRST) $(STREAMS)
	@$(BUILD)/bin/quorvex_jpeg2000_mq_matrix $(FIRST) $(STREAMS)

# No output depends on uninitialised memory: two fillings of the heap, and valgrind on a small set.
memcheck:
	@scripts/install_packages.sh memcheck
	@$(MAKE) --no-print-directory build BUILD_ARGS="--target quorvex"
	@scripts/run_stress.sh memcheck $(BUILD) $(SHARE)

bench:
	@scripts/install_packages.sh bench
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_BENCH=ON"
	@scripts/run_benches.sh $(BUILD) build/bench

# Each fuzz target for FUZZ_SECONDS, beginning with real files and saved finds.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install_packages.sh fuzz
	@$(MAKE) --no-print-directory build PRESET=fuzz
	@scripts/run_fuzzers.sh build/fuzz $(FUZZ_SECONDS)

# Format, line width, and which room may include which.
check:
	@scripts/install_packages.sh check
	@scripts/check_source.sh

# Whether the product compiles without the libraries that it can do without.
optional:
	@scripts/check_optional.sh

# clang-tidy over the whole product; TIDY= takes only what changed since the last release.
TIDY ?= all
tidy:
	@scripts/install_packages.sh check
	@cmake --preset $(PRESET) >/dev/null
	@scripts/run_tidy.sh $(BUILD) $(TIDY)

# Whether hosts of the last release still run with this library.
abi:
	@scripts/install_packages.sh check
	@$(MAKE) --no-print-directory build BUILD_ARGS="--target QuorvexU"
	@scripts/check_abi.sh $(BUILD)

# The public headers and docs/, as pages in build/docs.
docs:
	@scripts/install_packages.sh docs
	@mkdir -p build
	@doxygen docs/Doxyfile

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

install: build
	@cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	@rm -rf build $(PICTURES)
