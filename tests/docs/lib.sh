# shellcheck shell=bash
# What the documentation tests share; sourced, never run. fail() counts a
# failure and goes on; work is a scratch folder removed at the end;
# finish SUMMARY prints the summary when nothing failed and exits with 1
# when anything did.
failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

finish() { # SUMMARY
    [[ $failures -eq 0 ]] && echo "$1"
    exit $((failures > 0))
}
