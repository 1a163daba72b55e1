#!/usr/bin/env bash
# Installs what is asked for.
# TODO: remove it again
set -euo pipefail

readonly PREFIX=${PREFIX:-/usr/local}
export LANG=C COUNT+=1
files=(one "two $PREFIX" [5]=six
    *.txt)   # an array
files[2]=three
names[$i + 1]+='x'

# Says how it is used.
usage() {
    cat <<EOF >&2
Usage: ${0##*/} [-v] $(basename "$1")
  \$HOME and `date` it's
EOF
    return 1
}

function clean_up { rm -rf -- "$tmp"; }
trap clean_up EXIT

for name in "${files[@]}" a{1,2}.c; do
    if [[ -f $name && ! $name =~ ^[a-z]+$ || ${#name} -gt 3 ]]; then
        echo "File: \"${name%.txt}\" costs \$5" >> log.txt 2>&1
    elif [ "$name" = x ] || test -d "$name"; then
        continue
    else
        count=$((count * 2 + 0x1F))
    fi
done
for ((i = 0; i < 10; i++)); do sleep 1 & done
while read -r line; do printf '%s\n' "$line"; done < <(sort file | uniq)

case $1 in
    -h | --help) usage ;;
    start|[Ss]top)
        shift $#
        ;;&
    "") ;;
    (*) exit 2
esac

tar --create -z \
    --file "$1" if | tee /dev/null \
  && echo $'tab\there' $?
cat <<-'END'
	no $expansion here
	END
grep -c foo <<< "$text" && (cd /tmp; ls) || { :; }
