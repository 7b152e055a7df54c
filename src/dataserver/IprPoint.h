// One point of an inflow curve, named at construction: the rates, pressure, temperature and mass flow of a
// well at that pressure.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

class IprPoint : public CExtDataServerObject {
  public:
    explicit IprPoint(std::string name) : name_(std::move(name)) {}

    double GasRate = 0.0;
    double OilRate = 0.0;
    double WaterRate = 0.0;
    double Pressure = 0.0;
    double Temperature = 0.0;
    double MassFlow = 0.0;

    // Copies the name as well as the values.
    IprPoint& CopyFrom(const IprPoint& other);

    // The name, then pressure, gas, oil, water, temperature and mass flow. A load that runs short leaves
    // the point as it was.
    std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) override;
    std::string GetDataServerName() const override { return name_; }
    // "<name>.GasRate", ".LiquidRate" (oil plus water, read-only in effect), ".OilRate", ".BHP",
    // ".MassFlow", ".Temperature", ".WaterRate".
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) override;

  private:
    std::string name_;
};

}  // namespace rivulet
