#include "programs/mailticker/messages.h"

#include <algorithm>
#include <cstring>

#include "programs/mailticker/text.h"

const wchar_t* KindName(unsigned int kind) {
    static const wchar_t* const names[kKinds] = {
        L"Information", L"Message", L"Enclosure", L"Notice", L"Receipt", L"Form", L"Damaged"};
    return names[std::min(kind, kDamagedKind)];
}

std::uint8_t Messages::Append(const char* text) {
    const std::size_t length = std::min<std::size_t>(std::strlen(text), 255);
    for (std::size_t i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        mShown += Shown(c);
        mFolded += static_cast<char>(Folded(c));
    }
    return static_cast<std::uint8_t>(length);
}

void Messages::Add(const char* from, const char* topic, const char* file, unsigned int kind,
                   bool processed) {
    Entry entry = {};
    entry.start = static_cast<std::uint32_t>(mShown.size());
    entry.kind = std::min(kind, kDamagedKind);
    entry.processed = processed;
    const char* const texts[] = {from, topic, file};
    for (int i = 0; i < 3; ++i) {
        entry.lengths[i] = Append(texts[i]);
        mShown += L'\0';
        mFolded += '\0';
    }
    mEntries.push_back(entry);
}

std::wstring_view Messages::Text(std::size_t i, Column column) const {
    switch (column) {
    case Column::From:
        return From(i);
    case Column::Topic:
        return Topic(i);
    case Column::File:
        return File(i);
    case Column::Kind:
        return KindName(Kind(i));
    case Column::Slot:
        break;
    }
    return {};
}

std::string_view Messages::FoldedText(std::size_t i, Column column) const {
    const int which = column == Column::From ? 0 : column == Column::Topic ? 1 : 2;
    return View(mFolded, mEntries[i], which);
}
