#!/usr/bin/env bash
# The manual pages and the programs' --help never disagree: every option the
# help names is in the page's source, marked as an option (in bold), and the
# reverse; every command the help lists is one tivora-ddp runs and one the
# page describes. Also: --help answers on standard output with status 0, a
# wrong call on standard error with 2, `tivora --help` opens no window, and
# the built pages format without a warning.
#
#   test_help_and_man.sh TIVORA_DDP TIVORA_OR_EMPTY MAN_SOURCE_DIR BUILT_MAN_DIR
set -uo pipefail
ddp=$1 window=$2 source_dir=$3 built_dir=$4
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# Options as a program's help writes them: any -x or --word not inside a word.
help_options() { grep -oP '(?<![\w.-])--?[a-z][a-z0-9-]*' | sort -u; }
# Options as the page marks them: bold, *--word*, alone or in a list.
page_options() { grep -oP '(?<=\*)--?[a-z][a-z0-9-]*(?=\*)' | sort -u; }

compare() { # NAME HELP_LIST PAGE_LIST WHAT
    local only_help only_page
    only_help=$(comm -23 "$2" "$3" | tr '\n' ' ')
    only_page=$(comm -13 "$2" "$3" | tr '\n' ' ')
    [[ -z $only_help ]] || fail "$1: $4 in --help but not in the manual page: $only_help"
    [[ -z $only_page ]] || fail "$1: $4 in the manual page but not in --help: $only_page"
    [[ -s $2 ]] || fail "$1: --help names no $4"
}

# --- tivora-ddp: the help itself -------------------------------------------
"$ddp" --help >"$work/help" 2>"$work/help.err"
status=$?
[[ $status -eq 0 ]] || fail "tivora-ddp --help exits $status, not 0"
[[ -s $work/help && ! -s $work/help.err ]] || fail "tivora-ddp --help is not on standard output alone"
for call in "-h" "export --help" "info -h"; do
    # shellcheck disable=SC2086 # the call is split on purpose
    "$ddp" $call >"$work/other" 2>/dev/null
    cmp -s "$work/help" "$work/other" || fail "tivora-ddp $call does not print the help"
done
for call in "" "bogus" "info --bogus" "export only-one-path"; do
    # shellcheck disable=SC2086
    "$ddp" $call >"$work/out" 2>"$work/err"
    status=$?
    [[ $status -eq 2 ]] || fail "tivora-ddp $call exits $status, not 2"
    [[ ! -s $work/out ]] || fail "tivora-ddp $call writes to standard output"
    grep -q '^usage:' "$work/err" || fail "tivora-ddp $call prints no usage on standard error"
done

# --- tivora-ddp: options and commands against the page ---------------------
help_options <"$work/help" >"$work/help.options"
page_options <"$source_dir/tivora-ddp.1.scd" >"$work/page.options"
compare tivora-ddp "$work/help.options" "$work/page.options" options

# Commands: the words under "Commands:" in the help, the bold words that open
# an entry (a line of their own) under COMMANDS in the page.
sed -n '/^Commands:/,/^$/p' "$work/help" | grep -oP '^  \K[a-z]+' | sort -u >"$work/help.commands"
sed -n '/^# COMMANDS/,/^# /p' "$source_dir/tivora-ddp.1.scd" | grep -oP '^\*\K[a-z]+(?=\*)' |
    sort -u >"$work/page.commands"
compare tivora-ddp "$work/help.commands" "$work/page.commands" commands
# Each listed command is one the program runs: called without its
# arguments, it answers with its own usage line, not the general one.
while read -r command; do
    "$ddp" "$command" >/dev/null 2>"$work/err"
    status=$?
    [[ $status -eq 2 ]] || fail "tivora-ddp $command without arguments exits $status, not 2"
    grep -q "^usage: tivora-ddp $command " "$work/err" ||
        fail "tivora-ddp $command is not a command of its own: $(cat "$work/err")"
done <"$work/help.commands"

# --- tivora: the window's help ---------------------------------------------
if [[ -n $window ]]; then
    # No display at all: a window would make Qt abort here.
    env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb "$window" --help \
        >"$work/window.help" 2>"$work/window.err"
    status=$?
    [[ $status -eq 0 ]] || fail "tivora --help exits $status without a display: $(cat "$work/window.err")"
    grep -q '^usage: tivora' "$work/window.help" || fail "tivora --help prints no usage"
    env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb "$window" -h >"$work/other" 2>/dev/null
    cmp -s "$work/window.help" "$work/other" || fail "tivora -h does not print the help"
    help_options <"$work/window.help" >"$work/window.help.options"
    page_options <"$source_dir/tivora.1.scd" >"$work/window.page.options"
    compare tivora "$work/window.help.options" "$work/window.page.options" options
fi

# --- the built pages -------------------------------------------------------
for page in tivora.1 tivora-ddp.1; do
    if [[ ! -s $built_dir/$page ]]; then
        fail "$built_dir/$page was not built"
        continue
    fi
    warnings=$(groff -man -Tutf8 -ww -z "$built_dir/$page" 2>&1)
    [[ -z $warnings ]] || fail "$page: groff warns: $warnings"
    for section in NAME SYNOPSIS DESCRIPTION OPTIONS "EXIT STATUS" EXAMPLES; do
        grep -q "^\.SH $section\$" "$built_dir/$page" || fail "$page has no $section section"
    done
done
[[ $built_dir/tivora-ddp.1 -nt $source_dir/tivora-ddp.1.scd ]] ||
    fail "tivora-ddp.1 is older than its source"

finish "help and manual pages agree"
