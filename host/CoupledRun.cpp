#include "host/CoupledRun.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "host/ModelClient.h"
#include "host/Network.h"

namespace host {

namespace {

// Node results: twelve field rows, then fourteen rows per well.
enum FieldRow {
    kFieldOil = 0,
    kFieldGas = 1,
    kFieldWater = 2,
    kFieldGasInjection = 4,
    kFieldWaterInjection = 5
};
enum WellRow {
    kOilRate = 0,
    kGasRate = 1,
    kWaterRate = 2,
    kGasInjection = 8,
    kWaterInjection = 9,
    kBhp = 12
};
constexpr int kFirstWellRow = 12;
constexpr int kRowsPerWell = 14;
constexpr double kNoValueAbove = 3.2e35;

// A scenario well with the simulator's index and type.
struct Member {
    const NetworkWell* well;
    std::int32_t index;
    bool injector;
};

// A rate the driver has no value for (a shut well, a row that does not apply) reads as zero; a pressure as
// not a number.
double Rate(double value) {
    return value > kNoValueAbove ? 0.0 : value;
}
double Pressure(double value) {
    return value > kNoValueAbove ? std::numeric_limits<double>::quiet_NaN() : value;
}

// A number the driver gave as text; not a number when it gave none.
double Number(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    return end == text.c_str() ? std::numeric_limits<double>::quiet_NaN() : value;
}

std::vector<Member> Members(const Scenario& scenario, const std::vector<QueriedWell>& queried) {
    std::vector<Member> members;
    for (const NetworkWell& well : scenario.wells) {
        const QueriedWell* found = nullptr;
        for (const QueriedWell& candidate : queried) {
            if (candidate.name == well.name) found = &candidate;
        }
        if (found == nullptr) {
            std::string names;
            for (const QueriedWell& candidate : queried)
                names += (names.empty() ? "" : ", ") + candidate.name;
            throw RunError("the scenario's well " + well.name +
                           " is not in the case; its wells are: " + names);
        }
        if (found->injector && !(scenario.injectionPressure > 0.0)) {
            throw RunError("the well " + well.name +
                           " is an injector: the scenario needs network.injection_pressure for it");
        }
        members.push_back({&well, found->index, found->injector});
    }
    return members;
}

WellStep ReadWellStep(ModelClient& model, const Member& member, const WellInflow& inflow,
                      const OperatingPoint& asked) {
    WellStep step;
    step.name = member.well->name;
    step.injector = member.injector;
    step.phase = member.well->phase;
    step.table = inflow.table;
    step.correction = inflow.correction;
    step.asked = asked;
    const std::int32_t base = kFirstWellRow + kRowsPerWell * member.index;
    if (member.injector) {
        step.gas = Rate(model.NodeResult(base + kGasInjection));
        step.water = Rate(model.NodeResult(base + kWaterInjection));
    } else {
        step.oil = Rate(model.NodeResult(base + kOilRate));
        step.gas = Rate(model.NodeResult(base + kGasRate));
        step.water = Rate(model.NodeResult(base + kWaterRate));
    }
    step.bhp = Pressure(model.NodeResult(base + kBhp));
    return step;
}

}  // namespace

std::vector<CalendarDate> StepDates(const Scenario& scenario, CalendarDate start) {
    std::vector<CalendarDate> dates;
    if (scenario.stepDays > 0.0) {
        for (int k = 1;; ++k) {
            const double serial = std::floor(start.Serial() + k * scenario.stepDays);
            if (serial >= scenario.end.Serial()) break;
            dates.push_back(CalendarDate::FromSerial(serial));
        }
    } else {
        for (const CalendarDate& date : scenario.dates) {
            if (start < date && date < scenario.end) dates.push_back(date);
        }
    }
    if (start < scenario.end) dates.push_back(scenario.end);
    return dates;
}

void SetScenarioCase(ModelClient& model, const Scenario& scenario) {
    const std::string details = "TNAVIGATOR.CaseDetails.";
    model.SetVar(details + "IsLocalMachine", scenario.cluster ? "0" : "1");
    if (scenario.cluster) {
        model.SetVar(details + "HeadNodeName", scenario.cluster->headNode);
        model.SetVar(details + "HeadNodePort", std::to_string(scenario.cluster->port));
    }
    model.SetVar(details + "FileName", scenario.caseFile.string());
    for (const auto& [name, value] : scenario.settings) model.SetVar(details + name, value);
}

void StartScenarioCase(ModelClient& model, const Scenario& scenario, std::ostream& progress) {
    SetScenarioCase(model, scenario);
    progress << "rivulet-host: starting the simulator on " << scenario.caseFile.string() << std::endl;
    model.StartSimulator();
}

CoupledRun::CoupledRun(Plugin& plugin, const Scenario& scenario,
                       std::function<void(const StepRecord&)> onStep, std::ostream& progress)
    : plugin_(plugin), scenario_(scenario), onStep_(std::move(onStep)), progress_(progress) {}

void CoupledRun::Run() {
    ModelClient model(plugin_);
    StartScenarioCase(model, scenario_, progress_);
    if (scenario_.correctedInflow) {
        progress_ << "rivulet-host: calibrating the inflow correction on the case" << std::endl;
        model.DoCmd("TNAVIGATOR.CalculateIprCorrection");
    }
    const std::vector<Member> members = Members(scenario_, model.QueryWells());
    const CalendarDate deckStart = model.StartDate();
    const CalendarDate start = scenario_.start.value_or(deckStart);
    if (start < deckStart) {
        throw RunError("the scenario starts on " + start.Text() + ", before the deck's start " +
                       deckStart.Text());
    }
    std::vector<Connection> connections;
    for (const Member& member : members) {
        connections.push_back({member.index, member.injector, member.well->phase});
    }
    if (deckStart < start)
        progress_ << "rivulet-host: running to the start date " << start.Text() << std::endl;
    model.Initialise(connections, start, scenario_.end);
    for (const Member& member : members) model.SetConnection(member.index, true);

    const std::vector<CalendarDate> dates = StepDates(scenario_, start);
    for (std::size_t n = 0; n < dates.size(); ++n) {
        std::vector<WellInflow> inflows;
        for (const Member& member : members) {
            WellInflow& inflow =
                inflows.emplace_back(WellInflow{member.well, member.injector, model.GetIpr(member.index)});
            if (scenario_.correctedInflow)
                inflow.correction =
                    Number(model.GetVar("TNAVIGATOR.WELL[{" + member.well->name + "}].IprCorrection"));
        }
        const NetworkSolution solution = SolveNetwork(inflows, scenario_);
        for (std::size_t k = 0; k < members.size(); ++k) {
            // Before its first table (a run that starts on the deck's first day) a well stays under the
            // deck's own control for one step.
            if (inflows[k].table.pressure.size() < 2) continue;
            model.SetOperatingPoint(members[k].index, solution.points[k]);
        }
        model.Timestep(dates[n]);

        StepRecord step;
        step.date = dates[n];
        step.days = dates[n].Serial() - start.Serial();
        step.manifoldPressure = solution.manifoldPressure;
        step.limited = solution.limited;
        step.oil = Rate(model.NodeResult(kFieldOil));
        step.gas = Rate(model.NodeResult(kFieldGas));
        step.water = Rate(model.NodeResult(kFieldWater));
        step.gasInjection = Rate(model.NodeResult(kFieldGasInjection));
        step.waterInjection = Rate(model.NodeResult(kFieldWaterInjection));
        for (std::size_t k = 0; k < members.size(); ++k) {
            WellStep& well =
                step.wells.emplace_back(ReadWellStep(model, members[k], inflows[k], solution.points[k]));
            const std::string prefix = "TNAVIGATOR.WELL[{" + well.name + "}].";
            for (const std::string& variable : scenario_.wellVariables)
                well.variables.push_back(model.GetVar(prefix + variable));
        }
        steps_.push_back(step);
        progress_ << "rivulet-host: step " << n + 1 << "/" << dates.size() << " to " << dates[n].Text()
                  << " done" << std::endl;
        if (onStep_) onStep_(steps_.back());
    }
    model.Stop();
}

}  // namespace host
