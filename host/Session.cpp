#include "host/Session.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "host/Buffer.h"
#include "host/Commands.h"

namespace host {

namespace {

class Driver {
  public:
    Driver(Plugin& plugin, void* model) : plugin_(plugin), model_(model) {}

    // Sends one command and prints its answer: result and message.
    std::int32_t Send(const char* label, std::uint32_t command, std::uint64_t argument = 0,
                      std::uint32_t count = 0) {
        ErrorRecord err;
        const auto result = static_cast<std::int32_t>(plugin_.Cmd(model_, 0, command, argument, count, &err));
        std::printf("  %-26s cmd %-4u -> %4d", label, command, result);
        if (err.text[0] != '\0') std::printf("  \"%.*s\"", static_cast<int>(sizeof(err.text)), err.text);
        std::printf("\n");
        return result;
    }

  private:
    Plugin& plugin_;
    void* model_;
};

void PrintIdentity(Plugin& plugin) {
    Buffer ident(1696, 0xCD);
    ErrorRecord err;
    const std::uint32_t result = plugin.Identify(ident.data(), &err);
    std::printf("ExtIdentify -> %u\n", result);
    std::printf("  name \"%s\", level %d, \"%s\"\n", ident.Text(8, 256).c_str(), ident.Get<std::int32_t>(4),
                ident.Text(1284, 260).c_str());
    const int custom = ident.Get<std::int32_t>(280);
    for (int i = 0; i < custom && i < 10; ++i) {
        std::printf("  custom command %d: \"%s\" (id %d)\n", i, ident.Text(284 + 32 * i, 32).c_str(),
                    ident.Get<std::int32_t>(1244 + 4 * i));
    }
}

}  // namespace

int RunSession(Plugin& plugin, const std::string& casePath) {
    PrintIdentity(plugin);

    void* model = nullptr;
    ErrorRecord err;
    plugin.CreateInstance(&model, &err);
    if (model == nullptr) {
        std::fprintf(stderr, "rivulet-host: the plug-in made no model\n");
        return 1;
    }
    std::printf("ExtCreateInstance -> model %p\n", model);
    Driver driver(plugin, model);
    int unexpected = 0;
    const auto expect = [&unexpected](bool ok) { unexpected += ok ? 0 : 1; };

    std::string alias = "Example reservoir";
    expect(driver.Send("SetAlias", kSetAlias, reinterpret_cast<std::uintptr_t>(alias.c_str())) == 0);

    Buffer top(2052);
    top.PutText(4, casePath);
    top.PutText(1028, "Linux|true");  // the driver reads "true" as a run on this machine
    expect(driver.Send("SetTopLevelFile", kSetTopLevelFile, top.Address()) == 0);

    Buffer entry(1804);
    expect(driver.Send("GetFileListEntry", kGetFileListEntry, entry.Address()) == 0);
    std::printf("    file \"%s\" (%s), options \"%s\"\n", entry.Text(8, 256).c_str(),
                entry.Text(264, 256).c_str(), entry.Text(777, 1024).c_str());

    Buffer message(512);
    expect(driver.Send("GetModMsg", kGetModMsg, message.Address(), 511) == 0);
    std::printf("    status \"%s\"\n", message.Text(0, 512).c_str());

    Buffer date(32);
    expect(driver.Send("GetStartDate", kGetStartDate, date.Address()) == 1);
    Buffer query(128);
    query.Put<std::int32_t>(28, -1);
    expect(driver.Send("Query (first well)", kQuery, query.Address(), 2) == -1);

    Buffer start(1064);
    driver.Send("StartSimulator", kStartSimulator, start.Address());

    Buffer saved(102400);
    expect(driver.Send("SaveModelString", kSaveModelString, saved.Address(), 102400) == 0);
    Buffer load(102424);
    std::memcpy(load.data() + 4, saved.data(), saved.size());
    load.Put<std::int32_t>(102404, 102400);
    expect(driver.Send("LoadModelString", kLoadModelString, load.Address()) == 0);
    expect(driver.Send("GetStartDate", kGetStartDate, date.Address()) == 0);
    std::printf("    start date serial %.1f\n", date.Get<double>(8));
    expect(driver.Send("GetNextEvent", kGetNextEvent, date.Address()) == 1);
    expect(driver.Send("Query (first well)", kQuery, query.Address(), 2) == -1);
    expect(driver.Send("Stop", kStop) == 0);

    plugin.DestroyInstance(model, &err);
    std::printf("ExtDestroyInstance -> done\n");
    if (unexpected != 0) std::printf("%d answers were not what a fresh model gives\n", unexpected);
    return unexpected == 0 ? 0 : 1;
}

}  // namespace host
