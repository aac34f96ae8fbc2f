# The commands of the README's quick start.
#   make run      installs what is missing, builds the game (release preset), starts it
#   make test     installs what is missing, then what CI guards: the format check, the
#                 layering check, the browser build, and the tests of the sanitizer
#                 (the browser's tests included), release and thread sanitizer presets
#   make package  builds the release preset and a Debian package of the game
.PHONY: run test setup bench format package

ARGS ?=

setup:
	@scripts/setup

run: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target twinlanes
	@scripts/run-game $(ARGS)

test: setup web
	@scripts/check-format
	@scripts/check-layering
	@cmake --preset asan -DTWINLANES_WEB_TESTS=ON >/dev/null
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

# The browser build (README: "Play in the browser").
#   make web       installs what is missing, builds the site into build/web
#   make serve     serves it on http://127.0.0.1:8080/
#   make test-web  the browser tests alone (label web)
#   make bench-web the page's frame times and download size
.PHONY: setup-web web serve test-web bench-web

setup-web: setup
	@scripts/setup-web

web: setup-web
	@cmake --preset web >/dev/null
	@cmake --build --preset web
	@echo "The site is in build/web. Serve it with: make serve, then open http://127.0.0.1:8080/"

serve: web
	@echo "Twin Lanes on http://127.0.0.1:8080/ (Ctrl+C stops the server)"
	@python3 -m http.server 8080 --bind 127.0.0.1 --directory build/web

test-web: web
	@cmake --preset asan -DTWINLANES_WEB_TESTS=ON >/dev/null
	@cmake --build --preset asan --target twinlanes
	@ctest --preset asan -L web

bench-web: web
	@node bench/web/page-bench.mjs
