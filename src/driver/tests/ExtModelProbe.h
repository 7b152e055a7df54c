// Puts a model into the states that a running simulator would give it: reservoir data, a session that
// reports started or running, the run flag, dates, callbacks and field totals.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "ScriptedApi.h"
#include "driver/ExtModel.h"
#include "session/JobSession.h"

namespace rivulet {

// A session already connected to the scripted simulator library, with a job whose state the test sets.
class ScriptedSession : public CJobSession {
  public:
    explicit ScriptedSession(CaseSettings* settings) : CJobSession(settings) {
        tnavscripted::Script().Reset();
        tNavigator_API_RMA::tnav_create_manager(&m_pManager);
        m_pManager->create_local_dispatcher__force_ports("tnav-standin", nullptr, 15960);
        m_pManager->launch_job(tNavigator_API_RMA_start_params_t("CASE.DATA"), &m_jobId);
        m_pManager->get_job_by_id(m_jobId, m_pJob);
        IsJobRunning();
    }
    // A started job runs until it ends; a job that has not started is neither running nor ended. The
    // session looks at the job again, as a step would.
    void SetJob(bool started, bool running) {
        tnavscripted::Script().state.jobStarted = started;
        tnavscripted::Script().state.jobEnded = started && !running;
        IsJobRunning();
    }

    bool ConnectDispatcher(std::string&) override { return true; }
    std::uint32_t GetProcessCreationTimeout() const override { return 0; }
    void AddStartParams(tNavigator_API_RMA_start_params_t&) override {}
    bool PrepareCaseFile(std::string&) override { return true; }
    const char* GetHostDescription() const override { return "Local host"; }
    int StartProcess(std::string&) override { return 0; }
};

struct ExtModelProbe {
    static ReservoirData& MakeReservoir(CExtModel& model) {
        model.Reservoir = std::make_unique<ReservoirData>();
        return *model.Reservoir;
    }
    static ScriptedSession& InstallSession(CExtModel& model) {
        auto session = std::make_unique<ScriptedSession>(&model.GetSettings());
        ScriptedSession& handle = *session;
        model.Session = std::move(session);
        return handle;
    }
    static void SetRunInitialised(CExtModel& model, bool initialised) { model.RunInitialised = initialised; }
    static void SetDates(CExtModel& model, OleDate start, OleDate current) {
        model.StartDate = start;
        model.CurrentDate = current;
    }
    static void SetCallbacks(CExtModel& model, HostTextCallback progress, HostTextCallback status) {
        model.ProgressCallback = progress;
        model.StatusCallback = status;
    }
    static void SetBetweenPasses(CExtModel& model, std::function<void()> hook) {
        model.BetweenPasses = std::move(hook);
    }
    static void SetFieldTotal(CExtModel& model, FieldTotal total, double value) {
        model.FieldTotals[total] = value;
    }
    static void SetStepCount(CExtModel& model, std::int32_t steps) { model.StepCount = steps; }
    static std::map<std::string, bool>& GasWellMap(CExtModel& model) { return model.GasWellMap; }
};

}  // namespace rivulet
