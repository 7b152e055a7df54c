// The run's dates and report stepping: reading dates from the job, choosing the next report date and
// running the job to it.
#include <string>

#include "common/FormatText.h"
#include "session/ApiLog.h"
#include "session/JobSession.h"
#include "session/SimulatorDate.h"

namespace rivulet {

bool CJobSession::ReadDate(tNavigator_API_RMA_job_t* job, int type, OleDate* out, std::string& error) {
    tNavigator_API_RMA_time_moment_t moment(0, static_cast<tNavigator_API_RMA_month_t>(13), 0);
    const tNavigator_API_RMA_error_t result = job->get_time_moment(
        static_cast<tNavigator_API_RMA_time_moment_request_type_t>(type), &moment, nullptr);
    if (result.id() != 0) {
        error = FormatText("Error when reading date: <%s>, type: <%d>", result.description(), type);
        return false;
    }
    // A moment the simulator has not got is no failure: the date is null.
    *out = moment.is_valid().id() != 0 ? OleDate::Null() : DateFromMoment(moment);
    return true;
}

bool CJobSession::ReadCurrentDate(OleDate* out, std::string& error) {
    if (m_pJob == nullptr) {
        error = "The simulator is not running.";
        return false;
    }
    if (!ReadDate(m_pJob, TNAV_TIME_MOMENT_CURRENT, &m_currentDate, error)) return false;
    if (out != nullptr) *out = m_currentDate;
    return true;
}

bool CJobSession::ReadNextEventDate(OleDate* out, std::string& error) {
    if (m_pJob == nullptr) {
        error = "The simulator is not running.";
        return false;
    }
    OleDate next;
    if (!ReadDate(m_pJob, TNAV_TIME_MOMENT_NEXT_SCHEDULE, &next, error)) return false;
    const bool stands =
        next.Status() != DateStatus::Invalid && !(next <= m_currentDate) && !(next > m_endDate);
    *out = stands ? next : m_endDate;
    return true;
}

bool CJobSession::RequestReportDate(OleDate date, std::string& error) {
    if (!date.IsValid()) {
        error = "An invalid report date was requested.";
        return false;
    }
    if (date >= m_endDate) date = m_endDate;
    if (date.IsValid() && m_currentDate.IsValid() && m_currentDate > date) {
        error = "Report was requested for a date preceeding the current date.";
        return false;
    }
    if (m_nextReportDate.IsValid() && date < m_nextReportDate) {
        error = "Report date request is out-of-order: new report date must not precede previous dates.";
        return false;
    }
    m_nextReportDate = date;
    return true;
}

bool CJobSession::Continue(std::string& error) {
    if (!IsConnected()) {
        error = "The process is not running.";
        return false;
    }
    if (!IsJobRunning()) {
        error = "The simulator is not running.";
        return false;
    }
    if (!m_nextReportDate.IsValid()) {
        error = "The simulator's next report date is not valid.";
        return false;
    }
    if (m_nextReportDate < m_currentDate) {
        error = "The simulator's next report date must not precede the current date.";
        return false;
    }
    if (m_nextReportDate == m_currentDate) return true;  // the job stands there already
    if (m_nextReportDate >= m_endDate) return true;      // never asked to run on to the deck's end
    tNavigator_API_RMA_job_state_t state = TNAV_JOB_STATE_OPENING;
    tNavigator_API_RMA_error_t result = m_pJob->state(&state, nullptr);
    if (result.id() != 0) {
        error = FormatText("Error when requesting current state: %s", result.description());
        return false;
    }
    m_jobState = state;
    if (m_jobState > 1) {
        error = "Cannot move to next step unless opening or paused";
        return false;
    }
    if (std::ostream* log = ApiLog()) {
        // The banner shows the end date under the report date's label.
        *log << "\n*** Continue: current date = " << m_currentDate.Days()
             << ", next report date = " << m_endDate.Days() << " ***\n";
    }
    const tNavigator_API_RMA_time_moment_t moment = MomentFromDate(m_nextReportDate);
    result = moment.is_valid();
    if (result.id() != 0) {
        error =
            FormatText("Error when converting internal format of next report date: %s", result.description());
        return false;
    }
    result = m_pJob->run(moment, nullptr);
    if (result.id() != 0) {
        error = FormatText("Error when running to next report date: %s", result.description());
        return false;
    }
    m_pJob->wait_for_state(TNAV_JOB_STATE_PAUSED);  // ends at the report date or at the job's end
    return true;
}

}  // namespace rivulet
