#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "programs/mailfolder/extract/message_file.h"
#include "programs/mailfolder/extract/record_text.h"
#include "programs/mailfolder/extract/source_folder.h"
#include "programs/mime/header.h"
#include "programs/mime/lines.h"

namespace extract {

// By what a message is known again in a target, wherever its folder went: a digest of its file's
// name, of what its record says for good, and of its text.
class Identity {
public:
    typedef std::array<unsigned char, 16> Bytes;
    // The first field of every message that is written.
    static constexpr std::string_view kField = "X-Postrider-Identity";

    Identity() : mBytes() {}
    explicit Identity(const Bytes& bytes) : mBytes(bytes) {}
    // Of 32 hexadecimal digits; none for other texts.
    static std::optional<Identity> Of(std::string_view digits);
    // Of a message's first line.
    static std::optional<Identity> OfLine(std::string_view line);

    std::string Digits() const;
    auto operator<=>(const Identity&) const = default;

private:
    Bytes mBytes;
};

// A message of a folder as an Internet message (RFC 5322). What its text begins with decides:
// Internet header fields are passed through with the text, and only missing ones are added; else
// the header is made from the record.
class InternetMessage {
public:
    // Reads the text once. The file must stay open at the message as long as this lives. Throws
    // what is Unreadable.
    InternetMessage(const SourceMessage& source, const MessageFile& file, mime::Charset charset,
                    bool wantsDigest);

    const SourceMessage& Source() const { return mSource; }
    const Identity& Id() const { return mIdentity; }
    const DiskDirRec& Record() const { return mRecord; }
    const RecordText& Texts() const { return mTexts; }
    // That the text begins with.
    const std::optional<mime::Header>& Header() const { return mHeader; }
    bool IsProcessed() const { return mRecord.status & keStatusProcessed; }
    // The local time in seconds from 1904-01-01, and in universal time.
    unsigned long Filed() const { return mFiled; }
    std::chrono::sys_seconds FiledUniversal() const;
    // The sender's address, or one that stands for none.
    std::string SenderAddress() const;
    // SHA-256 of the text, in hexadecimal digits; empty when it was not wanted.
    const std::string& TextDigest() const { return mTextDigest; }
    // Of the text: what its header says, where that is one that is known, else of what was given.
    unsigned int TextCodePage() const;
    // Bytes that are kept, and have no meaning in the character set.
    unsigned long Meaningless() const { return mMeaningless; }

    // Writes it, with a Status field (of mbox files) where asked for and not there.
    void WriteTo(mime::LineSink& sink, bool statusField) const;

private:
    enum class Encoding { SevenBit, EightBit, Binary, QuotedPrintable, Base64 };

    void ReadText(mime::Charset charset, bool wantsDigest);
    bool NeedsMimeFields() const;
    void AddMissingFields(mime::HeaderText& header) const;
    void AddMessageId(mime::HeaderText& header) const;
    void AddMimeFields(mime::HeaderText& header) const;
    void AddOwnFields(mime::HeaderText& header) const;
    std::chrono::local_seconds FiledLocal() const;
    bool Lacks(std::string_view field) const { return !mHeader || !mHeader->Has(field); }

    const SourceMessage& mSource;
    const MessageFile& mFile;
    DiskDirRec mRecord;
    RecordText mTexts;
    mime::Charset mCharset;
    unsigned long mFiled;
    std::optional<mime::Header> mHeader;
    Encoding mEncoding = Encoding::SevenBit;
    bool mIsAscii = true;
    Identity mIdentity;
    std::string mTextDigest;
    unsigned long mMeaningless = 0;
};

} // namespace extract
