# Sourced by the tests of what is installed: makes the scratch folder $dir, and runs commands whose
# output matters only where they fail.

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

quietly() {
    "$@" >"$dir/log" 2>&1 || {
        cat "$dir/log"
        echo "failed: $*"
        exit 1
    }
}

# install_into PREFIX: into a prefix that does not exist yet.
install_into() {
    quietly "$cmake" --install "$build" --prefix "$dir/first"
    # What is installed can be moved as a whole.
    mv "$dir/first" "$1"
}
