#!/usr/bin/env bash
# Builds the Debian package from a build tree, unpacks it into a scratch root
# as dpkg would install it, checks what it declares and holds, and plays a
# scripted run with the unpacked binary. The unpacked resources are edited
# first, so the run shows that the binary reads them from its own install
# location and not from the source tree.
#   extract_and_play.sh BUILD_DIR
set -euo pipefail
build=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/twinlanes-package.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
fail() {
  echo "package: $*" >&2
  exit 1
}

if ! (cd "$build" && cpack -G DEB -B "$scratch/out") >"$scratch/cpack.log" 2>&1; then
  cat "$scratch/cpack.log" >&2
  fail "cpack failed"
fi
debs=("$scratch"/out/twinlanes_*.deb)
[ -f "${debs[0]}" ] || fail "no .deb in $scratch/out"
deb=${debs[0]}

depends=$(dpkg-deb -f "$deb" Depends)
for lib in libsdl2-2.0-0 libsdl2-image-2.0-0 libcairo2 libpango-1.0-0 libcurl4 libbox2d2 \
  fonts-liberation2; do
  [[ $depends == *"$lib"* ]] || fail "Depends lacks $lib: $depends"
done

root=$scratch/root
dpkg-deb -x "$deb" "$root"
for file in usr/bin/twinlanes usr/share/applications/twinlanes.desktop \
  usr/share/icons/hicolor/256x256/apps/twinlanes.png \
  usr/share/icons/hicolor/scalable/apps/twinlanes.svg usr/share/twinlanes/layout/main.json \
  usr/share/twinlanes/publisher.json; do
  [ -f "$root/$file" ] || fail "the package lacks /$file"
done
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$root/usr/share/applications/twinlanes.desktop"
fi

unit="ca-app-pub-1111111111111111/2222222222"
sed -i "s#\"bannerAdUnitId\": \"[^\"]*\"#\"bannerAdUnitId\": \"$unit\"#" \
  "$root/usr/share/twinlanes/publisher.json"
out=$(printf 'seed 7\nstart\ntapbutton play\nwait 2\ndump\n' |
  "$root/usr/bin/twinlanes" --headless --prefs-dir "$scratch/prefs" --script -) ||
  fail "the unpacked binary failed the script"
[[ $out == *'"startFlag":true'* ]] || fail "the run did not start: $out"
grep -q "\"banner-id\": *\"$unit\"" "$scratch/prefs/prefs.json" ||
  fail "the run did not use the unpacked resources: $(cat "$scratch/prefs/prefs.json")"
echo "package: $(basename "$deb") installs and plays"
