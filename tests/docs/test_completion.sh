#!/usr/bin/env bash
# The bash completion of tivora-ddp, driven as bash drives it: the file is
# sourced, COMP_WORDS and COMP_CWORD are set for a command line, the function
# is called, and COMPREPLY is what the user would be offered. The track
# numbers come from a generated disc, as a folder and as a ZIP archive, by way
# of `tivora-ddp tracks`, whose own answers are checked first.
#
#   test_completion.sh TIVORA_DDP TIVORA_MKDDP COMPLETION_FILE
set -uo pipefail
export LC_ALL=C # the offers are compared sorted
ddp=$1 mkddp=$2 completion=$3
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# A disc of 12 tracks (so that "1" completes to 1, 10, 11 and 12), the same
# disc in an archive, and beside them what a disc is not. Folder names with a
# space and a glob character must be offered whole.
mkdir -p "$work/discs/out dir" "$work/discs/Other Disc" "$work/discs/*"
"$mkddp" test "$work/discs/album" --tracks 12 --seconds 4 >/dev/null || exit 1
(cd "$work/discs" && zip -qr0 album.zip album) || exit 1
cp "$work/discs/album.zip" "$work/discs/SHOUT.ZIP"
touch "$work/discs/notes.txt" "$work/discs/zipped.zip.txt"
all_tracks="1 2 3 4 5 6 7 8 9 10 11 12"

# --- tivora-ddp tracks ------------------------------------------------------
for disc in album album.zip album/IMAGE.DAT; do
    got=$("$ddp" tracks "$work/discs/$disc" | tr '\n' ' ')
    [[ ${got% } == "$all_tracks" ]] || fail "tracks $disc prints '$got'"
done
# On a disc with pauses and a second index, every number listed is one
# export's --track takes, and the next one is not.
"$mkddp" test "$work/realistic" --realistic >/dev/null || exit 1
listed=$("$ddp" tracks "$work/realistic" | tr '\n' ' ')
[[ $listed == "1 2 3 4 5 6 7 " ]] || fail "tracks of the realistic disc prints '$listed'"
for n in $listed; do
    "$ddp" export "$work/realistic" "$work/out" --track "$n" >/dev/null 2>&1 ||
        fail "tracks lists $n, which export --track does not take"
done
"$ddp" export "$work/realistic" "$work/out" --track 8 >/dev/null 2>&1 &&
    fail "export --track 8 succeeds, tracks does not list it"
rm -rf "$work/realistic" "$work/out"
"$ddp" tracks "$work/discs/missing" >/dev/null 2>&1
[[ $? -eq 1 ]] || fail "tracks of a missing disc does not exit 1"
"$ddp" tracks >/dev/null 2>&1
[[ $? -eq 2 ]] || fail "tracks without a path does not exit 2"

# --- the completion function ------------------------------------------------
# shellcheck source=/dev/null
source "$completion" || exit 1
complete -p tivora-ddp >/dev/null 2>&1 || fail "sourcing registers no completion for tivora-ddp"

# complete WORD... : the last word is the one being completed. Prints the
# offers sorted, one line, space-separated.
complete_line() {
    COMP_WORDS=("$ddp" "$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _tivora_ddp
    printf '%s\n' "${COMPREPLY[@]}" | sort -u | tr '\n' ' ' | sed 's/ $//'
}
expect() { # EXPECTED WORD...
    local expected=$1
    shift
    local got
    got=$(complete_line "$@")
    [[ $got == "$expected" ]] || fail "tivora-ddp $* <TAB>: expected '$expected', got '$got'"
}

cd "$work/discs" || exit 1

# Commands and their options; options already given are not offered again.
expect "analyze cue export info play pqsheet tracks verify" ""
expect "play pqsheet" p
expect "--help -h" -
expect "--device --help --seconds --track" play album -
expect "--device --help --seconds" play album --track 3 -
expect "--format --help --track" export -
expect "--help --json" verify -
expect "--help" cue album x.cue --wav -
expect "--help" pqsheet -
expect "" bogus -

# Values: formats, and the disc's track numbers wherever the disc stands.
expect "flac" export album out --format f
expect "$(tr ' ' '\n' <<<"$all_tracks" | sort -u | tr '\n' ' ' | sed 's/ $//')" play album --track ""
expect "1 10 11 12" play album --track 1
expect "1 10 11 12" export album.zip out --format mp3 --track 1
expect "" export --track 1 # no disc yet: nothing to ask
expect "" play --track ""
expect "" play "$work/discs/missing" --track ""
expect "" play album --seconds ""
# The cursor on --track's value, the disc after it.
COMP_WORDS=("$ddp" play --track 1 "$work/discs/album")
COMP_CWORD=3
COMPREPLY=()
_tivora_ddp
got=$(printf '%s\n' "${COMPREPLY[@]}" | sort -u | tr '\n' ' ')
[[ $got == "1 10 11 12 " ]] || fail "--track in the middle of the line offers '$got'"
# An option's value is not the disc.
expect "1 10 11 12" play --seconds 5 album --track 1
expect "album album.zip" play --device default al
# A disc written as the shell takes it: quoted, or with ~/.
expect "1 10 11 12" play "\"$work/discs/album\"" --track 1
# shellcheck disable=SC2088 # as typed, unexpanded
HOME=$work/discs expect "1 10 11 12" play "~/album.zip" --track 1

# Paths: folders and archives for the disc, folders for OUTDIR, any file
# for the cue sheet and the PQ sheet.
expect "* Other Disc SHOUT.ZIP album album.zip out dir" info ""
expect "SHOUT.ZIP" verify S
expect "album album.zip" analyze al
expect "* Other Disc SHOUT.ZIP album album.zip notes.txt out dir zipped.zip.txt" pqsheet album ""
expect "notes.txt" cue album n
expect "* Other Disc album out dir" export album ""
expect "" info album ""
expect "" tracks album ""

finish "completion offers what it should"
