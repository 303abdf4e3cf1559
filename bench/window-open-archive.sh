#!/usr/bin/env bash
# Time from starting the window with a disc as its argument to that disc on
# screen, for a 74-minute disc as a folder and as a stored ZIP, side by side.
# Needs an X server (DISPLAY) and the build folder:
#   bench/window-open-archive.sh build [runs]
set -euo pipefail
BUILD=${1:?build folder}
RUNS=${2:-5}
TIVORA=$(find "$BUILD" -name tivora -type f -perm -u+x | head -n1)
MKDDP=$(find "$BUILD" -name tivora-mkddp -type f -perm -u+x | head -n1)
WORK=$(mktemp -d /tmp/tivora-window-open.XXXXXX)
trap 'rm -rf "$WORK"' EXIT

"$MKDDP" test "$WORK/disc" --minutes 74 --cdtext >/dev/null
(cd "$WORK/disc" && zip -q0r "$WORK/stored.zip" .)
cat "$WORK/disc"/* "$WORK"/*.zip >/dev/null # warm cache for every form

# Milliseconds from the start of the process to "loaded-and-shown".
open_ms() {
    local start shown
    start=$(date +%s%3N)
    shown=$(TIVORA_QUIT_AFTER_LOAD=1 "$TIVORA" "$1" 2>&1 >/dev/null | sed -n 's/^loaded-and-shown //p')
    echo $((shown - start))
}

median() { sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }

for form in disc stored.zip; do
    for _ in $(seq "$RUNS"); do open_ms "$WORK/$form"; done | median >"$WORK/$form.ms"
done
folder=$(cat "$WORK/disc.ms")
stored=$(cat "$WORK/stored.zip.ms")
printf 'folder      %6d ms (median of %d)\n' "$folder" "$RUNS"
printf 'stored ZIP  %6d ms  ratio %.2f\n' "$stored" "$(echo "$stored / $folder" | bc -l)"
