# Front door: `make demo` and `make test` install what is missing, configure, build, run.
BUILD ?= build
ASAN_BUILD ?= build-asan
JOBS ?= $(shell nproc)
DEB_PACKAGES := cmake make g++ gcc pkg-config libgtest-dev libgmock-dev libbenchmark-dev \
                util-linux iproute2 procps psmisc openssl busybox
SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: all deps configure build test demo bench sanitize tidy install clean

all: build

deps:
	@missing=""; for p in $(DEB_PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  $(SUDO) apt-get update -q && DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -q $$missing; \
	fi

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

tidy: configure
	clang-tidy -p $(BUILD) --quiet --extra-arg=-Wno-unknown-warning-option $$(git ls-files '*.cc' | grep -v -E '^(tests|bench)/|_test\.cc$$')

install: build
	cmake --install $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
