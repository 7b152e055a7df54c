// Arbitrary bytes as a run of request messages of the stand-in's protocol (simapi/tnavapi.proto), each
// handed in-process to the dispatcher's own service, with no network. Every input starts a fresh service,
// local or in cluster mode, connects, and launches a job on the SPE1 deck; then each record is
//
//   [selector] [length] [length bytes of the request message]
//
// where the selector's low six bits pick the call and its top bit puts the live session and job into the
// message. A message that does not parse is skipped. Every reply must carry an error id the dispatcher
// gives, with a description when it is not 0, and must serialise and parse back to itself; a time moment
// given as a date must be one that the client library's time moment accepts.
//
// The service class is only defined in standin/Dispatcher.cpp, so that file is compiled here. Its deck
// reads go through a copy of the SPE1 deck read once, so that a job is quick to launch and every input
// starts from the same state; any other case file is refused as unreadable.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "standin/DeckReader.h"
#include "tNavigator_API_RMA.h"

namespace rivulet::standin {
DeckModel ReadDeckOnce(const std::string& path);
}

#define ReadDeck ReadDeckOnce
#include "standin/Dispatcher.cpp"
#undef ReadDeck

namespace rivulet::standin {

namespace {

const std::string kDeck = RIVULET_SOURCE_DIR "/examples/decks/spe1/SPE1CASE1.DATA";
const std::string kUsers = RIVULET_SOURCE_DIR "/examples/cluster/users.txt";
// The pair that examples/cluster/users.txt accepts.
constexpr char kUser[] = "rivulet";
constexpr char kToken[] = "sha256:c4a7b924ec9cc821c2a50efebd564fc0e75f873f4ce6f85213c21fd071e878df";

}  // namespace

DeckModel ReadDeckOnce(const std::string& path) {
    static const DeckModel deck = ReadDeck(kDeck);
    if (path != kDeck) throw DeckError(path + ": not a deck this harness reads");
    return deck;
}

}  // namespace rivulet::standin

namespace {

using namespace rivulet::standin;

struct Live {
    std::uint64_t session = 0;
    int job = 0;
};

template <typename Message>
void CheckRoundTrip(const Message& message) {
    std::string bytes;
    if (!message.SerializeToString(&bytes)) __builtin_trap();
    Message again;
    if (!again.ParseFromString(bytes)) __builtin_trap();
    std::string twice;
    if (!again.SerializeToString(&twice) || twice != bytes) __builtin_trap();
}

// What the client library makes of a reply's moment.
void CheckMoment(const tnavapi::TimeMomentRequest& request, const tnavapi::TimeMomentReply& reply) {
    if (reply.error().id() != 0) return;
    const tnavapi::TimeMoment& m = reply.moment();
    tNavigator_API_RMA_time_moment_t moment(m.year(), static_cast<tNavigator_API_RMA_month_t>(m.month()),
                                            m.day());
    moment.set_hour(m.hour());
    moment.set_minute(m.minute());
    moment.set_second(m.second());
    const tNavigator_API_RMA_error_t valid = moment.is_valid();
    if (valid.id() != 0 && (valid.description() == nullptr || *valid.description() == '\0')) __builtin_trap();
    // The start, the end and the present are always dates; the next report date may be none (month 13).
    if (request.type() != 3 ? valid.id() != 0 : valid.id() != 0 && m.month() != 13) __builtin_trap();
}

template <typename Request, typename Reply>
void Call(DispatcherService& service,
          grpc::Status (DispatcherService::*method)(grpc::ServerContext*, const Request*, Reply*),
          std::string_view bytes, bool patch, Live& live) {
    Request request;
    if (!request.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) return;
    CheckRoundTrip(request);
    if (patch) {
        if constexpr (requires { request.set_session(std::uint64_t{}); }) request.set_session(live.session);
        if constexpr (requires { request.set_job_id(int{}); }) request.set_job_id(live.job);
    }
    Reply reply;
    if (!(service.*method)(nullptr, &request, &reply).ok()) __builtin_trap();
    const int id = reply.error().id();
    if (id < 0 || id > 7) __builtin_trap();
    if (id != 0 && reply.error().description().empty()) __builtin_trap();
    CheckRoundTrip(reply);
    if constexpr (std::is_same_v<Reply, tnavapi::TimeMomentReply>) CheckMoment(request, reply);
    if constexpr (std::is_same_v<Reply, tnavapi::ConnectReply>)
        if (id == 0) live.session = reply.session();
    if constexpr (std::is_same_v<Reply, tnavapi::LaunchJobReply>)
        if (id == 0) live.job = reply.job_id();
}

using Caller = void (*)(DispatcherService&, std::string_view, bool, Live&);

#define RPC(name)                                                    \
    +[](DispatcherService& s, std::string_view b, bool p, Live& l) { \
        Call(s, &DispatcherService::name, b, p, l);                  \
    }

const Caller kCalls[] = {
    RPC(Connect),
    RPC(Ping),
    RPC(Disconnect),
    RPC(LaunchJob),
    RPC(GetJobById),
    RPC(WaitForStart),
    RPC(WaitForState),
    RPC(State),
    RPC(IsJobStarted),
    RPC(IsJobEnded),
    RPC(CheckCompatibility),
    RPC(GetTnavVersion),
    RPC(GetTimeMoment),
    RPC(Run),
    RPC(Stop),
    RPC(GetMathModelType),
    RPC(UnitSystem),
    RPC(GetNumberOfPvtRegions),
    RPC(BlackOilGetScDensities),
    RPC(ComposIsMiscibleOptionEnabled),
    RPC(ComposGetNumberOfEosRegions),
    RPC(IsothermComposGetEosTypes),
    RPC(ComposGetNumberOfHydrocarbonComponents),
    RPC(ComposGetNumberOfWaterComponents),
    RPC(ComposGetHcComponentNames),
    RPC(ComposGetComponentProperties),
    RPC(IsothermComposGetComponentBinaryInteractionCoefficients),
    RPC(ComposGetWaterComponentNames),
    RPC(ComposGetWaterScDensities),
    RPC(GetWellCount),
    RPC(GetWellNames),
    RPC(GetWellFirstActiveStatuses),
    RPC(GetWellEosRegions),
    RPC(GetWellPvtRegions),
    RPC(GetWellStatuses),
    RPC(GetInjectorPhases),
    RPC(GetWellEfficiencyFactors),
    RPC(GetWellParams),
    RPC(GetComponentWellParams),
    RPC(GetMaxRates),
    RPC(GetSpecificRateBhpIpr),
    RPC(GetScDensitiesOfMaxRates),
    RPC(GetCompositionOfMaxRates),
    RPC(SetNumberOfIprPoints),
    RPC(SetInjPhasesForIprShutWells),
    RPC(SetNewWellStatuses),
    RPC(SetWellEfficiencyFactors),
    RPC(DisableAllLimits),
    RPC(EnableProducerLimits),
    RPC(SetProducerTargets),
    RPC(SetInjectorPhases),
    RPC(EnableInjectorLimits),
    RPC(SetInjectorTargets),
    RPC(SetInjectorThermalParameters),
    RPC(SetInjectedGasComposition),
    RPC(CheckNewControls),
};

#undef RPC

constexpr std::size_t kCallCount = sizeof kCalls / sizeof kCalls[0];
constexpr int kMaxRecords = 32;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    static const DispatcherOptions local;
    static const DispatcherOptions cluster = [] {
        DispatcherOptions options;
        options.users_file = kUsers;
        return options;
    }();
    const bool clusterMode = (data[0] & 0x01) != 0;
    DispatcherService service(clusterMode ? cluster : local, nullptr);

    Live live;
    {
        tnavapi::ConnectRequest request;
        if (clusterMode) {
            request.set_user_name(kUser);
            request.set_crypted_password(kToken);
        }
        tnavapi::ConnectReply reply;
        service.Connect(nullptr, &request, &reply);
        if (reply.error().id() != 0) __builtin_trap();
        live.session = reply.session();
    }
    if ((data[0] & 0x02) != 0) {
        tnavapi::LaunchJobRequest request;
        request.set_session(live.session);
        request.set_case_file(kDeck);
        tnavapi::LaunchJobReply reply;
        service.LaunchJob(nullptr, &request, &reply);
        if (reply.error().id() != 0) __builtin_trap();
        live.job = reply.job_id();
    }

    std::size_t at = 1;
    for (int record = 0; record < kMaxRecords && at + 2 <= size; ++record) {
        const std::uint8_t selector = data[at];
        const std::size_t length = std::min<std::size_t>(data[at + 1], size - at - 2);
        const std::string_view bytes(reinterpret_cast<const char*>(data + at + 2), length);
        at += 2 + length;
        kCalls[(selector & 0x3F) % kCallCount](service, bytes, (selector & 0x80) != 0, live);
    }
    return 0;
}
