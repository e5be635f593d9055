// Shows one message: what its record says, and its text.

#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/extract/internet_message.h"
#include "programs/mailfolder/extract/selection.h"
#include "programs/mailfolder/tool.h"

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
    explicit LinePrinter(mime::Charset charset) : mCharset(charset) {}

    void Text(std::string_view piece) override {
        mLine += piece;
        // Lines have no end that one could wait for.
        constexpr std::size_t kLongest = 0x10000;
        if (mLine.size() > kLongest)
            Print(mCharset == mime::Charset::Utf8 ? mime::WholeCharacters(mLine) : mLine.size());
    }
    void EndLine() override {
        Print(mLine.size());
        fmt::print("\n");
    }
    void Finish() override {
        if (!mLine.empty())
            EndLine();
    }

private:
    void Print(std::size_t size) {
        const std::wstring text = mime::Decoded(std::string_view(mLine).substr(0, size), mCharset);
        std::size_t start = 0;
        for (std::size_t tab; (tab = text.find(L'\t', start)) != text.npos; start = tab + 1)
            fmt::print("{}\t", Shown(std::wstring_view(text).substr(start, tab - start)));
        fmt::print("{}", Shown(std::wstring_view(text).substr(start)));
        mLine.erase(0, size);
    }

    mime::Charset mCharset;
    std::string mLine;
};

bool IsNumber(const std::string& text) {
    return !text.empty() && text.size() < 10 &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

// The message of that slot or file. A file has the name before a slot has the number.
SourceMessage Find(SourceFolder& folder, const std::string& wanted) {
    const std::wstring name = WideArgument(wanted);
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
             Shown(WithoutPrefix(folder.Name())), Shown(name));
    return byFile ? *byFile : *bySlot;
}

void ShowRaw(const MessageFile& file) {
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
    file.ForEachPiece(
        [](std::string_view piece) { std::fwrite(piece.data(), 1, piece.size(), stdout); });
}

std::string Person(const std::wstring& name, const std::string& address) {
    const std::string shown = Shown(mime::Decoded(address, mime::Charset::Windows1252));
    return Shown(name) + (shown.empty() ? "" : (name.empty() ? "<" : " <") + shown + ">");
}

void ShowTable(const InternetMessage& message) {
    const auto line = [](const char* name, const std::string& value) {
        if (!value.empty())
            fmt::print("{:<12}{}\n", name, value);
    };
    const RecordText& texts = message.Texts();
    line("From", Person(texts.sender, texts.senderAddress));
    line("To", Person(texts.secondUser, texts.secondAddress));
    line("Topic", Shown(texts.topic));
    line("Date", DateText(message.Filed()));
    line("Kind", std::to_string(static_cast<unsigned short>(message.Record().kind)));
    line("Marks", MarksOf(message.Record()));
    line("Identifier", Shown(mime::Decoded(texts.identifier, mime::Charset::Windows1252)));
    line("File", Shown(message.Source().file));
    line("Slot", message.Source().slot ? std::to_string(*message.Source().slot) : "");
    fmt::print("\n");
}

int Show(const ShowOptions& options) {
    SourceFolder folder(WideArgument(options.folder));
    const SourceMessage found = Find(folder, options.message);
    MessageFile file(folder.Path());
    try {
        file.Open(found.file);
        if (options.raw) {
            ShowRaw(file);
            return keFine;
        }
        const InternetMessage message(found, file, options.charset, false);
        ShowTable(message);
        LinePrinter printer(message.TextCharset());
        mime::LineSplitter lines(printer);
        file.ForEachPiece([&](std::string_view piece) { lines.Add(piece); });
        lines.Finish();
    } catch (const Unreadable& problem) {
        Fail("Cannot read {}: {}.", Shown(found.file), problem.reason);
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
