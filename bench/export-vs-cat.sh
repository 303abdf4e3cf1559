#!/usr/bin/env bash
# Times `tivora-ddp export` of a whole 74-minute disc against `cat` of its
# image files into one file, with a warm page cache: the ratio says what the
# export costs beyond moving the bytes. Give it one or more folders holding a
# tivora-ddp to compare builds run for run; the discs are made with the last
# folder's tivora-mkddp (the newest build, which writes what older ones read):
#   bench/export-vs-cat.sh build/tools
#   bench/export-vs-cat.sh /tmp/before-build/tools build/tools
# RUNS (default 5) timed runs each, the median printed; STREAMS (default 20)
# files for the split image (0 leaves it out; a build that cannot read split
# images prints "failed" there). WORK (default a new folder under /tmp) must
# have room for two images and two exports, about 3.2 GB.
set -uo pipefail
[ $# -ge 1 ] || { echo "usage: $0 TOOLS_DIR [TOOLS_DIR...]" >&2; exit 2; }
RUNS=${RUNS:-5}
STREAMS=${STREAMS:-20}
MINUTES=${MINUTES:-74}
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
MKDDP=$(find_bin "${!#}" tivora-mkddp)
[ -n "$MKDDP" ] || { echo "no tivora-mkddp in ${!#}" >&2; exit 2; }
make_work export

# Before each timed run the output is removed and the dirty pages written
# out, so every run starts alike; the time includes nothing else.
before_run() {
    rm -rf "$WORK/out" "$WORK/out.raw"
    sync
}

cat_image() { # disc folder
    # The image files in map order: IMAGE.DAT, or IMAGE1.DAT, IMAGE2.DAT, ...
    local files
    files=$(cd "$1" && ls IMAGE*.DAT | sort -V)
    (cd "$1" && cat $files >"$WORK/out.raw")
}

bench_disc() { # label, mkddp options...
    local label=$1; shift
    local disc=$WORK/disc
    rm -rf "$disc"
    "$MKDDP" test "$disc" --minutes "$MINUTES" "$@" >/dev/null || { echo "mkddp failed" >&2; return; }
    local bytes
    bytes=$(cat "$disc"/IMAGE*.DAT | wc -c)
    echo "== $label: $(ls "$disc"/IMAGE*.DAT | wc -l) image file(s), $bytes bytes, median of $RUNS runs"
    cat "$disc"/IMAGE*.DAT >/dev/null # warm the cache
    local c=() e=() i tools
    for ((i = 0; i < RUNS; ++i)) {
        c+=("$(timed cat_image "$disc")")
    }
    local cat_median
    cat_median=$(printf '%s\n' "${c[@]}" | median)
    printf '  %-40s %8.3f s\n' "cat" "$cat_median"
    for tools in "${TOOL_DIRS[@]}"; do
        local ddp
        ddp=$(find_bin "$tools" tivora-ddp)
        e=()
        for ((i = 0; i < RUNS; ++i)) {
            e+=("$(timed "$ddp" export "$disc" "$WORK/out")")
        }
        if printf '%s\n' "${e[@]}" | grep -q failed; then
            printf '  %-40s   failed\n' "export ($tools)"
            continue
        fi
        local m
        m=$(printf '%s\n' "${e[@]}" | median)
        printf '  %-40s %8.3f s   export/cat %.2f   runs: %s\n' "export ($tools)" "$m" \
            "$(echo "$m / $cat_median" | bc -l)" "$(printf '%.3f ' "${e[@]}")"
    done
    rm -rf "$disc" "$WORK/out" "$WORK/out.raw"
}

TOOL_DIRS=("$@")
bench_disc "one image file"
[ "$STREAMS" -gt 0 ] && bench_disc "split image" --streams "$STREAMS"
exit 0
