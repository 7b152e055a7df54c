// A run on a Linux cluster: the dispatcher already runs on a head node, and the session connects to it as
// the configured user with the crypted password. The case file name is the cluster's path.
#pragma once

#include <string>

#include "session/JobSession.h"
#include "session/MachineConfig.h"

namespace rivulet {

class CLinuxJobSession : public CJobSession {
  public:
    CLinuxJobSession(CaseSettings* settings, const MachineConfig& config);
    ~CLinuxJobSession() override;

    bool ConnectDispatcher(std::string& error) override;
    std::uint32_t GetProcessCreationTimeout() const override { return 10000; }
    void AddStartParams(tNavigator_API_RMA_start_params_t& params) override;
    bool PrepareCaseFile(std::string& error) override;
    const char* GetHostDescription() const override { return m_connectedHost.c_str(); }
    int StartProcess(std::string& error) override;

  private:
    const MachineConfig& m_config;
    std::string m_connectedHost;
};

}  // namespace rivulet
