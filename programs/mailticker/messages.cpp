#include "programs/mailticker/messages.h"

#include <algorithm>

#include "programs/mailticker/text.h"

const wchar_t* KindName(unsigned int kind) {
    static const wchar_t* const names[kKinds] = {
        L"Information", L"Message", L"Enclosure", L"Notice", L"Receipt", L"Form", L"Damaged"};
    return names[std::min(kind, kDamagedKind)];
}

void Messages::Expect(std::size_t count) {
    constexpr std::size_t kUsualLength = 48;
    mEntries.reserve(count);
    mText.reserve(kUsualLength * count);
}

void Messages::Add(const char* from, const char* topic, const char* file, unsigned int kind,
                   bool processed) {
    Entry entry = {};
    entry.start = static_cast<std::uint32_t>(mText.size());
    entry.kind = std::min(kind, kDamagedKind);
    entry.processed = processed;
    // Gathered before they are appended: short texts cost less than calls.
    constexpr int kLongest = 255;
    char texts[3 * (kLongest + 1)];
    char* end = texts;
    int which = 0;
    for (const char* text : {from, topic, file}) {
        const char* const start = end;
        while (*text && end - start < kLongest)
            *end++ = *text++;
        entry.lengths[which++] = static_cast<std::uint8_t>(end - start);
        *end++ = '\0';
    }
    mText.append(texts, end);
    mEntries.push_back(entry);
}

std::string_view Messages::Part(const std::string& block, const Entry& entry, Column column) {
    const int which = column == Column::From ? 0 : column == Column::Topic ? 1 : 2;
    std::size_t start = entry.start;
    for (int i = 0; i < which; ++i)
        start += entry.lengths[i] + 1;
    return {block.data() + start, entry.lengths[which]};
}

std::wstring Messages::Text(std::size_t i, Column column) const {
    switch (column) {
    case Column::Kind:
        return KindName(Kind(i));
    case Column::Slot:
        return std::to_wstring(i + 1);
    default:
        return Shown(Part(mText, mEntries[i], column));
    }
}

const std::string& Messages::FoldedBlock() const {
    if (mFolded.size() != mText.size()) {
        mFolded.resize(mText.size());
        std::transform(mText.begin(), mText.end(), mFolded.begin(), [](char c) {
            return static_cast<char>(Folded(static_cast<unsigned char>(c)));
        });
    }
    return mFolded;
}
