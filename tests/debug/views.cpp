// Values for the debugger to show; views.py names what each must read.

#include <cstring>

#include "postrider.h"

namespace {

// A part of a record: its offset and its bytes.
void Put(DiskDirRec& record, unsigned int at, const char* bytes, unsigned int size) {
    std::memcpy(reinterpret_cast<char*>(&record) + at, bytes, size);
}

DiskDirRec SampleRecord() {
    DiskDirRec record{};
    Put(record, 0, "\x00\x07\x01\x03\x11Minutes of Monday", 22);
    Put(record, 36, "\x04\x00", 2);
    Put(record, 38, "\x0CMSG00001.EML", 13);
    Put(record, 72, "\x0ELindqvist|Maja", 15);
    Put(record, 118, "\x0Elindqvist@post", 15);
    Put(record, 300, "\xB1\xCA\xA7\x90", 4);
    Put(record, 308, "\x00\x10\x00\x01", 4);
    return record;
}

// The debugger stops here and looks at the caller.
__attribute__((noinline)) void Stop(const RBString& argument) { asm volatile("" ::"r"(&argument)); }

} // namespace

int main() {
    RBString empty;
    RBString plain("Minutes of Monday");
    RBString shared(plain);
    RBString letters("Gr\xFC\xDF \"to\"\tall");
    RBString zero("a-b");
    *zero.charAt(2) = '\0';
    RBString longText;
    for (int i = 0; i < 1000; ++i)
        longText.concat("0123456789");
    [[maybe_unused]] BaseString& base = plain;

    // Damage: nothing there, text nowhere, a length of all memory. The debugger looks at them; the
    // program ends without destroying them.
    alignas(RBString) unsigned char strings[4][sizeof(RBString)];
    static StringRep nowhere, endless("endless", 0);
    nowhere.mpBuffer = reinterpret_cast<unsigned char*>(0x10);
    nowhere.miLength = 5;
    endless.miLength = 0xFFFFFFF0;
    StringRep* const reps[4] = {nullptr, reinterpret_cast<StringRep*>(0x20), &nowhere, &endless};
    for (int i = 0; i < 4; ++i) {
        std::memcpy(strings[i], &plain, sizeof plain);
        std::memcpy(strings[i] + sizeof(RBString) - sizeof(StringRep*), &reps[i], sizeof reps[i]);
    }
    [[maybe_unused]] auto* const noText = reinterpret_cast<RBString*>(strings[0]);
    [[maybe_unused]] auto* const wildRep = reinterpret_cast<RBString*>(strings[1]);
    [[maybe_unused]] auto* const wildText = reinterpret_cast<RBString*>(strings[2]);
    [[maybe_unused]] auto* const wildLength = reinterpret_cast<RBString*>(strings[3]);

    FileSpec noSpec;
    FileSpec spec("c:\\Mail\\In Box\\Letter.EML");
    FileSpec relative("Box\\Letter");
    RbFile file("D:\\Mail\\DFile");
    BaseDirFile folder(keDirMessages);
    folder.SetSpecPart("E:\\Old\\DFile", 0);

    RBInt number(0x1234), negative(-2);

    DiskDirRec disk = SampleRecord();
    [[maybe_unused]] DiskDirRec freeSlot{};
    DiskDirRec overlong = SampleRecord();
    overlong.topic[0] = 200;
    std::memset(overlong.topic + 1, 'T', DiskDirRec::keTopicSize - 1);
    overlong.sender.name[0] = 255;
    DiskDirRec broken;
    std::memset(static_cast<void*>(&broken), 0xFF, sizeof broken);
    DirectoryRecord record(&disk);
    [[maybe_unused]] UserLRec user = disk.sender;

    RB_Container<RBString> none(0);
    RB_Container<RBString> texts(0);
    texts.AddObject(plain);
    texts.AddObject(empty);
    texts.AddObject(letters);
    RB_Container<DirectoryRecord> records(RB_Container<DirectoryRecord>::keOwnsObjects);
    records.AddObject(*new DirectoryRecord(disk.used ? &disk : nullptr));
    S_List* list = new S_List;
    list->AppendItem(&plain);
    list->AppendItem(reinterpret_cast<void*>(0x10));
    list->mpoHead->next->next = list->mpoHead;
    alignas(RB_Container<RBString>) unsigned char rings[sizeof(RB_Container<RBString>)] = {};
    std::memcpy(rings + sizeof rings - sizeof list, &list, sizeof list);
    [[maybe_unused]] auto* const ring = reinterpret_cast<RB_Container<RBString>*>(rings);

    Stop(plain);
    list->mpoHead->next->next = nullptr;
    delete list;
    return 0;
}
