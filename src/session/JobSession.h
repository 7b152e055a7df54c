// A simulator run as the model sees it: the connection to a dispatcher, the one job launched through it, the
// job's two data requesters, the four dates of the run, the simulator's version text and the detailed API
// log. The model owns at most one session and deletes it when the run stops or a start fails; deleting it
// ends the job and disconnects.
//
// Every operation reports failure by returning false (StartProcess: non-zero) with a text in `error`.
#pragma once

#include <atomic>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/OleDate.h"
#include "session/Requesters.h"
#include "session/WellParamBatch.h"
#include "tNavigator_API_RMA.h"
#include "wells/IprSampling.h"

namespace rivulet {

class CaseSettings;
struct ReservoirData;

class CJobSession {
  public:
    explicit CJobSession(CaseSettings* settings);
    CJobSession(const CJobSession&) = delete;
    CJobSession& operator=(const CJobSession&) = delete;

    // Stops a running job, frees the requesters, the job and the manager, and disconnects.
    virtual void CloseSession();
    // The minimum version gate: v4.2 or later.
    virtual bool CheckSimulatorVersion(std::string& error);
    // Reaches a dispatcher; called under the process creation guards.
    virtual bool ConnectDispatcher(std::string& error) = 0;
    // How long a start waits for the machine-wide process creation mutex, in milliseconds.
    virtual std::uint32_t GetProcessCreationTimeout() const = 0;
    virtual void AddStartParams(tNavigator_API_RMA_start_params_t& params) = 0;
    // Checks the case file and makes the copy of a scenario run.
    virtual bool PrepareCaseFile(std::string& error) = 0;
    virtual ~CJobSession();
    // "Local host", or the head node the session is connected to.
    virtual const char* GetHostDescription() const = 0;
    // Starts or reaches the dispatcher; 0 is success.
    virtual int StartProcess(std::string& error) = 0;
    virtual int ReservedHook() { return 0; }

    // The manager exists and reports a connection.
    bool IsConnected() const;
    // Connected, and the job reports that it has started.
    bool HasJobStarted() const;
    // Started and not ended.
    bool IsJobRunning() const;
    // True when not connected; false when there is no job; else what the job says.
    bool HasJobEnded() const;
    // The session was connected and its simulator is gone: the connection is lost, or the launched job has
    // ended or no longer answers. A closed session (no manager) is not gone: it was stopped.
    bool IsSimulatorGone() const;
    // What the last of the calls above, or the job's launch, found, without asking the simulator again: the
    // calls made once per well or per access string answer from this, and a simulator lost since is found
    // by the next step's calls.
    bool SeenConnected() const { return m_seenConnected; }
    bool SeenJobStarted() const { return m_seenConnected && m_seenStarted; }
    bool SeenJobRunning() const { return SeenJobStarted() && m_seenRunning; }

    // What the model reports for a simulator that ended or died while it held the session.
    static constexpr const char* kSimulatorEnded = "The tNavigator Simulation has ended.";

    // Runs ConnectDispatcher under the process-wide flag and the machine-wide creation mutex. A timeout at
    // the mutex fails with an empty text.
    bool CreateProcessSerialised(std::string& error);
    // Launches the job and takes it through opening, the version gate and the requesters.
    bool LaunchJob(std::string& error);
    // The first read of the model: its dates and new reservoir data. `connectedWells` names the wells the
    // network connects, one a line.
    bool CreateReservoir(std::unique_ptr<ReservoirData>& reservoir, const std::string& connectedWells,
                         std::string& error);
    // Refreshes the current date and the wells.
    bool ReadCurrentData(ReservoirData* reservoir, std::string& error);
    // Asks a running job to stop; succeeds at once when it does not run.
    bool StopSimulation(std::string& error);

    // Report stepping.
    bool ReadDate(tNavigator_API_RMA_job_t* job, int type, OleDate* out, std::string& error);
    bool ReadCurrentDate(OleDate* out, std::string& error);
    bool ReadNextEventDate(OleDate* out, std::string& error);
    bool RequestReportDate(OleDate date, std::string& error);
    // Runs the job to the next report date and waits until it pauses or ends.
    bool Continue(std::string& error);

    OleDate StartDate() const { return m_startDate; }
    OleDate EndDate() const { return m_endDate; }
    OleDate CurrentDate() const { return m_currentDate; }
    OleDate NextReportDate() const { return m_nextReportDate; }
    const std::string& Version() const { return m_version; }
    bool GetSupportsMaxRateDetails() const { return SupportsMaxRateDetails; }
    const std::string& ApiLogPath() const { return m_apiLogPath; }
    // The log the requesters write to: null while it is off.
    std::ostream* ApiLog() { return m_apiLog.is_open() ? &m_apiLog : nullptr; }
    // The job's well requester; null while no job is open.
    WellRequester* Wells() { return m_pWellRequester.get(); }

    // Version texts: major and minor (and patch) after the leading letter; -1 for a missing number.
    static bool VersionAtLeastMinimum(const std::string& version, int& major, int& minor);
    static bool VersionSupportsMaxRateDetails(const std::string& version);

  protected:
    // The start shared by both kinds of session: refuses a connected session (tested before and under
    // m_lock), then runs the kind's own checks, then CreateProcessSerialised. 0 is success.
    int StartGuarded(std::string& error, const std::function<bool(std::string&)>& ready);

    CaseSettings* m_pCaseSettings;
    std::mutex m_lock;
    std::ofstream m_apiLog;
    std::string m_apiLogPath;
    tNavigator_API_RMA_manager_t* m_pManager = nullptr;
    tNavigator_API_RMA_job_t* m_pJob = nullptr;
    std::unique_ptr<StaticRequester> m_pStaticRequester;
    std::unique_ptr<WellRequester> m_pWellRequester;
    std::int32_t m_jobId = -1;
    OleDate m_startDate;
    OleDate m_endDate;
    OleDate m_currentDate;
    OleDate m_nextReportDate;
    std::int32_t m_jobState = 5;  // 5: not read yet
    std::string m_version;
    bool SupportsMaxRateDetails = false;
    WellParamBatches m_batches;  // made by CreateReservoir for the job's fluid kind

  private:
    mutable std::atomic<bool> m_seenConnected{false};
    mutable std::atomic<bool> m_seenStarted{false};
    mutable std::atomic<bool> m_seenRunning{false};

    // The refresh of the wells' state: statuses, phases, the two batches' results and component rates.
    bool ReadWellState(ReservoirData& reservoir, std::string& error);
    // The inflow tables of the wells in the batches, with the case's spacing of rates.
    bool ReadInflowTables(ReservoirData& reservoir, PhaseRateTable& maxRates, PhaseRateTable& minRates,
                          std::string& error);
    bool WaitForJobOpened(std::string& error);
    // Ends a launch that failed after the job was identified.
    bool FailLaunch(std::string& error, std::string text);
};

}  // namespace rivulet
