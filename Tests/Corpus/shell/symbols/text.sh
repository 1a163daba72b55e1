#!/usr/bin/env bash
export PATH=/usr/bin:$PATH
readonly LIMIT=10
names=(ada
    grace)
declare -A ages=([ada]=36)

# ! Greetings
# Greets each of them,
# by name.
greet() {
    local name=$1 rest
    declare -i count=0
    title="Dr"
    if [ -n "$name" ]; then
        for part in $name; do echo "$title $part"; done
    elif true; then
        LANG=C sort key=2
    fi
    while read -r line; do
        count=$((count + 1))
    done <"${names[0]}"
    case $name in
        ada | grace) greet "$2" ;;
        *) if true; then exit; fi ;;
    esac
}

function other_one { inner() { :; }; }
subshell() (
    cd /tmp
)
# FIXME unquoted
greet "$LIMIT"
half() {
    if [ -z "$title" ]; then
        echo half typed
