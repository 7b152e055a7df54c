// The session core: state tests, the process creation guard, the launch, the version gate and the stop.
#include "session/JobSession.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "case/CaseSettings.h"
#include "common/FormatText.h"
#include "platform/NamedMutex.h"
#include "session/ApiLog.h"

namespace rivulet {

namespace {

// Serialises every session of this process around ConnectDispatcher. A failure to make the machine-wide
// mutex leaves it set, so that every later start in this process waits for ever; that is kept on purpose.
std::atomic<bool> s_creatingProcess{false};

constexpr const char* kCreationMutexName = "Global\\QuillonConfluxTnavigatorProcessCreationMutex";

// The numbers after the leading letter, split at blanks, dots and dashes; -1 for each one missing.
void ParseVersion(const std::string& version, int* numbers, int count) {
    for (int k = 0; k < count; ++k) numbers[k] = -1;
    std::string rest = version.size() > 1 ? version.substr(1) : std::string();
    char* save = nullptr;
    char* token = strtok_r(rest.data(), " .-", &save);
    for (int k = 0; k < count && token != nullptr; ++k) {
        numbers[k] = std::atoi(token);
        token = strtok_r(nullptr, " .-", &save);
    }
}

bool HasVersionLetter(const std::string& version) {
    return !version.empty() && (version[0] == 'v' || version[0] == 'V');
}

}  // namespace

CJobSession::CJobSession(CaseSettings* settings) : m_pCaseSettings(settings) {}

CJobSession::~CJobSession() {
    CJobSession::CloseSession();
}

bool CJobSession::IsConnected() const {
    const bool connected = m_pManager != nullptr && m_pManager->is_connected() != 0;
    m_seenConnected = connected;
    if (!connected) m_seenRunning = false;
    return connected;
}

bool CJobSession::HasJobStarted() const {
    const bool started = IsConnected() && m_pJob != nullptr && m_pJob->is_job_started() == 1;
    m_seenStarted = started;
    return started;
}

bool CJobSession::IsJobRunning() const {
    const bool running = HasJobStarted() && m_pJob->is_job_ended() == 0;
    m_seenRunning = running;
    return running;
}

bool CJobSession::HasJobEnded() const {
    if (!IsConnected()) return true;
    if (m_pJob == nullptr) return false;
    const bool ended = m_pJob->is_job_ended() == 1;
    if (ended) m_seenRunning = false;
    return ended;
}

bool CJobSession::IsSimulatorGone() const {
    if (m_pManager == nullptr) return false;
    if (!IsConnected()) return true;
    const bool gone = m_pJob != nullptr && m_pJob->is_job_ended() != 0;  // -1: the job did not answer
    if (gone) m_seenRunning = false;
    return gone;
}

bool CJobSession::CreateProcessSerialised(std::string& error) {
    while (s_creatingProcess.load()) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    s_creatingProcess.store(true);

    std::unique_ptr<NamedMutex> mutex = NamedMutex::Create(kCreationMutexName, false, nullptr);
    if (!mutex) return false;  // the flag stays set

    bool result = false;
    try {
        if (mutex->Wait(GetProcessCreationTimeout()) == NamedMutex::WaitResult::Acquired) {
            result = ConnectDispatcher(error);
            mutex->Release();
        }
    } catch (...) {
        // The result stands as it was; the mutex is closed without being released.
    }
    mutex.reset();
    s_creatingProcess.store(false);
    return result;
}

int CJobSession::StartGuarded(std::string& error, const std::function<bool(std::string&)>& ready) {
    if (IsConnected()) {
        error = "The current simulator process is still running. No new process was created.";
        return 1;
    }
    std::lock_guard lock(m_lock);
    if (IsConnected()) {
        error = "The current simulator process is still running. No new process is created.";
        return 1;
    }
    if (!ready(error)) return 1;
    return CreateProcessSerialised(error) ? 0 : 1;
}

bool CJobSession::FailLaunch(std::string& error, std::string text) {
    error = std::move(text);
    m_pJob->stop(nullptr);
    return false;
}

bool CJobSession::LaunchJob(std::string& error) {
    if (!IsConnected()) {
        error = "The process is not running.";
        return false;
    }
    if (m_pJob != nullptr) {
        error = "Invalid operation: the job has already been launched.";
        return false;
    }
    m_startDate = m_endDate = m_currentDate = m_nextReportDate = OleDate::Null();
    m_jobId = -1;
    m_jobState = 0;

    tNavigator_API_RMA_start_params_t params(m_pCaseSettings->FileName.c_str());
    AddStartParams(params);
    tNavigator_API_RMA_error_t result = m_pManager->launch_job(params, &m_jobId, nullptr);
    if (result.id() != 0) {
        error = FormatText("Failed to launch job: %s.", result.description());
        return false;
    }
    result = m_pManager->get_job_by_id(m_jobId, m_pJob);
    if (result.id() != 0) {
        error = FormatText("Failed to identify job using job id: %s.", result.description());
        // Whether the library would take a stop on the job it left null is its business; ours is not to
        // call through a null pointer.
        if (m_pJob != nullptr) m_pJob->stop(nullptr);
        return false;
    }
    if (m_pJob == nullptr) {
        error = "Failed to identify job using job id: no job was returned.";
        return false;
    }
    result = m_pJob->wait_for_start();
    if (result.id() != 0)
        return FailLaunch(error,
                          FormatText("Error when waiting for job to start: %s.", result.description()));
    if (!WaitForJobOpened(error)) return FailLaunch(error, error);
    result = m_pJob->check_compatibility();
    if (result.id() != 0)
        return FailLaunch(error, FormatText("Error when launching job: %s.", result.description()));
    tNavigator_API_RMA_string version;
    result = m_pJob->get_tnav_version(&version, nullptr);
    if (result.id() != 0) {
        return FailLaunch(error,
                          FormatText("Error when reading simulator version: %s.", result.description()));
    }
    m_version = version.c_str();
    if (!CheckSimulatorVersion(error)) return FailLaunch(error, error);
    SupportsMaxRateDetails = VersionSupportsMaxRateDetails(m_version);

    if (m_apiLog.is_open()) m_apiLog.close();
    if (!m_apiLogPath.empty()) m_apiLog.open(m_apiLogPath, std::ios::out | std::ios::trunc);
    std::ostream* log = ApiLog();

    m_pStaticRequester = std::make_unique<StaticRequester>(m_pJob->get_static_data_requester(), log);
    if (m_pStaticRequester->Requester == nullptr) {
        m_pStaticRequester.reset();
        return FailLaunch(error, "Error when creating static data requester.");
    }
    m_pWellRequester = std::make_unique<WellRequester>(m_pJob->get_well_data_requester(), log);
    if (m_pWellRequester->Requester == nullptr) {
        m_pWellRequester.reset();
        return FailLaunch(error, "Error when creating well data requester.");
    }
    // The job has started and waits, opened, for its first step.
    m_seenConnected = m_seenStarted = m_seenRunning = true;
    return true;
}

bool CJobSession::WaitForJobOpened(std::string& error) {
    tNavigator_API_RMA_error_t result = m_pJob->wait_for_state(TNAV_JOB_STATE_PAUSED);
    if (result.id() == 0) return true;
    const std::string first = result.description();
    tNavigator_API_RMA_job_state_t state = TNAV_JOB_STATE_OPENING;
    if (m_pJob->state(&state, nullptr).id() != 0) {
        error = FormatText("Error when waiting for job to complete opening: %s.", first.c_str());
        return false;
    }
    m_jobState = state;
    result = m_pJob->wait_for_state(TNAV_JOB_STATE_PAUSED);
    if (result.id() == 0) return true;
    error = FormatText("Error when waiting for job to complete opening: %s.", result.description());
    return false;
}

bool CJobSession::VersionAtLeastMinimum(const std::string& version, int& major, int& minor) {
    int numbers[2];
    ParseVersion(version, numbers, 2);
    major = numbers[0];
    minor = numbers[1];
    return major >= 5 || (major == 4 && minor >= 2);
}

bool CJobSession::VersionSupportsMaxRateDetails(const std::string& version) {
    if (!HasVersionLetter(version)) return false;
    int n[3];
    ParseVersion(version, n, 3);
    if (n[0] != 4) return n[0] > 4;
    if (n[1] != 2) return n[1] > 2;
    return n[2] >= 4;
}

bool CJobSession::CheckSimulatorVersion(std::string& error) {
    if (m_version.empty()) {
        error = "No simulator version number has been read.";
        return false;
    }
    const std::string badFormat =
        FormatText("The simulator version number (%s) is not in the expected format.", m_version.c_str());
    if (!HasVersionLetter(m_version)) {
        error = badFormat;
        return false;
    }
    int major = -1, minor = -1;
    const bool passes = VersionAtLeastMinimum(m_version, major, minor);
    if (major < 0) {
        error = badFormat;
        return false;
    }
    if (passes) return true;
    const std::string minimum = FormatText("v%d.%d", 4, 2);
    error = FormatText("The simulator version number (%s) is is below the minimum supported (%s).",
                       m_version.c_str(), minimum.c_str());
    return false;
}

bool CJobSession::StopSimulation(std::string& error) {
    if (!IsJobRunning()) return true;
    const tNavigator_API_RMA_error_t result = m_pJob->stop(nullptr);
    if (result.id() != 0) {
        error = FormatText("Error when trying to stop simulation: %s.", result.description());
        return false;
    }
    return true;
}

void CJobSession::CloseSession() {
    if (IsJobRunning()) {
        std::string ignored;
        StopSimulation(ignored);
    }
    m_pStaticRequester.reset();
    m_pWellRequester.reset();
    if (m_pJob != nullptr) {
        m_pJob->stop(nullptr);  // told twice when it was running; the second answer does not matter
        tNavigator_API_RMA::tnav_free_job(m_pJob);
        m_pJob = nullptr;
    }
    if (m_pManager != nullptr) {
        m_pManager->disconnect();
        tNavigator_API_RMA::tnav_free_manager(m_pManager);
        m_pManager = nullptr;
        m_seenConnected = m_seenStarted = m_seenRunning = false;
    }
}

}  // namespace rivulet
