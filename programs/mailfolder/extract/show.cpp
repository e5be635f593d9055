// Shows one message: what its record says, and its text.

#include <algorithm>
#include <optional>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/extract/internet_message.h"
#include "programs/mailfolder/extract/selection.h"
#include "programs/mailfolder/tool.h"
#include "programs/mime/encoded_words.h"
#include "programs/mime/parts.h"
#include "resident/core/windows_api.h"

namespace extract {

namespace {

struct ShowOptions {
    std::string folder;
    std::string message;
    mime::Charset charset = mime::Charset::Windows1252;
    bool raw = false;
};

// Prints lines in UTF-8, without what terminals would obey.
class LinePrinter : public mime::LineSink {
public:
    explicit LinePrinter(unsigned int codePage) : mCodePage(codePage) {}

    void Text(std::string_view piece) override {
        mLine += piece;
        // Lines have no end that one could wait for.
        constexpr std::size_t kLongest = 0x10000;
        if (mLine.size() > kLongest)
            Put(mCodePage == CP_UTF8 ? mime::WholeCharacters(mLine) : mLine.size());
    }
    void EndLine() override {
        Put(mLine.size());
        Write("\n");
    }
    void Finish() override {
        if (!mLine.empty())
            EndLine();
    }

private:
    void Put(std::size_t size) {
        const std::wstring text =
            mime::DecodedFrom(mCodePage, std::string_view(mLine).substr(0, size));
        std::size_t start = 0;
        for (std::size_t tab; (tab = text.find(L'\t', start)) != text.npos; start = tab + 1)
            Print("{}\t", Printable(std::wstring_view(text).substr(start, tab - start)));
        Write(Printable(std::wstring_view(text).substr(start)));
        mLine.erase(0, size);
    }

    unsigned int mCodePage;
    std::string mLine;
};

// Prints the bodies that are text, and a line for each other one.
class PartPrinter : public mime::PartTaker {
public:
    explicit PartPrinter(unsigned int codePage) : mCodePage(codePage) {}

    void Begin(const mime::Part& part) override {
        mPart = part;
        mSize = 0;
        if (part.isAttached || part.isAlternative)
            return;
        mPrinter.emplace(mime::CodePageNamed(part.charset).value_or(mCodePage));
        mLines.emplace(*mPrinter);
    }
    void Bytes(std::string_view bytes) override {
        mSize += bytes.size();
        if (mLines)
            mLines->Add(bytes);
    }
    void End() override {
        if (mLines) {
            mLines->Finish();
            mLines.reset();
            return;
        }
        Print("[{}{}{}, {}]\n", Printable(mPart.name), mPart.name.empty() ? "" : ", ",
              Printable(mPart.type), Count(mSize, "byte"));
    }

private:
    unsigned int mCodePage;
    mime::Part mPart;
    unsigned long long mSize = 0;
    std::optional<LinePrinter> mPrinter;
    std::optional<mime::LineSplitter> mLines; // while a part is printed
};

bool IsNumber(const std::string& text) {
    return !text.empty() && text.size() < 10 &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

// The message of that slot or file. A file has the name before a slot has the number.
SourceMessage Find(SourceFolder& folder, const std::string& wanted) {
    const std::wstring name = WideOfUtf8(wanted);
    std::optional<SourceMessage> bySlot;
    std::optional<SourceMessage> byFile;
    folder.ForEach([&](const SourceMessage& message) {
        if (IsNumber(wanted) && message.slot && *message.slot == std::stoul(wanted))
            bySlot = message;
        if (SameName(message.file, name))
            byFile = message;
    });
    if (!bySlot && !byFile)
        Fail("{} has no message \"{}\": say a slot's number, or a message file's name.",
             folder.Shown(), Printable(name));
    return byFile ? *byFile : *bySlot;
}

// The fields in a line each, then the bodies.
void ShowParts(const InternetMessage& message, const MessageFile& file) {
    const mime::Header& header = *message.Header();
    const unsigned int codePage = message.TextCodePage();
    for (const mime::Field& field : header.fields)
        Print("{}: {}\n", field.name,
              Printable(field.body.find("=?") == field.body.npos
                            ? mime::DecodedFrom(codePage, mime::Unfolded(field.body))
                            : mime::FieldText(field.body)));
    Print("\n");
    PartPrinter printer(codePage);
    mime::PartReader reader(header, printer);
    mime::LineSplitter lines(reader);
    std::size_t passed = header.size;
    file.ForEachPiece([&](std::string_view piece) {
        const std::size_t size = std::min(passed, piece.size());
        passed -= size;
        lines.Add(piece.substr(size));
    });
    lines.Finish();
}

void ShowText(const InternetMessage& message, const MessageFile& file) {
    LinePrinter printer(message.TextCodePage());
    mime::LineSplitter lines(printer);
    file.ForEachPiece([&](std::string_view piece) { lines.Add(piece); });
    lines.Finish();
}

std::string Person(const std::wstring& name, const std::string& address) {
    const std::string shown = Printable(mime::Decoded(address, mime::Charset::Windows1252));
    return Printable(name) + (shown.empty() ? "" : (name.empty() ? "<" : " <") + shown + ">");
}

void ShowTable(const InternetMessage& message) {
    const auto line = [](const char* name, const std::string& value) {
        if (!value.empty())
            Print("{:<12}{}\n", name, value);
    };
    const RecordText& texts = message.Texts();
    line("From", Person(texts.sender, texts.senderAddress));
    line("To", Person(texts.secondUser, texts.secondAddress));
    line("Topic", Printable(texts.topic));
    line("Date", DateText(message.Filed()));
    line("Kind", std::to_string(static_cast<unsigned short>(message.Record().kind)));
    line("Marks", MarksOf(message.Record()));
    line("Identifier", Printable(mime::Decoded(texts.identifier, mime::Charset::Windows1252)));
    line("File", Printable(message.Source().file));
    line("Slot", message.Source().slot ? std::to_string(*message.Source().slot) : "");
    Print("\n");
}

int Show(const ShowOptions& options) {
    SourceFolder folder{Path(options.folder)};
    const SourceMessage found = Find(folder, options.message);
    MessageFile file(folder.Place(), folder.Final());
    try {
        file.Open(found.file);
        if (options.raw) {
            file.ForEachPiece(WriteBytes);
            return keFine;
        }
        const InternetMessage message(found, file, options.charset, false);
        ShowTable(message);
        message.Header() ? ShowParts(message, file) : ShowText(message, file);
    } catch (const Unreadable& problem) {
        Fail("Cannot read {}: {}.", Printable(found.file), problem.reason);
    }
    return keFine;
}

const Command kShow("show", "Show one message: what its record says, and its text",
                    "  mailfolder show C:\\Mail\\InBox 12\n"
                    "  mailfolder show C:\\Mail\\InBox MSG00012.EML\n"
                    "  mailfolder show C:\\Mail\\InBox 12 --raw > text.txt",
                    [](CLI::App& app) -> Command::Run {
                        const auto given = std::make_shared<ShowOptions>();
                        app.add_option("folder", given->folder,
                                       "A D file, or a folder with one or with message files")
                            ->required();
                        app.add_option("message", given->message,
                                       "The number of its slot, or the name of its file")
                            ->required();
                        app.add_flag("--raw", given->raw,
                                     "The text's bytes as they stand, and nothing else");
                        AddCharset(app, given->charset);
                        return [given] { return Show(*given); };
                    });

} // namespace

} // namespace extract
