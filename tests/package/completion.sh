#!/bin/bash
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# Types at the completion of the command line, and compares what it offers: completion.sh PROGRAM SCRIPT

set -u
program=$1
source "$2"
failed=0

# expect WANTED WORD...: what is offered for the last word, sorted, in one line.
expect()
{
    local wanted=$1
    shift
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _wmsg 2>/dev/null
    local offered
    offered=$(printf '%s\n' "${COMPREPLY[@]}" | sort | paste -sd' ')
    if [ "$offered" != "$wanted" ]; then
        echo "wmsg $*: offers '$offered', not '$wanted'" >&2
        failed=1
    fi
}

cd "$(mktemp -d)" || exit 1
touch message.mms notes.txt
expect "decode" dec
expect "check info" drm ""
expect "list" store li
expect "--to" send --to
expect "--json" store list --js
expect "message.mms" decode mess
expect "message.mms" decode --json mess
expect "" nothing-like-that --to
rm message.mms notes.txt
rmdir "$PWD"
exit $failed
