#include "programs/mime/header.h"

#include <algorithm>

#include "programs/mime/encoded_words.h"

namespace mime {

namespace {

constexpr std::size_t kLine = 76; // RFC 2047, 2: less than RFC 5322, 2.1.1, allows

// RFC 5322, 3.6, and RFC 2045, 3.
constexpr std::string_view kKnownFields[] = {
    "Return-Path",  "Received", "Date", "From",       "Sender",
    "Reply-To",     "To",       "Cc",   "Message-ID", "In-Reply-To",
    "MIME-Version", "Subject",  "Bcc",  "References", "Content-Type"};

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
// RFC 5322, 3.2.3.
bool IsAtom(char c) {
    return IsLetterOrDigit(c) ||
           std::string_view("!#$%&'*+-/=?^_`{|}~").find(c) != std::string::npos;
}
bool IsPrintable(char c) { return c >= 0x20 && c < 0x7F; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool SameName(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

// Takes the first line off a text; its end goes with it.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    const bool crLf = text.substr(end, 2) == "\r\n";
    text.remove_prefix(std::min(text.size(), end + (crLf ? 2 : 1)));
    return line;
}

// RFC 5322, 2.2: printable characters but blanks and the colon.
std::size_t FieldNameSize(std::string_view line) {
    std::size_t size = 0;
    while (size < line.size() && line[size] > 0x20 && line[size] < 0x7F && line[size] != ':')
        ++size;
    return size < line.size() && line[size] == ':' ? size : 0;
}

bool IsDotAtom(std::string_view text) {
    return !text.empty() && text.front() != '.' && text.back() != '.' &&
           text.find("..") == text.npos &&
           std::all_of(text.begin(), text.end(), [](char c) { return IsAtom(c) || c == '.'; });
}

// RFC 5322, 3.4.1: a dot-atom, or what stands between brackets.
bool IsDomain(std::string_view text) {
    if (text.size() > 2 && text.front() == '[' && text.back() == ']')
        return std::all_of(text.begin() + 1, text.end() - 1, [](char c) {
            return c > 0x20 && c < 0x7F && c != '[' && c != ']' && c != '\\';
        });
    return IsDotAtom(text);
}

// RFC 5322, 3.2.4.
std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

// Whether readers get a text back that stands there unencoded: they take blanks around it for
// folding and runs of them for one, and what looks like an encoded word for one.
bool SurvivesPlain(std::wstring_view text) {
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x7F; }) &&
           text.find(L"=?") == text.npos && text.find(L"  ") == text.npos &&
           (text.empty() || (text.front() != ' ' && text.back() != ' '));
}

// The display name of an address: a phrase (RFC 5322, 3.2.5).
std::string Phrase(std::wstring_view text) {
    if (!SurvivesPlain(text))
        return EncodedWords(text);
    const std::string plain(text.begin(), text.end());
    return std::all_of(plain.begin(), plain.end(), [](char c) { return IsAtom(c) || c == ' '; })
               ? plain
               : Quoted(plain);
}

// Breaks lines at blanks. A word that is too long for one has it for itself.
std::string Folded(std::string_view name, std::string_view value) {
    std::string lines = std::string(name) + ":";
    std::size_t column = lines.size();
    while (!value.empty()) {
        const std::size_t size = std::min(value.find(' '), value.size());
        if (column + 1 + size > kLine) {
            lines += '\n';
            column = 0;
        }
        lines += ' ';
        lines += value.substr(0, size);
        column += 1 + size;
        value.remove_prefix(std::min(value.size(), size + 1));
    }
    return lines + '\n';
}

} // namespace

const Field* Header::Find(std::string_view name) const {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const Field& field) { return SameName(field.name, name); });
    return found == fields.end() ? nullptr : &*found;
}

// `ended` tells whether an empty line is behind the fields.
static std::optional<Header> FieldsOf(std::string_view text, bool& ended) {
    Header header;
    std::string_view rest = text;
    ended = false;
    while (!rest.empty() && !ended) {
        const std::string_view line = TakeLine(rest);
        const std::size_t nameSize = FieldNameSize(line);
        if (line.empty()) {
            ended = true;
        } else if (IsBlank(line.front()) && !header.fields.empty()) {
            std::string_view& body = header.fields.back().body;
            body = {body.data(), static_cast<std::size_t>(line.end() - body.data())};
        } else if (nameSize > 0) {
            header.fields.push_back({line.substr(0, nameSize), line.substr(nameSize + 1)});
        } else {
            return {};
        }
    }
    header.size = text.size() - rest.size();
    return header;
}

std::optional<Header> HeaderOf(std::string_view text) {
    bool ended;
    auto header = FieldsOf(text, ended);
    const bool known =
        header && std::any_of(std::begin(kKnownFields), std::end(kKnownFields),
                              [&](std::string_view name) { return header->Has(name); });
    return known && (ended || header->fields.size() > 1) ? header : std::nullopt;
}

std::optional<Header> PartHeaderOf(std::string_view text) {
    bool ended;
    return FieldsOf(text, ended);
}

std::string Unfolded(std::string_view body) {
    std::string line;
    for (const char c : body)
        if (c != '\r' && c != '\n')
            line += c;
    while (!line.empty() && IsBlank(line.back()))
        line.pop_back();
    line.erase(0, std::min(line.find_first_not_of(" \t"), line.size()));
    return line;
}

std::string ValueOf(std::string_view body) {
    std::string value = Unfolded(body.substr(0, body.find(';')));
    for (char& c : value)
        c = Lower(c);
    return value;
}

std::string ParameterOf(std::string_view body, std::string_view name) {
    const std::string line = Unfolded(body);
    std::size_t at = line.find(';');
    while (at < line.size()) {
        at = std::min(line.find_first_not_of("; \t", at), line.size());
        const std::size_t equals = std::min(line.find_first_of("=;", at), line.size());
        const std::string_view found = std::string_view(line).substr(at, equals - at);
        std::string value;
        at = equals + 1;
        if (at < line.size() && line[at] == '"')
            for (++at; at < line.size() && line[at] != '"'; ++at)
                value += line[line[at] == '\\' && at + 1 < line.size() ? ++at : at];
        else if (equals < line.size() && line[equals] == '=')
            for (; at < line.size() && line[at] != ';' && !IsBlank(line[at]); ++at)
                value += line[at];
        if (SameName(found.substr(0, found.find_last_not_of(" \t") + 1), name))
            return value;
        at = line.find(';', std::min(at, line.size()));
    }
    return {};
}

std::optional<std::string> AddrSpec(std::string_view address) {
    if (address.empty() || !std::all_of(address.begin(), address.end(), IsPrintable))
        return {};
    const std::size_t at = address.rfind('@');
    const bool hasDomain = at != address.npos && at > 0 && IsDomain(address.substr(at + 1));
    const std::string_view local = hasDomain ? address.substr(0, at) : address;
    const std::string_view domain = hasDomain ? address.substr(at + 1) : "invalid";
    return (IsDotAtom(local) ? std::string(local) : Quoted(local)) + "@" + std::string(domain);
}

std::optional<std::string> MessageId(std::string_view identifier) {
    if (identifier.size() > 2 && identifier.front() == '<' && identifier.back() == '>')
        identifier = identifier.substr(1, identifier.size() - 2);
    const std::size_t at = identifier.find('@');
    if (at == identifier.npos || !IsDotAtom(identifier.substr(0, at)) ||
        !IsDomain(identifier.substr(at + 1)))
        return {};
    return "<" + std::string(identifier) + ">";
}

void HeaderText::AddText(std::string_view name, std::wstring_view text) {
    const std::wstring line = OneLine(text);
    AddPlain(name,
             SurvivesPlain(line) ? std::string(line.begin(), line.end()) : EncodedWords(line));
}

void HeaderText::AddMailbox(std::string_view name, std::wstring_view display,
                            std::string_view addrSpec) {
    std::wstring line = OneLine(display);
    line.erase(0, std::min(line.find_first_not_of(L' '), line.size()));
    line.erase(line.find_last_not_of(L' ') + 1);
    AddPlain(name, line.empty() ? "<" + std::string(addrSpec) + ">"
                                : Phrase(line) + " <" + std::string(addrSpec) + ">");
}

void HeaderText::AddPlain(std::string_view name, std::string_view value) {
    mLines += Folded(name, value);
}

} // namespace mime
