#include "dataserver/TNavUnitSystem.h"

#include <strings.h>
#include <array>

#include "common/Trim.h"

namespace rivulet {

namespace {

struct SystemTable {
    const char* words[14];
    double factors[6];
};

// Words: name, length, time, mass, density, pressure, pressure difference, temperature, liquid volume, gas
// volume, reservoir volume, liquid rate, gas rate, reservoir rate. Factors: gas, liquid, pressure, pressure
// offset, temperature, temperature offset.
const std::array<SystemTable, 4> kSystems{{
    {{"FIELD", "ft", "day", "lb", "lb/scf", "psia", "psi", "F", "STB", "Mscf", "RB", "STB/day", "Mscf/day",
      "RB/day"},
     {0.001, 1.0, 1.0, -14.6959, 1.0, 0.0}},
    {{"METRIC", "m", "day", "kg", "kg/m3", "barsa", "bars", "K", "m3", "m3", "m3", "m3/day", "m3/day",
      "m3/day"},
     {3.531466e-05, 6.289811, 14.50377, -14.6959, 1.8, -459.67}},
    {{"SI", "m", "s", "kg", "kg/m3", "Pa", "Pa", "K", "m3", "m3", "m3", "m3/s", "m3/s", "m3/s"},
     {3.531466e-05, 6.289811, 0.000145037738, -14.6959, 1.8, -459.67}},
    {{"LAB", "cm", "hr", "g", "g/scc", "atma", "atm", "K", "scc", "scc", "rcc", "scc/hr", "scc/hr", "rcc/hr"},
     {3.531466e-11, 6.289811e-06, 14.6959, -14.6959, 1.8, -459.67}},
}};

bool NoValue(double value) {
    return value > TNavUnitSystem::kNoValueThreshold;
}

}  // namespace

TNavUnitSystem::TNavUnitSystem() {
    SetUp(std::string());
}

TNavUnitSystem& TNavUnitSystem::operator=(const TNavUnitSystem& other) {
    if (this != &other) SetUp(other.name);
    return *this;
}

void TNavUnitSystem::SetUp(const std::string& systemName) {
    const std::string wanted = Trimmed(systemName);
    const SystemTable* table = nullptr;
    for (const SystemTable& system : kSystems) {
        if (strcasecmp(wanted.c_str(), system.words[0]) == 0) table = &system;
    }
    std::string* words[] = {&name,
                            &length,
                            &time,
                            &mass,
                            &density,
                            &pressure,
                            &pressureDifference,
                            &temperature,
                            &liquidVolume,
                            &gasVolume,
                            &reservoirVolume,
                            &liquidRate,
                            &gasRate,
                            &reservoirRate};
    double* factors[] = {&gasFactor,      &liquidFactor,      &pressureFactor,
                         &pressureOffset, &temperatureFactor, &temperatureOffset};
    for (int k = 0; k < 14; ++k) *words[k] = table != nullptr ? table->words[k] : "";
    for (int k = 0; k < 6; ++k) *factors[k] = table != nullptr ? table->factors[k] : -1.0;
}

bool TNavUnitSystem::NameOfSimulatorValue(int value, std::string& systemName) {
    static const char* const kNames[] = {"SI", "METRIC", "FIELD", "LAB"};
    if (value < 0 || value > 3) return false;
    systemName = kNames[value];
    return true;
}

double TNavUnitSystem::toFieldGasRate(double v) const {
    return NoValue(v) ? kNoValue : v * gasFactor;
}

double TNavUnitSystem::fromFieldGasRate(double v) const {
    return NoValue(v) ? kNoValue : v / gasFactor;
}

double TNavUnitSystem::toFieldLiquidRate(double v) const {
    return NoValue(v) ? kNoValue : v * liquidFactor;
}

double TNavUnitSystem::fromFieldLiquidRate(double v) const {
    return NoValue(v) ? kNoValue : v / liquidFactor;
}

double TNavUnitSystem::toFieldPressure(double v) const {
    return NoValue(v) ? kNoValue : v * pressureFactor + pressureOffset;
}

double TNavUnitSystem::fromFieldPressure(double v) const {
    return NoValue(v) ? kNoValue : (v - pressureOffset) / pressureFactor;
}

double TNavUnitSystem::toFieldTemperature(double v) const {
    return NoValue(v) ? kNoValue : v * temperatureFactor + temperatureOffset;
}

double TNavUnitSystem::fromFieldTemperature(double v) const {
    return NoValue(v) ? kNoValue : (v - temperatureOffset) / temperatureFactor;
}

double TNavUnitSystem::toFieldTemperatureDifference(double v) const {
    return NoValue(v) ? kNoValue : v * temperatureFactor;
}

double TNavUnitSystem::fromFieldTemperatureDifference(double v) const {
    return NoValue(v) ? kNoValue : v / temperatureFactor;
}

double TNavUnitSystem::toFieldMass(double v) const {
    if (NoValue(v)) return kNoValue;
    if (IsField()) return v;
    return (name == "LAB" ? v * 0.001 : v) * 2.2046;
}

double TNavUnitSystem::toFieldGasDensity(double v) const {
    if (NoValue(v)) return kNoValue;
    return IsField() ? v * 1e6 : toFieldMass(v) / toFieldGasRate(1.0);
}

double TNavUnitSystem::toFieldLiquidDensity(double v) const {
    if (NoValue(v)) return kNoValue;
    return IsField() ? v * 5.61458341 : toFieldMass(v) / toFieldLiquidRate(1.0);
}

double TNavUnitSystem::AirDensity() const {
    if (IsField()) return 0.07636;
    return name == "LAB" ? 0.001225 : 1.225;
}

double TNavUnitSystem::WaterDensity() const {
    if (IsField()) return 62.426;
    return name == "LAB" ? 0.9991026 : 999.1026;
}

void TNavUnitSystem::PressureLimits(double& lower, double& upper) const {
    lower = IsSet() ? fromFieldPressure(0.0) : 0.0;
    upper = IsSet() ? fromFieldPressure(1.46959e7) : 1.46959e7;
}

}  // namespace rivulet
