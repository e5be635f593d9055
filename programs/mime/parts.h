#pragma once

#include <memory>
#include <string>
#include <vector>

#include "programs/mime/header.h"
#include "programs/mime/lines.h"

namespace mime {

// One body of a message, which may have many (RFC 2046, 5.1).
struct Part {
    std::string type = "text/plain"; // in small letters
    std::string charset;             // empty when it tells none
    std::wstring name;               // of the file that it was made from
    bool isAttached = false;         // it is no text to be read at once (RFC 2183, 2)
    bool isAlternative = false;      // it says once more what a part before it says
};

// Gets the bodies of a message one after the other, decoded.
class PartTaker {
public:
    virtual ~PartTaker() = default;
    virtual void Begin(const Part& part) = 0;
    virtual void Bytes(std::string_view bytes) = 0;
    virtual void End() = 0;
};

// Takes the lines of a message behind its header, and hands its bodies out. What is wrong in a
// message makes it text, or more of the part before; no text gets lost.
class PartReader : public LineSink {
public:
    // The taker must outlive it.
    PartReader(const Header& header, PartTaker& taker);

    void Text(std::string_view piece) override;
    void EndLine() override;
    void Finish() override;

private:
    struct Multipart {
        std::string boundary;
        bool isAlternative;
        unsigned int parts;
    };
    enum class State { Header, Body, Between };

    bool TakeBoundary();
    void Enter(const Header& header);
    void EnterPart(const Header& header, const std::string& type);
    void EndHeader();
    void PutPiece();
    void Leave();

    PartTaker& mTaker;
    std::vector<Multipart> mOpen;
    State mState = State::Between;
    std::string mHeader;
    std::string mLine;
    bool mContinued = false; // the line's beginning is gone
    bool mLineEnded = false; // the end of the body's last line may be the boundary's
    std::unique_ptr<LineSink> mDecoder;
};

} // namespace mime
