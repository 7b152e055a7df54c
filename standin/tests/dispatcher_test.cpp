#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <thread>

#include "standin/Dispatcher.h"
#include "standin/UsersFile.h"
#include "tnavapi.grpc.pb.h"

namespace rivulet::standin {
namespace {

const std::string kSpe1 = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";

using Stub = tnavapi::TNavigatorDispatcher::Stub;

std::unique_ptr<Stub> Connect(int port) {
    return tnavapi::TNavigatorDispatcher::NewStub(
        grpc::CreateChannel("127.0.0.1:" + std::to_string(port), grpc::InsecureChannelCredentials()));
}

// Calls one RPC with a deadline, so a hung server fails the test instead of blocking it.
template <typename Request, typename Reply>
Reply Call(grpc::Status (Stub::*rpc)(grpc::ClientContext*, const Request&, Reply*), Stub& stub,
           const Request& rq) {
    grpc::ClientContext ctx;
    ctx.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(20));
    Reply rp;
    const grpc::Status s = (stub.*rpc)(&ctx, rq, &rp);
    EXPECT_TRUE(s.ok()) << s.error_message();
    return rp;
}

class DispatcherTest : public ::testing::Test {
  protected:
    void SetUp() override {
        server_ = std::make_unique<Dispatcher>(DispatcherOptions{});
        server_->Start();
        stub_ = Connect(server_->Port());
        const auto rp = Call(&Stub::Connect, *stub_, tnavapi::ConnectRequest());
        ASSERT_EQ(rp.error().id(), 0) << rp.error().description();
        session_ = rp.session();
    }

    int Launch(const std::string& path) {
        tnavapi::LaunchJobRequest rq;
        rq.set_session(session_);
        rq.set_case_file(path);
        const auto rp = Call(&Stub::LaunchJob, *stub_, rq);
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        return rp.job_id();
    }

    tnavapi::JobRequest Job(int job) const {
        tnavapi::JobRequest rq;
        rq.set_session(session_);
        rq.set_job_id(job);
        return rq;
    }

    template <typename Request>
    Request OnJob(int job) const {
        Request rq;
        rq.set_session(session_);
        rq.set_job_id(job);
        return rq;
    }

    std::string Moment(int job, int type) {
        auto rq = OnJob<tnavapi::TimeMomentRequest>(job);
        rq.set_type(type);
        const auto rp = Call(&Stub::GetTimeMoment, *stub_, rq);
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        char text[32];
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", rp.moment().year(), rp.moment().month(),
                      rp.moment().day());
        return text;
    }

    tnavapi::StatusReply RunTo(int job, int year, int month, int day) {
        auto rq = OnJob<tnavapi::RunRequest>(job);
        rq.mutable_moment()->set_year(year);
        rq.mutable_moment()->set_month(month);
        rq.mutable_moment()->set_day(day);
        return Call(&Stub::Run, *stub_, rq);
    }

    std::vector<double> Params(int job, std::vector<int> wells, std::vector<int> params) {
        auto rq = OnJob<tnavapi::WellParamsRequest>(job);
        for (int w : wells) rq.add_wells(w);
        for (int p : params) rq.add_params(p);
        const auto rp = Call(&Stub::GetWellParams, *stub_, rq);
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        return {rp.values().begin(), rp.values().end()};
    }

    std::unique_ptr<Dispatcher> server_;
    std::unique_ptr<Stub> stub_;
    std::uint64_t session_ = 0;
};

TEST_F(DispatcherTest, SteppingReadsAndControlsOfSpe1) {
    const int job = Launch(kSpe1);
    EXPECT_EQ(Call(&Stub::State, *stub_, Job(job)).value(), 1);  // paused at the start
    EXPECT_EQ(Moment(job, 0), "2015-01-01");
    EXPECT_EQ(Moment(job, 2), "2015-01-01");
    EXPECT_EQ(Moment(job, 3), "2015-02-01");
    const auto names = Call(&Stub::GetWellNames, *stub_, Job(job));
    ASSERT_EQ(names.values_size(), 2);
    EXPECT_EQ(names.values(0), "PROD");
    EXPECT_EQ(names.values(1), "INJ");

    // A far target stops at each report date on the way.
    EXPECT_EQ(RunTo(job, 2030, 1, 1).error().id(), 0);
    EXPECT_EQ(Moment(job, 2), "2015-02-01");
    EXPECT_EQ(Call(&Stub::State, *stub_, Job(job)).value(), 1);
    EXPECT_EQ(RunTo(job, 2030, 1, 1).error().id(), 0);
    EXPECT_EQ(Moment(job, 2), "2015-03-01");
    const auto rates = Params(job, {0, 1}, {1, 16, 7});  // oil rate, BHP, gas injection
    EXPECT_NEAR(rates[0], 20000.0, 1e-6);
    EXPECT_GT(rates[1], 1000.0);
    EXPECT_NEAR(rates[5], 100000.0, 1e-3);

    // A new oil limit as target follows check_new_controls, not before.
    auto limits = OnJob<tnavapi::WellLimitsRequest>(job);
    limits.add_wells(0);
    limits.add_kinds(1);
    limits.add_values(5000.0);
    EXPECT_EQ(Call(&Stub::EnableProducerLimits, *stub_, limits).error().id(), 0);
    auto target = OnJob<tnavapi::WellCodesRequest>(job);
    target.add_wells(0);
    target.add_codes(1);
    EXPECT_EQ(Call(&Stub::SetProducerTargets, *stub_, target).error().id(), 0);
    EXPECT_NEAR(Params(job, {0}, {1})[0], 20000.0, 1e-6);
    EXPECT_EQ(Call(&Stub::CheckNewControls, *stub_, Job(job)).error().id(), 0);
    EXPECT_NEAR(Params(job, {0}, {1})[0], 5000.0, 1e-6);

    // IPR: the BHP falls as the asked rate rises, and the maximum rate is above the present one.
    auto max = OnJob<tnavapi::WellCodesRequest>(job);
    max.add_wells(0);
    max.add_codes(1);
    const auto max_rate = Call(&Stub::GetMaxRates, *stub_, max);
    ASSERT_EQ(max_rate.values_size(), 1);
    EXPECT_GT(max_rate.values(0), 5000.0);
    auto points = OnJob<tnavapi::IprPointsRequest>(job);
    points.set_count(2);
    EXPECT_EQ(Call(&Stub::SetNumberOfIprPoints, *stub_, points).error().id(), 0);
    auto ipr = OnJob<tnavapi::SpecificRateBhpIprRequest>(job);
    ipr.add_wells(0);
    ipr.add_phases(1);
    ipr.add_rates(1000.0);
    ipr.add_rates(10000.0);
    const auto bhp = Call(&Stub::GetSpecificRateBhpIpr, *stub_, ipr);
    ASSERT_EQ(bhp.values_size(), 2);
    EXPECT_GT(bhp.values(0), bhp.values(1));

    // Stop ends the job; it then cannot run and has no next report date.
    EXPECT_EQ(Call(&Stub::Stop, *stub_, Job(job)).error().id(), 0);
    EXPECT_EQ(Call(&Stub::IsJobEnded, *stub_, Job(job)).value(), 1);
    EXPECT_NE(RunTo(job, 2030, 1, 1).error().id(), 0);
    EXPECT_EQ(Moment(job, 3).substr(5, 2), "13");
}

TEST_F(DispatcherTest, RunsToTheEndOfTheSchedule) {
    const int job = Launch(kSpe1);
    const std::string end = Moment(job, 1);
    int stops = 0;
    while (Call(&Stub::IsJobEnded, *stub_, Job(job)).value() == 0 && stops < 200) {
        ASSERT_EQ(RunTo(job, 2030, 1, 1).error().id(), 0);
        ++stops;
    }
    EXPECT_EQ(stops, 120);
    EXPECT_EQ(Call(&Stub::State, *stub_, Job(job)).value(), 3);
    EXPECT_EQ(Moment(job, 2), end);
    EXPECT_EQ(Moment(job, 3).substr(5, 2), "13");
    auto wait = OnJob<tnavapi::WaitForStateRequest>(job);
    wait.set_state(1);
    EXPECT_NE(Call(&Stub::WaitForState, *stub_, wait).error().id(), 0);
}

TEST_F(DispatcherTest, ErrorsNameTheirCause) {
    tnavapi::LaunchJobRequest launch;
    launch.set_session(session_);
    launch.set_case_file("/x/CASE.DATA");
    EXPECT_EQ(Call(&Stub::LaunchJob, *stub_, launch).error().description(),
              "Case file /x/CASE.DATA not found");
    const int job = Launch(kSpe1);
    auto wells = OnJob<tnavapi::WellsRequest>(job);
    wells.add_wells(1);
    wells.add_wells(12);
    const auto statuses = Call(&Stub::GetWellStatuses, *stub_, wells);
    EXPECT_EQ(statuses.error().description(), "Well index 12 out of range (0..1)");
    EXPECT_EQ(statuses.values_size(), 0);
    auto thermal = OnJob<tnavapi::WellLimitsRequest>(job);
    EXPECT_EQ(Call(&Stub::SetInjectorThermalParameters, *stub_, thermal).error().description(),
              "SetInjectorThermalParameters cannot be applied: the model is isothermal, so injectors take no "
              "temperature");
    // A rejected write changes nothing: the valid first entry is not applied either.
    auto status = OnJob<tnavapi::WellCodesRequest>(job);
    status.add_wells(0);
    status.add_codes(3);
    status.add_wells(1);
    status.add_codes(1);  // INJ cannot open as a producer
    EXPECT_NE(Call(&Stub::SetNewWellStatuses, *stub_, status).error().id(), 0);
    Call(&Stub::CheckNewControls, *stub_, Job(job));
    wells.set_wells(1, 0);
    EXPECT_EQ(Call(&Stub::GetWellStatuses, *stub_, wells).values(1), 1);
    auto version = Call(&Stub::GetTnavVersion, *stub_, Job(job));
    EXPECT_EQ(version.value(), "v23.4");
    auto compat = OnJob<tnavapi::CompatibilityRequest>(job);
    compat.set_protocol_version(99);
    EXPECT_NE(Call(&Stub::CheckCompatibility, *stub_, compat).error().id(), 0);
    compat.set_protocol_version(tnavapi::PROTOCOL_VERSION_CURRENT);
    EXPECT_EQ(Call(&Stub::CheckCompatibility, *stub_, compat).error().id(), 0);

    // Calls in the wrong order: IPR points are needed first; nothing works after Disconnect.
    auto ipr = OnJob<tnavapi::SpecificRateBhpIprRequest>(job);
    ipr.add_wells(0);
    ipr.add_phases(1);
    ipr.add_rates(100.0);
    EXPECT_EQ(Call(&Stub::GetSpecificRateBhpIpr, *stub_, ipr).error().description(),
              "Call SetNumberOfIprPoints before GetSpecificRateBhpIpr");
    tnavapi::SessionRequest session;
    session.set_session(session_);
    EXPECT_EQ(Call(&Stub::Disconnect, *stub_, session).error().id(), 0);
    EXPECT_NE(Call(&Stub::Ping, *stub_, session).error().id(), 0);
    EXPECT_NE(Call(&Stub::GetWellCount, *stub_, Job(job)).error().id(), 0);
}

// Every read answers with one value per well and asked quantity, on a deck with many wells.
TEST_F(DispatcherTest, ReadsAnswerInShape) {
    const int job = Launch(std::string(RIVULET_DECKS_DIR) + "/spe9/SPE9_CP.DATA");
    ASSERT_EQ(RunTo(job, 2100, 1, 1).error().id(), 0);
    const int n = Call(&Stub::GetWellCount, *stub_, Job(job)).value();
    ASSERT_GT(n, 2);
    auto wells = OnJob<tnavapi::WellsRequest>(job);
    for (int w = 0; w < n; ++w) wells.add_wells(w);
    for (auto rpc : {&Stub::GetWellFirstActiveStatuses, &Stub::GetWellEosRegions, &Stub::GetWellPvtRegions,
                     &Stub::GetWellStatuses, &Stub::GetInjectorPhases}) {
        const auto rp = Call(rpc, *stub_, wells);
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        EXPECT_EQ(rp.values_size(), n);
    }
    EXPECT_EQ(Call(&Stub::GetWellEfficiencyFactors, *stub_, wells).values_size(), n);
    std::vector<int> all(22);
    for (int p = 0; p < 22; ++p) all[static_cast<std::size_t>(p)] = p;
    EXPECT_EQ(Params(job, std::vector<int>(wells.wells().begin(), wells.wells().end()), all).size(),
              static_cast<std::size_t>(22 * n));
    auto phases = OnJob<tnavapi::WellCodesRequest>(job);
    for (int w = 0; w < n; ++w) phases.add_wells(w), phases.add_codes(w % 3);
    EXPECT_EQ(Call(&Stub::GetMaxRates, *stub_, phases).values_size(), n);
    EXPECT_EQ(Call(&Stub::GetScDensitiesOfMaxRates, *stub_, phases).values_size(), n);
    EXPECT_EQ(Call(&Stub::GetCompositionOfMaxRates, *stub_, phases).error().id(), 0);
    EXPECT_EQ(Call(&Stub::GetMathModelType, *stub_, Job(job)).value(), 0);
    EXPECT_EQ(Call(&Stub::UnitSystem, *stub_, Job(job)).value(), 2);
    const int regions = Call(&Stub::GetNumberOfPvtRegions, *stub_, Job(job)).value();
    EXPECT_EQ(Call(&Stub::BlackOilGetScDensities, *stub_, Job(job)).values_size(), 3 * regions);
    EXPECT_EQ(Call(&Stub::ComposGetWaterScDensities, *stub_, Job(job)).values_size(), regions);
    EXPECT_EQ(Call(&Stub::ComposGetNumberOfHydrocarbonComponents, *stub_, Job(job)).value(), 0);
}

// Random malformed requests: every one is answered with an error, and the server lives on.
TEST_F(DispatcherTest, MalformedRequestsAlwaysFail) {
    const int job = Launch(kSpe1);
    std::mt19937 rng(1234);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    auto bad_well = [&] { return pick(2) ? 2 + pick(1000) : -1 - pick(1000); };
    for (int i = 0; i < 400; ++i) {
        const int fault = pick(8);
        std::uint64_t session = session_;
        int job_id = job;
        if (fault == 0) session ^= 1 + static_cast<std::uint64_t>(pick(1 << 20));
        if (fault == 1) job_id = job + 1 + pick(50);
        auto codes = [&] {
            tnavapi::WellCodesRequest rq;
            rq.set_session(session);
            rq.set_job_id(job_id);
            const int n = 1 + pick(4);
            for (int k = 0; k < n; ++k) rq.add_wells(fault == 2 && k == n - 1 ? bad_well() : pick(2));
            for (int k = 0; k < n + (fault == 3 ? 1 + pick(3) : 0); ++k)
                rq.add_codes(fault == 4 ? 7 + pick(100) : (pick(2) ? 1 : 3));
            if (fault > 4) rq.set_session(session ^ 77);
            return rq;
        };
        tnavapi::Error error;
        switch (pick(6)) {
            case 0:
                error = Call(&Stub::GetMaxRates, *stub_, codes()).error();
                break;
            case 1:
                error = Call(&Stub::SetProducerTargets, *stub_, codes()).error();
                break;
            case 2:
                error = Call(&Stub::SetNewWellStatuses, *stub_, codes()).error();
                break;
            case 3: {
                auto rq = codes();
                tnavapi::WellParamsRequest params;
                params.set_session(rq.session());
                params.set_job_id(rq.job_id());
                params.mutable_wells()->CopyFrom(rq.wells());
                params.add_params(fault == 3 || fault == 4 ? 22 + pick(9) : 1);
                error = Call(&Stub::GetWellParams, *stub_, params).error();
                break;
            }
            case 4: {
                auto rq = codes();
                tnavapi::WellLimitsRequest limits;
                limits.set_session(rq.session());
                limits.set_job_id(rq.job_id());
                limits.mutable_wells()->CopyFrom(rq.wells());
                limits.add_kinds(fault == 4 ? 4 : 1);
                for (int k = 0; k < rq.wells_size() + (fault == 3 ? 1 : 0); ++k) limits.add_values(100.0);
                error = Call(&Stub::EnableProducerLimits, *stub_, limits).error();
                break;
            }
            default: {
                tnavapi::RunRequest run;
                run.set_session(session);
                run.set_job_id(job_id);
                run.mutable_moment()->set_year(fault == 2 ? 2014 : 2016);
                run.mutable_moment()->set_month(fault == 3 || fault > 4 ? 13 : 1);
                run.mutable_moment()->set_day(fault == 4 ? 32 : 1);
                if (fault > 4 && pick(2))
                    run.mutable_moment()->set_month(2), run.mutable_moment()->set_day(30);
                error = Call(&Stub::Run, *stub_, run).error();
                break;
            }
        }
        EXPECT_NE(error.id(), 0) << "request " << i << " fault " << fault;
        EXPECT_FALSE(error.description().empty());
    }
    tnavapi::SessionRequest ping;
    ping.set_session(session_);
    EXPECT_EQ(Call(&Stub::Ping, *stub_, ping).error().id(), 0);
    EXPECT_EQ(Moment(job, 2), "2015-01-01");  // no bad Run moved the job
}

TEST(DispatcherServer, SecondServerOnAUsedPortFails) {
    Dispatcher first{DispatcherOptions{}};
    first.Start();
    DispatcherOptions same;
    same.port = first.Port();
    Dispatcher second(same);
    EXPECT_THROW(second.Start(), std::runtime_error);

    const std::string cmd =
        std::string(TNAV_STANDIN_EXE) + " --dispatcher --port " + std::to_string(first.Port()) + " 2>&1";
    FILE* out = popen(cmd.c_str(), "r");
    ASSERT_NE(out, nullptr);
    std::string text;
    char buf[512];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, out)) > 0;) text.append(buf, n);
    const int status = pclose(out);
    EXPECT_NE(WEXITSTATUS(status), 0);
    const std::string message =
        "tnav-standin: cannot listen on 127.0.0.1:" + std::to_string(first.Port()) + ": the port is in use";
    EXPECT_NE(text.find(message), std::string::npos) << text;
}

TEST(DispatcherServer, ClusterModeChecksUsers) {
    const std::string path = ::testing::TempDir() + "/standin-users.txt";
    std::ofstream(path) << "# users\nalice s3cret\n\nbob token2\n";
    DispatcherOptions options;
    options.users_file = path;
    Dispatcher server(options);
    server.Start();
    auto stub = Connect(server.Port());
    tnavapi::ConnectRequest rq;
    rq.set_user_name("alice");
    rq.set_crypted_password("wrong");
    EXPECT_EQ(Call(&Stub::Connect, *stub, rq).error().description(), "Wrong password for user alice");
    rq.set_user_name("carol");
    EXPECT_EQ(Call(&Stub::Connect, *stub, rq).error().description(), "Unknown user carol");
    rq.set_user_name("bob");
    rq.set_crypted_password("token2");
    const auto ok = Call(&Stub::Connect, *stub, rq);
    EXPECT_EQ(ok.error().id(), 0);
    EXPECT_NE(ok.session(), 0u);
    EXPECT_THROW(UsersFile::Parse("alice\n", "f"), UsersFileError);
}

int FreePort() {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    socklen_t len = sizeof addr;
    getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len);
    close(fd);
    return ntohs(addr.sin_port);
}

bool ExitsWithin(pid_t pid, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        if (waitpid(pid, nullptr, WNOHANG) == pid) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return false;
}

// A local dispatcher process ends when its client disconnects, and logs each call to its debug file.
TEST(DispatcherServer, LocalDispatcherEndsOnDisconnect) {
    const int port = FreePort();
    const std::string debug = ::testing::TempDir() + "/standin-debug.log";
    std::remove(debug.c_str());
    const std::string port_text = std::to_string(port);
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        execl(TNAV_STANDIN_EXE, TNAV_STANDIN_EXE, "--dispatcher", "--port", port_text.c_str(), "--debug",
              debug.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    // Wait for the port to open before the first call, so no reconnection back-off slows the test.
    for (int attempt = 0; attempt < 200; ++attempt) {
        const int fd = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        addr.sin_port = htons(static_cast<std::uint16_t>(port));
        const bool open = connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
        close(fd);
        if (open) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    auto stub = Connect(port);
    tnavapi::ConnectReply connected;
    grpc::ClientContext ctx;
    ctx.set_wait_for_ready(true);
    ctx.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(10));
    const grpc::Status s = stub->Connect(&ctx, tnavapi::ConnectRequest(), &connected);
    ASSERT_TRUE(s.ok()) << s.error_message();
    ASSERT_EQ(connected.error().id(), 0);
    ASSERT_NE(connected.session(), 0u);
    tnavapi::SessionRequest rq;
    rq.set_session(connected.session());
    EXPECT_EQ(Call(&Stub::Disconnect, *stub, rq).error().id(), 0);
    EXPECT_TRUE(ExitsWithin(pid, std::chrono::seconds(2)));
    std::ifstream log(debug);
    std::string line;
    int lines = 0;
    while (std::getline(log, line)) ++lines;
    EXPECT_GE(lines, 2);
}

// A local dispatcher whose parent ends does not outlive it.
TEST(DispatcherServer, LocalDispatcherEndsWithItsParent) {
    const std::string cmd = "sh -c '" + std::string(TNAV_STANDIN_EXE) + " --dispatcher --port " +
                            std::to_string(FreePort()) + " 2>/dev/null & echo $!; sleep 0.3'";
    FILE* out = popen(cmd.c_str(), "r");
    ASSERT_NE(out, nullptr);
    int pid = 0;
    ASSERT_EQ(std::fscanf(out, "%d", &pid), 1);
    auto alive = [pid] {
        std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
        std::string id, name, state;
        return stat >> id >> name >> state && state != "Z";
    };
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_TRUE(alive());  // serving while its parent lives
    pclose(out);           // the shell, the dispatcher's parent, has ended
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (alive() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(alive());
    if (alive()) kill(pid, SIGKILL);
}

}  // namespace
}  // namespace rivulet::standin
