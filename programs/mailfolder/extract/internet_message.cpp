#include "programs/mailfolder/extract/internet_message.h"

#include <cstring>

#include "programs/mailfolder/extract/sha256.h"
#include "programs/mailfolder/failure.h"
#include "programs/mime/date.h"
#include "programs/mime/encodings.h"

namespace extract {

using namespace std::chrono;

// RFC 2606, 2: a domain that nobody has.
static constexpr const char* kNobody = "unknown@invalid";

static std::string Hex(const auto& bytes) {
    std::string digits;
    for (const unsigned char byte : bytes)
        digits += fmt::format("{:02x}", byte);
    return digits;
}

std::optional<Identity> Identity::Of(std::string_view digits) {
    Bytes bytes = {};
    if (digits.size() != 2 * bytes.size())
        return {};
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const std::size_t value = std::string_view("0123456789abcdef").find(digits[i]);
        if (value == std::string_view::npos)
            return {};
        bytes[i / 2] = static_cast<unsigned char>(bytes[i / 2] << 4 | value);
    }
    return Identity(bytes);
}

std::optional<Identity> Identity::OfLine(std::string_view line) {
    if (!line.starts_with(kField) || line.substr(kField.size()).substr(0, 2) != ": ")
        return {};
    return Of(line.substr(kField.size() + 2));
}

std::string Identity::Digits() const { return Hex(mBytes); }

// What programs change in a record, and what a message file's own record may have of another name.
static DiskDirRec WithoutMarks(DiskDirRec record) {
    record.index = 0;
    record.used = 0;
    record.status = 0;
    record.attributes = 0;
    std::memset(record.fileName, 0, sizeof record.fileName);
    return record;
}

static std::string_view AsBytes(const DiskDirRec& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

InternetMessage::InternetMessage(const SourceMessage& source, const MessageFile& file,
                                 mime::Charset charset, bool wantsDigest)
    : mSource(source), mFile(file),
      mRecord(source.origin == Origin::Orphan ? file.Record()
                                              : BestRecord(source.record, file.Record())),
      mTexts(mRecord, charset), mCharset(charset),
      mFiled(mRecord.date ? FlipLong(mRecord.date) : file.Written()),
      mHeader(mime::HeaderOf(file.Beginning())) {
    ReadText(charset, wantsDigest);
}

void InternetMessage::ReadText(mime::Charset charset, bool wantsDigest) {
    std::optional<Sha256> textDigest;
    if (wantsDigest)
        textDigest.emplace();
    Sha256 identity;
    identity.Add(mime::Utf8(FoldCase(mSource.file)));
    // What only the D file tells, where the file's own record is gone, makes another message.
    identity.Add(AsBytes(WithoutMarks(mRecord)));
    mime::TextShape shape;
    mime::LineSplitter lines(shape);
    mime::MeaninglessBytes meaningless(charset);
    mFile.ForEachPiece([&](std::string_view piece) {
        identity.Add(piece);
        if (textDigest)
            textDigest->Add(piece);
        lines.Add(piece);
        meaningless.Add(piece);
    });
    const Sha256::Digest digest = identity.Finish();
    Identity::Bytes bytes;
    std::copy_n(digest.begin(), bytes.size(), bytes.begin());
    mIdentity = Identity(bytes);
    if (textDigest)
        mTextDigest = Hex(textDigest->Finish());

    mIsAscii = shape.IsAscii();
    if (shape.FitsLines())
        mEncoding = mIsAscii ? Encoding::SevenBit : Encoding::EightBit;
    else if (mHeader)
        mEncoding = Encoding::Binary;
    else
        mEncoding = shape.IsMostlyBinary() ? Encoding::Base64 : Encoding::QuotedPrintable;
    mMeaningless = mTexts.meaningless + (NeedsMimeFields() ? meaningless.Count() : 0);
}

local_seconds InternetMessage::FiledLocal() const {
    constexpr sys_days kEpoch(year(1904) / January / 1);
    return local_seconds(kEpoch.time_since_epoch() + seconds(mFiled));
}

sys_seconds InternetMessage::FiledUniversal() const {
    const local_seconds local = FiledLocal();
    return sys_seconds(local.time_since_epoch() - mime::ZoneOffset(local));
}

std::string InternetMessage::SenderAddress() const {
    if (mTexts.senderIsPath)
        return kNobody;
    return mime::AddrSpec(mTexts.senderAddress).value_or(kNobody);
}

unsigned int InternetMessage::TextCodePage() const {
    const mime::Field* const type = mHeader ? mHeader->Find("Content-Type") : nullptr;
    const auto its = mime::CodePageNamed(type ? mime::ParameterOf(type->body, "charset") : "");
    return its ? *its : *mime::CodePageNamed(mime::NameOf(mCharset));
}

// A text that says nothing about itself: with a header, only one that is not ASCII needs words.
bool InternetMessage::NeedsMimeFields() const {
    if (!mHeader)
        return true;
    return !mIsAscii && !mHeader->Has("MIME-Version") && !mHeader->Has("Content-Type") &&
           !mHeader->Has("Content-Transfer-Encoding");
}

void InternetMessage::AddMissingFields(mime::HeaderText& header) const {
    if (Lacks("From"))
        header.AddMailbox("From", mTexts.sender, SenderAddress());
    const auto to = mime::AddrSpec(mTexts.secondAddress);
    if (Lacks("To") && (!mTexts.secondUser.empty() || to))
        header.AddMailbox("To", mTexts.secondUser, to.value_or(kNobody));
    if (!mHeader || (Lacks("Subject") && !mTexts.topic.empty()))
        header.AddText("Subject", mTexts.topic);
    if (Lacks("Date"))
        header.AddPlain("Date", mime::DateTime(FiledLocal(), mime::ZoneOffset(FiledLocal())));
    if (Lacks("Message-ID"))
        AddMessageId(header);
    if (NeedsMimeFields())
        AddMimeFields(header);
}

void InternetMessage::AddMessageId(mime::HeaderText& header) const {
    if (const auto known = mime::MessageId(mTexts.identifier)) {
        header.AddPlain("Message-ID", *known);
        return;
    }
    Sha256 place;
    place.Add(mime::Utf8(FoldCase(mFile.FolderName())) + '\n');
    place.Add(mSource.slot ? std::to_string(*mSource.slot) : mime::Utf8(FoldCase(mSource.file)));
    header.AddPlain("Message-ID", fmt::format("<{:.16}.{:.16}@postrider.invalid>",
                                              mIdentity.Digits(), Hex(place.Finish())));
}

void InternetMessage::AddMimeFields(mime::HeaderText& header) const {
    static constexpr const char* kNames[] = {"7bit", "8bit", "binary", "quoted-printable",
                                             "base64"};
    header.AddPlain("MIME-Version", "1.0");
    header.AddPlain("Content-Type", std::string("text/plain; charset=") +
                                        (mIsAscii ? "us-ascii" : mime::NameOf(mCharset)));
    header.AddPlain("Content-Transfer-Encoding", kNames[static_cast<int>(mEncoding)]);
}

void InternetMessage::AddOwnFields(mime::HeaderText& header) const {
    const auto number = [&](const char* field, unsigned long value) {
        header.AddPlain(field, std::to_string(value));
    };
    number("X-Postrider-Kind", static_cast<unsigned short>(mRecord.kind));
    const std::string marks = MarksOf(mRecord);
    header.AddPlain("X-Postrider-Status",
                    fmt::format("0x{:02X}{}", mRecord.status, marks.empty() ? "" : " " + marks));
    header.AddPlain("X-Postrider-Attributes",
                    fmt::format("0x{:04X}", static_cast<unsigned short>(mRecord.attributes)));
    header.AddText("X-Postrider-File", mSource.file);
    if (mSource.slot)
        number("X-Postrider-Slot", *mSource.slot);
    if (mSource.origin != Origin::Listed)
        header.AddPlain("X-Postrider-Found", mSource.origin == Origin::Broken    ? "broken record"
                                             : mSource.origin == Origin::Deleted ? "freed slot"
                                                                                 : "no record");
    if (SenderAddress() == kNobody && !mTexts.senderAddress.empty())
        header.AddText("X-Postrider-Sender", mime::Decoded(mTexts.senderAddress, mCharset));
    if (!mTexts.identifier.empty() && !mime::MessageId(mTexts.identifier))
        header.AddText("X-Postrider-Identifier", mime::Decoded(mTexts.identifier, mCharset));
    if (mTexts.isChanged) {
        std::string record = mime::Base64Of(AsBytes(mRecord));
        for (std::size_t at = 60; at < record.size(); at += 61)
            record.insert(at, 1, ' ');
        header.AddPlain("X-Postrider-Record", record);
    }
}

void InternetMessage::WriteTo(mime::LineSink& sink, bool statusField) const {
    mime::HeaderText header;
    header.AddPlain(Identity::kField, mIdentity.Digits());
    AddMissingFields(header);
    AddOwnFields(header);
    if (statusField && IsProcessed() && Lacks("Status"))
        header.AddPlain("Status", "RO");
    mime::LineSplitter(sink).Add(header.Lines());
    if (!mHeader)
        sink.EndLine();

    mime::QuotedPrintable quotedPrintable(sink);
    mime::Base64 base64(sink);
    const bool encoded = !mHeader;
    mime::LineSplitter lines(encoded && mEncoding == Encoding::QuotedPrintable ? quotedPrintable
                             : encoded && mEncoding == Encoding::Base64        ? base64
                                                                               : sink);
    mFile.ForEachPiece([&](std::string_view piece) { lines.Add(piece); });
    lines.Finish();
}

} // namespace extract
