#include "dataserver/IprPoint.h"

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"

namespace rivulet {

IprPoint& IprPoint::CopyFrom(const IprPoint& other) {
    *this = other;
    return *this;
}

std::int32_t IprPoint::StreamData(BinaryArchive* archive, std::int32_t /*version*/) {
    if (archive == nullptr) return 1;
    IprPoint point = *this;
    archive->Transfer(point.name_);
    archive->Transfer(point.Pressure);
    archive->Transfer(point.GasRate);
    archive->Transfer(point.OilRate);
    archive->Transfer(point.WaterRate);
    archive->Transfer(point.Temperature);
    archive->Transfer(point.MassFlow);
    if (!archive->IsStoring()) *this = point;
    return 0;
}

std::int32_t IprPoint::ProcessAccessString(CExtDataServerTag& tag, std::uint32_t /*unused*/) {
    if (!tag.MatchName(name_.c_str())) return 0;
    // Worked out afresh on each call, so a write to it is lost.
    double liquidRate = OilRate + WaterRate;
    const bool bound = tag.BindDouble("GasRate", GasRate) || tag.BindDouble("LiquidRate", liquidRate) ||
                       tag.BindDouble("OilRate", OilRate) || tag.BindDouble("BHP", Pressure) ||
                       tag.BindDouble("MassFlow", MassFlow) || tag.BindDouble("Temperature", Temperature) ||
                       tag.BindDouble("WaterRate", WaterRate);
    return bound ? 1 : 0;
}

}  // namespace rivulet
