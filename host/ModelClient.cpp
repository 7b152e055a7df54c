#include "host/ModelClient.h"

#include <cstring>

#include "host/Commands.h"

namespace host {

namespace {

// Offsets of the well data record.
constexpr std::size_t kGetSetSize = 105368;
constexpr std::size_t kMaskFlag = 8, kOil = 16, kWater = 96, kGas = 176, kPressure = 256, kTemperature = 416;
constexpr std::size_t kPoints = 496, kDowntime = 102360, kMaskKind = 102504;
constexpr int kMaxPoints = 10;
// The mask that shuts a well rather than stopping it.
constexpr std::int32_t kShutMask = 2;
constexpr double kNoValue = 3.4e35;

// A date record: serial valid, the serial at 8.
void PutDate(Buffer& record, std::size_t at, CalendarDate date) {
    record.Put<std::uint8_t>(at + 4, 1);
    record.Put<double>(at + 8, date.Serial());
}

std::uint64_t Arg(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

}  // namespace

ModelClient::ModelClient(Plugin& plugin) : plugin_(plugin), getSet_(kGetSetSize) {
    ErrorRecord err;
    if (plugin_.CreateInstance(&model_, &err) != 0 || model_ == nullptr) {
        throw RunError(std::string("ExtCreateInstance failed: ") + err.text);
    }
}

ModelClient::~ModelClient() {
    if (started_) plugin_.Cmd(model_, 0, kStop, 0, 0, nullptr);
    ErrorRecord err;
    plugin_.DestroyInstance(model_, &err);
}

std::int32_t ModelClient::Send(const char* operation, std::uint32_t command, std::uint64_t argument,
                               std::uint32_t count, std::int32_t success) {
    ErrorRecord err;
    const auto result = static_cast<std::int32_t>(plugin_.Cmd(model_, 0, command, argument, count, &err));
    if (result != success) {
        const std::string text(err.text, strnlen(err.text, sizeof err.text));
        throw RunError(std::string(operation) + " failed: " + (text.empty() ? "no message" : text));
    }
    return result;
}

void ModelClient::SetVar(const std::string& access, const std::string& value) {
    Buffer record(24);
    record.Put<std::uint64_t>(8, Arg(access.c_str()));
    record.Put<std::uint64_t>(16, Arg(value.c_str()));
    Send(("SetVar " + access + " = " + value).c_str(), kSetVar, record.Address());
}

std::string ModelClient::GetVar(const std::string& access) {
    Buffer record(528);
    record.Put<std::uint64_t>(8, Arg(access.c_str()));
    Send(("GetVar " + access).c_str(), kGetVar, record.Address());
    return record.Text(16, 512);
}

void ModelClient::DoCmd(const std::string& command) {
    Send(("DoCmd " + command).c_str(), kDoCmd, Arg(command.c_str()));
}

void ModelClient::StartSimulator() {
    started_ = true;
    Send("StartSimulator", kStartSimulator);
}

std::vector<QueriedWell> ModelClient::QueryWells() {
    std::vector<QueriedWell> wells;
    Buffer query(128);
    query.Put<std::int32_t>(28, -1);
    // The first child, then each next one until the driver answers that the index does not exist.
    for (std::uint32_t relation = 2;; relation = 1) {
        ErrorRecord err;
        if (static_cast<std::int32_t>(plugin_.Cmd(model_, 0, kQuery, query.Address(), relation, &err)) != 0)
            break;
        wells.push_back({query.Get<std::int32_t>(28), query.Text(32, 64), query.Get<std::int32_t>(4) == 2});
    }
    return wells;
}

CalendarDate ModelClient::StartDate() {
    Buffer date(32);
    Send("GetStartDate", kGetStartDate, date.Address());
    return CalendarDate::FromSerial(date.Get<double>(8));
}

void ModelClient::Initialise(const std::vector<Connection>& wells, CalendarDate start, CalendarDate end) {
    std::vector<std::int32_t> indices, kinds, phases;
    for (const Connection& well : wells) {
        indices.push_back(well.index);
        kinds.push_back(well.injector ? 2 : 1);
        phases.push_back(static_cast<std::int32_t>(well.phase));
    }
    Buffer init(176);
    init.Put<std::uint64_t>(8, Arg(indices.data()));
    init.Put<std::uint64_t>(16, Arg(kinds.data()));
    init.Put<std::uint64_t>(24, Arg(phases.data()));
    PutDate(init, 32, start);
    PutDate(init, 64, end);
    init.Put<std::int32_t>(128, static_cast<std::int32_t>(wells.size()));
    init.Put<std::uint32_t>(156, 1);  // run to the start date
    Send("Initialise", kInitialise, init.Address());
}

void ModelClient::SetConnection(std::int32_t well, bool connected) {
    Buffer record(12);
    record.Put<std::int32_t>(4, well);
    record.Put<std::uint8_t>(8, connected ? 1 : 0);
    Send("SetConnection", kSetConnection, record.Address());
}

InflowTable ModelClient::GetIpr(std::int32_t well) {
    getSet_.Put<std::int32_t>(4, well);
    Send("GetIPR", kGetIpr, getSet_.Address());
    InflowTable table;
    const int points = getSet_.Get<std::int32_t>(kPoints);
    for (int k = 0; k < points && k < kMaxPoints; ++k) {
        const std::size_t at = 8 * static_cast<std::size_t>(k);
        table.oil.push_back(getSet_.Get<double>(kOil + at));
        table.water.push_back(getSet_.Get<double>(kWater + at));
        table.gas.push_back(getSet_.Get<double>(kGas + at));
        table.pressure.push_back(getSet_.Get<double>(kPressure + at));
    }
    return table;
}

void ModelClient::SetOperatingPoint(std::int32_t well, const OperatingPoint& point) {
    std::memset(getSet_.data(), 0, getSet_.size());
    getSet_.Put<std::int32_t>(0, static_cast<std::int32_t>(kGetSetSize));
    getSet_.Put<std::int32_t>(4, well);
    getSet_.Put<std::uint8_t>(kMaskFlag, point.shut ? 1 : 0);
    getSet_.Put<std::int32_t>(kMaskKind, kShutMask);
    getSet_.Put<double>(kOil, point.oil);
    getSet_.Put<double>(kWater, point.water);
    getSet_.Put<double>(kGas, point.gas);
    getSet_.Put<double>(kTemperature, kNoValue);
    getSet_.Put<double>(kDowntime, 0.0);
    Send("SetOpPt", kSetOpPt, getSet_.Address());
}

void ModelClient::Timestep(CalendarDate target) {
    Buffer step(152);
    step.Put<std::int32_t>(0, 152);
    PutDate(step, 48, target);
    Send(("Timestep to " + target.Text()).c_str(), kTimestep, step.Address());
}

double ModelClient::NodeResult(std::int32_t index) {
    Buffer result(208);
    result.Put<std::int32_t>(4, index);
    Send("DoGetExtraNodeResults", kNodeResult, result.Address(), 0, 1);
    return result.Get<double>(96);
}

void ModelClient::WriteEquipment(const std::string& path, bool noVariables,
                                 const std::vector<std::string>& wells) {
    std::vector<const char*> names;
    for (const std::string& well : wells) names.push_back(well.c_str());
    names.push_back(nullptr);
    if (plugin_.EquipXml(model_, path.c_str(), noVariables ? 1 : 0, wells.empty() ? nullptr : names.data()) !=
        0)
        throw RunError("ExtEquipXml could not write the Model document " + path);
}

void ModelClient::Stop() {
    if (!started_) return;
    started_ = false;
    plugin_.Cmd(model_, 0, kStop, 0, 0, nullptr);
}

std::int32_t ModelClient::EditCase(bool& startAsked) {
    std::int32_t modified = 0;
    ErrorRecord err;
    const auto result = static_cast<std::int32_t>(plugin_.Cmd(model_, 0, kEditCase, Arg(&modified), 0, &err));
    if (result != 0 && result != -1) {
        const std::string text(err.text, strnlen(err.text, sizeof err.text));
        throw RunError("EditCase failed: " + (text.empty() ? std::string("no message") : text));
    }
    startAsked = modified != 0;
    return result;
}

}  // namespace host
