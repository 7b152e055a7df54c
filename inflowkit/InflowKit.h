/*
 * InflowKit: inflow-performance (IPR) correction for coupled reservoir/network runs.
 *
 * C interface. Every entry point is safe to call with a null model (it does nothing and reports
 * failure where it has a result), and no C++ exception ever crosses it.
 *
 * This build carries no calibration yet: SetupIPR reports that no calculation was done,
 * HasDoneScalingCalculation answers 0 and TransformIPR leaves tables as they are. The
 * persisted block (SaveIPR/LoadIPR) already holds per-well factors for when it does.
 */
#ifndef INFLOWKIT_INFLOWKIT_H
#define INFLOWKIT_INFLOWKIT_H

#include <stdbool.h>
#include <stdint.h>

#if defined(__GNUC__)
#define INFLOWKIT_API __attribute__((visibility("default")))
#else
#define INFLOWKIT_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Rate/IPR exchange buffer; owned and laid out by the caller, opaque to InflowKit. */
struct _tGetSetData;

/* Callbacks into the simulator. Each gets back the context given to CreateIPRModel as its first
 * argument; on failure they return nonzero and put a message at the start of `err`. */
typedef double (*IPRElapsedTimeCallback)(void* ctx);
typedef int32_t (*IPRInitialiseForSimCalcCallback)(void* ctx, char* err);
typedef int32_t (*IPRSetWellCtrlForSimCalcCallback)(void* ctx, int32_t well, double rate, char* err);
typedef int32_t (*IPRRunToForSimCalcCallback)(void* ctx, double days, char* err);
typedef int32_t (*IPRGetWellBlockIPRForSimCalcCallback)(void* ctx, int32_t well, struct _tGetSetData* data,
                                                        char* err);
typedef int32_t (*IPRGetWellRatesForSimCalcCallback)(void* ctx, int32_t well, struct _tGetSetData* data,
                                                     char* err);

/* Returns a new model, or null if it could not be made. `context` is kept, never dereferenced. */
INFLOWKIT_API void* CreateIPRModel(void* context);

INFLOWKIT_API void SetIPRCallbacks(void* model, IPRElapsedTimeCallback elapsedTime,
                                   IPRInitialiseForSimCalcCallback initialise,
                                   IPRSetWellCtrlForSimCalcCallback setWellCtrl,
                                   IPRRunToForSimCalcCallback runTo,
                                   IPRGetWellBlockIPRForSimCalcCallback getWellBlockIpr,
                                   IPRGetWellRatesForSimCalcCallback getWellRates);

/* Null is a no-op. */
INFLOWKIT_API void DestroyIPRModel(void* model);

/* Well registration: StartIPRAddWell drops any earlier list, AddIPRWell appends one well (a null
 * name counts as ""), EndIPRAddWell closes the list. */
INFLOWKIT_API void StartIPRAddWell(void* model);
INFLOWKIT_API void AddIPRWell(void* model, int32_t index, const char* name, bool producer, bool liquid);
INFLOWKIT_API void EndIPRAddWell(void* model);

/* Runs the calibration through the callbacks. Returns 0 when a calculation was done, nonzero
 * otherwise; this build has no calibration and always returns nonzero, leaving the model as is. */
INFLOWKIT_API int32_t SetupIPR(uint64_t parentWindow, void* model);

/* 1 once a scaling calculation has been done on this model, otherwise 0. */
INFLOWKIT_API int32_t HasDoneScalingCalculation(void* model);

/* Corrects `table` in place for the named well, given the `present` state. Without a calculation
 * the table is left untouched and 0 is returned. Nonzero on failure (e.g. null model). */
INFLOWKIT_API int32_t TransformIPR(void* model, const char* wellName, const struct _tGetSetData* present,
                                   struct _tGetSetData* table);

/* `file` is an open file descriptor passed as (void*)(intptr_t)fd. SaveIPR writes the model's
 * block at the present position; LoadIPR reads one back and leaves the position just after it.
 * Both return 0 on success. A refused block leaves the model unchanged. */
INFLOWKIT_API int32_t SaveIPR(void* model, void* file);
INFLOWKIT_API int32_t LoadIPR(void* model, void* file);

/* ---- Inspection, for tests of the calling code. Not part of the production interface. ---- */

/* Number of wells in the current list; 0 for a null model. */
INFLOWKIT_API int32_t InflowKitInspectWellCount(void* model);

/* Well `i` (0-based, in the order added). Returns 1 and fills every non-null output, or 0 if
 * there is no such well. `*name` stays valid until the well list next changes. */
INFLOWKIT_API int32_t InflowKitInspectWell(void* model, int32_t i, int32_t* index, const char** name,
                                           bool* producer, bool* liquid);

/* 0: StartIPRAddWell never called; 1: list open (started, not ended); 2: list closed. */
INFLOWKIT_API int32_t InflowKitInspectWellListState(void* model);

/* The context given to CreateIPRModel; null for a null model. */
INFLOWKIT_API void* InflowKitInspectContext(void* model);

/* Returns 1 and fills every non-null output with the callbacks last set (null if never set),
 * or 0 for a null model. */
INFLOWKIT_API int32_t InflowKitInspectCallbacks(void* model, IPRElapsedTimeCallback* elapsedTime,
                                                IPRInitialiseForSimCalcCallback* initialise,
                                                IPRSetWellCtrlForSimCalcCallback* setWellCtrl,
                                                IPRRunToForSimCalcCallback* runTo,
                                                IPRGetWellBlockIPRForSimCalcCallback* getWellBlockIpr,
                                                IPRGetWellRatesForSimCalcCallback* getWellRates);

#ifdef __cplusplus
}
#endif

#endif /* INFLOWKIT_INFLOWKIT_H */
