// Makes the sample user that ./run lists: account data, preferences, local folders, and an inbox
// with a dozen messages of all sorts. All of it is written by the library, in the Windows directory
// and in the folder named.

#include <cstdio>
#include <cstring>

#include "postrider.h"

namespace {

struct SampleMessage {
    const char* sender; // ANSI
    const char* topic;
    int kind;
    bool processed;
    enum { Sound, Deleted, Broken } state;
    const char* text = "A sample message.\r\n";
};

constexpr SampleMessage kMessages[] = {
    {"Lindqvist|Maja", "Minutes of Monday", 1, true, SampleMessage::Sound},
    {"Okafor|Chidi", "Lunch on Thursday?", 1, false, SampleMessage::Sound},
    {"Post Office", "Parcel waiting for you", 3, false, SampleMessage::Sound},
    {"Okafor|Chidi", "Lunch on Wednesday?", 1, false, SampleMessage::Deleted},
    {"M\xFCller|J\xF6rg",
     "Gr\xFC\xDF"
     "e aus K\xF6ln",
     1, false, SampleMessage::Sound,
     "Liebe Maja,\r\n\r\nder Dom steht noch, und der Zug war p\xFCnktlich. Am Samstag bin ich\r\n"
     "zur\xFC"
     "ck und bringe die Noten f\xFCr den Chor mit.\r\n\r\nViele Gr\xFC\xDF"
     "e\r\nJ\xF6rg\r\n"},
    {"Choir list", "New songs, new times", 2, true, SampleMessage::Sound},
    {"Dubois|Am\xE9"
     "lie",
     "R\xE9sum\xE9 of the meeting", 1, false, SampleMessage::Sound},
    {"Lindqvist|Maja", "Overwritten by a crash", 1, false, SampleMessage::Broken},
    {"Garc\xED"
     "a|In\xE9s",
     "Ma\xF1"
     "ana a las diez",
     1, true, SampleMessage::Sound},
    {"Payroll", "Form to install", 5, false, SampleMessage::Sound},
    {"Print room", "Your job is done", 4, true, SampleMessage::Deleted},
    {"Haraldsson|Bj\xF8rn", "Photos from the fjord", 2, false, SampleMessage::Sound},
    {"Night watch", "", 0, true, SampleMessage::Sound},
    {"Sato|Yuki", "Re: Minutes of Monday", 1, false, SampleMessage::Sound,
     "From: Yuki Sato <sato@post>\r\nTo: Maja Lindqvist <lindqvist@post>\r\n"
     "Subject: Re: Minutes of Monday\r\n\r\nThank you. One thing is missing: we agreed to meet "
     "an hour\r\nearlier from now on.\r\n"},
};

void SetPascal(unsigned char* field, const RBString& text) {
    std::memcpy(field, text.Pascal(), text.LengthByte() + 1);
}

// A message's own file: its record, and its text.
bool WriteMessageFile(const FileSpec& file, const SampleMessage& message, int number) {
    DirectoryRecord record;
    DiskDirRec& fields = record.Record();
    fields.index = static_cast<short>(number);
    fields.used = 1;
    fields.status = message.processed ? keStatusProcessed : 0;
    fields.kind = static_cast<short>(message.kind);
    fields.date = FlipLong(2082844800ul + 900000000ul + 3600ul * number);
    SetPascal(fields.topic, message.topic);
    SetPascal(fields.sender.name, message.sender);
    RbFile stream(file);
    if (!stream.Open(keOpenRewrite))
        return false;
    stream << record << message.text;
    const bool written = static_cast<bool>(stream.flush());
    stream.close();
    return written;
}

// Puts the messages into the inbox as the mail client does, and then what time does to an inbox:
// slots are freed, and one is overwritten.
bool FillInbox(const FileSpec& dFile) {
    DirectoryFile inbox(keDirFolder);
    static_cast<FileSpec&>(inbox) = dFile;
    if (!inbox.CreateDFile())
        return false;
    unsigned int slot = 0;
    for (const SampleMessage& message : kMessages) {
        RBString name;
        name.Sprintf("MSG%05u.EML", ++slot);
        RbFile file(dFile);
        file.SetSpecPart(name, FileSpec::keAsParts);
        if (!WriteMessageFile(file, message, static_cast<int>(slot)) || !inbox.AddMessage(&file))
            return false;
        DirectoryRecord record;
        if (message.state == SampleMessage::Sound || inbox.AlterDirectoryBlock(record, slot, 0) < 0)
            continue;
        if (message.state == SampleMessage::Deleted)
            inbox.DeleteMail(record);
        else
            record.Record().index = static_cast<short>(DiskDirRec::keBrokenIndex);
        if (message.state == SampleMessage::Broken &&
            inbox.AlterDirectoryBlock(record, slot, 1) < 0)
            return false;
    }
    return true;
}

bool WriteUserFiles(JxLoggedMailUser& user, const FileSpec& inbox) {
    JxBackgndData data;
    data.mstrSettings[JxBackgndData::keMailDirectory].puts(inbox.FullPath());
    data.mstrSettings[JxBackgndData::keDFileName].puts(inbox.FullFileName());
    data.SetFullPopAccount("lindqvist:110");
    data.SetFullSmtpHost("post:25");

    JxCurrentUserDataFile file;
    bool written = file.OpenUserDataFile(keOpenRewrite) && (*file.GetStream() << data).flush();
    file.Close();
    written =
        written && file.OpenLoggedUserFile(keOpenRewrite) && user.WriteInfo(*file.GetStream());
    if (written)
        file.Close();
    return written;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_sample FOLDER\n");
        return 2;
    }
    FileSpec folder(argv[1], FileSpec::keAsPath);
    if (!DiskDriver::FileExists(folder, keAttrDirectory) && !DiskDriver::MakeDir(folder)) {
        std::fprintf(stderr, "Cannot make %s.\n", argv[1]);
        return 1;
    }
    MailUser person("Lindqvist|Maja", "lindqvist@post", keUserOrdinary);
    JxLoggedMailUser user(person);
    user.SetLoggedText(folder.FullPath());

    FileSpec prefsFile(folder);
    prefsFile.SetSpecPart("RB.DAT", FileSpec::keAsParts);
    JXMailPrefs prefs(JXMailPrefs::keAllowWriting);
    bool made = prefs.CreatePrefsFile(prefsFile.FullFileSpec());
    prefs.SetMailDirectory(folder);
    prefs.SetUserData(user);
    prefs.SetReturnAddress("lindqvist@post");
    prefs.SetFullSmtpHost("post:25");
    prefs.SetDialupConnection("Office");
    made = made && prefs.WriteJXPrefs();

    FileSpec inbox;
    for (int which = keLocalInbox; which <= keLocalDeadMail; ++which) {
        FileSpec directoryFile;
        made = made && user.SetupLocalMailDirectory(&prefs, directoryFile,
                                                    static_cast<enumLocalMailDir>(which));
        if (which == keLocalInbox)
            inbox = directoryFile;
    }
    if (!made || !FillInbox(inbox) || !WriteUserFiles(user, inbox)) {
        std::fprintf(stderr, "Cannot make the sample user in %s.\n", argv[1]);
        return 1;
    }
    return 0;
}
