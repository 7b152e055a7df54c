// The first read of the simulator's model and the refresh of its wells at each step.
#include <sstream>

#include "case/CaseSettings.h"
#include "common/Trim.h"
#include "session/ApiLog.h"
#include "session/FluidReader.h"
#include "session/IprReads.h"
#include "session/JobSession.h"
#include "session/MaxRateDetails.h"
#include "session/ReservoirData.h"

namespace rivulet {

namespace {

// Marks every well of each listed name as under the network's control. An empty name ends the list.
void MarkConnectedWells(WellList& wells, const std::string& connectedWells) {
    std::istringstream lines(connectedWells);
    std::string line;
    while (std::getline(lines, line)) {
        const std::string name = Trimmed(line);
        if (name.empty()) break;
        for (WellData& well : wells) {
            std::string ignored;
            if (well.name == name) well.SetUnderVaneControl(ignored);
        }
    }
}

}  // namespace

bool CJobSession::CreateReservoir(std::unique_ptr<ReservoirData>& reservoir,
                                  const std::string& connectedWells, std::string& error) {
    if (m_pJob == nullptr || !m_pStaticRequester || !m_pWellRequester) {
        error = "The simulator is not running.";
        return false;
    }
    apilog::Text(ApiLog(), "\n*** CreateReservoir ***\n");
    if (!ReadDate(m_pJob, TNAV_TIME_MOMENT_MODEL_START, &m_startDate, error)) return false;
    if (!ReadDate(m_pJob, TNAV_TIME_MOMENT_MODEL_END, &m_endDate, error)) return false;

    // The caller owns the new data from here, so that a failure below leaves it half filled for the
    // caller to destroy.
    reservoir = std::make_unique<ReservoirData>();
    ReservoirData& data = *reservoir;
    std::string mathModel;
    if (!ReadMathModelName(*m_pStaticRequester, mathModel, error)) return false;
    if (!ReadUnitSystem(*m_pStaticRequester, data.units, error)) return false;
    const double lowPressure = data.units.fromFieldPressure(0.0);
    const double highPressure = data.units.fromFieldPressure(14695900.0);
    if (!GetFluid(*m_pStaticRequester, mathModel, &data.fluid, error)) return false;

    WellRequester& requester = *m_pWellRequester;
    if (!requester.ReadWellCount(data.wells, &data.fluid, error)) return false;
    if (!requester.ReadWellNames(data.wells, error)) return false;
    if (!requester.ReadFirstActiveStatuses(data.wells, error)) return false;
    if (!requester.ReadEosRegions(data.fluid.IsBlackOil(), data.wells, error)) return false;
    if (!requester.ReadPvtRegions(data.wells, error)) return false;
    MarkConnectedWells(data.wells, connectedWells);

    if (highPressure > 0.0) requester.defaultInjectorBhp = highPressure;
    if (lowPressure > 0.0) requester.defaultProducerBhp = lowPressure;
    requester.minGasRateCap = data.units.fromFieldGasRate(0.0001);
    requester.minLiquidRateCap = data.units.fromFieldLiquidRate(10.0);
    m_batches = WellParamBatches::ForFluidKind(data.fluid.modelType);
    return ReadCurrentData(reservoir.get(), error);
}

bool CJobSession::ReadCurrentData(ReservoirData* reservoir, std::string& error) {
    apilog::Text(ApiLog(), "\n*** ReadCurrentData ***\n");
    if (reservoir == nullptr) return false;
    if (!ReadCurrentDate(nullptr, error)) return false;
    if (!m_pWellRequester) {
        error = "The simulator is not running.";
        return false;
    }
    if (!ReadWellState(*reservoir, error)) return false;
    PhaseRateTable maxRates(reservoir->wells.Count(), {0.0, 0.0, 0.0});
    PhaseRateTable minRates(reservoir->wells.Count(), {0.0, 0.0, 0.0});
    // From here the batches hold only the wells under the network's control.
    PartitionWells(reservoir->wells, m_batches, true, true);
    if (!ReadInflowTables(*reservoir, maxRates, minRates, error)) return false;
    // A well that does not flow takes the density and composition of its maximum rates, from simulators
    // that can give them.
    if (!SupportsMaxRateDetails) return true;
    if (!ReadDensitiesOfMaxRates(*m_pWellRequester, reservoir->wells, maxRates, error)) return false;
    return ReadCompositionOfMaxRates(*m_pWellRequester, reservoir->fluid.HcCount(), reservoir->wells,
                                     maxRates, reservoir->units, error);
}

bool CJobSession::ReadInflowTables(ReservoirData& reservoir, PhaseRateTable& maxRates,
                                   PhaseRateTable& minRates, std::string& error) {
    static const std::vector<std::int32_t> kNoWells;
    const std::vector<std::int32_t>& injectors = m_batches.injector ? m_batches.injector->wells : kNoWells;
    const std::vector<std::int32_t>& producers = m_batches.producer ? m_batches.producer->wells : kNoWells;
    // Without case settings the default spacing applies.
    const double alpha =
        CaseSettings::IprAlphaValue(m_pCaseSettings != nullptr ? m_pCaseSettings->IprAlpha : -1);
    return ReadIprTables(*m_pWellRequester, reservoir.wells, injectors, producers, reservoir.units, alpha,
                         maxRates, minRates, error);
}

bool CJobSession::ReadWellState(ReservoirData& reservoir, std::string& error) {
    WellRequester& requester = *m_pWellRequester;
    WellList& wells = reservoir.wells;
    if (!requester.ReadStatuses(wells, error)) return false;
    if (!requester.ReadInjectorPhases(wells, error)) return false;
    PartitionWells(wells, m_batches, false, false);
    const bool thermal = reservoir.fluid.IsThermal();

    // One side of each well of a batch: efficiencies, then the list's values into the record. Producer
    // lists end with the three densities, after the temperature in a thermal list.
    auto readBatch = [&](WellParamBatch* batch, WellRateRecord WellData::*side, bool densities) {
        if (batch == nullptr) return true;
        std::vector<double> efficiencies;
        if (!requester.ReadEfficiencies(batch->wells, efficiencies, error)) return false;
        if (!requester.ReadParams(batch->wells, batch->params, batch->paramCount, batch->values.data(),
                                  error)) {
            return false;
        }
        const int firstDensity = thermal ? WellRateRecord::kTemperature + 1 : WellRateRecord::kTemperature;
        for (int k = 0; k < batch->wellCount; ++k) {
            WellRateRecord& record =
                wells[static_cast<std::size_t>(batch->wells[static_cast<std::size_t>(k)])].*side;
            record.Reset();
            record[WellRateRecord::kEfficiency] = efficiencies[static_cast<std::size_t>(k)];
            for (int j = 0; j <= WellRateRecord::kThp; ++j) record[j] = batch->Value(k, j);
            if (thermal) record[WellRateRecord::kTemperature] = batch->Value(k, WellRateRecord::kTemperature);
            for (int j = 0; densities && j < 3; ++j) {
                record[WellRateRecord::kWaterDensity + j] = batch->Value(k, firstDensity + j);
            }
        }
        return true;
    };
    if (!readBatch(m_batches.injector.get(), &WellData::injectionRecord, false)) return false;
    if (!readBatch(m_batches.producer.get(), &WellData::productionRecord, true)) return false;
    return requester.ReadComponentParams(reservoir.fluid.WaterCount(), reservoir.fluid.HcCount(), wells,
                                         error);
}

}  // namespace rivulet
