#include "programs/mailticker/messages.h"

#include <algorithm>

#include "programs/mailticker/text.h"

const wchar_t* KindName(unsigned int kind) {
    static const wchar_t* const names[kKinds] = {
        L"Information", L"Message", L"Enclosure", L"Notice", L"Receipt", L"Form", L"Damaged"};
    return names[std::min(kind, kDamagedKind)];
}

void Messages::Expect(std::size_t count) {
    // Nearly all are shorter; what is not touched costs nothing.
    constexpr std::size_t kUsualLength = 64;
    mEntries.reserve(count);
    MakeRoom(kUsualLength * count);
}

void Messages::MakeRoom(std::size_t capacity) {
    auto text = std::make_unique_for_overwrite<char[]>(capacity);
    std::copy_n(mText.get(), Size(), text.get());
    mText = std::move(text);
    mCapacity = capacity;
}

void Messages::Add(const char* from, const char* topic, const char* file, unsigned int kind,
                   bool processed) {
    constexpr std::size_t kLongest = 255;
    constexpr std::size_t kLongestMessage = 3 * (kLongest + 1);
    const std::size_t size = Size();
    if (!mText || mCapacity - size < kLongestMessage)
        MakeRoom(2 * size + kLongestMessage);
    Entry entry = {};
    entry.start = static_cast<std::uint32_t>(size);
    entry.kind = std::min(kind, kDamagedKind);
    entry.processed = processed;
    char* end = mText.get() + size;
    int which = 0;
    // Short texts: a call for each would cost more than they do.
    for (const char* text : {from, topic, file}) {
        std::size_t length = 0;
        for (; text[length] && length < kLongest; ++length)
            end[length] = text[length];
        end[length] = '\0';
        entry.lengths[which++] = static_cast<std::uint8_t>(length);
        end += length + 1;
    }
    mEntries.push_back(entry);
    mFolded.reset();
}

std::string_view Messages::Part(const char* block, const Entry& entry, Column column) {
    const int which = column == Column::From ? 0 : column == Column::Topic ? 1 : 2;
    std::size_t start = entry.start;
    for (int i = 0; i < which; ++i)
        start += entry.lengths[i] + 1;
    return {block + start, entry.lengths[which]};
}

std::wstring Messages::Text(std::size_t i, Column column) const {
    switch (column) {
    case Column::Kind:
        return KindName(Kind(i));
    case Column::Slot:
        return std::to_wstring(i + 1);
    default:
        return Shown(Part(mText.get(), mEntries[i], column));
    }
}

const char* Messages::FoldedBlock() const {
    if (!mFolded) {
        mFolded = std::make_unique_for_overwrite<char[]>(Size());
        std::transform(mText.get(), mText.get() + Size(), mFolded.get(), [](char c) {
            return static_cast<char>(Folded(static_cast<unsigned char>(c)));
        });
    }
    return mFolded.get();
}
