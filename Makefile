# The two commands of the README's quick start.
#   make run   installs what is missing, builds the release preset, starts the game
#   make test  installs what is missing, builds the sanitizer preset, runs every test
.PHONY: run test setup bench format

ARGS ?=

setup:
	@scripts/setup

run: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release
	@scripts/run-game $(ARGS)

test: setup
	@scripts/check-layering
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan
	@scripts/run-tests asan

bench: setup
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench
	@scripts/run-benchmarks

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i
