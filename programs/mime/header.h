#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mime {

// One field of a header that was found, as it stands there.
struct Field {
    std::string_view name;
    std::string_view body; // behind the colon, with the line ends of folding, without the last
};

// The header that a text begins with.
struct Header {
    std::vector<Field> fields;
    // Of the header and the empty line behind it: the body begins here.
    std::size_t size = 0;

    // The first field of that name, in any case of its letters; null when there is none.
    const Field* Find(std::string_view name) const;
    bool Has(std::string_view name) const { return Find(name) != nullptr; }
};

// The header of a text, or none. A text begins with Internet header fields when
// - each line before the first empty line is a field, which is a name of printable characters and a
//   colon (RFC 5322, 2.2), or begins with a blank and continues one (2.2.3),
// - at least one of the fields is one that standards know messages by (From, Subject, Received,
// ...),
// - the empty line is there, or the text ends after two fields or more.
// Lines end with CR, LF or CR LF.
std::optional<Header> HeaderOf(std::string_view text);
// The same of the header of a message's part: any fields will do, and none.
std::optional<Header> PartHeaderOf(std::string_view text);

// A parameter of a field's body, as of "text/plain; charset=utf-8" (RFC 2045, 5.1); empty when it
// is not there.
std::string ParameterOf(std::string_view body, std::string_view name);
// What stands before the parameters, in small letters.
std::string ValueOf(std::string_view body);

// A field's body in one line (RFC 5322, 2.2.3), without blanks around it.
std::string Unfolded(std::string_view body);

// An address in a form that the From field can hold (RFC 5322, 3.4.1); none when there is no such
// form. What has no "@" gets the reserved domain "invalid" (RFC 2606, 2).
std::optional<std::string> AddrSpec(std::string_view address);
// An identifier as the Message-ID field has it (RFC 5322, 3.6.4), with or without its brackets.
std::optional<std::string> MessageId(std::string_view identifier);

// Puts fields together, folded (RFC 5322, 2.2.3), one LF behind each line. No text of a value ends
// a line or begins a field: control characters in it become blanks.
class HeaderText {
public:
    // Text in words (RFC 5322, 2.2.1), encoded where it has to be (RFC 2047).
    void AddText(std::string_view name, std::wstring_view text);
    // A display name, which may be empty, and an address (RFC 5322, 3.4).
    void AddMailbox(std::string_view name, std::wstring_view display, std::string_view addrSpec);
    // A value of printable ASCII, which is folded at its blanks.
    void AddPlain(std::string_view name, std::string_view value);

    const std::string& Lines() const { return mLines; }

private:
    std::string mLines;
};

} // namespace mime
