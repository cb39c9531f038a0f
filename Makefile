# Sonmetra: the two commands that do everything on a fresh Debian machine.
#   make run    installs what is missing, builds, opens the demo recording
#   make test   installs what is missing, builds and runs every test
# Also: make build, make bench, make fuzz, make tsan, make deps, make clean.

SHELL := /bin/bash
JOBS ?= $(shell nproc)
BUILD ?= build
SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)
FUZZ_SECONDS ?= 60
# Set to a count (e.g. 10000000) to run each fuzzer that many times instead.
FUZZ_RUNS ?=

# Debian packages the build, the tests and the workstation need.
PACKAGES := cmake ninja-build g++ pkg-config \
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev libgl-dev \
  portaudio19-dev libusb-1.0-0-dev libsndfile1-dev zlib1g-dev \
  libgtest-dev libgmock-dev libbenchmark-dev libfftw3-dev \
  xvfb xauth pulseaudio pulseaudio-utils libasound2-plugins alsa-utils \
  espeak-ng sox python3 praat parallel umockdev libumockdev-dev poppler-utils
BENCH_PACKAGES := praat
FUZZ_PACKAGES := clang libclang-rt-14-dev

.PHONY: all deps build run test test-asan tsan bench fuzz clean install

all: build

# Installs only what is missing, so a prepared machine starts at once.
define install_missing
	@missing=$$(for p in $(1); do dpkg-query -W -f='$${Status}\n' $$p 2>/dev/null | grep -q 'install ok installed' || echo $$p; done); \
	if [ -n "$$missing" ]; then \
	  echo "Installing:" $$missing; \
	  $(SUDO) apt-get update -qq && DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq $$missing >/dev/null; \
	fi
endef

deps:
	$(call install_missing,$(PACKAGES))

$(BUILD)/build.ninja: | deps
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

run: build
	@if [ -z "$$DISPLAY" ] && [ -z "$$WAYLAND_DISPLAY" ] && [ "$$QT_QPA_PLATFORM" != offscreen ]; then \
	  echo "No display: run 'xvfb-run -a make run' for a virtual one, or use '$(BUILD)/cli/sonmetra-cli info examples/demo.kvd' without a window."; \
	  exit 1; \
	fi
	$(BUILD)/app/sonmetra examples/demo.kvd

# Every test: the whole tree (GUI tests on the offscreen platform), the
# Qt-free layers again under AddressSanitizer + UndefinedBehaviorSanitizer,
# and the sound engines, the threaded analyses and document reading under
# ThreadSanitizer.
test: build test-asan tsan
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DSONMETRA_GUI=OFF -DSONMETRA_SANITIZE=ON -DSONMETRA_BENCH=OFF >/dev/null
	cmake --build build-asan -j $(JOBS)
	cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j $(JOBS)

tsan: deps
	cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSONMETRA_GUI=OFF -DSONMETRA_TSAN=ON -DSONMETRA_BENCH=OFF >/dev/null
	cmake --build build-tsan -j $(JOBS)
	cd build-tsan && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -R '^io_|^analysis_parallel|^document_tests$$' --no-tests=ignore

bench: build
	$(call install_missing,$(BENCH_PACKAGES))
	@[ -n "$$DISPLAY" ] || export QT_QPA_PLATFORM=offscreen; \
	for b in $(BUILD)/bench/bench_*; do [ -x "$$b" ] || continue; echo "== $$b"; "$$b" || exit 1; done
	@if [ -x bench/compare-praat.sh ]; then bench/compare-praat.sh $(BUILD); fi

# One input may allocate at most 2 GB; the whole process may grow to 8 GB,
# since libvorbis under libsndfile leaks a little on every damaged Ogg header
# (suppressed in the report) and ten million runs add that up.
fuzz: deps
	$(call install_missing,$(FUZZ_PACKAGES))
	CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DSONMETRA_GUI=OFF -DSONMETRA_FUZZ=ON -DSONMETRA_TESTS=OFF -DSONMETRA_BENCH=OFF >/dev/null
	cmake --build build-fuzz -j $(JOBS)
	@mkdir -p fuzz-out
	@for f in build-fuzz/tests/fuzz/fuzz_*; do \
	  r=$${f##*/fuzz_}; mkdir -p fuzz-out/$$r; \
	  echo "== fuzzing $$r for $(if $(FUZZ_RUNS),$(FUZZ_RUNS) runs,$(FUZZ_SECONDS) s)"; \
	  $$f $(if $(FUZZ_RUNS),-runs=$(FUZZ_RUNS),-max_total_time=$(FUZZ_SECONDS)) -max_len=65536 -rss_limit_mb=8192 -malloc_limit_mb=2048 -artifact_prefix=fuzz-out/$$r/ \
	    fuzz-out/$$r $$( [ -d tests/fuzz/corpus/$$r ] && echo tests/fuzz/corpus/$$r ) > fuzz-out/$$r.log 2>&1; \
	  status=$$?; tail -3 fuzz-out/$$r.log; [ $$status = 0 ] || exit 1; \
	done

clean:
	rm -rf build build-asan build-tsan build-fuzz fuzz-out

# Installs the programs, the manual, the desktop entry, the *.kvd MIME type
# and the external unit's udev rule (udev is told to read it again).
install: build
	$(SUDO) cmake --install $(BUILD)
	-$(SUDO) update-mime-database /usr/local/share/mime >/dev/null 2>&1
	-$(SUDO) update-desktop-database /usr/local/share/applications >/dev/null 2>&1
	-$(SUDO) udevadm control --reload-rules >/dev/null 2>&1 && $(SUDO) udevadm trigger --subsystem-match=usb >/dev/null 2>&1
