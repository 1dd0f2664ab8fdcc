#include <cstdio>

#include "first/only.h"
#include "part/value.h"

int main() {
    std::printf("%d %d %d %d\n", Inner(), Outer(), Shared(), Only());
}
