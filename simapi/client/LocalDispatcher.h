// A dispatcher process started by the client on this machine.
#pragma once

#include <sys/types.h>

#include <string>

#include "tNavigator_API_RMA.h"

namespace tnavclient {

class LocalDispatcher {
  public:
    LocalDispatcher() = default;
    LocalDispatcher(const LocalDispatcher&) = delete;
    LocalDispatcher& operator=(const LocalDispatcher&) = delete;
    // Ends the process if it still runs.
    ~LocalDispatcher();

    // Starts `executable --dispatcher --port N [--debug FILE]`; fails when the file cannot be run or the port
    // is taken. The child gets SIGTERM when this process dies.
    tNavigator_API_RMA_error_t start(const std::string& executable, const char* debugFile, int port);

    pid_t pid() const { return pid_; }
    // True while the child runs; reaps it once it has ended.
    bool running();
    // True while the child is stopped by a signal (SIGSTOP, a debugger): alive, but it cannot answer.
    bool stopped() const;
    // How the child ended, with the end of what it wrote to its error stream.
    std::string exitReport();
    // Waits up to graceMs for the child to end by itself (not at all when it is stopped), then ends it with
    // SIGTERM and SIGKILL.
    void stop(int graceMs);

  private:
    pid_t pid_ = -1;
    int status_ = 0;
    bool exited_ = false;
    int stderrFd_ = -1;
};

// Empty when port can be bound on this machine; otherwise why not.
std::string portProblem(int port);

}  // namespace tnavclient
