#include "programs/mailfolder/extract/read_ahead.h"

namespace extract {

// So many that waiting for the other thread is a small part of the work, and few open files.
static constexpr std::size_t kBatchMessages = 64;

ReadAhead::ReadAhead(const SourceFolder& source, const Step& open, const Step& take)
    : mOpen(open), mTake(take) {
    for (Batch& batch : mBatches)
        for (std::size_t i = 0; i < kBatchMessages; ++i)
            batch.messages.push_back({{}, MessageFile(source.Place(), source.Final()), {}});
    mThread = std::thread([this] { RunThread(); });
}

ReadAhead::~ReadAhead() {
    {
        const std::lock_guard lock(mMutex);
        mEnds = true;
    }
    mChanged.notify_one();
    mThread.join();
}

void ReadAhead::RunThread() {
    for (;;) {
        std::unique_lock lock(mMutex);
        mChanged.wait(lock, [this] { return mTask.valid() || mEnds; });
        if (mEnds)
            return;
        std::packaged_task<void()> task = std::move(mTask);
        lock.unlock();
        task();
    }
}

void ReadAhead::Open(Batch& batch) {
    std::packaged_task<void()> task([this, &batch] {
        for (std::size_t i = 0; i < batch.count; ++i)
            mOpen(batch.messages[i]);
    });
    batch.opened = task.get_future();
    {
        const std::lock_guard lock(mMutex);
        mTask = std::move(task);
    }
    mChanged.notify_one();
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
    Batch& before = mBatches[1 - mFilled];
    if (before.opened.valid())
        before.opened.get();
    Open(mBatches[mFilled]);
    for (std::size_t i = 0; i < before.count; ++i)
        mTake(before.messages[i]);
    before.count = 0;
    mFilled = 1 - mFilled;
}

} // namespace extract
