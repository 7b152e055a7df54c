/*
 * InflowKit: inflow-performance (IPR) correction for coupled reservoir/network runs.
 *
 * C interface. Every entry point is safe to call with a null model (it does nothing and reports
 * failure where it has a result), and no C++ exception ever crosses it.
 *
 * SetupIPR calibrates one factor per well against the simulator: it restarts the run, holds each
 * flowing well at a few fixed rates for short periods, and fits how the rate the well delivered
 * compares with the rate its block inflow table promised at the same bottom-hole pressure.
 * TransformIPR then scales the well's table rates by that factor. SaveIPR/LoadIPR keep the
 * factors with the caller's file, so a calibrated model reopens calibrated.
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

/* Rate/IPR exchange buffer, defined by the caller. InflowKit reads and writes its fields by byte
 * offset (105368 bytes in all: int32 size at 0, int32 well index at 4, ten-row double columns of
 * oil, water (STB/day), gas (MMscf/day), pressure (psig), mass rate and temperature at 16, 96, 176,
 * 256, 336 and 416, int32 rows in use at 496). Entries of magnitude 3.2e35 or more hold no value. */
struct _tGetSetData;

/* Callbacks into the simulator. Each gets back the context given to CreateIPRModel as its first
 * argument; on failure they return nonzero and put a message at the start of `err`, a zeroed
 * buffer of at least 1024 chars. Records passed in are InflowKit's own, zeroed, with size and well
 * index set.
 *   elapsedTime      days since the run's start.
 *   initialise       restarts the run from the deck's start (the wells are registered anew).
 *   setWellCtrl      puts the well on a single rate control: gas rate (MMscf/day) for gas wells,
 *                    liquid rate (STB/day) for liquid producers, water rate (STB/day) for liquid
 *                    injectors; does nothing for a well whose table shows no flow.
 *   runTo            runs the simulator `days` forward.
 *   getWellBlockIPR  fills the record with the well's present inflow table.
 *   getWellRates     fills row 0 with the well's present bottom-hole pressure and rates. */
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

/* Runs the calibration through the callbacks. Returns 0 when it was done (the factors are
 * replaced). Otherwise nonzero, with the factors and HasDoneScalingCalculation as they were and
 * the reason kept for InflowKitInspectLastError: a callback unset or failing, a junk elapsed time,
 * or no well giving a usable sample. `parentWindow` is not used. */
INFLOWKIT_API int32_t SetupIPR(uint64_t parentWindow, void* model);

/* 1 once a scaling calculation has been done on this model, or a block holding factors was
 * loaded into it; otherwise 0. */
INFLOWKIT_API int32_t HasDoneScalingCalculation(void* model);

/* Corrects `table` in place for the named well: the oil, water, gas and mass rates of the rows in
 * use are multiplied by the well's factor (entries holding no value stay so); pressures and
 * temperatures are left alone, as is the whole table of a well without a factor. `present` may be
 * null. Returns 0, or nonzero for a null model, name or table. */
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

/* Returns 1 and sets `*factor` (if non-null) when the named well has a factor, otherwise 0. */
INFLOWKIT_API int32_t InflowKitInspectFactor(void* model, const char* wellName, double* factor);

/* Why the last failed SetupIPR stopped; "" if none has failed, or for a null model. A later
 * success does not clear it. Valid until the next SetupIPR on the model. */
INFLOWKIT_API const char* InflowKitInspectLastError(void* model);

#ifdef __cplusplus
}
#endif

#endif /* INFLOWKIT_INFLOWKIT_H */
