// Value classes of the tNavigator client API.
#include <cstring>
#include <string>
#include <utility>

#include "tNavigator_API_RMA.h"

namespace {

// Error id of a moment that is no real date.
constexpr int kInvalidTimeMoment = 1;

char* duplicate(const char* text) {
    if (text == nullptr) return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month) {
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

tNavigator_API_RMA_error_t invalidField(const char* field, int value) {
    return {kInvalidTimeMoment,
            "Invalid " + std::string(field) + " " + std::to_string(value) + " in time moment"};
}

std::string orEmpty(const char* text) {
    return text != nullptr ? std::string(text) : std::string();
}

}  // namespace

// --- tNavigator_API_RMA_error_t ---

tNavigator_API_RMA_error_t::tNavigator_API_RMA_error_t(int id, const char* description)
    : id_(id), description_(orEmpty(description)) {}

tNavigator_API_RMA_error_t::tNavigator_API_RMA_error_t(int id, std::string description)
    : id_(id), description_(std::move(description)) {}

// --- tNavigator_API_RMA_string ---

tNavigator_API_RMA_string::tNavigator_API_RMA_string(const char* text) : str(duplicate(text)) {}

tNavigator_API_RMA_string::tNavigator_API_RMA_string(const tNavigator_API_RMA_string& other)
    : str(duplicate(other.str)) {}

tNavigator_API_RMA_string::tNavigator_API_RMA_string(tNavigator_API_RMA_string&& other) noexcept
    : str(std::exchange(other.str, nullptr)) {}

tNavigator_API_RMA_string& tNavigator_API_RMA_string::operator=(const tNavigator_API_RMA_string& other) {
    if (this != &other) *this = other.str;
    return *this;
}

tNavigator_API_RMA_string& tNavigator_API_RMA_string::operator=(tNavigator_API_RMA_string&& other) noexcept {
    if (this != &other) {
        delete[] str;
        str = std::exchange(other.str, nullptr);
    }
    return *this;
}

tNavigator_API_RMA_string& tNavigator_API_RMA_string::operator=(const char* text) {
    char* copy = duplicate(text);  // text may point into str itself
    delete[] str;
    str = copy;
    return *this;
}

tNavigator_API_RMA_string::~tNavigator_API_RMA_string() {
    delete[] str;
}

// --- tNavigator_API_RMA_time_moment_t ---

tNavigator_API_RMA_time_moment_t::tNavigator_API_RMA_time_moment_t()
    : tNavigator_API_RMA_time_moment_t(0, static_cast<tNavigator_API_RMA_month_t>(13), 0) {}

tNavigator_API_RMA_time_moment_t::tNavigator_API_RMA_time_moment_t(int year, tNavigator_API_RMA_month_t month,
                                                                   int day)
    : year_(year), month_(month), day_(day) {}

tNavigator_API_RMA_error_t tNavigator_API_RMA_time_moment_t::is_valid() const {
    if (year_ < 1 || year_ > 9999) return invalidField("year", year_);
    if (month_ < TNAV_JANUARY || month_ > TNAV_DECEMBER) return invalidField("month", month_);
    if (day_ < 1 || day_ > daysInMonth(year_, month_)) return invalidField("day", day_);
    if (hour_ < 0 || hour_ > 23) return invalidField("hour", hour_);
    if (minute_ < 0 || minute_ > 59) return invalidField("minute", minute_);
    if (second_ < 0 || second_ > 59) return invalidField("second", second_);
    return {};
}

// --- tNavigator_API_RMA_connection_options_t ---

void tNavigator_API_RMA_connection_options_t::set_remote_ip(const char* remote_ip) {
    remote_ip_ = orEmpty(remote_ip);
}

void tNavigator_API_RMA_connection_options_t::set_user_name_and_crypted_password(
    const char* user_name, const char* crypted_password) {
    user_name_ = orEmpty(user_name);
    crypted_password_ = orEmpty(crypted_password);
}

// --- tNavigator_API_RMA_start_params_t ---

tNavigator_API_RMA_start_params_t::tNavigator_API_RMA_start_params_t(const char* case_file)
    : case_file_(orEmpty(case_file)) {}

void tNavigator_API_RMA_start_params_t::set_cluster_queue(const char* queue) {
    cluster_queue_ = orEmpty(queue);
}

void tNavigator_API_RMA_start_params_t::add_additional_params(const char* const* params, std::size_t count) {
    if (params == nullptr) return;
    for (std::size_t i = 0; i < count; ++i) additional_params_.push_back(orEmpty(params[i]));
}
