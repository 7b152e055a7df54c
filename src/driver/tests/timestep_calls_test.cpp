// The simulator calls of one coupled timestep do not grow with the number of wells: every read, every
// inflow table and every group of targets goes out in one batch.
#include <string>
#include <vector>

#include "driver/BoundaryDate.h"
#include "driver/tests/ScriptedModelFixture.h"

namespace rivulet {
namespace {

using tnavscripted::Script;

class TimestepCalls : public StartPath {
  protected:
    // `count` wells, all under the network: producers under water, liquid and gas control in turn, and
    // every fourth well a water injector. Each gets an operating point, then one Timestep runs; the answer
    // is the number of simulator calls that Timestep made.
    int CallsOfOneTimestep(int count) {
        // A model of its own, so that no well list is carried over from another run.
        CExtModel model;
        model.GetSettings().FileName = model_.GetSettings().FileName;
        model.GetSettings().IsLocalMachine = true;
        Script().state.units = TNAV_UNIT_SYSTEM_FIELD;
        Script().state.current = Script().state.start;
        Script().state.wells.clear();
        std::vector<std::int32_t> indices, kinds, phases;
        for (int k = 0; k < count; ++k) {
            tnavscripted::Well well;
            well.name = "W" + std::to_string(k);
            const bool injector = k % 4 == 3;
            well.status = well.firstActiveStatus =
                injector ? TNAV_WELL_STATUS_OPEN_INJECTOR : TNAV_WELL_STATUS_OPEN_PRODUCER;
            well.params[injector ? TNAV_WELL_WATER_INJ : TNAV_WELL_OIL_RATE] = 100.0;
            well.maxRates = {{0, 500.0}, {1, 800.0}, {2, 3.0}};
            Script().state.wells.push_back(well);
            indices.push_back(k);
            kinds.push_back(injector ? 2 : 1);
            const std::int32_t producerPhases[] = {1, 2, 4};
            phases.push_back(injector ? 1 : producerPhases[k % 3]);
        }
        tInitData init{};
        init.piWellIndices = indices.data();
        init.piWellKinds = kinds.data();
        init.piVanePhases = phases.data();
        init.iNumWells = count;
        EXPECT_EQ(model.Initialise(&init, &err_), 0) << err_.szText;
        for (int k = 0; k < count; ++k) {
            _tGetSetData point{};
            point.iWellIndex = k;
            point.adOilRate[0] = 50.0;
            point.adWaterRate[0] = 20.0;
            point.adGasRate[0] = 0.5;
            EXPECT_EQ(model.SetOpPt(&point, &err_), 0) << err_.szText;
        }
        Script().ClearCalls();
        tTimestepData step{};
        EXPECT_TRUE(DateToBoundary(OleDate::FromCalendar({2015, 2, 1}), &step.stTarget));
        EXPECT_EQ(model.Timestep(&step, &err_), 0) << err_.szText;
        const int calls = static_cast<int>(Script().Calls().size());
        model.Stop();
        Script().state.jobEnded = Script().state.jobStarted = false;
        return calls;
    }
};

TEST_F(TimestepCalls, AreTheSameForTenAndForAThousandWells) {
    const int ten = CallsOfOneTimestep(10);
    EXPECT_FALSE(HasFailure());
    // Targets (at most three calls for each of eleven groups, five lists and the check), the run and the
    // reads with the inflow tables: a bounded number whatever the well count.
    EXPECT_GT(ten, 20);
    EXPECT_LT(ten, 80);
    EXPECT_EQ(CallsOfOneTimestep(1000), ten);
}

}  // namespace
}  // namespace rivulet
