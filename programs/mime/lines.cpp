#include "programs/mime/lines.h"

namespace mime {

void LineSplitter::Add(std::string_view piece) {
    while (!piece.empty()) {
        if (mAfterCr) {
            mAfterCr = false;
            if (piece.front() == '\n') {
                piece.remove_prefix(1);
                continue;
            }
        }
        std::size_t end = 0;
        while (end < piece.size() && piece[end] != '\n' && piece[end] != '\r')
            ++end;
        if (end > 0)
            mSink.Text(piece.substr(0, end));
        if (end == piece.size())
            return;
        mAfterCr = piece[end] == '\r';
        mSink.EndLine();
        piece.remove_prefix(end + 1);
    }
}

void TextShape::Text(std::string_view piece) {
    std::size_t eightBit = 0;
    std::size_t zeros = 0;
    std::size_t controls = 0;
    for (const char c : piece) {
        const auto byte = static_cast<unsigned char>(c);
        eightBit += byte >= 0x80;
        zeros += byte == 0;
        controls += (byte < 0x20 && byte != '\t' && byte != 0) || byte == 0x7F;
    }
    mEightBit += eightBit;
    mZeros += zeros;
    mControls += controls;
    mSize += piece.size();
    mColumn += piece.size();
    mTooLong |= mColumn > keLongestLine;
}

} // namespace mime
