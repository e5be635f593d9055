#include "programs/mailfolder/extract/selection.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdio>

#include "programs/console/text.h"
#include "programs/mailfolder/path.h"

namespace extract {

using namespace std::chrono;

// A day as "1998-03-05", in seconds from 1904-01-01; none for anything else, or a day out of the
// range that records can hold.
static std::optional<unsigned long> DayOf(const std::string& text) {
    int y = 0;
    unsigned m = 0;
    unsigned d = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%4d-%2u-%2u%c", &y, &m, &d, &rest) != 3)
        return {};
    const year_month_day date = year(y) / month(m) / day(d);
    constexpr sys_days kEpoch(year(1904) / January / 1);
    constexpr sys_days kLast(year(2040) / February / 5);
    if (!date.ok() || sys_days(date) < kEpoch || sys_days(date) > kLast)
        return {};
    return static_cast<unsigned long>(seconds(sys_days(date) - kEpoch).count());
}

void Selection::AddTo(CLI::App& app) {
    const CLI::Validator isDay(
        [](const std::string& text) {
            return DayOf(text) ? std::string()
                               : "\"" + text + "\" is no day between 1904-01-01 and 2040-02-05";
        },
        "YYYY-MM-DD");
    app.add_flag("--unprocessed", mUnprocessed, "Only messages that are not processed");
    app.add_option("--since", mSince, "Only messages of this day and later ones")->check(isDay);
    app.add_option("--until", mUntil, "Only messages of this day and earlier ones")->check(isDay);
    app.add_option("--from", mFrom, "Only messages whose sender's name or address has this text");
    app.add_option("--subject", mSubject, "Only messages whose topic has this text");
    app.add_option("--kind", mKind, "Only messages of this kind")->check(CLI::Range(0, 5));
}

bool Selection::TakesAll() const {
    return !mUnprocessed && mSince.empty() && mUntil.empty() && mFrom.empty() && mSubject.empty() &&
           mKind < 0;
}

static bool Contains(const std::wstring& text, const std::string& wanted) {
    return FoldCase(text).find(FoldCase(WideOfUtf8(wanted))) != text.npos;
}

bool Selection::Takes(const DiskDirRec& record, const RecordText& texts) const {
    constexpr unsigned long kDay = 86400;
    const unsigned long date = FlipLong(record.date);
    if (mUnprocessed && (record.status & keStatusProcessed))
        return false;
    if (!mSince.empty() && date < *DayOf(mSince))
        return false;
    if (!mUntil.empty() && date >= *DayOf(mUntil) + kDay)
        return false;
    if (mKind >= 0 && record.kind != mKind)
        return false;
    if (!mFrom.empty() && !Contains(texts.sender, mFrom) &&
        !Contains({texts.senderAddress.begin(), texts.senderAddress.end()}, mFrom))
        return false;
    return mSubject.empty() || Contains(texts.topic, mSubject);
}

void AddCharset(CLI::App& app, mime::Charset& charset) {
    app.add_option_function<std::string>(
           "--charset",
           [&charset](const std::string& name) { charset = *mime::CharsetNamed(name); },
           "The character set of records, and of texts that do not tell theirs")
        ->check(CLI::IsMember({"windows-1252", "macintosh", "utf-8"}))
        ->default_str("windows-1252");
}

} // namespace extract
