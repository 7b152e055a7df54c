// How many calls this client library has made to dispatchers, and how long they took, for programs that
// measure their own use of the simulator (benchmarks, profiles). Counted from the first call in the process.
#pragma once

#include <chrono>
#include <cstdint>

extern "C" {

struct tnavclient_call_meter_t {
    std::uint64_t calls;
    std::uint64_t nanoseconds;  // wall time from each request's sending to its reply
};
static_assert(sizeof(tnavclient_call_meter_t) == 16);

__attribute__((visibility("default"))) void tnavclient_read_call_meter(tnavclient_call_meter_t* meter);
}

namespace tnavclient {

// Counts one call and its time on the meter when it goes out of scope.
class MeteredCall {
  public:
    MeteredCall() : start_(std::chrono::steady_clock::now()) {}
    ~MeteredCall();
    MeteredCall(const MeteredCall&) = delete;
    MeteredCall& operator=(const MeteredCall&) = delete;

  private:
    std::chrono::steady_clock::time_point start_;
};

}  // namespace tnavclient
