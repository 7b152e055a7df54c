// Opening a well as an injector under the network, and sending injection phases again.
#include <tuple>

#include "session/tests/SessionFixture.h"

namespace rivulet {
namespace {

// Every call of an opening, in order: status, phase, shut-well phase, then the limits of an injector.
const Names kOpening = {
    "set_new_well_statuses", "set_injector_phases",    "set_inj_phases_for_ipr_shut_wells",
    "disable_all_limits",    "enable_injector_limits", "set_injector_targets"};

// Three wells as the first read leaves them: no type, no status, no phase.
class InjectorWrites : public RequesterTest {
  protected:
    void SetUp() override {
        RequesterTest::SetUp();
        Script().state.wells.resize(3);
        for (int k = 0; k < 3; ++k) wells_.Add(WellData());
    }
    bool Open(int phase, int index) {
        return requester_.SetWellAsVaneInjector(phase, index, *wells_.At(index), error_);
    }
};

TEST_F(InjectorWrites, AnUntypedWellIsOpenedGivenItsPhaseAndInitialLimits) {
    requester_.defaultInjectorBhp = 250.0;
    ASSERT_TRUE(Open(2, 1)) << error_;
    EXPECT_EQ(Args("set_new_well_statuses"), "1|2");
    EXPECT_EQ(Args("enable_injector_limits"), "1|0,2|0,250");
    EXPECT_EQ(std::tuple(wells_[1].wellType, wells_[1].status, wells_[1].injectionPhase),
              std::tuple(kWellInjector, kStatusOpenInjector, kPhaseGas));
    EXPECT_EQ(
        log_.str(),
        "\nset_new_well_statuses(int*, int, well_status_t*)\nint[1]\n1, \nint=1\nwell_status_t[1]\n2, \n"
        "\nset_injector_phases(int*, int, inj_phase_t*)\nint[1]\n1, \nint=1\ninj_phase_t[1]\n2, \n"
        "\nset_inj_phases_for_ipr_shut_wells(int*, int, inj_phase_t*)\nint[1]\n1, \nint=1\n"
        "inj_phase_t[1]\n2, \n"
        "\ndisable_all_limits(int*, int)\nint[1]\n1, \nint=1\n"
        "\nenable_injector_limits(int*, int, inj_limit_t*, int, double*)\nint[1]\n1, \nint=1\n"
        "inj_limit_t[2]\n0, 2, \nint=2\ndouble[3]\n0, 250, 0, \n"
        "\nset_injector_targets(int*, int, inj_limit_t*)\nint[1]\n1, \nint=1\ninj_limit_t[1]\n0, \n");

    // Opened once, the well gets only its limits again.
    Script().ClearCalls();
    ASSERT_TRUE(Open(2, 1));
    EXPECT_EQ(Script().CallNames(), Names(kOpening.begin() + 3, kOpening.end()));
}

TEST_F(InjectorWrites, AProducerIsOpenedAsInjectorButGetsNoInjectorLimits) {
    wells_[0].wellType = kWellProducer;
    ASSERT_TRUE(Open(0, 0)) << error_;
    EXPECT_EQ(Script().CallNames(), Names(kOpening.begin(), kOpening.begin() + 3));
    EXPECT_EQ(ErrorOf(Open(3, 0), error_), "An invalid phase was passed to setWellAsVaneInjector()");
}

TEST_F(InjectorWrites, EachFailedCallIsReportedLoggedAndStopsTheRestButTheShutWellPhase) {
    // The failing call, its message, and how many calls of the opening were made.
    const std::tuple<const char*, const char*, std::size_t> cases[] = {
        {"set_new_well_statuses", "Error when setting status of well index <2> to <2>: refused", 1},
        {"set_injector_phases", "Error when setting phase of well index <2> to <1>: refused", 3},
        {"set_inj_phases_for_ipr_shut_wells",
         "Error when setting shut-phase of well index <2> to <1>: refused", 3},
        {"disable_all_limits", "Error when disabling all limits on well index <2>: refused", 4},
        {"enable_injector_limits", "Error when enabling initial VANE limits on well index <2>: refused", 5},
        {"set_injector_targets", "Error when setting VANE target on well index <2>: refused", 6},
    };
    for (const auto& [call, text, made] : cases) {
        SetUp();
        Script().Fail(call, 4, "refused");
        EXPECT_EQ(ErrorOf(Open(1, 2), error_), text) << call;
        EXPECT_EQ(Script().CallNames(), Names(kOpening.begin(), kOpening.begin() + made)) << call;
        EXPECT_NE(log_.str().find("\n" + error_ + "\n"), std::string::npos) << call;
    }
}

TEST_F(InjectorWrites, PhasesAreResentForTheListedWellsInOrder) {
    EXPECT_TRUE(requester_.ResetInjectorPhases(wells_, nullptr, 0, error_));
    EXPECT_EQ(ErrorOf(requester_.ResetInjectorPhases(wells_, nullptr, 1, error_), error_),
              "An null well index array was sent to ResetInjectorPhases().");

    for (WellData& well : wells_) {
        well.wellType = kWellInjector;
        well.status = kStatusShut;
    }
    wells_[0].injectionPhase = kPhaseGas;
    wells_[2].injectionPhase = kPhaseNone;  // sent as water
    const int indices[] = {2, 0, 5, 1};
    EXPECT_EQ(ErrorOf(requester_.ResetInjectorPhases(wells_, indices, 4, error_), error_),
              "A invalid well index was given to ResetInjectorPhases().");
    ASSERT_EQ(Calls("set_new_well_statuses"), 2);
    EXPECT_EQ(Script().Calls()[1].args, "2|0");  // the phase of the first well
    EXPECT_EQ(wells_[0].injectionPhase, kPhaseGas);
    EXPECT_EQ(wells_[1].status, kStatusShut);

    Script().Fail("set_new_well_statuses", 4, "refused");
    EXPECT_EQ(ErrorOf(requester_.ResetInjectorPhases(wells_, indices + 3, 1, error_), error_),
              "Error when setting status of well index <1> to <2>: refused");
}

}  // namespace
}  // namespace rivulet
