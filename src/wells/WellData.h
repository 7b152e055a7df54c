// A simulator well as the driver keeps it. Its position in the well list is its simulator index everywhere.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "dataserver/ExtDataServerObject.h"
#include "dataserver/IprTable.h"
#include "dataserver/OperatingPoint.h"

namespace rivulet {

class FluidProperties;

// Well type codes: 0 undefined, 1 injector, 2 producer.
enum WellType : std::int32_t { kWellUndefined = 0, kWellInjector = 1, kWellProducer = 2 };

// The simulator's well statuses.
enum WellStatus : std::int32_t {
    kStatusNone = 0,
    kStatusOpenProducer = 1,
    kStatusOpenInjector = 2,
    kStatusShut = 3,
    kStatusStop = 4,
    kStatusUnknown = 5
};

// Injection phases: 0 water, 1 oil, 2 gas, 3 none.
enum InjectionPhase : std::int32_t { kPhaseWater = 0, kPhaseOil = 1, kPhaseGas = 2, kPhaseNone = 3 };

// The network's kind of rate control over a well.
enum VaneRateControl : std::int32_t {
    kControlUnset = 0,
    kControlWater = 1,
    kControlLiquid = 2,
    kControlOil = 3,
    kControlGas = 4,
    kControlDefault = 5
};

// The results of one side of a well, production or injection: the first eleven in the order of the read
// lists, then the efficiency and the three surface densities.
struct WellRateRecord {
    enum Index : int {
        kWater = 0,
        kOil = 1,
        kRcLiquid = 2,
        kGas = 3,
        kCumWater = 4,
        kCumOil = 5,
        kCumRcLiquid = 6,
        kCumGas = 7,
        kBhp = 8,
        kThp = 9,
        kTemperature = 10,
        kEfficiency = 11,
        kWaterDensity = 12,
        kOilDensity = 13,
        kGasDensity = 14,
        kSize = 15
    };

    std::array<double, kSize> values{};

    WellRateRecord() { Reset(); }
    // All zero, efficiency 1.0.
    void Reset();
    bool IsDefault() const;
    double& operator[](int index) { return values[static_cast<std::size_t>(index)]; }
    double operator[](int index) const { return values[static_cast<std::size_t>(index)]; }
};

// Component data of a well. `componentParams` holds four blocks of waterCount + hcCount values (liquid
// molar rate, gas molar rate, cumulative liquid moles, cumulative gas moles), water components first; it is
// empty while there is no hydrocarbon component.
struct WellComposition {
    std::int32_t hcCount = 0;
    std::int32_t waterCount = 0;
    std::vector<double> cumFractions;
    std::vector<double> rateFractions;
    std::vector<double> componentParams;

    // Setting a count resizes the fractions (one a hydrocarbon component) and the parameters.
    void SetHcCount(std::int32_t count);
    void SetWaterCount(std::int32_t count);
    // Hydrocarbon component c of block p; -1.0 outside the array.
    double HcParam(int block, int component) const;
    // The share of each hydrocarbon component in the molar rates (or, with no rate fractions, in the
    // cumulative moles); a zero sum leaves zero shares.
    void RecomputeFractions();
    // Rate fractions as RecomputeFractions would give them, without storing them.
    std::vector<double> ComputedRateFractions() const;

  private:
    void SizeParams();
};

class WellData : public CExtDataServerObject {
  public:
    WellData() = default;
    explicit WellData(const FluidProperties* fluidProperties) : fluid(fluidProperties) {}

    std::string GetDataServerName() const override { return name; }
    // A get reads one of the well's variables (model units); a set changes its type, its target or its
    // target status under the write rules and takes the well from the network. Commands are not the well's.
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) override;
    // Name, flags, statuses, records, target, inflow table, regions and composition.
    std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) override;
    void CopyFrom(const WellData& other) { *this = other; }

    // Trims the text and takes off one pair of equal quotes (double or single) around it.
    static std::string CleanWellName(const std::string& raw);
    static const char* StatusText(std::int32_t status);
    static const char* TypeText(std::int32_t type);
    static const char* PhaseText(std::int32_t phase);

    // The status the simulator reports: gives an untyped well its type and zeroes the records when the
    // status changes.
    void SetWellStatus(std::int32_t newStatus);

    // Puts the well under the network's control, taking it from the tap server, with a warning when it
    // was under the tap server. Always true.
    bool SetUnderVaneControl(std::string& warning);
    // Access strings take control, unless the network has it.
    bool SetUnderTapServerControl(std::string& error);
    // Stores the mole fraction of a hydrocarbon component of the well's stream; false with the reason for
    // an index outside the well's components or a fraction outside 0 to 1.
    bool SetHcMoleFraction(std::int32_t component, double fraction, std::string& error);

    bool IsInjector() const { return wellType == kWellInjector; }
    bool IsProducer() const { return wellType == kWellProducer; }
    bool IsOpen() const { return status == kStatusOpenProducer || status == kStatusOpenInjector; }

    // A result by its record index: a producer answers from its production record, an injector from its
    // injection record, an untyped well with the larger of the two. Rates and cumulatives are not below 0.
    double Result(int index) const;
    double GasRate() const { return Result(WellRateRecord::kGas); }
    double OilRate() const { return Result(WellRateRecord::kOil); }
    double WaterRate() const { return Result(WellRateRecord::kWater); }
    double Bhp() const { return Result(WellRateRecord::kBhp); }
    double Thp() const { return Result(WellRateRecord::kThp); }
    double Efficiency() const { return Result(WellRateRecord::kEfficiency); }
    // No value (3.4e35) for a fluid that is not thermal.
    double Temperature() const;
    // Surface density by record index (kWaterDensity, kOilDensity, kGasDensity): the record's value when
    // positive, else the fluid's, else the larger record value.
    double Density(int index) const;

    std::int32_t vaneRateControl = kControlUnset;
    OperatingPoint target;
    std::int32_t targetStatus = kStatusUnknown;
    std::string name;
    std::int32_t status = kStatusUnknown;
    std::int32_t injectionPhase = kPhaseNone;
    std::int32_t wellType = kWellUndefined;
    IprTable ipr;
    WellRateRecord injectionRecord;
    WellRateRecord productionRecord;
    std::array<double, 4> auxRecord{};
    std::int32_t pvtRegion = 0;
    std::int32_t eosRegion = 0;
    WellComposition composition;
    bool underVaneControl = false;
    bool underTapServerControl = false;
    // What the inflow library made of the well's last inflow table: the corrected table's rates over the
    // raw ones, 1 when the table went uncorrected. Not saved with the model.
    double iprCorrection = 1.0;
    const FluidProperties* fluid = nullptr;  // the reservoir's, not owned

  private:
    std::int32_t ReadVariable(CExtDataServerTag& tag) const;
    // "Name", "Label", "VaneRateControl" and "EosRegion".
    std::int32_t ReadIdentity(CExtDataServerTag& tag) const;
    // The variables behind "HcComponent[..]": the component's own, then the well's molar values of it.
    std::int32_t ReadComponentVariable(CExtDataServerTag& tag) const;
    std::int32_t WriteVariable(CExtDataServerTag& tag);
    void WriteWellType(CExtDataServerTag& tag);
    std::int32_t WriteTarget(CExtDataServerTag& tag);
    std::int32_t WriteInjectorTarget(CExtDataServerTag& tag);
    std::int32_t WriteProducerTarget(CExtDataServerTag& tag);
};

}  // namespace rivulet
