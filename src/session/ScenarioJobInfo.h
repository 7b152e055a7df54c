// The job slot, job id and host the scheduler gives a scenario run through the environment.
#pragma once

#include <cstdint>
#include <string>

namespace rivulet {

struct ScenarioJobInfo {
    std::int32_t jobSlot = -1;  // "QNC_JOBSLOT"; -1 when missing
    std::int32_t jobId = -1;    // "QNC_JOBID"; -1 when missing
    std::string host;           // "QNC_HOST" in upper case; empty when missing

    // Reads the three variables now; nothing is cached. The numbers read as atoi does from at most 15
    // characters, the host from at most 255. An empty variable counts as missing.
    static ScenarioJobInfo FromEnvironment();

    // The host runs this as a scheduled scenario job.
    bool IsScenarioRun() const { return jobId >= 0; }
};

}  // namespace rivulet
