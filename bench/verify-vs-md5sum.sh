#!/usr/bin/env bash
# Times `tivora-ddp verify` of a 74-minute disc (783 MB) beside its
# CHECKSUM.MD5 against `md5sum -c` of the same file, run for run, side by
# side: first with the files in the page cache, then from a cold cache where
# the machine lets us drop it (root, /proc/sys/vm/drop_caches writable).
# The ratio says what verifying costs beyond md5sum's own reading and
# hashing (the disc check is in verify's time too).
#   bench/verify-vs-md5sum.sh build/tools
# RUNS (default 5) timed runs each, the median printed. WORK (default a new
# folder under /tmp) must have room for one image, about 800 MB.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
start_tools_bench verify 5 "$@"

can_drop=0
if [ -w /proc/sys/vm/drop_caches ] && sync && echo 3 >/proc/sys/vm/drop_caches 2>/dev/null; then
    can_drop=1
fi

# Each run of a cold set drops the page cache first.
COLD=0
before_run() {
    if [ "$COLD" = 1 ]; then
        sync
        echo 3 >/proc/sys/vm/drop_caches
    fi
}

disc=$WORK/disc
"$MKDDP" test "$disc" --minutes "$MINUTES" --checksums md5 >/dev/null || { echo "mkddp failed" >&2; exit 1; }
bytes=$(cat "$disc"/* | wc -c)
echo "== $MINUTES-minute disc: $bytes bytes in $(ls "$disc" | wc -l) files, median of $RUNS runs"

run_set() { # label cold
    local label=$1 m=() v=() i
    COLD=$2
    cat "$disc"/* >/dev/null # warm (or, before a cold set, harmless)
    # Alternating, so that both see the same machine.
    for ((i = 0; i < RUNS; ++i)) {
        m+=("$(timed sh -c "cd '$disc' && md5sum -c CHECKSUM.MD5")")
        v+=("$(timed "$DDP" verify "$disc")")
    }
    if printf '%s\n' "${m[@]}" "${v[@]}" | grep -q failed; then
        echo "  $label: a run failed"
        return
    fi
    local mm vm
    mm=$(printf '%s\n' "${m[@]}" | median)
    vm=$(printf '%s\n' "${v[@]}" | median)
    printf '  %-5s md5sum -c %7.3f s   tivora-ddp verify %7.3f s   verify/md5sum %.2f\n' \
        "$label" "$mm" "$vm" "$(echo "$vm / $mm" | bc -l)"
    printf '        md5sum runs: %s\n        verify runs: %s\n' "$(printf '%.3f ' "${m[@]}")" \
        "$(printf '%.3f ' "${v[@]}")"
}

run_set warm 0
if [ "$can_drop" = 1 ]; then
    run_set cold 1
else
    echo "  cold: the page cache cannot be dropped on this machine"
fi
