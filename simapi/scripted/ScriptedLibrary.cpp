// The script of the in-process simulator API, its moments, and the library-wide operations.
#include <memory>
#include <stdexcept>
#include <tuple>

#include "ScriptedApi.h"
#include "ScriptedObjects.h"

namespace tnavscripted {

Moment Moment::From(const tNavigator_API_RMA_time_moment_t& m) {
    return {m.get_year(), m.get_month(), m.get_day(), m.get_hour(), m.get_minute(), m.get_second()};
}

tNavigator_API_RMA_time_moment_t Moment::ToApi() const {
    tNavigator_API_RMA_time_moment_t m(year, static_cast<tNavigator_API_RMA_month_t>(month), day);
    m.set_hour(hour);
    m.set_minute(minute);
    m.set_second(second);
    return m;
}

bool Moment::operator<(const Moment& o) const {
    return std::tie(year, month, day, hour, minute, second) <
           std::tie(o.year, o.month, o.day, o.hour, o.minute, o.second);
}

bool Moment::operator==(const Moment& o) const {
    return std::tie(year, month, day, hour, minute, second) ==
           std::tie(o.year, o.month, o.day, o.hour, o.minute, o.second);
}

void ScriptedLibrary::Reset() {
    std::lock_guard lock(mutex);
    state = State();
    calls_.clear();
    failures_.clear();
}

void ScriptedLibrary::Fail(const std::string& name, int id, const std::string& description, int nth,
                           int times) {
    std::lock_guard lock(mutex);
    failures_.emplace(name, Failure{nth - 1, times, id, description});
}

std::vector<Call> ScriptedLibrary::Calls() const {
    std::lock_guard lock(mutex);
    return calls_;
}

std::vector<std::string> ScriptedLibrary::CallNames() const {
    std::lock_guard lock(mutex);
    std::vector<std::string> names;
    for (const Call& call : calls_) names.push_back(call.name);
    return names;
}

int ScriptedLibrary::Count(const std::string& name) const {
    std::lock_guard lock(mutex);
    int count = 0;
    for (const Call& call : calls_) count += call.name == name ? 1 : 0;
    return count;
}

std::string ScriptedLibrary::LastArgs(const std::string& name) const {
    std::lock_guard lock(mutex);
    for (auto it = calls_.rbegin(); it != calls_.rend(); ++it) {
        if (it->name == name) return it->args;
    }
    return {};
}

void ScriptedLibrary::ClearCalls() {
    std::lock_guard lock(mutex);
    calls_.clear();
}

tNavigator_API_RMA_error_t ScriptedLibrary::Enter(const std::string& name, const std::string& args) {
    std::lock_guard lock(mutex);
    calls_.push_back({name, args});
    if (!state.throwIn.empty() && state.throwIn == name) {
        state.throwIn.clear();
        throw std::runtime_error("scripted exception in " + name);
    }
    // Every failure counts this call towards its turn; the first whose turn it is fires.
    tNavigator_API_RMA_error_t error;
    auto [first, last] = failures_.equal_range(name);
    for (auto it = first; it != last; ++it) {
        Failure& failure = it->second;
        if (failure.skip > 0) {
            --failure.skip;
        } else if (failure.times != 0 && error.id() == 0) {
            if (failure.times > 0) --failure.times;
            error = tNavigator_API_RMA_error_t(failure.id, failure.description);
        }
    }
    return error;
}

ScriptedLibrary& Script() {
    static ScriptedLibrary library;
    return library;
}

}  // namespace tnavscripted

using tnavscripted::Script;

void tNavigator_API_RMA::init() {
    Script().Enter("init");
}

tNavigator_API_RMA_error_t tNavigator_API_RMA::tnav_create_manager(tNavigator_API_RMA_manager_t** manager) {
    auto error = Script().Enter("tnav_create_manager");
    if (manager == nullptr) return {1, "tnav_create_manager: null manager"};
    std::lock_guard lock(Script().mutex);
    if (error.id() != 0 || Script().state.createManagerFails) {
        *manager = nullptr;
        return error.id() != 0 ? error : tNavigator_API_RMA_error_t(1, "scripted: no manager");
    }
    *manager = new tnavscripted::ScriptedManager();
    return {};
}

void tNavigator_API_RMA::tnav_free_manager(tNavigator_API_RMA_manager_t* manager) {
    Script().Enter("tnav_free_manager");
    delete manager;
}

void tNavigator_API_RMA::tnav_free_job(tNavigator_API_RMA_job_t* job) {
    Script().Enter("tnav_free_job");
    delete job;
}

tNavigator_API_RMA_error_t tNavigator_API_RMA::encrypt_password(const tNavigator_API_RMA_string& password,
                                                                tNavigator_API_RMA_string& crypted) {
    auto error = Script().Enter("encrypt_password", password.c_str());
    if (error.id() == 0) crypted = ("crypted:" + std::string(password.c_str())).c_str();
    return error;
}
