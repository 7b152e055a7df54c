// make-synthetic-deck N FILE: writes the synthetic deck of N wells that the coupled-step benchmark runs.
#include <cstdio>
#include <exception>
#include <string>

#include "bench/SyntheticDeck.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make-synthetic-deck WELLS FILE\n");
        return 2;
    }
    try {
        bench::WriteSyntheticDeck(argv[2], std::stoi(argv[1]));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make-synthetic-deck: %s\n", e.what());
        return 1;
    }
    return 0;
}
