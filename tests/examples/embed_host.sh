# The hosts write what they promise, to the byte.
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

# expect STATUS COMMAND...: the command ends with that status, and writes what stands in the files
# out and err of the folder; each is empty where the caller has not written it.
expect() {
  local wanted=$1 status=0
  shift
  (cd "$dir" && exec "$@") > "$dir/out.is" 2> "$dir/err.is" || status=$?
  touch "$dir/out" "$dir/err"
  diff -u "$dir/out" "$dir/out.is"
  diff -u "$dir/err" "$dir/err.is"
  if [ "$status" -ne "$wanted" ]; then
    echo "$*: status $status"
    exit 1
  fi
  rm -f "$dir/out" "$dir/err"
}

cp "$EXAMPLES/hello/hello.txt.qz" "$dir/hello.qz"
"$QZEXPAND" "$dir/hello.qz" > "$dir/out"
expect 0 "$HOSTS/smallest" hello.qz
printf 'one\n@fail("two")\n' > "$dir/fails.qz"
echo 'fails.qz(2) : error : two' > "$dir/err"
expect 1 "$HOSTS/smallest" fails.qz
expect 2 "$HOSTS/smallest" nosuch.qz
expect 2 "$HOSTS/smallest"

printf '%s\n' '-- a letter --' 'Dear Ada,' '-- the end --' > "$dir/out"
expect 0 "$HOSTS/memory_files" letter.txt
echo 'lib/fails.txt(2) : error : stop' > "$dir/err"
expect 1 "$HOSTS/memory_files" wrong.txt
echo 'loop.txt(2) : error : A file imports itself' > "$dir/err"
expect 1 "$HOSTS/memory_files" loop.txt
expect 2 "$HOSTS/memory_files" nosuch.txt

cat > "$dir/out" <<'OUT'
Some definitions.
1 bottle
2 bottle
3 bottle
4 bottle
5 bottle
6 bottle
7 bott
[the limit of 60 bytes]
 more and  more and  more and  more and  more and  more and 
[the limit of 60 bytes]
7 lines were begun, and the frame is as good as before.
[error : an error is an error]
OUT
expect 0 "$HOSTS/bounded_output"
