// Arbitrary access strings and values for GetVar, SetVar and DoCmd of a model that has three wells and a
// compositional fluid, in a run state chosen by the input. Any crash, leak or undefined behaviour is a
// finding.
#include <cstddef>
#include <cstdint>
#include <string>

#include "driver/tests/ExtModelProbe.h"

using namespace rivulet;

namespace {

void Ignore(const char*, void*) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::uint8_t control = data[0];
    const std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
    // The access string runs to the first newline; the value to set is what follows it.
    const std::size_t split = rest.find('\n');
    const std::string access = rest.substr(0, split);
    const std::string value = split == std::string::npos ? std::string() : rest.substr(split + 1);

    CExtModel model;
    if (control & 0x04) {
        // A compositional fluid of two components; a producer, an injector under the network, and a well
        // of no type.
        ReservoirData& reservoir = ExtModelProbe::MakeReservoir(model);
        reservoir.fluid.SetModelType(3);
        reservoir.fluid.eosRegionCount = 1;
        reservoir.fluid.eosNames = {"PR"};
        reservoir.fluid.SetHcNames({"C1", "CO2"});
        for (const char* name : {"P1", "I1", ""}) {
            WellData well(&reservoir.fluid);
            well.name = name;
            well.eosRegion = 1;
            well.composition.SetHcCount(name[0] == 'P' ? 2 : 0);
            if (name[0] != '\0')
                well.SetWellStatus(name[0] == 'P' ? kStatusOpenProducer : kStatusOpenInjector);
            well.underVaneControl = name[0] == 'I' && (control & 0x80) != 0;
            reservoir.wells.Add(well);
        }
    }
    if (control & 0x08) {
        ScriptedSession& session = ExtModelProbe::InstallSession(model);
        session.SetJob(true, (control & 0x10) != 0);
    }
    ExtModelProbe::SetRunInitialised(model, (control & 0x20) != 0);
    if (control & 0x40) ExtModelProbe::SetCallbacks(model, Ignore, nullptr);
    ExtModelProbe::SetDates(model, OleDate::FromDays(42000.5), OleDate::FromDays(42010.25));

    tErrorRecord err{};
    switch (control & 0x03) {
        case 0: {
            tGetVarData get{};
            get.pszAccess = access.c_str();
            model.GetVar(&get, &err);
            break;
        }
        case 1: {
            tSetVarData set{};
            set.pszAccess = access.c_str();
            set.pszValue = value.c_str();
            model.SetVar(&set, &err);
            break;
        }
        default:
            model.DoCmd(access.c_str(), &err);
            break;
    }
    // The record's text is always terminated within its bytes.
    bool terminated = false;
    for (char c : err.szText) terminated = terminated || c == '\0';
    if (!terminated) __builtin_trap();
    return 0;
}
