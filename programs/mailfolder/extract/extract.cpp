// Takes the messages out of mail folders, in a form that other mail programs read.

#include <algorithm>
#include <set>

#include <fmt/xchar.h>

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/extract/csv.h"
#include "programs/mailfolder/extract/read_ahead.h"
#include "programs/mailfolder/extract/selection.h"
#include "programs/mailfolder/extract/target.h"
#include "programs/mailfolder/progress.h"
#include "programs/mailfolder/tool.h"

namespace extract {

namespace {

struct Options {
    std::string folder;
    std::string target;
    TargetOptions how;
    mime::Charset charset = mime::Charset::Windows1252;
    bool recursive = false;
    bool orphans = true;
    bool deleted = false;
    std::string manifest;
    Selection selection;
};

struct Counts {
    unsigned long taken = 0;
    unsigned long alreadyThere = 0;
    unsigned long withoutFile = 0;
    unsigned long damaged = 0;
    unsigned long notSelected = 0;

    Counts& operator+=(const Counts& other) {
        taken += other.taken;
        alreadyThere += other.alreadyThere;
        withoutFile += other.withoutFile;
        damaged += other.damaged;
        notSelected += other.notSelected;
        return *this;
    }
    std::string Text() const {
        std::string text = fmt::format("{} taken, {} already there, {} without file, {} damaged",
                                       taken, alreadyThere, withoutFile, damaged);
        if (notSelected)
            text += fmt::format(", {} not selected", notSelected);
        return text;
    }
};

// A line for every message, with what became of it.
class Manifest {
public:
    explicit Manifest(const Path& path);
    void Add(const Path& folder, const InternetMessage& message, const std::string& target);
    void AddMissing(const Path& folder, const SourceMessage& message, mime::Charset charset);
    // Takes back the lines from there on.
    unsigned long long Size() const { return mFile.Size(); }
    void CutTo(unsigned long long size) { mFile.CutTo(size); }
    void Complete();

private:
    void AddLine(const Path& folder, const SourceMessage& message, const DiskDirRec& record,
                 const RecordText& texts, const std::string& target, const std::string& digest);

    Path mPath;
    NewFile mFile;
};

Manifest::Manifest(const Path& path) : mPath(path), mFile(path) {
    if (Exists(path))
        Fail("{} is there already: name another file for the manifest.", path.Shown());
    mFile.Write(CsvLine({"folder", "slot", "file", "from", "subject", "date", "kind", "marks",
                         "target", "sha256"}));
}

void Manifest::AddLine(const Path& folder, const SourceMessage& message, const DiskDirRec& record,
                       const RecordText& texts, const std::string& target,
                       const std::string& digest) {
    std::string from = mime::Utf8(texts.sender);
    if (!texts.senderAddress.empty())
        from += (from.empty() ? "<" : " <") +
                mime::Utf8(mime::Decoded(texts.senderAddress, mime::Charset::Windows1252)) + ">";
    mFile.Write(CsvLine({folder.Given(), message.slot ? std::to_string(*message.slot) : "",
                         mime::Utf8(message.file), from, mime::Utf8(texts.topic),
                         DateText(FlipLong(record.date)),
                         std::to_string(static_cast<unsigned short>(record.kind)), MarksOf(record),
                         target, digest}));
}

void Manifest::Add(const Path& folder, const InternetMessage& message, const std::string& target) {
    AddLine(folder, message.Source(), message.Record(), message.Texts(), target,
            message.TextDigest());
}

void Manifest::AddMissing(const Path& folder, const SourceMessage& message, mime::Charset charset) {
    AddLine(folder, message, message.record, RecordText(message.record, charset), {}, {});
}

void Manifest::Complete() {
    if (!mFile.PutInPlace())
        Fail("Cannot write {}: there is a file of that name now.", mPath.Shown());
}

// One folder on its way out.
class Extraction {
public:
    Extraction(const Options& options, SourceFolder& source, Target& target, Manifest* manifest)
        : mOptions(options), mSource(source), mTarget(target), mManifest(manifest) {}

    // Returns what stopped it, if anything did.
    std::optional<Failure> Run();
    // What came out for good, also of one that was stopped.
    const Counts& Done() const { return mCounts; }

private:
    void TakeAll();
    void Open(MessageOnItsWay& next) const;
    bool IsWanted(MessageOnItsWay& next) const;
    void Take(MessageOnItsWay& next);
    void PutOut(const MessageOnItsWay& next);
    void Tell(const SourceMessage& message, const std::string& what) const;

    const Options& mOptions;
    SourceFolder& mSource;
    Target& mTarget;
    Manifest* mManifest;
    Counts mCounts;
};

std::optional<Failure> Extraction::Run() {
    const unsigned long long line = mManifest ? mManifest->Size() : 0;
    try {
        TakeAll();
        mTarget.Complete();
        return {};
    } catch (const Failure& failure) {
        if (mTarget.ComesWhole()) {
            mCounts = {};
            if (mManifest)
                mManifest->CutTo(line);
        }
        return failure;
    }
}

void Extraction::TakeAll() {
    Progress progress("Taking out " + mSource.Shown());
    ReadAhead ahead(
        mSource, [this](MessageOnItsWay& next) { Open(next); },
        [&](MessageOnItsWay& next) {
            Take(next);
            progress.Show(next.message.slot.value_or(mSource.Slots()), mSource.Slots());
        });
    mSource.ForEach([&](const SourceMessage& message) { ahead.Add(message); });
    ahead.Finish();
}

void Extraction::Tell(const SourceMessage& message, const std::string& what) const {
    const std::string slot = message.slot ? fmt::format(", slot {}", *message.slot) : "";
    Warn("{}{}: {}\n",
         message.file.empty() ? mSource.Shown() : mSource.Place().Child(message.file).Shown(), slot,
         what);
}

// A free slot whose file came to hold another message is none of that message's.
bool Extraction::IsWanted(MessageOnItsWay& next) const {
    SourceMessage& message = next.message;
    if (message.origin == Origin::Deleted && !SameMessage(message.record, next.file.Record())) {
        message.origin = Origin::Orphan;
        message.slot.reset();
        message.record = {};
    }
    return message.origin == Origin::Deleted  ? mOptions.deleted
           : message.origin == Origin::Orphan ? mOptions.orphans
                                              : true;
}

void Extraction::Open(MessageOnItsWay& next) const {
    next.problem.reset();
    const SourceMessage& message = next.message;
    try {
        if (message.file.empty())
            throw Unreadable{"the record names no file", true};
        if (mSource.IsDFile(message.file))
            throw Unreadable{"the record names the D file itself", true};
        if (message.isAmbiguous)
            throw Unreadable{"the folder has two files that the system calls so: rename them"};
        next.file.Open(message.file);
    } catch (const Unreadable& problem) {
        next.problem = problem;
    }
}

void Extraction::Take(MessageOnItsWay& next) {
    const SourceMessage& message = next.message;
    try {
        if (next.problem)
            throw *next.problem;
        if (IsWanted(next))
            PutOut(next);
    } catch (const Unreadable& problem) {
        if (message.origin == Origin::Deleted && problem.isMissing)
            return;
        ++(problem.isMissing ? mCounts.withoutFile : mCounts.damaged);
        Tell(message, problem.reason);
        if (mManifest)
            mManifest->AddMissing(mSource.Place(), message, mOptions.charset);
    }
}

void Extraction::PutOut(const MessageOnItsWay& next) {
    const SourceMessage& message = next.message;
    const InternetMessage mail(message, next.file, mOptions.charset, mManifest != nullptr);
    if (!mOptions.selection.Takes(mail.Record(), mail.Texts())) {
        ++mCounts.notSelected;
        return;
    }
    std::string place;
    if (mTarget.Has(mail.Id())) {
        ++mCounts.alreadyThere;
    } else {
        place = mTarget.Put(mail).Given();
        ++mCounts.taken;
        if (!next.file.HasRecord())
            Tell(message, "it begins with text and no record, and is taken whole");
        if (mail.Meaningless())
            Tell(message, fmt::format("{} no meaning in {}, and {} kept",
                                      Count(mail.Meaningless(), "byte has", "bytes have"),
                                      mime::NameOf(mOptions.charset),
                                      mail.Meaningless() == 1 ? "is" : "are"));
    }
    if (mManifest)
        mManifest->Add(mSource.Place(), mail, place);
}

// Where the messages of each folder go, below one target.
class Places {
public:
    Places(const Options& options, const SourceFolder& source)
        : mOptions(options), mSource(source.Place()), mFinalSource(source.Final()),
          mTop(Path(options.target).AsItStands()) {
        if (Path(options.target).IsDevice())
            throw Failure{fmt::format("Cannot use {}: it is a device.", mTop.Shown()), keWrongUse};
        if (IsWithin(FinalPathOf(mTop), mFinalSource))
            throw Failure{fmt::format("{} lies in the folder that is read: name another target.",
                                      mTop.Shown()),
                          keWrongUse};
        if (options.recursive) {
            MakeFolders(mTop);
        } else if (options.how.format == TargetFormat::Mbox) {
            MakeFolders(mTop.Folder());
        }
    }

    // Makes the folder that it needs.
    void CheckManifest(const Path& path) const {
        const std::wstring final = FinalPathOf(path);
        const bool isRead = IsWithin(final, mFinalSource);
        if (isRead || SameName(final, FinalPathOf(mTop)))
            throw Failure{
                fmt::format("{} {}: name another manifest.", path.Shown(),
                            isRead ? "lies in the folder that is read" : "is the target itself"),
                keWrongUse};
        MakeFolders(path.Folder());
    }

    // For a folder at or below the source. Makes the folders that it needs.
    Path Of(const Path& folder) {
        Path place = mTop;
        const bool isMbox = mOptions.how.format == TargetFormat::Mbox;
        const std::wstring& top = mSource.Full();
        if (folder.Full() == top) {
            if (isMbox && IsFolder(mTop))
                place = mTop.Child(MboxName(folder.Name()));
        } else {
            std::wstring rest = folder.Full().substr(top.size() + (top.back() == L'\\' ? 0 : 1));
            for (std::size_t end; (end = rest.find(L'\\')) != rest.npos; rest.erase(0, end + 1))
                place = place.Child(SafeName(rest.substr(0, end)));
            place = place.Child(isMbox ? MboxName(rest) : SafeName(rest));
        }
        const Path unique = NotTaken(place, isMbox ? L".mbox" : L"");
        CheckFolder(isMbox ? unique.Folder() : unique);
        return unique;
    }

private:
    static std::wstring MboxName(const std::wstring& name) {
        return SafeName(name.empty() || name.back() == L':' ? L"Mail" : name) + L".mbox";
    }

    // Two folders of the source do not share one place.
    Path NotTaken(const Path& place, std::wstring_view extension) {
        Path unique = place;
        const std::wstring name = place.Name();
        const std::wstring stem =
            name.ends_with(extension) ? name.substr(0, name.size() - extension.size()) : name;
        for (int number = 2; !mTaken.insert(FoldCase(unique.Full())).second; ++number)
            unique = place.Beside(fmt::format(L"{} ({}){}", stem, number, extension));
        return unique;
    }

    // Nothing is written outside the target by way of a link, nor among messages of a mail folder.
    void CheckFolder(const Path& folder) const {
        MakeFolders(folder);
        const std::wstring final = FinalPathOf(folder);
        const bool isTop = mOptions.recursive || folder.Full() == mTop.Full();
        if (IsWithin(final, mFinalSource) || !IsWithin(final, FinalPathOf(isTop ? mTop : folder)))
            Fail("{} leads out of the target, to {}.", folder.Shown(), Printable(final));
        for (const wchar_t* name : {L"DFile", L"MFile"})
            if (Exists(folder.Child(name)))
                Fail("{} is a mail folder itself: name another target.", folder.Shown());
    }

    const Options& mOptions;
    Path mSource;
    std::wstring mFinalSource;
    Path mTop;
    std::set<std::wstring> mTaken;
};

} // namespace

static int Extract(const Options& options) {
    SourceFolder top{Path(options.folder)};
    if (!options.recursive && !top.HasMail())
        Fail("{} has neither a D file nor message files; --recursive looks into the folders in it.",
             top.Place().Shown());
    Places places(options, top);
    std::optional<Manifest> manifest;
    if (!options.manifest.empty()) {
        const Path path = Path(options.manifest).AsItStands();
        places.CheckManifest(path);
        manifest.emplace(path);
    }

    Counts all;
    bool damaged = false;
    bool failed = false;
    const auto take = [&](SourceFolder& source) {
        const Path place = places.Of(source.Place());
        const std::unique_ptr<Target> target = OpenTarget(place, options.how);
        Extraction extraction(options, source, *target, manifest ? &*manifest : nullptr);
        const std::optional<Failure> stopped = extraction.Run();
        const Counts& counts = extraction.Done();
        if (!source.Problem().empty() && !stopped)
            Warn("{}: {}; its messages come from their files alone.\n", source.Shown(),
                 source.Problem());
        damaged |= !source.Problem().empty() || counts.withoutFile || counts.damaged;
        all += counts;
        if (options.recursive && !stopped)
            Tell("{}: {}\n", place.Shown(), counts.Text());
        if (stopped)
            throw *stopped;
    };
    const auto fail = [&](const Failure& failure) {
        Warn("{}\n", failure.text);
        failed = true;
    };
    if (options.recursive) {
        for (const Path& folder : MailFoldersBelow(top.Place(), fail)) {
            try {
                SourceFolder source(folder);
                take(source);
            } catch (const Failure& failure) {
                fail(failure);
            }
        }
    } else {
        try {
            take(top);
        } catch (const Failure& failure) {
            if (all.taken == 0)
                throw;
            fail(failure);
        }
    }
    // What was taken is taken, whatever becomes of the manifest.
    Tell("{}\n", all.Text());
    if (manifest)
        manifest->Complete();
    return failed ? keCouldNot : damaged ? keDamage : keFine;
}

static Command::Run SetUp(CLI::App& app) {
    const auto given = std::make_shared<Options>();
    app.add_option("folder", given->folder,
                   "A D file, or a folder with one or with message files; it is only read")
        ->required();
    app.add_option("target", given->target,
                   "The mbox to make, or the folder for a Maildir or for .eml files")
        ->required();
    app.add_option_function<std::string>(
           "--format",
           [given](const std::string& format) {
               given->how.format = format == "mbox"      ? TargetFormat::Mbox
                                   : format == "maildir" ? TargetFormat::Maildir
                                                         : TargetFormat::Eml;
           },
           "One file for all messages, a Maildir, or a file for each")
        ->check(CLI::IsMember({"mbox", "maildir", "eml"}))
        ->default_str("mbox");
    app.add_flag("--recursive", given->recursive,
                 "Every mail folder below as well; TARGET is a folder that gets the same tree");
    app.add_flag("--append", given->how.append, "Add to an mbox that is there what is not in it");
    AddCharset(app, given->charset);
    app.add_flag("--orphans,!--no-orphans", given->orphans,
                 "Message files that no record names; they come out unless --no-orphans is said");
    app.add_flag("--deleted", given->deleted, "Deleted messages, too, whose files are still there");
    app.add_option_function<std::string>(
           "--flag-separator",
           [given](const std::string& text) { given->how.flagSeparator = text[0]; },
           "What stands before the marks in Maildir names, where \"!\" does not fit")
        ->check(CLI::IsMember({"!", ";", "-", "+", "="}))
        ->default_str("!");
    app.add_option("--manifest", given->manifest,
                   "A new CSV file with a line for every message and the SHA-256 of its text");
    given->selection.AddTo(app);
    return [given] { return Extract(*given); };
}

static const Command
    kExtract("extract", "Take the messages out, for other mail programs",
             "  mailfolder extract C:\\Mail\\InBox inbox.mbox\n"
             "  mailfolder extract C:\\Mail D:\\Out --recursive --manifest D:\\all.csv\n"
             "  mailfolder extract C:\\Mail\\InBox D:\\Maildir --format maildir\n"
             "  mailfolder extract E:\\Old\\InBox D:\\Letters --format eml --charset macintosh\n"
             "  mailfolder extract C:\\Mail\\InBox inbox.mbox --append --since 1998-01-01",
             SetUp);

} // namespace extract
