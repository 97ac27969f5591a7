# Front door: `make demo` and `make test` install what is missing, configure, build, run.
BUILD ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
COVERAGE_BUILD ?= build-coverage
ARM_BUILD ?= build-arm
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?=
JOBS ?= $(shell nproc)
DEB_PACKAGES := cmake make g++ gcc pkg-config libgtest-dev libgmock-dev libbenchmark-dev \
                util-linux iproute2 procps psmisc openssl busybox
# Only the targets that use them install these.
ANALYSIS_PACKAGES := clang-tidy cppcheck
COVERAGE_PACKAGES := gcovr
FUZZ_PACKAGES := clang libclang-rt-dev
# The 32-bit ARM cross compiler with its sysroot, GoogleTest's sources and the emulator.
ARM_PACKAGES := g++-arm-linux-gnueabihf googletest qemu-user
# The library's own sources (tests and benchmarks excluded), for the analysers.
LIB_SOURCES = $$(git ls-files '*.cc' | grep -v -E '^(tests|bench)/|_test\.cc$$')
SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: all deps configure build test demo bench sanitize fuzz tidy cppcheck coverage package install clean \
        arm arm-test arm-demo arm-package

all: build

# $(call install_missing,PACKAGES): apt-get install those not yet installed.
define install_missing
	@missing=""; for p in $(1); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  $(SUDO) apt-get update -q && DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -q $$missing; \
	fi
endef

deps:
	$(call install_missing,$(DEB_PACKAGES))

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

demo: build
	tools/demo.sh $(BUILD)

bench: build
	@for b in $(BUILD)/bench/*_bench; do echo "== $$b"; tests/launch.sh "$$b"; done

sanitize: deps
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DSYSCOMMON_SANITIZE=ON -DSYSCOMMON_BENCH=OFF
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

# The library, the tool, the stand-ins and the tests for 32-bit ARM; the tests run under
# qemu-arm through the same isolating launcher.
arm: deps
	$(call install_missing,$(ARM_PACKAGES))
	cmake -S . -B $(ARM_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/arm-linux-gnueabihf.cmake \
	  -DSYSCOMMON_GTEST_SOURCE=/usr/src/googletest -DSYSCOMMON_BENCH=OFF
	cmake --build $(ARM_BUILD) -j $(JOBS)

arm-test: arm
	ctest --test-dir $(ARM_BUILD) --output-on-failure -j $(JOBS)

arm-demo: arm
	tools/demo.sh $(ARM_BUILD)

arm-package: arm
	cd $(ARM_BUILD) && cpack -G DEB
	@ls -1 $(ARM_BUILD)/*.deb

# Line and branch coverage of the library by its tests, per folder.
coverage: deps
	$(call install_missing,$(COVERAGE_PACKAGES))
	cmake -S . -B $(COVERAGE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DSYSCOMMON_COVERAGE=ON -DSYSCOMMON_BENCH=OFF
	cmake --build $(COVERAGE_BUILD) -j $(JOBS)
	find $(COVERAGE_BUILD) -name '*.gcda' -delete
	ctest --test-dir $(COVERAGE_BUILD) -j $(JOBS) >$(COVERAGE_BUILD)/ctest.log || \
	  { tail -n 30 $(COVERAGE_BUILD)/ctest.log; exit 1; }
	gcovr -r . --object-directory $(COVERAGE_BUILD) -j $(JOBS) --exclude-unreachable-branches \
	  --exclude-throw-branches --json $(COVERAGE_BUILD)/coverage.json $(COVERAGE_BUILD)
	tools/coverage.py $(COVERAGE_BUILD)/coverage.json

# Every libFuzzer target for FUZZ_SECONDS each: executions and findings per target.
fuzz: deps
	$(call install_missing,$(FUZZ_PACKAGES))
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSYSCOMMON_FUZZ=ON \
	  -DSYSCOMMON_TESTS=OFF -DSYSCOMMON_BENCH=OFF
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target syscommon_fuzzers
	fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

tidy: configure
	$(call install_missing,$(ANALYSIS_PACKAGES))
	clang-tidy -p $(BUILD) --quiet --warnings-as-errors='*' --extra-arg=-Wno-unknown-warning-option $(LIB_SOURCES)

# Checked-in configuration: the options here and .cppcheck-suppressions.
cppcheck:
	$(call install_missing,$(ANALYSIS_PACKAGES))
	cppcheck --quiet --std=c++20 --language=c++ -I include -I . -DSYSCOMMON_BUILDING \
	  --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
	  --suppressions-list=.cppcheck-suppressions -j $(JOBS) $(LIB_SOURCES)

package: build
	cd $(BUILD) && cpack -G DEB
	@ls -1 $(BUILD)/*.deb

install: build
	cmake --install $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD) $(COVERAGE_BUILD) $(ARM_BUILD)
