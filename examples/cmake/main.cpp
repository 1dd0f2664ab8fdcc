#include <iostream>

#include "colours.h"

int main() {
    std::cout << Banner() << ": " << NameOf(Colour::green) << "\n";
}
