# run.sh PROGRAM FOLDER EXPECTED: runs the program on FOLDER/main.build, from inside FOLDER, and
# compares what it writes with EXPECTED/expected.out and expected.err. Where one is missing,
# nothing is to be written there; with reports, the program is to end with 1.
set -euo pipefail
program=$1 folder=$2 expected=$3
out=$(mktemp) err=$(mktemp)
trap 'rm -f "$out" "$err"' EXIT

status=0
(cd "$folder" && exec "$program" main.build) >"$out" 2>"$err" || status=$?

# expect NAME FILE: the file holds what EXPECTED/NAME does.
expect() {
    if [ -e "$expected/$1" ]; then
        diff -u "$expected/$1" "$2"
    else
        diff -u /dev/null "$2"
    fi
}

[ -e "$expected/expected.out" ] || [ -e "$expected/expected.err" ]
expect expected.out "$out"
expect expected.err "$err"
[ "$status" -eq "$([ -e "$expected/expected.err" ] && echo 1 || echo 0)" ]
