// The writes of the well data requester that act at once, outside the targets sent at each time step: opening
// a well as an injector under the network, and sending injection phases again.
#include <string>

#include "common/FormatText.h"
#include "session/ApiLog.h"
#include "session/WellRequester.h"
#include "wells/WellList.h"

namespace rivulet {

namespace {

using Error = tNavigator_API_RMA_error_t;

// Logs the message between newlines and keeps it as the error; always false.
bool Report(std::ostream* log, const std::string& text, std::string& error) {
    error = text;
    apilog::Error(log, text.c_str());
    return false;
}

// Limits of an injector that the network has just taken on: a zero rate as its target, under the default BHP.
bool InitInjLimitsForVane(tNavigator_API_RMA_well_data_requester_t* requester, std::ostream* log,
                          double defaultInjectorBhp, int index, std::string& error) {
    const int wells[1] = {index};
    const tNavigator_API_RMA_inj_limit_t limits[2] = {TNAV_INJ_LIMIT_RATE, TNAV_INJ_LIMIT_BHP};
    const tNavigator_API_RMA_inj_limit_t targets[1] = {TNAV_INJ_LIMIT_RATE};
    // The log shows one value more than the two that are sent.
    const double values[3] = {0.0, defaultInjectorBhp, 0.0};
    try {
        apilog::Call(log, "disable_all_limits(int*, int)");
        apilog::Array(log, "int", wells, 1);
        apilog::Count(log, 1);
        Error result = requester->disable_all_limits(wells, 1, nullptr);
        if (result.id() != 0) {
            return Report(log,
                          FormatText("Error when disabling all limits on well index <%d>: %s", index,
                                     result.description()),
                          error);
        }

        apilog::Call(log, "enable_injector_limits(int*, int, inj_limit_t*, int, double*)");
        apilog::Array(log, "int", wells, 1);
        apilog::Count(log, 1);
        apilog::Array(log, "inj_limit_t", limits, 2);
        apilog::Count(log, 2);
        apilog::Array(log, "double", values, 3);
        result = requester->enable_injector_limits(wells, 1, limits, 2, values, nullptr);
        if (result.id() != 0) {
            return Report(log,
                          FormatText("Error when enabling initial VANE limits on well index <%d>: %s", index,
                                     result.description()),
                          error);
        }

        apilog::Call(log, "set_injector_targets(int*, int, inj_limit_t*)");
        apilog::Array(log, "int", wells, 1);
        apilog::Count(log, 1);
        apilog::Array(log, "inj_limit_t", targets, 1);
        result = requester->set_injector_targets(wells, 1, targets, nullptr);
        if (result.id() != 0) {
            return Report(log,
                          FormatText("Error when setting VANE target on well index <%d>: %s", index,
                                     result.description()),
                          error);
        }
    } catch (...) {
        return Report(
            log,
            FormatText("An exception was thrown duing initInjLimitsForVane() for well index <%d>", index),
            error);
    }
    return true;
}

}  // namespace

bool WellRequester::SetWellAsVaneInjector(int phase, int index, WellData& well, std::string& error) {
    if (phase < kPhaseWater || phase > kPhaseGas) {
        error = "An invalid phase was passed to setWellAsVaneInjector()";
        return false;
    }
    const int wells[1] = {index};

    if (well.status != kStatusOpenInjector) {
        const tNavigator_API_RMA_well_status_t statuses[1] = {TNAV_WELL_STATUS_OPEN_INJECTOR};
        try {
            apilog::Call(Log, "set_new_well_statuses(int*, int, well_status_t*)");
            apilog::Array(Log, "int", wells, 1);
            apilog::Count(Log, 1);
            apilog::Array(Log, "well_status_t", statuses, 1);
            const Error result = Requester->set_new_well_statuses(wells, 1, statuses, nullptr);
            if (result.id() != 0) {
                return Report(Log,
                              FormatText("Error when setting status of well index <%d> to <%d>: %s", index,
                                         static_cast<int>(kStatusOpenInjector), result.description()),
                              error);
            }
        } catch (...) {
            return Thrown(FormatText("An exception was thrown when setting status of well index <%d> to <%d>",
                                     index, static_cast<int>(kStatusOpenInjector))
                              .c_str(),
                          error);
        }
        well.SetWellStatus(kStatusOpenInjector);
    }

    if (well.injectionPhase != phase) {
        const tNavigator_API_RMA_inj_phase_t phases[1] = {static_cast<tNavigator_API_RMA_inj_phase_t>(phase)};
        bool sent = true;
        try {
            apilog::Call(Log, "set_injector_phases(int*, int, inj_phase_t*)");
            apilog::Array(Log, "int", wells, 1);
            apilog::Count(Log, 1);
            apilog::Array(Log, "inj_phase_t", phases, 1);
            Error result = Requester->set_injector_phases(wells, 1, phases, nullptr);
            if (result.id() != 0) {
                sent = Report(Log,
                              FormatText("Error when setting phase of well index <%d> to <%d>: %s", index,
                                         phase, result.description()),
                              error);
            } else {
                well.injectionPhase = phase;
            }
            // The phase for inflow tables of the shut well goes out in any case.
            apilog::Call(Log, "set_inj_phases_for_ipr_shut_wells(int*, int, inj_phase_t*)");
            apilog::Array(Log, "int", wells, 1);
            apilog::Count(Log, 1);
            apilog::Array(Log, "inj_phase_t", phases, 1);
            result = Requester->set_inj_phases_for_ipr_shut_wells(wells, 1, phases, nullptr);
            if (result.id() != 0) {
                sent = Report(Log,
                              FormatText("Error when setting shut-phase of well index <%d> to <%d>: %s",
                                         index, phase, result.description()),
                              error);
            }
        } catch (...) {
            return Thrown(FormatText("An exception was thrown when setting phase of well index <%d> to <%d>",
                                     index, phase)
                              .c_str(),
                          error);
        }
        if (!sent) return false;
    }

    if (well.wellType != kWellInjector) return true;
    return InitInjLimitsForVane(Requester, Log, defaultInjectorBhp, index, error);
}

bool WellRequester::ResetInjectorPhases(WellList& wells, const int* indices, int count, std::string& error) {
    if (count < 1) return true;
    if (indices == nullptr) {
        error = "An null well index array was sent to ResetInjectorPhases().";
        return false;
    }
    for (int k = 0; k < count; ++k) {
        WellData* well = wells.At(indices[k]);
        if (well == nullptr) {
            error = "A invalid well index was given to ResetInjectorPhases().";
            return false;
        }
        const int phase = (well->injectionPhase == kPhaseOil || well->injectionPhase == kPhaseGas)
                              ? well->injectionPhase
                              : static_cast<int>(kPhaseWater);
        if (!SetWellAsVaneInjector(phase, indices[k], *well, error)) return false;
    }
    return true;
}

}  // namespace rivulet
