# shellcheck shell=bash
# Helpers the comparison benchmarks share; sourced by them, never run:
#   . "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# The first executable file NAME below DIR, or nothing.
find_bin() { # DIR NAME
    find "$1" -name "$2" -type f -perm -u+x | head -n1
}

# MKDDP and DDP from a build's tools folder; exits 2 when either is missing.
find_tools() { # DIR
    MKDDP=$(find_bin "$1" tivora-mkddp)
    DDP=$(find_bin "$1" tivora-ddp)
    [ -n "$MKDDP" ] && [ -n "$DDP" ] || { echo "no tivora-mkddp or tivora-ddp in $1" >&2; exit 2; }
}

# WORK, unless given, a new folder under /tmp, removed when the script ends.
make_work() { # NAME
    WORK=${WORK:-$(mktemp -d "/tmp/tivora-$1-bench.XXXXXX")}
    trap 'rm -rf "$WORK"' EXIT
}

# The set-up of a benchmark of the command-line tools: exits 2 with the
# usage unless one TOOLS_DIR is given; RUNS (default DEFAULT_RUNS) and
# MINUTES (default 74) from the environment; MKDDP, DDP and WORK.
start_tools_bench() { # NAME DEFAULT_RUNS ARGS...
    local name=$1 runs=$2
    shift 2
    [ $# -eq 1 ] || { echo "usage: $0 TOOLS_DIR" >&2; exit 2; }
    RUNS=${RUNS:-$runs}
    MINUTES=${MINUTES:-74}
    find_tools "$1"
    make_work "$name"
}

now() { date +%s.%N; }

# The median of the numbers on standard input, one a line.
median() {
    sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# The seconds one run of a command takes, its output thrown away, or "failed"
# when it exits non-zero: a run that did not do its work is no run. A script
# whose runs must all start alike defines before_run, called first and not
# timed.
timed() { # command...
    if declare -F before_run >/dev/null; then
        before_run
    fi
    local start end
    start=$(now)
    "$@" >/dev/null 2>&1 || { echo failed; return; }
    end=$(now)
    echo "$end - $start" | bc -l
}
