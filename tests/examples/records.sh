# The header that the records example makes compiles without a warning and does what it promises.
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT

"$QZEXPAND" -o "$dir/records.h" "$EXAMPLES/records/records.h.qz"

cat > "$dir/main.cpp" <<'END'
#include "records.h"

#include <iostream>

int main() {
    using namespace records;
    const Route route = Route().set_title("north").set_end(Point().set_x(3).set_y(-4));
    std::cout << Person().set_name("Ada").set_age(36) << "\n" << route << "\n";
    std::cout << (route == route) << (route == Route()) << "\n";
}
END
"$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Werror -o "$dir/main" "$dir/main.cpp"

cat > "$dir/expected" <<'END'
Person { name=Ada age=36 height=1.75 }
Route { title=north start=Point { x=0 y=0 } end=Point { x=3 y=-4 } days=1..7 }
10
END
"$dir/main" | diff "$dir/expected" -
