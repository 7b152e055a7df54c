// Words and factors of the model's unit system.
#pragma once

#include <string>

namespace rivulet {

class TNavUnitSystem {
  public:
    std::string name;
    // Negative until a unit system has been read.
    double gasRateFactor = -1.0;
};

}  // namespace rivulet
