#include "standin/Dispatcher.h"

#include <grpcpp/grpcpp.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "standin/DeckReader.h"
#include "standin/StandinReservoir.h"
#include "standin/UsersFile.h"
#include "tnavapi.grpc.pb.h"

namespace rivulet::standin {
namespace {

// Error ids of the replies; the client only tests for non-zero.
enum ErrorId : int {
    kBadSession = 1,
    kBadJob = 2,
    kBadArgument = 3,
    kWrongState = 4,
    kNotSupported = 5,
    kFailed = 6,
    kRefused = 7,
};

// Job states, as the client's enumeration numbers them.
enum JobState : int { kOpening = 0, kPaused = 1, kRunning = 2, kFinished = 3, kFailedState = 4 };

struct RpcError {
    int id;
    std::string text;
};

[[noreturn]] void Fail(int id, std::string text) {
    throw RpcError{id, std::move(text)};
}

// --- Calendar ---

std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromDays(std::int64_t z, int& y, int& m, int& d) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2));
}

void ToMoment(Seconds t, tnavapi::TimeMoment& out) {
    const std::int64_t days = t >= 0 ? t / 86400 : (t - 86399) / 86400;
    const std::int64_t secs = t - days * 86400;
    int y, m, d;
    CivilFromDays(days, y, m, d);
    out.set_year(y);
    out.set_month(m);
    out.set_day(d);
    out.set_hour(static_cast<int>(secs / 3600));
    out.set_minute(static_cast<int>(secs / 60 % 60));
    out.set_second(static_cast<int>(secs % 60));
}

Seconds FromMoment(const tnavapi::TimeMoment& m) {
    static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (m.year() < 1 || m.year() > 9999)
        Fail(kBadArgument, "Year " + std::to_string(m.year()) + " is not in 1..9999");
    if (m.month() < 1 || m.month() > 12)
        Fail(kBadArgument, "Month " + std::to_string(m.month()) + " is not in 1..12");
    const bool leap = (m.year() % 4 == 0 && m.year() % 100 != 0) || m.year() % 400 == 0;
    const int last = kDays[m.month() - 1] + (m.month() == 2 && leap ? 1 : 0);
    if (m.day() < 1 || m.day() > last)
        Fail(kBadArgument, "Day " + std::to_string(m.day()) + " is not in 1.." + std::to_string(last) +
                               " of month " + std::to_string(m.month()));
    if (m.hour() < 0 || m.hour() > 23 || m.minute() < 0 || m.minute() > 59 || m.second() < 0 ||
        m.second() > 59)
        Fail(kBadArgument, "Time of day " + std::to_string(m.hour()) + ":" + std::to_string(m.minute()) +
                               ":" + std::to_string(m.second()) + " is not in 00:00:00..23:59:59");
    return DaysFromCivil(m.year(), static_cast<unsigned>(m.month()), static_cast<unsigned>(m.day())) * 86400 +
           m.hour() * 3600 + m.minute() * 60 + m.second();
}

// --- Enumerations of the client API ---

enum : int { kPhaseWater = 0, kPhaseOil = 1, kPhaseGas = 2 };
enum : int {
    kStatusNone = 0,
    kStatusOpenProducer = 1,
    kStatusOpenInjector = 2,
    kStatusShut = 3,
    kStatusStop = 4
};
enum : int { kProdGas = 0, kProdOil = 1, kProdWater = 2, kProdLiquid = 3, kProdBhp = 5, kProdThp = 6 };
enum : int { kInjRate = 0, kInjBhp = 2, kInjThp = 3 };

Phase ToPhase(int code) {
    switch (code) {
        case kPhaseWater:
            return Phase::kWater;
        case kPhaseOil:
            return Phase::kOil;
        case kPhaseGas:
            return Phase::kGas;
        default:
            Fail(kBadArgument,
                 "Phase " + std::to_string(code) + " is not one of 0 (water), 1 (oil), 2 (gas)");
    }
}

int FromPhase(Phase p) {
    return p == Phase::kGas ? kPhaseGas : p == Phase::kOil ? kPhaseOil : kPhaseWater;
}

int StatusCode(const WellReport& w) {
    switch (w.status) {
        case WellStatus::kOpen:
            return w.type == WellType::kInjector ? kStatusOpenInjector : kStatusOpenProducer;
        case WellStatus::kStop:
            return kStatusStop;
        case WellStatus::kShut:
            break;
    }
    return kStatusShut;
}

// --- Jobs and sessions ---

struct Job {
    std::mutex mutex;  // the engine is not thread-safe
    int id = 0;
    std::uint64_t session = 0;
    std::unique_ptr<StandinReservoir> engine;
    int state = kOpening;
    int ipr_points = 0;
    std::vector<int> ipr_shut_phases;  // per well
};

}  // namespace

class DispatcherService final : public tnavapi::TNavigatorDispatcher::Service {
  public:
    DispatcherService(const DispatcherOptions& options, std::function<void()> on_local_disconnect)
        : options_(options), on_local_disconnect_(std::move(on_local_disconnect)) {
        if (options.users_file) users_ = UsersFile::Read(*options.users_file);
        if (options.debug_file) {
            debug_.open(*options.debug_file, std::ios::app);
            if (!debug_) throw std::runtime_error("Debug file " + *options.debug_file + " cannot be written");
        }
        std::random_device rd;
        next_session_ = (static_cast<std::uint64_t>(rd()) << 20) | 1u;
    }

    using Status = grpc::Status;
    using Ctx = grpc::ServerContext;

    // --- Manager ---

    Status Connect(Ctx*, const tnavapi::ConnectRequest* rq, tnavapi::ConnectReply* rp) override {
        return Serve("Connect", *rq, *rp, [&] {
            if (users_) {
                const std::string why = users_->Check(rq->user_name(), rq->crypted_password());
                if (!why.empty()) Fail(kRefused, why);
            }
            std::lock_guard lock(mutex_);
            const std::uint64_t id = next_session_++;
            sessions_[id] = rq->user_name();
            rp->set_session(id);
        });
    }

    Status Ping(Ctx*, const tnavapi::SessionRequest* rq, tnavapi::StatusReply* rp) override {
        return Serve("Ping", *rq, *rp, [&] { CheckSession(rq->session()); });
    }

    Status Disconnect(Ctx*, const tnavapi::SessionRequest* rq, tnavapi::StatusReply* rp) override {
        bool last = false;
        Status s = Serve("Disconnect", *rq, *rp, [&] {
            std::lock_guard lock(mutex_);
            if (sessions_.erase(rq->session()) == 0) Fail(kBadSession, UnknownSession(rq->session()));
            for (auto it = jobs_.begin(); it != jobs_.end();)
                it = it->second->session == rq->session() ? jobs_.erase(it) : std::next(it);
            last = !users_ && sessions_.empty();
        });
        if (last && on_local_disconnect_) on_local_disconnect_();
        return s;
    }

    Status LaunchJob(Ctx*, const tnavapi::LaunchJobRequest* rq, tnavapi::LaunchJobReply* rp) override {
        return Serve("LaunchJob", *rq, *rp, [&] {
            CheckSession(rq->session());
            if (rq->node_count() < 0)
                Fail(kBadArgument, "Node count " + std::to_string(rq->node_count()) + " is negative");
            if (rq->case_file().empty()) Fail(kBadArgument, "No case file given");
            std::error_code ec;
            if (!std::filesystem::is_regular_file(rq->case_file(), ec))
                Fail(kFailed, "Case file " + rq->case_file() + " not found");
            auto job = std::make_shared<Job>();
            try {
                job->engine = std::make_unique<StandinReservoir>(ReadDeck(rq->case_file()));
            } catch (const std::exception& e) {
                Fail(kFailed, e.what());
            }
            job->session = rq->session();
            job->state = kPaused;
            job->ipr_shut_phases.assign(job->engine->WellCount(), kPhaseWater);
            std::lock_guard lock(mutex_);
            if (!sessions_.count(rq->session())) Fail(kBadSession, UnknownSession(rq->session()));
            job->id = next_job_++;
            jobs_[job->id] = job;
            rp->set_job_id(job->id);
        });
    }

    Status GetJobById(Ctx*, const tnavapi::JobRequest* rq, tnavapi::StatusReply* rp) override {
        return OnJob("GetJobById", *rq, *rp, [&](Job&) {});
    }

    // --- Job ---

    Status WaitForStart(Ctx*, const tnavapi::JobRequest* rq, tnavapi::StatusReply* rp) override {
        return OnJob("WaitForStart", *rq, *rp, [&](Job& j) {
            if (j.state == kFailedState)
                Fail(kWrongState, "Job " + std::to_string(j.id) + " failed to start");
        });
    }

    Status WaitForState(Ctx*, const tnavapi::WaitForStateRequest* rq, tnavapi::StatusReply* rp) override {
        return OnJob("WaitForState", *rq, *rp, [&](Job& j) {
            if (rq->state() < kOpening || rq->state() > kFailedState)
                Fail(kBadArgument, "Job state " + std::to_string(rq->state()) + " is not in 0..4");
            // Runs complete within their call, so a state the job is not in now is one it cannot reach.
            if (j.state != rq->state())
                Fail(kWrongState, "Job " + std::to_string(j.id) + " is " + StateName(j.state) +
                                      " and cannot become " + StateName(rq->state()));
        });
    }

    Status State(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("State", *rq, *rp, [&](Job& j) { rp->set_value(j.state); });
    }

    Status IsJobStarted(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("IsJobStarted", *rq, *rp, [&](Job& j) { rp->set_value(j.state != kOpening ? 1 : 0); });
    }

    Status IsJobEnded(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("IsJobEnded", *rq, *rp, [&](Job& j) { rp->set_value(j.state >= kFinished ? 1 : 0); });
    }

    Status CheckCompatibility(Ctx*, const tnavapi::CompatibilityRequest* rq,
                              tnavapi::StatusReply* rp) override {
        return OnJob("CheckCompatibility", *rq, *rp, [&](Job&) {
            if (rq->protocol_version() != tnavapi::PROTOCOL_VERSION_CURRENT)
                Fail(kRefused, "Client protocol version " + std::to_string(rq->protocol_version()) +
                                   " does not match the dispatcher's version " +
                                   std::to_string(tnavapi::PROTOCOL_VERSION_CURRENT));
        });
    }

    Status GetTnavVersion(Ctx*, const tnavapi::JobRequest* rq, tnavapi::StringReply* rp) override {
        return OnJob("GetTnavVersion", *rq, *rp, [&](Job&) { rp->set_value(options_.version_text); });
    }

    Status GetTimeMoment(Ctx*, const tnavapi::TimeMomentRequest* rq, tnavapi::TimeMomentReply* rp) override {
        return OnJob("GetTimeMoment", *rq, *rp, [&](Job& j) {
            const StandinReservoir& e = *j.engine;
            switch (rq->type()) {
                case 0:
                    return ToMoment(e.Start(), *rp->mutable_moment());
                case 1:
                    return ToMoment(e.End(), *rp->mutable_moment());
                case 2:
                    return ToMoment(e.Now(), *rp->mutable_moment());
                case 3:
                    if (const auto next = e.NextReportDate(); next && j.state < kFinished)
                        return ToMoment(*next, *rp->mutable_moment());
                    rp->mutable_moment()->set_month(13);  // no real date: the schedule is done
                    return;
                default:
                    Fail(kBadArgument,
                         "Time moment request type " + std::to_string(rq->type()) + " is not in 0..3");
            }
        });
    }

    Status Run(Ctx*, const tnavapi::RunRequest* rq, tnavapi::StatusReply* rp) override {
        return OnJob("Run", *rq, *rp, [&](Job& j) {
            if (j.state != kOpening && j.state != kPaused)
                Fail(kWrongState, "Job " + std::to_string(j.id) + " is " + StateName(j.state) +
                                      "; only an opening or paused job can run");
            const Seconds target = FromMoment(rq->moment());
            StandinReservoir& e = *j.engine;
            if (target <= e.Now()) Fail(kBadArgument, "Run target is not after the current date of the job");
            j.state = kRunning;
            try {
                e.AdvanceTo(target);
            } catch (const std::exception& ex) {
                j.state = kFailedState;
                Fail(kFailed, std::string("Job failed: ") + ex.what());
            }
            j.state = e.Ended() ? kFinished : kPaused;
        });
    }

    Status Stop(Ctx*, const tnavapi::JobRequest* rq, tnavapi::StatusReply* rp) override {
        return OnJob("Stop", *rq, *rp, [&](Job& j) {
            if (j.state != kFailedState) j.state = kFinished;
        });
    }

    // --- Static data requester ---

    Status GetMathModelType(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("GetMathModelType", *rq, *rp, [&](Job&) { rp->set_value(0); });  // isothermal black oil
    }

    Status UnitSystem(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("UnitSystem", *rq, *rp, [&](Job& j) {
            switch (j.engine->Model().units) {
                case UnitKind::kField:
                    return rp->set_value(2);
                case UnitKind::kLab:
                    return rp->set_value(3);
                case UnitKind::kMetric:
                case UnitKind::kPvtM:
                    return rp->set_value(1);
            }
        });
    }

    Status GetNumberOfPvtRegions(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("GetNumberOfPvtRegions", *rq, *rp,
                     [&](Job& j) { rp->set_value(static_cast<int>(j.engine->Model().fluids.size())); });
    }

    Status BlackOilGetScDensities(Ctx*, const tnavapi::JobRequest* rq,
                                  tnavapi::DoubleArrayReply* rp) override {
        return OnJob("BlackOilGetScDensities", *rq, *rp, [&](Job& j) {
            const double scale = j.engine->Model().scales.density;
            for (const FluidRegion& r : j.engine->Model().fluids) {  // water, oil, gas per PVT region
                rp->add_values(r.water_density / scale);
                rp->add_values(r.oil_density / scale);
                rp->add_values(r.gas_density / scale);
            }
        });
    }

    // A black-oil model answers the compositional reads with no components and no EOS regions.
    Status ComposIsMiscibleOptionEnabled(Ctx*, const tnavapi::JobRequest* rq,
                                         tnavapi::IntReply* rp) override {
        return OnJob("ComposIsMiscibleOptionEnabled", *rq, *rp, [&](Job&) { rp->set_value(0); });
    }
    Status ComposGetNumberOfEosRegions(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("ComposGetNumberOfEosRegions", *rq, *rp, [&](Job&) { rp->set_value(0); });
    }
    Status IsothermComposGetEosTypes(Ctx*, const tnavapi::JobRequest* rq,
                                     tnavapi::IntArrayReply* rp) override {
        return OnJob("IsothermComposGetEosTypes", *rq, *rp, [&](Job&) {});
    }
    Status ComposGetNumberOfHydrocarbonComponents(Ctx*, const tnavapi::JobRequest* rq,
                                                  tnavapi::IntReply* rp) override {
        return OnJob("ComposGetNumberOfHydrocarbonComponents", *rq, *rp, [&](Job&) { rp->set_value(0); });
    }
    Status ComposGetNumberOfWaterComponents(Ctx*, const tnavapi::JobRequest* rq,
                                            tnavapi::IntReply* rp) override {
        return OnJob("ComposGetNumberOfWaterComponents", *rq, *rp, [&](Job&) { rp->set_value(0); });
    }
    Status ComposGetHcComponentNames(Ctx*, const tnavapi::JobRequest* rq,
                                     tnavapi::StringArrayReply* rp) override {
        return OnJob("ComposGetHcComponentNames", *rq, *rp, [&](Job&) {});
    }
    Status ComposGetComponentProperties(Ctx*, const tnavapi::ComponentPropertiesRequest* rq,
                                        tnavapi::DoubleArrayReply* rp) override {
        return OnJob("ComposGetComponentProperties", *rq, *rp, [&](Job&) {
            for (int p : rq->properties())
                if (p < 0 || p > 9)
                    Fail(kBadArgument, "Component property " + std::to_string(p) + " is not in 0..9");
        });
    }
    Status IsothermComposGetComponentBinaryInteractionCoefficients(Ctx*, const tnavapi::JobRequest* rq,
                                                                   tnavapi::DoubleArrayReply* rp) override {
        return OnJob("IsothermComposGetComponentBinaryInteractionCoefficients", *rq, *rp, [&](Job&) {});
    }
    Status ComposGetWaterComponentNames(Ctx*, const tnavapi::JobRequest* rq,
                                        tnavapi::StringArrayReply* rp) override {
        return OnJob("ComposGetWaterComponentNames", *rq, *rp, [&](Job&) {});
    }
    Status ComposGetWaterScDensities(Ctx*, const tnavapi::JobRequest* rq,
                                     tnavapi::DoubleArrayReply* rp) override {
        return OnJob("ComposGetWaterScDensities", *rq, *rp, [&](Job& j) {
            for (const FluidRegion& r : j.engine->Model().fluids)
                rp->add_values(r.water_density / j.engine->Model().scales.density);
        });
    }

    // --- Well reads ---

    Status GetWellCount(Ctx*, const tnavapi::JobRequest* rq, tnavapi::IntReply* rp) override {
        return OnJob("GetWellCount", *rq, *rp,
                     [&](Job& j) { rp->set_value(static_cast<int>(j.engine->WellCount())); });
    }

    Status GetWellNames(Ctx*, const tnavapi::JobRequest* rq, tnavapi::StringArrayReply* rp) override {
        return OnJob("GetWellNames", *rq, *rp, [&](Job& j) {
            for (const WellData& w : j.engine->Model().wells) rp->add_values(w.name);
        });
    }

    Status GetWellFirstActiveStatuses(Ctx*, const tnavapi::WellsRequest* rq,
                                      tnavapi::IntArrayReply* rp) override {
        return OnWells("GetWellFirstActiveStatuses", *rq, *rp, [&](Job& j, std::size_t w, std::size_t) {
            // The first deck step that opens the well, else the well's present status if it is open.
            const WellReport now = j.engine->Well(w);
            int status = now.status == WellStatus::kOpen ? StatusCode(now) : kStatusNone;
            for (const auto& step : j.engine->Model().controls) {
                const WellControls& c = step[w];
                if (c.defined && c.status == WellStatus::kOpen) {
                    status = c.type == WellType::kInjector ? kStatusOpenInjector : kStatusOpenProducer;
                    break;
                }
            }
            rp->add_values(status);
        });
    }

    Status GetWellEosRegions(Ctx*, const tnavapi::WellsRequest* rq, tnavapi::IntArrayReply* rp) override {
        return OnWells("GetWellEosRegions", *rq, *rp,
                       [&](Job&, std::size_t, std::size_t) { rp->add_values(0); });  // black oil: none
    }

    Status GetWellPvtRegions(Ctx*, const tnavapi::WellsRequest* rq, tnavapi::IntArrayReply* rp) override {
        return OnWells("GetWellPvtRegions", *rq, *rp, [&](Job& j, std::size_t w, std::size_t) {
            const DeckModel& m = j.engine->Model();
            rp->add_values(m.tanks[static_cast<std::size_t>(m.wells[w].tank)].region + 1);
        });
    }

    Status GetWellStatuses(Ctx*, const tnavapi::WellsRequest* rq, tnavapi::IntArrayReply* rp) override {
        return OnWells("GetWellStatuses", *rq, *rp, [&](Job& j, std::size_t w, std::size_t) {
            rp->add_values(StatusCode(j.engine->Well(w)));
        });
    }

    Status GetInjectorPhases(Ctx*, const tnavapi::WellsRequest* rq, tnavapi::IntArrayReply* rp) override {
        return OnWells("GetInjectorPhases", *rq, *rp, [&](Job& j, std::size_t w, std::size_t) {
            rp->add_values(FromPhase(j.engine->Well(w).injected));
        });
    }

    Status GetWellEfficiencyFactors(Ctx*, const tnavapi::WellsRequest* rq,
                                    tnavapi::DoubleArrayReply* rp) override {
        return OnWells("GetWellEfficiencyFactors", *rq, *rp, [&](Job& j, std::size_t w, std::size_t) {
            rp->add_values(j.engine->Well(w).efficiency);
        });
    }

    Status GetWellParams(Ctx*, const tnavapi::WellParamsRequest* rq, tnavapi::DoubleArrayReply* rp) override {
        return OnWellsChecked(
            "GetWellParams", *rq, *rp,
            [&](Job&) {
                for (int p : rq->params())
                    if (p < 0 || p > 21)
                        Fail(kBadArgument, "Well parameter " + std::to_string(p) + " is not in 0..21");
            },
            [](Job&, std::size_t, std::size_t) {},
            [&](Job& j, std::size_t w, std::size_t) {
                const WellReport r = j.engine->Well(w);
                const bool inj = r.type == WellType::kInjector;
                for (int p : rq->params()) rp->add_values(WellParam(r, inj, p));
            });
    }

    Status GetComponentWellParams(Ctx*, const tnavapi::ComponentWellParamsRequest* rq,
                                  tnavapi::DoubleArrayReply* rp) override {
        return OnWellsChecked(
            "GetComponentWellParams", *rq, *rp,
            [&](Job&) {
                if (rq->params_size() != rq->components_size())
                    Fail(kBadArgument, "GetComponentWellParams: " + std::to_string(rq->params_size()) +
                                           " parameters but " + std::to_string(rq->components_size()) +
                                           " components");
                if (rq->params_size() > 0)
                    Fail(kBadArgument, "Component " + std::to_string(rq->components(0)) +
                                           " out of range: the black-oil model has no components");
            },
            [](Job&, std::size_t, std::size_t) {}, [](Job&, std::size_t, std::size_t) {});
    }

    Status GetMaxRates(Ctx*, const tnavapi::WellCodesRequest* rq, tnavapi::DoubleArrayReply* rp) override {
        return OnCodes("GetMaxRates", *rq, *rp, [&](Job& j, std::size_t w, int code) {
            rp->add_values(j.engine->MaxRate(w, ToPhase(code)));
        });
    }

    Status GetSpecificRateBhpIpr(Ctx*, const tnavapi::SpecificRateBhpIprRequest* rq,
                                 tnavapi::DoubleArrayReply* rp) override {
        return OnWellsChecked(
            "GetSpecificRateBhpIpr", *rq, *rp,
            [&](Job& j) {
                if (j.ipr_points <= 0)
                    Fail(kWrongState, "Call SetNumberOfIprPoints before GetSpecificRateBhpIpr");
                CheckSize("phases", rq->phases_size(), rq->wells_size());
                CheckSize("rates", rq->rates_size(), rq->wells_size() * j.ipr_points);
            },
            [](Job&, std::size_t, std::size_t) {},
            [&](Job& j, std::size_t w, std::size_t k) {
                const int points = j.ipr_points;
                const Phase phase = ToPhase(rq->phases(static_cast<int>(k)));
                for (int p = 0; p < points; ++p) {
                    const double rate = rq->rates(static_cast<int>(k) * points + p);
                    if (!std::isfinite(rate) || rate < 0.0)
                        Fail(kBadArgument,
                             "IPR rate " + std::to_string(rate) + " is negative or not a number");
                    rp->add_values(j.engine->BhpForRate(w, phase, rate).value_or(0.0));
                }
            });
    }

    Status GetScDensitiesOfMaxRates(Ctx*, const tnavapi::WellCodesRequest* rq,
                                    tnavapi::DoubleArrayReply* rp) override {
        return OnCodes("GetScDensitiesOfMaxRates", *rq, *rp, [&](Job& j, std::size_t w, int code) {
            const WellReport r = j.engine->Well(w);
            const Phase p = ToPhase(code);
            rp->add_values(p == Phase::kOil   ? r.oil_density
                           : p == Phase::kGas ? r.gas_density
                                              : r.water_density);
        });
    }

    Status GetCompositionOfMaxRates(Ctx*, const tnavapi::WellCodesRequest* rq,
                                    tnavapi::DoubleArrayReply* rp) override {
        return OnCodes("GetCompositionOfMaxRates", *rq, *rp,
                       [&](Job&, std::size_t, int code) { ToPhase(code); });  // no components: empty runs
    }

    // --- IPR settings ---

    Status SetNumberOfIprPoints(Ctx*, const tnavapi::IprPointsRequest* rq,
                                tnavapi::StatusReply* rp) override {
        return OnJob("SetNumberOfIprPoints", *rq, *rp, [&](Job& j) {
            if (rq->count() < 1 || rq->count() > 10000)
                Fail(kBadArgument,
                     "Number of IPR points " + std::to_string(rq->count()) + " is not in 1..10000");
            j.ipr_points = rq->count();
        });
    }

    Status SetInjPhasesForIprShutWells(Ctx*, const tnavapi::WellCodesRequest* rq,
                                       tnavapi::StatusReply* rp) override {
        return OnCodesChecked(
            "SetInjPhasesForIprShutWells", *rq, *rp, [&](Job&, std::size_t, int c) { ToPhase(c); },
            [&](Job& j, std::size_t w, int c) { j.ipr_shut_phases[w] = c; });
    }

    // --- Writes ---

    Status SetNewWellStatuses(Ctx*, const tnavapi::WellCodesRequest* rq, tnavapi::StatusReply* rp) override {
        return OnCodesChecked(
            "SetNewWellStatuses", *rq, *rp,
            [&](Job& j, std::size_t w, int c) {
                if (c < kStatusOpenProducer || c > kStatusStop)
                    Fail(kBadArgument,
                         "Well status " + std::to_string(c) +
                             " is not one of 1 (open producer), 2 (open injector), 3 (shut), 4 (stop)");
                const WellReport r = j.engine->Well(w);
                if (c == kStatusOpenProducer && r.type == WellType::kInjector)
                    Fail(kBadArgument,
                         "Well " + r.name + " is an injector and cannot be opened as a producer");
                if (c == kStatusOpenInjector && r.type == WellType::kProducer)
                    Fail(kBadArgument,
                         "Well " + r.name + " is a producer and cannot be opened as an injector");
            },
            [&](Job& j, std::size_t w, int c) {
                j.engine->SetStatus(w, c == kStatusShut   ? WellStatus::kShut
                                       : c == kStatusStop ? WellStatus::kStop
                                                          : WellStatus::kOpen);
            });
    }

    Status SetWellEfficiencyFactors(Ctx*, const tnavapi::WellValuesRequest* rq,
                                    tnavapi::StatusReply* rp) override {
        return OnWellsChecked(
            "SetWellEfficiencyFactors", *rq, *rp,
            [&](Job&) { CheckSize("values", rq->values_size(), rq->wells_size()); },
            [&](Job&, std::size_t, std::size_t k) {
                const double e = rq->values(static_cast<int>(k));
                if (!(e > 0.0 && e <= 1.0))
                    Fail(kBadArgument, "Efficiency factor " + std::to_string(e) + " is not in (0, 1]");
            },
            [&](Job& j, std::size_t w, std::size_t k) {
                j.engine->SetEfficiency(w, rq->values(static_cast<int>(k)));
            });
    }

    Status DisableAllLimits(Ctx*, const tnavapi::WellsRequest* rq, tnavapi::StatusReply* rp) override {
        return OnWellsChecked(
            "DisableAllLimits", *rq, *rp, [](Job&) {}, [](Job&, std::size_t, std::size_t) {},
            [&](Job& j, std::size_t w, std::size_t) {
                StandinReservoir& e = *j.engine;
                const double pa = e.Model().scales.pressure;
                for (Phase p : {Phase::kOil, Phase::kWater, Phase::kGas, Phase::kLiquid, Phase::kReservoir})
                    e.SetRateLimit(w, p, -1.0);
                e.SetBhpLimit(w, (e.Well(w).type == WellType::kInjector ? 1e10 : 101325.0) / pa);
            });
    }

    Status EnableProducerLimits(Ctx*, const tnavapi::WellLimitsRequest* rq,
                                tnavapi::StatusReply* rp) override {
        return OnLimits("EnableProducerLimits", *rq, *rp, WellType::kProducer,
                        [&](Job& j, std::size_t w, int kind, double v) {
                            switch (kind) {
                                case kProdGas:
                                    return j.engine->SetRateLimit(w, Phase::kGas, v);
                                case kProdOil:
                                    return j.engine->SetRateLimit(w, Phase::kOil, v);
                                case kProdWater:
                                    return j.engine->SetRateLimit(w, Phase::kWater, v);
                                case kProdLiquid:
                                    return j.engine->SetRateLimit(w, Phase::kLiquid, v);
                                default:
                                    return j.engine->SetBhpLimit(w, v);
                            }
                        });
    }

    Status SetProducerTargets(Ctx*, const tnavapi::WellCodesRequest* rq, tnavapi::StatusReply* rp) override {
        return OnCodesChecked(
            "SetProducerTargets", *rq, *rp,
            [&](Job& j, std::size_t w, int c) {
                CheckType(j, w, WellType::kProducer);
                ProducerMode(c);
            },
            [&](Job& j, std::size_t w, int c) { j.engine->SetControlMode(w, ProducerMode(c)); });
    }

    Status SetInjectorPhases(Ctx*, const tnavapi::WellCodesRequest* rq, tnavapi::StatusReply* rp) override {
        return OnCodesChecked(
            "SetInjectorPhases", *rq, *rp,
            [&](Job& j, std::size_t w, int c) {
                CheckType(j, w, WellType::kInjector);
                ToPhase(c);
            },
            [&](Job& j, std::size_t w, int c) { j.engine->SetInjectedPhase(w, ToPhase(c)); });
    }

    Status EnableInjectorLimits(Ctx*, const tnavapi::WellLimitsRequest* rq,
                                tnavapi::StatusReply* rp) override {
        return OnLimits("EnableInjectorLimits", *rq, *rp, WellType::kInjector,
                        [&](Job& j, std::size_t w, int kind, double v) {
                            if (kind == kInjRate)
                                return j.engine->SetRateLimit(w, j.engine->Well(w).injected, v);
                            j.engine->SetBhpLimit(w, v);
                        });
    }

    Status SetInjectorTargets(Ctx*, const tnavapi::WellCodesRequest* rq, tnavapi::StatusReply* rp) override {
        return OnCodesChecked(
            "SetInjectorTargets", *rq, *rp,
            [&](Job& j, std::size_t w, int c) {
                CheckType(j, w, WellType::kInjector);
                InjectorMode(c);
            },
            [&](Job& j, std::size_t w, int c) { j.engine->SetControlMode(w, InjectorMode(c)); });
    }

    Status SetInjectorThermalParameters(Ctx*, const tnavapi::WellLimitsRequest* rq,
                                        tnavapi::StatusReply* rp) override {
        return Unsupported("SetInjectorThermalParameters",
                           "the model is isothermal, so injectors take no temperature", *rq, *rp);
    }

    Status SetInjectedGasComposition(Ctx*, const tnavapi::WellValuesRequest* rq,
                                     tnavapi::StatusReply* rp) override {
        return Unsupported("SetInjectedGasComposition",
                           "the model is black oil, with no hydrocarbon components", *rq, *rp);
    }

    Status CheckNewControls(Ctx*, const tnavapi::JobRequest* rq, tnavapi::StatusReply* rp) override {
        return OnJob("CheckNewControls", *rq, *rp, [&](Job& j) {
            j.engine->CheckNewControls();
            j.engine->AdvanceTo(
                j.engine->Now());  // re-solves the wells under the new controls, no time passes
        });
    }

  private:
    // Runs body, turning its RpcError or exception into the reply's Error, and logs the call.
    template <typename Request, typename Reply, typename Body>
    Status Serve(const char* name, const Request& rq, Reply& rp, Body&& body) {
        try {
            body();
            rp.mutable_error()->set_id(0);
        } catch (const RpcError& e) {
            Reply failed;
            failed.mutable_error()->set_id(e.id);
            failed.mutable_error()->set_description(e.text);
            rp = std::move(failed);
        } catch (const std::exception& e) {
            Reply failed;
            failed.mutable_error()->set_id(kFailed);
            failed.mutable_error()->set_description(e.what());
            rp = std::move(failed);
        }
        if (debug_.is_open()) {
            std::lock_guard lock(debug_mutex_);
            const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::system_clock::now().time_since_epoch())
                                 .count();
            debug_ << now / 1000 << '.' << now % 1000 << ' ' << name << " {" << rq.ShortDebugString()
                   << "} -> {" << rp.ShortDebugString() << "}\n"
                   << std::flush;
        }
        return Status::OK;
    }

    template <typename Request, typename Reply>
    Status Unsupported(const char* name, const char* reason, const Request& rq, Reply& rp) {
        return OnJob(name, rq, rp,
                     [&](Job&) { Fail(kNotSupported, std::string(name) + " cannot be applied: " + reason); });
    }

    static std::string UnknownSession(std::uint64_t s) {
        return "Session " + std::to_string(s) + " is not connected to this dispatcher; connect first";
    }

    void CheckSession(std::uint64_t session) {
        std::lock_guard lock(mutex_);
        if (!sessions_.count(session)) Fail(kBadSession, UnknownSession(session));
    }

    std::shared_ptr<Job> FindJob(std::uint64_t session, int job_id) {
        std::lock_guard lock(mutex_);
        if (!sessions_.count(session)) Fail(kBadSession, UnknownSession(session));
        const auto it = jobs_.find(job_id);
        if (it == jobs_.end() || it->second->session != session)
            Fail(kBadJob,
                 "Job " + std::to_string(job_id) + " not found; launch_job gives the ids of this session");
        return it->second;
    }

    // A call on one job, with the job's lock held.
    template <typename Request, typename Reply, typename Body>
    Status OnJob(const char* name, const Request& rq, Reply& rp, Body&& body) {
        return Serve(name, rq, rp, [&] {
            const std::shared_ptr<Job> job = FindJob(rq.session(), rq.job_id());
            std::lock_guard lock(job->mutex);
            body(*job);
        });
    }

    static std::size_t CheckWell(const Job& j, int w) {
        const std::size_t n = j.engine->WellCount();
        if (w < 0 || static_cast<std::size_t>(w) >= n)
            Fail(kBadArgument,
                 "Well index " + std::to_string(w) + " out of range (" +
                     (n == 0 ? std::string("the model has no wells") : "0.." + std::to_string(n - 1)) + ")");
        return static_cast<std::size_t>(w);
    }

    static void CheckSize(const char* what, int got, int want) {
        if (got != want)
            Fail(kBadArgument, std::string("Expected ") + std::to_string(want) + " " + what + ", got " +
                                   std::to_string(got));
    }

    // Checks every index, then lets check run per well, then apply per well: a write is all or nothing.
    template <typename Request, typename Reply, typename Pre, typename Check, typename Apply>
    Status OnWellsChecked(const char* name, const Request& rq, Reply& rp, Pre&& pre, Check&& check,
                          Apply&& apply) {
        return OnJob(name, rq, rp, [&](Job& j) {
            std::vector<std::size_t> wells;
            wells.reserve(static_cast<std::size_t>(rq.wells_size()));
            for (int w : rq.wells()) wells.push_back(CheckWell(j, w));
            pre(j);
            for (std::size_t k = 0; k < wells.size(); ++k) check(j, wells[k], k);
            for (std::size_t k = 0; k < wells.size(); ++k) apply(j, wells[k], k);
        });
    }

    template <typename Request, typename Reply, typename Body>
    Status OnWells(const char* name, const Request& rq, Reply& rp, Body&& body) {
        return OnWellsChecked(
            name, rq, rp, [](Job&) {}, [](Job&, std::size_t, std::size_t) {}, body);
    }

    template <typename Reply, typename Check, typename Apply>
    Status OnCodesChecked(const char* name, const tnavapi::WellCodesRequest& rq, Reply& rp, Check&& check,
                          Apply&& apply) {
        return OnWellsChecked(
            name, rq, rp, [&](Job&) { CheckSize("codes", rq.codes_size(), rq.wells_size()); },
            [&](Job& j, std::size_t w, std::size_t k) { check(j, w, rq.codes(static_cast<int>(k))); },
            [&](Job& j, std::size_t w, std::size_t k) { apply(j, w, rq.codes(static_cast<int>(k))); });
    }

    template <typename Reply, typename Body>
    Status OnCodes(const char* name, const tnavapi::WellCodesRequest& rq, Reply& rp, Body&& body) {
        return OnCodesChecked(
            name, rq, rp, [](Job&, std::size_t, int) {}, body);
    }

    template <typename Apply>
    Status OnLimits(const char* name, const tnavapi::WellLimitsRequest& rq, tnavapi::StatusReply& rp,
                    WellType type, Apply&& apply) {
        const bool prod = type == WellType::kProducer;
        const int kinds = rq.kinds_size();
        return OnWellsChecked(
            name, rq, rp,
            [&](Job&) {
                CheckSize("values", rq.values_size(), rq.wells_size() * kinds);
                for (int kind : rq.kinds()) {
                    if (prod ? kind == kProdThp : kind == kInjThp)
                        Fail(kNotSupported,
                             "THP limits are not supported by this stand-in (it has no lift tables)");
                    const bool known = prod ? (kind >= kProdGas && kind <= kProdLiquid) || kind == kProdBhp
                                            : kind == kInjRate || kind == kInjBhp;
                    if (!known)
                        Fail(kBadArgument, std::string(prod ? "Producer" : "Injector") + " limit " +
                                               std::to_string(kind) +
                                               (prod ? " is not one of 0-3 (rates), 5 (BHP)"
                                                     : " is not one of 0 (rate), 2 (BHP)"));
                }
            },
            [&](Job& j, std::size_t w, std::size_t k) {
                CheckType(j, w, type);
                for (int i = 0; i < kinds; ++i) {
                    const double v = rq.values(static_cast<int>(k) * kinds + i);
                    const bool bhp = prod ? rq.kinds(i) == kProdBhp : rq.kinds(i) == kInjBhp;
                    if (std::isnan(v) || (bhp && !(v > 0.0)))
                        Fail(kBadArgument, "Limit value " + std::to_string(v) + " of well " +
                                               j.engine->Well(w).name +
                                               (bhp ? " must be a positive pressure" : " is not a number"));
                }
            },
            [&](Job& j, std::size_t w, std::size_t k) {
                for (int i = 0; i < kinds; ++i)
                    apply(j, w, rq.kinds(i), rq.values(static_cast<int>(k) * kinds + i));
            });
    }

    static void CheckType(Job& j, std::size_t w, WellType type) {
        const WellReport r = j.engine->Well(w);
        if (r.type != type)
            Fail(kBadArgument, "Well " + r.name + " is " +
                                   (type == WellType::kProducer ? "not a producer" : "not an injector"));
    }

    static ControlMode ProducerMode(int code) {
        switch (code) {
            case kProdGas:
                return ControlMode::kGrat;
            case kProdOil:
                return ControlMode::kOrat;
            case kProdWater:
                return ControlMode::kWrat;
            case kProdLiquid:
                return ControlMode::kLrat;
            case kProdBhp:
                return ControlMode::kBhp;
            case kProdThp:
                Fail(kNotSupported, "THP targets are not supported by this stand-in (it has no lift tables)");
            default:
                Fail(kBadArgument, "Producer limit " + std::to_string(code) +
                                       " is not one of 0-3 (rates), 5 (BHP), 6 (THP)");
        }
    }

    static ControlMode InjectorMode(int code) {
        switch (code) {
            case kInjRate:
                return ControlMode::kRate;
            case kInjBhp:
                return ControlMode::kBhp;
            case kInjThp:
                Fail(kNotSupported, "THP targets are not supported by this stand-in (it has no lift tables)");
            default:
                Fail(kBadArgument,
                     "Injector limit " + std::to_string(code) + " is not one of 0 (rate), 2 (BHP), 3 (THP)");
        }
    }

    static double WellParam(const WellReport& r, bool inj, int p) {
        const bool own = (p % 8 < 4) != inj;  // 0-3 and 8-11 are production, 4-7 and 12-15 injection
        switch (p) {
            case 0:
            case 4:
                return own ? r.water_rate : 0.0;
            case 1:
            case 5:
                return own ? r.oil_rate : 0.0;
            case 2:
            case 6:
                return own ? r.resv_rate : 0.0;
            case 3:
            case 7:
                return own ? r.gas_rate : 0.0;
            case 8:
            case 12:
                return own ? r.water_total : 0.0;
            case 9:
            case 13:
                return own ? r.oil_total : 0.0;
            case 11:
            case 15:
                return own ? r.gas_total : 0.0;
            case 16:
                return r.bhp;
            case 17:
                return r.thp;
            case 19:
                return r.water_density;
            case 20:
                return r.oil_density;
            case 21:
                return r.gas_density;
            default:
                return 0.0;  // reservoir-volume cumulatives are not kept; the model is isothermal
        }
    }

    static std::string StateName(int s) {
        static const char* kNames[] = {"opening", "paused", "running", "finished", "failed"};
        return s >= 0 && s <= 4 ? kNames[s] : "in state " + std::to_string(s);
    }

    const DispatcherOptions& options_;
    std::function<void()> on_local_disconnect_;
    std::optional<UsersFile> users_;
    std::ofstream debug_;
    std::mutex debug_mutex_;
    std::mutex mutex_;  // sessions and jobs
    std::map<std::uint64_t, std::string> sessions_;
    std::map<int, std::shared_ptr<Job>> jobs_;
    std::uint64_t next_session_ = 1;
    int next_job_ = 1;
};

Dispatcher::Dispatcher(DispatcherOptions options) : options_(std::move(options)) {}

Dispatcher::~Dispatcher() {
    Shutdown();
}

void Dispatcher::Start() {
    service_ = std::make_unique<DispatcherService>(options_, [this] { RequestStop(); });
    grpc::ServerBuilder builder;
    builder.AddChannelArgument(GRPC_ARG_ALLOW_REUSEPORT, 0);
    // Clients ping during long calls to learn that this process still answers; those pings are welcome.
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MIN_RECV_PING_INTERVAL_WITHOUT_DATA_MS, 100);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MAX_PING_STRIKES, 0);
    // Idle server threads notice a shutdown within this time (gRPC's default is a second).
    builder.SetSyncServerOption(grpc::ServerBuilder::SyncServerOption::CQ_TIMEOUT_MSEC, 100);
    const std::string address = options_.bind + ":" + std::to_string(options_.port);
    builder.AddListeningPort(address, grpc::InsecureServerCredentials(), &port_);
    builder.RegisterService(service_.get());
    server_ = builder.BuildAndStart();
    if (!server_ || port_ == 0) {
        server_.reset();
        throw std::runtime_error("cannot listen on " + address +
                                 ": the port is in use or the address is not local");
    }
}

void Dispatcher::Wait() {
    std::unique_lock lock(mutex_);
    done_cv_.wait(lock, [this] { return done_; });
}

void Dispatcher::RequestStop() {
    std::lock_guard lock(mutex_);
    done_ = true;
    done_cv_.notify_all();
}

void Dispatcher::Shutdown() {
    RequestStop();
    std::lock_guard lock(shutdown_mutex_);
    if (server_) {
        server_->Shutdown(std::chrono::system_clock::now() + std::chrono::milliseconds(300));
        server_->Wait();
        server_.reset();
    }
}

}  // namespace rivulet::standin
