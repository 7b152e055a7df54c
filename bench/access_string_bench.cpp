// Access strings by well key on a model with ten thousand wells: the first well and the last must cost the
// same, and a well's last-tried variable little more than its first.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "driver/tests/ExtModelProbe.h"

namespace rivulet {
namespace {

constexpr int kWellCount = 10000;

std::string WellName(int index) {
    char name[16];
    std::snprintf(name, sizeof name, "W%05d", index);
    return name;
}

CExtModel& ModelWithWells() {
    static CExtModel* model = [] {
        auto* made = new CExtModel;
        WellList& wells = ExtModelProbe::MakeReservoir(*made).wells;
        for (int i = 0; i < kWellCount; ++i) {
            WellData well;
            well.name = WellName(i);
            wells.Add(well);
        }
        ExtModelProbe::InstallSession(*made).SetJob(true, false);
        return made;
    }();
    return *model;
}

// The well's variable is the first its chain tries (0, "IsOpen") or the last (1, "EosRegion").
void BM_GetVarByWellKey(benchmark::State& state) {
    CExtModel& model = ModelWithWells();
    const std::string access = "TNAVIGATOR.WELL[{" + WellName(static_cast<int>(state.range(0))) + "}]." +
                               (state.range(1) == 0 ? "IsOpen" : "EosRegion");
    tGetVarData data{};
    data.pszAccess = access.c_str();
    tErrorRecord err{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(model.GetVar(&data, &err));
    }
}
BENCHMARK(BM_GetVarByWellKey)->ArgsProduct({{0, kWellCount / 2, kWellCount - 1}, {0, 1}});

void BM_GetVarByWellIndex(benchmark::State& state) {
    CExtModel& model = ModelWithWells();
    const std::string access = "TNAVIGATOR.WELL[" + std::to_string(state.range(0)) + "].IsOpen";
    tGetVarData data{};
    data.pszAccess = access.c_str();
    tErrorRecord err{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(model.GetVar(&data, &err));
    }
}
BENCHMARK(BM_GetVarByWellIndex)->Arg(0)->Arg(kWellCount - 1);

void BM_GetVarCaseVariable(benchmark::State& state) {
    CExtModel& model = ModelWithWells();
    tGetVarData data{};
    data.pszAccess = "TNAVIGATOR.CaseDetails.LinuxQueue";
    tErrorRecord err{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(model.GetVar(&data, &err));
    }
}
BENCHMARK(BM_GetVarCaseVariable);

}  // namespace
}  // namespace rivulet
