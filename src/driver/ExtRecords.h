// The records that cross the plug-in boundary. Conflux owns the buffers; every record here is a plain struct
// whose size and field offsets are fixed by the host. Bytes the driver neither reads nor writes are padding
// arrays (`pad...`) and are never touched.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rivulet {

using HostWindow = std::uint64_t;

// The error record passed with nearly every call: an i32 at offset 0 and the message text at offset 4.
struct tErrorRecord {
    std::int32_t iCode;
    char szText[260];
};
static_assert(sizeof(tErrorRecord) == 264);
static_assert(offsetof(tErrorRecord, iCode) == 0);
static_assert(offsetof(tErrorRecord, szText) == 4);

inline constexpr int kCustomCommandSlots = 10;

// The identification record. The driver writes only the named fields, each on its own.
struct tModIdent {
    std::uint8_t pad0[4];
    std::int32_t iInterfaceLevel;
    char szName[256];
    std::int64_t lFlags64;
    std::int32_t iFlag272;
    std::int32_t iFlag276;
    std::int32_t iNumCustomCommands;
    char aszShortLabels[kCustomCommandSlots][32];
    char aszLongLabels[kCustomCommandSlots][64];
    std::int32_t aiCustomCommandIds[kCustomCommandSlots];
    char szDescription[260];
    std::int32_t iFlag1544;
    std::uint8_t pad1548[4];
    std::int32_t iFlag1552;
    std::uint32_t dwFlag1556;
    std::uint8_t pad1560[128];
    std::int32_t iFlag1688;
};
static_assert(offsetof(tModIdent, iInterfaceLevel) == 4);
static_assert(offsetof(tModIdent, szName) == 8);
static_assert(offsetof(tModIdent, lFlags64) == 264);
static_assert(offsetof(tModIdent, iFlag272) == 272);
static_assert(offsetof(tModIdent, iFlag276) == 276);
static_assert(offsetof(tModIdent, iNumCustomCommands) == 280);
static_assert(offsetof(tModIdent, aszShortLabels) == 284);
static_assert(offsetof(tModIdent, aszLongLabels) == 604);
static_assert(offsetof(tModIdent, aiCustomCommandIds) == 1244);
static_assert(offsetof(tModIdent, szDescription) == 1284);
static_assert(offsetof(tModIdent, iFlag1544) == 1544);
static_assert(offsetof(tModIdent, iFlag1552) == 1552);
static_assert(offsetof(tModIdent, dwFlag1556) == 1556);
static_assert(offsetof(tModIdent, iFlag1688) == 1688);
static_assert(sizeof(tModIdent) == 1696);  // the host's buffer is at least 1692 bytes; the tail is alignment

// A date at the boundary. The serial number is the automation date minus one.
struct tDate {
    std::uint8_t pad0[4];
    std::uint8_t bFlags;  // bit 0: dSerial valid; bit 1: day, month, year valid
    std::uint8_t pad5[3];
    double dSerial;
    std::int32_t iDay;
    std::int32_t iMonth;
    std::int32_t iYear;
    std::uint8_t pad28[4];
};
static_assert(sizeof(tDate) == 32);
static_assert(offsetof(tDate, bFlags) == 4);
static_assert(offsetof(tDate, dSerial) == 8);
static_assert(offsetof(tDate, iDay) == 16);
static_assert(offsetof(tDate, iMonth) == 20);
static_assert(offsetof(tDate, iYear) == 24);

inline constexpr std::uint8_t kDateSerialValid = 0x1;
inline constexpr std::uint8_t kDateFieldsValid = 0x2;

struct tTimestepData {
    std::int32_t iSize;
    std::uint8_t pad4[4];
    double dStepLength;
    tDate stStart;
    tDate stTarget;
    std::uint8_t bFlag;
    std::uint8_t pad81[71];
};
static_assert(sizeof(tTimestepData) == 152);
static_assert(offsetof(tTimestepData, iSize) == 0);
static_assert(offsetof(tTimestepData, dStepLength) == 8);
static_assert(offsetof(tTimestepData, stStart) == 16);
static_assert(offsetof(tTimestepData, stTarget) == 48);
static_assert(offsetof(tTimestepData, bFlag) == 80);

// Host callbacks handed over in tInitData: (text, model). Their results are not used.
using HostTextCallback = void (*)(const char* text, void* model);

struct tInitData {
    std::uint8_t pad0[8];
    std::int32_t* piWellIndices;
    std::int32_t* piWellKinds;  // 1 producer, 2 injector
    std::int32_t* piVanePhases;
    tDate stStartDate;
    tDate stEndDate;
    std::uint8_t pad96[32];
    std::int32_t iNumWells;
    std::uint8_t pad132[4];
    HostTextCallback pfnProgress;
    HostTextCallback pfnStatus;
    std::uint8_t pad152[4];
    std::uint32_t dwRunToStartDate;
    std::uint8_t pad160[12];
    std::uint32_t dwStartParam;
};
static_assert(sizeof(tInitData) == 176);
static_assert(offsetof(tInitData, piWellIndices) == 8);
static_assert(offsetof(tInitData, piWellKinds) == 16);
static_assert(offsetof(tInitData, piVanePhases) == 24);
static_assert(offsetof(tInitData, stStartDate) == 32);
static_assert(offsetof(tInitData, stEndDate) == 64);
static_assert(offsetof(tInitData, iNumWells) == 128);
static_assert(offsetof(tInitData, pfnProgress) == 136);
static_assert(offsetof(tInitData, pfnStatus) == 144);
static_assert(offsetof(tInitData, dwRunToStartDate) == 156);
static_assert(offsetof(tInitData, dwStartParam) == 172);

struct tStartData {
    std::uint8_t pad0[24];
    std::uint32_t dwStartParam;
    std::uint8_t pad28[1036];
};
static_assert(sizeof(tStartData) == 1064);
static_assert(offsetof(tStartData, dwStartParam) == 24);

inline constexpr std::uint32_t EX_CHILD = 2;

struct tQueryData {
    std::uint8_t pad0[4];
    std::int32_t iType;  // 1 producer, 2 injector, 3 any other well
    std::int32_t iOne8;
    std::int32_t iOne12;
    std::int32_t iType16;
    std::int32_t iZero20;
    std::int32_t iOne24;
    std::int32_t iHandle;
    char szName[64];
    char szKind[32];  // the host's field may be longer; the driver writes "Well" and its terminator
};
static_assert(sizeof(tQueryData) == 128);
static_assert(offsetof(tQueryData, iType) == 4);
static_assert(offsetof(tQueryData, iOne8) == 8);
static_assert(offsetof(tQueryData, iOne12) == 12);
static_assert(offsetof(tQueryData, iType16) == 16);
static_assert(offsetof(tQueryData, iZero20) == 20);
static_assert(offsetof(tQueryData, iOne24) == 24);
static_assert(offsetof(tQueryData, iHandle) == 28);
static_assert(offsetof(tQueryData, szName) == 32);
static_assert(offsetof(tQueryData, szKind) == 96);

struct tSetConnectionData {
    std::uint8_t pad0[4];
    std::int32_t iWellIndex;
    std::uint8_t bConnect;
    std::uint8_t pad9[3];
};
static_assert(sizeof(tSetConnectionData) == 12);
static_assert(offsetof(tSetConnectionData, iWellIndex) == 4);
static_assert(offsetof(tSetConnectionData, bConnect) == 8);

inline constexpr int kMaxComponents = 100;
inline constexpr int kMaxIprPoints = 10;

struct tCompositionData {
    std::int32_t iSize;
    std::int32_t iNumComponents;
    char aszNames[kMaxComponents][16];
    std::uint32_t dwMask;
    std::uint8_t pad1612[4];
    double adCriticalTemperature[kMaxComponents];          // 0x1
    double adCriticalPressure[kMaxComponents];             // 0x2
    double adCriticalVolume[kMaxComponents];               // 0x4
    double adAcentricFactor[kMaxComponents];               // 0x8
    double adMolecularWeight[kMaxComponents];              // 0x10
    std::uint8_t pad5616[1600];                            // two arrays the driver does not fill (0x20, 0x40)
    double adProperty8[kMaxComponents];                    // 0x80
    double adOmegaA[kMaxComponents];                       // 0x100
    double adOmegaB[kMaxComponents];                       // 0x200
    double adProperty9[kMaxComponents];                    // 0x400
    double adInteraction[kMaxComponents][kMaxComponents];  // 0x800
    std::uint8_t pad90416[100];
    std::int32_t iEquationOfState;  // 1 "PR", 2 "SRK", 0 any other
    std::uint8_t pad90520[3200];
};
static_assert(sizeof(tCompositionData) == 93720);
static_assert(offsetof(tCompositionData, iSize) == 0);
static_assert(offsetof(tCompositionData, iNumComponents) == 4);
static_assert(offsetof(tCompositionData, aszNames) == 8);
static_assert(offsetof(tCompositionData, dwMask) == 1608);
static_assert(offsetof(tCompositionData, adCriticalTemperature) == 1616);
static_assert(offsetof(tCompositionData, adCriticalPressure) == 2416);
static_assert(offsetof(tCompositionData, adCriticalVolume) == 3216);
static_assert(offsetof(tCompositionData, adAcentricFactor) == 4016);
static_assert(offsetof(tCompositionData, adMolecularWeight) == 4816);
static_assert(offsetof(tCompositionData, adProperty8) == 7216);
static_assert(offsetof(tCompositionData, adOmegaA) == 8016);
static_assert(offsetof(tCompositionData, adOmegaB) == 8816);
static_assert(offsetof(tCompositionData, adProperty9) == 9616);
static_assert(offsetof(tCompositionData, adInteraction) == 10416);
static_assert(offsetof(tCompositionData, iEquationOfState) == 90516);

// The well data record of GetIPR and SetOpPt, also the exchange record of the inflow library.
struct _tGetSetData {
    std::int32_t iSize;
    std::int32_t iWellIndex;
    std::uint8_t bMaskFlag;
    std::uint8_t pad9[7];
    double adOilRate[kMaxIprPoints];
    double adWaterRate[kMaxIprPoints];
    double adGasRate[kMaxIprPoints];
    double adPressure[kMaxIprPoints];
    double adMassRate[kMaxIprPoints];
    double adTemperature[kMaxIprPoints];
    std::int32_t iNumPoints;
    std::uint8_t pad500[4];
    tCompositionData stComposition;
    double aadMoleFractions[kMaxIprPoints][kMaxComponents];
    double dOilGravity;
    double dGasGravity;
    double dWaterGravity;
    double adZero[3];
    std::uint8_t pad102272[64];
    std::int32_t iExtensionSize;  // 776
    std::uint8_t pad102340[20];
    double dDowntime;
    std::uint8_t pad102368[16];
    double dPresentPressure;
    double dPresentOilRate;
    double dPresentWaterRate;
    double dPresentGasRate;
    std::uint8_t pad102416[88];
    std::int32_t iMaskKind;
    std::int32_t iOne;
    std::uint8_t pad102512[2856];
};
static_assert(sizeof(_tGetSetData) == 105368);
static_assert(offsetof(_tGetSetData, iSize) == 0);
static_assert(offsetof(_tGetSetData, iWellIndex) == 4);
static_assert(offsetof(_tGetSetData, bMaskFlag) == 8);
static_assert(offsetof(_tGetSetData, adOilRate) == 16);
static_assert(offsetof(_tGetSetData, adWaterRate) == 96);
static_assert(offsetof(_tGetSetData, adGasRate) == 176);
static_assert(offsetof(_tGetSetData, adPressure) == 256);
static_assert(offsetof(_tGetSetData, adMassRate) == 336);
static_assert(offsetof(_tGetSetData, adTemperature) == 416);
static_assert(offsetof(_tGetSetData, iNumPoints) == 496);
static_assert(offsetof(_tGetSetData, stComposition) == 504);
static_assert(offsetof(_tGetSetData, aadMoleFractions) == 94224);
static_assert(offsetof(_tGetSetData, dOilGravity) == 102224);
static_assert(offsetof(_tGetSetData, dGasGravity) == 102232);
static_assert(offsetof(_tGetSetData, dWaterGravity) == 102240);
static_assert(offsetof(_tGetSetData, adZero) == 102248);
static_assert(offsetof(_tGetSetData, iExtensionSize) == 102336);
static_assert(offsetof(_tGetSetData, dDowntime) == 102360);
static_assert(offsetof(_tGetSetData, dPresentPressure) == 102384);
static_assert(offsetof(_tGetSetData, dPresentOilRate) == 102392);
static_assert(offsetof(_tGetSetData, dPresentWaterRate) == 102400);
static_assert(offsetof(_tGetSetData, dPresentGasRate) == 102408);
static_assert(offsetof(_tGetSetData, iMaskKind) == 102504);
static_assert(offsetof(_tGetSetData, iOne) == 102508);

struct tExtraNodeResult {
    std::uint8_t pad0[4];
    std::int32_t iResultIndex;
    std::int32_t iVariableCode;  // -1 for a named variable
    char szName[64];
    char szUnit[16];
    std::uint8_t pad92[4];
    double dValue;
    std::int32_t iZero;
    std::uint8_t pad108[68];
    char szNodeName[32];
};
static_assert(sizeof(tExtraNodeResult) == 208);
static_assert(offsetof(tExtraNodeResult, iResultIndex) == 4);
static_assert(offsetof(tExtraNodeResult, iVariableCode) == 8);
static_assert(offsetof(tExtraNodeResult, szName) == 12);
static_assert(offsetof(tExtraNodeResult, szUnit) == 76);
static_assert(offsetof(tExtraNodeResult, dValue) == 96);
static_assert(offsetof(tExtraNodeResult, iZero) == 104);
static_assert(offsetof(tExtraNodeResult, szNodeName) == 176);

inline constexpr int kModelStringCapacity = 102400;

struct tLoadModelData {
    std::uint8_t pad0[4];
    char acModelString[kModelStringCapacity];
    std::int32_t iLength;
    const char* pszModelPath;
    std::uint32_t dwNoCaseSearch;
    std::uint8_t pad102420[4];
};
static_assert(sizeof(tLoadModelData) == 102424);
static_assert(offsetof(tLoadModelData, acModelString) == 4);
static_assert(offsetof(tLoadModelData, iLength) == 102404);
static_assert(offsetof(tLoadModelData, pszModelPath) == 102408);
static_assert(offsetof(tLoadModelData, dwNoCaseSearch) == 102416);

inline constexpr int kOptionStringCapacity = 1024;

struct tFileListEntry {
    std::uint8_t pad0[4];
    std::int32_t iHandle;
    char szPath[256];
    char szDescription[256];
    std::uint8_t bIsLocal;
    char szWindowsEquivDir[256];
    char szOptions[kOptionStringCapacity];
    std::uint8_t pad1801[3];
};
static_assert(sizeof(tFileListEntry) == 1804);
static_assert(offsetof(tFileListEntry, iHandle) == 4);
static_assert(offsetof(tFileListEntry, szPath) == 8);
static_assert(offsetof(tFileListEntry, szDescription) == 264);
static_assert(offsetof(tFileListEntry, bIsLocal) == 520);
static_assert(offsetof(tFileListEntry, szWindowsEquivDir) == 521);
static_assert(offsetof(tFileListEntry, szOptions) == 777);

struct tTopLevelFile {
    std::uint8_t pad0[4];
    char szPath[1024];
    char szOptions[kOptionStringCapacity];
};
static_assert(sizeof(tTopLevelFile) == 2052);
static_assert(offsetof(tTopLevelFile, szPath) == 4);
static_assert(offsetof(tTopLevelFile, szOptions) == 1028);

inline constexpr int kVarValueCapacity = 512;

struct tGetVarData {
    std::uint8_t pad0[8];
    const char* pszAccess;
    char szValue[kVarValueCapacity];
};
static_assert(sizeof(tGetVarData) == 528);
static_assert(offsetof(tGetVarData, pszAccess) == 8);
static_assert(offsetof(tGetVarData, szValue) == 16);

struct tSetVarData {
    std::uint8_t pad0[8];
    const char* pszAccess;
    const char* pszValue;
};
static_assert(sizeof(tSetVarData) == 24);
static_assert(offsetof(tSetVarData, pszAccess) == 8);
static_assert(offsetof(tSetVarData, pszValue) == 16);

// The pixel surface the host hands over for the icon in place of a window and device context. `iSize` is the
// record's size as the host built it; pixels are 32-bit 0xAARRGGBB, rows top to bottom, `iStride` bytes
// apart (at least 4 * iWidth; bytes past a row's pixels are the host's).
struct tIconSurface {
    std::int32_t iSize;
    std::int32_t iWidth;
    std::int32_t iHeight;
    std::int32_t iStride;
    std::uint32_t* pdwPixels;
};
static_assert(sizeof(tIconSurface) == 24);
static_assert(offsetof(tIconSurface, iSize) == 0);
static_assert(offsetof(tIconSurface, iWidth) == 4);
static_assert(offsetof(tIconSurface, iHeight) == 8);
static_assert(offsetof(tIconSurface, iStride) == 12);
static_assert(offsetof(tIconSurface, pdwPixels) == 16);

}  // namespace rivulet
