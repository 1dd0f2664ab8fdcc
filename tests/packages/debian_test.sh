# debian_test.sh CPACK CMAKE CXX BUILD_DIR VERSION: packs what is built, installs the packages into an
# empty root, runs the tools there, builds with the development files, and removes it all again.
#
# Where dpkg cannot install, for want of root's rights, the packages are unpacked instead.
set -euo pipefail
cpack=$1 cmake=$2 cxx=$3 build=$4 version=$5
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../api/prefix.sh"

quietly "$cpack" --config "$build/CPackConfig.cmake" -B "$dir/packages"
library=libqzmacroexpander0 development=libqzmacroexpander-dev tools=qzmacroexpander-tools
package_file() {
    echo "$dir/packages/$1_${version}_$(dpkg --print-architecture).deb"
}

fail() {
    echo "$1"
    exit 1
}

# ---- what the packages say -----------------------------------------------------------------------

# expect_field PACKAGE FIELD PATTERN: an extended regular expression that the field matches.
expect_field() {
    local value
    value=$(dpkg-deb --field "$(package_file "$1")" "$2")
    grep -qE "$3" <<<"$value" || fail "$1: $2 is '$value' and does not match '$3'"
}

same="\(= $version\)"
expect_field $library Section '^libs$'
expect_field $library Depends '(^|, )libc6 \(>= '
expect_field $development Section '^libdevel$'
expect_field $development Depends "^$library $same\$"
expect_field $development Recommends "^$tools $same\$"
expect_field $tools Section '^utils$'
expect_field $tools Depends "(^|, )$library $same(, |\$)"
expect_field $tools Depends '(^|, )libstdc\+\+6 \(>= '
for package in $library $development $tools; do
    expect_field $package Maintainer '^The qzMacroExpander authors$|<.+@.+>$'
    expect_field $package Description '^macro language for any source text - '
done
if ldd "$build/qzMacroExpander/libqzMacroExpander.so" | grep -q libpython2.7; then
    expect_field $library Depends '(^|, )libpython2\.7 \(>= 2\.7\)'
fi

# ---- what they hold ------------------------------------------------------------------------------

# files PACKAGE: modes, owners and names of its files, but for the folders.
files() {
    dpkg-deb --fsys-tarfile "$(package_file "$1")" | tar -tv |
        sed -nE 's/^([-l][^ ]+) ([^ ]+) +[0-9]+ [^ ]+ [^ ]+ \.?/\1 \2 /p' | LC_ALL=C sort -k 3
}

# documents PACKAGE: what every package has.
documents() {
    local name
    for name in changelog.Debian.gz changelog.gz copyright; do
        echo "-rw-r--r-- root/root /usr/share/doc/$1/$name"
    done
}

[ "$(dpkg-deb --info "$(package_file $library)" triggers)" = "activate-noawait ldconfig" ] ||
    fail "$library: no trigger for ldconfig"
for script in preinst postinst prerm postrm; do
    if dpkg-deb --info "$(package_file $library)" $script >"$dir/log" 2>&1; then
        fail "$library: has the script $script"
    fi
done

dpkg-deb --fsys-tarfile "$(package_file $tools)" |
    tar -xO ./usr/share/doc/$tools/copyright | grep "Niels Lohmann" >"$dir/log" ||
    fail "$tools: the copyright does not name the authors of the JSON library"

libdir=$(files $library | sed -n 's|^.* \(/usr/lib.*\)/libqzUtils\.so\.0 -> .*|\1|p')
numbers=${version%-*}
diff <(files $library) - <<END
lrwxrwxrwx root/root $libdir/libqzMacroExpander.so.0 -> libqzMacroExpander.so.$numbers
-rw-r--r-- root/root $libdir/libqzMacroExpander.so.$numbers
lrwxrwxrwx root/root $libdir/libqzUtils.so.0 -> libqzUtils.so.$numbers
-rw-r--r-- root/root $libdir/libqzUtils.so.$numbers
$(documents $library)
END
files $tools | grep -vxF -e "$(documents $tools)" |
    grep -vE "^-rw-r--r-- root/root /usr/share/man/man1/[a-z]+\.1\.gz\$" |
    grep -vE "^-rw-r--r-- root/root $libdir/cmake/qzMacroExpander/[A-Za-z-]*Tools[A-Za-z-]*\.cmake\$" |
    grep -vxE -- "-rwxr-xr-x root/root /usr/bin/qz(expand|map)" &&
    fail "$tools holds what is not a tool's"
files $development | grep -vxF -e "$(documents $development)" |
    grep -vE "^-rw-r--r-- root/root /usr/include/qz[A-Za-z]+/[A-Za-z]+\.h\$" |
    grep -vE "^-rw-r--r-- root/root $libdir/(cmake|pkgconfig)/" |
    grep -vE "^l.* $libdir/libqz[A-Za-z]+\.so -> libqz[A-Za-z]+\.so\.0\$" &&
    fail "$development holds what is not for developing"

# ---- installed -----------------------------------------------------------------------------------

root=$dir/root
installed=
in_root() {
    PATH=$PATH:/usr/sbin:/sbin dpkg --root="$root" --log=/dev/null "$@"
}

# The root believes to have what the packages need from the distribution.
make_root() {
    local package
    mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers"
    for package in $library $tools; do
        dpkg-deb --field "$(package_file $package)" Depends | tr ',' '\n' | sed 's/(.*//; s/ //g'
    done | sort -u | grep -vx $library | while read -r package; do
        printf '%s\n' "Package: $package" "Status: install ok installed" "Version: 99:99" \
            "Architecture: $(dpkg --print-architecture)" "Maintainer: nobody" "Description: none" ""
        touch "$root/var/lib/dpkg/info/$package".{list,md5sums}
    done >"$root/var/lib/dpkg/status"
}

install_packages() {
    if in_root --install "$(package_file $tools)" >"$dir/log" 2>&1; then
        fail "the tools are installed without the library"
    fi
    grep -qF "$tools depends on $library (= $version)" "$dir/log" || fail "$(cat "$dir/log")"
    quietly in_root --purge $tools
    quietly in_root --install "$(package_file $library)" "$(package_file $development)" \
        "$(package_file $tools)"
    [ -z "$(in_root --audit)" ] || fail "$(in_root --audit)"
    installed=yes
}

if [ "$(id -u)" -eq 0 ]; then
    make_root
    install_packages
else
    for package in $library $development $tools; do
        dpkg-deb --extract "$(package_file $package)" "$root"
    done
fi

# ---- used ----------------------------------------------------------------------------------------

"$root/usr/bin/qzexpand" -D who=Debian "$here/../api/outside_cmake/greeting.txt.qz" |
    diff - <(echo 'Hello, Debian!')
if [ -e "$root/usr/bin/qzmap" ]; then
    "$root/usr/bin/qzmap" --version | diff - <(echo "qzmap $numbers")
fi
[ "$(env -u LD_LIBRARY_PATH ldd "$root/usr/bin/qzexpand" | grep -c "=> $root/usr/")" -ge 2 ] ||
    fail "the tool does not run with the library of its package"

quietly "$cmake" -S "$here/../../examples/cmake" -B "$dir/paint" -G Ninja \
    "-DCMAKE_CXX_COMPILER=$cxx" "-DCMAKE_PREFIX_PATH=$root/usr"
quietly "$cmake" --build "$dir/paint"
"$dir/paint/paint" | diff - <(echo 'Ada; and $others, brush 8: green')
read -ra flags <<<"$(PKG_CONFIG_PATH=$root$libdir/pkgconfig pkg-config --cflags --libs qzMacroExpander)"
"$cxx" -std=c++17 "$here/../api/outside.cpp" "${flags[@]}" "-Wl,-rpath,$root$libdir" -o "$dir/outside"
"$dir/outside" | diff - <(echo 'Hello, world!')

# ---- and removed ---------------------------------------------------------------------------------

if [ -n "$installed" ]; then
    quietly in_root --purge $tools $development $library
    if [ -e "$root/usr" ]; then
        find "$root/usr"
        fail "something is left behind"
    fi
fi
