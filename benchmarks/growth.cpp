#include "benchmarks/growth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "resident/core/windows_api.h"
#include "system/store/directory_file.h"
#include "ticker/ticker.h"

// What the caches no longer hold costs more: a step may be that much steeper than a line.
static constexpr double kMostExponent = 1.25;
// The next count is not tried when the step before makes it expected to take longer.
static constexpr double kMostSeconds = 60;

static double Slope(const GrowthOutcome& outcome, std::size_t step) {
    return 1 + std::log(outcome.perRecord[step] / outcome.perRecord[step - 1]) /
                   std::log(double(outcome.counts[step]) / outcome.counts[step - 1]);
}

double GrowthOutcome::Exponent() const {
    // What a cache or the disk no longer takes makes one step steep; growth goes on.
    const std::size_t steps = perRecord.empty() ? 0 : perRecord.size() - 1;
    double exponent = steps ? Slope(*this, steps) : 1;
    if (steps > 1)
        exponent = std::min(exponent, Slope(*this, steps - 1));
    return exponent;
}

bool GrowthOutcome::Linear() const { return Exponent() <= kMostExponent; }

// The least of some rounds: growth is no matter of what else the machine does.
static double LeastTime(const Growth& growth, unsigned int count) {
    double least = 1e9;
    double spent = 0;
    for (int round = 0; round < 3 || (round < 50 && spent < 0.5); ++round) {
        growth.prepare(count);
        const double start = Seconds();
        growth.work();
        const double taken = Seconds() - start;
        least = std::min(least, taken);
        spent += taken;
    }
    return least;
}

GrowthOutcome Run(const Growth& growth) {
    GrowthOutcome outcome = {growth.name, {}, {}};
    for (const unsigned int count : growth.counts) {
        const std::size_t held = outcome.perRecord.size();
        if (held > 1) {
            const double exponent = std::max(Slope(outcome, held - 1), 1.0);
            const unsigned int last = outcome.counts.back();
            if (outcome.perRecord.back() * last * std::pow(double(count) / last, exponent) >
                kMostSeconds)
                break;
        }
        const double least = LeastTime(growth, count);
        outcome.counts.push_back(count);
        outcome.perRecord.push_back(least / count);
    }
    return outcome;
}

void Print(const GrowthOutcome& outcome) {
    std::printf("%-30s", outcome.name.c_str());
    for (std::size_t i = 0; i < outcome.counts.size(); ++i)
        std::printf("  %8u: %9.3f us", outcome.counts[i], outcome.perRecord[i] * 1e6);
    std::printf("   n^%.2f%s\n", outcome.Exponent(), outcome.Linear() ? "" : "   NOT LINEAR");
    std::fflush(stdout);
}

static void List(const std::string& path) {
    char *topic, *fileName, *sender;
    unsigned short kind, flag;
    int more = GetFirstRecord(path.c_str(), &topic, &fileName, &sender, &kind, &flag);
    while (more)
        more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag);
    Done();
}

static void Collect(const std::string& path) {
    DirectoryFile file(keDirFolder);
    file.SetSpecPart(path.c_str(), 0);
    RB_Container<DirectoryRecord> list(RB_Container<DirectoryRecord>::keOwnsObjects);
    file.GetUnprocessedDDRs(&list, nullptr, keGetProcessable);
}

std::vector<Growth> Growths(const std::string& folder) {
    const std::vector<unsigned int> records = {1000, 10000, 100000, 1000000};
    const std::vector<unsigned int> files = {1000, 5000, 20000};
    const std::string path = folder + "\\GROWTH.DAT";
    const std::string messages = folder + "\\Growth";

    // Files that no work changes are made once for each count.
    const auto make = [path, made = 0u](unsigned int count) mutable {
        if (made != count)
            WriteDFile(path, count);
        made = count;
    };
    const auto onFile = [path](TypeDirFile type, auto work) {
        return [=] {
            BaseDirFile file(type);
            file.SetSpecPart(path.c_str(), 0);
            work(file);
        };
    };
    const auto last = [path] {
        DiskDirRec record;
        ReadLastRecord(path, record);
        return DirectoryRecord(&record);
    };
    return {
        {"list", records, make, [path] { List(path); }},
        {"count", records, make, onFile(keDirFolder, [](auto& file) { file.GetInfo(keInfoAll); })},
        {"find the last", records, make,
         onFile(keDirFolder,
                [last](auto& file) {
                    DirectoryRecord probe = last();
                    file.FindRecord(probe, keFindPosition);
                })},
        {"mark the last", records, make,
         onFile(keDirFolder,
                [last](auto& file) {
                    DirectoryRecord probe = last();
                    file.MarkRecord(probe, keMarkProcessed);
                })},
        {"collect all", records,
         [path](unsigned int count) { WriteDFile(path, ProcessableRecords(count)); },
         [path] { Collect(path); }},
        {"compress, half free", records, [path](unsigned int count) { WriteDFile(path, count, 2); },
         onFile(keDirFolder, [](auto& file) { file.CompressDFile(); })},
        {"rebuild from message files", files,
         [messages, made = 0u](unsigned int count) mutable {
             WriteMessages(messages, made, count);
             made = count;
         },
         [messages] {
             BaseDirFile file(keDirMessages);
             file.SetSpecPart((messages + "\\CREATED.DAT").c_str(), 0);
             file.CreateDFile();
         }},
    };
}
