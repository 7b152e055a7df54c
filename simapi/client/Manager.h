// The client's manager: one connection to a dispatcher, local or remote.
#pragma once

#include <memory>
#include <string>

#include "client/Connection.h"
#include "client/LocalDispatcher.h"
#include "tNavigator_API_RMA.h"

namespace tnavclient {

class Manager final : public tNavigator_API_RMA_manager_t {
  public:
    Manager() = default;
    ~Manager() override;

    tNavigator_API_RMA_error_t create_local_dispatcher__force_ports(const char* executable,
                                                                    const char* debug_file,
                                                                    int port) override;
    tNavigator_API_RMA_error_t connect_to_dispatcher(
        const tNavigator_API_RMA_connection_options_t& options) override;
    int is_connected() const override;
    void disconnect() override;
    tNavigator_API_RMA_error_t launch_job(const tNavigator_API_RMA_start_params_t& params, int* job_id,
                                          tNavigator_API_RMA_request_t* request = nullptr) override;
    tNavigator_API_RMA_error_t get_job_by_id(int job_id, tNavigator_API_RMA_job_t*& job) override;

    // Process id of the local dispatcher, or -1.
    int localDispatcherPid() const { return local_ ? local_->pid() : -1; }

  private:
    // Sends Connect once with that deadline, and keeps the session on success.
    tNavigator_API_RMA_error_t connectOnce(const std::shared_ptr<Connection>& connection,
                                           const std::string& user, const std::string& token, int deadlineMs,
                                           bool waitForReady);

    std::shared_ptr<Connection> connection_;
    std::unique_ptr<LocalDispatcher> local_;
};

}  // namespace tnavclient
