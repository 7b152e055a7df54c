// Arbitrary bytes as the model string the host hands back when it opens a saved model. A model that loads
// must save, load into a fresh model and save again to the same bytes; its file list entry, status text and
// case directory must fit their fields. A local case whose deck is missing looks beside the model, in a
// folder of this process that holds one deck.
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "ScratchFolder.h"
#include "driver/ExtModel.h"

using namespace rivulet;

namespace {

struct Folder {
    ScratchFolder scratch{"rivulet-model-string"};
    std::string path = scratch.Path().string();
    std::string model = scratch / "case.cfx";
    Folder() {
        std::ofstream(scratch / "SPE1CASE1.DATA") << "RUNSPEC\n";
        // The model never reads the user's own store.
        ::setenv("RIVULET_REGISTRY", (scratch / "registry.reg").c_str(), 1);
    }
};

const Folder& TheFolder() {
    static const Folder folder;
    return folder;
}

bool Terminated(const char* text, std::size_t size) {
    return std::memchr(text, '\0', size) != nullptr;
}

std::vector<char> Save(CExtModel& model, std::int32_t& result) {
    std::vector<char> buffer(kModelStringCapacity);
    tErrorRecord err{};
    result = model.SaveModelString(buffer.data(), static_cast<std::int32_t>(buffer.size()), &err);
    if (!Terminated(err.szText, sizeof err.szText)) __builtin_trap();
    if (result != 0 && std::strcmp(err.szText, "Failed to write all model data - buffer overflow") != 0)
        __builtin_trap();
    return buffer;
}

std::int32_t Load(CExtModel& model, tLoadModelData& data, const char* bytes, std::size_t size,
                  std::uint32_t noSearch) {
    std::memset(&data, 0, sizeof data);
    std::memcpy(data.acModelString, bytes, size);
    data.iLength = static_cast<std::int32_t>(size);
    data.pszModelPath = TheFolder().model.c_str();
    data.dwNoCaseSearch = noSearch;
    tErrorRecord err{};
    const std::int32_t result = model.LoadModelString(&data, &err);
    if (!Terminated(err.szText, sizeof err.szText)) __builtin_trap();
    if (result != 0 && result != 1) __builtin_trap();
    if (result != 0 && err.szText[0] == '\0') __builtin_trap();
    return result;
}

void CheckReports(CExtModel& model) {
    tErrorRecord err{};
    auto entry = std::make_unique<tFileListEntry>();
    if (model.GetFileListEntry(entry.get(), 0, &err) != 0) __builtin_trap();
    if (!Terminated(entry->szPath, sizeof entry->szPath) ||
        !Terminated(entry->szWindowsEquivDir, sizeof entry->szWindowsEquivDir) ||
        !Terminated(entry->szOptions, sizeof entry->szOptions))
        __builtin_trap();
    char message[64];
    if (model.GetModMsg(message, sizeof message, &err) != 0) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    TheFolder();
    if (size > static_cast<std::size_t>(kModelStringCapacity)) return 0;
    static const auto record = std::make_unique<tLoadModelData>();
    const char* bytes = reinterpret_cast<const char*>(data);

    CExtModel first;
    if (Load(first, *record, bytes, size, 0) != 0) return 0;
    CheckReports(first);

    std::int32_t saved = 0;
    const std::vector<char> once = Save(first, saved);
    if (saved != 0) return 0;

    CExtModel second;
    if (Load(second, *record, once.data(), once.size(), 1) != 0) __builtin_trap();
    const std::vector<char> twice = Save(second, saved);
    if (saved != 0 || twice != once) __builtin_trap();

    // A case directory joins the deck's name.
    tErrorRecord err{};
    second.SetCaseDirectory(TheFolder().path.c_str(), &err);
    CheckReports(second);
    return 0;
}
