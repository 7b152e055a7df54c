#include <gtest/gtest.h>

#include <string>

#include "tnavapi.grpc.pb.h"
#include "tnavapi.pb.h"

TEST(Protocol, BatchedWellCallRoundTripsInOneMessage) {
    tnavapi::WellLimitsRequest request;
    request.set_session(42);
    request.set_job_id(1);
    for (int well : {3, 7}) request.add_wells(well);
    for (int kind : {0, 5}) request.add_kinds(kind);
    for (double value : {1000.0, 1.0e7, 2000.0, 2.0e7}) request.add_values(value);

    std::string wire;
    ASSERT_TRUE(request.SerializeToString(&wire));
    tnavapi::WellLimitsRequest parsed;
    ASSERT_TRUE(parsed.ParseFromString(wire));
    EXPECT_EQ(parsed.session(), 42u);
    ASSERT_EQ(parsed.values_size(), 4);
    EXPECT_EQ(parsed.values(2), 2000.0);
    EXPECT_EQ(parsed.kinds(1), 5);
}

TEST(Protocol, ReplyCarriesErrorBesideItsValues) {
    tnavapi::DoubleArrayReply reply;
    reply.mutable_error()->set_id(3);
    reply.mutable_error()->set_description("Well index 12 out of range (0..9)");
    tnavapi::DoubleArrayReply parsed;
    ASSERT_TRUE(parsed.ParseFromString(reply.SerializeAsString()));
    EXPECT_EQ(parsed.error().id(), 3);
    EXPECT_EQ(parsed.error().description(), "Well index 12 out of range (0..9)");
    EXPECT_EQ(parsed.values_size(), 0);
    EXPECT_EQ(tnavapi::TNavigatorDispatcher::service_full_name(),
              std::string("tnavapi.TNavigatorDispatcher"));
}
