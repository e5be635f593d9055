#pragma once

#include <array>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "programs/mailfolder/extract/message_file.h"
#include "programs/mailfolder/extract/source_folder.h"

namespace extract {

// A message on its way out.
struct MessageOnItsWay {
    SourceMessage message;
    MessageFile file; // open at the message
    std::optional<Unreadable> problem;
};

// Opens the files of messages in another thread, while those before them are taken: with small
// files the system's opening and closing take longer than all else.
class ReadAhead {
public:
    typedef std::function<void(MessageOnItsWay&)> Step;

    // Each message is handed to `open` in the other thread, and then to `take` in the thread that
    // adds them; both in the order in which they were added.
    ReadAhead(const SourceFolder& source, const Step& open, const Step& take);
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;
    // Waits for what is being opened.
    ~ReadAhead();

    void Add(const SourceMessage& message);
    // Hands out what is left.
    void Finish();

private:
    struct Batch {
        std::vector<MessageOnItsWay> messages;
        std::size_t count = 0;
        std::future<void> opened;
    };

    void Advance();
    void Open(Batch& batch);
    void RunThread();

    const Step mOpen;
    const Step mTake;
    std::array<Batch, 2> mBatches;
    std::size_t mFilled = 0; // the batch that is filled; the other one is opened

    std::mutex mMutex; // of the next two
    std::packaged_task<void()> mTask;
    bool mEnds = false;
    std::condition_variable mChanged;
    std::thread mThread;
};

} // namespace extract
