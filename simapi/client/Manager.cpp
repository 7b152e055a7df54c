#include "client/Manager.h"

#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

#include "client/Job.h"

namespace tnavclient {

namespace {

using Clock = std::chrono::steady_clock;

// How long a local dispatcher may take to answer its first Connect.
constexpr std::chrono::seconds kLocalStartTimeout{20};
// Deadlines of the liveness probe behind is_connected: a quick one, and a second, longer chance for a
// dispatcher that is only slow to answer, as on a loaded machine.
constexpr std::chrono::milliseconds kPingDeadline{300};
constexpr std::chrono::milliseconds kSlowPingDeadline{2000};

}  // namespace

Manager::~Manager() {
    disconnect();
}

tNavigator_API_RMA_error_t Manager::connectOnce(const std::shared_ptr<Connection>& connection,
                                                const std::string& user, const std::string& token,
                                                int deadlineMs, bool waitForReady) {
    tnavapi::ConnectRequest request;
    request.set_user_name(user);
    request.set_crypted_password(token);
    request.set_client_pid(static_cast<int>(::getpid()));
    tnavapi::ConnectReply reply;
    grpc::ClientContext context;
    context.set_deadline(std::chrono::system_clock::now() + std::chrono::milliseconds(deadlineMs));
    context.set_wait_for_ready(waitForReady);
    connection->log("Connect <- user '" + user + "'");
    grpc::Status status;
    {
        MeteredCall metered;
        status = connection->stub().Connect(&context, request, &reply);
    }
    tNavigator_API_RMA_error_t error = replyError("Connect", status, reply, *connection);
    if (error.id() == 0) connection->setSession(reply.session());
    return error;
}

tNavigator_API_RMA_error_t Manager::create_local_dispatcher__force_ports(const char* executable,
                                                                         const char* debug_file, int port) {
    const char* call = "create_local_dispatcher__force_ports";
    if (connection_ && !connection_->closed())
        return makeError(kInvalidArgument,
                         std::string(call) + ": this manager is already connected; disconnect it first");
    if (executable == nullptr) return invalidArgument(call, "the dispatcher executable is null");

    auto local = std::make_unique<LocalDispatcher>();
    if (tNavigator_API_RMA_error_t error = local->start(executable, debug_file, port); error.id() != 0)
        return error;

    const std::string target = "127.0.0.1:" + std::to_string(port);
    auto connection = std::make_shared<Connection>(makeChannel(target), target);
    if (debug_file != nullptr && debug_file[0] != '\0') connection->openLog(debug_file);
    connection->log("started dispatcher " + std::string(executable) + " (pid " +
                    std::to_string(local->pid()) + ") on port " + std::to_string(port));

    const auto end = Clock::now() + kLocalStartTimeout;
    tNavigator_API_RMA_error_t last;
    while (true) {
        if (!local->running()) {
            return makeError(kDispatcherStart, std::string(call) + ": the dispatcher " + executable +
                                                   " ended before it answered on port " +
                                                   std::to_string(port) + ": " + local->exitReport());
        }
        last = connectOnce(connection, "", "", 300, true);
        if (last.id() == 0) break;
        if (last.id() != kTransport) {
            local->stop(1000);
            return makeError(last.id(), std::string(call) +
                                            ": the dispatcher refused the connection: " + last.description());
        }
        if (Clock::now() >= end) {
            local->stop(0);
            return makeError(kDispatcherStart, std::string(call) + ": the dispatcher " + executable +
                                                   " did not answer on port " + std::to_string(port) +
                                                   " within " + std::to_string(kLocalStartTimeout.count()) +
                                                   " s; it was stopped. Last error: " + last.description());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    connection_ = std::move(connection);
    local_ = std::move(local);
    return {};
}

tNavigator_API_RMA_error_t Manager::connect_to_dispatcher(
    const tNavigator_API_RMA_connection_options_t& options) {
    const char* call = "connect_to_dispatcher";
    if (connection_ && !connection_->closed())
        return makeError(kInvalidArgument,
                         std::string(call) + ": this manager is already connected; disconnect it first");
    const int port = options.get_port();
    if (port <= 0 || port > 65535)
        return invalidArgument(call, "port " + std::to_string(port) + " is not a TCP port (1..65535)");
    std::string host = options.get_remote_ip();
    if (host.empty()) host = "127.0.0.1";
    // An IPv6 address needs brackets before the port.
    const std::string target =
        (host.find(':') != std::string::npos && host.front() != '[' ? "[" + host + "]" : host) + ":" +
        std::to_string(port);
    auto connection = std::make_shared<Connection>(makeChannel(target), target);
    // Wait briefly for the channel to come up, so that a wrong host or port fails with a clear message.
    tNavigator_API_RMA_error_t error =
        connectOnce(connection, options.get_user_name(), options.get_crypted_password(), 5000, true);
    if (error.id() != 0) {
        if (error.id() == kTransport)
            return makeError(kTransport,
                             std::string(call) + ": no dispatcher answers at " + target +
                                 " (is it running, and are host and port right?): " + error.description());
        return makeError(error.id(), std::string(call) + ": the dispatcher at " + target +
                                         " refused the connection: " + error.description());
    }
    connection_ = std::move(connection);
    return {};
}

int Manager::is_connected() const {
    if (!connection_ || connection_->closed()) return 0;
    if (local_ && (!local_->running() || local_->stopped())) return 0;
    tnavapi::SessionRequest request;
    request.set_session(connection_->session());
    tnavapi::StatusReply reply;
    grpc::Status status;
    for (const auto deadline : {kPingDeadline, kSlowPingDeadline}) {
        grpc::ClientContext context;
        context.set_deadline(std::chrono::system_clock::now() + deadline);
        MeteredCall metered;
        status = connection_->stub().Ping(&context, request, &reply);
        if (status.error_code() != grpc::StatusCode::DEADLINE_EXCEEDED) break;
    }
    if (!status.ok()) return 0;
    return reply.error().id() == 0 ? 1 : 0;
}

void Manager::disconnect() {
    // A stopped local dispatcher cannot hear the goodbye: it is ended below without waiting for an answer.
    if (connection_ && !connection_->closed() && local_ && local_->stopped()) connection_->markClosed();
    if (connection_ && !connection_->closed()) {
        tnavapi::SessionRequest request;
        request.set_session(connection_->session());
        tnavapi::StatusReply reply;
        grpc::ClientContext context;
        context.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(2));
        grpc::Status status;
        {
            MeteredCall metered;
            status = connection_->stub().Disconnect(&context, request, &reply);
        }
        replyError("Disconnect", status, reply, *connection_);
        connection_->markClosed();
    }
    if (local_) {
        // A local dispatcher ends when its client leaves; it is made to if it does not.
        local_->stop(2000);
        local_.reset();
    }
    connection_.reset();
}

tNavigator_API_RMA_error_t Manager::launch_job(const tNavigator_API_RMA_start_params_t& params, int* job_id,
                                               tNavigator_API_RMA_request_t* request) {
    const char* call = "launch_job";
    if (request != nullptr) return asyncUnsupported(call);
    if (job_id == nullptr) return invalidArgument(call, "the job id output is null");
    if (params.get_case_file().empty()) return invalidArgument(call, "no case file was given");
    tnavapi::LaunchJobRequest message;
    message.set_case_file(params.get_case_file());
    message.set_cluster_queue(params.get_cluster_queue());
    message.set_node_count(params.get_node_count());
    for (const std::string& word : params.get_additional_params()) message.add_additional_params(word);
    tnavapi::LaunchJobReply reply;
    tNavigator_API_RMA_error_t error =
        invoke(connection_, call, &tnavapi::TNavigatorDispatcher::Stub::LaunchJob, message, reply);
    if (error.id() == 0) *job_id = reply.job_id();
    return error;
}

tNavigator_API_RMA_error_t Manager::get_job_by_id(int job_id, tNavigator_API_RMA_job_t*& job) {
    job = nullptr;
    tnavapi::JobRequest message;
    message.set_job_id(job_id);
    tnavapi::StatusReply reply;
    tNavigator_API_RMA_error_t error = invoke(
        connection_, "get_job_by_id", &tnavapi::TNavigatorDispatcher::Stub::GetJobById, message, reply);
    if (error.id() == 0) job = new Job(connection_, job_id);
    return error;
}

}  // namespace tnavclient
