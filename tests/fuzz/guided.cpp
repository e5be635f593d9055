#include "tests/fuzz/guided.h"

#include <algorithm>
#include <bit>
#include <cstdio>

#include "resident/core/windows_api.h"
#include "tests/fuzz/damage.h"
#include "tests/fuzz/edges.h"
#include "tests/support/scratch.h"

static constexpr unsigned int kTrims = 40; // runs that making an input smaller may cost

// Null where the library does not tell its edges.
static const TakenEdges* Told() {
    static const auto edges = reinterpret_cast<decltype(&Edges)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("edges.dll"), "Edges")));
    return edges ? edges() : nullptr;
}

std::vector<std::string> InputFiles(const std::string& folder, const std::string& format) {
    std::vector<std::string> files;
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder + "\\" + format + "-*.bin").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return files;
    do {
        const std::string name = found.cFileName;
        if (name.rfind('-') == format.size()) // and not one of "format-more"
            files.push_back(folder + "\\" + name);
    } while (FindNextFileA(search, &found));
    FindClose(search);
    std::sort(files.begin(), files.end());
    return files;
}

Guided::Guided(const Format& format, const std::string& keep)
    : mFormat(format), mKeep(keep), mSeen(kMostEdges) {}

// How often, roughly: 1, 2, 3, and from there on by powers of two, since a loop once more is
// nothing new; one bit.
static unsigned char Often(unsigned int times) {
    const unsigned int often = times < 4 ? times - 1 : std::bit_width(times);
    return static_cast<unsigned char>(times ? 1 << std::min(often, 7u) : 0);
}

std::vector<Guided::Step> Guided::Steps() const {
    std::vector<Step> steps;
    const TakenEdges* const told = Told();
    for (unsigned int i = 0; told && i < told->count; ++i)
        steps.push_back({told->at[i], Often(told->times[told->at[i]])});
    return steps;
}

std::vector<Guided::Step> Guided::News() const {
    std::vector<Step> news = Steps();
    std::erase_if(news, [&](const Step& step) { return mSeen[step.edge] & step.often; });
    return news;
}

static bool Takes(const std::vector<Guided::Step>& steps) {
    return std::all_of(steps.begin(), steps.end(), [](const Guided::Step& step) {
        return Often(Told()->times[step.edge]) == step.often;
    });
}

// Without whatever the steps do not need.
std::string Guided::Trimmed(Watch& watch, std::string input, const std::vector<Step>& steps) {
    unsigned int runs = 0;
    for (std::size_t size = input.size() / 2; size; size /= 2)
        for (std::size_t at = Input::keChoices; at < input.size() && runs < kTrims;) {
            std::string without = input;
            without.erase(at, size);
            ++runs;
            if (watch.Run(mFormat, without) && Takes(steps))
                input = without;
            else
                at += size;
        }
    return input;
}

void Guided::Keep(const std::string& input) {
    for (const Step& step : Steps())
        mSeen[step.edge] |= step.often;
    mKept.push_back(input);
}

bool Guided::RunKept(Watch& watch, const std::string& input) {
    if (!watch.Run(mFormat, input))
        return false;
    if (!Told() || !News().empty())
        Keep(input);
    return true;
}

bool Guided::RunDamaged(Watch& watch, Random& random) {
    // The newest are the most promising ones.
    const unsigned int count = mKept.size();
    const unsigned int newest = random.OneIn(3) ? std::min(count, 8u) : count;
    std::string input = count ? mKept[count - 1 - random.Below(newest)] : random.Bytes(100);
    input.resize(std::max<std::size_t>(input.size(), Input::keChoices));
    std::string choices = input.substr(0, Input::keChoices), bytes = input.substr(choices.size());
    const std::string other = count ? random.Of(mKept).substr(Input::keChoices) : "";
    for (bool more = true; more; more = !random.OneIn(3)) {
        if (random.OneIn(3))
            choices[random.Below(choices.size())] = static_cast<char>(random.Next());
        else
            Damage(bytes, other, mFormat.words, mFormat.unit, random);
    }
    input = choices + bytes;
    if (!watch.Run(mFormat, input))
        return false;
    const std::vector<Step> news = News();
    if (news.empty())
        return true;
    Keep(input);
    if (mKeep.empty())
        return true;
    mKept.back() = Trimmed(watch, input, news);
    char name[80];
    std::snprintf(name, sizeof name, "\\%s-%08x.bin", mFormat.name.c_str(),
                  static_cast<unsigned int>(std::hash<std::string>()(mKept.back())));
    WriteFileBytes(mKeep + name, mKept.back());
    return true;
}
