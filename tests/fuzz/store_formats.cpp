// D files of the three types and message files.

#include <cstring>
#include <sstream>

#include "postrider.h"
#include "tests/fuzz/format.h"
#include "tests/support/mail_bytes.h"
#include "tests/support/scratch.h"

namespace {

constexpr unsigned int kRecord = sizeof(DiskDirRec);
// Names that lead out of the folder, to devices, to several files or to none.
// clang-format off
const std::vector<std::string> kNames = {
    "M1.EML", "M2.EML", "..\\OUTSIDE.EML", "..\\OUT\\KEEP.EML", "SUB", "SUB\\IN.EML", "*.EML",
    "*", "M?.EML", "CON", "NUL.EML", "COM1.EML", ".", "..", "M1.EML.", "M1.EML ", "M1.EML::",
    "INBOX.DAT", "", "\\\\.\\", "../OUTSIDE.EML", "TARGET", "\x81", "M1\xE9.EML", "|", "A|B|C",
    "Smith|Anna", "\x01\x2B"
};
// clang-format on

// Longer than a record's field for it.
const std::string kLongName = "M" + std::string(40, 'x') + ".EML";
const std::string kFirst = MessageID(Message("Minutes of Monday", "M1.EML"), "id-1");
const std::string kSecond = Message("", "M2.EML");

struct Store {
    Input& in;
    TypeDirFile type;
    DirectoryFile file;
    DirectoryFile target;
    DirectoryRecord probe;

    Store(Input& input, TypeDirFile dirType)
        : in(input), type(dirType), file(dirType), target(keDirFolder) {
        file.Parse(Full("INBOX.DAT").c_str(), 1);
        target.Parse(Full("TARGET\\BOX.DAT").c_str(), 1);
        NewProbe();
    }
    static std::string Full(const std::string& name) {
        char path[MAX_PATH];
        GetFullPathNameA(name.c_str(), sizeof path, path, nullptr);
        return path;
    }
    // A record of the input, as it stands there or as it is read.
    void NewProbe() {
        DiskDirRec record = {};
        const unsigned int count = in.bytes.size() / kRecord;
        if (count)
            std::memcpy(&record, in.bytes.data() + in.Below(count) * kRecord, kRecord);
        probe = DirectoryRecord(&record);
        if (in.OneIn(2))
            probe.Check_Fixed_Validity();
    }
    long Used() { return file.GetInfo(keInfoAll) ? file.UsedCount() : -1; }
};

void Idle() {}

void ReadRecord(DirectoryRecord& record) {
    ReadText(record.Topic().Text());
    ReadText(record.FileName().Text());
    ReadText(record.SenderName().Text());
    ReadText(record.MessageID().Text());
    record.CheckValidity();
    record.isUsed();
    MailUser sender(&record.Record().sender, nullptr);
    ReadText(sender.Address().Text());
}

// The exported walk.
void Walk(const char* path) {
    char *topic, *fileName, *sender;
    unsigned short kind, flag;
    for (int more = GetFirstRecord(path, &topic, &fileName, &sender, &kind, &flag); more;
         more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag)) {
        ReadText(topic);
        ReadText(fileName);
        ReadText(sender);
        Expect(flag <= 1 && kind <= 6, "hands out a flag or kind out of range");
    }
    Done();
}

void Operate(Store& store) {
    DirectoryFile& file = store.file;
    Input& in = store.in;
    DirectoryRecord& probe = store.probe;
    DirectoryRecord record;
    RB_Container<DirectoryRecord> records(RB_Container<DirectoryRecord>::keOwnsObjects);
    const auto take = [&](void (*idle)()) {
        file.GetUnprocessedDDRs(&records, idle, static_cast<enumGetDDROptions>(in.Below(4)));
        for (DirectoryRecord* one = records.GetFirstObject(); one; one = records.GetNextObject())
            ReadRecord(*one);
    };
    in.DoOne(
        [&] {
            Walk(file.FullFileSpec());
            store.Used();
        },
        [&] { store.Used(); }, [&] { file.FindRecord(probe, keFindPosition); },
        [&] { file.FindRecord(probe, keFindExisting); },
        [&] {
            file.AlterDirectoryBlock(record, in.Below(6), 0);
            ReadRecord(record);
        },
        [&] {
            if (file.Open(keOpenUpdate)) {
                file.AlterDirectoryBlock(probe, record, 0);
                file.AlterDirectoryBlock(record, static_cast<long>(in.Number()), 0);
                file.GetInfo(keInfoAll);
                file.FindRecord(probe, keFindPosition);
                file.close();
            }
        },
        [&] { file.CheckDateStamp(); },
        [&] { file.CheckUnprocessedDDRs(static_cast<enumCheckOptions>(in.Below(4)), Idle); },
        [&] {
            RB_Container<JxDownloadItem> items(RB_Container<JxDownloadItem>::keOwnsObjects);
            file.GetUIDList(&items);
            for (JxDownloadItem* item = items.GetFirstObject(); item; item = items.GetNextObject())
                ReadText(item->Text().Text());
        },
        [&] {
            RbFile copy(Store::Full("COPY.DAT").c_str());
            file.GetDFile(copy);
        },
        [&] {
            file.ReadDDR(file, record);
            ReadRecord(record);
        },
        [&] {
            ReadRecord(probe);
            DirectoryRecord same(probe);
            (void)(same == probe), file.OkToProcess(&probe);
            file.OkToProcess(&probe, keCheckInstallable);
            file.OkToProcess(&probe, keGetInstallable);
            probe.FixTopicAndIndex();
            std::string identifier = Pascal(in.Text().substr(0, 254));
            probe.SetMessageID(reinterpret_cast<const unsigned char*>(identifier.c_str()));
            ReadRecord(probe);
        },
        [&] { file.AlterDirectoryBlock(record, in.Below(6), 1); },
        [&] {
            if (file.Open(keOpenUpdate)) {
                file.AlterDirectoryBlock(probe, record, 1);
                file.close();
            }
        },
        [&] { file.MarkRecord(probe, static_cast<enumMarkMailAction>(in.Below(10))); },
        [&] { file.MarkMail(probe, in.Below(2)); }, [&] { file.MarkUnUsed(probe, 0); },
        [&] { file.ClearReturnReceipt(probe); }, [&] { file.DeleteMail(probe); },
        [&] { file.CompressDFile(); },
        [&] { file.RemoveAllMessageIDs(static_cast<BaseDirFile::enumRemoveOptions>(in.Below(2))); },
        [&] {
            RbFile message(
                Store::Full(in.Of<std::string>({"M1.EML", kLongName, "GONE.EML"})).c_str());
            file.AddMessage(&message);
        },
        [&] {
            RbFile message(Store::Full("M2.EML").c_str());
            if (message.Open(keOpenRead)) {
                file.AddMessage(&message);
                message.close();
            }
        },
        [&] { take(Idle); }, [&] { take(nullptr); }, [&] { file.GetInstallableDDRs(&records); },
        [&] {
            if (in.OneIn(2))
                WriteFileBytes("TARGET\\BOX.DAT", store.in.bytes);
            DirectoryFile same(store.type); // the very file
            same.Parse(file.FullFileSpec(), 1);
            file.DeleteOldMail(in.OneIn(2) ? 0 : in.Number(), in.Below(2),
                               in.OneIn(8)   ? nullptr
                               : in.OneIn(8) ? &same
                                             : &store.target);
        },
        [&] { file.UpdateDFile(); }, [&] { file.CreateDFile(); });
    Expect(!file.isOpen(), "leaves the D file open");
    if (file.isOpen())
        file.close();
}

void DriveStore(Input& in, TypeDirFile type) {
    WriteFileBytes("INBOX.DAT", in.bytes);
    Store store(in, type);
    for (unsigned int times = 1 + in.Below(3); times--;)
        Operate(store);
}

void DriveMessageFile(Input& in) {
    WriteFileBytes("M3.EML", in.bytes);
    Store store(in, in.OneIn(3) ? keDirFolder : keDirMessages);
    store.file.CreateDFile();
    RbFile message(Store::Full("M3.EML").c_str());
    DirectoryRecord record;
    const int read = store.file.ReadDDR(message, record);
    Expect(read == (in.bytes.size() >= kRecord),
           "reads a record that is not whole, or no whole one");
    ReadRecord(record);
    std::istringstream stream(in.bytes);
    DiskDirRec raw = {};
    if (stream >> raw) {
        ClampRecord(raw);
        ReadRecord(record = DirectoryRecord(&raw));
    }
    store.file.AddMessage(&message);
    Operate(store);
}

Format DFile(const char* name, TypeDirFile type) {
    return {
        .name = name,
        .run = [type](Input& in) { DriveStore(in, type); },
        .words = kNames,
        .unit = kRecord,
        .own = "INBOX.DAT",
        .files = {{"M1.EML", kFirst + "A message.\r\n"},
                  {"M2.EML", kSecond},
                  {kLongName, kSecond},
                  {"SUB", "folder"},
                  {"SUB\\IN.EML", kFirst},
                  {"TARGET", "folder"},
                  {"TARGET\\BOX.DAT", kHeader}},
        .mayAppear = {"COPY.DAT", "INBOX.BAK", "TARGET\\*.EML", "????????.EML"},
        .mayGo = {"M1.EML", "M2.EML"},
        .texts =
            {
                {"AlterDirectoryBlock(), Record not found", "a probe that is not in the file"},
                {"Error BaseDirFile: AlterDirectoryBlock()\n",
                 "a search whose file cannot be read"},
                {"DeleteOldMail(), File error",
                 "a position outside of the file, or that of no record"},
                {"Error DirectoryFile: DeleteOldMail()",
                 "a message that is not there, or cut records"},
                {"DiskDriver::Rename() failed.", "moving a message that is not there"},
                {"eResult == keDELETE_OK", "a message's name that is a folder's or an open file's"},
                {"Error copy file: DirectoryFile", "a file without room for a header has no slots"},
                {"Error BaseDirFile: CreateDFile()", "a message file without a whole record"},
                {"CreateDFile(), writing record", "the same"},
            },
    };
}

} // namespace

void AddStoreFormats(std::vector<Format>& formats) {
    formats.push_back(DFile("d-folder", keDirFolder));
    formats.push_back(DFile("d-foreign", keDirForeign));
    formats.push_back(DFile("d-messages", keDirMessages));

    Format message = DFile("message-file", keDirMessages);
    message.run = DriveMessageFile;
    message.own = "M3.EML";
    message.mayAppear.push_back("INBOX.DAT");
    message.mayGo.push_back("M3.EML");
    formats.push_back(message);
}
