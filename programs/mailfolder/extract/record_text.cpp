#include "programs/mailfolder/extract/record_text.h"

#include <algorithm>

#include "programs/mailfolder/extract/source_folder.h"

namespace extract {

namespace {

class Texts {
public:
    Texts(RecordText& text, mime::Charset charset) : mText(text), mCharset(charset) {}

    // A field's bytes; a length that leaves it ends with it.
    std::string Bytes(const unsigned char* field, std::size_t size) const {
        const std::size_t length = std::min<std::size_t>(field[0], size - 1);
        mText.isChanged |= length != field[0];
        return {reinterpret_cast<const char*>(field) + 1, length};
    }

    std::wstring Wide(std::string bytes) const {
        mText.isChanged |= std::any_of(bytes.begin(), bytes.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
        });
        return mime::Decoded(bytes, mCharset, &mText.meaningless);
    }

    // A character that the field's end cuts is no text.
    std::string Whole(std::string bytes, std::size_t most) const {
        if (bytes.size() == most && mCharset == mime::Charset::Utf8) {
            const std::size_t whole = mime::WholeCharacters(bytes);
            mText.isChanged |= whole != bytes.size();
            bytes.resize(whole);
        }
        return bytes;
    }

    std::wstring Name(const unsigned char (&field)[UserLRec::keNameSize]) const {
        std::string bytes = Whole(Bytes(field, sizeof field), sizeof field - 1);
        // A zero would end the name for the library.
        mText.isChanged |= bytes.find('\0') != std::string::npos;
        std::replace(bytes.begin(), bytes.end(), '\0', ' ');
        RBString name;
        name.puts(bytes.c_str());
        RBString ordered;
        const std::string shown = MailUser::OrderedUserName(ordered, name, 1).Text();
        const std::size_t start = std::min(shown.find_first_not_of(' '), shown.size());
        return Wide(shown.substr(start, shown.find_last_not_of(' ') + 1 - start));
    }

private:
    RecordText& mText;
    mime::Charset mCharset;
};

// The identifier lies six bytes before the address: a longer one leaves none.
constexpr std::size_t kRoomBeforeAddress =
    offsetof(DiskDirRec, sender) + offsetof(UserLRec, zone) - DirectoryRecord::keMessageIDOffset;

bool IsPath(const UserLRec& user) {
    return (user.type[0] == 0 && user.type[1] == keUserFile >> 8) ||
           (user.type[1] == 0 && user.type[0] == keUserFile >> 8);
}

} // namespace

RecordText::RecordText(const DiskDirRec& record, mime::Charset charset) {
    const Texts texts(*this, charset);
    sender = texts.Name(record.sender.name);
    topic = texts.Wide(
        texts.Whole(texts.Bytes(record.topic, sizeof record.topic), sizeof record.topic - 1));
    const auto* const idField =
        reinterpret_cast<const unsigned char*>(&record) + DirectoryRecord::keMessageIDOffset;
    if (idField[0] != 0)
        identifier = texts.Bytes(idField, DirectoryRecord::keMessageIDSize);
    const bool hasAddress = identifier.size() < kRoomBeforeAddress;
    if (hasAddress)
        senderAddress = texts.Bytes(record.sender.zone, sizeof record.sender.zone);
    senderIsPath = IsPath(record.sender);
    const auto& continuation = reinterpret_cast<const UserContinuation&>(record.secondUser);
    if (continuation.mark[0] == UserContinuation::keMark0 &&
        continuation.mark[1] == UserContinuation::keMark1) {
        if (hasAddress)
            senderAddress += texts.Bytes(continuation.text, sizeof continuation.text);
    } else {
        secondUser = texts.Name(record.secondUser.name);
        secondAddress = texts.Bytes(record.secondUser.zone, sizeof record.secondUser.zone);
    }
    isChanged |= meaningless != 0;
}

static bool IsSound(DiskDirRec record) { return ClampRecord(record) && IsUsed(record); }

DiskDirRec BestRecord(const DiskDirRec& listed, const DiskDirRec& own) {
    DirectoryRecord mended(&listed);
    const bool inRange = mended.Check_Fixed_Validity();
    if (mended.Record().used == 0)
        mended.Record().used = 1;
    // A broken one has its marks still, where only the mark of the break was put on it.
    if (inRange && (IsUsed(mended.Record()) || SameMessage(listed, own)))
        return listed;
    return IsSound(own) ? own : listed;
}

std::string MarksOf(const DiskDirRec& record) {
    std::string marks;
    const auto add = [&](bool isSet, const char* word) {
        if (isSet)
            marks += (marks.empty() ? "" : ", ") + std::string(word);
    };
    add(record.status & keStatusProcessed, "processed");
    add(record.status & keStatusReturnReceipt, "return receipt");
    add(record.status & keStatusKeepMessageID, "keep identifier");
    add(record.status & keStatusInstallRequest, "to install");
    return marks;
}

} // namespace extract
