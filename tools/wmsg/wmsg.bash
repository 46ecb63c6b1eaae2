# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# Completes the subcommands and options of wmsg in bash. It asks the program itself, so that it knows what the
# program knows; where neither fits it completes file names.

_wmsg()
{
    local current=${COMP_WORDS[COMP_CWORD]} word help
    local -a command=("${COMP_WORDS[0]}")
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        # What is no subcommand is a value or a file.
        if [[ $word =~ ^[a-z][a-z-]*$ ]] && _wmsg_subcommands "$("${command[@]}" --help 2>/dev/null)" | grep -qx -- "$word"; then
            command+=("$word")
        fi
    done
    help=$("${command[@]}" --help 2>/dev/null) || return
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_wmsg_options "$help")" -- "$current")
        return
    fi
    word=$(_wmsg_subcommands "$help")
    if [[ -n $word ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}

_wmsg_subcommands()
{
    sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z-]*\).*/\1/p' <<<"$1"
}

_wmsg_options()
{
    sed -n 's/^  \(-.,\)\{0,1\}\(--[a-z-]*\).*/\2/p' <<<"$1"
}

complete -F _wmsg wmsg
