# The front door. `make run` and `make test` need nothing but a Debian 12 machine.
PRESET ?= release
BUILD := build/$(PRESET)
PREFIX ?= /usr/local
PICTURES ?= pictures
FILE ?=
# ON makes every warning an error.
WERROR ?= OFF

.PHONY: run test bench fuzz asan format install clean build

build:
	@cmake --preset $(PRESET) -DCMAKE_COMPILE_WARNING_AS_ERROR=$(WERROR) $(CMAKE_ARGS) >/dev/null
	@cmake --build --preset $(PRESET)

# Renders the samples, and larger ones that it makes, or FILE=...
run:
	@scripts/install_packages.sh run
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_TESTS=OFF"
	@scripts/run_samples.sh $(BUILD)/bin/quorvex $(PICTURES) $(FILE)

test:
	@scripts/install_packages.sh test
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_TESTS=ON"
	@ctest --preset $(PRESET)

# The same tests under the address and undefined-behaviour sanitizers.
asan:
	@$(MAKE) --no-print-directory test PRESET=asan

bench:
	@scripts/install_packages.sh bench
	@$(MAKE) --no-print-directory build CMAKE_ARGS="-DQUORVEX_BENCH=ON"
	@scripts/run_benches.sh $(BUILD) build/bench

# Each fuzz target for FUZZ_SECONDS, beginning with the samples.
FUZZ_SECONDS ?= 60
fuzz:
	@scripts/install_packages.sh fuzz
	@$(MAKE) --no-print-directory build PRESET=fuzz
	@scripts/run_fuzzers.sh build/fuzz $(FUZZ_SECONDS)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

install: build
	@cmake --install $(BUILD) --prefix $(PREFIX)

clean:
	@rm -rf build $(PICTURES)
