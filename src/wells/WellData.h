// A simulator well as the driver keeps it. Its position in the well list is its simulator index everywhere.
#pragma once

#include <cstdint>
#include <string>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

// Well type codes: 0 undefined, 1 injector, 2 producer.
enum WellType : std::int32_t { kWellUndefined = 0, kWellInjector = 1, kWellProducer = 2 };

class WellData : public CExtDataServerObject {
  public:
    std::string GetDataServerName() const override { return name; }
    // A well's variables are not served by this build: every name after the well's key is left
    // unrecognised.
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) override;
    void CopyFrom(const WellData& other) { *this = other; }

    std::string name;
    std::int32_t wellType = kWellUndefined;
    bool underVaneControl = false;
    bool underTapServerControl = false;
    std::int32_t vaneRateControl = 0;

    // Puts the well under the network's control, taking it from the tap server. Returns true and a warning
    // when the well was under the tap server.
    bool SetUnderVaneControl(std::string& warning);
};

}  // namespace rivulet
