// The plug-in's exported functions, as Conflux finds them by name.
#pragma once

#include <cstdint>

#include "driver/ExtRecords.h"

#define RIVULET_EXPORT extern "C" __attribute__((visibility("default")))

using rivulet::tErrorRecord;
using rivulet::tModIdent;

RIVULET_EXPORT std::uint32_t ExtIdentify(tModIdent* ident, tErrorRecord* err);
RIVULET_EXPORT std::uint32_t ExtCreateInstance(void** instance, tErrorRecord* err);
RIVULET_EXPORT std::uint32_t ExtDestroyInstance(void* instance, tErrorRecord* err);
RIVULET_EXPORT std::uint32_t ExtCmd(void* instance, std::uint64_t window, std::uint32_t command,
                                    std::uint64_t argument, std::uint32_t count, tErrorRecord* err);
RIVULET_EXPORT std::uint32_t ExtConfigure(void* parent, tErrorRecord* err);
RIVULET_EXPORT void ExtCopyConfigure(std::uint64_t hive, char** keyName);
RIVULET_EXPORT void ExtHelp();
// `wellFilter` is a null-terminated array of well names, or null for every well.
RIVULET_EXPORT std::uint32_t ExtEquipXml(void* instance, const char* outputPath, std::uint8_t noVariables,
                                         const char* const* wellFilter);
RIVULET_EXPORT std::uint32_t ExtConnectToApp(void* instance, std::uint32_t a, std::uint32_t b,
                                             tErrorRecord* err);
RIVULET_EXPORT std::uint32_t ExtStartApp(void* instance, std::uint32_t a, tErrorRecord* err);
RIVULET_EXPORT std::uint32_t ExtStopApp(void* instance);

// Set by the foundation's data-server display; nothing in the driver sets it.
using ShowDataServerStringFn = void (*)(void* window, const void* data, std::int32_t, std::uint32_t);
RIVULET_EXPORT ShowDataServerStringFn GlpfnSorrelShowDataServerString;
