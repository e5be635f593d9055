#pragma once

#include <array>
#include <functional>
#include <future>
#include <optional>
#include <vector>

#include "programs/mailfolder/extract/message_file.h"
#include "programs/mailfolder/extract/source_folder.h"

namespace extract {

// A message on its way, with its file open at its beginning, or what is Unreadable of it.
struct OpenedMessage {
    SourceMessage message;
    MessageFile file;
    std::optional<Unreadable> problem;
};

// Opens the files of messages in another thread, while those before them are taken: of small files
// the system's opening and closing take longer than all else.
class ReadAhead {
public:
    // Each message is handed to `take`, in the order in which they were added, by the thread that
    // adds them.
    ReadAhead(const SourceFolder& source, const std::function<void(OpenedMessage&)>& take);

    void Add(const SourceMessage& message);
    // Hands out what is left.
    void Finish();

private:
    struct Batch {
        std::vector<OpenedMessage> messages;
        std::size_t count = 0;
        std::future<void> opening; // the last member: who destroys it waits for the thread
    };

    void Advance();

    const SourceFolder& mSource;
    const std::function<void(OpenedMessage&)> mTake;
    std::array<Batch, 2> mBatches;
    std::size_t mFilled = 0; // the batch that is filled; the other one is opened
};

} // namespace extract
