#include "driver/ExtInterface.h"

#include <cstdio>
#include <cstring>

namespace rivulet {

std::int32_t CExtInterface::GetVar(tGetVarData* data, tErrorRecord*) {
    if (data != nullptr) std::memset(data->szValue, 0, sizeof(data->szValue));
    return -1;
}

std::int32_t CExtInterface::Reserved22(void* record, tErrorRecord*) {
    if (record != nullptr) std::memset(static_cast<unsigned char*>(record) + 16, 0, 8);
    return -1;
}

std::int32_t CExtInterface::ConnectToApplication(std::uint32_t, std::uint32_t, tErrorRecord* err) {
    if (err != nullptr)
        std::snprintf(err->szText, sizeof(err->szText), "%s", "ConnectToApplication is not implemented");
    return 1;
}

}  // namespace rivulet
