// One model instance of the plug-in, driven through its command table as Conflux drives it. Every command
// that the driver answers with a failure throws RunError with the operation's name and the driver's text.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/Buffer.h"
#include "host/CalendarDate.h"
#include "host/Network.h"
#include "host/Plugin.h"

namespace host {

class RunError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct QueriedWell {
    std::int32_t index = 0;
    std::string name;
    bool injector = false;
};

// A well the network connects: its index, whether the network sees it as an injector, and its phase code.
struct Connection {
    std::int32_t index = 0;
    bool injector = false;
    NetworkPhase phase = NetworkPhase::kLiquid;
};

class ModelClient {
  public:
    explicit ModelClient(Plugin& plugin);
    // Stops a simulator that still runs, then destroys the instance.
    ~ModelClient();
    ModelClient(const ModelClient&) = delete;
    ModelClient& operator=(const ModelClient&) = delete;

    void SetVar(const std::string& access, const std::string& value);
    std::string GetVar(const std::string& access);
    void DoCmd(const std::string& command);
    void StartSimulator();
    std::vector<QueriedWell> QueryWells();
    CalendarDate StartDate();
    // Connects the wells, checks the end date and runs the simulator to `start` when it lies ahead.
    void Initialise(const std::vector<Connection>& wells, CalendarDate start, CalendarDate end);
    void SetConnection(std::int32_t well, bool connected);
    InflowTable GetIpr(std::int32_t well);
    void SetOperatingPoint(std::int32_t well, const OperatingPoint& point);
    void Timestep(CalendarDate target);
    // A node result by its index (0 to 11 field rows, then 14 rows per well); no value is 3.4e35.
    double NodeResult(std::int32_t index);
    // Has the driver write its Model document (ExtEquipXml) for all wells, or those of `wells`; throws
    // RunError when it answers that it could not.
    void WriteEquipment(const std::string& path, bool noVariables, const std::vector<std::string>& wells);
    void Stop();
    // Opens the driver's case dialog (EditCase): 0 when it closed with OK, -1 with Cancel. `startAsked` says
    // whether the user asked from the dialog for the simulator to be started.
    std::int32_t EditCase(bool& startAsked);
    // The plug-in's instance, for callers that send records of their own.
    void* Instance() const { return model_; }

  private:
    // Sends a command; a result other than `success` throws with `operation` and the driver's text.
    std::int32_t Send(const char* operation, std::uint32_t command, std::uint64_t argument = 0,
                      std::uint32_t count = 0, std::int32_t success = 0);

    Plugin& plugin_;
    void* model_ = nullptr;
    bool started_ = false;
    Buffer getSet_;  // the well data record of GetIPR and SetOpPt, reused for every well
};

}  // namespace host
