// The scripted manager and job: connection, launch, states, dates and stepping.
#include <string>

#include "ScriptedObjects.h"

namespace tnavscripted {

namespace {

std::string Text(const char* text) {
    return text != nullptr ? std::string(text) : std::string("(null)");
}

std::string MomentText(const Moment& m) {
    return std::to_string(m.year) + "-" + std::to_string(m.month) + "-" + std::to_string(m.day) + " " +
           std::to_string(m.hour) + ":" + std::to_string(m.minute) + ":" + std::to_string(m.second);
}

}  // namespace

tNavigator_API_RMA_error_t ScriptedManager::create_local_dispatcher__force_ports(const char* executable,
                                                                                 const char* debug_file,
                                                                                 int port) {
    auto error = Script().Enter("create_local_dispatcher__force_ports",
                                Text(executable) + "|" + Text(debug_file) + "|" + std::to_string(port));
    if (error.id() == 0) Script().state.connected = true;
    return error;
}

tNavigator_API_RMA_error_t ScriptedManager::connect_to_dispatcher(
    const tNavigator_API_RMA_connection_options_t& o) {
    auto error =
        Script().Enter("connect_to_dispatcher", o.get_remote_ip() + "|" + std::to_string(o.get_port()) + "|" +
                                                    o.get_user_name() + "|" + o.get_crypted_password());
    if (error.id() == 0) Script().state.connected = true;
    return error;
}

int ScriptedManager::is_connected() const {
    Script().Enter("is_connected");
    const State& s = Script().state;
    return s.connected && !s.connectionLost ? 1 : 0;
}

void ScriptedManager::disconnect() {
    Script().Enter("disconnect");
    Script().state.connected = false;
}

tNavigator_API_RMA_error_t ScriptedManager::launch_job(const tNavigator_API_RMA_start_params_t& p,
                                                       int* job_id, tNavigator_API_RMA_request_t*) {
    std::string args =
        p.get_case_file() + "|" + p.get_cluster_queue() + "|" + std::to_string(p.get_node_count());
    for (const std::string& word : p.get_additional_params()) args += "|" + word;
    auto error = Script().Enter("launch_job", args);
    if (error.id() == 0 && job_id != nullptr) *job_id = Script().state.nextJobId;
    return error;
}

tNavigator_API_RMA_error_t ScriptedManager::get_job_by_id(int job_id, tNavigator_API_RMA_job_t*& job) {
    auto error = Script().Enter("get_job_by_id", std::to_string(job_id));
    job = error.id() == 0 ? new ScriptedJob() : nullptr;
    return error;
}

tNavigator_API_RMA_error_t ScriptedJob::wait_for_start() {
    auto error = Script().Enter("wait_for_start");
    if (error.id() == 0) Script().state.jobStarted = true;
    return error;
}

tNavigator_API_RMA_error_t ScriptedJob::wait_for_state(tNavigator_API_RMA_job_state_t wanted) {
    auto error = Script().Enter("wait_for_state", std::to_string(wanted));
    if (error.id() != 0) return error;
    State& s = Script().state;
    if (s.jobEnded) return {3, "The job has ended."};
    s.jobState = wanted;
    return {};
}

tNavigator_API_RMA_error_t ScriptedJob::state(tNavigator_API_RMA_job_state_t* out,
                                              tNavigator_API_RMA_request_t*) {
    auto error = Script().Enter("state");
    if (error.id() == 0 && out != nullptr) {
        const State& s = Script().state;
        *out = s.jobEnded ? TNAV_JOB_STATE_FINISHED : s.jobState;
    }
    return error;
}

int ScriptedJob::is_job_started() {
    Script().Enter("is_job_started");
    return Script().state.jobStarted ? 1 : 0;
}

int ScriptedJob::is_job_ended() {
    Script().Enter("is_job_ended");
    return Script().state.jobEnded ? 1 : 0;
}

tNavigator_API_RMA_error_t ScriptedJob::check_compatibility() {
    return Script().Enter("check_compatibility");
}

tNavigator_API_RMA_error_t ScriptedJob::get_tnav_version(tNavigator_API_RMA_string* version,
                                                         tNavigator_API_RMA_request_t*) {
    auto error = Script().Enter("get_tnav_version");
    if (error.id() == 0 && version != nullptr) *version = Script().state.version.c_str();
    return error;
}

tNavigator_API_RMA_error_t ScriptedJob::get_time_moment(tNavigator_API_RMA_time_moment_request_type_t type,
                                                        tNavigator_API_RMA_time_moment_t* moment,
                                                        tNavigator_API_RMA_request_t*) {
    auto error = Script().Enter("get_time_moment", std::to_string(type));
    if (error.id() != 0 || moment == nullptr) return error;
    const State& s = Script().state;
    switch (type) {
        case TNAV_TIME_MOMENT_MODEL_START:
            *moment = s.start.ToApi();
            break;
        case TNAV_TIME_MOMENT_MODEL_END:
            *moment = s.end.ToApi();
            break;
        case TNAV_TIME_MOMENT_CURRENT:
            *moment = s.current.ToApi();
            break;
        case TNAV_TIME_MOMENT_NEXT_SCHEDULE:
            *moment = s.nextScheduleValid ? s.nextSchedule.ToApi() : Moment{}.ToApi();
            break;
        default:
            return {1, "get_time_moment: unknown request type " + std::to_string(type)};
    }
    return {};
}

tNavigator_API_RMA_error_t ScriptedJob::run(const tNavigator_API_RMA_time_moment_t& moment,
                                            tNavigator_API_RMA_request_t*) {
    const Moment target = Moment::From(moment);
    auto error = Script().Enter("run", MomentText(target));
    if (error.id() != 0) return error;
    State& s = Script().state;
    if (s.jobEnded) return {4, "run: the job has ended"};
    s.jobState = TNAV_JOB_STATE_RUNNING;
    if (s.stuck) return {};
    Moment next = target;
    next.minute += s.overshootMinutes;  // tests keep this within the hour
    for (const Moment& stop : s.stops) {
        if (s.current < stop && stop < next) next = stop;
    }
    if (s.end < next || s.end == next) {
        s.current = s.end;
        s.jobEnded = true;
        s.jobState = TNAV_JOB_STATE_FINISHED;
    } else {
        s.current = next;
    }
    return {};
}

tNavigator_API_RMA_error_t ScriptedJob::stop(tNavigator_API_RMA_request_t*) {
    auto error = Script().Enter("stop");
    if (error.id() == 0) {
        Script().state.jobEnded = true;
        Script().state.jobState = TNAV_JOB_STATE_FINISHED;
    }
    return error;
}

tNavigator_API_RMA_static_data_requester_t* ScriptedJob::get_static_data_requester() {
    Script().Enter("get_static_data_requester");
    return Script().state.nullStaticRequester ? nullptr : &static_;
}

tNavigator_API_RMA_well_data_requester_t* ScriptedJob::get_well_data_requester() {
    Script().Enter("get_well_data_requester");
    return Script().state.nullWellRequester ? nullptr : &wells_;
}

}  // namespace tnavscripted
