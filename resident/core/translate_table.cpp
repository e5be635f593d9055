#include "resident/core/translate_table.h"

#include <cstring>
#include <new>

#include "resident/core/rb_country.h"
#include "resident/core/windows_api.h"
#include "resources/jxsysres.h"

TranslateTable* TranslateTable::poInstance;

// The built-in contents, 0x7F and rows of 16.
static const char* const kIn[] = {
#include "resources/trans_table_in.inc"
};
static const char* const kOut[] = {
#include "resources/trans_table_out.inc"
};

unsigned char TranslateTable::ubInHighAddress[keSize];
unsigned char TranslateTable::ubOutHighAddress[keSize];

static void JoinRows(unsigned char* table, const char* const (&rows)[9]) {
    table[0] = rows[0][0];
    for (int row = 1; row < 9; ++row)
        std::memcpy(table + 1 + (row - 1) * 16, rows[row], 16);
}

TranslateTable::TranslateTable() {
    // A table that a resource replaced stays in force.
    if (ubInHighAddress[0] == 0) {
        JoinRows(ubInHighAddress, kIn);
        JoinRows(ubOutHighAddress, kOut);
    }
    LoadTranslationTable();
}

TranslateTable* TranslateTable::GetInstance() {
    if (!poInstance)
        poInstance = new (std::nothrow) TranslateTable;
    return poInstance;
}

void TranslateTable::KillInstance() {
    delete poInstance;
    poInstance = nullptr;
}

void TranslateTable::LoadTranslationTable() {
    const auto module = static_cast<HMODULE>(GetJxSystemResHandle());
    const HRSRC resource = FindResourceA(module, "TransTable_ANSI", "TRANSTABLE");
    // A resource too short for both tables is not used.
    if (!resource || SizeofResource(module, resource) < 2 * keSize)
        return;
    const HGLOBAL handle = LoadResource(module, resource);
    if (!handle)
        return;
    if (const void* tables = LockResource(handle)) {
        std::memcpy(ubInHighAddress, tables, keSize);
        std::memcpy(ubOutHighAddress, static_cast<const char*>(tables) + keSize, keSize);
    }
    FreeResource(handle);
}

char* TranslateTable::IncomingTranslate(char* text, unsigned int length) {
    return Translate(text, length, ubInHighAddress);
}

char* TranslateTable::OutgoingTranslate(char* text, unsigned int length) {
    return Translate(text, length, ubOutHighAddress);
}

char* TranslateTable::Translate(char* text, unsigned int length, const unsigned char* table) {
    if (RbCountry::Instance()->GetCountry() == 0)
        return text;
    for (unsigned int i = 0; i < length; ++i) {
        const unsigned char value = text[i];
        if (value >= keFirst)
            text[i] = table[value - keFirst];
    }
    return text;
}
