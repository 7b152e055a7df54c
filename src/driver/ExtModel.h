// One driver instance: a reservoir model on Conflux's canvas. It owns the case settings, the simulator
// session, the reservoir data, the run's dates, the field totals and the inflow library's model, and guards
// them with one re-entrant lock.
#pragma once

#include <array>
#include <cstdint>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "case/CaseSettings.h"
#include "driver/ExtInterface.h"
#include "platform/OleDate.h"
#include "session/JobSession.h"
#include "session/ReservoirData.h"

namespace rivulet {

class CExtDataServerTag;

// The ten field totals, in this order.
enum FieldTotal : int {
    kGasInjectionRate,
    kWaterInjectionRate,
    kGasInjectionTotal,
    kWaterInjectionTotal,
    kGasProductionRate,
    kOilProductionRate,
    kWaterProductionRate,
    kGasProductionTotal,
    kOilProductionTotal,
    kWaterProductionTotal,
    kFieldTotalCount
};

// A well whose inflow table gives more than this many scf of gas per STB of liquid counts as a gas well.
inline constexpr double kGasWellRatio = 3300.0;

class CExtModel : public CExtInterface {
  public:
    CExtModel();
    ~CExtModel() override;

    // Operations of the interface, in its order.
    std::int32_t EditCase(HostWindow parent, std::int32_t* modified, tErrorRecord* err) override;
    std::int32_t QueryReserved(std::uint32_t count, tErrorRecord* err) override;
    std::int32_t Reserved2() override { return 0; }
    std::int32_t Query(tQueryData* pstQueryData, std::uint32_t dwRelation, tErrorRecord* err) override;
    std::int32_t QueryComp(tCompositionData* composition, tErrorRecord* err) override;
    std::int32_t Initialise(tInitData* init, tErrorRecord* err) override;
    std::int32_t Timestep(tTimestepData* step, tErrorRecord* err) override;
    std::int32_t Reserved8(tErrorRecord*) override { return 0; }
    std::int32_t GetIPR(_tGetSetData* data, tErrorRecord* err) override;
    std::int32_t Reserved10() override { return 0; }
    std::int32_t Reserved11() override { return 0; }
    std::int32_t SetOpPt(_tGetSetData* data, tErrorRecord* err) override;
    std::int32_t Reserved13() override { return 0; }
    std::int32_t StopSimulator(tErrorRecord* err) override;
    std::int32_t Stop() override;
    std::int32_t SaveModelString(char* buffer, std::int32_t size, tErrorRecord* err) override;
    std::int32_t LoadModelString(tLoadModelData* data, tErrorRecord* err) override;
    std::int32_t SetTopLevelFile(tTopLevelFile* file, tErrorRecord* err) override;
    std::int32_t StartSimulator(tStartData* start, tErrorRecord* err) override;
    std::int32_t DrawIcon(HostWindow window, void* surface) override;
    std::int32_t GetVar(tGetVarData* data, tErrorRecord* err) override;
    std::int32_t SetVar(tSetVarData* data, tErrorRecord* err) override;
    std::int32_t DoCmd(const char* command, tErrorRecord* err) override;
    std::int32_t DoGetExtraNodeResults(tExtraNodeResult* result, tErrorRecord* err) override;
    std::int32_t Reserved29() override { return 0; }
    std::int32_t SaveToArchiveFile(void* unused, std::uint32_t count, tErrorRecord* err) override;
    std::int32_t LoadFromArchiveFile(void* unused, std::uint32_t count, tErrorRecord* err) override;
    std::int32_t Reserved33() override { return 0; }
    std::int32_t SetCaseDirectory(const char* directory, tErrorRecord* err) override;
    std::int32_t GetStartDate(tDate* date, tErrorRecord* err) override;
    std::int32_t GetNextEvent(tDate* date, tErrorRecord* err) override;
    std::int32_t Reserved37(void*, bool, tErrorRecord*) override { return 0; }
    std::int32_t Reserved38(tErrorRecord*) override { return 0; }
    std::int32_t Reserved39() override { return 0; }
    std::int32_t QueryCompByStream(tCompositionData* composition, std::int32_t well,
                                   tErrorRecord* err) override;
    std::int32_t SetArchiveFile(const char* path, bool load, tErrorRecord* err) override;
    std::int32_t SetConnection(tSetConnectionData* data, tErrorRecord* err) override;
    std::int32_t GetModMsg(char* buffer, std::int32_t length, tErrorRecord* err) override;
    std::int32_t ImportComposition(HostWindow window, void* data, bool flag, tErrorRecord* err) override;
    std::int32_t StartApp(std::int32_t unused, tErrorRecord* err) override;
    std::int32_t StopApp() override;
    // The module, the field and the wells (all, or those named in `wellFilter`) with their published
    // variables, unless `noVariables` leaves the wells without; always 0.
    std::int32_t GetEquipment(CXmlModel* model, bool noVariables,
                              const std::vector<std::string>& wellFilter) override;
    std::int32_t GetFileListEntry(tFileListEntry* entry, std::uint32_t unused, tErrorRecord* err) override;

    // Commands that are not operations of the interface.
    std::int32_t SetAlias(const char* alias, tErrorRecord* err);
    std::int32_t ViewCaseFile(tErrorRecord* err);
    std::int32_t ViewLogFile(tErrorRecord* err);

    // The inflow library's calibration drives the model through these (text to the start of `err`).
    double ElapsedDays() const;
    std::int32_t InitialiseForSimCalc(char* err);
    std::int32_t SetWellCtrlForSimCalc(std::int32_t well, double rate, char* err);
    std::int32_t GetWellRatesForSimCalc(std::int32_t well, _tGetSetData* data, char* err);

    // The case dialog's "Calculate now": runs the inflow library's calculation with `caseSettings` in force,
    // the model's lock free, then stops the simulator and puts back the settings, the run's dates and step
    // count and the wells' controls that it found. The library's answer (0 when it calculated).
    std::int32_t CalculateIprCorrection(HostWindow parent, const CaseSettings& caseSettings);
    // There are wells and the inflow library has calculated for them.
    bool HasCalculatedIpr() const;

    // The session exists and its manager reports a connection (asked of the simulator).
    bool IsConnected() const;
    // The session was connected when last asked; the per-well calls answer from this.
    bool SeemsConnected() const;
    // The session's job was running when last asked and the run has been initialised.
    bool IsRunActive() const;

    // Read access for the rest of the driver and for tests.
    const std::string& GetAlias() const { return Alias; }
    const CaseSettings& GetSettings() const { return Settings; }
    CaseSettings& GetSettings() { return Settings; }
    bool GetLoadedFromSave() const { return LoadedFromSave; }
    bool GetRunInitialised() const { return RunInitialised; }
    std::int32_t GetStepCount() const { return StepCount; }
    std::uint32_t GetStartParam() const { return StartParam; }
    const ReservoirData* GetReservoir() const { return Reservoir.get(); }
    const CJobSession* GetSession() const { return Session.get(); }
    void* GetIprModel() const { return IprModel; }
    const std::string& GetArchiveFile() const { return ArchiveFile; }
    const std::string& GetModelPath() const { return ModelPath; }
    OleDate CurrentDateTime() const { return CurrentDate; }
    OleDate StartDateTime() const { return StartDate; }
    OleDate EndDateTime() const { return EndDate; }
    OleDate ReportDateTime() const { return ReportDate; }

  private:
    friend struct ExtModelProbe;  // tests put the model in states that need a simulator
    using Guard = std::lock_guard<std::recursive_mutex>;

    // The job session's job had started when last asked.
    bool HasSessionStarted() const;
    // The field totals, "RunStartDate" and "CurrentSimTime".
    bool ProcessModelVariable(CExtDataServerTag& tag);
    // The answer of GetVar or SetVar once every object has been offered the string.
    std::int32_t FinishAccess(CExtDataServerTag& tag, bool recognised, bool caseRecognised,
                              tErrorRecord* err);

    void ResetRun();
    // A local session when the case runs on this machine, a cluster session otherwise.
    void CreateSession();
    // The start steps shared by StartSimulator and Initialise; the caller holds the lock.
    std::int32_t StartRun(std::uint32_t startParam, const std::string& connectedWells, tErrorRecord* err);
    void ReadModelDates();
    // One inner step of Timestep: Continue, the end test and the clock reading; the caller holds the lock.
    bool StepToNextStop(tErrorRecord* err);
    // Sends the wells' targets to the simulator.
    bool ApplyWellTargets(std::string& error);
    // Settles the injection phases of injectors and sends those that changed.
    bool ResetInjectorPhasesStep(std::string& error);
    // Puts the wells that the host's record names under the network's kind of rate control; 0 on success.
    std::int32_t ConnectWells(ReservoirData* reservoir, const tInitData* init, tErrorRecord* err);
    // Runs the simulator to the host's start date when the record asks for it, then reads the wells with
    // the connected ones under the network for that one read.
    std::int32_t RunToStartDate(const tInitData* init, tErrorRecord* err);
    // Refuses a host end date beyond the deck's end; fails silently with no session.
    bool CheckEndDate(const tDate* target, tErrorRecord* err) const;
    void UpdateFieldTotals();
    void RegisterIprWells();
    // The rows of DoGetExtraNodeResults: indices 0 to 11 answer field results, 12 and above well results.
    // 1 when a value is given; 0 past the last well or on failure. The caller holds the lock.
    std::int32_t getExtraNodeFieldResult(tExtraNodeResult* result, tErrorRecord* err) const;
    std::int32_t getExtraNodeWellResult(tExtraNodeResult* result, tErrorRecord* err) const;
    // Corrects the inflow record of `well` in place through the inflow library; false when it threw.
    bool TransformIprRecord(const WellData& well, _tGetSetData* table);
    // Opens a file through the shell after the checks shared by the two view commands.
    std::int32_t CheckViewable() const;
    std::int32_t ViewFile(const std::string& path) const;

    std::string Alias;
    bool LoadedFromSave = false;
    OleDate CurrentDate;
    OleDate EndDate;
    OleDate StartDate;
    OleDate ReportDate;
    OleDate SpareDate;
    CaseSettings Settings;
    std::unique_ptr<CJobSession> Session;
    std::int32_t StepCount = 0;
    void* IprModel = nullptr;
    std::fstream ScratchFile;
    std::string ArchiveFile;
    mutable std::recursive_mutex Lock;
    std::uint32_t StartParam = 0;
    bool RunInitialised = false;
    std::unique_ptr<ReservoirData> Reservoir;
    std::string ModelPath;
    std::array<double, kFieldTotalCount> FieldTotals{};
    std::map<std::string, bool> GasWellMap;
    // The present state of a well handed to the inflow library with its table: zeroed once, and only the
    // first entry of pressure and rates is ever written.
    std::unique_ptr<_tGetSetData> PresentIprRecord;
    HostTextCallback ProgressCallback = nullptr;
    HostTextCallback StatusCallback = nullptr;
    // Called by Timestep between passes, with the lock released; tests use it to act from another thread.
    std::function<void()> BetweenPasses;
};

}  // namespace rivulet
