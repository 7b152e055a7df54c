// Words and factors of the model's unit system. The host works in oilfield units with gauge pressure: gas in
// MMscf, liquid in STB, pressure in psig, temperature in degrees F; rates take the volume factors as they
// are, whatever the model's time unit.
#pragma once

#include <string>

namespace rivulet {

class TNavUnitSystem {
  public:
    // A value above this is the simulator's "no value", which every conversion passes on as kNoValue.
    static constexpr double kNoValueThreshold = 3.2e35;
    static constexpr double kNoValue = 3.4e35;

    // Set up with the empty name: empty words and -1.0 factors.
    TNavUnitSystem();
    TNavUnitSystem(const TNavUnitSystem& other) : TNavUnitSystem() { *this = other; }
    virtual ~TNavUnitSystem() = default;
    // Sets the object up again by the other's name; the factors are recomputed, not copied.
    virtual TNavUnitSystem& operator=(const TNavUnitSystem& other);

    // "FIELD", "METRIC", "SI" or "LAB", trimmed and in any case; any other name gives empty words and -1.0
    // factors.
    void SetUp(const std::string& systemName);
    // The name of the simulator's unit system value (0 SI, 1 METRIC, 2 FIELD, 3 LAB); false for another.
    static bool NameOfSimulatorValue(int value, std::string& systemName);
    // A unit system has been set up.
    bool IsSet() const { return gasFactor >= 0.0; }
    bool IsField() const { return name == "FIELD"; }

    double toFieldGasRate(double value) const;
    double fromFieldGasRate(double value) const;
    double toFieldLiquidRate(double value) const;
    double fromFieldLiquidRate(double value) const;
    double toFieldPressure(double value) const;
    double fromFieldPressure(double value) const;
    double toFieldTemperature(double value) const;
    double fromFieldTemperature(double value) const;
    double toFieldTemperatureDifference(double value) const;
    double fromFieldTemperatureDifference(double value) const;
    double toFieldMass(double value) const;           // lb
    double toFieldGasDensity(double value) const;     // lb per MMscf
    double toFieldLiquidDensity(double value) const;  // lb per STB

    // Reference densities at standard conditions, in model units.
    double AirDensity() const;
    double WaterDensity() const;
    // Units built from the words: molar rate ("moles/day" in FIELD), the critical volume of a component
    // ("Mscf/lb.mole" in FIELD) and moles.
    std::string MolarRateWord() const { return "moles/" + time; }
    std::string CriticalVolumeWord() const { return gasVolume + "/" + mass + ".mole"; }
    static const char* MolesWord() { return "moles"; }

    // The host's pressures 0 and 1.46959e7 psig in model units; those values themselves without a unit
    // system.
    void PressureLimits(double& lower, double& upper) const;

    std::string name;
    std::string length;
    std::string time;
    std::string mass;
    std::string density;
    std::string pressure;
    std::string pressureDifference;
    std::string temperature;
    std::string liquidVolume;
    std::string gasVolume;
    std::string reservoirVolume;
    std::string liquidRate;
    std::string gasRate;
    std::string reservoirRate;

    double gasFactor;
    double liquidFactor;
    double pressureFactor;
    double pressureOffset;
    double temperatureFactor;
    double temperatureOffset;
};

}  // namespace rivulet
