# The C code that the table example makes compiles without a warning and computes the CRC that is
# known for the digits; without --python the text is refused.
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
source=$EXAMPLES/crc_table/crc32.c.qz

"$QZEXPAND" --python -o "$dir/crc32.c" "$source"
grep -n '^    0x00000000, 0x77073096, 0xEE0E612C, 0x990951BA, 0x076DC419, 0x706AF48F,$' \
  "$dir/crc32.c" | cut -d: -f1 | diff - <(echo 6)

cat > "$dir/main.c" <<'END'
#include <inttypes.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

uint32_t crc32(const void* data, size_t size);

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        printf("%08" PRIX32 "\n", crc32(argv[i], strlen(argv[i])));
    return 0;
}
END
"${CC:-cc}" -std=c99 -Wall -Wextra -Wpedantic -Wshadow -Werror -o "$dir/main" \
  "$dir/main.c" "$dir/crc32.c"
"$dir/main" 123456789 '' a | diff - <(printf '%s\n' CBF43926 00000000 E8B7BE43)

if "$QZEXPAND" "$source" > "$dir/out" 2> "$dir/err"; then
  echo "Python ran without --python"
  exit 1
fi
grep -qF 'Python initialisation error: forbidden by the host' "$dir/err"
