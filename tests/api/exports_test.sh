# The libraries export namespace vorn and nothing else: exports_test.sh NM LIBRARY...
#
# The mangled names are looked at, for these have the namespace at a fixed place: functions and
# variables, in a nested name (_ZN4vorn..., with K for const and the like), what the compiler adds
# to them (_ZTI, _ZTV, _ZGV, thunks ...), and the locals of functions (_ZZN4vorn...).
set -euo pipefail

nm=$1
shift
added='T[VTIS][PK]*|T[WH]|GV|GR|Th[n0-9]+_|Tv[n0-9]+_[n0-9]+_|Tc[a-z0-9]+_[a-z0-9]+_'
ours="^_Z($added)?Z*N[rVK]*[RO]?4vorn"
status=0

for library in "$@"; do
    names=$("$nm" -D --defined-only --format=just-symbols "$library")
    if ! grep -E "$ours" <<<"$names" >/dev/null; then
        echo "$(basename "$library") exports nothing of namespace vorn"
        status=1
    fi
    if alien=$(grep -vE "$ours" <<<"$names"); then
        printf '%s exports names that do not lie in namespace vorn:\n%s\n' \
            "$(basename "$library")" "$(c++filt <<<"$alien")"
        status=1
    fi
done
exit $status
