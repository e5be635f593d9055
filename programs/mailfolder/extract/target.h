#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "programs/mailfolder/extract/files.h"
#include "programs/mailfolder/extract/internet_message.h"

namespace extract {

enum class TargetFormat { Mbox, Maildir, Eml };

// The messages that a target holds already, in few bytes.
class KnownMessages {
public:
    void Add(const Identity& identity) { mSorted.push_back(identity); }
    void Sort();
    bool Has(const Identity& identity) const;

private:
    std::vector<Identity> mSorted;
};

// Where the messages of one folder go. Each is whole before it can be seen, and comes once, however
// often and with whatever interruptions the same folder is taken out.
class Target {
public:
    virtual ~Target() = default;

    bool Has(const Identity& identity) const { return mKnown.Has(identity); }
    // Takes the message in, and returns the path or, in an mbox, the file that it is in. Throws
    // what is Unreadable of the message, and nothing of it stays.
    virtual Path Put(const InternetMessage& message) = 0;
    // All of them are there: what could not be seen before can be now.
    virtual void Complete() {}
    // Whether nothing of what was put stays unless it is completed.
    virtual bool ComesWhole() const { return false; }

protected:
    KnownMessages mKnown;
};

struct TargetOptions {
    TargetFormat format = TargetFormat::Mbox;
    bool append = false; // to an mbox that is there
    char flagSeparator = '!';
};

// Opens or makes it: a file for an mbox, else a folder. The folder of `path` is there.
std::unique_ptr<Target> OpenTarget(const Path& path, const TargetOptions& options);

// Removes what ended programs left of new files in a folder.
void RemoveLeftovers(const Path& folder);

// A name for a folder or file that any file system takes: without what some cannot have in it, of a
// device, or at its end.
std::wstring SafeName(const std::wstring& name);
// In plain characters alone: ASCII letters, digits and a few signs.
std::wstring PlainName(std::wstring_view text);

} // namespace extract
