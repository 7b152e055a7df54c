// Reads an Eclipse-format deck into the plain DeckModel the engine runs on.
#pragma once

#include <stdexcept>
#include <string>

#include "standin/DeckModel.h"

namespace rivulet::standin {

class DeckError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws DeckError with a message naming the file when it is missing, unreadable or not a usable deck.
DeckModel ReadDeck(const std::string& path);

}  // namespace rivulet::standin
