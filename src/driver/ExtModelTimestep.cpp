// The host's dates and the coupled timestep.
#include <string>
#include <vector>

#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "session/JobSession.h"
#include "session/WellTargets.h"
#include "wells/WellControl.h"

namespace rivulet {

namespace {

// The inner loop goes on while more than this remains (60.48 s); after it the remainder must lie within
// the match tolerance (about 61.08 s).
constexpr double kStepTolerance = 0.0007;
constexpr double kMatchTolerance = 0.000707;

void WriteCut(tErrorRecord* err, const std::string& text) {
    WriteText(err, text.substr(0, 255));
}

// The session's text of a failed call, or the end of the simulation when the call failed because the
// simulator died or ended, whatever the client library said of it.
std::string SessionText(const CJobSession* session, const std::string& text) {
    return session != nullptr && session->IsSimulatorGone() ? CJobSession::kSimulatorEnded : text;
}

}  // namespace

std::int32_t CExtModel::Timestep(tTimestepData* step, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (step == nullptr) {
        WriteText(err, "Timestep() called with a null pstTimestep.");
        return 1;
    }
    double remaining = 0.0;
    {
        Guard lock(Lock);
        if (!IsConnected()) {
            WriteText(err, "Timestep() called when the simulation process is not running.");
            return 1;
        }
        if (!Reservoir) {
            WriteText(err, "Timestep() was called before reservoir data was created.");
            return 1;
        }
        if (CurrentDate < ReportDate) {
            WriteText(err, "Current date should not be less than report date at the begining of Timestep()");
            return 1;
        }
        if (Session->HasJobEnded()) {
            WriteText(err, "Timestep() called when the simulation has already ended.");
            return 1;
        }
        std::string error;
        if (!ApplyWellTargets(error)) {
            WriteCut(err, SessionText(Session.get(), error));
            return 1;
        }
        if (!Session->RequestReportDate(DateFromBoundary(&step->stTarget), error)) {
            WriteText(err, error);
            return 1;
        }
        ReportDate = Session->NextReportDate();
        if (!ReportDate.IsValid()) return 1;
        if (!ResetInjectorPhasesStep(error)) {
            WriteCut(err, SessionText(Session.get(), error));
            return 1;
        }
        remaining = ReportDate.Days() - CurrentDate.Days();
    }
    while (remaining > kStepTolerance) {
        if (BetweenPasses) BetweenPasses();
        Guard lock(Lock);
        // Only the model's own Stop takes the session away; a simulator that died leaves it in place, and is
        // not reported as stopped.
        if (!IsConnected()) {
            WriteText(err,
                      Session ? CJobSession::kSimulatorEnded : "Process was stopped during a Timestep().");
            return 1;
        }
        const OleDate before = CurrentDate;
        if (!StepToNextStop(err)) return 1;
        if (Session->HasJobEnded()) {
            WriteText(err, "Simulator ended during a Timestep().");
            return 1;
        }
        if (!(CurrentDate > before)) {
            if (ReportDate.Days() - CurrentDate.Days() <= kStepTolerance) break;
            WriteText(err, "Timestep() inner loop failed to increment the current time.");
            return 1;
        }
        remaining = ReportDate.Days() - CurrentDate.Days();
        if (remaining <= kStepTolerance) {
            std::string error;
            if (!Session->ReadCurrentData(Reservoir.get(), error)) {
                WriteCut(err, "Error when reading data from tNavigator: <" +
                                  SessionText(Session.get(), error) + ">");
                return 1;
            }
            UpdateFieldTotals();
            if (!ResetInjectorPhasesStep(error)) {
                WriteCut(err, SessionText(Session.get(), error));
                return 1;
            }
        }
    }
    if (remaining >= -kMatchTolerance && remaining <= kMatchTolerance) {
        CurrentDate = ReportDate;
        ++StepCount;
        return 0;
    }
    WriteText(err, "Timestep() completed without matching the target report date.");
    return 1;
}

bool CExtModel::StepToNextStop(tErrorRecord* err) {
    std::string error;
    if (!Session->Continue(error)) {
        WriteCut(err, "Error when moving to the next time-step: <" + SessionText(Session.get(), error) + ">");
        return false;
    }
    if (RunInitialised && !Session->IsJobRunning()) {
        WriteText(err, CJobSession::kSimulatorEnded);
        return false;
    }
    if (!Session->ReadCurrentDate(&CurrentDate, error) || !CurrentDate.IsValid()) {
        WriteCut(err, "Error when reading current time from tNavigator: <" +
                          SessionText(Session.get(), error) + ">");
        return false;
    }
    return true;
}

bool CExtModel::ApplyWellTargets(std::string& error) {
    WellRequester* requester = Session ? Session->Wells() : nullptr;
    // Without wells or a job there is nothing to send.
    if (!Reservoir || requester == nullptr || requester->Requester == nullptr) return true;
    return rivulet::ApplyWellTargets(*requester, Reservoir->wells, Reservoir->units,
                                     Settings.UnconnectedState, error);
}

bool CExtModel::ResetInjectorPhasesStep(std::string& error) {
    if (!Reservoir) return true;
    std::vector<int> changed = SettleInjectorPhases(Reservoir->wells);
    // Without a job the phases go to the simulator with the next job's connections.
    WellRequester* requester = Session ? Session->Wells() : nullptr;
    if (changed.empty() || requester == nullptr) return true;
    if (requester->ResetInjectorPhases(Reservoir->wells, changed.data(), static_cast<int>(changed.size()),
                                       error)) {
        return true;
    }
    error = error.substr(0, 255);
    return false;
}

std::int32_t CExtModel::GetStartDate(tDate* date, tErrorRecord* err) {
    if (date == nullptr) {
        WriteText(err, "A null data item was provided to GetStartDate().");
        return 1;
    }
    // The current date comes first, so the answer moves on with the run.
    if (DateToBoundary(CurrentDate, date) || DateToBoundary(StartDate, date)) return 0;
    WriteText(err, "The start date has not been set.");
    return 1;
}

std::int32_t CExtModel::GetNextEvent(tDate* date, tErrorRecord* err) {
    if (date == nullptr) {
        WriteText(err, "A null data item was provided to GetNextEvent().");
        return 1;
    }
    Guard lock(Lock);
    if (!Reservoir) return 1;
    OleDate next;
    std::string error;
    if (!Session || !Session->ReadNextEventDate(&next, error)) next = EndDate;
    if (!next.IsValid()) return 1;
    if (CurrentDate.IsValid() && (CurrentDate > next || CurrentDate == next)) return 1;
    return DateToBoundary(next, date) ? 0 : 1;
}

bool CExtModel::CheckEndDate(const tDate* target, tErrorRecord* err) const {
    if (!Session) return false;
    const OleDate wanted = DateFromBoundary(target);
    const OleDate end = Session->EndDate();
    if (!wanted.IsValid() || !end.IsValid() || !(wanted > end)) return true;
    WriteFormat(err, "Conflux's target end date (%s) exceeds the end date set in the model's deck file (%s).",
                wanted.FormatLocale().c_str(), end.FormatLocale().c_str());
    return false;
}

}  // namespace rivulet
