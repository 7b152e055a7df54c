#include "dataserver/IprTable.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "common/BinaryArchive.h"
#include "dataserver/ExtDataServerTag.h"
#include "dataserver/IprPoint.h"

namespace rivulet {
namespace {

constexpr double kRowZeroRate = 5e-5;

bool AnyAboveZero(const std::vector<double>& values) {
    return std::any_of(values.begin(), values.end(), [](double v) { return v > 0.0; });
}

bool AllEqual(const std::vector<double>& values, double expected) {
    return std::all_of(values.begin(), values.end(), [expected](double v) { return v == expected; });
}

double SumNotBelowZero(const std::vector<double>& values) {
    double sum = 0.0;
    for (double v : values) sum += v;
    return std::max(sum, 0.0);
}

// The vectors are public and may disagree in length; a missing entry reads as 0.
double EntryOrZero(const std::vector<double>& values, std::size_t index) {
    return index < values.size() ? values[index] : 0.0;
}

}  // namespace

IprTable& IprTable::CopyFrom(const IprTable& other) {
    *this = other;
    return *this;
}

void IprTable::Clear() {
    for (auto* values : {&GasRates, &OilRates, &WaterRates, &Pressures, &Temperatures, &MassFlows}) {
        values->clear();
    }
}

void IprTable::FillFromPoint(const IprPoint& point, std::size_t count) {
    const std::array<std::pair<std::vector<double>*, double>, 6> targets = {{
        {&GasRates, point.GasRate},
        {&OilRates, point.OilRate},
        {&WaterRates, point.WaterRate},
        {&Pressures, point.Pressure},
        {&Temperatures, point.Temperature},
        {&MassFlows, point.MassFlow},
    }};
    const bool sameLength = count == Length();
    for (const auto& [values, value] : targets) {
        if (sameLength) {
            std::fill(values->begin(), values->end(), value);
        } else {
            values->assign(count, value);
        }
    }
}

void IprTable::Zero() {
    for (auto* values : {&GasRates, &OilRates, &WaterRates, &Pressures, &Temperatures, &MassFlows}) {
        std::fill(values->begin(), values->end(), 0.0);
    }
}

bool IprTable::HasGas() const {
    return AnyAboveZero(GasRates);
}

bool IprTable::HasLiquid() const {
    return AnyAboveZero(OilRates) || AnyAboveZero(WaterRates);
}

bool IprTable::IsGasRatioAbove(double limit) const {
    const double liquid = SumNotBelowZero(OilRates) + SumNotBelowZero(WaterRates);
    if (liquid <= 1.0) return true;
    return SumNotBelowZero(GasRates) * 1e6 / liquid > limit;
}

bool IprTable::IsFlat() const {
    if (Pressures.empty()) return true;
    return AllEqual(GasRates, 0.0) && AllEqual(OilRates, 0.0) && AllEqual(WaterRates, 0.0) &&
           AllEqual(MassFlows, 0.0) && AllEqual(Pressures, Pressures.front()) &&
           (Temperatures.empty() || AllEqual(Temperatures, Temperatures.front()));
}

bool IprTable::IsRowZero(std::size_t row) const {
    return row < Length() && EntryOrZero(GasRates, row) < kRowZeroRate &&
           EntryOrZero(OilRates, row) < kRowZeroRate && EntryOrZero(WaterRates, row) < kRowZeroRate;
}

std::int32_t IprTable::StreamData(BinaryArchive* archive, std::int32_t /*version*/) {
    if (archive == nullptr) return 1;
    if (archive->IsStoring()) {
        auto count = static_cast<std::int32_t>(Length());
        archive->Transfer(count);
        for (std::size_t i = 0; i < Length(); ++i) {
            for (const auto* values :
                 {&Pressures, &GasRates, &OilRates, &WaterRates, &Temperatures, &MassFlows}) {
                double value = EntryOrZero(*values, i);
                archive->Transfer(value);
            }
        }
        return 0;
    }
    // A count below 1 empties the table. Each point is six doubles, and a count the stream cannot hold fails
    // before anything is read.
    std::int32_t stored = 0;
    archive->Transfer(stored);
    const std::size_t count = stored > 0 ? static_cast<std::size_t>(stored) : 0;
    archive->CheckCount(count, 6 * sizeof(double), BinaryArchive::kMaxElements, sizeof(double));
    IprTable loaded;
    for (std::size_t i = 0; i < count; ++i) {
        for (auto* values : {&loaded.Pressures, &loaded.GasRates, &loaded.OilRates, &loaded.WaterRates,
                             &loaded.Temperatures, &loaded.MassFlows}) {
            double value = 0.0;
            archive->Transfer(value);
            values->push_back(value);
        }
    }
    *this = std::move(loaded);
    return 0;
}

std::int32_t IprTable::ProcessAccessString(CExtDataServerTag& tag, std::uint32_t /*unused*/) {
    if (!tag.MatchName("IprTable")) return 0;
    const bool bound =
        tag.BindDoubleElement("GasRates", GasRates) || tag.BindDoubleElement("OilRates", OilRates) ||
        tag.BindDoubleElement("WaterRates", WaterRates) || tag.BindDoubleElement("Pressures", Pressures) ||
        tag.BindDoubleElement("Temperatures", Temperatures) || tag.BindDoubleElement("MassFlows", MassFlows);
    return bound ? 1 : 0;
}

}  // namespace rivulet
