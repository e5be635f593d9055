#pragma once

#include <string>

#include "programs/mailticker/messages.h"

// How an inbox is found.
enum class InboxState {
    Readable,
    Empty,
    NoUser,      // no current user, or its file cannot be read
    NoFolder,    // the folder is not there
    NoFile,      // the folder is, and has no D file
    Held,        // by another program that shares it with nobody
    Denied,      // Windows does not let it be read; Reading::error tells why
    Unspeakable, // its name cannot be passed to the library
    Damaged,
};

struct Reading {
    InboxState state = InboxState::NoUser;
    std::wstring path;
    Messages messages;   // of the states Readable and Damaged
    std::wstring damage; // a sentence
    unsigned long error = 0;

    bool HasMessages() const {
        return state == InboxState::Readable || state == InboxState::Empty ||
               state == InboxState::Damaged;
    }
};

// Reads an inbox as any notifier does, through the library's plain functions, and asks Windows what
// those do not tell. Holds nothing between two readings.
class InboxReader {
public:
    // The current user's inbox without a path. A folder stands for the "DFile" in it.
    explicit InboxReader(const std::wstring& path = {});

    bool IsOfCurrentUser() const { return mPath.empty(); }
    // The D file; empty without a user.
    std::wstring Path() const;
    // Reads the D file of that path.
    static Reading Read(const std::wstring& path);

private:
    std::wstring mPath;
};

// The folder of a file, with its last backslash.
std::wstring FolderOf(const std::wstring& path);
