// Tests of libtnavapi.so: local failures without a dispatcher, array transfer against a scripted dispatcher
// in this process, and sessions with the stand-in dispatcher when it is built.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "tNavigator_API_RMA.h"
#include "tnavapi.grpc.pb.h"

namespace {

using Error = tNavigator_API_RMA_error_t;
using ::testing::DoubleNear;
using ::testing::ElementsAre;

// A TCP socket bound to a free loopback port, listening when asked; port receives the port.
int bindLoopback(bool listening, int& port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), length);
    if (listening) ::listen(fd, 4);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);
    return fd;
}

int freePort() {
    int port = 0;
    ::close(bindLoopback(false, port));
    return port;
}

using ManagerPtr = std::unique_ptr<tNavigator_API_RMA_manager_t, void (*)(tNavigator_API_RMA_manager_t*)>;
using JobPtr = std::unique_ptr<tNavigator_API_RMA_job_t, decltype(&tNavigator_API_RMA::tnav_free_job)>;

ManagerPtr newManager() {
    tNavigator_API_RMA::init();
    tNavigator_API_RMA_manager_t* manager = nullptr;
    EXPECT_EQ(tNavigator_API_RMA::tnav_create_manager(&manager).id(), 0);
    return ManagerPtr(manager, [](tNavigator_API_RMA_manager_t* m) {
        m->disconnect();
        tNavigator_API_RMA::tnav_free_manager(m);
    });
}

::testing::AssertionResult ok(const Error& error) {
    if (error.id() == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << error.id() << ": " << error.description();
}

// Whether error is a failure whose description holds part.
::testing::AssertionResult failsWith(const Error& error, const std::string& part) {
    if (error.id() != 0 && std::string(error.description()).find(part) != std::string::npos)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "got " << error.id() << ": " << error.description() << "; expected a failure naming " << part;
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(ClientLibrary, EncryptPasswordIsDeterministicAndHidesThePlainText) {
    auto encrypt = [](const char* password) {
        tNavigator_API_RMA_string token;
        EXPECT_EQ(tNavigator_API_RMA::encrypt_password(password, token).id(), 0);
        return std::string(token.c_str());
    };
    const std::string token = encrypt("s3cret-pass");
    EXPECT_EQ(encrypt("s3cret-pass"), token);
    EXPECT_NE(encrypt("s3cret-pasS"), token);
    EXPECT_EQ(token.find("s3cret"), std::string::npos);
    EXPECT_EQ(token.size(), 7u + 64u);  // "sha256:" and 64 hex digits
    EXPECT_EQ(encrypt(nullptr).size(), token.size());
}

TEST(ClientLibrary, WithoutADispatcherEveryCallFailsCleanly) {
    EXPECT_NE(tNavigator_API_RMA::tnav_create_manager(nullptr).id(), 0);
    tNavigator_API_RMA::tnav_free_manager(nullptr);
    tNavigator_API_RMA::tnav_free_job(nullptr);

    ManagerPtr manager = newManager();
    EXPECT_EQ(manager->is_connected(), 0);
    const tNavigator_API_RMA_start_params_t start("/x/CASE.DATA");
    int jobId = -7;
    EXPECT_TRUE(failsWith(manager->launch_job(start, &jobId), "not connected"));
    EXPECT_EQ(jobId, -7);
    tNavigator_API_RMA_job_t* job = reinterpret_cast<tNavigator_API_RMA_job_t*>(&jobId);
    EXPECT_NE(manager->get_job_by_id(1, job).id(), 0);
    EXPECT_EQ(job, nullptr);
    auto* request = reinterpret_cast<tNavigator_API_RMA_request_t*>(&jobId);
    EXPECT_TRUE(failsWith(manager->launch_job(start, &jobId, request), "asynchronous"));
    EXPECT_TRUE(failsWith(manager->launch_job(start, nullptr), "null"));
    tNavigator_API_RMA_connection_options_t options;
    options.set_port(0);
    EXPECT_TRUE(failsWith(manager->connect_to_dispatcher(options), "port 0"));
    manager->disconnect();
    manager->disconnect();
}

TEST(LocalDispatcher, StartFailuresNameTheirCause) {
    int busy = 0;
    const int listener = bindLoopback(true, busy);
    const struct {
        const char* executable;
        int port;
        const char* cause;
    } cases[] = {
        {"/nonexistent/tnav-standin", freePort(), "/nonexistent/tnav-standin"},
        {nullptr, freePort(), "null"},
        {"/bin/true", busy, "already in use"},
        {"/bin/false", freePort(), "exited with status 1"},
    };
    for (const auto& c : cases) {
        ManagerPtr manager = newManager();
        EXPECT_TRUE(
            failsWith(manager->create_local_dispatcher__force_ports(c.executable, nullptr, c.port), c.cause));
        EXPECT_EQ(manager->is_connected(), 0) << c.cause;
    }
    ::close(listener);
}

// Answers Connect and a few well calls with fixed data; replies with a wrong length when asked to.
class ScriptedDispatcher final : public tnavapi::TNavigatorDispatcher::Service {
    using Ctx = grpc::ServerContext;
    using Status = grpc::Status;

  public:
    Status Connect(Ctx*, const tnavapi::ConnectRequest* request, tnavapi::ConnectReply* reply) override {
        if (request->user_name() == "intruder")
            return refuse(reply->mutable_error(), "Unknown user intruder");
        lastToken = request->crypted_password();
        reply->set_session(77);
        return Status::OK;
    }
    Status Ping(Ctx*, const tnavapi::SessionRequest*, tnavapi::StatusReply*) override { return Status::OK; }
    Status GetJobById(Ctx*, const tnavapi::JobRequest* request, tnavapi::StatusReply* reply) override {
        if (request->session() == 77 && request->job_id() == 3) return Status::OK;
        return refuse(reply->mutable_error(), "No job " + std::to_string(request->job_id()));
    }
    // Value of wells[k] and params[j]: 100 * well + param; a well index of 99 gives one value too few.
    Status GetWellParams(Ctx*, const tnavapi::WellParamsRequest* request,
                         tnavapi::DoubleArrayReply* reply) override {
        for (int well : request->wells())
            for (int param : request->params()) reply->add_values(100.0 * well + param);
        if (!request->wells().empty() && request->wells(0) == 99) reply->mutable_values()->RemoveLast();
        return Status::OK;
    }
    Status GetSpecificRateBhpIpr(Ctx*, const tnavapi::SpecificRateBhpIprRequest* request,
                                 tnavapi::DoubleArrayReply* reply) override {
        for (double rate : request->rates()) reply->add_values(5000.0 - rate);
        return Status::OK;
    }
    Status SetNumberOfIprPoints(Ctx*, const tnavapi::IprPointsRequest*, tnavapi::StatusReply*) override {
        return Status::OK;
    }

    std::string lastToken;

  private:
    static Status refuse(tnavapi::Error* error, const std::string& description) {
        error->set_id(9);
        error->set_description(description);
        return Status::OK;
    }
};

TEST(ScriptedSession, ConnectsMovesArraysWithTheCallersLengthsAndNoticesTheStop) {
    ScriptedDispatcher service;
    int port = 0;
    grpc::ServerBuilder builder;
    builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &port);
    builder.RegisterService(&service);
    const std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
    ASSERT_TRUE(server && port > 0);
    ManagerPtr manager = newManager();
    tNavigator_API_RMA_string token;
    tNavigator_API_RMA::encrypt_password("pw", token);
    auto connect = [&](const char* user) {
        tNavigator_API_RMA_connection_options_t options;
        options.set_port(port);
        options.set_remote_ip("127.0.0.1");
        options.set_user_name_and_crypted_password(user, token.c_str());
        return manager->connect_to_dispatcher(options);
    };
    // The dispatcher's own errors reach the caller with their description.
    EXPECT_TRUE(failsWith(connect("intruder"), "Unknown user intruder"));
    EXPECT_EQ(manager->is_connected(), 0);
    ASSERT_TRUE(ok(connect("alice")));
    EXPECT_EQ(manager->is_connected(), 1);
    EXPECT_EQ(service.lastToken, token.c_str());
    tNavigator_API_RMA_job_t* raw = nullptr;
    EXPECT_TRUE(failsWith(manager->get_job_by_id(5, raw), "No job 5"));
    EXPECT_EQ(raw, nullptr);
    ASSERT_TRUE(ok(manager->get_job_by_id(3, raw)));
    JobPtr job(raw, &tNavigator_API_RMA::tnav_free_job);
    tNavigator_API_RMA_well_data_requester_t* wells = job->get_well_data_requester();
    ASSERT_NE(wells, nullptr);

    const int indices[] = {1, 0};
    const tNavigator_API_RMA_well_parameter_t params[] = {TNAV_WELL_OIL_RATE, TNAV_WELL_BHP,
                                                          TNAV_WELL_GAS_RATE};
    std::vector<double> values(7, -1.0);  // one guard value past the 2 x 3 the call fills
    ASSERT_TRUE(ok(wells->get_well_params(indices, 2, params, 3, values.data())));
    EXPECT_EQ(values, (std::vector<double>{101, 116, 103, 1, 16, 3, -1.0}));
    const int bad[] = {99};
    EXPECT_TRUE(failsWith(wells->get_well_params(bad, 1, params, 3, values.data()), "2 values where 3 were"));
    EXPECT_NE(wells->get_well_params(nullptr, 2, params, 3, values.data()).id(), 0);
    EXPECT_NE(wells->get_well_params(indices, -1, params, 3, values.data()).id(), 0);

    const tNavigator_API_RMA_ipr_rate_phase_t phases[] = {TNAV_PHASE_OIL, TNAV_PHASE_GAS};
    const double rates[] = {100, 200, 300, 400};
    double bhps[5] = {0, 0, 0, 0, -1};
    EXPECT_NE(wells->get_specific_rate_bhp_ipr(indices, 2, phases, rates, bhps).id(), 0);  // points unknown
    ASSERT_TRUE(ok(wells->set_number_of_ipr_points(2)));
    ASSERT_TRUE(ok(wells->get_specific_rate_bhp_ipr(indices, 2, phases, rates, bhps)));
    EXPECT_EQ(std::vector<double>(bhps, bhps + 5), (std::vector<double>{4900, 4800, 4700, 4600, -1}));

    // A call the dispatcher does not implement fails with a readable error.
    int count = 0;
    EXPECT_TRUE(failsWith(wells->get_well_count(&count), "does not support"));

    server->Shutdown(std::chrono::system_clock::now());
    EXPECT_EQ(manager->is_connected(), 0);
}

// A session on SPE1 with the stand-in, paused at its start date. The client and the dispatcher both write
// to one debug file.
class StandinJob : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string exe = TNAV_STANDIN_EXE;
        if (!std::filesystem::exists(exe)) GTEST_SKIP() << "tnav-standin is not built at " << exe;
        std::filesystem::remove(log_);
        manager_ = newManager();
        ASSERT_TRUE(
            ok(manager_->create_local_dispatcher__force_ports(exe.c_str(), log_.c_str(), freePort())));
        const std::string deck = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";
        int jobId = 0;
        ASSERT_TRUE(ok(manager_->launch_job(tNavigator_API_RMA_start_params_t(deck.c_str()), &jobId)));
        tNavigator_API_RMA_job_t* raw = nullptr;
        ASSERT_TRUE(ok(manager_->get_job_by_id(jobId, raw)));
        job_.reset(raw);
        ASSERT_TRUE(ok(job_->wait_for_start()));
        wells_ = job_->get_well_data_requester();
        int count = 0;
        ASSERT_TRUE(ok(wells_->get_well_count(&count)));
        ASSERT_EQ(count, 2);
        tNavigator_API_RMA_string names[2];
        ASSERT_TRUE(ok(wells_->get_well_names(names)));
        ASSERT_STREQ(names[0].c_str(), "PROD");
        ASSERT_STREQ(names[1].c_str(), "INJ");
    }
    void TearDown() override { std::filesystem::remove(log_); }
    // Runs to the next report date, waits there and checks that the job has arrived.
    void step() {
        tNavigator_API_RMA_time_moment_t next, current;
        ASSERT_TRUE(ok(job_->get_time_moment(TNAV_TIME_MOMENT_NEXT_SCHEDULE, &next)));
        ASSERT_TRUE(ok(next.is_valid()));
        ASSERT_TRUE(ok(job_->run(next)));
        ASSERT_TRUE(ok(job_->wait_for_state(TNAV_JOB_STATE_PAUSED)));
        ASSERT_TRUE(ok(job_->get_time_moment(TNAV_TIME_MOMENT_CURRENT, &current)));
        EXPECT_EQ(std::tuple(current.get_year(), current.get_month(), current.get_day()),
                  std::tuple(next.get_year(), next.get_month(), next.get_day()));
    }
    // The dispatcher's process id, from the client's line about its start in the debug file.
    pid_t dispatcherPid() const {
        const std::string text = readFile(log_);
        const std::size_t at = text.find("(pid ");
        return at == std::string::npos ? -1 : static_cast<pid_t>(std::stoi(text.substr(at + 5)));
    }

    const std::filesystem::path log_ = std::filesystem::temp_directory_path() /
                                       ("tnavapi-client-test-" + std::to_string(::getpid()) + ".log");
    ManagerPtr manager_{nullptr, nullptr};
    JobPtr job_{nullptr, &tNavigator_API_RMA::tnav_free_job};
    tNavigator_API_RMA_well_data_requester_t* wells_ = nullptr;
};

TEST_F(StandinJob, ReadsStepsFollowsNewControlsAndNoticesADeadDispatcher) {
    tNavigator_API_RMA_string version;
    ASSERT_TRUE(ok(job_->get_tnav_version(&version)));
    EXPECT_NE(std::string(version.c_str()), "");

    tNavigator_API_RMA_static_data_requester_t* statics = job_->get_static_data_requester();
    tNavigator_API_RMA_math_model_type_t model = TNAV_MATH_MODEL_COMPOSITIONAL;
    ASSERT_TRUE(ok(statics->get_math_model_type(&model)));
    EXPECT_EQ(model, TNAV_MATH_MODEL_ISOTHERMAL_BLACK_OIL);
    tNavigator_API_RMA_unit_system_t units = TNAV_UNIT_SYSTEM_SI;
    ASSERT_TRUE(ok(statics->unit_system(&units)));
    EXPECT_EQ(units, TNAV_UNIT_SYSTEM_FIELD);
    int regions = 0;
    ASSERT_TRUE(ok(statics->get_number_of_pvt_regions(&regions)));
    ASSERT_EQ(regions, 1);
    std::vector<double> densities(4, -1.0);  // a guard value past the one region's three
    ASSERT_TRUE(ok(statics->black_oil__get_sc_densities(densities.data())));
    // Water, oil, gas: the deck's DENSITY keyword gives oil, water, gas in lb/ft3.
    EXPECT_THAT(densities, ElementsAre(DoubleNear(64.49, 1e-9), DoubleNear(53.66, 1e-9),
                                       DoubleNear(0.0533, 1e-9), -1.0));

    const int producer = 0;  // PROD, as SetUp checks
    ASSERT_NO_FATAL_FAILURE(step());
    const tNavigator_API_RMA_well_parameter_t params[] = {TNAV_WELL_OIL_RATE, TNAV_WELL_BHP};
    double values[2] = {-1, -1};
    ASSERT_TRUE(ok(wells_->get_well_params(&producer, 1, params, 2, values)));
    EXPECT_GT(values[0], 0.0);
    EXPECT_GT(values[1], 0.0);

    // A lower oil rate as the target is followed from the next step.
    const tNavigator_API_RMA_prod_limit_t limits[] = {TNAV_PROD_LIMIT_OIL_RATE, TNAV_PROD_LIMIT_BHP};
    const double limitValues[] = {10000.0, 1000.0};
    ASSERT_TRUE(ok(wells_->enable_producer_limits(&producer, 1, limits, 2, limitValues)));
    ASSERT_TRUE(ok(wells_->set_producer_targets(&producer, 1, &limits[0])));
    ASSERT_TRUE(ok(wells_->check_new_controls()));
    ASSERT_NO_FATAL_FAILURE(step());
    ASSERT_TRUE(ok(wells_->get_well_params(&producer, 1, params, 1, values)));
    EXPECT_NEAR(values[0], 10000.0, 100.0);

    // The IPR's BHP rises as the asked rate falls.
    const tNavigator_API_RMA_ipr_rate_phase_t phase = TNAV_PHASE_OIL;
    double maxRate = 0.0;
    ASSERT_TRUE(ok(wells_->get_max_rates(&producer, 1, &phase, &maxRate)));
    EXPECT_GT(maxRate, 10000.0);
    ASSERT_TRUE(ok(wells_->set_number_of_ipr_points(2)));
    const double rates[] = {0.8 * maxRate, 0.2 * maxRate};
    double bhps[2] = {0.0, 0.0};
    ASSERT_TRUE(ok(wells_->get_specific_rate_bhp_ipr(&producer, 1, &phase, rates, bhps)));
    EXPECT_GT(bhps[1], bhps[0]);

    // A killed dispatcher makes is_connected false (the wait is bounded only so that a fault cannot hang).
    const pid_t pid = dispatcherPid();
    ASSERT_GT(pid, 0);
    ASSERT_EQ(::kill(pid, SIGKILL), 0);
    for (int i = 0; i < 1000 && manager_->is_connected() != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(manager_->is_connected(), 0);
    EXPECT_NE(job_->stop().id(), 0);
}

TEST_F(StandinJob, DisconnectEndsTheDispatcherAndBothSidesLog) {
    const pid_t pid = dispatcherPid();
    ASSERT_GT(pid, 0);
    manager_->disconnect();
    EXPECT_EQ(manager_->is_connected(), 0);
    EXPECT_NE(::kill(pid, 0), 0);  // ended and reaped
    const std::string text = readFile(log_);
    EXPECT_NE(text.find("client: Connect"), std::string::npos) << text;
    EXPECT_NE(text.find(" Disconnect {"), std::string::npos) << text;  // the dispatcher's line
}

}  // namespace
