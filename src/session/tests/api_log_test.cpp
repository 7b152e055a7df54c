#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "session/ApiLog.h"

namespace rivulet {
namespace {

TEST(ApiLog, WritesEachFormWithPlainNumbers) {
    std::ostringstream out;
    const int wells[] = {0, 2};
    const std::vector<tNavigator_API_RMA_well_status_t> statuses{TNAV_WELL_STATUS_SHUT,
                                                                 TNAV_WELL_STATUS_OPEN_INJECTOR};
    apilog::Call(&out, "get_well_statuses(int*, int, well_status_t*)");
    apilog::Array(&out, "int", wells, 2);
    apilog::Count(&out, 2);
    apilog::OutputSize(&out, "well_status_t", 2);
    apilog::Array(&out, "well_status_t", statuses);
    apilog::Array(&out, "double", std::vector<double>{1234567.0, 0.5});
    apilog::Error(&out, "Error when reading well statuses: <gone>");
    EXPECT_EQ(out.str(),
              "\nget_well_statuses(int*, int, well_status_t*)\n"
              "int[2]\n0, 2, \n"
              "int=2\n"
              "well_status_t[2]\n"
              "well_status_t[2]\n3, 2, \n"
              "double[2]\n1.23457e+06, 0.5, \n"
              "\nError when reading well statuses: <gone>\n");
}

}  // namespace
}  // namespace rivulet
