// Writes the seed corpora of the newer fuzzers from what the project itself writes: model strings saved by
// the driver, registry files written by the machine configuration and the case settings, and protocol
// messages of a client session with the stand-in. Run from the repository's top folder:
//
//   build/fuzz/bin/fuzz_seed_writer fuzz/corpus
//
// The scenario seeds are the example scenarios (examples/*/*.toml), copied as they stand.
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "case/CaseSettings.h"
#include "common/PasswordStore.h"
#include "driver/ExtModel.h"
#include "session/MachineConfig.h"
#include "tnavapi.pb.h"

using namespace rivulet;
namespace fs = std::filesystem;

namespace {

fs::path gOut;

void WriteSeed(const std::string& corpus, const std::string& name, const std::string& bytes) {
    fs::create_directories(gOut / corpus);
    std::ofstream(gOut / corpus / name, std::ios::binary) << bytes;
    std::printf("%s/%s: %zu bytes\n", corpus.c_str(), name.c_str(), bytes.size());
}

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The saved model string, cut to the shortest buffer the model saves into.
std::string SavedModelString(CExtModel& model) {
    std::vector<char> buffer(kModelStringCapacity);
    tErrorRecord err{};
    std::int32_t low = 0;
    std::int32_t high = kModelStringCapacity;
    while (low < high) {
        const std::int32_t mid = (low + high) / 2;
        if (model.SaveModelString(buffer.data(), mid, &err) == 0) {
            high = mid;
        } else {
            low = mid + 1;
        }
    }
    std::fill(buffer.begin(), buffer.end(), 0);
    if (model.SaveModelString(buffer.data(), low, &err) != 0) std::abort();
    return std::string(buffer.data(), static_cast<std::size_t>(low));
}

void Set(CExtModel& model, const std::string& access, const std::string& value) {
    tSetVarData set{};
    set.pszAccess = access.c_str();
    set.pszValue = value.c_str();
    tErrorRecord err{};
    if (model.SetVar(&set, &err) != 0) std::fprintf(stderr, "SetVar %s: %s\n", access.c_str(), err.szText);
}

void TopLevel(CExtModel& model, const char* path, const char* options) {
    auto file = std::make_unique<tTopLevelFile>();
    std::snprintf(file->szPath, sizeof file->szPath, "%s", path);
    std::snprintf(file->szOptions, sizeof file->szOptions, "%s", options);
    tErrorRecord err{};
    model.SetTopLevelFile(file.get(), &err);
}

void ModelStrings(const fs::path& root) {
    {
        CExtModel model;
        WriteSeed("model_string", "new-model", SavedModelString(model));
    }
    {
        CExtModel model;
        TopLevel(model, (root / "examples/decks/spe1/SPE1CASE1.DATA").c_str(), "Linux|true");
        Set(model, "TNAVIGATOR.CaseDetails.RateControl", "1");
        Set(model, "TNAVIGATOR.CaseDetails.IprAlpha", "1");
        WriteSeed("model_string", "local-spe1", SavedModelString(model));
    }
    {
        CExtModel model;
        TopLevel(model, "/cluster/cases/SPE9_CP.DATA",
                 "Linux|false|SharedPath|\\\\server\\cases\\|HeadNode|head01|HeadNodePort|15960");
        Set(model, "TNAVIGATOR.CaseDetails.IsLocalMachine", "0");
        Set(model, "TNAVIGATOR.CaseDetails.HeadNodeName", "head01");
        Set(model, "TNAVIGATOR.CaseDetails.HeadNodePort", "15960");
        Set(model, "TNAVIGATOR.CaseDetails.WindowsEquivDir", "\\\\server\\cases\\");
        Set(model, "TNAVIGATOR.CaseDetails.LinuxQueue", "batch");
        Set(model, "TNAVIGATOR.CaseDetails.ParallelCount", "4");
        Set(model, "TNAVIGATOR.CaseDetails.DefaultFluidTemp", "180.5");
        Set(model, "TNAVIGATOR.CaseDetails.FluidTempUnit", "1");
        Set(model, "TNAVIGATOR.CaseDetails.IprModel", "2");
        Set(model, "TNAVIGATOR.CaseDetails.UnconnectedState", "1");
        WriteSeed("model_string", "cluster-spe9", SavedModelString(model));
    }
}

void Registries(const fs::path& scratch) {
    const fs::path file = scratch / "registry.reg";
    ::setenv("RIVULET_REGISTRY", file.c_str(), 1);
    const auto fresh = [&] {
        fs::remove(file);
        fs::remove(file.string() + ".lock");
    };

    fresh();
    {
        MachineConfig config;
        config.Store();
    }
    WriteSeed("registry_store", "machine-defaults", ReadAll(file));

    fresh();
    {
        MachineConfig config;
        config.SimExecutable = "/bin/sh";
        config.DebugCommsDirectory = "/tmp";
        config.LinuxUser = "rivulet";
        config.AllLinuxQueues = "batch|long|short";
        config.LowerPort = 15990;
        config.UpperPort = 15970;
        config.Password = StorePassword(std::string("s3cret pass"));
        config.Store();
        CaseSettings settings;
        settings.FileName = "/cases/SPE1CASE1.DATA";
        settings.IsLocalMachine = false;
        settings.HeadNodeName = "head01";
        settings.HeadNodePort = 15960;
        settings.WindowsEquivDir = "\\\\server\\cases\\";
        settings.LinuxQueue = "batch";
        settings.SaveLastUsed();
    }
    WriteSeed("registry_store", "machine-and-case", ReadAll(file));

    fresh();
    {
        MachineConfig config;
        config.LinuxUser = "name with \"quotes\" and \\ backslash";
        config.Password = kPasswordMask;
        config.Store();
    }
    WriteSeed("registry_store", "escapes-and-mask", ReadAll(file));
    fresh();
}

// One record of the protocol fuzzer: selector (call index, top bit for the live session and job), length
// and the message.
template <typename Message>
std::string Record(int call, const Message& message) {
    std::string bytes = message.SerializeAsString();
    if (bytes.size() > 255) std::abort();
    std::string record;
    record += static_cast<char>(call | 0x80);
    record += static_cast<char>(bytes.size());
    return record + bytes;
}

tnavapi::JobRequest Job() {
    tnavapi::JobRequest request;
    request.set_session(1);
    request.set_job_id(1);
    return request;
}

tnavapi::WellsRequest Wells(std::initializer_list<int> wells) {
    tnavapi::WellsRequest request;
    request.set_session(1);
    request.set_job_id(1);
    for (int w : wells) request.add_wells(w);
    return request;
}

tnavapi::WellCodesRequest Codes(std::initializer_list<int> wells, std::initializer_list<int> codes) {
    tnavapi::WellCodesRequest request;
    request.set_session(1);
    request.set_job_id(1);
    for (int w : wells) request.add_wells(w);
    for (int c : codes) request.add_codes(c);
    return request;
}

// The calls of a coupled step as the client library makes them, in the fuzzer's numbering.
void Protocol(const fs::path& root) {
    enum {
        kConnect = 0,
        kPing = 1,
        kDisconnect = 2,
        kLaunchJob = 3,
        kGetJobById = 4,
        kWaitForStart = 5,
        kWaitForState = 6,
        kState = 7,
        kCheckCompatibility = 10,
        kGetTnavVersion = 11,
        kGetTimeMoment = 12,
        kRun = 13,
        kStop = 14,
        kGetMathModelType = 15,
        kUnitSystem = 16,
        kGetNumberOfPvtRegions = 17,
        kBlackOilGetScDensities = 18,
        kGetWellCount = 29,
        kGetWellNames = 30,
        kGetWellStatuses = 34,
        kGetWellParams = 37,
        kGetMaxRates = 39,
        kGetSpecificRateBhpIpr = 40,
        kSetNumberOfIprPoints = 43,
        kSetNewWellStatuses = 45,
        kEnableProducerLimits = 48,
        kSetProducerTargets = 49,
        kEnableInjectorLimits = 51,
        kCheckNewControls = 55
    };
    std::string start(1, '\x02');  // local, with a job on the SPE1 deck
    {
        tnavapi::CompatibilityRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.set_protocol_version(tnavapi::PROTOCOL_VERSION_CURRENT);
        start += Record(kCheckCompatibility, request);
    }
    start += Record(kGetTnavVersion, Job()) + Record(kGetMathModelType, Job()) + Record(kUnitSystem, Job()) +
             Record(kGetNumberOfPvtRegions, Job()) + Record(kBlackOilGetScDensities, Job()) +
             Record(kGetWellCount, Job()) + Record(kGetWellNames, Job()) +
             Record(kGetWellStatuses, Wells({0, 1}));
    for (int type : {0, 1, 2, 3}) {
        tnavapi::TimeMomentRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.set_type(type);
        start += Record(kGetTimeMoment, request);
    }
    WriteSeed("standin_protocol", "job-start", start);

    std::string step(1, '\x02');
    {
        tnavapi::IprPointsRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.set_count(5);
        step += Record(kSetNumberOfIprPoints, request);
    }
    {
        tnavapi::SpecificRateBhpIprRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.add_wells(0);
        request.add_phases(1);
        for (double rate : {0.0, 5000.0, 10000.0, 15000.0, 20000.0}) request.add_rates(rate);
        step += Record(kGetSpecificRateBhpIpr, request);
    }
    step += Record(kGetMaxRates, Codes({0, 1}, {1, 2}));
    {
        tnavapi::WellLimitsRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.add_wells(0);
        request.add_kinds(1);
        request.add_kinds(5);
        request.add_values(12000.0);
        request.add_values(1000.0);
        step += Record(kEnableProducerLimits, request);
    }
    step += Record(kSetProducerTargets, Codes({0}, {1}));
    {
        tnavapi::WellLimitsRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.add_wells(1);
        request.add_kinds(0);
        request.add_values(100000.0);
        step += Record(kEnableInjectorLimits, request);
    }
    step += Record(kCheckNewControls, Job());
    {
        tnavapi::RunRequest request;
        request.set_session(1);
        request.set_job_id(1);
        tnavapi::TimeMoment* moment = request.mutable_moment();
        moment->set_year(2015);
        moment->set_month(2);
        moment->set_day(1);
        step += Record(kRun, request);
    }
    {
        tnavapi::WaitForStateRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.set_state(1);
        step += Record(kWaitForState, request);
    }
    {
        tnavapi::WellParamsRequest request;
        request.set_session(1);
        request.set_job_id(1);
        request.add_wells(0);
        request.add_wells(1);
        for (int p : {0, 1, 3, 16, 17}) request.add_params(p);
        step += Record(kGetWellParams, request);
    }
    step += Record(kSetNewWellStatuses, Codes({1}, {3})) + Record(kState, Job()) + Record(kStop, Job());
    WriteSeed("standin_protocol", "coupled-step", step);

    std::string manager(1, '\x01');  // cluster mode, no job
    manager += Record(kPing, Job());
    {
        tnavapi::ConnectRequest request;
        request.set_user_name("rivulet");
        request.set_crypted_password("sha256:0000");
        request.set_client_pid(4242);
        manager += Record(kConnect, request);
    }
    {
        tnavapi::LaunchJobRequest request;
        request.set_session(1);
        request.set_case_file((root / "examples/decks/spe1/SPE1CASE1.DATA").string());
        request.set_cluster_queue("batch");
        request.set_node_count(2);
        request.add_additional_params("--ecl-root");
        manager += Record(kLaunchJob, request);
    }
    manager += Record(kGetJobById, Job()) + Record(kWaitForStart, Job()) + Record(kDisconnect, Job());
    WriteSeed("standin_protocol", "cluster-manager", manager);
}

void Scenarios(const fs::path& root) {
    for (const auto& folder : fs::directory_iterator(root / "examples")) {
        if (!folder.is_directory()) continue;
        for (const auto& file : fs::directory_iterator(folder.path()))
            if (file.path().extension() == ".toml")
                WriteSeed("scenario",
                          folder.path().filename().string() + "-" + file.path().filename().string(),
                          ReadAll(file.path()));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <corpus folder>\n", argv[0]);
        return 2;
    }
    gOut = argv[1];
    const fs::path root = fs::current_path();
    char name[] = "/tmp/rivulet-seeds-XXXXXX";
    if (::mkdtemp(name) == nullptr) return 1;
    const fs::path scratch = name;
    ::setenv("RIVULET_REGISTRY", (scratch / "registry.reg").c_str(), 1);
    ModelStrings(root);
    Registries(scratch);
    Protocol(root);
    Scenarios(root);
    fs::remove_all(scratch);
    return 0;
}
