// Makes the sample inbox that ./run lists: a D file with a dozen messages of all sorts.

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
};

constexpr SampleMessage kMessages[] = {
    {"Lindqvist|Maja", "Minutes of Monday", 1, true, SampleMessage::Sound},
    {"Okafor|Chidi", "Lunch on Thursday?", 1, false, SampleMessage::Sound},
    {"Post Office", "Parcel waiting for you", 3, false, SampleMessage::Sound},
    {"Okafor|Chidi", "Lunch on Wednesday?", 1, false, SampleMessage::Deleted},
    {"M\xFCller|J\xF6rg",
     "Gr\xFC\xDF"
     "e aus K\xF6ln",
     1, false, SampleMessage::Sound},
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
    {"Sato|Yuki", "Re: Minutes of Monday", 1, false, SampleMessage::Sound},
};

void SetPascal(unsigned char* field, const RBString& text) {
    std::memcpy(field, text.Pascal(), text.LengthByte() + 1);
}

DirectoryRecord MakeRecord(const SampleMessage& message, int number) {
    DirectoryRecord record;
    DiskDirRec& fields = record.Record();
    RBString fileName;
    fileName.Sprintf("MSG%05d.EML", number);
    fields.index = static_cast<short>(message.state == SampleMessage::Broken ? 0xFFFF : number);
    fields.used = message.state != SampleMessage::Deleted;
    fields.status = message.processed ? keStatusProcessed : 0;
    fields.kind = static_cast<short>(message.kind);
    fields.date = FlipLong(2082844800ul + 900000000ul + 3600ul * number);
    SetPascal(fields.topic, message.topic);
    SetPascal(fields.fileName, fileName);
    SetPascal(fields.sender.name, message.sender);
    return record;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_sample DFILE\n");
        return 2;
    }
    RbFile dFile(argv[1]);
    if (!dFile.Open(keOpenRewrite)) {
        std::fprintf(stderr, "Cannot make %s.\n", argv[1]);
        return 1;
    }
    DiskDirRec header = {};
    dFile << header;
    int number = 0;
    for (const SampleMessage& message : kMessages) {
        DirectoryRecord record = MakeRecord(message, ++number);
        dFile << record;
    }
    const bool written = static_cast<bool>(dFile.flush());
    dFile.close();
    return written ? 0 : 1;
}
