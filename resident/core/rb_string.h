#pragma once

#include <iosfwd>
#include <string_view>

#include "resident/core/jx_api.h"

// The one string type of the library: a handle onto a shared, counted representation.
//
// Text is bytes of the Windows ANSI code page; on a Japanese system a character may be two of them
// (RbCountry). Lengths and positions count bytes, positions from 1; 0 is "none".
//
// Copying shares the representation. What replaces the text detaches first, so that the other
// holders keep theirs; the in-place changes (Upper, Lower, SetCharUpper) do not, and are seen by
// every holder. The counts are not atomic: a string and its sharers belong to one thread.
//
// Failures are shown in a message box (RBString::Error), and leave the value unchanged: a position
// outside the text by charAt, IsCharUpperA and SetCharUpper; a text of more than 0xFFFFFFFD bytes
// by puts, concat, AdjustSize and the constructors. Nothing else shows one.

class BaseString;
class RBString;

// What Error is told; it shows the same for all.
enum StringError : int {
    keStringIndexOutOfRange = 3,
    keStringTooLong = 5,
    keStringNoSize = 1000,
    keStringSizeTooLarge = 1001
};

// How FindTextA compares.
enum enumStringSearch : int {
    keSearchExact = 0,
    keSearchNoCase = 1,
    keSearchExactWord = 2,
    keSearchNoCaseWord = 3
};

// Words stand between delimiters: the characters !@#$%&*()-+={}[]|:;"`<>,.?/ and space, line feed,
// carriage return and tab. With 1, a word runs over one period.
enum enumGSEPOptions : int { keGSEPPlain = 0, keGSEPOverPeriod = 1 };
// The same for GetWord.
enum enumGetWordOptions : int { keGetWordPlain = 0, keGetWordOverPeriod = 1 };

// Which ends StripChars works on; the values add up.
enum { keStripLeading = 1, keStripTrailing = 2 };

// The text of one or more strings. The buffer is a length byte, the text and a NUL, so that it is a
// Pascal string and, one byte on, a C string; it is always exactly as large as was last asked for.
struct JX_API StringRep {
    enum : unsigned int {
        keMaxLength = 0xFFFFFFFD,
        keMaxLengthByte = 253 // what a Pascal string of the other platform claims at most
    };

    StringRep(); // empty
    // Empty, with room for `size` characters.
    explicit StringRep(unsigned int size);
    explicit StringRep(const unsigned char* pascalText);
    // `capacity` pre-sizes the buffer for a caller that will write into it; 0: as `text` needs.
    StringRep(const char* text, unsigned int capacity);
    // `first` alone when `rest` is null; else up to `count` strings, the later ones from the
    // argument list `rest`, together `total` bytes.
    StringRep(const char* first, unsigned int total, unsigned short count, void* rest);
    StringRep(const StringRep&) = delete;
    StringRep& operator=(const StringRep&) = delete;
    ~StringRep();

    // Gives the rep an uninitialised buffer of `size` bytes and returns it; the old one is not
    // freed.
    unsigned char* AllocMem(unsigned int size);
    // One owner, no length, the null buffer zeroed; the buffer stays.
    void InitVars();
    // The null buffer's address.
    unsigned char* GetNullString();
    // RBString::Error.
    void Error(StringError code);

    // From resident/core/block_cache.h.
    static void* operator new(decltype(sizeof(0)) size);
    static void operator delete(void* memory);

    unsigned char mNullBuffer[2]; // the empty text: both bytes always 0
    unsigned char* mpBuffer;      // on the heap, or mNullBuffer
    unsigned short mwRefCount;
    unsigned int miLength;

private:
    friend class BaseString;
    void SetText(const char* text, unsigned int length, unsigned int capacity);
    void FreeBuffer();
};

// What a string can do. Programs make RBStrings.
class JX_API BaseString {
public:
    virtual ~BaseString();
    // Loads string resource `id` of the module `hInstance`.
    virtual BaseString& getResource(unsigned int id, void* hInstance) = 0;

    // Reading. The pointers stay valid until the string is next changed or destroyed.
    const char* Text() const { return reinterpret_cast<const char*>(mpRep->mpBuffer) + 1; }
    const unsigned char* Pascal() const { return mpRep->mpBuffer; }
    unsigned int Length() const { return mpRep->miLength; }
    // The length byte: the length, at most 253; as it stood, to 255, for a value set from a Pascal
    // string.
    unsigned char LengthByte() const { return mpRep->mpBuffer[0]; }

    // Assignment. `n` 0 takes the whole text; else at most `n` characters of it. Null texts are
    // empty.
    BaseString& puts(const BaseString& other);
    BaseString& puts(const char* text, unsigned int n = 0);
    BaseString& puts(const unsigned char* pascalText);
    BaseString& puts(const char c);
    // A text without zeros in it.
    BaseString& puts(std::string_view text);

    // Append. A null text is empty.
    BaseString& concat(const BaseString& other);
    BaseString& concat(const char* text);
    BaseString& concat(const unsigned char* pascalText);
    BaseString& concat(const char c);

    // Cuts the text to `n` characters; never through a double-byte character.
    BaseString& Truncate(unsigned int n);
    // Makes the string empty.
    BaseString& reset();

    // The address of the character at position `i`, from 1; of a dummy shared by all strings when
    // there is none.
    char* charAt(unsigned int i);

    // In place: every string that shares the text changes with this one. SetCharUpper returns true
    // when the character at position `i` is not 0.
    BaseString& Upper();
    BaseString& Lower();
    bool SetCharUpper(unsigned int i);

    // Whether the character at position `i` is an upper-case letter, as Windows says.
    bool IsCharUpperA(unsigned int i);

    // Negative, 0 or positive, without regard to case (lstrcmpiA).
    int StrICmp(const BaseString& other) const;

    // Case-sensitive, in the locale's collation (lstrcmpA), which passes over some characters:
    // equal texts may differ in their bytes.
    int operator==(const BaseString& other) const;
    int operator==(const char* text) const;
    int operator!=(const BaseString& other) const;
    int operator!=(const char* text) const;
    int operator<(const BaseString& other) const;
    int operator>(const BaseString& other) const;
    // Byte for byte over this string's length byte, so at most 253 characters.
    int operator==(const unsigned char* pascalText) const;
    int operator!=(const unsigned char* pascalText) const;

    // For callers that write straight into the text: AdjustSize(n) gives room for n characters, and
    // never for fewer than the string's length, which stays, and returns the text's address; of a
    // text that is there n characters stay. After writing text and NUL, AdjustSize(0) takes the
    // length up to the NUL.
    char* AdjustSize(unsigned int n);
    // A buffer of `size` bytes (length byte, text, NUL) of the string's own; returns the address of
    // its length byte. The first leaves the bytes undefined, the second keeps as much of the text
    // as fits. Fill in text and NUL, then AdjustSize(0).
    unsigned char* AllocMem(unsigned int size);
    unsigned char* ReAllocMem(unsigned int size);
    // Readies the string for a new buffer: detaches from a shared rep, or frees its own buffer.
    void checkdelrep();

    // An estimate of the room that `format` needs with the arguments `args` (a va_list): a string's
    // length for 's' and 'S' behind a "%", 9 for any other character there, "%" and flags too, all
    // of which take one argument word ('R' and 'r' two); 1,024 where that comes to 0; and the
    // format's length and 1.
    static unsigned int CalculateBufferSize(const char* format, void* args);

    // The n-th field, from 1, of the text between single `delimiter` characters; fields may be
    // empty. Returns 1, or 0 with `word` unchanged when there are fewer fields.
    int GetNthDelimitedWord(BaseString& word, unsigned int n, unsigned char delimiter) const;

    // The word at or after `position`. `start` and `end`, where given, receive its first and last
    // position (`end` needs `start`). Returns 1, or 0 when there is none; the text's last character
    // never starts a search.
    int GetWord(RBString& word, unsigned int* start, unsigned int* end, unsigned int position,
                enumGetWordOptions option) const;

    // Moves `*cursor` over delimiters to the start of a word; returns the delimiter that ends it,
    // or null when it runs to the end of the text.
    char* GetStartAndEndPos(char** cursor, enumGSEPOptions option) const;

    // Searches for `pattern` from `position`. Returns 1 and the match's first and last positions,
    // counted from `position` as 1, where wanted, or 0.
    //
    // A whole word has a delimiter before and behind it, with two exceptions that callers know:
    // where the character behind it is the text's last one, the one before decides alone; and where
    // the match begins at `position` or one behind, or ends the text, the one behind decides alone,
    // the text's end being a delimiter.
    int FindTextA(const char* pattern, unsigned int* start, unsigned int* end,
                  unsigned int position, enumStringSearch mode) const;

    // Replaces the characters `from` to `to` by `text`; returns the position behind it. With a `to`
    // of from - 1 it inserts. Positions outside the text are moved to its ends.
    unsigned int Replace(unsigned int from, unsigned int to, const char* text);

    // Set the string to `source`, or to its own text, with CR made CR LF or with LF left out;
    // return the text. A stretch between two CRs keeps the low 16 bits of its length.
    const char* MacToPC(const char* source = nullptr);
    const char* PCToMac(const char* source = nullptr);
    // Copies without LF; `to` has room for the whole of `from`.
    static void StrCpySkipLFs(char* to, const char* from);

    // printf into the string; return the text. With a resource, the format is that string of the
    // module `instance`, and this string's own text no argument.
    const char* Sprintf(const char* format, ...);
    const char* Sprintf(unsigned int resourceId, void* instance, ...);
    const char* Sprintf(BaseString& format, ...);

    // Double-byte rule: a lead byte 0x81-0x9F or 0xE0-0xEF followed by 0x40-0xFC. The library asks
    // only where RbCountry says that the system is double-byte; these two do not ask that.
    static bool IsDoubleByte(const char* p);
    // `n`, or n - 1 when a two-byte character of `text` straddles the place behind n bytes.
    static unsigned int DoubleByteAdjLen(const char* text, unsigned int n);

protected:
    // As RBString's.
    BaseString();
    explicit BaseString(const char c);
    BaseString(const char* text, unsigned int capacity);
    explicit BaseString(const unsigned char* pascalText);
    BaseString(const BaseString& other);
    BaseString& operator=(const BaseString& other) { return puts(other); }

    char* WritableText() { return reinterpret_cast<char*>(mpRep->mpBuffer) + 1; }
    // Makes `buffer`, with `length` characters and a NUL in place, the string's own. What they were
    // copied from may be the old text.
    BaseString& Adopt(unsigned char* buffer, unsigned int length);
    // Takes the length of a text that was written in place: as given, or up to its NUL.
    void SetLength(unsigned int length);
    void SetLength();
    // Gives up the share of the representation, and takes that of another, which may be null.
    void AdoptRep(StringRep* rep);

private:
    static StringRep* Share(const BaseString& other);
    BaseString& Assign(const char* text, unsigned int length, unsigned int room);
    BaseString& Append(const char* text, unsigned int n);
    const char* FormatText(const char* format, char* args);

    StringRep* mpRep;
};

// The string itself: the constructors, resources, trimming and the stream form.
class JX_API RBString : public BaseString {
public:
    // Empty; of one character, or empty for 0.
    RBString();
    RBString(const char c);
    // `capacity` pre-sizes the buffer; 0: as the text needs.
    RBString(const char* text, unsigned int capacity = 0);
    RBString(const unsigned char* pascalText);
    RBString(const BaseString& other);
    RBString(const RBString& other);
    // Up to `count` texts, one after the other, ending early at a null pointer.
    RBString(unsigned short count, const char* first, ...);
    // By getResource.
    RBString(unsigned int id, void* hInstance);
    ~RBString() override;

    RBString& operator=(const RBString& other);
    RBString& operator=(const BaseString& other);
    // puts.
    RBString& operator=(const char* text);

    // String resource `id` of the module `hInstance`, cut at 254 characters; empty when there is no
    // such string.
    RBString& getResource(unsigned int id, void* hInstance) override;

    // Removes runs of `c` at the ends that `where` names, a sum of the keStrip values.
    RBString& StripChars(char c, unsigned int where);

    // Shows that a string operation failed; the code itself is not shown.
    static void Error(StringError code);

    // In a stream a string is its length, 32 bits big-endian, and that many bytes of text.
    // A string that cannot be read whole is empty.
    friend JX_API std::ostream& operator<<(std::ostream& out, const RBString& string);
    friend JX_API std::istream& operator>>(std::istream& in, RBString& string);
};

// Copies at most iiBufSize - 1 characters and terminates; returns true when the whole source
// fitted. A size below 2 and a null pointer are reported; nothing is written to a null target or
// where the size is 0, and a null source is empty.
JX_API bool LStrNCpyAndNullTerminate(char* pszCopyTo, const char* pszCopyFrom,
                                     unsigned int iiBufSize);
