// The first read of the simulator's model and the refresh at each step.
#include "case/CaseSettings.h"
#include "session/ApiLog.h"
#include "session/JobSession.h"
#include "session/ReservoirData.h"

namespace rivulet {

bool CJobSession::CreateReservoir(std::unique_ptr<ReservoirData>& reservoir,
                                  const std::string& /*connectedWells*/, std::string& error) {
    if (m_pJob == nullptr) {
        error = "The simulator is not running.";
        return false;
    }
    apilog::Text(ApiLog(), "\n*** CreateReservoir ***\n");
    if (!ReadDate(m_pJob, TNAV_TIME_MOMENT_MODEL_START, &m_startDate, error)) return false;
    if (!ReadDate(m_pJob, TNAV_TIME_MOMENT_MODEL_END, &m_endDate, error)) return false;
    // The fluid, the unit system and the wells are read into the new data by the model readers; a model
    // without them is an empty reservoir.
    reservoir = std::make_unique<ReservoirData>();
    return ReadCurrentData(reservoir.get(), error);
}

bool CJobSession::ReadCurrentData(ReservoirData* reservoir, std::string& error) {
    apilog::Text(ApiLog(), "\n*** ReadCurrentData ***\n");
    if (reservoir == nullptr) return false;
    return ReadCurrentDate(nullptr, error);
}

}  // namespace rivulet
