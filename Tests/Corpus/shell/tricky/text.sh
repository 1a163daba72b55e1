echo if # then
echo a#b $# ${#x} ${!ref} ${arr[@]}
x=${a:-"b $(c "d")"}y
v=${path//\//:} w=${s^^} u=${p##*/} t=${q:1:$n} r=${o@Q}
echo $((1 << 2)) $((a ? b : c)) $( (ls) | wc ) $(((1 + 2) * 3))
cat << "A B" | grep x; echo y
text's $here
A B
cat <<one
EOF one
one
echo 'multi
line # string' "multi
$line # string
end"
(( n += 1 )) && let m=2
[[ $a == *.c && ( -n $b ) ]] && [ 1 -lt 2 -a -r f ]
f() ( echo "in a subshell" )
g () for i; do :; done
do_it --if=then of=/dev/null a=b
if ! grep -q x f; then true; fi
case x in x) case y in y) echo in;; esac;; esac
a="$(cat <<E
$b
E
)"
shopt -s extglob; rm !(a|b)
rm $(cat list) file; echo `ls \`pwd\`` done
echo "unclosed
