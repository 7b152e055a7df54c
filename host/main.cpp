// rivulet-host: loads the driver plug-in as Conflux does and runs a coupled reservoir-network case from a
// scenario file, probes the plug-in's answers to a run's set-up commands, or opens the driver's dialogs.
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "equipment/SerializeXML.h"
#include "host/CoupledRun.h"
#include "host/MachineSetup.h"
#include "host/ModelClient.h"
#include "host/Plugin.h"
#include "host/RunReport.h"
#include "host/Scenario.h"
#include "host/Session.h"

namespace {

std::filesystem::path ExecutableDir() {
    return std::filesystem::canonical("/proc/self/exe").parent_path();
}

// How closely the wells delivered what the network asked, over the wells that flowed on a point inside
// their table: the largest relative difference of the controlled rate, and how many well-steps it covers.
void PrintTracking(const std::vector<host::StepRecord>& steps) {
    double worst = 0.0;
    int counted = 0;
    for (const host::StepRecord& step : steps) {
        for (const host::WellStep& well : step.wells) {
            if (well.asked.shut || well.table.pressure.size() < 2) continue;
            host::InflowTable asked{
                {well.asked.oil}, {well.asked.water}, {well.asked.gas}, {well.asked.pressure}};
            host::InflowTable got{{well.oil}, {well.water}, {well.gas}, {well.bhp}};
            const double wanted = host::ControlledRate(asked, well.phase, 0);
            if (!(wanted > 0.0)) continue;
            worst = std::max(worst, std::fabs(host::ControlledRate(got, well.phase, 0) - wanted) / wanted);
            ++counted;
        }
    }
    std::printf("Delivered against asked: %d well-steps, largest difference %.3f%%\n", counted,
                100.0 * worst);
}

int Run(const std::string& scenarioPath, std::filesystem::path out, bool userConfig, std::string pluginPath) {
    const host::Scenario scenario = host::ReadScenario(scenarioPath);
    if (out.empty()) out = std::filesystem::path("rivulet-run") / scenario.file.stem();
    if (!userConfig) {
        const auto file =
            host::UsePrivateConfiguration(out, ExecutableDir() / "tnav-standin", scenario.cluster);
        std::cerr << "rivulet-host: machine configuration " << file.string() << std::endl;
    }
    if (pluginPath.empty()) pluginPath = host::Plugin::DefaultPath(nullptr);
    host::Plugin plugin(pluginPath);
    host::CoupledRun run(
        plugin, scenario, [](const host::StepRecord& step) { host::PrintStep(std::cout, step); }, std::cerr);
    int status = 0;
    try {
        run.Run();
    } catch (const host::RunError& e) {
        std::cerr << "rivulet-host: " << e.what() << "\nrivulet-host: the simulator has been stopped"
                  << std::endl;
        status = 1;
    }
    // Whatever was run is reported, also when the run stopped early.
    host::WriteCsv(out, run.Steps(), scenario.wellVariables);
    std::string note;
    const auto plots = host::DrawPlots(out, run.Steps(), note);
    PrintTracking(run.Steps());
    host::PrintWellVariables(std::cout, run.Steps(), scenario.wellVariables);
    std::cout << "Results in " << std::filesystem::absolute(out).string() << ": field.csv, wells.csv and "
              << plots.size() << " plots" << std::endl;
    if (!note.empty()) std::cerr << "rivulet-host: " << note << std::endl;
    return status;
}

// Starts the scenario's case, has the driver write its Model document, reads it back and says what it holds.
int Equipment(const std::string& scenarioPath, std::filesystem::path out, bool noVariables, bool userConfig,
              std::string pluginPath) {
    const host::Scenario scenario = host::ReadScenario(scenarioPath);
    if (out.empty()) out = std::filesystem::path("rivulet-run") / scenario.file.stem() / "model.xml";
    out = std::filesystem::absolute(out);
    if (!userConfig)
        host::UsePrivateConfiguration(out.parent_path(), ExecutableDir() / "tnav-standin", scenario.cluster);
    if (pluginPath.empty()) pluginPath = host::Plugin::DefaultPath(nullptr);
    host::Plugin plugin(pluginPath);
    try {
        host::ModelClient model(plugin);
        host::StartScenarioCase(model, scenario, std::cerr);
        model.WriteEquipment(out.string(), noVariables, {});
        model.Stop();
    } catch (const host::RunError& e) {
        std::cerr << "rivulet-host: " << e.what() << std::endl;
        return 1;
    }
    rivulet::CXmlModel document;
    rivulet::CModelXmlReader reader(document);
    if (!reader.LoadFromFile(out.string())) {
        std::cerr << "rivulet-host: " << out.string() << " is not a Model document: " << reader.LoadError()
                  << std::endl;
        return 1;
    }
    std::size_t items = 0, variables = 0, tags = 0;
    for (std::size_t m = 0; m < document.modules.GetSize(); ++m) {
        for (std::size_t d = 0; d < document.modules.GetAt(m)->data.GetSize(); ++d) {
            const auto& equipment = document.modules.GetAt(m)->data.GetAt(d)->equipment;
            items += equipment.GetSize();
            for (std::size_t k = 0; k < equipment.GetSize(); ++k) {
                const auto& list = equipment.GetAt(k)->variables;
                variables += list.GetSize();
                for (std::size_t v = 0; v < list.GetSize(); ++v) tags += list.GetAt(v)->tags.GetSize();
            }
        }
    }
    std::printf(
        "Model document %s (version %s): %zu equipment items (the field and %zu wells), %zu variables, "
        "%zu access strings\n",
        out.string().c_str(), reader.Version().Text().c_str(), items, items > 0 ? items - 1 : 0, variables,
        tags);
    return 0;
}

// Whether a dialog can be shown: on a display, or off screen into the screenshot file (made absolute in
// `file`, and removed beforehand so that only the dialog can have written it). Must run before the plug-in
// is loaded, which reads the environment when it first shows something.
bool PrepareDialogs(const std::string& screenshot, std::filesystem::path& file) {
    if (!screenshot.empty()) {
        file = std::filesystem::absolute(screenshot);
        std::filesystem::remove(file);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
        ::setenv("RIVULET_UI_SCREENSHOT", file.c_str(), 1);
        ::unsetenv("RIVULET_HEADLESS");  // a picture was asked for
        return true;
    }
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') return true;
    }
    std::cerr
        << "rivulet-host: the dialog needs a display (DISPLAY or WAYLAND_DISPLAY), or --screenshot FILE.png "
           "to draw it off screen"
        << std::endl;
    return false;
}

// Says where the dialog's screenshot is; 1 when the front end wrote none.
int ReportScreenshot(const std::filesystem::path& file, const char* dialog) {
    if (file.empty()) return 0;
    if (!std::filesystem::is_regular_file(file)) {
        std::cerr << "rivulet-host: no screenshot of the " << dialog << " was written to " << file.string()
                  << ": the front end (librivulet-ui.so beside the plug-in, or $RIVULET_UI_LIBRARY) was not "
                     "loaded, or RIVULET_HEADLESS is set"
                  << std::endl;
        return 1;
    }
    std::cout << "Screenshot of the " << dialog << ": " << file.string() << std::endl;
    return 0;
}

// Hands a model the scenario's case as a run would, without starting the simulator, and opens the driver's
// case dialog on it.
int EditCase(const std::string& scenarioPath, const std::string& screenshot, std::string pluginPath) {
    const host::Scenario scenario = host::ReadScenario(scenarioPath);
    std::filesystem::path file;
    if (!PrepareDialogs(screenshot, file)) return 1;
    if (pluginPath.empty()) pluginPath = host::Plugin::DefaultPath(nullptr);
    host::Plugin plugin(pluginPath);
    try {
        host::ModelClient model(plugin);
        host::SetScenarioCase(model, scenario);
        bool startAsked = false;
        const std::int32_t answer = model.EditCase(startAsked);
        std::cout << "The case dialog answered " << (answer == 0 ? "OK" : "Cancel")
                  << (startAsked ? ", asking for the simulator to be started" : "") << std::endl;
    } catch (const host::RunError& e) {
        std::cerr << "rivulet-host: " << e.what() << std::endl;
        return 1;
    }
    return ReportScreenshot(file, "case dialog");
}

// Opens the driver's machine configuration dialog, as the host's menu does.
int Configure(const std::string& screenshot, std::string pluginPath) {
    std::filesystem::path file;
    if (!PrepareDialogs(screenshot, file)) return 1;
    if (pluginPath.empty()) pluginPath = host::Plugin::DefaultPath(nullptr);
    host::Plugin plugin(pluginPath);
    host::ErrorRecord err;
    if (plugin.Configure(nullptr, &err) != 0) {
        std::cerr << "rivulet-host: ExtConfigure failed: " << err.text << std::endl;
        return 1;
    }
    std::cout << "The configuration dialog has closed" << std::endl;
    return ReportScreenshot(file, "configuration dialog");
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "rivulet-host: runs coupled reservoir-network cases through the Rivulet plug-in, as Conflux does"};
    app.require_subcommand(1);
    std::string pluginPath;
    app.add_option("--plugin", pluginPath,
                   "the driver plug-in to load (default: ../lib/librivulet.so beside this program)");

    CLI::App* run = app.add_subcommand("run", "run a coupled case described by a scenario file");
    std::string scenario;
    std::string out;
    bool userConfig = false;
    run->add_option("scenario", scenario, "the scenario file (TOML)")->required();
    run->add_option("--out", out,
                    "folder for the CSV files and plots (default: rivulet-run/<scenario name>)");
    run->add_flag("--user-config", userConfig,
                  "use the machine configuration of the user's own store instead of a private one");

    CLI::App* probe = app.add_subcommand("probe", "print the plug-in's answers to a run's set-up commands");
    std::string casePath = RIVULET_EXAMPLE_DECK;
    probe->add_option("--case", casePath, "the reservoir deck to hand the model");

    CLI::App* equipment = app.add_subcommand(
        "equipment",
        "start a scenario's case and write the driver's Model document (its wells and variables)");
    std::string equipmentScenario;
    std::string equipmentOut;
    bool noVariables = false;
    equipment->add_option("scenario", equipmentScenario, "the scenario file (TOML)")->required();
    equipment->add_option("--out", equipmentOut,
                          "the document to write (default: rivulet-run/<scenario name>/model.xml)");
    equipment->add_flag("--no-variables", noVariables, "list the wells without their variables");
    equipment->add_flag("--user-config", userConfig,
                        "use the machine configuration of the user's own store instead of a private one");

    CLI::App* editCase = app.add_subcommand(
        "case", "open the driver's case dialog on a scenario's case, without starting the simulator");
    std::string caseScenario;
    std::string screenshot;
    editCase->add_option("scenario", caseScenario, "the scenario file (TOML)")->required();
    editCase->add_option("--screenshot", screenshot,
                         "draw the dialog off screen into this PNG file instead of running it");
    editCase->fallthrough();

    CLI::App* configure =
        app.add_subcommand("configure", "open the driver's machine configuration dialog (ExtConfigure)");
    configure->add_option("--screenshot", screenshot,
                          "draw the dialog off screen into this PNG file instead of running it");
    configure->fallthrough();

    CLI11_PARSE(app, argc, argv);
    try {
        if (run->parsed()) return Run(scenario, out, userConfig, pluginPath);
        if (equipment->parsed())
            return Equipment(equipmentScenario, equipmentOut, noVariables, userConfig, pluginPath);
        if (editCase->parsed()) return EditCase(caseScenario, screenshot, pluginPath);
        if (configure->parsed()) return Configure(screenshot, pluginPath);
        host::Plugin plugin(pluginPath.empty() ? host::Plugin::DefaultPath(argv[0]) : pluginPath);
        return host::RunSession(plugin, casePath);
    } catch (const std::exception& e) {
        std::cerr << "rivulet-host: " << e.what() << std::endl;
        return 1;
    }
}
