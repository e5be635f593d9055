#include "programs/mailfolder/extract/target.h"

#include <algorithm>

#include "programs/console/text.h"
#include "programs/mailfolder/failure.h"
#include "programs/mailfolder/kind.h"
#include "programs/mime/maildir.h"
#include "programs/mime/mbox.h"

namespace extract {

static constexpr std::wstring_view kNewSuffix = L".mailfolder-new";

void KnownMessages::Sort() { std::sort(mSorted.begin(), mSorted.end()); }

bool KnownMessages::Has(const Identity& identity) const {
    return std::binary_search(mSorted.begin(), mSorted.end(), identity);
}

void RemoveLeftovers(const Path& folder) {
    for (const Entry& entry : EntriesOf(folder))
        if (!entry.isFolder && entry.name.ends_with(kNewSuffix) &&
            IsLeftover(folder.Child(entry.name)))
            DeleteFileW(folder.Child(entry.name).Full().c_str());
}

std::wstring SafeName(const std::wstring& name) {
    std::wstring safe = name;
    for (wchar_t& c : safe)
        if (c < 0x20 || std::wstring_view(L"\\/:*?\"<>|").find(c) != std::wstring::npos)
            c = L'_';
    while (!safe.empty() && (safe.back() == L'.' || safe.back() == L' '))
        safe.pop_back();
    std::wstring stem = FoldCase(safe.substr(0, safe.find(L'.')));
    while (!stem.empty() && stem.back() == L' ')
        stem.pop_back();
    const bool hasNumber =
        stem.size() == 4 && (stem.starts_with(L"COM") || stem.starts_with(L"LPT"));
    if (safe.empty() || stem == L"CON" || stem == L"PRN" || stem == L"AUX" || stem == L"NUL" ||
        hasNumber)
        safe.insert(0, 1, L'_');
    return safe;
}

std::wstring PlainName(std::wstring_view text) {
    // Letters apart from their marks; the marks go.
    std::wstring apart(4 * text.size() + 1, L'\0');
    apart.resize(text.empty()
                     ? 0
                     : FoldStringW(MAP_COMPOSITE, text.data(), static_cast<int>(text.size()),
                                   apart.data(), static_cast<int>(apart.size())));
    std::wstring plain;
    for (const wchar_t c : apart) {
        const bool isMark = c >= 0x300 && c < 0x370;
        const bool isPlain = (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'Z') ||
                             (c >= L'a' && c <= L'z') ||
                             std::wstring_view(L" ._-()+,").find(c) != std::wstring::npos;
        if (isMark)
            continue;
        const wchar_t shown = isPlain ? c : L'_';
        if (plain.empty() || shown != plain.back() || (shown != L' ' && shown != L'.'))
            plain += shown;
    }
    plain.erase(0, std::min(plain.find_first_not_of(L" ."), plain.size()));
    plain.erase(plain.find_last_not_of(L" .") + 1);
    return plain;
}

namespace {

// Writes lines into a new file.
class LineWriter : public mime::LineSink {
public:
    LineWriter(NewFile& file, std::string_view lineEnd) : mFile(file), mLineEnd(lineEnd) {}
    void Text(std::string_view piece) override { mFile.Write(piece); }
    void EndLine() override { mFile.Write(mLineEnd); }

private:
    NewFile& mFile;
    std::string_view mLineEnd;
};

constexpr std::string_view kLf = "\n";
constexpr std::string_view kCrLf = "\r\n";

// Finds the messages of an mbox that this program wrote: their identity is their first line.
class MboxScan : public mime::LineSink {
public:
    explicit MboxScan(KnownMessages& known) : mKnown(known) {}
    void Text(std::string_view piece) override {
        // Longer lines are neither of the two that count.
        if (mLine.size() < 100)
            mLine += piece.substr(0, 100);
    }
    void EndLine() override {
        if (const auto identity = Identity::OfLine(mLine); identity && mAfterSeparator)
            mKnown.Add(*identity);
        mAfterSeparator = mime::IsSeparatorLine(mLine);
        mLine.clear();
    }

private:
    KnownMessages& mKnown;
    std::string mLine;
    bool mAfterSeparator = false;
};

// An mbox becomes whole or not at all: what is new is written behind a copy of what is there, which
// then takes its place. While that lasts, nobody else writes to it.
class MboxTarget : public Target {
public:
    MboxTarget(const Path& path, bool append);
    Path Put(const InternetMessage& message) override;
    void Complete() override;
    bool ComesWhole() const override { return true; }

private:
    void CheckReplaceable() const;
    void PutBackOld();
    void CheckOld();
    void ForEachOldPiece(const std::function<void(std::string_view)>& take) const;
    void CopyOld();

    Path mPath;
    Path mOldPath; // while the new one takes its place
    bool mAppend;
    NewFile mNew;
    FileHandle mOld;
    bool mBegun = false;
};

MboxTarget::MboxTarget(const Path& path, bool append)
    : mPath(path), mOldPath(path.Beside(path.Name() + L".mailfolder-old")), mAppend(append),
      mNew(path) {
    PutBackOld();
    if (!Exists(mPath))
        return;
    if (mAppend)
        CheckReplaceable();
    // Others read on, and it can be renamed under this handle.
    mOld = FileHandle(
        CreateFileW(mPath.Full().c_str(), GENERIC_READ,
                    FILE_SHARE_READ | FILE_SHARE_DELETE | (mAppend ? 0 : FILE_SHARE_WRITE), nullptr,
                    OPEN_EXISTING, 0, nullptr));
    if (!mOld)
        Fail("Cannot read {}: {}.", mPath.Shown(), LastErrorText());
    MboxScan scan(mKnown);
    mime::LineSplitter lines(scan);
    bool first = true;
    ForEachOldPiece([&](std::string_view piece) {
        if (first && !mime::IsSeparatorLine(piece))
            Fail("{} is there, and is no mbox.", mPath.Shown());
        first = false;
        lines.Add(piece);
    });
    mKnown.Sort();
}

// The new one takes its place: not that of the link, and not against anybody's will.
void MboxTarget::CheckReplaceable() const {
    if (mPath.What() == Path::keLink)
        Fail("{} is a link: name the file that it leads to.", mPath.Shown());
    if (GetFileAttributesW(mPath.Full().c_str()) & FILE_ATTRIBUTE_READONLY)
        Fail("{} is read-only.", mPath.Shown());
}

// Reads as ReadAt does; for what stands in the target no message is to blame.
static std::size_t ReadOld(const Path& path, const FileHandle& file, unsigned long long position,
                           std::string& piece) {
    const auto size = ReadFileAt(file, position, piece.data(), piece.size());
    if (!size)
        Fail("Cannot read {}: {}.", path.Shown(), LastErrorText());
    return *size;
}

static bool IsBeginningOf(const Path& beginning, const Path& whole) {
    const FileHandle files[] = {OpenShared(beginning.Full()), OpenShared(whole.Full())};
    std::string pieces[] = {std::string(0x10000, '\0'), std::string(0x10000, '\0')};
    for (unsigned long long position = 0; files[0] && files[1]; position += pieces[0].size()) {
        std::size_t sizes[2];
        for (int i = 0; i < 2; ++i)
            sizes[i] = ReadOld(i ? whole : beginning, files[i], position, pieces[i]);
        if (sizes[1] < sizes[0] || pieces[0].compare(0, sizes[0], pieces[1], 0, sizes[0]) != 0)
            return false;
        if (sizes[0] < pieces[0].size())
            return true;
    }
    return false;
}

// Mends what a program left that was ended between the two renames, or behind them.
void MboxTarget::PutBackOld() {
    if (!Exists(mOldPath))
        return;
    if (!Exists(mPath)) {
        if (!MoveFileW(mOldPath.Full().c_str(), mPath.Full().c_str()))
            Fail("Cannot rename {}: {}.", mOldPath.Shown(), LastErrorText());
    } else if (IsBeginningOf(mOldPath, mPath)) {
        DeleteFileW(mOldPath.Full().c_str());
    } else {
        Fail("{} is what an interrupted run left of an older {}: move one of the two away.",
             mOldPath.Shown(), Printable(mPath.Name()));
    }
}

void MboxTarget::ForEachOldPiece(const std::function<void(std::string_view)>& take) const {
    std::string piece(0x40000, '\0');
    for (unsigned long long position = 0;;) {
        const std::size_t size = ReadOld(mPath, mOld, position, piece);
        if (size == 0)
            return;
        take(std::string_view(piece).substr(0, size));
        position += size;
    }
}

// A message begins behind an empty line.
void MboxTarget::CopyOld() {
    std::string end;
    ForEachOldPiece([&](std::string_view piece) {
        mNew.Write(piece);
        end += piece.substr(piece.size() - std::min<std::size_t>(piece.size(), 4));
        end.erase(0, end.size() - std::min<std::size_t>(end.size(), 4));
    });
    std::erase(end, '\r');
    if (!end.empty() && !end.ends_with("\n\n"))
        mNew.Write(end.back() == '\n' ? "\n" : "\n\n");
}

Path MboxTarget::Put(const InternetMessage& message) {
    if (!mBegun && mOld) {
        if (!mAppend)
            Fail("{} is there already: say --append to add the messages that are not in it.",
                 mPath.Shown());
        CopyOld();
    }
    mBegun = true;
    const unsigned long long start = mNew.Size();
    try {
        LineWriter writer(mNew, kLf);
        std::string sender = message.SenderAddress();
        std::replace(sender.begin(), sender.end(), ' ', '_');
        writer.Line(mime::SeparatorLine(sender, message.FiledUniversal()));
        mime::MboxQuoting quoting(writer);
        message.WriteTo(quoting, true);
    } catch (const Unreadable&) {
        mNew.CutTo(start);
        throw;
    }
    return mPath;
}

void MboxTarget::Complete() {
    if (!mBegun)
        return;
    if (mOld && !MoveFileW(mPath.Full().c_str(), mOldPath.Full().c_str()))
        Fail("Cannot rename {}: {}. It is as it was.", mPath.Shown(), LastErrorText());
    bool isInPlace = false;
    try {
        isInPlace = mNew.PutInPlace();
    } catch (const Failure&) {
        PutBackOld();
        throw;
    }
    if (!isInPlace)
        Fail("Cannot write {}: there is a file of that name now.", mPath.Shown());
    mOld = FileHandle();
    DeleteFileW(mOldPath.Full().c_str());
}

// Whole files, under names of their own from the moment they are.
class MaildirTarget : public Target {
public:
    MaildirTarget(const Path& path, char separator) : mPath(path), mSeparator(separator) {
        for (const wchar_t* folder : {L"tmp", L"new", L"cur"})
            MakeFolders(mPath.Child(folder));
        RemoveLeftovers(mPath.Child(L"tmp"));
        for (const wchar_t* folder : {L"new", L"cur"})
            ForEachEntry(mPath.Child(folder), [&](const Entry& entry) {
                const std::string name = mime::Utf8(entry.name);
                if (const auto identity = Identity::Of(mime::MaildirIdentity(name)))
                    mKnown.Add(*identity);
            });
        mKnown.Sort();
    }

    Path Put(const InternetMessage& message) override {
        // A minus may be the separator.
        const auto filed =
            std::max(message.FiledUniversal().time_since_epoch(), std::chrono::seconds(0));
        const std::string unique = mime::MaildirName(filed.count(), message.Id().Digits());
        const std::string place = mime::MaildirPlace(unique, message.IsProcessed(), mSeparator);
        const Path path = mPath.Child(WideOfUtf8(place));
        NewFile file(mPath.Child(L"tmp").Child(WideOfUtf8(unique)));
        LineWriter writer(file, kLf);
        message.WriteTo(writer, false);
        file.PutInPlace(path);
        return path;
    }

private:
    Path mPath;
    char mSeparator;
};

// One program at a time: the name that a message gets depends on those that are there.
class EmlTarget : public Target {
public:
    explicit EmlTarget(const Path& path)
        : mPath(WithFolders(path)), mOnly(mPath.Child(L"messages")) {
        RemoveLeftovers(mPath);
        ForEachEntry(mPath, [&](const Entry& entry) {
            if (!entry.isFolder && IsMessageFileName(entry.name))
                Know(entry.name);
        });
        mKnown.Sort();
    }

    Path Put(const InternetMessage& message) override {
        const std::wstring stem = Stem(message);
        NewFile file(mPath.Child(stem));
        LineWriter writer(file, kCrLf);
        message.WriteTo(writer, false);
        Path path = mPath.Child(stem + L".eml");
        for (int number = 2; Exists(path); ++number)
            path = mPath.Child(stem + L" (" + std::to_wstring(number) + L").eml");
        if (!file.PutInPlace(path))
            Fail("Cannot write {}: there is a file of that name now.", path.Shown());
        return path;
    }

private:
    static const Path& WithFolders(const Path& path) {
        MakeFolders(path);
        return path;
    }

    void Know(const std::wstring& name) {
        const FileHandle file = OpenShared(mPath.Child(name).Full());
        char line[100];
        const auto size = file ? ReadFileAt(file, 0, line, sizeof line) : std::nullopt;
        const std::string_view text(line, size.value_or(0));
        if (const auto identity = Identity::OfLine(text.substr(0, text.find('\r'))))
            mKnown.Add(*identity);
    }

    // "00012 Minutes of Monday"; what has no slot has its file's name.
    static std::wstring Stem(const InternetMessage& message) {
        const auto& slot = message.Source().slot;
        const std::wstring file = message.Source().file;
        std::wstring number = slot ? std::to_wstring(*slot) : std::wstring();
        if (slot && number.size() < 5)
            number.insert(0, 5 - number.size(), L'0');
        const std::wstring first = slot ? number : PlainName(file.substr(0, file.rfind(L'.')));
        // Together with the number of a second one, far below what file systems take.
        return SafeName(PlainName((first + L" " + message.Texts().topic).substr(0, 120)));
    }

    Path mPath;
    NewFile mOnly; // never put in place: while it is there, no other program makes it
};

} // namespace

std::unique_ptr<Target> OpenTarget(const Path& path, const TargetOptions& options) {
    switch (options.format) {
    case TargetFormat::Mbox:
        return std::make_unique<MboxTarget>(path, options.append);
    case TargetFormat::Maildir:
        return std::make_unique<MaildirTarget>(path, options.flagSeparator);
    default:
        return std::make_unique<EmlTarget>(path);
    }
}

} // namespace extract
