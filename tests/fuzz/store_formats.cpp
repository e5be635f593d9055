// D files of the three types and message files.

#include <cstring>

#include "postrider.h"
#include "tests/fuzz/format.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

namespace {

constexpr unsigned int kRecord = sizeof(DiskDirRec);
const std::vector<Field> kRecordFields = {
    {0, 2},   {2, 1},   {3, 1},   {4, 1},   {5, 1},   {36, 2},  {38, 1},
    {39, 1},  {72, 1},  {73, 1},  {104, 1}, {107, 1}, {112, 1}, {118, 1},
    {150, 2}, {186, 1}, {218, 1}, {232, 1}, {300, 4}, {308, 2}, {310, 2}};
// Names that lead out of the folder, to devices, to several files or to none.
const std::vector<std::string> kNames = {"M1.EML",
                                         "M2.EML",
                                         "..\\OUTSIDE.EML",
                                         "..\\OUT\\KEEP.EML",
                                         "SUB",
                                         "SUB\\IN.EML",
                                         "*.EML",
                                         "*",
                                         "M?.EML",
                                         "CON",
                                         "NUL.EML",
                                         "COM1.EML",
                                         ".",
                                         "..",
                                         "M1.EML.",
                                         "M1.EML ",
                                         "M1.EML::",
                                         "INBOX.DAT",
                                         "",
                                         "\\\\.\\",
                                         "../OUTSIDE.EML",
                                         "TARGET",
                                         "\x81",
                                         "M1\xE9.EML",
                                         "|",
                                         "A|B|C",
                                         "Smith|Anna",
                                         "\x01\x2B"};

std::string Record(const std::string& topic, const std::string& fileName, int bits,
                   const std::string& identifier = "") {
    std::string bytes = With(std::string(kRecord, '\0'), 0, Bytes("\0\x07\x01"));
    bytes = With(With(bytes, 3, {char(bits)}), 4, Pascal(topic));
    bytes = With(With(bytes, 36, {char(bits >> 8), 0}), 38, Pascal(fileName));
    bytes = With(With(bytes, 72, Pascal("Smith|Anna")), 112, Pascal(identifier));
    bytes = With(With(bytes, 186, Pascal("Okafor|Chidi")), 300, "\xB1\xCA\xA7\x90");
    return With(With(bytes, 309, "\x02"), 311, "\x01");
}

// Longer than a record's field for it.
const std::string kLongName = "M" + std::string(40, 'x') + ".EML";
const std::string kHeader(kRecord, '\0');
const std::string kFirst = Record("Minutes of Monday", "M1.EML", 0x2022, "id-1");
const std::string kSecond = Record("", "M2.EML", 0x0041);
const std::string kThird = Record("Lunch?", "GONE.EML", 0x0100, "id-3");
const std::string kFree = With(kThird, 2, Bytes("\0"));

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
            std::memcpy(&record, in.bytes.data() + in.random.Below(count) * kRecord, kRecord);
        probe = DirectoryRecord(&record);
        if (in.random.OneIn(2))
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

// The exported walk; returns the number of records.
long Walk(const char* path) {
    char *topic, *fileName, *sender;
    unsigned short kind, flag;
    long count = 0;
    for (int more = GetFirstRecord(path, &topic, &fileName, &sender, &kind, &flag); more;
         more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag)) {
        ReadText(topic);
        ReadText(fileName);
        ReadText(sender);
        Expect(flag <= 1 && kind <= 6, "hands out a flag or kind out of range");
        ++count;
    }
    Done();
    return count;
}

constexpr unsigned int kReading = 12; // operations that leave the file as it is
constexpr unsigned int kOperations = 29;

void Operate(Store& store, unsigned int operation) {
    DirectoryFile& file = store.file;
    Random& random = store.in.random;
    DirectoryRecord& probe = store.probe;
    DirectoryRecord record;
    RB_Container<DirectoryRecord> records(RB_Container<DirectoryRecord>::keOwnsObjects);
    switch (operation) {
    case 0: {
        const long count = Walk(file.FullFileSpec());
        if (store.type == keDirMessages)
            Expect(count == store.Used(), "the walk and GetInfo count differently");
        break;
    }
    case 1:
        store.Used();
        Expect(file.UnprocessedCount() <= file.UsedCount(), "counts more unprocessed than used");
        break;
    case 2:
        file.FindRecord(probe, keFindPosition);
        break;
    case 3:
        file.FindRecord(probe, keFindExisting);
        break;
    case 4:
        file.AlterDirectoryBlock(record, random.Below(6), 0);
        ReadRecord(record);
        break;
    case 5:
        if (file.Open(keOpenUpdate)) {
            file.AlterDirectoryBlock(probe, record, 0);
            file.AlterDirectoryBlock(record, static_cast<long>(random.Next()), 0);
            file.GetInfo(keInfoAll);
            file.FindRecord(probe, keFindPosition);
            file.close();
        }
        break;
    case 6:
        file.CheckDateStamp();
        break;
    case 7:
        file.CheckUnprocessedDDRs(static_cast<enumCheckOptions>(random.Below(4)), Idle);
        break;
    case 8: {
        RB_Container<JxDownloadItem> items(RB_Container<JxDownloadItem>::keOwnsObjects);
        file.GetUIDList(&items);
        for (JxDownloadItem* item = items.GetFirstObject(); item; item = items.GetNextObject())
            ReadText(item->Text().Text());
        break;
    }
    case 9: {
        RbFile copy(Store::Full("COPY.DAT").c_str());
        const int count = file.GetDFile(copy);
        Expect(store.type == keDirMessages || count == store.Used(),
               "GetDFile and GetInfo count differently");
        break;
    }
    case 10:
        file.ReadDDR(file, record);
        ReadRecord(record);
        break;
    case 11: {
        ReadRecord(probe);
        DirectoryRecord same(probe);
        Expect((same == probe) == (probe.Record().used != 0), "a record is not itself");
        Expect(file.OkToProcess(&probe) >= file.OkToProcess(&probe, keCheckInstallable),
               "installable and not processable");
        file.OkToProcess(&probe, keGetInstallable);
        probe.FixTopicAndIndex();
        std::string identifier = Pascal(AnyText(random).substr(0, random.Below(255)));
        probe.SetMessageID(reinterpret_cast<const unsigned char*>(identifier.c_str()));
        ReadRecord(probe);
        break;
    }
    case 12:
        file.AlterDirectoryBlock(record, random.Below(6), 1);
        break;
    case 13:
        if (file.Open(keOpenUpdate)) {
            file.AlterDirectoryBlock(probe, record, 1);
            file.close();
        }
        break;
    case 14:
        file.MarkRecord(probe, static_cast<enumMarkMailAction>(random.Below(10)));
        break;
    case 15:
        file.MarkMail(probe, random.Below(2));
        break;
    case 16:
        file.MarkUnUsed(probe, 0);
        break;
    case 17:
        file.ClearReturnReceipt(probe);
        break;
    case 18:
        file.DeleteMail(probe);
        break;
    case 19: {
        // A header that is a used record is taken for one, and is one from then on.
        const long count = Walk(file.FullFileSpec());
        if (file.CompressDFile())
            Expect(store.Used() == count, "CompressDFile changes the number of records");
        break;
    }
    case 20:
        file.RemoveAllMessageIDs(static_cast<BaseDirFile::enumRemoveOptions>(random.Below(2)));
        break;
    case 21: {
        RbFile message(
            Store::Full(random.Of<std::string>({"M1.EML", kLongName, "GONE.EML"})).c_str());
        file.AddMessage(&message);
        break;
    }
    case 22: {
        RbFile message(Store::Full("M2.EML").c_str());
        if (message.Open(keOpenRead)) {
            file.AddMessage(&message);
            message.close();
        }
        break;
    }
    case 23:
    case 24:
        file.GetUnprocessedDDRs(&records, random.OneIn(2) ? Idle : nullptr,
                                static_cast<enumGetDDROptions>(random.Below(4)));
        for (DirectoryRecord* one = records.GetFirstObject(); one; one = records.GetNextObject())
            ReadRecord(*one);
        break;
    case 25:
        file.GetInstallableDDRs(&records);
        break;
    case 26: {
        if (random.OneIn(2))
            WriteFileBytes("TARGET\\BOX.DAT", store.in.bytes);
        DirectoryFile same(store.type); // the very file
        same.Parse(file.FullFileSpec(), 1);
        file.DeleteOldMail(random.OneIn(2) ? 0 : random.Next(), random.Below(2),
                           random.OneIn(8)   ? nullptr
                           : random.OneIn(8) ? &same
                                             : &store.target);
        break;
    }
    case 27:
        file.UpdateDFile();
        break;
    case 28:
        file.CreateDFile();
        break;
    }
    Expect(!file.isOpen(), "leaves the D file open");
    if (file.isOpen())
        file.close();
}

void DriveStore(Input& in, TypeDirFile type) {
    WriteFileBytes("INBOX.DAT", in.bytes);
    Store store(in, type);
    if (in.cut)
        for (unsigned int operation = 0; operation < kOperations; ++operation) {
            if (operation > kReading)
                WriteFileBytes("INBOX.DAT", in.bytes);
            Operate(store, operation);
        }
    for (unsigned int times = in.cut ? 0 : 5; times--;) {
        Operate(store, in.random.Below(kOperations));
        if (in.random.OneIn(2))
            store.NewProbe();
    }
}

void DriveMessageFile(Input& in) {
    WriteFileBytes("M3.EML", in.bytes);
    Store store(in, in.random.OneIn(3) ? keDirFolder : keDirMessages);
    store.file.CreateDFile();
    RbFile message(Store::Full("M3.EML").c_str());
    DirectoryRecord record;
    const int read = store.file.ReadDDR(message, record);
    Expect(read == (in.bytes.size() >= kRecord),
           "reads a record that is not whole, or no whole one");
    ReadRecord(record);
    const long used = store.Used();
    if (store.file.AddMessage(&message))
        Expect(store.Used() == used + 1, "adds a message that does not count");
    for (unsigned int times = 3; times--;)
        Operate(store, in.random.Below(kOperations));
}

Format DFile(const char* name, TypeDirFile type) {
    Format format;
    format.name = name;
    format.shortRun = 1650;
    const std::string header = type == keDirMessages ? "" : kHeader;
    for (const std::string& bytes :
         {header + kFirst + kFree + kSecond + kThird, header + kFirst + kSecond + kFree + kFree,
          header + kThird + kThird + kFirst + kSecond + kSecond + kFree + kFirst, header})
        format.shape.samples.push_back(SampleMaker().PutRecords(bytes, kRecord, kRecordFields));
    // Every name of the list once.
    std::string named = header;
    for (const std::string& fileName : kNames)
        named += Record("Lunch?", fileName, 0x0002);
    format.shape.samples.push_back(SampleMaker().PutRecords(named, kRecord, kRecordFields));
    format.shape.unit = kRecord;
    format.shape.words = kNames;
    format.run = [type](Input& in) { DriveStore(in, type); };
    format.own = "INBOX.DAT";
    format.files = {{"M1.EML", kFirst + "A message.\r\n"},
                    {"M2.EML", kSecond},
                    {kLongName, kSecond},
                    {"SUB", "folder"},
                    {"SUB\\IN.EML", kFirst},
                    {"TARGET", "folder"},
                    {"TARGET\\BOX.DAT", kHeader}};
    format.mayAppear = {"COPY.DAT", "INBOX.BAK", "TARGET\\*.EML", "????????.EML"};
    format.mayGo = {"M1.EML", "M2.EML"};
    format.texts = {
        {"AlterDirectoryBlock(), Record not found", "a probe that is not in the file"},
        {"Error BaseDirFile: AlterDirectoryBlock()\n", "a search whose file cannot be read"},
        {"DeleteOldMail(), File error", "a position outside of the file, or that of no record"},
        {"Error DirectoryFile: DeleteOldMail()", "a message that is not there, or cut records"},
        {"DiskDriver::Rename() failed.", "moving a message that is not there"},
        {"eResult == keDELETE_OK", "a message's name that is a folder's or an open file's"},
        {"Error copy file: DirectoryFile", "a file without room for a header has no slots"},
        {"Error BaseDirFile: CreateDFile()", "a message file without a whole record"},
        {"CreateDFile(), writing record", "the same"},
    };
    return format;
}

} // namespace

void AddStoreFormats(std::vector<Format>& formats) {
    formats.push_back(DFile("d-folder", keDirFolder));
    formats.push_back(DFile("d-foreign", keDirForeign));
    formats.push_back(DFile("d-messages", keDirMessages));

    Format message = DFile("message-file", keDirMessages);
    message.shortRun = 600;
    message.shape.samples = {
        SampleMaker().PutRecords(kFirst, kRecord, kRecordFields).Put("Text\r\n"),
        SampleMaker().PutRecords(kThird, kRecord, kRecordFields)};
    message.run = DriveMessageFile;
    message.own = "M3.EML";
    message.mayAppear.push_back("INBOX.DAT");
    message.mayGo.push_back("M3.EML");
    formats.push_back(message);
}
