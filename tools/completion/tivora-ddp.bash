# bash completion for tivora-ddp: commands, each command's options, the
# values of --format, the track numbers of the disc already on the line for
# --track (asked of `tivora-ddp tracks`, which reads no audio), folders and
# .zip files where a disc goes, any file where an output file goes.
#
# Installed as share/bash-completion/completions/tivora-ddp; works without the
# bash-completion package too (`source` it).

_tivora_ddp_commands="info verify play export cue analyze pqsheet tracks"

# The options of one command, each of which may be given once.
_tivora_ddp_options()
{
    case $1 in
        info | verify | analyze) echo "--json" ;;
        play) echo "--track --seconds --device" ;;
        export) echo "--track --format" ;;
        cue) echo "--bin --wav" ;;
    esac
    echo "--help"
}

# Options followed by a value of their own.
_tivora_ddp_takes_value()
{
    case $1 in
        --track | --seconds | --device | --format) return 0 ;;
    esac
    return 1
}

# A word as the shell will pass it: quotes and backslashes gone, a leading ~/
# expanded. Never eval'd: the line is the user's unfinished text.
_tivora_ddp_dequote()
{
    local word=$1
    case $word in
        \"*\") word=${word:1:${#word}-2} ;;
        \'*\') word=${word:1:${#word}-2} ;;
        *) word=${word//\\/} ;;
    esac
    # shellcheck disable=SC2088 # the literal text the user typed
    [[ $word == "~/"* ]] && word=$HOME/${word#"~/"}
    printf '%s' "$word"
}

# The positional arguments after the command, other than the word being
# completed, one a line.
_tivora_ddp_positionals()
{
    local i word
    for ((i = 2; i < ${#COMP_WORDS[@]}; i++)); do
        word=${COMP_WORDS[i]}
        if _tivora_ddp_takes_value "$word"; then
            i=$((i + 1))
            continue
        fi
        [[ $i -eq $COMP_CWORD || $word == -* || -z $word ]] && continue
        printf '%s\n' "$word"
    done
}

# Adds each line of standard input to the offers, as it is: names with
# spaces or glob characters stay whole.
_tivora_ddp_offer()
{
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY
}

# Folders and ZIP archives: what a disc can be given as.
_tivora_ddp_disc_paths()
{
    _tivora_ddp_offer < <(compgen -d -- "$1")
    _tivora_ddp_offer < <(compgen -f -X '!*.[Zz][Ii][Pp]' -- "$1")
    compopt -o filenames 2>/dev/null
}

_tivora_ddp()
{
    COMPREPLY=()
    local cur=${COMP_WORDS[COMP_CWORD]}
    local prev=""
    ((COMP_CWORD > 0)) && prev=${COMP_WORDS[COMP_CWORD - 1]}

    if ((COMP_CWORD == 1)); then
        if [[ $cur == -* ]]; then
            _tivora_ddp_offer < <(compgen -W "--help -h" -- "$cur")
        else
            _tivora_ddp_offer < <(compgen -W "$_tivora_ddp_commands" -- "$cur")
        fi
        return
    fi
    local command=${COMP_WORDS[1]}
    [[ " $_tivora_ddp_commands " == *" $command "* ]] || return

    case $prev in
        --format)
            _tivora_ddp_offer < <(compgen -W "wav flac mp3" -- "$cur")
            return
            ;;
        --track)
            local disc program
            disc=$(_tivora_ddp_positionals | head -n 1)
            [[ -n $disc ]] || return
            disc=$(_tivora_ddp_dequote "$disc")
            program=$(_tivora_ddp_dequote "${COMP_WORDS[0]}")
            _tivora_ddp_offer < <(compgen -W "$("$program" tracks "$disc" 2>/dev/null)" -- "$cur")
            return
            ;;
        --seconds | --device)
            return
            ;;
    esac

    if [[ $cur == -* ]]; then
        local option used=" ${COMP_WORDS[*]} " offered=()
        for option in $(_tivora_ddp_options "$command"); do
            [[ $used == *" $option "* ]] && continue
            offered+=("$option")
        done
        # --bin and --wav exclude each other.
        if [[ $command == cue && ($used == *" --bin "* || $used == *" --wav "*) ]]; then
            offered=(--help)
        fi
        _tivora_ddp_offer < <(compgen -W "${offered[*]}" -- "$cur")
        return
    fi

    # Which positional argument is being typed: count those before it.
    local i word position=0
    for ((i = 2; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if _tivora_ddp_takes_value "$word"; then
            i=$((i + 1))
        elif [[ $word != -* ]]; then
            position=$((position + 1))
        fi
    done
    if ((position == 0)); then
        _tivora_ddp_disc_paths "$cur"
    elif ((position == 1)); then
        case $command in
            export) _tivora_ddp_offer < <(compgen -d -- "$cur") ;;
            cue | pqsheet) _tivora_ddp_offer < <(compgen -f -- "$cur") ;;
            *) return ;;
        esac
        compopt -o filenames 2>/dev/null
    fi
}

complete -F _tivora_ddp tivora-ddp
