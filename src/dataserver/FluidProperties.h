// The fluid description of the simulator's model, read once when the reservoir is created. Read-only through
// access strings; each well takes its surface densities from it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dataserver/ExtDataServerObject.h"

namespace rivulet {

// Hydrocarbon component properties by the simulator's numbers.
enum ComponentProperty : std::int32_t {
    kCriticalTemperature = 0,
    kCriticalPressure = 1,
    kMolecularWeight = 2,
    kAcentricFactor = 3,
    kOmegaA = 4,
    kOmegaB = 5,
    kCriticalVolume = 6,
    kCriticalVolumeForViscosity = 7,
    kShift = 8,
    kParachor = 9,
};

class FluidProperties : public CExtDataServerObject {
  public:
    // Fluid model types: 1 isothermal black oil, 2 thermal black oil, 3 isothermal compositional, 4 thermal
    // compositional, 5 and 6 the same two with the miscible option; 0 when not set.
    static constexpr std::int32_t kLastModelType = 6;

    // "ISOTHERMAL_BLACK_OIL" and so on; the empty text for type 0 or an unknown type.
    static const char* ModelTypeText(std::int32_t type);
    // The model type of a math model name ("IsothermalBlackOil", "ThermalBlackOil", "Compositional",
    // "ThermalCompositional", trimmed, in any case) and the miscible option; 0 for any other name.
    static std::int32_t ModelTypeOf(const std::string& mathModelName, bool miscible);
    static bool IsBlackOilModelName(const std::string& mathModelName);
    // "Compositional" itself, not "ThermalCompositional".
    static bool IsPlainCompositionalModelName(const std::string& mathModelName);
    // "PR", "RK", "SRK", "ZJ" for the simulator's EOS types 0 to 3; the empty text for any other.
    static const char* EosTypeName(std::int32_t type);
    // The name of a component property as access strings know it, such as "CriticalTemperature".
    static const char* PropertyName(std::int32_t property);

    bool IsBlackOil() const { return modelType == 1 || modelType == 2; }
    // Kinds 2, 4 and 6 store a temperature.
    bool IsThermal() const { return modelType == 2 || modelType == 4 || modelType == 6; }
    std::int32_t HcCount() const { return static_cast<std::int32_t>(hcNames.size()); }
    std::int32_t WaterCount() const { return static_cast<std::int32_t>(waterNames.size()); }

    // Empties every array, zeroes the four counts and drops the property list.
    void Clear();
    // Empties the arrays, takes the type's property list and sizes the arrays for it. A type outside 1 to 6
    // clears the object.
    void SetModelType(std::int32_t type);
    // Black-oil models keep three surface densities per PVT region.
    void SetPvtRegionCount(std::int32_t count);
    // Sizes the component properties and, for compositional types, the interaction coefficients, all zero.
    void SetHcNames(std::vector<std::string> names);

    // Where a property stands in the model's list; -1 when the model has no such property.
    std::int32_t PropertyPosition(std::int32_t property) const;
    // The values of one property for every component of a 1-based EOS region; null for black oil, a region
    // below 1, a property the model does not have, or a start outside the array.
    const double* PropertyArray(std::int32_t eosRegion, std::int32_t property) const;
    // The hc by hc square of binary interaction coefficients of a 1-based EOS region; null outside the array.
    const double* InteractionCoefficients(std::int32_t eosRegion) const;
    // The EOS name of a 1-based region; the empty text outside the list.
    std::string EosName(std::int32_t eosRegion) const;

    // Surface densities of a 1-based PVT region; 0.0 outside the arrays. Oil and gas are known to black-oil
    // models only; water comes from the black-oil triples or, for the other models, the water densities.
    double WaterDensity(std::int32_t pvtRegion) const;
    double OilDensity(std::int32_t pvtRegion) const;
    double GasDensity(std::int32_t pvtRegion) const;

    // Reads "[n]" (0-based) or "[{name}]" at the cursor: the component's index, or -1 with the reason in the
    // cursor's error text.
    std::int32_t ResolveComponent(CExtDataServerTag& tag) const;
    // Reads "[n]" (0-based) or "[{EOS name}]" at the cursor: the 1-based region, or 0 with the reason in the
    // cursor's error text.
    std::int32_t ResolveEosRegion(CExtDataServerTag& tag) const;
    // A variable of one component in a 1-based EOS region: its name, or one of its properties.
    std::int32_t ProcessComponentVariable(CExtDataServerTag& tag, std::int32_t eosRegion,
                                          std::int32_t component) const;

    std::string GetDataServerName() const override { return "FluidProperties"; }
    // Serves the fluid variables at the root of the access path; get mode only.
    std::int32_t ProcessAccessString(CExtDataServerTag& tag, std::uint32_t unused = 0) override;
    std::int32_t StreamData(BinaryArchive* archive, std::int32_t version) override;

    std::int32_t modelType = 0;
    std::int32_t eosRegionCount = 0;
    std::int32_t propertyCount = 0;
    std::int32_t pvtRegionCount = 0;
    const ComponentProperty* propertyList = nullptr;  // the type's constant table; null for black oil
    std::vector<std::string> eosNames;                // one per EOS region
    std::vector<std::string> waterNames;              // one per water component
    std::vector<double> waterDensities;               // one per PVT region, compositional models
    std::vector<std::string> hcNames;                 // one per hydrocarbon component
    // hc by hc per EOS region; filled for the isothermal compositional types only.
    std::vector<double> interactionCoefficients;
    // For region r (1-based), list position p and component c: at hc * (r - 1) * propertyCount + hc * p + c.
    std::vector<double> componentProperties;
    std::vector<double> blackOilDensities;  // water, oil, gas per PVT region

  private:
    void ClearArrays();
    void SizeComponentArrays();
};

}  // namespace rivulet
