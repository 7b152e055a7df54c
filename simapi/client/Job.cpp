#include "client/Job.h"

#include <utility>

namespace tnavclient {

using Stub = tnavapi::TNavigatorDispatcher::Stub;

Job::Job(std::shared_ptr<Connection> connection, int jobId)
    : connection_(std::move(connection)),
      jobId_(jobId),
      staticRequester_(connection_, jobId),
      wellRequester_(connection_, jobId) {}

template <class Method>
tNavigator_API_RMA_error_t Job::intCall(const char* call, Method method, int* value) {
    tnavapi::JobRequest message;
    message.set_job_id(jobId_);
    tnavapi::IntReply reply;
    tNavigator_API_RMA_error_t error = invoke(connection_, call, method, message, reply);
    if (error.id() == 0) *value = reply.value();
    return error;
}

tNavigator_API_RMA_error_t Job::wait_for_start() {
    tnavapi::JobRequest message;
    message.set_job_id(jobId_);
    tnavapi::StatusReply reply;
    return invoke(connection_, "wait_for_start", &Stub::WaitForStart, message, reply, true);
}

tNavigator_API_RMA_error_t Job::wait_for_state(tNavigator_API_RMA_job_state_t state) {
    tnavapi::WaitForStateRequest message;
    message.set_job_id(jobId_);
    message.set_state(static_cast<int>(state));
    tnavapi::StatusReply reply;
    return invoke(connection_, "wait_for_state", &Stub::WaitForState, message, reply, true);
}

tNavigator_API_RMA_error_t Job::state(tNavigator_API_RMA_job_state_t* state,
                                      tNavigator_API_RMA_request_t* request) {
    if (request != nullptr) return asyncUnsupported("state");
    if (state == nullptr) return invalidArgument("state", "the state output is null");
    int value = 0;
    tNavigator_API_RMA_error_t error = intCall("state", &Stub::State, &value);
    if (error.id() == 0) *state = static_cast<tNavigator_API_RMA_job_state_t>(value);
    return error;
}

int Job::is_job_started() {
    int value = 0;
    return intCall("is_job_started", &Stub::IsJobStarted, &value).id() == 0 ? value : -1;
}

int Job::is_job_ended() {
    int value = 0;
    return intCall("is_job_ended", &Stub::IsJobEnded, &value).id() == 0 ? value : -1;
}

tNavigator_API_RMA_error_t Job::check_compatibility() {
    tnavapi::CompatibilityRequest message;
    message.set_job_id(jobId_);
    message.set_protocol_version(tnavapi::PROTOCOL_VERSION_CURRENT);
    tnavapi::StatusReply reply;
    return invoke(connection_, "check_compatibility", &Stub::CheckCompatibility, message, reply);
}

tNavigator_API_RMA_error_t Job::get_tnav_version(tNavigator_API_RMA_string* version,
                                                 tNavigator_API_RMA_request_t* request) {
    const char* call = "get_tnav_version";
    if (request != nullptr) return asyncUnsupported(call);
    if (version == nullptr) return invalidArgument(call, "the version output is null");
    tnavapi::JobRequest message;
    message.set_job_id(jobId_);
    tnavapi::StringReply reply;
    tNavigator_API_RMA_error_t error = invoke(connection_, call, &Stub::GetTnavVersion, message, reply);
    if (error.id() == 0) *version = reply.value().c_str();
    return error;
}

tNavigator_API_RMA_error_t Job::get_time_moment(tNavigator_API_RMA_time_moment_request_type_t type,
                                                tNavigator_API_RMA_time_moment_t* moment,
                                                tNavigator_API_RMA_request_t* request) {
    const char* call = "get_time_moment";
    if (request != nullptr) return asyncUnsupported(call);
    if (moment == nullptr) return invalidArgument(call, "the moment output is null");
    tnavapi::TimeMomentRequest message;
    message.set_job_id(jobId_);
    message.set_type(static_cast<int>(type));
    tnavapi::TimeMomentReply reply;
    tNavigator_API_RMA_error_t error = invoke(connection_, call, &Stub::GetTimeMoment, message, reply);
    if (error.id() == 0) {
        const tnavapi::TimeMoment& m = reply.moment();
        *moment = tNavigator_API_RMA_time_moment_t(
            m.year(), static_cast<tNavigator_API_RMA_month_t>(m.month()), m.day());
        moment->set_hour(m.hour());
        moment->set_minute(m.minute());
        moment->set_second(m.second());
    }
    return error;
}

tNavigator_API_RMA_error_t Job::run(const tNavigator_API_RMA_time_moment_t& moment,
                                    tNavigator_API_RMA_request_t* request) {
    const char* call = "run";
    if (request != nullptr) return asyncUnsupported(call);
    if (tNavigator_API_RMA_error_t invalid = moment.is_valid(); invalid.id() != 0)
        return invalidArgument(call,
                               std::string("the moment to run to is no real date: ") + invalid.description());
    tnavapi::RunRequest message;
    message.set_job_id(jobId_);
    tnavapi::TimeMoment* m = message.mutable_moment();
    m->set_year(moment.get_year());
    m->set_month(static_cast<int>(moment.get_month()));
    m->set_day(moment.get_day());
    m->set_hour(moment.get_hour());
    m->set_minute(moment.get_minute());
    m->set_second(moment.get_second());
    tnavapi::StatusReply reply;
    return invoke(connection_, call, &Stub::Run, message, reply);
}

tNavigator_API_RMA_error_t Job::stop(tNavigator_API_RMA_request_t* request) {
    if (request != nullptr) return asyncUnsupported("stop");
    tnavapi::JobRequest message;
    message.set_job_id(jobId_);
    tnavapi::StatusReply reply;
    return invoke(connection_, "stop", &Stub::Stop, message, reply);
}

tNavigator_API_RMA_static_data_requester_t* Job::get_static_data_requester() {
    return &staticRequester_;
}

tNavigator_API_RMA_well_data_requester_t* Job::get_well_data_requester() {
    return &wellRequester_;
}

}  // namespace tnavclient
