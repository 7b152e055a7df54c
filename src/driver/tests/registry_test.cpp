// The application object's record of live instances.
#include <gtest/gtest.h>

#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"

namespace rivulet {
namespace {

TEST(CRivuletApp, RegistersEachLiveInstanceOnce) {
    CRivuletApp app;
    CExtModel a;
    CExtModel b;
    EXPECT_TRUE(app.RegisterInstance(&a));
    EXPECT_TRUE(app.RegisterInstance(&b));
    EXPECT_FALSE(app.RegisterInstance(&a));  // a duplicate is refused without effect
    EXPECT_EQ(app.InstanceCount(), 2u);
    EXPECT_TRUE(app.IsRegistered(&a));
}

TEST(CRivuletApp, RefusesANullInstance) {
    CRivuletApp app;
    EXPECT_FALSE(app.RegisterInstance(nullptr));
    EXPECT_EQ(app.InstanceCount(), 0u);
}

TEST(CRivuletApp, RemovingAnAbsentInstanceHasNoEffect) {
    CRivuletApp app;
    CExtModel a;
    CExtModel b;
    app.RegisterInstance(&a);
    app.UnregisterInstance(&b);
    EXPECT_EQ(app.InstanceCount(), 1u);
    app.UnregisterInstance(&a);
    EXPECT_FALSE(app.IsRegistered(&a));
    EXPECT_EQ(app.InstanceCount(), 0u);
}

}  // namespace
}  // namespace rivulet
