#!/usr/bin/env bash
# check.sh MODEL [VARIANT]: checks a model in every interleaving; or one of its variants, which must
# be found wrong. Status 0: as it should be.
set -euo pipefail
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
model=$here/$1.pml variant=${2-}
if [[ -n $variant ]] && ! grep -qw -- "$variant" "$model"; then
    echo "$1 has no variant $variant" >&2
    exit 2
fi
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
cd -- "$work"

# Only one of the two is checked in one run: the claim, or the steps that nobody follows.
verdict() { # SPIN_OPTION... -- PAN_OPTION...
    local spin=()
    while [[ $1 != -- ]]; do
        spin+=("$1")
        shift
    done
    shift
    spin "${spin[@]}" ${variant:+"-D$variant"} -a "$model" >spin.log 2>&1 || {
        cat spin.log >&2
        exit 2
    }
    "${CC:-cc}" -O1 -w "${flags[@]}" -o pan pan.c
    ./pan -m100000 -w22 "$@" >pan.log
    if ! grep -qE '^State-vector .* errors: [0-9]+' pan.log || grep -q 'search incomplete\|max search depth' pan.log; then
        cat pan.log >&2
        exit 2
    fi
    grep -q 'errors: 0' pan.log
}

flags=(-DSAFETY)
right=yes
verdict -DONLY_SAFETY -- || right=no
states=$(sed -nE 's/^ *([0-9]+) states, stored.*/\1/p' pan.log)
if [[ $right == yes ]] && grep -q '^ltl' "$model"; then
    flags=(-DNFAIR=3)
    verdict -- -a -f || right=no
fi
if [[ $right == yes ]]; then
    echo "$1${variant:+ $variant}: right in all of $states states"
    [[ -z $variant ]]
else
    grep -m1 '^pan:' pan.log
    echo "$1${variant:+ $variant}: found wrong"
    [[ -n $variant ]]
fi
