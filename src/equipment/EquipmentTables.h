// The variables the Model document publishes for the field, for each well and for each hydrocarbon
// component of a well, with the unit words of the model's unit system.
#pragma once

#include <vector>

#include "dataserver/TNavUnitSystem.h"
#include "equipment/XmlEquipment.h"

namespace rivulet {

// Tags behind "FIELD.".
std::vector<EquipVarSpec> FieldVariableTable(const TNavUnitSystem& units);
// Tags behind "WELL[{name}].".
std::vector<EquipVarSpec> WellVariableTable(const TNavUnitSystem& units);
// Tags behind "WELL[{name}].", each holding "?" where the component's name goes.
std::vector<EquipVarSpec> ComponentVariableTable(const TNavUnitSystem& units);

}  // namespace rivulet
