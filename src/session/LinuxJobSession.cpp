#include "session/LinuxJobSession.h"

#include "case/CaseSettings.h"
#include "common/FormatText.h"
#include "common/PasswordStore.h"
#include "common/Trim.h"
#include "session/FileUtils.h"
#include "session/ScenarioJobInfo.h"

namespace rivulet {

namespace {

bool ValidPort(std::int32_t port) {
    return port >= MachineConfig::kLowestPort && port <= MachineConfig::kHighestPort;
}

}  // namespace

CLinuxJobSession::CLinuxJobSession(CaseSettings* settings, const MachineConfig& config)
    : CJobSession(settings), m_config(config) {}

CLinuxJobSession::~CLinuxJobSession() = default;

int CLinuxJobSession::StartProcess(std::string& error) {
    return StartGuarded(error, [this](std::string& text) {
        if (m_pCaseSettings->HeadNodeName.empty() || !ValidPort(m_pCaseSettings->HeadNodePort)) {
            text = "The tNavigator case settings for a Linux cluster are invalid. No new process is created.";
            return false;
        }
        if (m_pCaseSettings->FileName.empty()) {
            text = "No case file name has been defined. No new process is created";
            return false;
        }
        if (!m_config.IsConfigured(false)) {  // always passes: the dispatcher judges the account
            text =
                "The tNavigator configuration for a Linux cluster run has not been set. No new process is "
                "created.";
            return false;
        }
        return true;
    });
}

bool CLinuxJobSession::ConnectDispatcher(std::string& error) {
    m_apiLogPath.clear();  // a cluster run keeps no detailed API log
    if (!PrepareCaseFile(error)) return false;
    tNavigator_API_RMA::init();
    tNavigator_API_RMA::tnav_create_manager(&m_pManager);
    if (m_pManager == nullptr) {
        error =
            "Failed to connect to linux dispatcher.\nError code: -1\nNo connection manager could be created.";
        return false;
    }
    std::string crypted;
    ReadStoredPassword(m_config.Password, crypted);
    tNavigator_API_RMA_connection_options_t options;
    options.set_remote_ip(m_pCaseSettings->HeadNodeName.c_str());
    options.set_port(m_pCaseSettings->HeadNodePort);
    options.set_user_name_and_crypted_password(m_config.LinuxUser.c_str(), crypted.c_str());
    const tNavigator_API_RMA_error_t result = m_pManager->connect_to_dispatcher(options);
    if (result.id() != 0) {
        // The manager stays until the model deletes the session.
        m_connectedHost.clear();
        error = FormatText("Failed to connect to linux dispatcher.\nError code: %d\n%s", result.id(),
                           result.description());
        return false;
    }
    m_connectedHost = m_pCaseSettings->HeadNodeName;
    return true;
}

void CLinuxJobSession::AddStartParams(tNavigator_API_RMA_start_params_t& params) {
    if (m_pCaseSettings->ParallelCount > 0) params.set_node_count(m_pCaseSettings->ParallelCount);
    const std::string queue = Trimmed(m_pCaseSettings->LinuxQueue);
    if (!queue.empty()) params.set_cluster_queue(queue.c_str());
}

bool CLinuxJobSession::PrepareCaseFile(std::string& error) {
    const std::string& file = m_pCaseSettings->FileName;
    std::string linuxDirectory, name;
    if (!FileUtils::SplitCasePath(file, linuxDirectory, name)) {
        error = "The case name " + file + " could not be split into a file name and linux path.";
        return false;
    }
    std::string equivalent = m_pCaseSettings->WindowsEquivDir;
    std::string localView;
    if (!equivalent.empty()) {
        // This machine's separator; a directory already ending in either kind keeps it.
        if (equivalent.back() != '\\' && equivalent.back() != '/') equivalent += '/';
        localView = equivalent + name;
    }
    const ScenarioJobInfo info = ScenarioJobInfo::FromEnvironment();
    if (info.jobId < 0) return true;
    if (m_pCaseSettings->WindowsEquivDir.empty()) {
        error = "The case file's directory as viewed by your local machine must exist for a senario run.";
        return false;
    }
    std::string copy;
    FileUtils::DuplicateScenarioFile(info, copy, localView, false);
    if (copy == localView) {
        error = "Failed to create a new duplicate senario case file for " + localView + ".";
        return false;
    }
    const std::size_t prefix = equivalent.size();
    const std::string newName = copy.size() > prefix ? copy.substr(prefix) : std::string();
    m_pCaseSettings->FileName = linuxDirectory + newName;
    return true;
}

}  // namespace rivulet
