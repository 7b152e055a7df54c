#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <utility>

#include "tNavigator_API_RMA.h"

namespace {

tNavigator_API_RMA_time_moment_t moment(int year, int month, int day) {
    return {year, static_cast<tNavigator_API_RMA_month_t>(month), day};
}

TEST(ErrorT, DefaultIsSuccessAndANullDescriptionIsEmpty) {
    EXPECT_EQ(tNavigator_API_RMA_error_t().id(), 0);
    EXPECT_STREQ(tNavigator_API_RMA_error_t().description(), "");
    const tNavigator_API_RMA_error_t error(7, "Case file /x/CASE.DATA not found");
    EXPECT_EQ(error.id(), 7);
    EXPECT_STREQ(error.description(), "Case file /x/CASE.DATA not found");
    EXPECT_STREQ(tNavigator_API_RMA_error_t(3, static_cast<const char*>(nullptr)).description(), "");
}

TEST(StringT, NullGivesNoTextAndCopiesAreDeep) {
    tNavigator_API_RMA_string empty(nullptr);
    EXPECT_EQ(empty.str, nullptr);
    EXPECT_STREQ(empty.c_str(), "");

    char source[] = "PROD1";
    tNavigator_API_RMA_string name(source);
    source[0] = 'X';
    EXPECT_STREQ(name.str, "PROD1");

    tNavigator_API_RMA_string copy = name;
    EXPECT_NE(copy.str, name.str);
    EXPECT_STREQ(copy.str, "PROD1");
    copy = empty;
    EXPECT_EQ(copy.str, nullptr);
    copy = "INJ2";
    copy = copy.str + 1;  // assigning a text that lies inside the string itself
    EXPECT_STREQ(copy.str, "NJ2");

    tNavigator_API_RMA_string moved = std::move(copy);
    EXPECT_STREQ(moved.str, "NJ2");
}

TEST(TimeMomentT, DefaultIsUnfilledAndIsValidFollowsTheCalendar) {
    const tNavigator_API_RMA_time_moment_t unfilled;
    EXPECT_EQ(
        std::tuple(unfilled.get_year(), int{unfilled.get_month()}, unfilled.get_day(), unfilled.get_hour()),
        std::tuple(0, 13, 0, 0));  // which the first row below finds invalid

    const struct {
        int year, month, day;
        bool valid;
    } dates[] = {{0, 13, 0, false},    {2000, 2, 29, true},  {1900, 2, 29, false},
                 {2023, 2, 29, false}, {2023, 4, 31, false}, {2023, 12, 31, true}};
    for (const auto& d : dates)
        EXPECT_EQ(moment(d.year, d.month, d.day).is_valid().id() == 0, d.valid)
            << d.year << "-" << d.month << "-" << d.day;

    auto m = moment(2024, 2, 29);
    m.set_hour(23);
    m.set_minute(59);
    m.set_second(59);
    EXPECT_EQ(m.is_valid().id(), 0);
    m.set_second(60);
    const auto error = m.is_valid();
    EXPECT_NE(error.id(), 0);
    EXPECT_NE(std::strstr(error.description(), "second"), nullptr);
}

TEST(StartParamsT, KeepsCopiesOfItsTexts) {
    char word[] = "--cpu-num=4";
    const char* params[] = {word};
    tNavigator_API_RMA_start_params_t start("/cases/SPE1.DATA");
    start.add_additional_params(params, 1);
    start.set_cluster_queue(nullptr);
    word[0] = 'X';
    EXPECT_EQ(start.get_case_file(), "/cases/SPE1.DATA");
    ASSERT_EQ(start.get_additional_params().size(), 1u);
    EXPECT_EQ(start.get_additional_params()[0], "--cpu-num=4");
    EXPECT_EQ(start.get_cluster_queue(), "");
    EXPECT_EQ(start.get_node_count(), 0);
}

}  // namespace
