#include "session/WindowsJobSession.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>

#include "case/CaseSettings.h"
#include "common/FormatText.h"
#include "session/FileUtils.h"
#include "session/ScenarioJobInfo.h"

namespace rivulet {

namespace {

// The ports held by this process's sessions. The process creation guards serialise its writers in
// AcquirePort; the mutex covers ReleasePort, which runs on whichever thread closes a session.
std::vector<int> s_portsInUse;
std::mutex s_portsMutex;

constexpr const char* kPortMutexPrefix = "Global\\QuillonConfluxPortMutex";

bool PortInUse(int port) {
    std::lock_guard lock(s_portsMutex);
    return std::find(s_portsInUse.begin(), s_portsInUse.end(), port) != s_portsInUse.end();
}

std::string PortMutexName(int port) {
    return FormatText("%s%d", kPortMutexPrefix, port);
}

// The debug directory joined to a file name with this platform's separator.
std::string InDirectory(const std::string& directory, const std::string& name) {
    const char last = directory.back();
    std::string path;
    FileUtils::JoinPath(path, last == '/' || last == '\\' ? directory : directory + '/', name);
    return path;
}

}  // namespace

CWindowsJobSession::CWindowsJobSession(CaseSettings* settings, const MachineConfig& config)
    : CJobSession(settings), m_config(config) {}

CWindowsJobSession::~CWindowsJobSession() {
    CWindowsJobSession::CloseSession();
}

void CWindowsJobSession::CloseSession() {
    CJobSession::CloseSession();
    ReleasePort();
}

std::vector<int> CWindowsJobSession::PortsInUse() {
    std::lock_guard lock(s_portsMutex);
    return s_portsInUse;
}

int CWindowsJobSession::StartProcess(std::string& error) {
    return StartGuarded(error, [this](std::string& text) {
        if (m_config.IsConfigured(true)) return true;
        text =
            "The tNavigator configuration for a Local Machine run has not been set. No new process is "
            "created.";
        return false;
    });
}

bool CWindowsJobSession::ConnectDispatcher(std::string& error) {
    m_apiLogPath.clear();
    if (!SelectPort(error)) return false;
    if (!PrepareCaseFile(error)) return false;  // the port stays held for a later attempt

    std::string debugFile;
    const std::string& directory = m_config.DebugCommsDirectory;
    if (!directory.empty() && FileUtils::DirectoryIsWritable(directory)) {
        debugFile = InDirectory(directory, FormatText("DebugTNav%d.txt", m_port));
        if (directory.find("IncDetailedApiLog") != std::string::npos) {
            m_apiLogPath = InDirectory(directory, FormatText("DebugTNav%d_DetailedApiLog.txt", m_port));
        }
    }
    try {
        tNavigator_API_RMA::init();
        tNavigator_API_RMA::tnav_create_manager(&m_pManager);
        if (m_pManager == nullptr) throw std::runtime_error("no manager");
        const tNavigator_API_RMA_error_t result = m_pManager->create_local_dispatcher__force_ports(
            m_config.SimExecutable.c_str(), debugFile.empty() ? nullptr : debugFile.c_str(), m_port);
        if (result.id() != 0) {
            error = FormatText("Failed to start local dispatcher.\nError code: %d\n%s", result.id(),
                               result.description());
            CloseSession();
            return false;
        }
    } catch (...) {
        error = "An exception was thrown when creating a tNavigator dispatcher";
        CloseSession();
        return false;
    }
    return true;
}

bool CWindowsJobSession::SelectPort(std::string& error) {
    if (!m_config.IsConfigured(true)) {
        error = "Simulator has not been configured: No new process was created.";
        return false;
    }
    int lower = 0, upper = 0;
    m_config.GetPortRange(lower, upper);
    if (!AcquirePort(lower, upper)) {
        error = FormatText(
            "Port in the range [%d, %d] was not available for the Simulator: No new process was created.",
            lower, upper);
        return false;
    }
    return true;
}

bool CWindowsJobSession::AcquirePort(int lower, int upper) {
    if (m_portMutex) return true;
    if (lower > upper || lower < MachineConfig::kLowestPort) return false;

    std::unique_ptr<NamedMutex> found;
    int chosen = -1;
    // First pass: a port whose mutex this call creates, so that no one has used it yet.
    for (int port = lower; port <= upper && chosen < 0; ++port) {
        if (PortInUse(port)) continue;
        bool existed = false;
        auto mutex = NamedMutex::Create(PortMutexName(port), true, &existed);
        if (!mutex || existed || !mutex->Owned()) continue;
        found = std::move(mutex);
        chosen = port;
    }
    // Second pass: a port whose existing mutex is free, or whose owner has died.
    for (int port = lower; port <= upper && chosen < 0; ++port) {
        if (PortInUse(port)) continue;
        auto mutex = NamedMutex::Create(PortMutexName(port), false, nullptr);
        if (!mutex || mutex->Wait(200) != NamedMutex::WaitResult::Acquired) continue;
        found = std::move(mutex);
        chosen = port;
    }
    if (chosen < 0) return false;
    {
        std::lock_guard lock(s_portsMutex);
        s_portsInUse.push_back(chosen);
    }
    m_portMutex = std::move(found);
    m_port = chosen;
    return true;
}

void CWindowsJobSession::ReleasePort() {
    if (!m_portMutex) return;
    {
        std::lock_guard lock(s_portsMutex);
        auto it = std::find(s_portsInUse.begin(), s_portsInUse.end(), m_port);
        if (it != s_portsInUse.end()) s_portsInUse.erase(it);
    }
    m_port = -1;
    m_portMutex->Release();
    m_portMutex.reset();
}

void CWindowsJobSession::AddStartParams(tNavigator_API_RMA_start_params_t& params) {
    if (m_pCaseSettings->ParallelCount < 0) return;
    const std::string word = FormatText("--cpu-num=%d", m_pCaseSettings->ParallelCount);
    const char* words[] = {word.c_str()};
    params.add_additional_params(words, 1);
}

bool CWindowsJobSession::PrepareCaseFile(std::string& error) {
    const std::string& file = m_pCaseSettings->FileName;
    if (!FileUtils::FileExists(file, true)) {
        error = "The case file " + file + " does not exist.";
        return false;
    }
    const ScenarioJobInfo info = ScenarioJobInfo::FromEnvironment();
    if (info.jobId < 0) return true;
    std::string copy;
    FileUtils::DuplicateScenarioFile(info, copy, file, false);
    if (copy == file) {
        error = "Failed to create a new duplicate senario case file for " + file + ".";
        return false;
    }
    m_pCaseSettings->FileName = copy;
    return true;
}

}  // namespace rivulet
