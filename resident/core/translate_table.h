#pragma once

#include "resident/core/jx_api.h"

// Converts the upper half of the character set between the Macintosh set, in which the product's
// shared data is kept, and the Windows ANSI set. The two tables are inverse permutations of 0x80 to
// 0xFF, so text survives a round trip; 0x7F goes to 0xFE both ways.
class JX_API TranslateTable {
public:
    // The instance is made on first use, and takes the tables of the product's resource library
    // where it has them; null when it cannot be allocated. The tables outlive it.
    static TranslateTable* GetInstance();
    static void KillInstance();

    // Takes both tables from resource "TransTable_ANSI" of type "TRANSTABLE": 129 bytes each, the
    // incoming one first. Without it they stay as they are.
    void LoadTranslationTable();

    // Translate `length` bytes, zeros too, in place and return `text`; from 0x7F on bytes change.
    // On a double-byte system (RbCountry) nothing does.
    char* IncomingTranslate(char* text, unsigned int length);
    char* OutgoingTranslate(char* text, unsigned int length);

private:
    enum { keFirst = 0x7F, keSize = 129 };

    TranslateTable();
    static char* Translate(char* text, unsigned int length, const unsigned char* table);

    static TranslateTable* poInstance;
    // The replacement of byte value v at index v - 0x7F.
    static unsigned char ubInHighAddress[keSize];
    static unsigned char ubOutHighAddress[keSize];
};
