// Prints what a build description says: buildfile FILE.

#include <iostream>

#include "BuildParser.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: buildfile FILE\n";
        return 2;
    }
    buildfile::Build build;
    if (!buildfile::ReadBuild(argv[1], build))
        return 1;
    buildfile::Print(std::cout, build);
}
