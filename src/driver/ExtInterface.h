// The abstract model interface that Conflux drives through numeric commands. The order of the operations is
// the order of the table of virtual functions and is shared with the host's other drivers: positions that
// this driver does not use keep their place and their base behaviour.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "driver/ExtRecords.h"

namespace rivulet {

class CXmlModel;  // the equipment description, filled by GetEquipment for ExtEquipXml

class CExtInterface {
  public:
    CExtInterface() = default;
    CExtInterface(const CExtInterface&) = delete;
    CExtInterface& operator=(const CExtInterface&) = delete;

    /* 0 */ virtual std::int32_t EditCase(HostWindow parent, std::int32_t* modified, tErrorRecord* err) = 0;
    /* 1 */ virtual std::int32_t QueryReserved(std::uint32_t count, tErrorRecord* err) = 0;
    /* 2 */ virtual std::int32_t Reserved2() = 0;
    /* 3 */ virtual std::int32_t Query(tQueryData* pstQueryData, std::uint32_t dwRelation,
                                       tErrorRecord* err) = 0;
    /* 4 */ virtual std::int32_t QueryComp(tCompositionData* composition, tErrorRecord* err) = 0;
    /* 5 */ virtual std::int32_t Initialise(tInitData* init, tErrorRecord* err) = 0;
    /* 6 */ virtual std::int32_t Timestep(tTimestepData* step, tErrorRecord* err) = 0;
    /* 7 */ virtual std::int32_t Reserved7() { return 0; }
    /* 8 */ virtual std::int32_t Reserved8(tErrorRecord* err) = 0;
    /* 9 */ virtual std::int32_t GetIPR(_tGetSetData* data, tErrorRecord* err) = 0;
    /* 10 */ virtual std::int32_t Reserved10() = 0;
    /* 11 */ virtual std::int32_t Reserved11() = 0;
    /* 12 */ virtual std::int32_t SetOpPt(_tGetSetData* data, tErrorRecord* err) = 0;
    /* 13 */ virtual std::int32_t Reserved13() = 0;
    /* 14 */ virtual std::int32_t StopSimulator(tErrorRecord* err) = 0;
    /* 15 */ virtual std::int32_t Stop() = 0;
    /* 16 */ virtual std::int32_t SaveModelString(char* buffer, std::int32_t size, tErrorRecord* err) = 0;
    /* 17 */ virtual std::int32_t LoadModelString(tLoadModelData* data, tErrorRecord* err) = 0;
    /* 18 */ virtual std::int32_t SetTopLevelFile(tTopLevelFile* file, tErrorRecord* err) = 0;
    /* 19 */ virtual std::int32_t StartSimulator(tStartData*, tErrorRecord*) { return 0; }
    /* 20 */ virtual std::int32_t DrawIcon(HostWindow, void*) { return 0; }
    /* 21 */ virtual std::int32_t GetVar(tGetVarData* data, tErrorRecord* err);
    /* 22 */ virtual std::int32_t Reserved22(void* record, tErrorRecord* err);
    /* 23 */ virtual std::int32_t Reserved23() { return -1; }
    /* 24 */ virtual std::int32_t SetVar(tSetVarData*, tErrorRecord*) { return -1; }
    /* 25 */ virtual std::int32_t DoCmd(const char*, tErrorRecord*) { return -1; }
    /* 26 */ virtual std::int32_t Reserved26() { return -1; }
    /* 27 */ virtual std::int32_t Reserved27() { return 0; }
    /* 28 */ virtual std::int32_t DoGetExtraNodeResults(tExtraNodeResult*, tErrorRecord*) { return 0; }
    /* 29 */ virtual std::int32_t Reserved29() { return 0; }
    /* 30 */ virtual std::int32_t Reserved30(tErrorRecord*) { return 0; }
    /* 31 */ virtual std::int32_t SaveToArchiveFile(void*, std::uint32_t, tErrorRecord*) { return 0; }
    /* 32 */ virtual std::int32_t LoadFromArchiveFile(void*, std::uint32_t, tErrorRecord*) { return 0; }
    /* 33 */ virtual std::int32_t Reserved33() { return 0; }
    /* 34 */ virtual std::int32_t SetCaseDirectory(const char*, tErrorRecord*) { return 0; }
    /* 35 */ virtual std::int32_t GetStartDate(tDate*, tErrorRecord*) { return 1; }
    /* 36 */ virtual std::int32_t GetNextEvent(tDate*, tErrorRecord*) { return 1; }
    /* 37 */ virtual std::int32_t Reserved37(void*, bool, tErrorRecord*) { return 0; }
    /* 38 */ virtual std::int32_t Reserved38(tErrorRecord*) { return 0; }
    /* 39 */ virtual std::int32_t Reserved39() { return 0; }
    /* 40 */ virtual std::int32_t Reserved40() { return 0; }
    /* 41 */ virtual std::int32_t Reserved41() { return 0; }
    /* 42 */ virtual std::int32_t Reserved42() { return 0; }
    /* 43 */ virtual std::int32_t Reserved43() { return 0; }
    /* 44 */ virtual std::int32_t Reserved44() { return 0; }
    /* 45 */ virtual std::int32_t QueryCompByStream(tCompositionData*, std::int32_t, tErrorRecord*) {
        return 0;
    }
    /* 46 */ virtual std::int32_t SetArchiveFile(const char*, bool, tErrorRecord*) { return 0; }
    /* 47 */ virtual std::int32_t SetConnection(tSetConnectionData*, tErrorRecord*) { return 0; }
    /* 48 */ virtual std::int32_t Reserved48() { return 0; }
    /* 49 */ virtual std::int32_t Reserved49() { return 0; }
    /* 50 */ virtual std::int32_t GetModMsg(char*, std::int32_t, tErrorRecord*) { return 0; }
    /* 51 */ virtual std::int32_t ImportComposition(HostWindow, void*, bool, tErrorRecord*) { return 0; }
    /* 52 */ virtual std::int32_t Reserved52() { return 0; }
    /* 53 */ virtual std::int32_t Reserved53() { return 0; }
    /* 54 */ virtual std::int32_t StartApp(std::int32_t, tErrorRecord*) { return 0; }
    /* 55 */ virtual std::int32_t ConnectToApplication(std::uint32_t a, std::uint32_t b, tErrorRecord* err);
    /* 56 */ virtual std::int32_t StopApp() { return 0; }
    /* 57 */ virtual std::int32_t GetEquipment(CXmlModel*, bool /*noVariables*/,
                                               const std::vector<std::string>& /*wellFilter*/) {
        return 0;
    }
    /* 58 */ virtual std::int32_t Reserved58() { return 0; }
    /* 59 */ virtual std::int32_t Reserved59() { return 0; }
    /* 60 */ virtual std::int32_t Reserved60() { return 0; }
    /* 61 */ virtual std::int32_t Reserved61() { return 0; }
    /* 62 */ virtual std::int32_t Reserved62() { return 0; }
    /* 63 */ virtual std::int32_t Reserved63() { return 0; }
    /* 64 */ virtual std::int32_t Reserved64() { return 0; }
    /* 65 */ virtual std::int32_t Reserved65() { return 0; }
    /* 66 */ virtual std::int32_t Reserved66() { return 0; }
    /* 67 */ virtual std::int32_t Reserved67() { return 0; }
    /* 68 */ virtual std::int32_t Reserved68() { return 0; }
    /* 69 */ virtual std::int32_t Reserved69() { return 0; }
    /* 70 */ virtual std::int32_t Reserved70() { return 0; }
    /* 71 */ virtual std::int32_t Reserved71() { return 0; }
    /* 72 */ virtual std::int32_t Reserved72() { return 0; }
    /* 73 */ virtual std::int32_t Reserved73() { return 0; }
    /* 74 */ virtual std::int32_t Reserved74() { return 0; }
    /* 75 */ virtual std::int32_t Reserved75(void*, tErrorRecord*) { return 0; }
    /* 76 */ virtual std::int32_t Reserved76() { return 0; }
    /* 77 */ virtual std::int32_t Reserved77() { return 0; }
    /* 78 */ virtual std::int32_t Reserved78() { return 0; }
    /* 79 */ virtual std::int32_t Reserved79() { return 0; }
    /* 80 */ virtual std::int32_t Reserved80() { return 0; }
    /* 81 */ virtual std::int32_t Reserved81() { return 0; }
    /* 82 */ virtual std::int32_t Reserved82() { return 0; }
    /* 83 */ virtual std::int32_t Reserved83() { return 0; }
    /* 84 */ virtual std::int32_t Reserved84() { return 0; }
    /* 85 */ virtual std::int32_t Reserved85() { return 0; }
    /* 86 */ virtual std::int32_t Reserved86() { return 0; }
    /* 87 */ virtual std::int32_t Reserved87() { return 0; }
    /* 88 */ virtual std::int32_t Reserved88() { return 0; }
    /* 89 */ virtual std::int32_t Reserved89() { return 0; }
    /* 90 */ virtual std::int32_t Reserved90() { return 0; }
    /* 91 */ virtual std::int32_t GetFileListEntry(tFileListEntry*, std::uint32_t, tErrorRecord*) {
        return 0;
    }

    virtual ~CExtInterface() = default;
};

}  // namespace rivulet
