# The program that the state machine example makes compiles without a warning and moves as its
# table says; a row with a wrong state stops the expansion.
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
source=$EXAMPLES/state_machine/door.cpp.qz

"$QZEXPAND" -o "$dir/door.cpp" "$source"
"$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Werror -o "$dir/door" "$dir/door.cpp"
echo pull push turn_key push turn_key | "$dir/door" | diff - <(
  printf '%s\n' creak Open slam Closed click Locked Locked click Closed)

sed 's/Locked, click)/Ajar,   click)/' "$source" > "$dir/wrong.qz"
if "$QZEXPAND" "$dir/wrong.qz" > "$dir/out" 2> "$dir/err"; then
  echo "a row with a wrong state was accepted"
  exit 1
fi
grep -qF 'Assertion failure' "$dir/err"
grep -qF '"Locked" == "Ajar"' "$dir/err"
