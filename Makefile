# Kontavo: `make test` is the one test command; `make run` builds and starts the program.
BUILD      ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
BENCH_BUILD?= build-bench
JOBS       ?= $(shell nproc)
FUZZ_SECONDS ?= 20
CMAKE      ?= cmake
CTEST_ARGS ?= --output-on-failure -j $(JOBS) --timeout 900

.PHONY: all deps build build-asan test test-plain test-asan run package bench fuzz clean

all: build

deps:
	@scripts/deps

build: deps
	$(CMAKE) -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	$(CMAKE) --build $(BUILD) -j $(JOBS)

build-asan: deps
	$(CMAKE) -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DKONTAVO_SANITIZE=ON
	$(CMAKE) --build $(ASAN_BUILD) -j $(JOBS)

test-plain: build
	cd $(BUILD) && ctest $(CTEST_ARGS)

test-asan: build-asan
	cd $(ASAN_BUILD) && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp:print_suppressions=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest $(CTEST_ARGS)

test: test-plain test-asan

# Starts the service in the background when it is not running (web port 1098 unless set) and
# opens the desk in the browser; without a display it prints the one-time logon link.
run: build
	./$(BUILD)/kontavo desk

# The Debian package of the program (binary in /usr/bin, web files in /usr/share/kontavo).
package: build
	cd $(BUILD) && cpack -G DEB

bench: deps
	$(CMAKE) -S . -B $(BENCH_BUILD) -DCMAKE_BUILD_TYPE=Release -DKONTAVO_BENCH=ON -DKONTAVO_TESTS=OFF
	$(CMAKE) --build $(BENCH_BUILD) -j $(JOBS)
	@for b in $(BENCH_BUILD)/bench/bench_*; do echo "== $$b"; $$b || exit 1; done

fuzz: deps
	CC=clang CXX=clang++ $(CMAKE) -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKONTAVO_FUZZ=ON -DKONTAVO_TESTS=OFF
	$(CMAKE) --build $(FUZZ_BUILD) -j $(JOBS)
	@for f in $(FUZZ_BUILD)/fuzz/fuzz_*; do \
	  echo "== $$f"; mkdir -p $(FUZZ_BUILD)/corpus/$$(basename $$f); \
	  $$f -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=2048 $(FUZZ_BUILD)/corpus/$$(basename $$f) || exit 1; \
	done

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD) $(BENCH_BUILD)
