// One argument of a command such as "RunToTime(3650)", and the collection the parser fills.
#pragma once

#include <cstdint>

#include "dataserver/ExtCollection.h"

namespace rivulet {

struct CExtDataServerCmdArgument {
    enum Kind : std::int32_t { kWord = 0, kQuoted = 1, kReal = 2, kInteger = 3 };

    // The real value of a quoted argument, which is never read as a number.
    static constexpr double kQuotedReal = 3.4e35;

    std::int32_t kind = kWord;
    std::int32_t integerValue = 0;  // the text read as a long integer
    char text[256] = {};            // at most 255 characters are kept
    double realValue = 0.0;         // the text read as a real
};

class CExtDataServerCmdArgumentCollection : public CExtCollection<CExtDataServerCmdArgument> {
  public:
    CExtDataServerCmdArgumentCollection() : CExtCollection(true) {}
};

}  // namespace rivulet
