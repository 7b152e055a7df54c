// The dispatcher of the stand-in simulator: a gRPC server of the tnavapi.TNavigatorDispatcher service that
// runs jobs on StandinReservoir engines, one engine per job.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace grpc {
class Server;
}

namespace rivulet::standin {

struct DispatcherOptions {
    int port = 0;  // 0 picks a free port (tests)
    std::string bind = "127.0.0.1";
    std::optional<std::string> users_file;  // cluster mode when set
    std::optional<std::string> debug_file;  // one line per call and its reply
    std::string version_text = "v23.4";     // the form the driver's version gate reads
};

class DispatcherService;

class Dispatcher {
  public:
    explicit Dispatcher(DispatcherOptions options);
    ~Dispatcher();
    Dispatcher(const Dispatcher&) = delete;
    Dispatcher& operator=(const Dispatcher&) = delete;

    // Binds and starts serving; throws std::runtime_error with a message for the user when the users
    // file, the debug file or the port cannot be used.
    void Start();
    int Port() const { return port_; }
    // Blocks until RequestStop() or Shutdown() or, in local mode, until the last client disconnects.
    void Wait();
    // Wakes Wait(); safe from any thread, including the server's own.
    void RequestStop();
    // Stops serving, letting calls under way finish for up to 0.3 s. Idempotent.
    void Shutdown();

  private:
    DispatcherOptions options_;
    std::unique_ptr<DispatcherService> service_;
    std::unique_ptr<grpc::Server> server_;
    int port_ = 0;
    std::mutex shutdown_mutex_;
    std::mutex mutex_;
    std::condition_variable done_cv_;
    bool done_ = false;
};

}  // namespace rivulet::standin
