// Variables and commands by access string. Every string starts with the driver's name, in any case.
#include <strings.h>

#include <string>

#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"

namespace rivulet {

namespace {

// The name that starts an access string: everything before the first ".", "[" or "(".
std::string FirstName(const char* text) {
    std::string s(text);
    return s.substr(0, s.find_first_of(".[("));
}

bool RootMatches(const char* text) {
    return strcasecmp(FirstName(text).c_str(), "tNavigator") == 0;
}

// The name that follows the root, for commands.
std::string SecondName(const char* text) {
    std::string s(text);
    const std::size_t dot = s.find('.');
    if (dot == std::string::npos) return {};
    s = s.substr(dot + 1);
    return s.substr(0, s.find_first_of(".[("));
}

}  // namespace

std::int32_t CExtModel::GetVar(tGetVarData* data, tErrorRecord* err) {
    if (data == nullptr || data->pszAccess == nullptr) {
        WriteText(err, "A null data item was provided to GetVar().");
        return 1;
    }
    if (!RootMatches(data->pszAccess)) return 1;
    Guard lock(Lock);
    WriteText(err, "Variables cannot be read by access string in this build of the driver.");
    return 1;
}

std::int32_t CExtModel::SetVar(tSetVarData* data, tErrorRecord* err) {
    if (data == nullptr || data->pszAccess == nullptr || data->pszValue == nullptr) {
        WriteText(err, "A null data item was provided to SetVar().");
        return 1;
    }
    if (!RootMatches(data->pszAccess)) return 1;
    Guard lock(Lock);
    WriteText(err, "Variables cannot be written by access string in this build of the driver.");
    return 1;
}

std::int32_t CExtModel::DoCmd(const char* command, tErrorRecord* err) {
    if (command == nullptr) {
        WriteText(err, "A null data item was provided to DoCmd().");
        return 1;
    }
    if (!RootMatches(command)) return 1;
    if (strcasecmp(SecondName(command).c_str(), "RunToTime") != 0)
        return 0;  // an unknown command counts as done
    WriteText(err, "RunToTime is not available in this build of the driver.");
    return 1;
}

}  // namespace rivulet
