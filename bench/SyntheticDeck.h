// A synthetic deck for measuring the driver at scale: SPE1's fluids, rock and layers on a grid of N columns
// in a row, one well per column, every fourth well a gas injector and the others oil producers under an oil
// rate target with a BHP floor.
#pragma once

#include <string>

namespace bench {

// The deck's text for `wells` wells (at least 1).
std::string SyntheticDeck(int wells);

// Writes the deck to `path` and gives `path`; throws std::runtime_error when the file cannot be written.
std::string WriteSyntheticDeck(const std::string& path, int wells);

// The name of well `index` of such a deck: P00001 for producers, I00004 for injectors.
std::string SyntheticWellName(int index);
bool IsSyntheticInjector(int index);

}  // namespace bench
