#include "client/Connection.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <utility>

#include "client/CallMeter.h"

namespace {

std::atomic<std::uint64_t> s_calls{0};
std::atomic<std::uint64_t> s_nanoseconds{0};

}  // namespace

extern "C" void tnavclient_read_call_meter(tnavclient_call_meter_t* meter) {
    if (meter == nullptr) return;
    meter->calls = s_calls.load(std::memory_order_relaxed);
    meter->nanoseconds = s_nanoseconds.load(std::memory_order_relaxed);
}

namespace tnavclient {

MeteredCall::~MeteredCall() {
    const auto took = std::chrono::steady_clock::now() - start_;
    s_calls.fetch_add(1, std::memory_order_relaxed);
    s_nanoseconds.fetch_add(
        static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(took).count()),
        std::memory_order_relaxed);
}

tNavigator_API_RMA_error_t makeError(int id, std::string description) {
    return tNavigator_API_RMA_error_t(id, std::move(description));
}

tNavigator_API_RMA_error_t asyncUnsupported(const char* call) {
    return makeError(kAsyncUnsupported, std::string(call) +
                                            ": asynchronous requests are not supported by this client; "
                                            "pass a null request to call it synchronously");
}

tNavigator_API_RMA_error_t invalidArgument(const char* call, const std::string& what) {
    return makeError(kInvalidArgument, std::string(call) + ": " + what);
}

Connection::Connection(std::shared_ptr<grpc::Channel> channel, std::string target)
    : channel_(std::move(channel)),
      stub_(tnavapi::TNavigatorDispatcher::NewStub(channel_)),
      target_(std::move(target)) {}

Connection::~Connection() {
    if (log_ != nullptr) std::fclose(log_);
}

void Connection::openLog(const std::string& path) {
    std::lock_guard<std::mutex> lock(logMutex_);
    if (log_ != nullptr) std::fclose(log_);
    log_ = std::fopen(path.c_str(), "a");
}

void Connection::log(const std::string& line) {
    std::lock_guard<std::mutex> lock(logMutex_);
    if (log_ == nullptr) return;
    const std::time_t now = std::time(nullptr);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", std::gmtime(&now));
    std::fprintf(log_, "%s client: %s\n", stamp, line.c_str());
    std::fflush(log_);
}

std::shared_ptr<grpc::Channel> makeChannel(const std::string& target) {
    grpc::ChannelArguments args;
    args.SetMaxReceiveMessageSize(-1);
    args.SetMaxSendMessageSize(-1);
    args.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, 100);
    args.SetInt(GRPC_ARG_MIN_RECONNECT_BACKOFF_MS, 100);
    args.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, 500);
    // A dispatcher that stops answering (a frozen process or host, a cut network) fails the calls under way
    // once a transport ping goes unanswered, instead of holding them to their deadline; waits included.
    args.SetInt(GRPC_ARG_KEEPALIVE_TIME_MS, static_cast<int>(kKeepaliveTime.count()));
    args.SetInt(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, static_cast<int>(kKeepaliveTimeout.count()));
    args.SetInt(GRPC_ARG_KEEPALIVE_PERMIT_WITHOUT_CALLS, 0);
    args.SetInt(GRPC_ARG_HTTP2_MAX_PINGS_WITHOUT_DATA, 0);
    args.SetInt(GRPC_ARG_HTTP2_MIN_SENT_PING_INTERVAL_WITHOUT_DATA_MS,
                static_cast<int>(kKeepaliveTime.count()));
    return grpc::CreateCustomChannel(target, grpc::InsecureChannelCredentials(), args);
}

tNavigator_API_RMA_error_t statusError(const char* call, const Connection& connection,
                                       const grpc::Status& status) {
    std::string text;
    switch (status.error_code()) {
        case grpc::StatusCode::UNAVAILABLE:
            text = "the dispatcher at " + connection.target() + " cannot be reached (" +
                   status.error_message() + "); it may have stopped";
            break;
        case grpc::StatusCode::DEADLINE_EXCEEDED:
            text = "the dispatcher at " + connection.target() + " did not answer in time";
            break;
        case grpc::StatusCode::UNIMPLEMENTED:
            text = "the dispatcher at " + connection.target() + " does not support this call";
            break;
        default:
            text = "the call to the dispatcher at " + connection.target() + " failed with gRPC status " +
                   std::to_string(static_cast<int>(status.error_code())) + ": " + status.error_message();
            break;
    }
    return makeError(kTransport, std::string(call) + ": " + text);
}

}  // namespace tnavclient
