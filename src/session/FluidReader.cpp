#include "session/FluidReader.h"

#include <utility>
#include <vector>

#include "common/FormatText.h"
#include "dataserver/FluidProperties.h"
#include "dataserver/TNavUnitSystem.h"
#include "session/ApiLog.h"

namespace rivulet {

namespace {

using ApiError = tNavigator_API_RMA_error_t;

// A failed call sets the message in the words of `format`, with the simulator's description in place of
// its %s, and logs it.
bool Succeeded(const StaticRequester& requester, const ApiError& result, const char* format,
               std::string& error) {
    if (result.id() == 0) return true;
    error = FormatText(format, result.description());
    apilog::Error(requester.Log, error.c_str());
    return false;
}

// Writes the call's banner and makes the call.
template <class Call>
bool Read(const StaticRequester& requester, const char* banner, const char* format, Call call,
          std::string& error) {
    apilog::Call(requester.Log, banner);
    return Succeeded(requester, call(*requester.Requester), format, error);
}

bool ReadCount(const StaticRequester& requester, const char* banner, const char* format,
               tNavigator_API_RMA_error_t (tNavigator_API_RMA_static_data_requester_t::*read)(
                   int*, tNavigator_API_RMA_request_t*),
               int& count, std::string& error) {
    count = 0;
    return Read(
        requester, banner, format, [&](auto& simulator) { return (simulator.*read)(&count, nullptr); },
        error);
}

std::vector<std::string> Texts(const std::vector<tNavigator_API_RMA_string>& strings) {
    std::vector<std::string> texts;
    texts.reserve(strings.size());
    for (const tNavigator_API_RMA_string& text : strings) texts.emplace_back(text.c_str());
    return texts;
}

std::size_t Size(int count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

}  // namespace

bool ReadMathModelName(const StaticRequester& requester, std::string& name, std::string& error) {
    static const char* const kNames[] = {"IsothermalBlackOil", "ThermalBlackOil", "Compositional",
                                         "ThermalCompositional"};
    tNavigator_API_RMA_math_model_type_t type{};
    if (!Read(
            requester, "get_math_model_type(math_model_type*)", "Error when reading mathematical model: <%s>",
            [&](auto& simulator) { return simulator.get_math_model_type(&type, nullptr); }, error)) {
        return false;
    }
    const int value = static_cast<int>(type);
    name = value >= 0 && value <= 3 ? kNames[value] : "";
    return true;
}

bool ReadUnitSystem(const StaticRequester& requester, TNavUnitSystem& units, std::string& error) {
    tNavigator_API_RMA_unit_system_t value{};
    // The banner names another call; support logs have always shown it so.
    if (!Read(
            requester, "compos__get_water_sc_densities(unit_system_t*)",
            "Error when reading unit system: <%s>",
            [&](auto& simulator) { return simulator.unit_system(&value, nullptr); }, error)) {
        return false;
    }
    std::string name;
    if (!TNavUnitSystem::NameOfSimulatorValue(static_cast<int>(value), name)) {
        error = "Invalid unit system";
        return false;
    }
    units.SetUp(name);
    return true;
}

bool GetFluid(const StaticRequester& requester, const std::string& mathModelName, FluidProperties* target,
              std::string& error) {
    if (target == nullptr) {
        error = "A null FluidProperties object was passed to GetFluid()";
        return false;
    }
    using Requester = tNavigator_API_RMA_static_data_requester_t;
    std::ostream* log = requester.Log;
    target->Clear();
    const bool blackOil = FluidProperties::IsBlackOilModelName(mathModelName);
    const bool plainCompositional = FluidProperties::IsPlainCompositionalModelName(mathModelName);

    int miscible = 0;
    if (!blackOil && !ReadCount(requester, "compos__is_miscible_option_enabled(int*)",
                                "Error when reading the miscible option: <%s>",
                                &Requester::compos__is_miscible_option_enabled, miscible, error)) {
        return false;
    }
    target->SetModelType(FluidProperties::ModelTypeOf(mathModelName, miscible != 0));

    int pvtRegions = 0;
    if (!ReadCount(requester, "get_number_of_pvt_regions(int*)",
                   "Error when reading the number of PVT regions: <%s>",
                   &Requester::get_number_of_pvt_regions, pvtRegions, error)) {
        return false;
    }
    target->SetPvtRegionCount(pvtRegions);

    if (blackOil) {
        apilog::Call(log, "black_oil__get_sc_densities(double*)");
        if (target->blackOilDensities.empty()) {
            error = "GetBlackOilDensities() was passed a null output array";
            apilog::Error(log, error.c_str());
            return false;
        }
        const ApiError result =
            requester.Requester->black_oil__get_sc_densities(target->blackOilDensities.data(), nullptr);
        return Succeeded(requester, result, "Error when reading black oil densities: <%s>", error);
    }

    int eosRegions = 0;
    if (!ReadCount(requester, "compos__get_number_of_eos_regions(int*)",
                   "Error when reading the number of EOS regions: <%s>",
                   &Requester::compos__get_number_of_eos_regions, eosRegions, error)) {
        return false;
    }
    target->eosRegionCount = eosRegions > 0 ? eosRegions : 0;
    std::vector<tNavigator_API_RMA_eos_type_t> eosTypes(Size(eosRegions), TNAV_EOS_PR);
    // The types are read for every model but "Compositional", whose regions all keep type 0.
    if (!plainCompositional &&
        !Read(
            requester, "isotherm_compos__get_eos_types(eos_type_t*)", "Error when reading EOS types: <%s>",
            [&](Requester& simulator) {
                return simulator.isotherm_compos__get_eos_types(eosTypes.data(), nullptr);
            },
            error)) {
        return false;
    }
    // Only "Compositional" names its regions' equations of state: PR throughout, as no types were read.
    target->eosNames.clear();
    for (const tNavigator_API_RMA_eos_type_t type : eosTypes) {
        target->eosNames.emplace_back(plainCompositional ? FluidProperties::EosTypeName(type) : "");
    }

    int hcCount = 0;
    int waterCount = 0;
    if (!ReadCount(requester, "compos__get_number_of_hydrocarbon_components(int*)",
                   "Error when reading the number of hydrocarbon components: <%s>",
                   &Requester::compos__get_number_of_hydrocarbon_components, hcCount, error) ||
        !ReadCount(requester, "compos__get_number_of_water_components(int*)",
                   "Error when reading the number of water components: <%s>",
                   &Requester::compos__get_number_of_water_components, waterCount, error)) {
        return false;
    }

    {
        std::vector<tNavigator_API_RMA_string> names(Size(hcCount));
        if (!Read(
                requester, "compos__get_hc_component_names(tNavigator_API_RMA_string*)",
                "Error when reading hydrocarbon names: <%s>",
                [&](Requester& simulator) {
                    return simulator.compos__get_hc_component_names(names.data(), nullptr);
                },
                error)) {
            return false;
        }
        target->SetHcNames(Texts(names));
    }

    if (target->propertyCount >= 1) {
        // The model's list in the simulator's own enumeration, by the same numbers.
        std::vector<tNavigator_API_RMA_component_property_t> properties;
        for (std::int32_t p = 0; p < target->propertyCount; ++p) {
            properties.push_back(
                static_cast<tNavigator_API_RMA_component_property_t>(target->propertyList[p]));
        }
        apilog::Call(log, "compos__get_component_properties(component_property_t*, int, double*)");
        if (log != nullptr) *log << "component_property_t*\nint = " << target->propertyCount << "\ndouble*\n";
        const ApiError result = requester.Requester->compos__get_component_properties(
            properties.data(), target->propertyCount, target->componentProperties.data(), nullptr);
        if (!Succeeded(requester, result, "Error when reading hydrocarbon properties: <%s>", error))
            return false;
    }

    if (plainCompositional &&
        !Read(
            requester, "isotherm_compos__get_component_binary_interaction_coefficients(double*)",
            "Error when reading hydrocarbon binary interaction coefficients: <%s>",
            [&](Requester& simulator) {
                return simulator.isotherm_compos__get_component_binary_interaction_coefficients(
                    target->interactionCoefficients.data(), nullptr);
            },
            error)) {
        return false;
    }

    {
        std::vector<tNavigator_API_RMA_string> names(Size(waterCount));
        if (!Read(
                requester, "compos__get_water_component_names(tNavigator_API_RMA_string*)",
                "Error when reading water names: <%s>",
                [&](Requester& simulator) {
                    return simulator.compos__get_water_component_names(names.data(), nullptr);
                },
                error)) {
            return false;
        }
        target->waterNames = Texts(names);
    }

    std::vector<double> waterDensities(Size(target->pvtRegionCount), 0.0);
    if (!Read(
            requester, "compos__get_water_sc_densities(double*)", "Error when reading water densities: <%s>",
            [&](Requester& simulator) {
                return simulator.compos__get_water_sc_densities(waterDensities.data(), nullptr);
            },
            error)) {
        return false;
    }
    target->waterDensities = std::move(waterDensities);
    return true;
}

}  // namespace rivulet
