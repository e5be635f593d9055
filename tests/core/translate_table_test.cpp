#include <gtest/gtest.h>

#include <algorithm>

#include "postrider.h"
#include "resources/jxsysres.h"
#include "tests/core/settings.h"
#include "tests/support/hooked_import.h"

// What the bytes 0x7F to 0xFF of the Macintosh set become.
static const std::string kIncoming =
    "\xFE\xC4\xC5\xC7\xC9\xD1\xD6\xDC\xE1\xE0\xE2\xE4\xE3\xE5\xE7\xE9\xE8\xEA\xEB\xED\xEC\xEE"
    "\xEF\xF1\xF3\xF2\xF4\xF6\xF5\xFA\xF9\xFB\xFC\x86\xB0\xA2\xA3\xA7\x95\xB6\xDF\xAE\xA9\x99"
    "\xB4\xA8\x80\xC6\xD8\x81\xB1\xBE\x8D\xA5\xB5\x8F\x8A\xBD\xBC\xB3\xAA\xBA\x9E\xE6\xF8\xBF"
    "\xA1\xAC\xA6\x83\xB2\x90\xAB\xBB\x85\xA0\xC0\xC3\xD5\x8C\x9C\x96\x97\x93\x94\x91\x92\xF7"
    "\xD7\xFF\x9F\x8E\xA4\x8B\x9B\xDE\xFE\x87\xB7\x82\x84\x89\xC2\xCA\xC1\xCB\xC8\xCD\xCE\xCF"
    "\xCC\xD3\xD4\xD0\xD2\xDA\xDB\xD9\xB9\x88\x98\xAF\xDD\xF0\x9A\xB8\xAD\xFD\x9D";

// Every byte once; `upper` in place of those from 0x7F on.
static std::string AllBytes(const std::string& upper = "") {
    std::string text;
    for (int c = 0; c < 256; ++c)
        text += static_cast<char>(c);
    return text.replace(0x7F, upper.size(), upper);
}

static std::string Incoming(std::string text) {
    return TranslateTable::GetInstance()->IncomingTranslate(text.data(), text.size()), text;
}

static std::string Outgoing(std::string text) {
    return TranslateTable::GetInstance()->OutgoingTranslate(text.data(), text.size()), text;
}

TEST(TranslateTable, MapsEveryByteAndBackAgainExceptOnAJapaneseSystem) {
    EXPECT_EQ(Incoming(AllBytes()), AllBytes(kIncoming));
    EXPECT_EQ(Outgoing(Incoming(AllBytes())), AllBytes("\xDF"));
    EXPECT_EQ(Outgoing("\x7F\xFE\x80\xDB"), "\xFE\xDF\xAD\xF3");
    char text[] = "\x80\x80";
    TranslateTable::GetInstance()->IncomingTranslate(text, 1);
    EXPECT_STREQ(text, "\xC4\x80");
    const CodePage japanese("932");
    EXPECT_EQ(Incoming(AllBytes()) + Outgoing(AllBytes()), AllBytes() + AllBytes());
}

static HRSRC WINAPI FindNone(HMODULE, const char*, const char*) { return nullptr; }

// Of a program without the resource, as this one is at first.
static const auto ownTables = [] {
    const HookedImport none("JXTICDLL.DLL", "kernel32.dll", "FindResourceA",
                            reinterpret_cast<void*>(FindNone));
    const std::pair tables(Incoming(AllBytes()), Outgoing(AllBytes()));
    TranslateTable::KillInstance();
    return tables;
}();

TEST(TranslateTable, HasTheSameContentsWithoutTheResource) {
    EXPECT_EQ(ownTables, std::pair(Incoming(AllBytes()), Outgoing(AllBytes())));
}

TEST(TranslateTable, TakesBothTablesFromTheResource) {
    const auto module = static_cast<HMODULE>(GetJxSystemResHandle());
    const HRSRC found = FindResourceA(module, "TransTable_ANSI", "TRANSTABLE");
    const auto memory = static_cast<char*>(LockResource(LoadResource(module, found)));
    DWORD protection;
    VirtualProtect(memory, 258, PAGE_READWRITE, &protection);
    const std::string kept(memory, 258), other = std::string(129, 'i') + std::string(129, 'o');
    std::copy(other.begin(), other.end(), memory);
    TranslateTable::KillInstance(); // the next one loads
    EXPECT_EQ(Incoming("a~\x7F\xFF"), "a~ii");
    EXPECT_EQ(Outgoing("a~\x7F\xFF"), "a~oo");
    std::copy(kept.begin(), kept.end(), memory);
    VirtualProtect(memory, 258, protection, &protection);
    TranslateTable::GetInstance()->LoadTranslationTable();
    EXPECT_EQ(Incoming(AllBytes()), AllBytes(kIncoming));
}
