#!/usr/bin/env bash
# Runs tivora-ddp on hostile and broken DDP folders and prints, for each, the
# wall time, the peak memory and the exit status. Give it the folder that
# holds tivora-ddp and tivora-mkddp to compare two builds side by side:
#   bench/hostile-inputs.sh build/tools       (this tree's build)
#   bench/hostile-inputs.sh /tmp/old          (binaries kept from before)
# Each run is cut off after LIMIT seconds (default 20): "timeout" is a hang.
set -uo pipefail
BIN=${1:?folder holding tivora-ddp and tivora-mkddp}
LIMIT=${LIMIT:-20}
find_bin() { find "$BIN" -name "$1" -type f -perm -u+x | head -n1; }
DDP=$(find_bin tivora-ddp)
MKDDP=$(find_bin tivora-mkddp)
WORK=$(mktemp -d /tmp/tivora-hostile.XXXXXX)
trap 'rm -rf "$WORK"' EXIT

run() { # name, command...
    local name=$1; shift
    local out=$WORK/time.txt status
    /usr/bin/time -f '%e %M' -o "$out" timeout -s KILL "$LIMIT" "$@" >"$WORK/stdout" 2>"$WORK/stderr"
    status=$?
    read -r secs kb < <(tail -n1 "$out") 2>/dev/null || { secs=?; kb=?; }
    [ "$status" = 137 ] && { secs=">$LIMIT"; kb=?; }
    [ "$status" = 137 ] && status=timeout
    printf '%-34s %8s s %10s KiB  exit %s\n' "$name" "$secs" "$kb" "$status"
}

disc() { # dir, mkddp options...
    local dir=$WORK/$1; shift
    rm -rf "$dir"
    "$MKDDP" test "$dir" --tracks 3 --seconds 4 "$@" >/dev/null
    echo "$dir"
}

echo "== special files"
for f in DDPID DDPMS PQDESCR IMAGE.DAT; do
    d=$(disc "fifo-$f")
    rm -f "$d/$f"; mkfifo "$d/$f"
    run "fifo as $f (info)" "$DDP" info "$d"
done
d=$(disc fifo-export); rm -f "$d/IMAGE.DAT"; mkfifo "$d/IMAGE.DAT"
run "fifo as IMAGE.DAT (export)" "$DDP" export "$d" "$WORK/out-fifo"
d=$(disc dir-image); rm -f "$d/IMAGE.DAT"; mkdir "$d/IMAGE.DAT"
run "folder as IMAGE.DAT (info)" "$DDP" info "$d"
d=$(disc devzero-image); rm -f "$d/IMAGE.DAT"; ln -s /dev/zero "$d/IMAGE.DAT"
run "link to /dev/zero as image (info)" "$DDP" info "$d"

echo "== bounded reads"
d=$(disc devzero-ddpms); rm -f "$d/DDPMS"; ln -s /dev/zero "$d/DDPMS"
run "link to /dev/zero as DDPMS (info)" "$DDP" info "$d"
# Entries repeated from an ordinary one: a descriptor that parses.
grow_pq() { # file, entries to add
    python3 - "$1" "$2" <<'PY'
import sys
path, count = sys.argv[1], int(sys.argv[2])
data = open(path, 'rb').read()
open(path, 'wb').write(data[:-128] + data[64:128] * count + data[-128:])
PY
}
d=$(disc big-pq); grow_pq "$d/PQDESCR" 1562500
run "PQ descriptor of 100 MB (info)" "$DDP" info "$d"
d=$(disc many-pq); grow_pq "$d/PQDESCR" 40000
run "40 000 PQ entries (info)" "$DDP" info "$d"

echo "== names leaving the folder"
echo secret >"$WORK/SECRET"
d=$(disc dotdot --image-name ../SECRET)
run "image named ../SECRET (export)" "$DDP" export "$d" "$WORK/out-dotdot"
d=$(disc absolute --image-name /etc/hostname)
run "image named /etc/hostname (info)" "$DDP" info "$d"

echo "== export against its own folder"
d=$(disc planted)
mkdir -p "$WORK/out-planted"; ln -s "$WORK/victim" "$WORK/out-planted/Track 1.wav.part"
run "link planted at the .part name" "$DDP" export "$d" "$WORK/out-planted"
[ -e "$WORK/victim" ] && echo "   the link was followed: $(stat -c %s "$WORK/victim") bytes written outside"
d=$(disc twice --tracks 3 --seconds 60)
mkdir -p "$WORK/out-twice"
"$DDP" export "$d" "$WORK/out-twice" >/dev/null 2>&1 & first=$!
run "second export into the same folder" "$DDP" export "$d" "$WORK/out-twice"
wait $first; echo "   first export exit $?; files left: $(ls "$WORK/out-twice" | wc -l)"

echo "== short images"
d=$(disc empty-image); : >"$d/IMAGE.DAT"
run "empty image (export)" "$DDP" export "$d" "$WORK/out-empty"
d=$(disc cut-image); truncate -s 1000000 "$d/IMAGE.DAT"
run "image cut to 1 MB (export)" "$DDP" export "$d" "$WORK/out-cut"
