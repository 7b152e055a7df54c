#include "driver/SimCalcCallbacks.h"

#include <cstring>
#include <string>

#include "driver/BoundaryDate.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "inflowkit/InflowKit.h"
#include "platform/ModuleState.h"

namespace rivulet {

namespace {

CExtModel* AsModel(void* model) {
    return static_cast<CExtModel*>(model);
}

double ElapsedTime(void* model) {
    if (model == nullptr) return 0.0;
    return AsModel(model)->ElapsedDays();
}

std::int32_t InitialiseForSimCalc(void* model, char* err) {
    ModuleStateGuard state;
    if (err == nullptr) return 1;
    if (model == nullptr) {
        WriteCallbackText(err, "A null item was sent to InitialiseForSimCalc()");
        return 1;
    }
    try {
        return AsModel(model)->InitialiseForSimCalc(err);
    } catch (...) {
        WriteCallbackText(err, "An exception was thrown when loading the case file during initialisation.");
        return 1;
    }
}

std::int32_t SetWellCtrlForSimCalc(void* model, std::int32_t well, double rate, char* err) {
    if (err == nullptr) return 1;
    if (model == nullptr) {
        WriteCallbackText(err, "A null item was sent to SetWellCtrlForSimCalc()");
        return 1;
    }
    try {
        return AsModel(model)->SetWellCtrlForSimCalc(well, rate, err);
    } catch (...) {
        WriteCallbackText(err, "An exception occurred during SetOpPtUnlocked()");
        return 1;
    }
}

std::int32_t RunToForSimCalc(void* model, double days, char* err) {
    if (err == nullptr) return 1;
    if (model == nullptr) {
        WriteCallbackText(err, "A null item was sent to RunToForSimCalc()");
        return 1;
    }
    CExtModel* m = AsModel(model);
    const OleDate now = m->CurrentDateTime();
    tTimestepData step{};
    step.iSize = sizeof(tTimestepData);
    // A target outside the calendar (or no number of days at all) cannot be a date.
    const OleDate target = OleDate::FromDays(now.Days() + days);
    if (!now.IsValid() || !target.IsInCalendar() || !DateToBoundary(target, &step.stTarget)) {
        const std::string text =
            "Invalid end date in RunToForSimCalc: model's start date is " + now.FormatLocale() + ".";
        WriteCallbackText(err, text);
        return 1;
    }
    tErrorRecord record{};
    if (m->Timestep(&step, &record) != 0) {
        WriteCallbackText(err, record.szText);
        return 1;
    }
    return 0;
}

std::int32_t GetWellBlockIPRForSimCalc(void* model, std::int32_t well, ::_tGetSetData* data, char* err) {
    if (err == nullptr) return 1;
    if (model == nullptr) {
        WriteCallbackText(err, "A null item was sent to GetWellBlockIPRForSimCalc()");
        return 1;
    }
    auto* record = reinterpret_cast<rivulet::_tGetSetData*>(data);
    if (record != nullptr) record->iWellIndex = well;
    tErrorRecord local{};
    if (AsModel(model)->GetIPR(record, &local) != 0) {
        WriteCallbackText(err, local.szText);
        return 1;
    }
    return 0;
}

std::int32_t GetWellRatesForSimCalc(void* model, std::int32_t well, ::_tGetSetData* data, char* err) {
    if (err == nullptr) return 1;
    if (model == nullptr || data == nullptr) {
        WriteCallbackText(err, "A null item was sent to GetWellRatesForSimCalc()");
        return 1;
    }
    return AsModel(model)->GetWellRatesForSimCalc(well, reinterpret_cast<rivulet::_tGetSetData*>(data), err);
}

}  // namespace

void InstallSimCalcCallbacks(void* iprModel) {
    SetIPRCallbacks(iprModel, &ElapsedTime, &InitialiseForSimCalc, &SetWellCtrlForSimCalc, &RunToForSimCalc,
                    &GetWellBlockIPRForSimCalc, &GetWellRatesForSimCalc);
}

}  // namespace rivulet
