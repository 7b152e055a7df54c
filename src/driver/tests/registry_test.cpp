// The application object's record of live instances.
#include <gtest/gtest.h>

#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"

namespace rivulet {
namespace {

TEST(CRivuletApp, RegistersEachLiveInstanceOnce) {
    CRivuletApp app;
    CExtModel a, b;
    EXPECT_FALSE(app.RegisterInstance(nullptr));
    EXPECT_TRUE(app.RegisterInstance(&a));
    EXPECT_TRUE(app.RegisterInstance(&b));
    EXPECT_FALSE(app.RegisterInstance(&a));  // a duplicate is refused without effect
    EXPECT_EQ(app.InstanceCount(), 2u);
    app.UnregisterInstance(&b);
    app.UnregisterInstance(&b);  // removing an absent instance has no effect
    EXPECT_TRUE(app.IsRegistered(&a));
    EXPECT_FALSE(app.IsRegistered(&b));
    EXPECT_EQ(app.InstanceCount(), 1u);
}

}  // namespace
}  // namespace rivulet
