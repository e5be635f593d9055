// RbFile: copying.

#include <algorithm>
#include <memory>

#include "resident/files/oem_name.h"
#include "resident/files/open_stream.h"
#include "resident/files/rb_file.h"

int RbFile::Copy(RbFile& source, int close, CopyProgress progress, enumDupStream buffer) {
    // Opens a file that is closed, by its specification as it stands; true when its state is good.
    const auto ready = [](RbFile& file, int mode) {
        file.clear();
        if (!file.isOpen()) {
            ConvertToOem(file.FullSpec(), szTranslatedString);
            file.open(szTranslatedString, mode);
        }
        return file.good();
    };
    if (!ready(*this, keOpenWrite))
        return keCopyTargetNotOpen;

    int result = keCopySourceNotOpen;
    if (ready(source, keOpenIn | keOpenBinary)) {
        result = keCopyReadFailed;
        source.seekg(0, std::ios::end);
        const long size = source.tellg();
        source.seekg(0);
        if (source.good() && size >= 0)
            result = DupStream(source, size, progress, buffer);
    }

    if (close) {
        source.close();
        if (bad())
            result = keCopyWriteFailed;
        else if (source.bad())
            result = keCopyReadFailed;
        std::fstream::close();
    }
    return result;
}

int RbFile::DupStream(RbFile& source, long size, CopyProgress progress, enumDupStream buffer) {
    constexpr unsigned int kLarge = 32000;
    constexpr unsigned int kSmall = 10;
    const unsigned int bufferSize = buffer == keDupSmallBuffer ? kSmall : kLarge;
    char small[kSmall];
    const std::unique_ptr<char[]> large(bufferSize == kLarge ? new char[kLarge] : nullptr);
    char* const bytes = large ? large.get() : small;

    unsigned long remaining = std::max(size, 0l);
    unsigned int step = 0;
    unsigned int position = 0;
    if (progress) {
        const unsigned int chunks = remaining <= bufferSize ? 1 : remaining / bufferSize;
        step = std::max(bufferSize / chunks, 1u);
        position = step;
        if (chunks == 1 && !progress(2 * step))
            return keCopyStopped;
    }

    int result = keCopyDone;
    bool ended = false;
    while (result == keCopyDone && !ended && remaining > 0) {
        source.read(bytes, static_cast<int>(std::min<unsigned long>(bufferSize, remaining)));
        const unsigned int n = source.gcount();
        remaining -= n;
        if (n > 0)
            write(bytes, static_cast<int>(n));
        // A source that was opened to be written alone ends at once, too.
        ended = source.eof() && (n > 0 || IsOpenToRead(source));
        if (!ended && (n == 0 || source.bad()))
            result = keCopyReadFailed;
        if (bad())
            result = keCopyWriteFailed;
        if (progress && result == keCopyDone) {
            if (!progress(position))
                result = keCopyStopped;
            position += step;
        }
    }
    // Flush: a full disk shows only when the last bytes are written.
    if (result == keCopyDone && !flush())
        result = keCopyWriteFailed;
    return result;
}
