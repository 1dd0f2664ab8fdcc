# scripts/derive-apt-source finds the main Debian archive among a machine's APT sources, in both
# formats, and keeps the entry's options.
set -euo pipefail
. "$(dirname "$0")/expect.sh"

architecture=$(dpkg --print-architecture)

# A machine whose APT knows, from their Release files, Debian's archive and a third party's that
# has the same suite and component.
new_machine() {
    rm -rf "$scratch/machine"
    mkdir -p "$scratch"/machine/{etc/apt/{sources.list.d,preferences.d,apt.conf.d},lists/partial,cache}
    cat >"$scratch/apt.conf" <<CONF
Dir "$scratch/machine/";
Dir::State::Lists "$scratch/machine/lists/";
Dir::Cache "$scratch/machine/cache/";
CONF
    export APT_CONFIG=$scratch/apt.conf
    release main.example_debian bookworm Debian Debian
    release main.example_debian bookworm-updates Debian Debian
    release security.example_debian-security bookworm-security Debian Debian-Security
    release vendor.example_debian bookworm Vendor Vendor
}

# release ADDRESS SUITE ORIGIN LABEL: what APT downloaded from there.
release() {
    local lists=$scratch/machine/lists/$1_dists_$2
    printf 'Origin: %s\nLabel: %s\nCodename: %s\nComponents: main\nArchitectures: %s\n' \
        "$3" "$4" "$2" "$architecture" >"${lists}_Release"
    : >"${lists}_main_binary-${architecture}_Packages"
}

sources() {
    cat >"$scratch/machine/etc/apt/$1"
}

# derived WHAT EXPECTED ENDING: what the script writes to a file of that ending.
derived() {
    rm -f "$scratch"/derived.*
    "$root/scripts/derive-apt-source" bullseye "$scratch/derived"
    expect_equal "$1: the file's name" "$scratch/derived.$3" "$(echo "$scratch"/derived.*)"
    expect_equal "$1" "$2" "$(cat "$scratch"/derived.*)"
}

new_machine
sources sources.list <<'LIST'
# deb http://old.example/debian bookworm main
deb http://vendor.example/debian bookworm main
deb-src http://main.example/debian bookworm main
deb http://main.example/debian bookworm-updates main
deb http://main.example/debian bookworm main contrib # the main archive
deb http://security.example/debian-security bookworm-security main
LIST
derived "a plain line" "deb http://main.example/debian bullseye main" list

new_machine
sources sources.list.d/debian.list <<LIST
deb [ arch=$architecture signed-by=/keys/debian.gpg ] http://main.example/debian/ bookworm main
LIST
derived "a line with options, in a file of its own" \
    "deb [ arch=$architecture signed-by=/keys/debian.gpg ] http://main.example/debian/ bullseye main" \
    list

new_machine
sources sources.list.d/debian.sources <<SOURCES
# The vendor's entry comes first.
Types: deb
URIs: http://vendor.example/debian
Suites: bookworm
Components: main
Signed-By: /keys/vendor.gpg

Enabled: no
Types: deb
URIs: http://main.example/debian
Suites: bookworm
Components: main

Types: deb deb-src
URIs: http://main.example/debian
Suites: bookworm bookworm-updates
Components: main
 contrib
# A comment inside a stanza.
Architectures: $architecture
Check-Valid-Until: no
Signed-By:
 -----BEGIN PGP PUBLIC KEY BLOCK-----
 .
 bm90IGEga2V5
 -----END PGP PUBLIC KEY BLOCK-----

Types: deb
URIs: http://security.example/debian-security
Suites: bookworm-security
Components: main
SOURCES
derived "a stanza with options and a key" "Types: deb
Suites: bullseye
Components: main
URIs: http://main.example/debian
Architectures: $architecture
Check-Valid-Until: no
Signed-By:
 -----BEGIN PGP PUBLIC KEY BLOCK-----
 .
 bm90IGEga2V5
 -----END PGP PUBLIC KEY BLOCK-----" sources

new_machine
sources sources.list <<'LIST'
deb http://vendor.example/debian bookworm main
deb http://security.example/debian-security bookworm-security main
LIST
status=0
output=$("$root/scripts/derive-apt-source" bullseye "$scratch/none" 2>&1) || status=$?
expect_equal "a machine without the main archive" \
    "no entry for the main Debian archive among APT's sources" "$output"
expect_equal "a machine without the main archive fails" 1 "$status"
finish
