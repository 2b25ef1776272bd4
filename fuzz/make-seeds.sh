#!/usr/bin/env bash
# Writes the seed corpus of the definition loader's fuzz target with the project's own compiler:
# the bundled default and the small definitions of seed-sources/, each at several versions. Run it
# again when the definition language or the file format changes.
#
#   fuzz/make-seeds.sh [VANTRELIA_TOOL]     default: build/release/tool/vantrelia
set -euo pipefail
cd "$(dirname "$0")/.."

tool=${1:-build/release/tool/vantrelia}
out=fuzz/corpus/definition
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
rm -f "$out"/*.pcf
mkdir -p "$out"

# SOURCE compiled at VERSION into NAME-VERSION.pcf. What that version can't carry is cut out of a
# copy of the source: each compile error names a line, and the node at that line (the line and
# the lines indented under it) goes, until the rest compiles.
compile_at() {  # SOURCE NAME VERSION
  local source="$work/$2.yaml" error line
  cp "$1" "$source"
  for _ in $(seq 500); do
    if error=$("$tool" compile "$source" -o "$out/$2-$3.pcf" --pcf-version "$3" 2>&1); then return 0; fi
    line=$(sed -n 's/.*: line \([0-9]*\):.*/\1/p' <<<"$error" | head -1)
    if [ -z "$line" ]; then echo "$error" >&2; return 1; fi
    awk -v n="$line" '
      NR == n { match($0, /^ */); depth = RLENGTH; skip = 1; next }
      skip { match($0, /^ */); if (RLENGTH > depth || $0 ~ /^ *$/) next; skip = 0 }
      { print }' "$source" >"$source.next"
    mv "$source.next" "$source"
  done
  echo "$1: no version $3 form found" >&2
  return 1
}

for version in 883 871 851 801 515; do compile_at bundled/default.yaml default "$version"; done
for source in fuzz/seed-sources/*.yaml; do
  for version in 512 769 801 853 870 883; do compile_at "$source" "$(basename "$source" .yaml)" "$version"; done
done
ls -l "$out"
