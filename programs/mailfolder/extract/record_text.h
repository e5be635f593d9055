#pragma once

#include <string>

#include "postrider.h"
#include "programs/mime/charset.h"

namespace extract {

// The texts of a record.
struct RecordText {
    RecordText(const DiskDirRec& record, mime::Charset charset);

    std::wstring sender; // in the usual order, "Anna Smith"
    std::wstring secondUser;
    std::wstring topic;
    // As the bytes stand. A sender's may be a file's path instead.
    std::string senderAddress;
    std::string secondAddress;
    std::string identifier;
    bool senderIsPath = false;

    // Something of the record is not in these texts as it stands there: bytes without a meaning in
    // the character set, control characters, lengths out of range.
    bool isChanged = false;
    unsigned long meaningless = 0;
};

// The record by which a message is best known: the D file's, the one that its file begins with
// where the D file's is damaged, and in doubt what can be made of the former.
DiskDirRec BestRecord(const DiskDirRec& listed, const DiskDirRec& own);

// The marks of a record in words, "processed, return receipt"; empty when it has none.
std::string MarksOf(const DiskDirRec& record);

} // namespace extract
