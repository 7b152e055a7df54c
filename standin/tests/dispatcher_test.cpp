#include <gmock/gmock.h>
#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <thread>

#include <google/protobuf/text_format.h>

#include "standin/Dispatcher.h"
#include "standin/UsersFile.h"
#include "tnavapi.grpc.pb.h"

namespace rivulet::standin {
namespace {

const std::string kSpe1 = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";

using Stub = tnavapi::TNavigatorDispatcher::Stub;
using ::testing::ElementsAre;

std::unique_ptr<Stub> Connect(int port) {
    grpc::ChannelArguments args;  // quick reconnects while a dispatcher process is starting
    args.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, 50);
    args.SetInt(GRPC_ARG_MIN_RECONNECT_BACKOFF_MS, 50);
    args.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, 200);
    return tnavapi::TNavigatorDispatcher::NewStub(grpc::CreateCustomChannel(
        "127.0.0.1:" + std::to_string(port), grpc::InsecureChannelCredentials(), args));
}

// Calls one RPC, its request in protobuf text format, with a deadline, so that a hung server fails the test
// instead of blocking it.
template <typename Request, typename Reply>
Reply Call(grpc::Status (Stub::*rpc)(grpc::ClientContext*, const Request&, Reply*), Stub& stub,
           const std::string& request, bool wait_for_ready = false) {
    Request rq;
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(request, &rq)) << request;
    grpc::ClientContext ctx;
    ctx.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(20));
    ctx.set_wait_for_ready(wait_for_ready);
    Reply rp;
    const grpc::Status s = (stub.*rpc)(&ctx, rq, &rp);
    EXPECT_TRUE(s.ok()) << s.error_message();
    return rp;
}

std::string Session(std::uint64_t session) {
    return "session: " + std::to_string(session) + " ";
}

class DispatcherTest : public ::testing::Test {
  protected:
    void SetUp() override {
        server_ = std::make_unique<Dispatcher>(DispatcherOptions{});
        server_->Start();
        stub_ = Connect(server_->Port());
        const auto rp = Call(&Stub::Connect, *stub_, "");
        ASSERT_EQ(rp.error().id(), 0) << rp.error().description();
        session_ = rp.session();
    }

    int Launch(const std::string& path) {
        const auto rp = Call(&Stub::LaunchJob, *stub_, Session(session_) + "case_file: '" + path + "'");
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        return rp.job_id();
    }

    // Calls rpc on job in this session, with the request's other fields in text format.
    template <typename Rpc>
    auto Do(Rpc rpc, int job, const std::string& fields = "") {
        return Call(rpc, *stub_, Session(session_) + "job_id: " + std::to_string(job) + " " + fields);
    }

    std::string Moment(int job, int type) {
        const auto rp = Do(&Stub::GetTimeMoment, job, "type: " + std::to_string(type));
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        char text[32];
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", rp.moment().year(), rp.moment().month(),
                      rp.moment().day());
        return text;
    }

    // Runs towards 1 January of year; the run stops at the next report date on the way.
    tnavapi::Error RunTo(int job, int year = 2030) {
        return Do(&Stub::Run, job, "moment { year: " + std::to_string(year) + " month: 1 day: 1 }").error();
    }

    std::vector<double> Params(int job, const std::string& fields) {
        const auto rp = Do(&Stub::GetWellParams, job, fields);
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        return {rp.values().begin(), rp.values().end()};
    }

    std::unique_ptr<Dispatcher> server_;
    std::unique_ptr<Stub> stub_;
    std::uint64_t session_ = 0;
};

TEST_F(DispatcherTest, SteppingReadsAndControlsOfSpe1ToTheEnd) {
    const int job = Launch(kSpe1);
    EXPECT_EQ(Do(&Stub::State, job).value(), 1);  // paused at the start
    EXPECT_EQ(Moment(job, 0), "2015-01-01");
    EXPECT_EQ(Moment(job, 3), "2015-02-01");
    EXPECT_THAT(Do(&Stub::GetWellNames, job).values(), ElementsAre("PROD", "INJ"));

    // A far target stops at the next report date.
    EXPECT_EQ(RunTo(job).id(), 0);
    EXPECT_EQ(Moment(job, 2), "2015-02-01");
    EXPECT_EQ(Moment(job, 3), "2015-03-01");
    const auto rates = Params(job, "wells: [0, 1] params: [1, 16, 7]");  // oil rate, BHP, gas injection
    ASSERT_EQ(rates.size(), 6u);
    EXPECT_NEAR(rates[0], 20000.0, 1e-6);
    EXPECT_GT(rates[1], 1000.0);
    EXPECT_NEAR(rates[5], 100000.0, 1e-3);

    // A new oil limit as target follows check_new_controls, not before.
    EXPECT_EQ(Do(&Stub::EnableProducerLimits, job, "wells: 0 kinds: 1 values: 5000").error().id(), 0);
    EXPECT_EQ(Do(&Stub::SetProducerTargets, job, "wells: 0 codes: 1").error().id(), 0);
    EXPECT_NEAR(Params(job, "wells: 0 params: 1")[0], 20000.0, 1e-6);
    EXPECT_EQ(Do(&Stub::CheckNewControls, job).error().id(), 0);
    EXPECT_NEAR(Params(job, "wells: 0 params: 1")[0], 5000.0, 1e-6);

    // The remaining report dates, one stop each, end the job at the end of the schedule.
    const std::string end = Moment(job, 1);
    int stops = 1;
    for (; Do(&Stub::IsJobEnded, job).value() == 0 && stops < 200; ++stops) ASSERT_EQ(RunTo(job).id(), 0);
    EXPECT_EQ(stops, 120);
    EXPECT_EQ(Do(&Stub::State, job).value(), 3);
    EXPECT_EQ(Moment(job, 2), end);
    EXPECT_EQ(Moment(job, 3).substr(5, 2), "13");  // no next report date
    EXPECT_NE(Do(&Stub::WaitForState, job, "state: 1").error().id(), 0);
}

TEST_F(DispatcherTest, ErrorsNameTheirCause) {
    EXPECT_EQ(
        Call(&Stub::LaunchJob, *stub_, Session(session_) + "case_file: '/x/CASE.DATA'").error().description(),
        "Case file /x/CASE.DATA not found");
    const int job = Launch(kSpe1);
    const auto statuses = Do(&Stub::GetWellStatuses, job, "wells: [1, 12]");
    EXPECT_EQ(statuses.error().description(), "Well index 12 out of range (0..1)");
    EXPECT_EQ(statuses.values_size(), 0);
    EXPECT_EQ(Do(&Stub::SetInjectorThermalParameters, job).error().description(),
              "SetInjectorThermalParameters cannot be applied: the model is isothermal, so injectors take no "
              "temperature");
    // A rejected write changes nothing: shutting PROD is not applied either, since INJ cannot open as a
    // producer.
    EXPECT_NE(Do(&Stub::SetNewWellStatuses, job, "wells: [0, 1] codes: [3, 1]").error().id(), 0);
    Do(&Stub::CheckNewControls, job);
    EXPECT_EQ(Do(&Stub::GetWellStatuses, job, "wells: 0").values(0), 1);
    EXPECT_EQ(Do(&Stub::GetTnavVersion, job).value(), "v23.4");
    EXPECT_NE(Do(&Stub::CheckCompatibility, job, "protocol_version: 99").error().id(), 0);
    const std::string current = "protocol_version: " + std::to_string(tnavapi::PROTOCOL_VERSION_CURRENT);
    EXPECT_EQ(Do(&Stub::CheckCompatibility, job, current).error().id(), 0);

    // Calls in the wrong order: IPR points are needed first; a stopped job cannot run and has no next report
    // date; nothing works after Disconnect.
    EXPECT_EQ(Do(&Stub::GetSpecificRateBhpIpr, job, "wells: 0 phases: 1 rates: 100").error().description(),
              "Call SetNumberOfIprPoints before GetSpecificRateBhpIpr");
    EXPECT_EQ(Do(&Stub::Stop, job).error().id(), 0);
    EXPECT_NE(RunTo(job).id(), 0);
    EXPECT_EQ(Moment(job, 3).substr(5, 2), "13");
    EXPECT_EQ(Call(&Stub::Disconnect, *stub_, Session(session_)).error().id(), 0);
    EXPECT_NE(Call(&Stub::Ping, *stub_, Session(session_)).error().id(), 0);
    EXPECT_NE(Do(&Stub::GetWellCount, job).error().id(), 0);
}

// Every read answers with one value per well and asked quantity, on a deck with many wells.
TEST_F(DispatcherTest, ReadsAnswerInShape) {
    const int job = Launch(std::string(RIVULET_DECKS_DIR) + "/spe9/SPE9_CP.DATA");
    ASSERT_EQ(RunTo(job, 2100).id(), 0);
    const int n = Do(&Stub::GetWellCount, job).value();
    ASSERT_GT(n, 2);
    std::string wells, phases;
    for (int w = 0; w < n; ++w) wells += " wells: " + std::to_string(w);
    for (int w = 0; w < n; ++w) phases += " codes: " + std::to_string(w % 3);
    for (auto rpc : {&Stub::GetWellFirstActiveStatuses, &Stub::GetWellEosRegions, &Stub::GetWellPvtRegions,
                     &Stub::GetWellStatuses, &Stub::GetInjectorPhases}) {
        const auto rp = Do(rpc, job, wells);
        EXPECT_EQ(rp.error().id(), 0) << rp.error().description();
        EXPECT_EQ(rp.values_size(), n);
    }
    EXPECT_EQ(Do(&Stub::GetWellEfficiencyFactors, job, wells).values_size(), n);
    std::string params;  // every parameter, 0..21
    for (int p = 0; p < 22; ++p) params += " params: " + std::to_string(p);
    EXPECT_EQ(Params(job, wells + params).size(), static_cast<std::size_t>(22 * n));
    EXPECT_EQ(Do(&Stub::GetMaxRates, job, wells + phases).values_size(), n);
    EXPECT_EQ(Do(&Stub::GetScDensitiesOfMaxRates, job, wells + phases).values_size(), n);
    EXPECT_EQ(Do(&Stub::GetCompositionOfMaxRates, job, wells + phases).error().id(), 0);
    EXPECT_EQ(Do(&Stub::ComposGetWaterScDensities, job).values_size(),
              Do(&Stub::GetNumberOfPvtRegions, job).value());
    EXPECT_EQ(Do(&Stub::ComposGetNumberOfHydrocarbonComponents, job).value(), 0);
}

// Random malformed requests: every one is answered with an error, and the server lives on.
TEST_F(DispatcherTest, MalformedRequestsAlwaysFail) {
    const int job = Launch(kSpe1);
    std::mt19937 rng(1234);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    auto number = [](int n) { return std::to_string(n); };
    // The dates of Run for each fault (faults 5-7 take one of the last two).
    const char* const dates[] = {"2016 month: 1 day: 1",  "2016 month: 1 day: 1",  "2014 month: 1 day: 1",
                                 "2016 month: 13 day: 1", "2016 month: 1 day: 32", "2016 month: 13 day: 1",
                                 "2016 month: 2 day: 30"};
    for (int i = 0; i < 400; ++i) {
        // 0: unknown session; 1: unknown job; 2: a well index out of range (Run: a past date); 3: too many
        // codes or values, a parameter out of range (Run: month 13); 4: a code, limit kind or parameter out
        // of range (Run: day 32); 5-7: an unknown session (Run: month 13 or 30 February).
        const int fault = pick(8);
        std::uint64_t session = session_;
        if (fault == 0) session ^= 1 + static_cast<std::uint64_t>(pick(1 << 20));
        const int job_id = fault == 1 ? job + 1 + pick(50) : job;
        const int n = 1 + pick(4);
        const int bad_well = pick(2) ? 2 + pick(1000) : -1 - pick(1000);
        std::string wells, codes, values;
        for (int k = 0; k < n; ++k)
            wells += " wells: " + number(fault == 2 && k == n - 1 ? bad_well : pick(2));
        for (int k = 0; k < n + (fault == 3 ? 1 + pick(3) : 0); ++k)
            codes += " codes: " + number(fault == 4 ? 7 + pick(100) : (pick(2) ? 1 : 3));
        for (int k = 0; k < n + (fault == 3 ? 1 : 0); ++k) values += " values: 100";
        const std::string on =
            Session(fault > 4 ? session ^ 77 : session) + "job_id: " + number(job_id) + wells;
        const std::string param = " params: " + number(fault == 3 || fault == 4 ? 22 + pick(9) : 1);
        const std::string kind = " kinds: " + number(fault == 4 ? 4 : 1);
        const std::string moment =
            " moment { year: " + std::string(dates[fault > 4 ? 5 + pick(2) : fault]) + " }";
        const std::function<tnavapi::Error()> calls[] = {
            [&] { return Call(&Stub::GetMaxRates, *stub_, on + codes).error(); },
            [&] { return Call(&Stub::SetProducerTargets, *stub_, on + codes).error(); },
            [&] { return Call(&Stub::SetNewWellStatuses, *stub_, on + codes).error(); },
            [&] { return Call(&Stub::GetWellParams, *stub_, on + param).error(); },
            [&] { return Call(&Stub::EnableProducerLimits, *stub_, on + kind + values).error(); },
            [&] {
                return Call(&Stub::Run, *stub_, Session(session) + "job_id: " + number(job_id) + moment)
                    .error();
            },
        };
        const tnavapi::Error error = calls[pick(6)]();
        EXPECT_NE(error.id(), 0) << "request " << i << " fault " << fault;
        EXPECT_FALSE(error.description().empty());
    }
    EXPECT_EQ(Call(&Stub::Ping, *stub_, Session(session_)).error().id(), 0);
    EXPECT_EQ(Moment(job, 2), "2015-01-01");  // no bad Run moved the job
}

TEST(DispatcherServer, SecondServerOnAUsedPortFails) {
    Dispatcher first{DispatcherOptions{}};
    first.Start();
    DispatcherOptions same;
    same.port = first.Port();
    Dispatcher second(same);
    ASSERT_THROW(second.Start(), std::runtime_error);  // else the program below would serve and not end

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
    EXPECT_EQ(
        Call(&Stub::Connect, *stub, "user_name: 'alice' crypted_password: 'wrong'").error().description(),
        "Wrong password for user alice");
    EXPECT_EQ(
        Call(&Stub::Connect, *stub, "user_name: 'carol' crypted_password: 'wrong'").error().description(),
        "Unknown user carol");
    const auto ok = Call(&Stub::Connect, *stub, "user_name: 'bob' crypted_password: 'token2'");
    EXPECT_EQ(ok.error().id(), 0);
    EXPECT_NE(ok.session(), 0u);
    EXPECT_THROW(UsersFile::Parse("alice\n", "f"), UsersFileError);
}

// Whether process pid runs (a zombie does not).
bool Alive(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string id, name, state;
    return stat >> id >> name >> state && state != "Z";
}

// Waits for process pid to end; the wait is bounded only so that a fault fails the test instead of hanging
// it.
bool Ends(int pid) {
    for (int i = 0; i < 500 && Alive(pid); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return !Alive(pid);
}

// The debug file's log of the calls is checked by the client library's tests.
TEST(DispatcherServer, LocalDispatcherEndsOnDisconnectAndWithItsParent) {
    for (const bool disconnect : {true, false}) {
        int port = 0;
        {
            Dispatcher probe{DispatcherOptions{}};  // finds a free port
            probe.Start();
            port = probe.Port();
        }
        // A shell starts the dispatcher and then waits, as its parent, until it is killed.
        const std::string cmd = "echo $$; " + std::string(TNAV_STANDIN_EXE) + " --dispatcher --port " +
                                std::to_string(port) + " >/dev/null 2>&1 & echo $!; exec sleep 60";
        FILE* out = popen(cmd.c_str(), "r");
        ASSERT_NE(out, nullptr);
        int shell = 0;
        int pid = 0;
        ASSERT_EQ(std::fscanf(out, "%d %d", &shell, &pid), 2);
        auto stub = Connect(port);
        const auto connected = Call(&Stub::Connect, *stub, "", true);
        EXPECT_NE(connected.session(), 0u);
        EXPECT_TRUE(Alive(pid)) << "the dispatcher did not keep serving";
        if (disconnect) {
            EXPECT_EQ(Call(&Stub::Disconnect, *stub, Session(connected.session())).error().id(), 0);
            EXPECT_TRUE(Ends(pid)) << "the dispatcher outlived its client";
        }
        kill(shell, SIGKILL);
        pclose(out);
        EXPECT_TRUE(Ends(pid)) << "the dispatcher outlived its parent";
        if (Alive(pid)) kill(pid, SIGKILL);
    }
}

}  // namespace
}  // namespace rivulet::standin
