#include "driver/CommandTable.h"

#include "driver/ExtModel.h"

namespace rivulet {

namespace {

template <typename T>
T* As(std::uint64_t argument) {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(argument));
}

}  // namespace

std::int32_t DispatchCommand(CExtModel& model, std::uint64_t window, std::uint32_t command,
                             std::uint64_t argument, std::uint32_t count, tErrorRecord* err) {
    // Operations are reached through the interface, as the host sees them.
    CExtInterface& ops = model;
    if (command > kViewCaseFileCommand) return command == kViewLogFileCommand ? model.ViewLogFile(err) : 0;
    if (command == kViewCaseFileCommand) return model.ViewCaseFile(err);
    const bool flag = count > 0u;
    switch (command) {
        case 2:
            return ops.Query(As<tQueryData>(argument), count, err);
        case 3:
            return ops.QueryReserved(count, err);
        case 4:
            return ops.Reserved30(err);
        case 5:
            return ops.EditCase(window, As<std::int32_t>(argument), err);
        case 7:
            return ops.DrawIcon(window, As<void>(argument));
        case 9:
            return ops.QueryComp(As<tCompositionData>(argument), err);
        case 10:
            return ops.SetCaseDirectory(As<const char>(argument), err);
        case 11:
            return ops.GetStartDate(As<tDate>(argument), err);
        case 12:
            return ops.SaveModelString(As<char>(argument), static_cast<std::int32_t>(count), err);
        case 13:
            return ops.LoadModelString(As<tLoadModelData>(argument), err);
        case 14:
            return ops.SaveToArchiveFile(As<void>(argument), count, err);
        case 15:
            return ops.LoadFromArchiveFile(As<void>(argument), count, err);
        case 16:
            return ops.GetFileListEntry(As<tFileListEntry>(argument), count, err);
        case 18:
            return ops.QueryCompByStream(As<tCompositionData>(argument), static_cast<std::int32_t>(count),
                                         err);
        case 19:
            return ops.SetConnection(As<tSetConnectionData>(argument), err);
        case 20:
            return ops.SetArchiveFile(As<const char>(argument), flag, err);
        case 21:
            return model.SetAlias(As<const char>(argument), err);
        case 23:
            return ops.StartSimulator(As<tStartData>(argument), err);
        case 48:
            return ops.Initialise(As<tInitData>(argument), err);
        case 49:
            return ops.Timestep(As<tTimestepData>(argument), err);
        case 50:
            return ops.GetIPR(As<_tGetSetData>(argument), err);
        case 53:
            return ops.SetOpPt(As<_tGetSetData>(argument), err);
        case 55:
            return ops.StopSimulator(err);
        case 56:
            return ops.Stop();
        case 58:
            return ops.DoGetExtraNodeResults(As<tExtraNodeResult>(argument), err);
        case 60:
            return ops.Reserved8(err);
        case 62:
            return ops.GetNextEvent(As<tDate>(argument), err);
        case 63:
            return ops.Reserved37(As<void>(argument), flag, err);
        case 96:
            return ops.GetVar(As<tGetVarData>(argument), err);
        case 97:
            return ops.SetVar(As<tSetVarData>(argument), err);
        case 98:
            return ops.DoCmd(As<const char>(argument), err);
        case 99:
            return -1;
        case 100:
            return ops.Reserved38(err);
        case 102:
            return ops.Reserved75(As<void>(argument), err);
        case 129:
            return ops.GetModMsg(As<char>(argument), static_cast<std::int32_t>(count), err);
        case 130:
            return ops.ImportComposition(window, As<void>(argument), flag, err);
        case 136:
            return ops.SetTopLevelFile(As<tTopLevelFile>(argument), err);
        default:
            return 0;  // below 2, above 136, or an id the table does not list
    }
}

}  // namespace rivulet
