// The model string, the archive file, the files the model reports to the host, its status text and the two
// view commands.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/BinaryArchive.h"
#include "driver/ErrorRecord.h"
#include "driver/ExtModel.h"
#include "inflowkit/InflowKit.h"
#include "platform/ShellOpener.h"
#include "platform/UserInterface.h"
#include "session/ReservoirData.h"

namespace rivulet {

namespace {

constexpr std::int32_t kModelVersion = 5;

bool FileExists(const std::string& path) {
    struct stat st {};
    return !path.empty() && ::stat(path.c_str(), &st) == 0;
}

std::size_t LastSeparator(const std::string& path) {
    return path.find_last_of("\\/");
}

// Copies text into a fixed field, always terminated, cut to fit.
template <std::size_t N>
void CopyField(char (&field)[N], const std::string& text) {
    std::snprintf(field, N, "%s", text.c_str());
}

std::string OptionString(const CaseSettings& settings) {
    if (settings.IsLocalMachine) return "Linux|false";
    return "Linux|true|SharedPath|" + settings.WindowsEquivDir + "|HeadNode|" + settings.HeadNodeName +
           "|HeadNodePort|" + std::to_string(settings.HeadNodePort);
}

// Name and value pairs of an option string: spaces dropped, empty tokens dropped, the first of a repeated
// name kept, an odd last token ignored.
std::map<std::string, std::string> ParseOptions(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    std::vector<std::string> tokens;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t bar = text.find('|', start);
        const std::size_t end = bar == std::string::npos ? text.size() : bar;
        if (end > start) tokens.push_back(text.substr(start, end - start));
        if (bar == std::string::npos) break;
        start = bar + 1;
    }
    std::map<std::string, std::string> options;
    for (std::size_t i = 0; i + 1 < tokens.size(); i += 2) options.emplace(tokens[i], tokens[i + 1]);
    return options;
}

std::string Lookup(const std::map<std::string, std::string>& options, const char* name) {
    const auto it = options.find(name);
    return it == options.end() ? std::string() : it->second;
}

// The least a well takes in the stream: its name's length, seven flag and code bytes, three record flags,
// the target's flag word, the inflow table's count, two regions and two component counts.
constexpr std::size_t kMinWellBytes = 4 + 7 + 3 + 2 + 4 + 4 + 4 + 4 + 4;

// The reservoir sections of the archive file: the unit system's name, the fluid description and the well
// list as an i32 count followed by each well. Loaded wells take the reservoir's fluid, and the unit system
// is set up again from its name. A section cut short raises the archive's exception.
void StreamReservoir(BinaryArchive& archive, ReservoirData& reservoir, std::int32_t version) {
    std::string unitSystem = reservoir.units.name;
    archive.Transfer(unitSystem);
    if (!archive.IsStoring()) reservoir.units.SetUp(unitSystem);
    reservoir.fluid.StreamData(&archive, version);
    auto count = static_cast<std::int32_t>(reservoir.wells.Count());
    archive.TransferCount(count, kMinWellBytes, BinaryArchive::kMaxWells);
    if (archive.IsStoring()) {
        for (WellData& well : reservoir.wells) well.StreamData(&archive, version);
        return;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        WellData well(&reservoir.fluid);
        well.StreamData(&archive, version);
        reservoir.wells.Add(std::move(well));
    }
}

}  // namespace

std::int32_t CExtModel::SaveModelString(char* buffer, std::int32_t size, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (buffer == nullptr) {
        WriteText(err, "A null data item was provided to SaveModelString().");
        return 1;
    }
    Guard lock(Lock);
    try {
        BinaryArchive archive(static_cast<void*>(buffer), size < 0 ? 0 : static_cast<std::size_t>(size),
                              ArchiveDirection::Store);
        std::int32_t version = kModelVersion;
        archive.Transfer(version);
        if (Settings.StreamData(&archive, version) != 0) {
            WriteText(err, "Unable to save case settings.");
            return 1;
        }
        for (OleDate* date : {&CurrentDate, &EndDate, &StartDate, &ReportDate, &SpareDate}) {
            double days = date->Days();
            archive.Transfer(days);
        }
        archive.Transfer(StepCount);
    } catch (const ArchiveException&) {
        WriteText(err, "Failed to write all model data - buffer overflow");
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::LoadModelString(tLoadModelData* data, tErrorRecord* err) {
    if (err == nullptr) return 1;
    if (data == nullptr) {
        WriteText(err, "A null data item was provided to LoadModelString().");
        return 1;
    }
    Guard lock(Lock);
    ModelPath = data->pszModelPath != nullptr ? data->pszModelPath : "";
    ResetRun();
    Reservoir = std::make_unique<ReservoirData>();
    RunInitialised = false;
    const std::size_t length =
        static_cast<std::size_t>(std::clamp<std::int32_t>(data->iLength, 0, kModelStringCapacity));
    try {
        BinaryArchive archive(static_cast<const void*>(data->acModelString), length, ArchiveDirection::Load);
        std::int32_t version = 0;
        archive.Transfer(version);
        if (version >= 6) {
            WriteText(err, "Unable to load model: stored version is too new");
            return 1;
        }
        if (Settings.StreamData(&archive, version) != 0) {
            WriteText(err, "Unable to load case settings.");
            return 1;
        }
        // The status of a date is not stored: every date comes back valid.
        for (OleDate* date : {&CurrentDate, &EndDate, &StartDate, &ReportDate, &SpareDate}) {
            double days = 0.0;
            archive.Transfer(days);
            *date = OleDate::FromDays(days);
        }
        archive.Transfer(StepCount);
        RunInitialised = StepCount > 0;
    } catch (const ArchiveException&) {
        WriteText(err, "Failed in reading all case data - buffer overflow");
        return 1;
    }
    // A case moved together with its model finds its deck beside the model.
    if (Settings.IsLocalMachine && data->dwNoCaseSearch == 0 && !FileExists(Settings.FileName)) {
        const std::size_t cut = LastSeparator(ModelPath);
        if (cut != std::string::npos) {
            const std::string candidate = ModelPath.substr(0, cut + 1) + Settings.CaseFileName();
            if (FileExists(candidate)) Settings.FileName = candidate;
        }
    }
    LoadedFromSave = true;
    return 0;
}

std::int32_t CExtModel::SaveToArchiveFile(void*, std::uint32_t, tErrorRecord*) {
    Guard lock(Lock);
    const int fd = ::open(ArchiveFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return 1;
    std::int32_t result = 1;
    try {
        BinaryArchive archive(fd, ArchiveDirection::Store);
        std::int32_t version = kModelVersion;
        archive.Transfer(version);
        // The inflow library writes its own block at the file's present position; its answer is not
        // looked at.
        SaveIPR(IprModel, reinterpret_cast<void*>(static_cast<std::intptr_t>(fd)));
        if (!Reservoir) Reservoir = std::make_unique<ReservoirData>();
        StreamReservoir(archive, *Reservoir, version);
        result = 0;
    } catch (...) {
        result = 1;
    }
    ::close(fd);
    return result;
}

std::int32_t CExtModel::LoadFromArchiveFile(void*, std::uint32_t, tErrorRecord*) {
    Guard lock(Lock);
    if (ArchiveFile.empty()) return 1;
    const int fd = ::open(ArchiveFile.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return 1;
    std::int32_t result = 1;
    try {
        BinaryArchive archive(fd, ArchiveDirection::Load);
        std::int32_t version = 0;
        archive.Transfer(version);
        if (version < 6 && LoadIPR(IprModel, reinterpret_cast<void*>(static_cast<std::intptr_t>(fd))) == 0) {
            if (!Reservoir) Reservoir = std::make_unique<ReservoirData>();
            Reservoir->wells.Clear();
            StreamReservoir(archive, *Reservoir, version);
            result = 0;
        }
    } catch (...) {
        result = 1;
    }
    ::close(fd);
    return result;
}

std::int32_t CExtModel::SetArchiveFile(const char* path, bool load, tErrorRecord* err) {
    if (path == nullptr) {
        WriteText(err, "Null file path passed to SetArchiveFile()");
        return 1;
    }
    if (*path == '\0') {
        WriteText(err, "An empty file path was passed to SetArchiveFile()");
        return 1;
    }
    Guard lock(Lock);
    ArchiveFile = path;
    struct stat st {};
    if (load && ::stat(path, &st) == 0 && st.st_size > 0) {
        const std::int32_t result = LoadFromArchiveFile(nullptr, 0, err);
        if (result != 0) {
            WriteFormat(err, "LoadFromArchiveFile() could not load <%s>", path);
            return result;
        }
    }
    return 0;
}

std::int32_t CExtModel::SetTopLevelFile(tTopLevelFile* file, tErrorRecord* err) {
    if (file == nullptr) {
        WriteText(err, "A null data item was provided to SetTopLevelFile().");
        return 1;
    }
    Settings.FileName = std::string(file->szPath, strnlen(file->szPath, sizeof(file->szPath)));
    const auto options =
        ParseOptions(std::string(file->szOptions, strnlen(file->szOptions, sizeof(file->szOptions))));
    Settings.IsLocalMachine = Lookup(options, "Linux") == "true";
    Settings.WindowsEquivDir = Lookup(options, "SharedPath");
    Settings.HeadNodeName = Lookup(options, "HeadNode");
    Settings.HeadNodePort =
        static_cast<std::int32_t>(std::strtol(Lookup(options, "HeadNodePort").c_str(), nullptr, 10));
    return 0;
}

std::int32_t CExtModel::GetFileListEntry(tFileListEntry* entry, std::uint32_t, tErrorRecord* err) {
    if (entry == nullptr) {
        WriteText(err, "A null data item was provided to GetFileListEntry().");
        return 1;
    }
    if (entry->iHandle != 0) {
        WriteText(err, "GetFileListEntry() iHandle was non-zero.");
        return -1;
    }
    Guard lock(Lock);
    CopyField(entry->szPath, Settings.FileName);
    CopyField(entry->szDescription, "Main simulator data file");
    entry->bIsLocal = Settings.IsLocalMachine ? 1 : 0;
    CopyField(entry->szWindowsEquivDir, Settings.WindowsEquivDir);
    CopyField(entry->szOptions, OptionString(Settings));
    return 0;
}

std::int32_t CExtModel::SetCaseDirectory(const char* directory, tErrorRecord*) {
    Guard lock(Lock);
    std::string dir = directory != nullptr ? directory : "";
    if (!dir.empty() && dir.back() != '/' && dir.back() != '\\') dir += '/';
    Settings.FileName = dir + Settings.CaseFileName();
    return 0;
}

std::int32_t CExtModel::GetModMsg(char* buffer, std::int32_t length, tErrorRecord* err) {
    if (buffer == nullptr) {
        WriteText(err, "A null data item was provided to GetModMsg().");
        return 1;
    }
    Guard lock(Lock);
    std::string text;
    if (Settings.FileName.empty()) {
        text = "<No file>";
    } else if (IsConnected()) {
        text = Settings.FileName + "\nRunning on: " + Session->GetHostDescription();
    } else {
        text = Settings.FileName + "\n<Not currently running>";
    }
    const std::size_t room = length > 0 ? static_cast<std::size_t>(length) : 0;
    const std::size_t n = std::min(room, text.size());
    std::memcpy(buffer, text.data(), n);
    if (n < room) buffer[n] = '\0';  // no terminator once the length is reached
    return 0;
}

std::int32_t CExtModel::CheckViewable() const {
    if (Settings.FileName.empty()) {
        CurrentUserInterface().ShowMessage("No case has been specified", MessageIcon::Warning);
        return 1;
    }
    if (!Settings.IsLocalMachine && Settings.WindowsEquivDir.empty()) {
        CurrentUserInterface().ShowMessage(
            "The \"Case file's directory as viewed by your Local machine\" has not been defined.",
            MessageIcon::Warning);
        return 1;
    }
    return 0;
}

std::int32_t CExtModel::ViewCaseFile(tErrorRecord*) {
    if (CheckViewable() != 0) return 1;
    if (Settings.IsLocalMachine) return ViewFile(Settings.FileName);
    return ViewFile(Settings.WindowsEquivDir + Settings.CaseFileName());
}

std::int32_t CExtModel::ViewLogFile(tErrorRecord*) {
    if (CheckViewable() != 0) return 1;
    std::string directory = Settings.IsLocalMachine ? Settings.CaseDirectory() : Settings.WindowsEquivDir;
    std::string bare = directory;
    if (!bare.empty() && (bare.back() == '/' || bare.back() == '\\')) bare.pop_back();
    const std::string title = Settings.CaseBaseName();
    std::string path = bare + "/RESULTS/" + title + ".log";
    if (!FileExists(path)) {
        const std::string second = directory + title + ".log";
        if (FileExists(second)) path = second;
    }
    return ViewFile(path);
}

std::int32_t CExtModel::ViewFile(const std::string& path) const {
    UserInterface& ui = CurrentUserInterface();
    if (path.empty()) {
        ui.ShowMessage("No fileName been specified", MessageIcon::Warning);
        return 1;
    }
    if (!FileExists(path)) {
        ui.ShowMessage("The file <" + path + "> could not be found", MessageIcon::Warning);
        return 1;
    }
    const std::size_t cut = LastSeparator(path);
    const std::string directory = cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
    ShellOpener& shell = CurrentShellOpener();
    const bool opened =
        Settings.IsLocalMachine
            ? (shell.OpenByAssociation(path, directory) || shell.OpenThroughDesktop(path, directory) ||
               shell.OpenInTerminalEditor(path, directory))
            : (shell.OpenInTerminalEditor(path, directory) || shell.OpenByAssociation(path, directory) ||
               shell.OpenThroughDesktop(path, directory));
    if (opened) return 0;
    ui.ShowMessage("No suitable Windows application to open this file could be found", MessageIcon::Warning);
    return 1;
}

}  // namespace rivulet
