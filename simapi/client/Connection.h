// Shared state of one client connection to a dispatcher and the helper that turns one RPC into an error.
#pragma once

#include <grpcpp/grpcpp.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "client/CallMeter.h"
#include "tNavigator_API_RMA.h"
#include "tnavapi.grpc.pb.h"

namespace tnavclient {

// Error ids of failures found by the client itself; the dispatcher's own ids pass through unchanged.
enum ErrorId : int {
    kInvalidArgument = 101,
    kNotConnected = 102,
    kTransport = 103,
    kAsyncUnsupported = 104,
    kDispatcherStart = 105,
    kBadReply = 106,
    kNotAvailable = 107,
};

tNavigator_API_RMA_error_t makeError(int id, std::string description);
tNavigator_API_RMA_error_t asyncUnsupported(const char* call);
tNavigator_API_RMA_error_t invalidArgument(const char* call, const std::string& what);

// One connection: the channel, the session that Connect opened and the optional debug log. Jobs share it with
// their manager, so a job stays usable (and fails cleanly) after the manager is gone.
class Connection {
  public:
    Connection(std::shared_ptr<grpc::Channel> channel, std::string target);
    ~Connection();

    const std::string& target() const { return target_; }
    tnavapi::TNavigatorDispatcher::Stub& stub() { return *stub_; }
    grpc::Channel& channel() { return *channel_; }
    std::uint64_t session() const { return session_; }
    void setSession(std::uint64_t session) { session_ = session; }
    bool closed() const { return closed_; }
    void markClosed() { closed_ = true; }

    // Appends one line to the debug log, when there is one.
    void openLog(const std::string& path);
    void log(const std::string& line);
    bool logging() const { return log_ != nullptr; }

  private:
    std::shared_ptr<grpc::Channel> channel_;
    std::unique_ptr<tnavapi::TNavigatorDispatcher::Stub> stub_;
    std::string target_;
    std::uint64_t session_ = 0;
    bool closed_ = false;
    std::mutex logMutex_;
    std::FILE* log_ = nullptr;
};

// Creates a channel with the client's settings (fast reconnects, no message size limit).
std::shared_ptr<grpc::Channel> makeChannel(const std::string& target);

// Deadline of ordinary calls; waits have none. A dead dispatcher closes its socket and ends them; one that
// no longer answers the transport's pings, sent every kKeepaliveTime during a call, ends them after a further
// kKeepaliveTimeout.
constexpr std::chrono::seconds kCallDeadline{120};
constexpr std::chrono::milliseconds kKeepaliveTime{300};
constexpr std::chrono::milliseconds kKeepaliveTimeout{900};

// Turns a finished RPC into the library's error: transport failures become kTransport with the gRPC text,
// the reply's own Error passes through.
tNavigator_API_RMA_error_t statusError(const char* call, const Connection& connection,
                                       const grpc::Status& status);

template <class Reply>
tNavigator_API_RMA_error_t replyError(const char* call, const grpc::Status& status, const Reply& reply,
                                      Connection& connection) {
    if (!status.ok()) {
        tNavigator_API_RMA_error_t error = statusError(call, connection, status);
        connection.log(std::string(call) + " failed: " + error.description());
        return error;
    }
    if (reply.error().id() != 0) {
        connection.log(std::string(call) + " -> error " + std::to_string(reply.error().id()) + ": " +
                       reply.error().description());
        std::string description = reply.error().description();
        if (description.empty()) description = std::string(call) + " failed in the dispatcher";
        return makeError(reply.error().id(), std::move(description));
    }
    connection.log(std::string(call) + " -> ok");
    return {};
}

// Runs one unary RPC of the stub: fills the session, applies the deadline (none when wait is true) and gives
// the error of the call.
template <class Request, class Reply, class Method>
tNavigator_API_RMA_error_t invoke(const std::shared_ptr<Connection>& connection, const char* call,
                                  Method method, Request& request, Reply& reply, bool wait = false) {
    if (!connection || connection->closed())
        return makeError(kNotConnected, std::string("Cannot call ") + call +
                                            ": the client is not connected to a dispatcher");
    request.set_session(connection->session());
    grpc::ClientContext context;
    if (!wait) context.set_deadline(std::chrono::system_clock::now() + kCallDeadline);
    if (connection->logging()) connection->log(std::string(call) + " <- " + request.ShortDebugString());
    grpc::Status status;
    {
        MeteredCall metered;
        status = (connection->stub().*method)(&context, request, &reply);
    }
    return replyError(call, status, reply, *connection);
}

}  // namespace tnavclient
