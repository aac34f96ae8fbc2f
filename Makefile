# The commands of the README's quick start.
#   make run      installs what is missing, builds the game (release preset), starts it
#   make test     installs what is missing, then what CI guards: the format check, the
#                 layering check, and the tests of the sanitizer, release and thread
#                 sanitizer presets
#   make package  builds the release preset and a Debian package of the game
.PHONY: run test setup bench format package

ARGS ?=

setup:
	@scripts/setup

run: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target twinlanes
	@scripts/run-game $(ARGS)

test: setup
	@scripts/check-format
	@scripts/check-layering
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan
	@cmake --preset release >/dev/null
	@cmake --build --preset release
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan
	@scripts/run-tests asan release tsan

package: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target twinlanes
	@cd build/release && cpack -G DEB
	@ls build/release/twinlanes_*.deb

bench: setup
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench
	@scripts/run-benchmarks

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i
