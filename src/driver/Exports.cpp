// Every export enters the module state first, clears the caller's record second (where it does), tests its
// pointers third and hands the call over last.
#include "driver/Exports.h"

#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "case/ConfigureDlg.h"
#include "driver/CommandTable.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "driver/RivuletApp.h"
#include "equipment/XmlEquipment.h"
#include "platform/ModuleState.h"
#include "platform/UserInterface.h"

using namespace rivulet;

ShowDataServerStringFn GlpfnSorrelShowDataServerString = nullptr;

namespace {

CExtModel* AsModel(void* instance) {
    return static_cast<CExtModel*>(instance);
}

template <std::size_t N>
void PutText(char (&field)[N], const char* text) {
    std::strncpy(field, text, N - 1);
    field[N - 1] = '\0';
}

void FillIdentity(tModIdent* ident) {
    ident->iInterfaceLevel = 70;
    PutText(ident->szName, "tNavigator");
    ident->lFlags64 = 5;
    ident->iFlag272 = 1;
    ident->iFlag276 = 1;
    ident->iNumCustomCommands = 2;
    PutText(ident->aszShortLabels[0], "View case file");
    PutText(ident->aszShortLabels[1], "View log file");
    PutText(ident->aszLongLabels[0], "View case file");
    PutText(ident->aszLongLabels[1], "View log file");
    ident->aiCustomCommandIds[0] = static_cast<std::int32_t>(kViewCaseFileCommand);
    ident->aiCustomCommandIds[1] = static_cast<std::int32_t>(kViewLogFileCommand);
    PutText(ident->szDescription, "tNavigator reservoir simulator");
    ident->iFlag1544 = 0;
    ident->iFlag1552 = 1;
    ident->dwFlag1556 = 16842753u;
    ident->iFlag1688 = 0;
}

}  // namespace

std::uint32_t ExtIdentify(tModIdent* ident, tErrorRecord* err) {
    ModuleStateGuard state;
    ClearRecord(err);
    if (ident == nullptr) {
        WriteText(err, "ExtIdentify() was passed a null tModIdent object.");
        return 1;
    }
    FillIdentity(ident);
    return 0;
}

std::uint32_t ExtCreateInstance(void** instance, tErrorRecord* err) {
    ModuleStateGuard state;
    ClearRecord(err);
    CExtModel* model = nullptr;
    try {
        model = new CExtModel();
        TheApp().RegisterInstance(model);
    } catch (...) {
        // Nothing crosses into the host: a model that could not be made is a null handle.
        delete model;
        model = nullptr;
    }
    if (instance != nullptr) *instance = model;
    return 0;
}

std::uint32_t ExtDestroyInstance(void* instance, tErrorRecord* err) {
    ModuleStateGuard state;
    ClearRecord(err);
    if (instance != nullptr) {
        CExtModel* model = AsModel(instance);
        TheApp().UnregisterInstance(model);  // an unregistered pointer is destroyed all the same
        delete model;
    }
    return 0;
}

std::uint32_t ExtCmd(void* instance, std::uint64_t window, std::uint32_t command, std::uint64_t argument,
                     std::uint32_t count, tErrorRecord* err) {
    ModuleStateGuard state;
    ClearRecord(err);
    if (instance == nullptr) {
        WriteText(err, "ExtCmd() was passed a null object instance.");
        return 1;
    }
    try {
        return static_cast<std::uint32_t>(
            DispatchCommand(*AsModel(instance), window, command, argument, count, err));
    } catch (const std::exception& e) {
        WriteFormat(err, "Command %u failed unexpectedly: %s", command, e.what());
    } catch (...) {
        WriteFormat(err, "Command %u failed unexpectedly.", command);
    }
    return 1;
}

std::uint32_t ExtConfigure(void* parent, tErrorRecord* err) {
    ModuleStateGuard state;
    ClearRecord(err);
    try {
        CConfigureDlg dialog(TheApp().Config);
        CurrentUserInterface().RunModal(reinterpret_cast<std::uintptr_t>(parent), dialog);
    } catch (...) {
        // The dialog's failure is the user's to see; the host is told nothing.
    }
    return 0;
}

void ExtCopyConfigure(std::uint64_t hive, char** keyName) {
    ModuleStateGuard state;
    if (keyName == nullptr || *keyName == nullptr) return;
    try {
        // Brings another version's configuration forward; the ports stay this machine's own.
        MachineConfig& config = TheApp().Config;
        config.Load(hive, std::string(*keyName) + "\\tNavigator");
        config.Store();
    } catch (...) {
        // Nothing is reported from here; the configuration stays as far as it was read.
    }
}

void ExtHelp() {
    ModuleStateGuard state;
}

std::uint32_t ExtEquipXml(void* instance, const char* outputPath, std::uint8_t noVariables,
                          const char* const* wellFilter) {
    ModuleStateGuard state;
    if (instance == nullptr || outputPath == nullptr) return 1;
    try {
        std::vector<std::string> filter;
        for (const char* const* name = wellFilter; name != nullptr && *name != nullptr; ++name)
            filter.emplace_back(*name);
        CXmlModel model;
        if (AsModel(instance)->GetEquipment(&model, noVariables != 0, filter) != 0) return 1;
        std::string error;
        return WriteModelXml(model, outputPath, error) ? 0 : 1;
    } catch (...) {
        return 1;  // nothing is reported from here: the host sees only the result
    }
}

// The session exports answer 1 on a null instance and write nothing; nothing thrown below reaches the host.
std::uint32_t ExtConnectToApp(void* instance, std::uint32_t a, std::uint32_t b, tErrorRecord* err) {
    ModuleStateGuard state;
    if (instance == nullptr) return 1;
    try {
        return static_cast<std::uint32_t>(AsModel(instance)->ConnectToApplication(a, b, err));
    } catch (...) {
        return 1;
    }
}

std::uint32_t ExtStartApp(void* instance, std::uint32_t a, tErrorRecord* err) {
    ModuleStateGuard state;
    if (instance == nullptr) return 1;
    try {
        return static_cast<std::uint32_t>(AsModel(instance)->StartApp(static_cast<std::int32_t>(a), err));
    } catch (...) {
        return 1;
    }
}

std::uint32_t ExtStopApp(void* instance) {
    ModuleStateGuard state;
    if (instance == nullptr) return 1;
    try {
        return static_cast<std::uint32_t>(AsModel(instance)->StopApp());
    } catch (...) {
        return 1;
    }
}
