// The works of the library against plain references, or how their cost grows.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "benchmarks/growth.h"
#include "benchmarks/measure.h"
#include "resident/core/windows_api.h"

static nlohmann::json Json(const Quartiles& times) {
    return {{"lower", times.lower}, {"median", times.median}, {"upper", times.upper}};
}

static nlohmann::json Json(const Outcome& outcome) {
    return {{"name", outcome.name},     {"goal", outcome.goal},
            {"ratio", outcome.Ratio()}, {"library", Json(outcome.library)},
            {"runs", outcome.runs},     {"reference", Json(outcome.reference)},
            {"steady", outcome.steady}, {"equal", outcome.equal}};
}

static nlohmann::json Json(const GrowthOutcome& outcome) {
    return {{"name", outcome.name},
            {"counts", outcome.counts},
            {"perRecord", outcome.perRecord},
            {"exponent", outcome.Exponent()},
            {"linear", outcome.Linear()}};
}

// Both print as they go, and return whether all is as it should be.
static bool RunContests(const std::string& folder, const std::string& only, nlohmann::json& json) {
    bool sound = true;
    PrintHeading();
    for (const auto contests : {ListingContests, StoreContests, StringContests, AccountContests,
                                LoadContests, WindowContests, ExtractionContests})
        for (const Contest& contest : contests(folder)) {
            if (contest.name.find(only) == std::string::npos)
                continue;
            const Outcome outcome = Run(contest);
            Print(outcome);
            json["contests"].push_back(Json(outcome));
            sound &= outcome.equal;
        }
    if (only.empty())
        PrintListingMemory(folder);
    return sound;
}

static bool RunGrowths(const std::string& folder, const std::string& only, nlohmann::json& json) {
    bool linear = true;
    std::printf("Least time a record, and the exponent of the growth\n");
    for (const Growth& growth : Growths(folder)) {
        if (growth.name.find(only) == std::string::npos)
            continue;
        const GrowthOutcome outcome = Run(growth);
        Print(outcome);
        json["growth"].push_back(Json(outcome));
        linear &= outcome.Linear();
    }
    return linear;
}

int main(int argc, char** argv) {
    CLI::App app("Measures the library: ratios of medians against plain references in one run.");
    std::string folder = "C:\\Bench";
    std::string jsonFile;
    std::string only;
    bool growth = false;
    app.add_option("--folder", folder, "Where the works' files go");
    app.add_option("--json", jsonFile, "Write the figures into this file, times in seconds");
    app.add_option("--only", only, "Only works with this text in their name");
    app.add_flag("--growth", growth, "Instead, the cost a record from 1,000 to 1,000,000 records");
    CLI11_PARSE(app, argc, argv);

    CreateDirectoryA(folder.c_str(), nullptr);
    nlohmann::json json = nlohmann::json::object();
    const bool sound = growth ? RunGrowths(folder, only, json) : RunContests(folder, only, json);
    if (!jsonFile.empty() && !(std::ofstream(jsonFile) << json.dump(2) << '\n').flush()) {
        std::fprintf(stderr, "cannot write %s\n", jsonFile.c_str());
        return 1;
    }
    return sound ? 0 : 1;
}
