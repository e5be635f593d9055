#include "programs/mailfolder/extract/read_ahead.h"

namespace extract {

// So many that starting a thread for them is a small part of what it does.
static constexpr std::size_t kBatchMessages = 32;

ReadAhead::ReadAhead(const SourceFolder& source, const std::function<void(OpenedMessage&)>& take)
    : mSource(source), mTake(take) {
    for (Batch& batch : mBatches)
        for (std::size_t i = 0; i < kBatchMessages; ++i)
            batch.messages.push_back({{}, MessageFile(source.Place(), source.Final()), {}});
}

static void Open(const SourceFolder& source, OpenedMessage& opened) {
    const std::wstring& name = opened.message.file;
    opened.problem.reset();
    try {
        if (name.empty())
            throw Unreadable{"the record names no file", true};
        if (source.IsDFile(name))
            throw Unreadable{"the record names the D file itself", true};
        if (opened.message.isAmbiguous)
            throw Unreadable{"the folder has two files that the system calls so: rename them"};
        opened.file.Open(name);
    } catch (const Unreadable& problem) {
        opened.problem = problem;
    }
}

void ReadAhead::Add(const SourceMessage& message) {
    Batch& batch = mBatches[mFilled];
    batch.messages[batch.count++].message = message;
    if (batch.count == kBatchMessages)
        Advance();
}

void ReadAhead::Finish() {
    Advance();
    Advance();
}

// The batch that was opened is taken, while the one that was filled is opened.
void ReadAhead::Advance() {
    Batch& filled = mBatches[mFilled];
    Batch& opened = mBatches[1 - mFilled];
    if (opened.opening.valid())
        opened.opening.get();
    filled.opening = std::async(std::launch::async | std::launch::deferred, [this, &filled] {
        for (std::size_t i = 0; i < filled.count; ++i)
            Open(mSource, filled.messages[i]);
    });
    for (std::size_t i = 0; i < opened.count; ++i)
        mTake(opened.messages[i]);
    opened.count = 0;
    mFilled = 1 - mFilled;
}

} // namespace extract
