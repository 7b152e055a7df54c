// A run on this machine: a local dispatcher of the configured simulator, on a port of the configured range
// that the session holds, through a machine-wide mutex, for as long as it lives.
#pragma once

#include <memory>
#include <vector>

#include "platform/NamedMutex.h"
#include "session/JobSession.h"
#include "session/MachineConfig.h"

namespace rivulet {

class CWindowsJobSession : public CJobSession {
  public:
    CWindowsJobSession(CaseSettings* settings, const MachineConfig& config);
    ~CWindowsJobSession() override;

    void CloseSession() override;
    bool ConnectDispatcher(std::string& error) override;
    std::uint32_t GetProcessCreationTimeout() const override { return 500; }
    void AddStartParams(tNavigator_API_RMA_start_params_t& params) override;
    bool PrepareCaseFile(std::string& error) override;
    const char* GetHostDescription() const override { return "Local host"; }
    int StartProcess(std::string& error) override;

    bool SelectPort(std::string& error);
    // Takes the lowest free port of the range: first one whose mutex has never existed, then one whose
    // mutex can be owned within 200 ms (released, or abandoned by a dead owner).
    bool AcquirePort(int lower, int upper);
    void ReleasePort();

    int Port() const { return m_port; }
    // The ports held by the sessions of this process.
    static std::vector<int> PortsInUse();

  private:
    const MachineConfig& m_config;
    int m_port = -1;
    std::unique_ptr<NamedMutex> m_portMutex;
};

}  // namespace rivulet
