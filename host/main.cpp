// rivulet-host: loads the driver plug-in as Conflux does and runs a coupled reservoir-network case from a
// scenario file, or probes the plug-in's answers to a run's set-up commands.
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
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

    CLI11_PARSE(app, argc, argv);
    try {
        if (run->parsed()) return Run(scenario, out, userConfig, pluginPath);
        if (equipment->parsed())
            return Equipment(equipmentScenario, equipmentOut, noVariables, userConfig, pluginPath);
        host::Plugin plugin(pluginPath.empty() ? host::Plugin::DefaultPath(argv[0]) : pluginPath);
        return host::RunSession(plugin, casePath);
    } catch (const std::exception& e) {
        std::cerr << "rivulet-host: " << e.what() << std::endl;
        return 1;
    }
}
