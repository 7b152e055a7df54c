// What a well is asked to do: rates, pressures, temperature and efficiency. A negative rate or pressure
// means "not set".
#pragma once

#include <cstdint>
#include <string>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

class OperatingPoint : public CExtDataServerObject {
  public:
    // Rate phases, as in a well's injection phase.
    enum Phase : int { kWater = 0, kOil = 1, kGas = 2, kNone = 3 };

    // Starts clear: all -1 but efficiency, which is 1.0.
    double GasRate = -1.0;
    double OilRate = -1.0;
    double WaterRate = -1.0;
    double LiquidRate = -1.0;
    double Efficiency = 1.0;
    double Bhp = -1.0;
    double Thp = -1.0;
    double Temperature = -1.0;

    // Copies the eight values.
    OperatingPoint& CopyFrom(const OperatingPoint& other);

    // The phase of the rates above 0: gas only, oil only, or water and liquid only; kNone for no rate or
    // any other mix.
    int RatePhase() const;
    bool AnyRateSet() const;
    // No rate above 0 outside `phase`; water and liquid both belong to kWater.
    bool FitsPhase(int phase) const;
    bool IsNothingSet() const;
    // No rate above 0 and at least one exactly 0.
    bool IsZeroRate() const;
    // Rates, and pressures, that are not below 0.
    int RateCount() const;
    int PressureCount() const;
    // Every negative rate becomes -1.
    void Normalise();
    void ClearRates();
    void ClearRatesAndPressures();
    // All -1, efficiency 1.0.
    void Clear();

    // A flag word, then each value that the flags do not settle: a value at most 0 comes back as -1 or 0,
    // and an efficiency outside [0, 1) as 1.0. Streams before version 5 hold no pressures, and before
    // version 3 no efficiency. A load that runs short leaves the point as it was.
    std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) override;
    std::string GetDataServerName() const override { return "OperatingPoint"; }
    // No name of its own is read: the point is reached under its owner's name. On a hit the declared name
    // is written to `nameOut` when given.
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::string* nameOut = nullptr);
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused) override;
};

}  // namespace rivulet
