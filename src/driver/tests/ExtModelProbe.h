// Puts a model into the states that a running simulator would give it: reservoir data, a session that
// reports started or running, the run flag, dates, callbacks and field totals.
#pragma once

#include <memory>

#include "driver/ExtModel.h"
#include "session/JobSession.h"

namespace rivulet {

class ScriptedSession : public CJobSession {
  public:
    bool started = false;
    bool running = false;

    bool IsConnected() const override { return true; }
    bool HasJobStarted() const override { return started; }
    bool IsJobRunning() const override { return running; }
    bool HasJobEnded() const override { return started && !running; }
    const char* GetHostDescription() const override { return "Local host"; }
    int StartProcess(std::string&) override { return 0; }
};

struct ExtModelProbe {
    static ReservoirData& MakeReservoir(CExtModel& model) {
        model.Reservoir = std::make_unique<ReservoirData>();
        return *model.Reservoir;
    }
    static ScriptedSession& InstallSession(CExtModel& model) {
        auto session = std::make_unique<ScriptedSession>();
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
    static void SetFieldTotal(CExtModel& model, FieldTotal total, double value) {
        model.FieldTotals[total] = value;
    }
};

}  // namespace rivulet
