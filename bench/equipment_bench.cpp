// The Model document of a model with ten thousand wells: the description, then the document written to a
// file. Conflux asks for it when its user browses the model's variables.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "driver/tests/ExtModelProbe.h"
#include "equipment/XmlEquipment.h"

namespace rivulet {
namespace {

CExtModel& ModelWithWells(int count) {
    static CExtModel* model = nullptr;
    if (model == nullptr) {
        model = new CExtModel;
        ReservoirData& reservoir = ExtModelProbe::MakeReservoir(*model);
        reservoir.units.SetUp("FIELD");
        for (int i = 0; i < count; ++i) {
            WellData well;
            char name[16];
            std::snprintf(name, sizeof name, "W%05d", i);
            well.name = name;
            well.SetWellStatus(i % 4 == 0 ? kStatusOpenInjector : kStatusOpenProducer);
            reservoir.wells.Add(well);
        }
    }
    return *model;
}

void BM_ModelDocument(benchmark::State& state) {
    CExtModel& model = ModelWithWells(static_cast<int>(state.range(0)));
    const std::string file =
        (std::filesystem::temp_directory_path() / ("rivulet_bench_" + std::to_string(::getpid()) + ".xml"))
            .string();
    for (auto _ : state) {
        CXmlModel description;
        model.GetEquipment(&description, false, {});
        std::string error;
        if (!WriteModelXml(description, file, error)) state.SkipWithError(error.c_str());
    }
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(file));
    std::filesystem::remove(file);
}
BENCHMARK(BM_ModelDocument)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rivulet
