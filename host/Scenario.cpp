// The scenario reader: a TOML file checked key by key, every fault reported with the file, the line of the
// offending value (or of its table when a key is missing) and what was expected there.
#include "host/Scenario.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <map>
#include <string_view>
#include <system_error>

#include <toml++/toml.h>

namespace host {

namespace {

namespace fs = std::filesystem;

using Entries = std::vector<std::pair<std::string, const toml::node*>>;

// A table's entries in the order of the file; toml++ keeps them sorted by key.
Entries InFileOrder(const toml::table& table) {
    Entries entries;
    for (const auto& [key, node] : table) entries.emplace_back(std::string(key.str()), &node);
    std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        const toml::source_position& p = a.second->source().begin;
        const toml::source_position& q = b.second->source().begin;
        return p.line != q.line ? p.line < q.line : p.column < q.column;
    });
    return entries;
}

std::optional<double> NumberOf(const toml::node& node) {
    if (const auto* integer = node.as_integer()) return static_cast<double>(integer->get());
    if (const auto* floating = node.as_floating_point()) return floating->get();
    return std::nullopt;
}

// Shortest text that reads back as the same number.
std::string FloatText(double value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

std::string Item(std::string_view array, std::size_t index) {
    return std::string(array) + "[" + std::to_string(index + 1) + "]";
}

class ScenarioReader {
  public:
    explicit ScenarioReader(const fs::path& file) : File(file.string()) { Result.file = file; }

    Scenario Read() {
        const toml::table root = Parse();
        CheckKeys(root,
                  {"case", "settings", "run", "network", "tubing", "well", "cluster", "report", "inflow"},
                  "");
        ReadCase(root);
        if (const toml::node* settings = root.get("settings")) ReadSettings(TableOf(*settings, "settings"));
        ReadRun(RequiredTable(root, "run"));
        ReadNetwork(RequiredTable(root, "network"));
        if (const toml::node* tubing = root.get("tubing")) ReadCurves(TableOf(*tubing, "tubing"));
        ReadWells(root);
        if (const toml::node* cluster = root.get("cluster")) ReadCluster(TableOf(*cluster, "cluster"));
        if (const toml::node* report = root.get("report")) ReadReport(TableOf(*report, "report"));
        if (const toml::node* inflow = root.get("inflow")) ReadInflow(TableOf(*inflow, "inflow"));
        return std::move(Result);
    }

  private:
    [[noreturn]] void Fail(toml::source_index line, const std::string& what) const {
        throw ScenarioError(File + ":" + std::to_string(std::max<toml::source_index>(line, 1)) + ": " + what);
    }
    [[noreturn]] void Fail(const toml::node& at, const std::string& what) const {
        Fail(at.source().begin.line, what);
    }
    [[noreturn]] void Expected(const toml::node& at, std::string_view path, std::string_view what) const {
        Fail(at, std::string(path) + ": expected " + std::string(what));
    }

    toml::table Parse() const {
        std::error_code error;
        std::ifstream in(Result.file, std::ios::binary);
        if (!fs::is_regular_file(Result.file, error) || !in) throw ScenarioError(File + ": cannot be read");
        const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        if (in.bad()) throw ScenarioError(File + ": cannot be read");
        try {
            return toml::parse(text, File);
        } catch (const toml::parse_error& e) {
            Fail(e.source().begin.line, std::string(e.description()));
        }
    }

    // Unknown keys are refused: they are most often typing slips.
    void CheckKeys(const toml::table& table, std::initializer_list<std::string_view> known,
                   const std::string& where) const {
        for (const auto& [key, node] : InFileOrder(table)) {
            if (std::find(known.begin(), known.end(), key) == known.end())
                Fail(*node, "unknown key '" + key + "'" + (where.empty() ? "" : " in " + where));
        }
    }

    const toml::table& TableOf(const toml::node& node, std::string_view path) const {
        if (!node.is_table()) Expected(node, path, "a table");
        return *node.as_table();
    }

    const toml::table& RequiredTable(const toml::table& root, std::string_view name) const {
        const toml::node* node = root.get(name);
        if (node == nullptr) Fail(root, "missing table [" + std::string(name) + "]");
        return TableOf(*node, name);
    }

    const toml::node& Required(const toml::table& table, std::string_view key,
                               const std::string& where) const {
        const toml::node* node = table.get(key);
        if (node == nullptr)
            Fail(table, "missing key '" + std::string(key) + "'" + (where.empty() ? "" : " in " + where));
        return *node;
    }

    std::string Text(const toml::node& node, std::string_view path, std::string_view what) const {
        if (!node.is_string()) Expected(node, path, what);
        return node.as_string()->get();
    }

    CalendarDate Date(const toml::node& node, std::string_view path) const {
        if (!node.is_date()) Expected(node, path, "a date like 2016-01-01");
        const toml::date date = node.as_date()->get();
        return CalendarDate{date.year, date.month, date.day};
    }

    // A finite number above 0, or at least 0 when `zeroAllowed`; integers stand for floats.
    double Number(const toml::node& node, std::string_view path, std::string_view what,
                  bool zeroAllowed = false) const {
        const std::optional<double> value = NumberOf(node);
        if (!value || !std::isfinite(*value) || *value < 0.0 || (*value == 0.0 && !zeroAllowed))
            Expected(node, path, what);
        return *value;
    }

    std::optional<double> OptionalNumber(const toml::table& table, std::string_view key,
                                         std::string_view path, std::string_view what) const {
        const toml::node* node = table.get(key);
        if (node == nullptr) return std::nullopt;
        return Number(*node, path, what);
    }

    void ReadCase(const toml::table& root) {
        const toml::node& node = Required(root, "case", "");
        fs::path path = Text(node, "case", "the path of a case file");
        if (path.is_relative()) path = Result.file.parent_path() / path;
        std::error_code error;
        path = fs::absolute(path, error).lexically_normal();
        if (error || !fs::is_regular_file(path, error)) Fail(node, "case: file not found: " + path.string());
        Result.caseFile = path;
    }

    void ReadSettings(const toml::table& settings) {
        for (const auto& [key, node] : InFileOrder(settings)) {
            std::string value;
            if (const auto* integer = node->as_integer()) {
                value = std::to_string(integer->get());
            } else if (const auto* floating = node->as_floating_point()) {
                value = FloatText(floating->get());
            } else if (const auto* flag = node->as_boolean()) {
                value = flag->get() ? "1" : "0";
            } else if (const auto* text = node->as_string()) {
                value = text->get();
            } else {
                Expected(*node, "settings." + key, "an integer, float, string or boolean");
            }
            Result.settings.emplace_back(key, std::move(value));
        }
    }

    void ReadRun(const toml::table& run) {
        CheckKeys(run, {"start", "end", "step_days", "dates"}, "[run]");
        if (const toml::node* start = run.get("start")) Result.start = Date(*start, "run.start");
        const toml::node& end = Required(run, "end", "[run]");
        Result.end = Date(end, "run.end");
        const std::string afterStart = Result.start ? "a date after run.start, " + Result.start->Text() : "";
        if (Result.start && !(*Result.start < Result.end)) Expected(end, "run.end", afterStart);

        const toml::node* step = run.get("step_days");
        const toml::node* dates = run.get("dates");
        if (step == nullptr && dates == nullptr) Fail(run, "missing key 'step_days' or 'dates' in [run]");
        if (step != nullptr && dates != nullptr) {
            const bool datesLater = step->source().begin.line < dates->source().begin.line;
            Fail(datesLater ? *dates : *step, "run: expected step_days or dates, not both");
        }
        if (step != nullptr) {
            Result.stepDays = Number(*step, "run.step_days", "a number of days above 0");
            return;
        }
        const toml::array* list = dates->as_array();
        if (list == nullptr || list->empty()) Expected(*dates, "run.dates", "a non-empty array of dates");
        for (std::size_t k = 0; k < list->size(); ++k) {
            const toml::node& node = *list->get(k);
            const std::string path = Item("run.dates", k);
            const CalendarDate date = Date(node, path);
            if (k > 0 && !(Result.dates.back() < date))
                Expected(node, path, "a date after " + Result.dates.back().Text());
            if (Result.start && !(*Result.start < date)) Expected(node, path, afterStart);
            if (Result.end < date) Expected(node, path, "a date not after run.end, " + Result.end.Text());
            Result.dates.push_back(date);
        }
    }

    void ReadNetwork(const toml::table& network) {
        CheckKeys(network,
                  {"manifold_pressure", "injection_pressure", "oil_limit", "gas_limit", "water_limit"},
                  "[network]");
        constexpr std::string_view pressure = "a pressure in psig above 0";
        Result.manifoldPressure = Number(Required(network, "manifold_pressure", "[network]"),
                                         "network.manifold_pressure", pressure);
        Result.injectionPressure =
            OptionalNumber(network, "injection_pressure", "network.injection_pressure", pressure)
                .value_or(0.0);
        Result.limits.oil =
            OptionalNumber(network, "oil_limit", "network.oil_limit", "a rate in STB/day above 0");
        Result.limits.gas =
            OptionalNumber(network, "gas_limit", "network.gas_limit", "a rate in MMscf/day above 0");
        Result.limits.water =
            OptionalNumber(network, "water_limit", "network.water_limit", "a rate in STB/day above 0");
    }

    // The hydrostatic and friction terms of a curve table or of a well's own table; absent terms are 0.
    TubingCurve Terms(const toml::table& table, const std::string& path) const {
        TubingCurve curve;
        if (const toml::node* node = table.get("hydrostatic"))
            curve.hydrostatic = Number(*node, path + "hydrostatic", "a pressure in psi, 0 or more", true);
        if (const toml::node* node = table.get("friction"))
            curve.friction = Number(*node, path + "friction", "a number, 0 or more", true);
        return curve;
    }

    void ReadCurves(const toml::table& tubing) {
        for (const auto& [name, node] : InFileOrder(tubing)) {
            const std::string path = "tubing." + name;
            if (!node->is_table()) Expected(*node, path, "a table of hydrostatic and friction");
            CheckKeys(*node->as_table(), {"hydrostatic", "friction"}, "[" + path + "]");
            Curves[name] = Terms(*node->as_table(), path + ".");
        }
    }

    void ReadWells(const toml::table& root) {
        const toml::node* node = root.get("well");
        if (node == nullptr) Fail(root, "missing table [[well]]");
        const toml::array* wells = node->as_array();
        if (wells == nullptr || wells->empty()) Expected(*node, "well", "at least one [[well]] table");
        for (std::size_t k = 0; k < wells->size(); ++k) Result.wells.push_back(ReadWell(*wells->get(k), k));
    }

    NetworkWell ReadWell(const toml::node& node, std::size_t index) const {
        const std::string where = Item("well", index);
        const toml::table& table = TableOf(node, where);
        CheckKeys(table, {"name", "phase", "tubing", "hydrostatic", "friction"}, where);
        NetworkWell well;
        const toml::node& name = Required(table, "name", where);
        well.name = Text(name, where + ".name", "a well name");
        if (well.name.empty()) Expected(name, where + ".name", "a well name");
        for (std::size_t k = 0; k < Result.wells.size(); ++k) {
            if (Result.wells[k].name == well.name)
                Fail(name, where + ".name: '" + well.name + "' already names " + Item("well", k));
        }

        if (const toml::node* phase = table.get("phase")) {
            static const std::map<std::string, NetworkPhase, std::less<>> phases = {
                {"water", NetworkPhase::kWater},
                {"liquid", NetworkPhase::kLiquid},
                {"gas", NetworkPhase::kGas},
                {"default", NetworkPhase::kDefault}};
            const auto* text = phase->as_string();
            const auto found = text != nullptr ? phases.find(text->get()) : phases.end();
            if (found == phases.end())
                Expected(*phase, where + ".phase", "one of water, liquid, gas, default");
            well.phase = found->second;
        }

        well.tubing = Terms(table, where + ".");
        if (const toml::node* tubing = table.get("tubing")) {
            if (table.contains("hydrostatic") || table.contains("friction"))
                Expected(*tubing, where + ".tubing", "a named curve or hydrostatic and friction, not both");
            const std::string curve = Text(*tubing, where + ".tubing", "the name of a [tubing] curve");
            const auto found = Curves.find(curve);
            if (found == Curves.end()) Fail(*tubing, where + ".tubing: no curve '" + curve + "' in [tubing]");
            well.tubing = found->second;
        }
        return well;
    }

    void ReadCluster(const toml::table& cluster) {
        CheckKeys(cluster, {"head_node", "port", "user", "password"}, "[cluster]");
        ClusterTarget target;
        target.headNode = Text(Required(cluster, "head_node", "[cluster]"), "cluster.head_node", "a string");
        const toml::node& port = Required(cluster, "port", "[cluster]");
        const auto* number = port.as_integer();
        if (number == nullptr || number->get() < 1024 || number->get() > 65535)
            Expected(port, "cluster.port", "an integer from 1024 to 65535");
        target.port = static_cast<int>(number->get());
        target.user = Text(Required(cluster, "user", "[cluster]"), "cluster.user", "a string");
        target.password = Text(Required(cluster, "password", "[cluster]"), "cluster.password", "a string");
        Result.cluster = std::move(target);
    }

    // A corrected inflow is the case's "Corrected" inflow model, whatever [settings] says of it.
    void ReadInflow(const toml::table& inflow) {
        CheckKeys(inflow, {"corrected"}, "[inflow]");
        const toml::node* node = inflow.get("corrected");
        if (node == nullptr) return;
        if (!node->is_boolean()) Expected(*node, "inflow.corrected", "true or false");
        Result.correctedInflow = node->as_boolean()->get();
        if (Result.correctedInflow) Result.settings.emplace_back("IprModel", "2");
    }

    void ReadReport(const toml::table& report) {
        CheckKeys(report, {"well_variables"}, "[report]");
        const toml::node* node = report.get("well_variables");
        if (node == nullptr) return;
        const toml::array* list = node->as_array();
        if (list == nullptr) Expected(*node, "report.well_variables", "an array of well variable names");
        for (std::size_t k = 0; k < list->size(); ++k) {
            const toml::node& item = *list->get(k);
            const std::string path = Item("report.well_variables", k);
            const std::string name = Text(item, path, "a well variable name such as \"Bhp\"");
            if (name.empty() || name.find_first_of(" \t") != std::string::npos)
                Expected(item, path, "a well variable name such as \"Bhp\"");
            if (std::find(Result.wellVariables.begin(), Result.wellVariables.end(), name) !=
                Result.wellVariables.end())
                Fail(item, path + ": '" + name + "' is listed already");
            Result.wellVariables.push_back(name);
        }
    }

    const std::string File;
    Scenario Result;
    std::map<std::string, TubingCurve, std::less<>> Curves;
};

}  // namespace

Scenario ReadScenario(const std::filesystem::path& file) {
    return ScenarioReader(file).Read();
}

}  // namespace host
