#include "programs/mime/parts.h"

#include <utility>

#include "programs/mime/decodings.h"
#include "programs/mime/encoded_words.h"

namespace mime {

static constexpr std::size_t kLongestLine = 0x10000;
static constexpr std::size_t kDeepest = 50;

static std::string_view BodyOf(const Header& header, std::string_view name) {
    const Field* const field = header.Find(name);
    return field ? field->body : std::string_view();
}

PartReader::PartReader(const Header& header, PartTaker& taker) : mTaker(taker) { Enter(header); }

void PartReader::Enter(const Header& header) {
    const std::string_view body = BodyOf(header, "Content-Type");
    const std::string type = ValueOf(body);
    const std::string boundary = ParameterOf(body, "boundary");
    if (type.starts_with("multipart/") && !boundary.empty() && mOpen.size() < kDeepest) {
        mOpen.push_back({boundary, type == "multipart/alternative", 0});
        mState = State::Between;
    } else if (type == "message/rfc822" && mOpen.size() < kDeepest) {
        mHeader.clear();
        mState = State::Header;
    } else {
        EnterPart(header, type);
    }
}

void PartReader::EnterPart(const Header& header, const std::string& type) {
    const std::string_view contentType = BodyOf(header, "Content-Type");
    const std::string_view disposition = BodyOf(header, "Content-Disposition");
    Part part;
    if (type.find('/') != type.npos)
        part.type = type;
    part.charset = ParameterOf(contentType, "charset");
    std::string name = ParameterOf(disposition, "filename");
    if (name.empty())
        name = ParameterOf(contentType, "name");
    part.name = FieldText(name);
    part.isAttached = ValueOf(disposition) == "attachment" || !part.type.starts_with("text/");
    part.isAlternative = !mOpen.empty() && mOpen.back().isAlternative && mOpen.back().parts++ > 0;
    mDecoder = DecoderOf(ValueOf(BodyOf(header, "Content-Transfer-Encoding")),
                         [this](std::string_view bytes) { mTaker.Bytes(bytes); });
    mState = State::Body;
    mLineEnded = false;
    mTaker.Begin(part);
}

void PartReader::Leave() {
    if (mState == State::Header)
        EndHeader();
    if (mState == State::Body) {
        mDecoder->Finish();
        mTaker.End();
    }
    mState = State::Between;
}

// RFC 2046, 5.1.1. A boundary of an outer message ends the inner ones.
bool PartReader::TakeBoundary() {
    if (!mLine.starts_with("--"))
        return false;
    std::string_view line = std::string_view(mLine).substr(2);
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    for (std::size_t i = mOpen.size(); i-- > 0;) {
        const bool isNext = line == mOpen[i].boundary;
        if (!isNext && line != mOpen[i].boundary + "--")
            continue;
        Leave();
        mOpen.resize(i + (isNext ? 1 : 0));
        if (isNext) {
            mHeader.clear();
            mState = State::Header;
        }
        return true;
    }
    return false;
}

void PartReader::EndHeader() {
    const std::string text = std::exchange(mHeader, {});
    if (const auto header = PartHeaderOf(text))
        return Enter(*header);
    // None: it is text.
    EnterPart({}, "");
    LineSplitter lines(*mDecoder);
    lines.Add(text);
    mLineEnded = false;
}

void PartReader::PutPiece() {
    if (mState == State::Body) {
        if (std::exchange(mLineEnded, false))
            mDecoder->EndLine();
        mDecoder->Text(mLine);
    } else if (mState == State::Header && mHeader.size() < kLongestLine) {
        mHeader += mLine;
    }
    mLine.clear();
}

void PartReader::Text(std::string_view piece) {
    mLine += piece;
    if (mLine.size() > kLongestLine) {
        PutPiece();
        mContinued = true;
    }
}

void PartReader::EndLine() {
    const bool continued = std::exchange(mContinued, false);
    if (!continued && TakeBoundary()) {
        mLine.clear();
        return;
    }
    const bool empty = mLine.empty() && !continued;
    PutPiece();
    if (mState == State::Body)
        mLineEnded = true;
    else if (mState == State::Header)
        mHeader += '\n';
    if (mState == State::Header && empty)
        EndHeader();
}

void PartReader::Finish() {
    if (!mLine.empty() && (mContinued || !TakeBoundary()))
        PutPiece();
    mLine.clear();
    if (mState == State::Body && mLineEnded)
        mDecoder->EndLine();
    Leave();
}

} // namespace mime
