// One job of a dispatcher, seen from the client.
#pragma once

#include <memory>

#include "client/Connection.h"
#include "client/Requesters.h"
#include "tNavigator_API_RMA.h"

namespace tnavclient {

class Job final : public tNavigator_API_RMA_job_t {
  public:
    Job(std::shared_ptr<Connection> connection, int jobId);

    tNavigator_API_RMA_error_t wait_for_start() override;
    tNavigator_API_RMA_error_t wait_for_state(tNavigator_API_RMA_job_state_t state) override;
    tNavigator_API_RMA_error_t state(tNavigator_API_RMA_job_state_t* state,
                                     tNavigator_API_RMA_request_t* request = nullptr) override;
    int is_job_started() override;
    int is_job_ended() override;
    tNavigator_API_RMA_error_t check_compatibility() override;
    tNavigator_API_RMA_error_t get_tnav_version(tNavigator_API_RMA_string* version,
                                                tNavigator_API_RMA_request_t* request = nullptr) override;
    tNavigator_API_RMA_error_t get_time_moment(tNavigator_API_RMA_time_moment_request_type_t type,
                                               tNavigator_API_RMA_time_moment_t* moment,
                                               tNavigator_API_RMA_request_t* request = nullptr) override;
    tNavigator_API_RMA_error_t run(const tNavigator_API_RMA_time_moment_t& moment,
                                   tNavigator_API_RMA_request_t* request = nullptr) override;
    tNavigator_API_RMA_error_t stop(tNavigator_API_RMA_request_t* request = nullptr) override;
    tNavigator_API_RMA_static_data_requester_t* get_static_data_requester() override;
    tNavigator_API_RMA_well_data_requester_t* get_well_data_requester() override;

  private:
    // A call that gives an int, such as IsJobStarted.
    template <class Method>
    tNavigator_API_RMA_error_t intCall(const char* call, Method method, int* value);

    std::shared_ptr<Connection> connection_;
    int jobId_;
    StaticDataRequester staticRequester_;
    WellDataRequester wellRequester_;
};

}  // namespace tnavclient
