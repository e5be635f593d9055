#pragma once

#include "resident/core/rb_string.h"

// Texts are ANSI, and names cross to the file system in the OEM code page, in buffers of this size.
// A name of 260 characters or more is refused: cut, it would be another file's.
//
// Names outside ASCII do not cross unharmed. RbFile's opens convert a name twice (DoOpen, then
// open, after which the specification holds the once-converted name); what looks for a file, makes
// a folder, renames and removes converts it once; the files of the Windows directory, and settings
// files, go by their unconverted names. So one name may open one file and remove another, and
// file_identity.h tells both: OpenedName and WideName. Keep mail directories, D files, message
// files and users' directories to ASCII.
enum { keOemNameSize = 260 };

// One file's name in its parts: drive, path, name and extension.
//
// Parsing and validation return a result code and show nothing; parts set before a failing step
// stay set. Texts are ANSI; lengths follow the Windows limit of 260 characters.
class JX_API FileSpec {
public:
    enum {
        keSpecOk = 0,
        keSpecBadDrive = 340,      // not a letter from A to Z
        keSpecPathTooLong = 342,   // the whole path
        keSpecFolderTooLong = 343, // the path's last component
        keSpecNameTooLong = 344,
        keSpecExtTooLong = 345,
        keSpecBadCharacter = 346, // or a doubled backslash behind the path's start
        keSpecEmpty = 347         // nothing to parse, or no set to validate against
    };
    enum { keNoDrive = 0xFFFF, keMaxPart = 260 };
    // What `isPath` makes of a text: its parts, or all of it a path.
    enum { keAsParts = 0, keAsPath = 1 };
    // What `replaceAll` makes of the parts that are not given.
    enum { keKeepOthers = 0, keClearOthers = 1 };

    FileSpec(); // without any part
    FileSpec(const char* spec, int isPath = keAsParts);
    FileSpec(RBString spec, int isPath = keAsParts);
    FileSpec(const FileSpec& other);
    FileSpec& operator=(const FileSpec& other);

    // The parts' texts, valid until the part changes.
    virtual const char* FileName() const;
    virtual const char* FileExt() const;
    // The extension without its dot; null when there is none.
    virtual const char* ShortFileExt() const;

    unsigned short Drive() const { return mwDrive; } // 0 = A to 25 = Z, or keNoDrive
    const RBString& Path() const { return mstrPath; }
    const char* InvalidSet() const { return mpszInvalidSet; }

    // Drive, path, name and extension alike, case-sensitively.
    int operator==(const FileSpec& other) const;
    int operator!=(const FileSpec& other) const;
    // Whether both name one file: the full forms, without regard to case.
    bool IsSameFile(const FileSpec& other) const;
    // By name and extension alone, without regard to case, drive and path.
    int operator<(const FileSpec& other) const;

    // Take the parts from a text, or as they are given; return a result code. A path is stored with
    // a backslash at both ends, so that a relative one becomes one of the root.
    int Parse(const char* spec, int replaceAll);
    int Build(char drive, const char* path, const char* name, const char* ext, int replaceAll);
    // The whole text is a path; an empty one is the root.
    int ForceToPath(const char* spec, int replaceAll);

    // Set the parts that `text` has: ".BAK" the extension alone, a bare name the name alone.
    int SetSpecPart(const char* text, int isPath);
    int SetSpecPart(RBString text, int isPath);
    // The same for a text that isValidPathName passes.
    int SetValidSpecPart(RBString& text, int isPath);
    // Adds a folder behind the path, with one backslash between and one at the end. keSpecOk, or a
    // result code where there was no path.
    int AppendPath(const char* sub);
    // Drops the path's last folder: \Mail\Old\ becomes \Mail\, and that the root.
    void DecendPath();
    // Without checks: puts a backslash in front unless there is one, and one at the end whether
    // there is one or not. Mail becomes \Mail\, but \Mail\ gets a second one there.
    void SetPath(const char* path);
    // With or without the dot; an empty text clears it.
    void SetFileExt(const char* ext);
    void ClearName() { mstrName.reset(); }
    // The file `fileName` of the same folder.
    FileSpec Beside(const char* fileName) const;
    // Clears all parts.
    void Reset();

    // The joined forms. The text stays valid until the next of these calls on this object.
    const char* FullSpec() const;     // all parts as they stand
    const char* FullFileSpec() const; // what opens the file: no lone dot, no trailing backslash
    const char* FullFilePath() const; // the folder without its trailing backslash
    const char* FullPath() const;     // the folder with it
    const char* FullFileName() const; // name and extension

    // Drops one trailing dot or, from 4 characters on, backslash; returns 1 when it did.
    static int CleanUp(RBString& text);

    // 346 when `text` has a character of `set`, else 0.
    static int isValidFileNoExt(RBString& text, const char* set);
    // As above, but dots pass, and unless `strict` backslashes and a colon in second place do.
    static int isValidPathName(RBString& text, const char* set, int strict);

    // Makes an upper-case file name out of any text, writing characters outside ASCII or in `set`
    // as two hexadecimal digits. With `ext`, a last part behind a dot becomes the extension, else
    // `ext` does. Returns 1, or 0 with "NO_NAME" in `result`.
    static int HashFileName(RBString& result, RBString& source, RBString* ext, const char* set);

protected:
    // Puts the path, and the other parts that are wanted, into the scratch text; returns that.
    const char* Join(bool withDrive, bool withName, bool withExt) const;

    mutable RBString mstrScratch;
    unsigned short mwDrive;
    const char* mpszInvalidSet;
    RBString mstrPath;
    RBString mstrName;
    RBString mstrExt;
};
