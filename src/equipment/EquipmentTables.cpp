#include "equipment/EquipmentTables.h"

namespace rivulet {

std::vector<EquipVarSpec> FieldVariableTable(const TNavUnitSystem& u) {
    return {
        {"Gas rate", "GasProductionRate", u.gasRate, false},
        {"Oil rate", "OilProductionRate", u.liquidRate, false},
        {"Water rate", "WaterProductionRate", u.liquidRate, false},
        {"Gas inj rate", "GasInjectionRate", u.gasRate, false},
        {"Water inj rate", "WaterInjectionRate", u.liquidRate, false},
        {"Cum injected gas", "GasInjectionTotal", u.gasVolume, false},
        {"Cum injected water", "WaterInjectionTotal", u.liquidVolume, false},
        {"Cum gas", "GasProductionTotal", u.gasVolume, false},
        {"Cum oil", "OilProductionTotal", u.liquidVolume, false},
        {"Cum water", "WaterProductionTotal", u.liquidVolume, false},
    };
}

std::vector<EquipVarSpec> WellVariableTable(const TNavUnitSystem& u) {
    return {
        {"Name", "Label", "", false},
        {"Status", "Status", "", false},
        {"Cum gas", "CumGas", u.gasVolume, false},
        {"Cum liquid", "CumLiquid", u.liquidVolume, false},
        {"Cum oil", "CumOil", u.liquidVolume, false},
        {"Cum RC liquid", "CumRcLiquid", u.reservoirVolume, false},
        {"Cum water", "CumWater", u.liquidVolume, false},
        {"Gas rate", "GasRate", u.gasRate, false},
        {"Liquid rate", "LiquidRate", u.liquidRate, false},
        {"Oil rate", "OilRate", u.liquidRate, false},
        {"RC liquid rate", "RcLiquidRate", u.reservoirRate, false},
        {"Water rate", "WaterRate", u.liquidRate, false},
        {"Pressure", "Bhp", u.pressure, false},
        {"Tubing head pressure", "Thp", u.pressure, false},
        {"Temperature", "Temperature", u.temperature, false},
        {"Efficiency", "Efficiency", "", false},
        {"Gas density", "GasDensity", u.density, false},
        {"Oil density", "OilDensity", u.density, false},
        {"Water density", "WaterDensity", u.density, false},
        {"Target status", "TARGET.Status", "", true},
        {"Target efficiency", "TARGET.Efficiency", "", true},
        {"Target pressure", "TARGET.Bhp", u.pressure, true},
        {"Target tubing head pressure", "TARGET.Thp", u.pressure, true},
        {"Target gas rate", "TARGET.GasRate", u.gasRate, true},
        {"Target liquid rate", "TARGET.LiquidRate", u.liquidRate, true},
        {"Target oil rate", "TARGET.OilRate", u.liquidRate, true},
        {"Target water rate", "TARGET.WaterRate", u.liquidRate, true},
        // Published as writeable, though a well takes no injection temperature by access string.
        {"Injection temperature", "TARGET.Temperature", u.temperature, true},
    };
}

std::vector<EquipVarSpec> ComponentVariableTable(const TNavUnitSystem& u) {
    const std::string component = "HCCOMPONENT[{?}].";
    const std::string moles = TNavUnitSystem::MolesWord();
    return {
        {"Acentric factor", component + "AcentricFactor", "", false},
        {"Critical pressure", component + "CriticalPressure", u.pressure, false},
        {"Critical temperature", component + "CriticalTemperature", u.temperature, false},
        {"Critical volume", component + "CriticalVolume", u.CriticalVolumeWord(), false},
        {"Cum gas moles", component + "CumGasMoles", moles, false},
        {"Cum Hc mole fraction", component + "CumHcMoleFraction", "", false},
        {"Cum liquid moles", component + "CumLiquidMoles", moles, false},
        {"Gas molar rate", component + "GasMolarRate", u.MolarRateWord(), false},
        // Published as writeable; a write by access string goes through another name.
        {"Hc mole fraction", component + "HcMoleFraction", "", true},
        {"Liquid molar rate", component + "LiquidMolarRate", u.MolarRateWord(), false},
        {"Molecular weight", component + "MolecularWeight", "", false},
        {"Omega A", component + "OmegaA", "", false},
        {"Omega B", component + "OmegaB", "", false},
        {"Parachor", component + "Parachor", "", false},
        {"Shift", component + "Shift", "", false},
    };
}

}  // namespace rivulet
