// Arbitrary text as a scenario file of rivulet-host. The reader must either give a scenario that holds
// together or throw host::ScenarioError naming the file; any other exception, crash or undefined behaviour is
// a finding. The file is written in a folder of this process beside a "decks" folder holding the example
// decks' names, so that the example scenarios' case paths are found.
#include <stdlib.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "ScratchFolder.h"
#include "host/Scenario.h"

namespace fs = std::filesystem;

namespace {

struct Folder {
    ScratchFolder scratch{"rivulet-scenario"};
    fs::path root = scratch.Path();
    fs::path file;
    Folder() {
        for (const char* deck : {"decks/spe1/SPE1CASE1.DATA", "decks/spe1/SPE1CASE2.DATA",
                                 "decks/spe3/SPE3CASE1.DATA", "decks/spe9/SPE9_CP.DATA"}) {
            fs::create_directories((root / deck).parent_path());
            std::ofstream(root / deck) << "RUNSPEC\n";
        }
        fs::create_directories(root / "scenario");
        file = root / "scenario" / "coupled.toml";
    }
};

const Folder& TheFolder() {
    static const Folder folder;
    return folder;
}

void Check(const host::Scenario& s) {
    if (!s.caseFile.is_absolute()) __builtin_trap();
    if (s.start && !(*s.start < s.end)) __builtin_trap();
    if (s.dates.empty() && !(s.stepDays > 0.0)) __builtin_trap();
    for (std::size_t i = 0; i < s.dates.size(); ++i) {
        if (i > 0 && !(s.dates[i - 1] < s.dates[i])) __builtin_trap();
        if (s.start && !(*s.start < s.dates[i])) __builtin_trap();
        if (s.end < s.dates[i]) __builtin_trap();
    }
    for (double value : {s.stepDays, s.manifoldPressure, s.injectionPressure})
        if (!std::isfinite(value)) __builtin_trap();
    if (s.wells.empty()) __builtin_trap();
    for (std::size_t i = 0; i < s.wells.size(); ++i) {
        const host::NetworkWell& well = s.wells[i];
        if (well.name.empty()) __builtin_trap();
        for (std::size_t k = 0; k < i; ++k)
            if (s.wells[k].name == well.name) __builtin_trap();
        if (!std::isfinite(well.tubing.hydrostatic) || !std::isfinite(well.tubing.friction)) __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Folder& folder = TheFolder();
    {
        std::ofstream out(folder.file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        if (!out) __builtin_trap();
    }
    try {
        Check(host::ReadScenario(folder.file));
    } catch (const host::ScenarioError& e) {
        // The message starts with the file's name.
        if (std::string(e.what()).rfind(folder.file.string(), 0) != 0) __builtin_trap();
    }
    return 0;
}
