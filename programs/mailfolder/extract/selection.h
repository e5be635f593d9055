#pragma once

#include <optional>
#include <string>

#include "programs/mailfolder/extract/record_text.h"

namespace CLI {
class App;
}

namespace extract {

// Which messages a command takes, by their records: what people search for in them is no matter of
// case.
class Selection {
public:
    // Adds the options; they are valid when the command runs.
    void AddTo(CLI::App& app);

    bool Takes(const DiskDirRec& record, const RecordText& texts) const;
    bool TakesAll() const;

private:
    bool mUnprocessed = false;
    std::string mSince;
    std::string mUntil;
    std::string mFrom;
    std::string mSubject;
    int mKind = -1;
};

// What --charset says.
void AddCharset(CLI::App& app, mime::Charset& charset);

} // namespace extract
