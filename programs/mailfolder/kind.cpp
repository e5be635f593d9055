#include "programs/mailfolder/kind.h"

#include <algorithm>
#include <cstring>

#include "programs/mailfolder/input_file.h"

bool IsMessageFileName(const std::wstring& name) {
    // What a Macintosh keeps beside each file of such a disk begins so.
    return FoldCase(ExtensionOf(name)) == L".EML" && !name.starts_with(L"._");
}

bool IsZero(const DiskDirRec& record) {
    const auto* const bytes = reinterpret_cast<const char*>(&record);
    return std::all_of(bytes, bytes + sizeof record, [](char c) { return c == 0; });
}

bool LooksLikeRecord(const DiskDirRec& record) {
    const unsigned int nameLength = record.fileName[0];
    const auto* const name = record.fileName + 1;
    // A damaged length takes in the zeros behind the name.
    const auto* const end = std::find(
        name, name + std::min<unsigned int>(nameLength, DiskDirRec::keFileNameSize - 1), 0);
    if (end == name ||
        std::any_of(name, end, [](unsigned char c) { return c < 0x20 || c == 0x7F; }))
        return false;
    const int inRange = (nameLength < DiskDirRec::keFileNameSize) +
                        (record.topic[0] < DiskDirRec::keTopicSize) +
                        (record.sender.name[0] < UserLRec::keNameSize) +
                        (record.secondUser.name[0] < UserLRec::keNameSize) +
                        (static_cast<unsigned short>(record.count) <= 16) +
                        (static_cast<unsigned short>(record.kind) <= 6);
    return inRange >= 5;
}

static bool IsText(const std::string& bytes) {
    return std::none_of(bytes.begin(), bytes.end(), [](unsigned char c) {
        return (c < 0x20 && !std::strchr("\t\n\f\r\x1A", c)) || c == 0;
    });
}

// Whether the first line has a tab, as a user's fields have between them.
static bool IsUserLine(const std::string& text) {
    return text.substr(0, text.find_first_of("\r\n")).find('\t') != std::string::npos;
}

static bool IsUserFile(const InputFile& file) {
    if (file.Size() % sizeof(UserLRec))
        return false;
    const std::string bytes = file.BytesAt(0, 64 * sizeof(UserLRec));
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(UserLRec)) {
        const auto byte = [&](std::size_t offset) {
            return static_cast<unsigned char>(bytes[at + offset]);
        };
        const bool continues = at > 0 && byte(0) == 0x01 && byte(1) == 0x2B;
        if (!continues && (byte(32) != 0xFF || byte(0) >= UserLRec::keNameSize ||
                           byte(46) >= UserLRec::keNameSize))
            return false;
    }
    return true;
}

namespace {

// What a file's slots look like, were it a D file.
struct Slots {
    unsigned int zero = 0;
    unsigned int records = 0;
    unsigned int others = 0;
    bool beginsWithZeros = false;
    bool beginsWithRecord = false;
};

} // namespace

static Slots LookAtSlots(const InputFile& file) {
    constexpr unsigned long long kMost = 256;
    const unsigned long long count = file.Size() / sizeof(DiskDirRec);
    Slots slots;
    for (unsigned long long i = 0; i < std::min(count, kMost); ++i) {
        DiskDirRec record;
        file.ReadAt(count <= kMost ? i * sizeof record : i * count / kMost * sizeof record, &record,
                    sizeof record);
        const bool zero = IsZero(record);
        const bool isRecord = !zero && LooksLikeRecord(record);
        ++(zero ? slots.zero : isRecord ? slots.records : slots.others);
        if (i == 0) {
            slots.beginsWithZeros = zero;
            slots.beginsWithRecord = isRecord;
        }
    }
    return slots;
}

static bool IsDFile(const Slots& slots, const InputFile& file) {
    const unsigned long long rest = file.Size() % sizeof(DiskDirRec);
    if (file.Size() < sizeof(DiskDirRec) || slots.records + slots.others == 0) {
        // Zeros alone are a header with free slots, or one that is cut.
        const std::string bytes = file.BytesAt(file.Size() - rest, rest);
        const bool zeros = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == 0; });
        return zeros ? file.Size() < sizeof(DiskDirRec) || rest == 0
                     : file.Size() > sizeof(DiskDirRec) && slots.zero > 0;
    }
    // A header of zeros counts for a record.
    return slots.records + slots.beginsWithZeros >= slots.others;
}

// A record, and then text.
static bool IsMessageFile(const Slots& slots, const InputFile& file) {
    if (!slots.beginsWithRecord || slots.records > 1)
        return false;
    const std::string text = file.BytesAt(sizeof(DiskDirRec), 4);
    return slots.others > 0 || (!text.empty() && IsText(text));
}

Kind KindOf(const Path& path) {
    if (IsMessageFileName(path.Name()))
        return Kind::MessageFile;
    const InputFile file(path);
    if (file.Size() == 0)
        return Kind::Empty;
    const std::string start = file.BytesAt(0, 4096);
    if (start.starts_with("PREFRBSW"))
        return Kind::PrefFile;
    // The strictest comes first.
    if (IsUserFile(file))
        return Kind::UserFile;
    const Slots slots = LookAtSlots(file);
    if (IsMessageFile(slots, file))
        return Kind::MessageFile;
    if (IsDFile(slots, file))
        return Kind::DFile;
    return !IsText(start) ? Kind::Other : IsUserLine(start) ? Kind::UserList : Kind::Text;
}

const char* Words(Kind kind) {
    switch (kind) {
    case Kind::DFile:
        return "a D file";
    case Kind::Empty:
        return "an empty file";
    case Kind::MessageFile:
        return "a message file";
    case Kind::PrefFile:
        return "a preference file";
    case Kind::UserFile:
        return "a file of user records";
    case Kind::UserList:
        return "a user list";
    case Kind::Text:
        return "text";
    default:
        return "none of the files that this tool knows";
    }
}
