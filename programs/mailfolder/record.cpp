#include "programs/mailfolder/record.h"

#include <cstddef>
#include <cstring>

#include "programs/mailfolder/hash.h"
#include "programs/mailfolder/input_file.h"

namespace {

// A length-prefixed field of a record.
struct Text {
    const char* name;
    std::size_t offset;
    unsigned int size;
    const char* lost;
};

} // namespace

static constexpr char kShownWhole[] = "What the length was: readers show all that the field has.";
static constexpr std::size_t kSender = offsetof(DiskDirRec, sender);
static constexpr std::size_t kSecondUser = offsetof(DiskDirRec, secondUser);
static constexpr std::size_t kZone = offsetof(UserLRec, zone);

static constexpr Text kTexts[] = {
    {"topic", offsetof(DiskDirRec, topic), DiskDirRec::keTopicSize, kShownWhole},
    {"file name", offsetof(DiskDirRec, fileName), DiskDirRec::keFileNameSize,
     "The name's length: readers take the whole field for the name, and may miss the file."},
    {"sender's name", kSender, UserLRec::keNameSize, kShownWhole},
    {"message identifier", DirectoryRecord::keMessageIDOffset, DirectoryRecord::keMessageIDSize,
     "The identifier: the message may be fetched once more."},
    {"sender's address", kSender + kZone, UserLRec::keNameSize, kShownWhole},
    {"second user's name", kSecondUser, UserLRec::keNameSize, kShownWhole},
    {"second user's address", kSecondUser + kZone, UserLRec::keNameSize, kShownWhole},
};

static unsigned char* BytesOf(DiskDirRec& record) {
    return reinterpret_cast<unsigned char*>(&record);
}

// An identifier, which may be anything, can stand where the sender's address does.
static bool IsCovered(const Text& text, const unsigned char* record) {
    return text.offset == kSender + kZone &&
           record[DirectoryRecord::keMessageIDOffset] + DirectoryRecord::keMessageIDOffset >=
               static_cast<int>(text.offset);
}

static bool IsControl(unsigned char c) { return c < 0x20 || c == 0x7F; }

// Calls `visit` with each text, its bytes and its length within the field.
template <class Visit>
static void ForEachText(DiskDirRec& record, Visit visit) {
    for (const Text& text : kTexts) {
        unsigned char* const field = BytesOf(record) + text.offset;
        if (!IsCovered(text, BytesOf(record)))
            visit(text, field, std::min<unsigned int>(field[0], text.size - 1));
    }
}

std::vector<Fault> FaultsOf(const DiskDirRec& record) {
    std::vector<Fault> faults;
    DiskDirRec copy = record;
    if (static_cast<unsigned short>(record.index) == DiskDirRec::keBrokenIndex)
        faults.push_back({"broken-index", "The record is marked as broken (its index is 65535).",
                          "The message is not listed, and compressing drops its record."});
    const bool controlTopic = record.topic[1] != 0 && record.topic[1] < 0x20;
    if (controlTopic)
        faults.push_back(
            {"control-topic",
             fmt::format("The topic begins with the control character {}.", record.topic[1]),
             "The message is not listed, and compressing drops its record."});
    ForEachText(copy, [&](const Text& text, const unsigned char* field, unsigned int length) {
        if (field[0] >= text.size)
            faults.push_back({"field-length",
                              fmt::format("The {} claims {} characters; its field holds {}.",
                                          text.name, field[0], text.size - 1),
                              text.lost});
        const bool shown = text.offset != DirectoryRecord::keMessageIDOffset;
        const bool told = controlTopic && text.offset == offsetof(DiskDirRec, topic);
        if (shown && !told && field[0] < text.size &&
            std::any_of(field + 1, field + 1 + length, IsControl))
            faults.push_back({"control-character",
                              fmt::format("The {} has a control character in it.", text.name),
                              "Nothing, but what programs show of it."});
    });
    const auto number = [&](const char* field, unsigned short value, unsigned int most,
                            const char* lost) {
        if (value > most)
            faults.push_back(
                {"field-range",
                 fmt::format("The {} is {}; it goes from 0 to {}.", field, value, most), lost});
    };
    number("count", static_cast<unsigned short>(record.count), 16, "Readers take 16 for it.");
    number("kind", static_cast<unsigned short>(record.kind), 5,
           "The message's kind: readers take 6 for it, which stays known as damaged.");
    return faults;
}

DiskDirRec Mended(const DiskDirRec& record) {
    DiskDirRec mended = record;
    mended.index = static_cast<unsigned short>(mended.index) == DiskDirRec::keBrokenIndex
                       ? 0
                       : static_cast<short>(mended.index);
    // Whatever the topic's length, readers look at its first byte.
    if (mended.topic[1] != 0 && mended.topic[1] < 0x20)
        mended.topic[1] = ' ';
    ForEachText(mended, [](const Text& text, unsigned char* field, unsigned int length) {
        if (field[0] >= text.size) {
            // Bytes behind the text's zeros are none of it.
            const auto* const end = static_cast<unsigned char*>(std::memchr(field + 1, 0, length));
            field[0] = static_cast<unsigned char>(end ? end - field - 1 : length);
            if (text.offset == DirectoryRecord::keMessageIDOffset)
                field[0] = 0;
        }
        std::replace_if(field + 1, field + 1 + field[0], IsControl, ' ');
    });
    if (static_cast<unsigned short>(mended.count) > 16)
        mended.count = 16;
    // Unknown: no rule may process it.
    if (static_cast<unsigned short>(mended.kind) > 5)
        mended.kind = 0;
    return mended;
}

unsigned long long Fingerprint(const DiskDirRec& record) {
    const DiskDirRec mended = Mended(record);
    Hash hash;
    for (const std::string& text :
         {FieldText(mended.topic), FieldText(mended.sender.name), std::to_string(mended.date)})
        hash.Add(std::string_view(text)).Add(0xFF);
    return hash.Value();
}

std::string ShownSender(const DirectoryRecord& record) {
    RBString shown;
    RBString name = record.SenderName();
    return MailUser::OrderedUserName(shown, name, 1).Text();
}

bool IsBlank(const DiskDirRec& record) {
    return record.topic[0] == 0 && record.sender.name[0] == 0 && record.date == 0;
}

static void SetName(DiskDirRec& record, const std::string& name) {
    record.fileName[0] = static_cast<unsigned char>(name.size());
    std::memcpy(record.fileName + 1, name.data(), name.size());
    record.used = 1;
}

OwnRecord ReadOwnRecord(const Path& message, const std::string& recordName) {
    OwnRecord own;
    const Path::Thing what = message.What();
    if (what != Path::keFile) {
        own.state = what == Path::keLink ? OwnRecord::Link : OwnRecord::Unreadable;
        return own;
    }
    try {
        const InputFile file(message);
        if (file.ReadAt(0, &own.record, sizeof own.record) < sizeof own.record) {
            own.state = OwnRecord::Short;
            return own;
        }
    } catch (const Failure&) {
        return own;
    }
    if (IsZero(own.record)) {
        own.state = OwnRecord::Zero;
        return own;
    }
    SetName(own.record, recordName);
    // As it stands in D files.
    DirectoryRecord record(&own.record);
    record.FixTopicAndIndex();
    own.record = record.Record();
    own.state = !LooksLikeRecord(own.record) ? OwnRecord::Garbage
                : IsSound(own.record)        ? OwnRecord::Sound
                                             : OwnRecord::Damaged;
    return own;
}

DiskDirRec RecordThatSaysSo(const FileEntry& entry, const std::string& recordName) {
    DiskDirRec record = {};
    const std::string topic = ("(damaged) " + recordName).substr(0, DiskDirRec::keTopicSize - 1);
    record.topic[0] = static_cast<unsigned char>(topic.size());
    std::memcpy(record.topic + 1, topic.data(), topic.size());
    SetName(record, recordName);
    // Of its file, in local time, from 1904 on; a FILETIME counts from 1601, in tenths of
    // microseconds.
    FILETIME utc = {static_cast<DWORD>(entry.written), static_cast<DWORD>(entry.written >> 32)};
    FILETIME local;
    FileTimeToLocalFileTime(&utc, &local);
    const unsigned long long ticks =
        static_cast<unsigned long long>(local.dwHighDateTime) << 32 | local.dwLowDateTime;
    constexpr unsigned long long kEpoch = 9561628800u;
    record.date = FlipLong(static_cast<unsigned long>(ticks / 10000000u - kEpoch));
    return record;
}
