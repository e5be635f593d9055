#pragma once

#include "resident/files/rb_file.h"

// A managed file that holds settings. Built closed; closes itself when destroyed.
class JX_API PreferenceFile : public RbFile {
public:
    // Closed, with no name or that of the specification.
    PreferenceFile();
    explicit PreferenceFile(const char* spec);
    explicit PreferenceFile(RBString spec);
    explicit PreferenceFile(const FileSpec& spec);
    PreferenceFile(const PreferenceFile& other);
    ~PreferenceFile() override;

    // The specification, not the stream.
    PreferenceFile& operator=(const PreferenceFile& other);

    // Closes the stream, if it is open.
    void ClosePrefFile();
    // For callers that wait for the file; there is nothing to wait for.
    void Wait() {}
};
