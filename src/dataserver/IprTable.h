// The inflow table of a well: one entry per point in each of six vectors of equal length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

class IprPoint;

class IprTable : public CExtDataServerObject {
  public:
    std::vector<double> GasRates;
    std::vector<double> OilRates;
    std::vector<double> WaterRates;
    std::vector<double> Pressures;
    std::vector<double> Temperatures;
    std::vector<double> MassFlows;

    // The number of points, taken from the pressures.
    std::size_t Length() const { return Pressures.size(); }

    IprTable& CopyFrom(const IprTable& other);

    void Clear();
    // With `count` equal to the length every entry takes the point's values; otherwise the table is
    // rebuilt with `count` copies of the point.
    void FillFromPoint(const IprPoint& point, std::size_t count);
    // Every entry becomes 0; the length stays.
    void Zero();
    bool HasGas() const;
    bool HasLiquid() const;
    // Gas to liquid ratio (gas sum * 1e6 / oil plus water sum) above `limit`; a liquid sum of at most 1.0
    // counts as above whatever the limit.
    bool IsGasRatioAbove(double limit) const;
    bool IsGasRatioNotAbove(double limit) const { return !IsGasRatioAbove(limit); }
    // No flow at any point and one pressure and temperature throughout; an empty table is flat.
    bool IsFlat() const;
    // A row that exists and has gas, oil and water rates all below 5e-5.
    bool IsRowZero(std::size_t row) const;

    // An i32 count, then per point pressure, gas, oil, water, temperature and mass flow. A load replaces
    // the whole table, or leaves it as it was when the stream runs short.
    std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) override;
    std::string GetDataServerName() const override { return "IprTable"; }
    // "IprTable.<vector>[n]" for each of the six vectors.
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) override;
};

}  // namespace rivulet
