// Tests of libtnavapi.so: local failures without a dispatcher, array transfer against a scripted dispatcher
// in this process, and a session with the stand-in dispatcher when it is built.
#include <arpa/inet.h>
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
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tNavigator_API_RMA.h"
#include "tnavapi.grpc.pb.h"

namespace {

using Clock = std::chrono::steady_clock;

// A socket bound to a free loopback port; listening when asked.
class PortHolder {
  public:
    explicit PortHolder(bool listening) {
        fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        if (::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return;
        if (listening) ::listen(fd_, 4);
        socklen_t length = sizeof address;
        ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
    }
    ~PortHolder() { release(); }
    void release() {
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
    }
    int port() const { return port_; }

  private:
    int fd_ = -1;
    int port_ = 0;
};

int freePort() {
    PortHolder holder(false);
    return holder.port();
}

struct ManagerDeleter {
    void operator()(tNavigator_API_RMA_manager_t* manager) const {
        if (manager != nullptr) manager->disconnect();
        tNavigator_API_RMA::tnav_free_manager(manager);
    }
};
using ManagerPtr = std::unique_ptr<tNavigator_API_RMA_manager_t, ManagerDeleter>;

struct JobDeleter {
    void operator()(tNavigator_API_RMA_job_t* job) const { tNavigator_API_RMA::tnav_free_job(job); }
};
using JobPtr = std::unique_ptr<tNavigator_API_RMA_job_t, JobDeleter>;

ManagerPtr newManager() {
    tNavigator_API_RMA::init();
    tNavigator_API_RMA_manager_t* manager = nullptr;
    EXPECT_EQ(tNavigator_API_RMA::tnav_create_manager(&manager).id(), 0);
    return ManagerPtr(manager);
}

std::string describe(const tNavigator_API_RMA_error_t& error) {
    return std::to_string(error.id()) + ": " + error.description();
}

// --- Without a dispatcher ---

TEST(ClientLibrary, EncryptPasswordIsDeterministicAndHidesThePlainText) {
    tNavigator_API_RMA_string first;
    tNavigator_API_RMA_string second;
    tNavigator_API_RMA_string other;
    ASSERT_EQ(tNavigator_API_RMA::encrypt_password("s3cret-pass", first).id(), 0);
    ASSERT_EQ(tNavigator_API_RMA::encrypt_password("s3cret-pass", second).id(), 0);
    ASSERT_EQ(tNavigator_API_RMA::encrypt_password("s3cret-pasS", other).id(), 0);
    EXPECT_STREQ(first.c_str(), second.c_str());
    EXPECT_STRNE(first.c_str(), other.c_str());
    const std::string token = first.c_str();
    EXPECT_EQ(token.find("s3cret"), std::string::npos);
    EXPECT_EQ(token.size(), 7u + 64u);  // "sha256:" and 64 hex digits
    tNavigator_API_RMA_string empty;
    ASSERT_EQ(tNavigator_API_RMA::encrypt_password(tNavigator_API_RMA_string(), empty).id(), 0);
    EXPECT_EQ(std::string(empty.c_str()).size(), token.size());
}

TEST(ClientLibrary, CreateManagerChecksItsOutputAndFreeIgnoresNull) {
    EXPECT_NE(tNavigator_API_RMA::tnav_create_manager(nullptr).id(), 0);
    tNavigator_API_RMA::tnav_free_manager(nullptr);
    tNavigator_API_RMA::tnav_free_job(nullptr);
}

TEST(ClientLibrary, UnconnectedManagerFailsEveryCallCleanly) {
    ManagerPtr manager = newManager();
    EXPECT_EQ(manager->is_connected(), 0);
    int jobId = -7;
    tNavigator_API_RMA_error_t error =
        manager->launch_job(tNavigator_API_RMA_start_params_t("/x/CASE.DATA"), &jobId);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("not connected"), std::string::npos) << describe(error);
    EXPECT_EQ(jobId, -7);
    tNavigator_API_RMA_job_t* job = reinterpret_cast<tNavigator_API_RMA_job_t*>(&jobId);
    EXPECT_NE(manager->get_job_by_id(1, job).id(), 0);
    EXPECT_EQ(job, nullptr);
    manager->disconnect();
    manager->disconnect();
}

TEST(ClientLibrary, AsynchronousRequestsAndBadArgumentsAreRefused) {
    ManagerPtr manager = newManager();
    int dummy = 0;
    auto* request = reinterpret_cast<tNavigator_API_RMA_request_t*>(&dummy);
    int jobId = 0;
    tNavigator_API_RMA_error_t error =
        manager->launch_job(tNavigator_API_RMA_start_params_t("/x/CASE.DATA"), &jobId, request);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("asynchronous"), std::string::npos) << describe(error);
    EXPECT_NE(manager->launch_job(tNavigator_API_RMA_start_params_t("/x/CASE.DATA"), nullptr).id(), 0);

    tNavigator_API_RMA_connection_options_t options;
    options.set_port(0);
    error = manager->connect_to_dispatcher(options);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("port 0"), std::string::npos) << describe(error);
}

TEST(LocalDispatcher, MissingExecutableIsAnError) {
    ManagerPtr manager = newManager();
    tNavigator_API_RMA_error_t error =
        manager->create_local_dispatcher__force_ports("/nonexistent/tnav-standin", nullptr, freePort());
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("/nonexistent/tnav-standin"), std::string::npos)
        << describe(error);
    EXPECT_NE(manager->create_local_dispatcher__force_ports(nullptr, nullptr, freePort()).id(), 0);
    EXPECT_EQ(manager->is_connected(), 0);
}

TEST(LocalDispatcher, PortInUseIsAnError) {
    PortHolder listener(true);
    ASSERT_GT(listener.port(), 0);
    ManagerPtr manager = newManager();
    const auto start = Clock::now();
    tNavigator_API_RMA_error_t error =
        manager->create_local_dispatcher__force_ports("/bin/true", nullptr, listener.port());
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("already in use"), std::string::npos) << describe(error);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

TEST(LocalDispatcher, EarlyExitIsReportedWithItsStatus) {
    ManagerPtr manager = newManager();
    const auto start = Clock::now();
    tNavigator_API_RMA_error_t error =
        manager->create_local_dispatcher__force_ports("/bin/false", nullptr, freePort());
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("exited with status 1"), std::string::npos)
        << describe(error);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(manager->is_connected(), 0);
}

// --- Against a scripted dispatcher in this process ---

// Answers Connect and a few well calls with fixed data; replies with a wrong length when asked to.
class ScriptedDispatcher final : public tnavapi::TNavigatorDispatcher::Service {
  public:
    grpc::Status Connect(grpc::ServerContext*, const tnavapi::ConnectRequest* request,
                         tnavapi::ConnectReply* reply) override {
        if (request->user_name() == "intruder") {
            reply->mutable_error()->set_id(9);
            reply->mutable_error()->set_description("Unknown user intruder");
        } else {
            lastToken = request->crypted_password();
            reply->set_session(77);
        }
        return grpc::Status::OK;
    }
    grpc::Status Ping(grpc::ServerContext*, const tnavapi::SessionRequest*, tnavapi::StatusReply*) override {
        return grpc::Status::OK;
    }
    grpc::Status GetJobById(grpc::ServerContext*, const tnavapi::JobRequest* request,
                            tnavapi::StatusReply* reply) override {
        if (request->session() != 77 || request->job_id() != 3) {
            reply->mutable_error()->set_id(4);
            reply->mutable_error()->set_description("No job " + std::to_string(request->job_id()));
        }
        return grpc::Status::OK;
    }
    grpc::Status GetWellNames(grpc::ServerContext*, const tnavapi::JobRequest*,
                              tnavapi::StringArrayReply* reply) override {
        reply->add_values("PROD");
        reply->add_values("INJ");
        return grpc::Status::OK;
    }
    // Value of wells[k] and params[j]: 100 * well + param; a well index of 99 gives one value too few.
    grpc::Status GetWellParams(grpc::ServerContext*, const tnavapi::WellParamsRequest* request,
                               tnavapi::DoubleArrayReply* reply) override {
        for (int well : request->wells())
            for (int param : request->params()) reply->add_values(100.0 * well + param);
        if (!request->wells().empty() && request->wells(0) == 99) reply->mutable_values()->RemoveLast();
        return grpc::Status::OK;
    }
    grpc::Status GetSpecificRateBhpIpr(grpc::ServerContext*,
                                       const tnavapi::SpecificRateBhpIprRequest* request,
                                       tnavapi::DoubleArrayReply* reply) override {
        for (double rate : request->rates()) reply->add_values(5000.0 - rate);
        return grpc::Status::OK;
    }
    grpc::Status SetNumberOfIprPoints(grpc::ServerContext*, const tnavapi::IprPointsRequest*,
                                      tnavapi::StatusReply*) override {
        return grpc::Status::OK;
    }

    std::string lastToken;
};

class ScriptedSession : public ::testing::Test {
  protected:
    void SetUp() override {
        grpc::ServerBuilder builder;
        builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &port_);
        builder.RegisterService(&service_);
        server_ = builder.BuildAndStart();
        ASSERT_TRUE(server_);
        ASSERT_GT(port_, 0);
        manager_ = newManager();
    }
    void TearDown() override {
        manager_.reset();
        if (server_) server_->Shutdown(std::chrono::system_clock::now() + std::chrono::seconds(1));
    }
    tNavigator_API_RMA_error_t connect(const char* user) {
        tNavigator_API_RMA_connection_options_t options;
        options.set_port(port_);
        options.set_remote_ip("127.0.0.1");
        tNavigator_API_RMA_string token;
        tNavigator_API_RMA::encrypt_password("pw", token);
        options.set_user_name_and_crypted_password(user, token.c_str());
        return manager_->connect_to_dispatcher(options);
    }

    ScriptedDispatcher service_;
    std::unique_ptr<grpc::Server> server_;
    int port_ = 0;
    ManagerPtr manager_;
};

TEST_F(ScriptedSession, RefusedUserGetsTheDispatchersError) {
    tNavigator_API_RMA_error_t error = connect("intruder");
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("Unknown user intruder"), std::string::npos)
        << describe(error);
    EXPECT_EQ(manager_->is_connected(), 0);
}

TEST_F(ScriptedSession, ArraysTravelWithTheCallersLengths) {
    ASSERT_EQ(connect("alice").id(), 0);
    EXPECT_EQ(manager_->is_connected(), 1);
    tNavigator_API_RMA_string token;
    tNavigator_API_RMA::encrypt_password("pw", token);
    EXPECT_EQ(service_.lastToken, token.c_str());

    tNavigator_API_RMA_job_t* raw = nullptr;
    EXPECT_NE(manager_->get_job_by_id(5, raw).id(), 0);
    EXPECT_EQ(raw, nullptr);
    ASSERT_EQ(manager_->get_job_by_id(3, raw).id(), 0);
    JobPtr job(raw);
    tNavigator_API_RMA_well_data_requester_t* wells = job->get_well_data_requester();
    ASSERT_NE(wells, nullptr);

    tNavigator_API_RMA_string names[2];
    ASSERT_EQ(wells->get_well_names(names).id(), 0);
    EXPECT_STREQ(names[0].str, "PROD");
    EXPECT_STREQ(names[1].str, "INJ");

    const int indices[] = {1, 0};
    const tNavigator_API_RMA_well_parameter_t params[] = {TNAV_WELL_OIL_RATE, TNAV_WELL_BHP,
                                                          TNAV_WELL_GAS_RATE};
    std::vector<double> values(7, -1.0);  // one guard value past the 2 x 3 the call fills
    ASSERT_EQ(wells->get_well_params(indices, 2, params, 3, values.data()).id(), 0);
    EXPECT_EQ(values, (std::vector<double>{101, 116, 103, 1, 16, 3, -1.0}));

    const int bad[] = {99};
    tNavigator_API_RMA_error_t error = wells->get_well_params(bad, 1, params, 3, values.data());
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("2 values where 3 were expected"), std::string::npos)
        << describe(error);
    EXPECT_NE(wells->get_well_params(nullptr, 2, params, 3, values.data()).id(), 0);
    EXPECT_NE(wells->get_well_params(indices, -1, params, 3, values.data()).id(), 0);

    const tNavigator_API_RMA_ipr_rate_phase_t phases[] = {TNAV_PHASE_OIL, TNAV_PHASE_GAS};
    const double rates[] = {100, 200, 300, 400};
    double bhps[5] = {0, 0, 0, 0, -1};
    EXPECT_NE(wells->get_specific_rate_bhp_ipr(indices, 2, phases, rates, bhps).id(), 0);  // points unknown
    ASSERT_EQ(wells->set_number_of_ipr_points(2).id(), 0);
    ASSERT_EQ(wells->get_specific_rate_bhp_ipr(indices, 2, phases, rates, bhps).id(), 0);
    EXPECT_EQ(std::vector<double>(bhps, bhps + 5), (std::vector<double>{4900, 4800, 4700, 4600, -1}));

    // A call the scripted dispatcher does not implement fails with a readable error.
    int count = 0;
    error = wells->get_well_count(&count);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("does not support"), std::string::npos)
        << describe(error);
}

TEST_F(ScriptedSession, StoppedDispatcherIsNoticedWithinASecond) {
    ASSERT_EQ(connect("alice").id(), 0);
    ASSERT_EQ(manager_->is_connected(), 1);
    server_->Shutdown(std::chrono::system_clock::now());
    server_.reset();
    const auto start = Clock::now();
    EXPECT_EQ(manager_->is_connected(), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
}

// --- With the stand-in dispatcher ---

// The child process of this one whose command line holds "--port" and that port.
pid_t childWithPort(int port) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        std::getline(stat, line);
        const std::size_t close = line.rfind(')');
        if (close == std::string::npos) continue;
        std::istringstream fields(line.substr(close + 2));
        std::string state;
        pid_t parent = 0;
        fields >> state >> parent;
        if (parent != ::getpid()) continue;
        std::ifstream cmdline(entry.path() / "cmdline");
        std::string words((std::istreambuf_iterator<char>(cmdline)), std::istreambuf_iterator<char>());
        if (words.find(std::string("--port") + '\0' + std::to_string(port) + '\0') != std::string::npos)
            return static_cast<pid_t>(std::stoi(name));
    }
    return -1;
}

bool unsupported(const tNavigator_API_RMA_error_t& error) {
    const std::string text = error.description();
    return text.find("not supported") != std::string::npos ||
           text.find("does not support") != std::string::npos;
}

TEST(StandinSession, SteppingReportDatesAndDetectingADeadDispatcher) {
    const std::string exe = TNAV_STANDIN_EXE;
    if (!std::filesystem::exists(exe)) GTEST_SKIP() << "tnav-standin is not built at " << exe;
    const std::string deck = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";
    ASSERT_TRUE(std::filesystem::exists(deck)) << deck;

    ManagerPtr manager = newManager();
    const int port = freePort();
    tNavigator_API_RMA_error_t error =
        manager->create_local_dispatcher__force_ports(exe.c_str(), nullptr, port);
    ASSERT_EQ(error.id(), 0) << describe(error);
    ASSERT_EQ(manager->is_connected(), 1);

    // A second dispatcher on the same port fails clearly.
    ManagerPtr second = newManager();
    error = second->create_local_dispatcher__force_ports(exe.c_str(), nullptr, port);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("in use"), std::string::npos) << describe(error);

    int jobId = 0;
    error = manager->launch_job(tNavigator_API_RMA_start_params_t(deck.c_str()), &jobId);
    if (unsupported(error)) GTEST_SKIP() << "the dispatcher cannot launch jobs yet: " << error.description();
    ASSERT_EQ(error.id(), 0) << describe(error);
    tNavigator_API_RMA_job_t* raw = nullptr;
    ASSERT_EQ(manager->get_job_by_id(jobId, raw).id(), 0);
    JobPtr job(raw);
    error = job->wait_for_start();
    if (unsupported(error)) GTEST_SKIP() << "the dispatcher cannot start jobs yet: " << error.description();
    ASSERT_EQ(error.id(), 0) << describe(error);
    tNavigator_API_RMA_string version;
    ASSERT_EQ(job->get_tnav_version(&version).id(), 0);
    EXPECT_NE(std::string(version.c_str()), "");

    tNavigator_API_RMA_well_data_requester_t* wells = job->get_well_data_requester();
    int count = 0;
    error = wells->get_well_count(&count);
    if (unsupported(error)) GTEST_SKIP() << "the dispatcher cannot read wells yet: " << error.description();
    ASSERT_EQ(error.id(), 0) << describe(error);
    ASSERT_EQ(count, 2);  // SPE1: one injector, one producer
    std::vector<tNavigator_API_RMA_string> names(count);
    ASSERT_EQ(wells->get_well_names(names.data()).id(), 0);
    int producer = -1;
    for (int i = 0; i < count; ++i)
        if (std::string(names[i].c_str()) == "PROD") producer = i;
    ASSERT_GE(producer, 0);

    for (int step = 0; step < 3; ++step) {
        tNavigator_API_RMA_time_moment_t next(0, static_cast<tNavigator_API_RMA_month_t>(13), 0);
        error = job->get_time_moment(TNAV_TIME_MOMENT_NEXT_SCHEDULE, &next);
        if (unsupported(error)) GTEST_SKIP() << "no report dates yet: " << error.description();
        ASSERT_EQ(error.id(), 0) << describe(error);
        ASSERT_EQ(next.is_valid().id(), 0) << next.is_valid().description();
        error = job->run(next);
        if (unsupported(error)) GTEST_SKIP() << "the dispatcher cannot run jobs yet: " << error.description();
        ASSERT_EQ(error.id(), 0) << describe(error);
        job->wait_for_state(TNAV_JOB_STATE_PAUSED);
        tNavigator_API_RMA_time_moment_t current(0, static_cast<tNavigator_API_RMA_month_t>(13), 0);
        ASSERT_EQ(job->get_time_moment(TNAV_TIME_MOMENT_CURRENT, &current).id(), 0);
        EXPECT_EQ(current.get_year(), next.get_year());
        EXPECT_EQ(current.get_month(), next.get_month());
        EXPECT_EQ(current.get_day(), next.get_day());
        const tNavigator_API_RMA_well_parameter_t params[] = {TNAV_WELL_OIL_RATE, TNAV_WELL_BHP};
        double values[2] = {-1, -1};
        error = wells->get_well_params(&producer, 1, params, 2, values);
        if (unsupported(error)) GTEST_SKIP() << "no well rates yet: " << error.description();
        ASSERT_EQ(error.id(), 0) << describe(error);
        EXPECT_GT(values[0], 0.0);
        EXPECT_GT(values[1], 0.0);
    }

    // Killing the dispatcher makes is_connected false within a second.
    const pid_t pid = childWithPort(port);
    ASSERT_GT(pid, 0);
    ASSERT_EQ(::kill(pid, SIGKILL), 0);
    const auto killed = Clock::now();
    while (manager->is_connected() != 0 && Clock::now() - killed < std::chrono::seconds(3))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(manager->is_connected(), 0);
    EXPECT_LT(Clock::now() - killed, std::chrono::seconds(1));
    EXPECT_NE(job->stop().id(), 0);
}

// A session on SPE1 with the stand-in, paused at its start date.
class StandinJob : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string exe = TNAV_STANDIN_EXE;
        if (!std::filesystem::exists(exe)) GTEST_SKIP() << "tnav-standin is not built at " << exe;
        manager_ = newManager();
        tNavigator_API_RMA_error_t error =
            manager_->create_local_dispatcher__force_ports(exe.c_str(), nullptr, freePort());
        ASSERT_EQ(error.id(), 0) << describe(error);
        int jobId = 0;
        const std::string deck = std::string(RIVULET_DECKS_DIR) + "/spe1/SPE1CASE1.DATA";
        error = manager_->launch_job(tNavigator_API_RMA_start_params_t(deck.c_str()), &jobId);
        if (unsupported(error)) GTEST_SKIP() << error.description();
        ASSERT_EQ(error.id(), 0) << describe(error);
        tNavigator_API_RMA_job_t* raw = nullptr;
        ASSERT_EQ(manager_->get_job_by_id(jobId, raw).id(), 0);
        job_.reset(raw);
        error = job_->wait_for_start();
        if (unsupported(error)) GTEST_SKIP() << error.description();
        ASSERT_EQ(error.id(), 0) << describe(error);
        wells_ = job_->get_well_data_requester();
        ASSERT_NE(wells_, nullptr);
        int count = 0;
        error = wells_->get_well_count(&count);
        if (unsupported(error)) GTEST_SKIP() << error.description();
        std::vector<tNavigator_API_RMA_string> names(static_cast<std::size_t>(count));
        ASSERT_EQ(wells_->get_well_names(names.data()).id(), 0);
        for (int i = 0; i < count; ++i)
            if (std::string(names[static_cast<std::size_t>(i)].c_str()) == "PROD") producer_ = i;
        ASSERT_GE(producer_, 0);
    }
    void TearDown() override {
        if (job_) job_->stop();
        job_.reset();
        manager_.reset();
    }
    // Runs to the next report date and waits there.
    void step() {
        tNavigator_API_RMA_time_moment_t next(0, static_cast<tNavigator_API_RMA_month_t>(13), 0);
        ASSERT_EQ(job_->get_time_moment(TNAV_TIME_MOMENT_NEXT_SCHEDULE, &next).id(), 0);
        tNavigator_API_RMA_error_t error = job_->run(next);
        ASSERT_EQ(error.id(), 0) << describe(error);
        ASSERT_EQ(job_->wait_for_state(TNAV_JOB_STATE_PAUSED).id(), 0);
    }

    ManagerPtr manager_;
    JobPtr job_;
    tNavigator_API_RMA_well_data_requester_t* wells_ = nullptr;
    int producer_ = -1;
};

TEST_F(StandinJob, StaticReadsMatchABlackOilDeck) {
    tNavigator_API_RMA_static_data_requester_t* statics = job_->get_static_data_requester();
    ASSERT_NE(statics, nullptr);
    tNavigator_API_RMA_math_model_type_t model = TNAV_MATH_MODEL_COMPOSITIONAL;
    tNavigator_API_RMA_error_t error = statics->get_math_model_type(&model);
    if (unsupported(error)) GTEST_SKIP() << error.description();
    ASSERT_EQ(error.id(), 0) << describe(error);
    EXPECT_EQ(model, TNAV_MATH_MODEL_ISOTHERMAL_BLACK_OIL);
    tNavigator_API_RMA_unit_system_t units = TNAV_UNIT_SYSTEM_SI;
    ASSERT_EQ(statics->unit_system(&units).id(), 0);
    EXPECT_EQ(units, TNAV_UNIT_SYSTEM_FIELD);
    int regions = 0;
    ASSERT_EQ(statics->get_number_of_pvt_regions(&regions).id(), 0);
    ASSERT_GE(regions, 1);
    std::vector<double> densities(3 * static_cast<std::size_t>(regions) + 1, -1.0);
    ASSERT_EQ(statics->black_oil__get_sc_densities(densities.data()).id(), 0);
    // Water, oil, gas: the deck's DENSITY keyword gives oil, water, gas in lb/ft3.
    EXPECT_NEAR(densities[0], 64.49, 1e-9);
    EXPECT_NEAR(densities[1], 53.66, 1e-9);
    EXPECT_NEAR(densities[2], 0.0533, 1e-9);
    EXPECT_EQ(densities.back(), -1.0);
}

TEST_F(StandinJob, RateLimitIsFollowedAndIprBhpRisesAsRateFalls) {
    ASSERT_NO_FATAL_FAILURE(step());
    const tNavigator_API_RMA_prod_limit_t limits[] = {TNAV_PROD_LIMIT_OIL_RATE, TNAV_PROD_LIMIT_BHP};
    const double values[] = {10000.0, 1000.0};
    tNavigator_API_RMA_error_t error = wells_->enable_producer_limits(&producer_, 1, limits, 2, values);
    if (unsupported(error)) GTEST_SKIP() << error.description();
    ASSERT_EQ(error.id(), 0) << describe(error);
    const tNavigator_API_RMA_prod_limit_t target = TNAV_PROD_LIMIT_OIL_RATE;
    ASSERT_EQ(wells_->set_producer_targets(&producer_, 1, &target).id(), 0);
    ASSERT_EQ(wells_->check_new_controls().id(), 0);
    ASSERT_NO_FATAL_FAILURE(step());
    const tNavigator_API_RMA_well_parameter_t oil = TNAV_WELL_OIL_RATE;
    double rate = 0.0;
    ASSERT_EQ(wells_->get_well_params(&producer_, 1, &oil, 1, &rate).id(), 0);
    EXPECT_NEAR(rate, 10000.0, 100.0);

    const tNavigator_API_RMA_ipr_rate_phase_t phase = TNAV_PHASE_OIL;
    double maxRate = 0.0;
    error = wells_->get_max_rates(&producer_, 1, &phase, &maxRate);
    if (unsupported(error)) GTEST_SKIP() << error.description();
    ASSERT_EQ(error.id(), 0) << describe(error);
    EXPECT_GT(maxRate, 10000.0);
    ASSERT_EQ(wells_->set_number_of_ipr_points(2).id(), 0);
    const double rates[] = {0.8 * maxRate, 0.2 * maxRate};
    double bhps[2] = {0.0, 0.0};
    error = wells_->get_specific_rate_bhp_ipr(&producer_, 1, &phase, rates, bhps);
    ASSERT_EQ(error.id(), 0) << describe(error);
    EXPECT_GT(bhps[1], bhps[0]);
}

TEST(StandinSession, DebugFileLogsBothSidesAndDisconnectEndsTheDispatcher) {
    const std::string exe = TNAV_STANDIN_EXE;
    if (!std::filesystem::exists(exe)) GTEST_SKIP() << "tnav-standin is not built at " << exe;
    const std::filesystem::path log = std::filesystem::temp_directory_path() /
                                      ("tnavapi-client-test-" + std::to_string(::getpid()) + ".log");
    std::filesystem::remove(log);
    ManagerPtr manager = newManager();
    const int port = freePort();
    tNavigator_API_RMA_error_t error =
        manager->create_local_dispatcher__force_ports(exe.c_str(), log.c_str(), port);
    ASSERT_EQ(error.id(), 0) << describe(error);
    const pid_t pid = childWithPort(port);
    ASSERT_GT(pid, 0);
    manager->disconnect();
    EXPECT_EQ(manager->is_connected(), 0);
    EXPECT_NE(::kill(pid, 0), 0);  // ended and reaped
    std::ifstream in(log);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("client: Connect"), std::string::npos) << text;
    EXPECT_NE(text.find("Disconnect"), std::string::npos) << text;
    std::filesystem::remove(log);
}

TEST_F(StandinJob, DispatcherErrorsReachTheCaller) {
    const int bad = 12;
    double rate = 0.0;
    const tNavigator_API_RMA_well_parameter_t oil = TNAV_WELL_OIL_RATE;
    tNavigator_API_RMA_error_t error = wells_->get_well_params(&bad, 1, &oil, 1, &rate);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()), "");
    int jobId = 0;
    error = manager_->launch_job(tNavigator_API_RMA_start_params_t("/x/CASE.DATA"), &jobId);
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::string(error.description()).find("/x/CASE.DATA"), std::string::npos) << describe(error);
}

}  // namespace
