// A simulator run as the model sees it: one connection to a dispatcher and the one job launched through it.
// The model owns at most one session and deletes it when the run stops or a start fails; deleting it ends the
// job and disconnects.
#pragma once

#include <memory>
#include <string>

namespace rivulet {

class CaseSettings;

class CJobSession {
  public:
    CJobSession() = default;
    CJobSession(const CJobSession&) = delete;
    CJobSession& operator=(const CJobSession&) = delete;
    virtual ~CJobSession() = default;

    // The manager exists and reports a connection.
    virtual bool IsConnected() const = 0;
    // Connected and the job reports that it has started.
    virtual bool HasJobStarted() const = 0;
    // Connected, the job has started and has not ended.
    virtual bool IsJobRunning() const = 0;
    // True when not connected or the job has ended; false when there is no job.
    virtual bool HasJobEnded() const = 0;
    // "Local host", or the head node the session is connected to.
    virtual const char* GetHostDescription() const = 0;
    // Starts or reaches the dispatcher; 0 is success, otherwise `error` says why.
    virtual int StartProcess(std::string& error) = 0;
};

// Makes the session for the case: a local session when the case runs on this machine, a cluster session
// otherwise. Null, with the reason in `error`, when this build has no session of that kind.
std::unique_ptr<CJobSession> MakeJobSession(CaseSettings& settings, std::string& error);

}  // namespace rivulet
