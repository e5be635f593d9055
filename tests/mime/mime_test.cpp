#include <gtest/gtest.h>

#include "programs/mime/charset.h"
#include "programs/mime/date.h"
#include "programs/mime/decodings.h"
#include "programs/mime/encoded_words.h"
#include "programs/mime/encodings.h"
#include "programs/mime/header.h"
#include "programs/mime/maildir.h"
#include "programs/mime/mbox.h"
#include "programs/mime/parts.h"

namespace {

using namespace mime;

// Lines as a text, each ended by a "|".
struct Collected : LineSink {
    void Text(std::string_view piece) override { text += piece; }
    void EndLine() override { text += '|'; }
    std::string text;
};

// A text through an encoder, in pieces of that size.
template <class Encoder>
std::string Through(const std::string& text, std::size_t size) {
    Collected collected;
    Encoder encoder(collected);
    LineSplitter lines(encoder);
    for (std::size_t at = 0; at < text.size(); at += size)
        lines.Add(std::string_view(text).substr(at, size));
    lines.Finish();
    return collected.text;
}

struct Same : LineSink {
    explicit Same(LineSink& to) : sink(to) {}
    void Text(std::string_view piece) override { sink.Text(piece); }
    void EndLine() override { sink.EndLine(); }
    LineSink& sink;
};

TEST(Mime, TextsComeOutAlikeInWhateverPieces) {
    const std::string text = "a\rb\r\nc\n\n\r>From me\n>>From \nFrom\r\n From x\n\xE4 = \t\r\n" +
                             std::string(80, 'y') + " \nFrom you, last";
    for (const auto encode :
         {Through<Same>, Through<MboxQuoting>, Through<QuotedPrintable>, Through<Base64>})
        for (std::size_t size = 1; size < text.size(); ++size)
            EXPECT_EQ(encode(text, size), encode(text, text.size())) << size;
    EXPECT_EQ(Through<Same>("a\rb\r\nc\n\n\rd", 99), "a|b|c|||d");
    EXPECT_EQ(Through<MboxQuoting>("From a\n>From b\n> From\nFro", 2),
              ">From a|>>From b|> From|Fro||");
    EXPECT_EQ(Through<MboxQuoting>("", 1), "|");
    EXPECT_EQ(Through<QuotedPrintable>("\xE4=\t \nx ", 1), "=E4=3D\t=20|x=20");
    EXPECT_EQ(Through<QuotedPrintable>(std::string(77, 'z'), 7), std::string(75, 'z') + "=|zz");
    EXPECT_EQ(Through<Base64>("ab\rc", 1), "YWINCmM=|");
}

// A text through an encoder and the decoder of what it made.
template <class Encoder>
std::string ThereAndBack(const std::string& text, const char* encoding) {
    std::string back;
    const auto decoder = DecoderOf(encoding, [&](std::string_view bytes) { back += bytes; });
    Encoder encoder(*decoder);
    LineSplitter lines(encoder);
    lines.Add(text);
    lines.Finish();
    decoder->Finish();
    return back;
}

TEST(Mime, WhatIsEncodedIsDecoded) {
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += static_cast<char>(i * i / 7);
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
    text.insert(1000, " \n\t\n");
    EXPECT_EQ(ThereAndBack<QuotedPrintable>(text, "quoted-printable"), text);
    std::string crLf = text;
    crLf.replace(crLf.find('\n'), 1, "\r\n").replace(crLf.rfind('\n'), 1, "\r\n");
    EXPECT_EQ(ThereAndBack<Base64>(text, "base64"), crLf);
    EXPECT_EQ(ThereAndBack<Same>("=41 =\n=4 =G1 \n=", "quoted-printable"), "A =4 =G1\n");
    EXPECT_EQ(ThereAndBack<Same>("YW\nJj !ZA=", "base64"), "abcd");
    EXPECT_EQ(ThereAndBack<Same>("=41\n", "x-own"), "=41\n");

    EXPECT_EQ(ValueOf(" Text/PLAIN ; a=b"), "text/plain");
    EXPECT_EQ(ParameterOf("a; NAME = x; b=\"c;\\\"d\";e=f g", "b"), "c;\"d");
    EXPECT_EQ(ParameterOf("a; b=\"c;e=g\"; e=f g", "E"), "f");
    EXPECT_EQ(ParameterOf("a; b", "b") + ParameterOf("a", "b") + ParameterOf("a; b=", "b"), "");
}

// The bodies of a message, "type|text|" each; "+" for one that says the same again.
struct Bodies : PartTaker {
    void Begin(const Part& part) override {
        text += (part.isAlternative ? "+" : part.isAttached ? "@" : "") + part.type + "|";
    }
    void Bytes(std::string_view bytes) override { text += bytes; }
    void End() override { text += "|"; }
    std::string text;
};

TEST(Mime, MessagesAreTakenApart) {
    const auto bodies = [](const std::string& message) {
        const auto header = HeaderOf(message);
        Bodies found;
        PartReader reader(*header, found);
        LineSplitter lines(reader);
        lines.Add(std::string_view(message).substr(header->size));
        lines.Finish();
        return found.text;
    };
    const std::string mixed = "Subject: a\nContent-Type: multipart/mixed; boundary=\"x y\"\n\n";
    EXPECT_EQ(bodies("To: a\n\nb\n--x\n"), "text/plain|b\n--x\n|");
    EXPECT_EQ(bodies(mixed + "before\n--x y\n\na\n\n--x y \nContent-Type: image/png\n"
                             "Content-Transfer-Encoding: base64\n\nYQ==\n--x y--\nafter"),
              "text/plain|a\n|@image/png|a|");
    // Nested, alternatives, an inner one that does not end, a part without a header, the last one
    // cut.
    EXPECT_EQ(bodies(mixed +
                     "--x y\nContent-Type: multipart/alternative; boundary=i\n\n--i\n\na\n--i\n"
                     "Content-Type: text/html\n\nb\n--x y\nno header\n\nc\n--x y\n"
                     "Content-Type: message/rfc822\n\nSubject: s\n\nd\n--x y\nX: y"),
              "text/plain|a|+text/html|b|text/plain|no header\n\nc|text/plain|d|text/plain||");
}

TEST(Mime, AHeaderIsNothingButFieldsWithAKnownOneAmongThem) {
    const auto size = [](std::string_view text) {
        const auto header = HeaderOf(text);
        return header ? static_cast<int>(header->size) : -1;
    };
    EXPECT_EQ(size("Subject: a\r\n b\r\n\r\ntext"), 18);
    EXPECT_EQ(size("X-A: 1\rfrom:b\r\rtext"), 15);
    EXPECT_EQ(size("To: a\nX: b"), 10);
    for (const char* text :
         {"", "\nSubject: a\n\n", "To: a", "Note: a\n\n", " Subject: a\n\n", "Subject : a\n\n",
          "Subject: a\ntext\n\n", "From me\nTo: a\n\n", "Subject\xE4: a\n\n", ": a\n\n"})
        EXPECT_EQ(size(text), -1) << text;
    const std::string text = "Subject: a\r\n\tb \r\nTO: c\r\n\r\n";
    const auto header = HeaderOf(text);
    EXPECT_EQ(Unfolded(header->Find("SUBJECT")->body), "a\tb");
    EXPECT_TRUE(header->Has("to"));
    EXPECT_FALSE(header->Has("t"));
}

TEST(Mime, FieldsAreFoldedAndEncoded) {
    const auto text = [](std::wstring_view value) {
        HeaderText header;
        header.AddText("Subject", value);
        return header.Lines();
    };
    EXPECT_EQ(text(L"plain"), "Subject: plain\n");
    EXPECT_EQ(text(L"Gr\u00FC\u00DFe a"), "Subject: =?windows-1252?Q?Gr=FC=DFe_a?=\n");
    EXPECT_EQ(text(L"\u65E5\u672C"), "Subject: =?utf-8?B?5pel5pys?=\n");
    EXPECT_EQ(text(L"a\r\nBcc: b"), "Subject: =?windows-1252?Q?a__Bcc=3A_b?=\n");
    EXPECT_EQ(text(L"=?x"), "Subject: =?windows-1252?B?PT94?=\n");
    // No line is too long, no word of the lines holds a part of a character.
    std::wstring many;
    for (int i = 0; i < 60; ++i)
        many += L"\u65E5\xD83D\xDE00 words ";
    const std::string folded = text(many);
    for (std::size_t at = 0, end; (end = folded.find('\n', at)) != folded.npos; at = end + 1)
        EXPECT_LE(end - at, 76u);
    EXPECT_EQ(folded.find("=EF=BF=BD"), folded.npos);

    const auto mailbox = [](std::wstring_view name) {
        HeaderText header;
        header.AddMailbox("From", name, "a@b");
        return header.Lines();
    };
    EXPECT_EQ(mailbox(L""), "From: <a@b>\n");
    EXPECT_EQ(mailbox(L" Anna Smith "), "From: Anna Smith <a@b>\n");
    EXPECT_EQ(mailbox(L"O\"Neil, J."), "From: \"O\\\"Neil, J.\" <a@b>\n");
}

TEST(Mime, EncodedWordsAreRead) {
    const struct {
        const char* field;
        const wchar_t* text;
    } cases[] = {
        {" Plain =? a?= \xE4\r\n\tb", L"Plain =? a?= \u00E4 b"},
        {"=?ISO-8859-1?Q?a?= =?ISO-8859-1?q?b?=\r\n =?utf-8*de?Q?_=C3=A4=?=", L"ab \u00E4="},
        {"(=?us-ascii?Q?a?= b =?us-ascii?Q?c?=)", L"(a b c)"},
        {"=?ISO-8859-1?B?SWYgeW91IGNhbiByZWFkIHRoaXMgeW8=?=", L"If you can read this yo"},
        // A character in two words, and one from outside the basic plane.
        {"=?utf-8?B?5pel5g==?= =?UTF-8?b?nKw?=", L"\u65E5\u672C"},
        {"=?utf-8?Q?=F0=9F=98=80?=", L"\xD83D\xDE00"},
        {"=?windows-1251?Q?=CC=E8=F0?= =?iso-8859-15?Q?=A4?=", L"\u041C\u0438\u0440\u20AC"},
        {"=?utf-8?Q?a=0D=0ABcc:_b?=", L"a  Bcc: b"},
        // What is none stays.
        {"=?x-none?Q?a?= =?utf-8?X?a?= =?utf-8?B?a*b?= =?utf-8?Q?a b?= =?utf-8?Q?a",
         L"=?x-none?Q?a?= =?utf-8?X?a?= =?utf-8?B?a*b?= =?utf-8?Q?a b?= =?utf-8?Q?a"},
        {"=?0?Q?a?==?windows-0?Q?a?==?", L"=?0?Q?a?==?windows-0?Q?a?==?"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(FieldText(one.field), one.text) << one.field;
    // What is written is read back, whatever its words part.
    std::wstring text;
    for (int i = 0; i < 50; ++i)
        text += std::wstring(i % 7, L' ') + L"\u65E5\xD83D\xDE00=?_" + wchar_t(L'!' + i);
    EXPECT_EQ(FieldText(EncodedWords(text)), text);
    EXPECT_EQ(FieldText(EncodedWords(L"\u20AC \u00E4")), L"\u20AC \u00E4");
}

TEST(Mime, AddressesAndIdentifiersAreWhatFieldsCanHold) {
    EXPECT_EQ(AddrSpec("a.b@c.d"), "a.b@c.d");
    EXPECT_EQ(AddrSpec("box7"), "box7@invalid");
    EXPECT_EQ(AddrSpec("a b\"@c"), "\"a b\\\"\"@c");
    EXPECT_EQ(AddrSpec("a@b@[1.2.3.4]"), "\"a@b\"@[1.2.3.4]");
    EXPECT_EQ(AddrSpec("a@b c"), "\"a@b c\"@invalid");
    EXPECT_FALSE(AddrSpec("") || AddrSpec("a\r\n@b") || AddrSpec("\xE4@b"));
    EXPECT_EQ(MessageId("<a@b>"), "<a@b>");
    EXPECT_EQ(MessageId("a@b"), "<a@b>");
    EXPECT_FALSE(MessageId("") || MessageId("a") || MessageId("a@b c") || MessageId("<a@b"));
}

TEST(Mime, BytesWithoutAMeaningAreCounted) {
    const auto count = [](Charset charset, const std::string& text) {
        MeaninglessBytes whole(charset);
        whole.Add(text);
        MeaninglessBytes pieces(charset);
        for (const char c : text)
            pieces.Add({&c, 1});
        EXPECT_EQ(pieces.Count(), whole.Count());
        return whole.Count();
    };
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(count(Charset::Windows1252, all), 5u);
    EXPECT_EQ(count(Charset::Macintosh, all), 0u);
    EXPECT_EQ(count(Charset::Utf8, all), 128u);
    EXPECT_EQ(count(Charset::Utf8, "\xE6\x97\xA5\xF0\x9F\x98\x80\xC3\xA4"), 0u);
    EXPECT_EQ(count(Charset::Utf8, "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80\xE6\x97"), 11u);
    EXPECT_EQ(WholeCharacters("a\xE6\x97"), 1u);
    EXPECT_EQ(Utf8(Decoded("\x80\x81", Charset::Windows1252)), "\u20AC\uFFFD");
    EXPECT_EQ(Utf8(Decoded("\x8A", Charset::Macintosh)), "\u00E4");
}

TEST(Mime, DatesAndNames) {
    using namespace std::chrono;
    const sys_seconds time = sys_days(year(2001) / 2 / 3) + 4h + 5min + 6s;
    EXPECT_EQ(AscTime(time), "Sat Feb  3 04:05:06 2001");
    EXPECT_EQ(SeparatorLine("a@b", time), "From a@b Sat Feb  3 04:05:06 2001");
    const local_seconds local(time.time_since_epoch());
    EXPECT_EQ(DateTime(local, -210min), "Sat, 03 Feb 2001 04:05:06 -0330");
    const std::string unique = MaildirName(981173106, "00ff");
    EXPECT_EQ(MaildirPlace(unique, true, ';'), "cur\\981173106.00ff.postrider;2,S");
    EXPECT_EQ(MaildirPlace(unique, false, ';'), "new\\981173106.00ff.postrider");
    EXPECT_EQ(MaildirIdentity("981173106.00ff.postrider,S=12:2,RS"), "00ff");
    EXPECT_EQ(MaildirIdentity("981173106.M1.host"), "");
}

} // namespace
