#include "resident/files/file_spec.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

static const char kInvalidSet[] = "\\*:\".?/<>";

FileSpec::FileSpec() : mwDrive(keNoDrive), mpszInvalidSet(kInvalidSet) {}

FileSpec::FileSpec(const char* spec, int isPath) : FileSpec() {
    if (isPath)
        ForceToPath(spec, keClearOthers);
    else
        Parse(spec, keClearOthers);
}

FileSpec::FileSpec(RBString spec, int isPath) : FileSpec() {
    if (spec.Length() == 0)
        return;
    if (isPath)
        ForceToPath(spec.Text(), keClearOthers);
    else
        Parse(spec.Text(), keClearOthers);
}

FileSpec::FileSpec(const FileSpec& other)
    : mwDrive(other.mwDrive), mpszInvalidSet(other.mpszInvalidSet), mstrPath(other.mstrPath),
      mstrName(other.mstrName), mstrExt(other.mstrExt) {}

FileSpec& FileSpec::operator=(const FileSpec& other) {
    if (this != &other) {
        mwDrive = other.mwDrive;
        mpszInvalidSet = other.mpszInvalidSet;
        mstrPath = other.mstrPath;
        mstrName = other.mstrName;
        mstrExt = other.mstrExt;
    }
    return *this;
}

const char* FileSpec::FileName() const { return mstrName.Text(); }

const char* FileSpec::FileExt() const { return mstrExt.Text(); }

const char* FileSpec::ShortFileExt() const {
    return mstrExt.Length() < 2 ? nullptr : mstrExt.Text() + 1;
}

int FileSpec::operator==(const FileSpec& other) const {
    return mwDrive == other.mwDrive && mstrPath == other.mstrPath && mstrName == other.mstrName &&
           mstrExt == other.mstrExt;
}

int FileSpec::operator!=(const FileSpec& other) const { return !(*this == other); }

bool FileSpec::IsSameFile(const FileSpec& other) const {
    return RBString(FullFileSpec()).StrICmp(RBString(other.FullFileSpec())) == 0;
}

int FileSpec::operator<(const FileSpec& other) const {
    const auto key = [](const FileSpec& spec) {
        RBString text(spec.FileName());
        text.concat(spec.ShortFileExt());
        text.Upper();
        return text;
    };
    return key(*this) < key(other);
}

namespace {

// A specification cut at the places where the file system cuts it.
struct SplitSpec {
    explicit SplitSpec(std::string_view rest) {
        if (rest.size() >= 2 && rest[1] == ':') {
            drive = rest[0];
            rest.remove_prefix(2);
        }
        const std::size_t separator = rest.find_last_of("\\/");
        const std::size_t nameStart = separator == rest.npos ? 0 : separator + 1;
        std::string_view last = rest.substr(nameStart);
        // "." and ".." are folders, not a name and an extension.
        if (last == "." || last == "..")
            last = {};
        path = rest.substr(0, rest.size() - last.size());
        const std::size_t dot = last.rfind('.');
        name = last.substr(0, dot);
        if (dot != last.npos)
            ext = last.substr(dot);
    }

    char drive = 0;
    std::string path; // with its trailing backslash
    std::string name;
    std::string ext; // with its dot
};

} // namespace

int FileSpec::Parse(const char* spec, int replaceAll) {
    if (!spec || !*spec)
        return keSpecEmpty;
    const SplitSpec parts(spec);
    return Build(parts.drive, parts.path.c_str(), parts.name.c_str(), parts.ext.c_str(),
                 replaceAll);
}

// The result of looking a path over; `text` is not empty.
static int CheckPath(std::string_view text) {
    const bool rooted = text.front() == '\\';
    for (std::size_t at = text.find("\\\\"); at != text.npos; at = text.find("\\\\", at + 1))
        if (at != 0)
            return FileSpec::keSpecBadCharacter;
    if (text.back() == '\\')
        text.remove_suffix(1);
    // npos + 1 is 0: without a backslash the whole text is the last component.
    if (text.size() - (text.rfind('\\') + 1) > FileSpec::keMaxPart)
        return FileSpec::keSpecFolderTooLong;
    if (text.size() + !rooted > FileSpec::keMaxPart)
        return FileSpec::keSpecPathTooLong;
    return FileSpec::keSpecOk;
}

int FileSpec::Build(char drive, const char* path, const char* name, const char* ext,
                    int replaceAll) {
    if (drive) {
        const char letter = drive >= 'a' && drive <= 'z' ? drive - 'a' + 'A' : drive;
        if (letter < 'A' || letter > 'Z')
            return keSpecBadDrive;
        mwDrive = letter - 'A';
    } else if (replaceAll) {
        mwDrive = keNoDrive;
    }

    // The texts given may be this specification's own: they stay alive until all are stored.
    const RBString oldName(mstrName);
    const RBString oldExt(mstrExt);
    // Stores a name or an extension, or reports its length.
    const auto setPart = [replaceAll](RBString& part, const char* text) {
        if (text && *text) {
            if (std::strlen(text) > keMaxPart)
                return false;
            part.puts(text);
        } else if (replaceAll) {
            part.reset();
        }
        return true;
    };
    if (!setPart(mstrName, name))
        return keSpecNameTooLong;
    if (!setPart(mstrExt, ext))
        return keSpecExtTooLong;

    if (!path || !*path) {
        if (replaceAll)
            mstrPath.reset();
        return keSpecOk;
    }
    if (const int result = CheckPath(path))
        return result;
    // A relative folder is stored as a rooted one; callers rely on the leading backslash.
    std::string stored(path);
    if (stored.front() != '\\')
        stored.insert(0, 1, '\\');
    if (stored.back() != '\\')
        stored += '\\';
    mstrPath.puts(stored.c_str());
    return keSpecOk;
}

int FileSpec::ForceToPath(const char* spec, int replaceAll) {
    if (!spec)
        return keSpecEmpty;
    // An empty text becomes the root.
    std::string path(spec);
    if (path.empty() || path.back() != '\\')
        path += '\\';
    return Parse(path.c_str(), replaceAll);
}

int FileSpec::SetSpecPart(const char* text, int isPath) {
    return isPath ? ForceToPath(text, keKeepOthers) : Parse(text, keKeepOthers);
}

int FileSpec::SetSpecPart(RBString text, int isPath) { return SetSpecPart(text.Text(), isPath); }

int FileSpec::SetValidSpecPart(RBString& text, int isPath) {
    const int result = isValidPathName(text, mpszInvalidSet, 0);
    return result ? result : SetSpecPart(text, isPath);
}

int FileSpec::AppendPath(const char* sub) {
    if (mstrPath.Length() == 0)
        return SetSpecPart(sub, keAsPath);
    if (!sub || !*sub)
        return keSpecOk;
    std::string joined(mstrPath.Text());
    if (joined.back() != '\\' && *sub != '\\')
        joined += '\\';
    joined += joined.back() == '\\' && *sub == '\\' ? sub + 1 : sub;
    if (joined.back() != '\\')
        joined += '\\';
    mstrPath.puts(joined.c_str());
    return keSpecOk;
}

void FileSpec::DecendPath() {
    const std::string_view path(mstrPath.Text());
    const std::size_t last = path.rfind('\\');
    if (last == path.npos || path.find('\\') == last)
        return;
    mstrPath.Truncate(path.rfind('\\', last - 1) + 1);
}

void FileSpec::SetPath(const char* path) {
    std::string stored(path ? path : "");
    if (stored.empty() || stored.front() != '\\')
        stored.insert(0, 1, '\\');
    stored += '\\';
    mstrPath.puts(stored.c_str());
}

void FileSpec::SetFileExt(const char* ext) {
    if (!ext || !*ext) {
        mstrExt.reset();
        return;
    }
    std::string stored(ext);
    if (stored.front() != '.')
        stored.insert(0, 1, '.');
    mstrExt.puts(stored.substr(0, keMaxPart).c_str());
}

FileSpec FileSpec::Beside(const char* fileName) const {
    FileSpec other(*this);
    other.mstrName.reset();
    other.mstrExt.reset();
    other.SetSpecPart(fileName, keAsParts);
    return other;
}

void FileSpec::Reset() {
    mwDrive = keNoDrive;
    mstrPath.reset();
    mstrName.reset();
    mstrExt.reset();
}

const char* FileSpec::Join(bool withDrive, bool withName, bool withExt) const {
    mstrScratch.reset();
    if (withDrive && mwDrive != keNoDrive) {
        mstrScratch.puts(static_cast<char>('A' + mwDrive));
        mstrScratch.concat(':');
    }
    if (withDrive)
        mstrScratch.concat(mstrPath);
    if (withName)
        mstrScratch.concat(mstrName);
    if (withExt)
        mstrScratch.concat(mstrExt);
    return mstrScratch.Text();
}

const char* FileSpec::FullSpec() const { return Join(true, true, true); }

const char* FileSpec::FullFileSpec() const {
    Join(true, true, mstrExt.Length() > 1);
    CleanUp(mstrScratch);
    return mstrScratch.Text();
}

const char* FileSpec::FullFilePath() const {
    Join(true, false, false);
    CleanUp(mstrScratch);
    return mstrScratch.Text();
}

const char* FileSpec::FullPath() const { return Join(true, false, false); }

const char* FileSpec::FullFileName() const { return Join(false, true, true); }

int FileSpec::CleanUp(RBString& text) {
    const unsigned int length = text.Length();
    if (length == 0)
        return false;
    const char last = text.Text()[length - 1];
    if (last != '.' && !(last == '\\' && length >= 4))
        return false;
    text.Truncate(length - 1);
    return true;
}

int FileSpec::isValidFileNoExt(RBString& text, const char* set) {
    return set && std::strpbrk(text.Text(), set) ? keSpecBadCharacter : keSpecOk;
}

int FileSpec::isValidPathName(RBString& text, const char* set, int strict) {
    if (!set || !*set)
        return keSpecEmpty;
    for (const char* p = text.Text(); (p = std::strpbrk(p, set)) != nullptr; ++p) {
        const bool allowed =
            *p == '.' || (!strict && *p == '\\') || (!strict && *p == ':' && p == text.Text() + 1);
        if (!allowed)
            return keSpecBadCharacter;
    }
    return keSpecOk;
}

// A dot that has text behind it.
static bool IsExtensionDot(const char* p) { return *p == '.' && p[1]; }

// The name part of a hashed name, at most 260 characters with each hexadecimal pair counted as one.
// Leaves `p` behind what it used: on the dot that ended the name, if `toDot`.
static std::string HashNamePart(const char*& p, bool toDot, const char* set) {
    std::string name;
    for (unsigned int count = 0; *p && count < FileSpec::keMaxPart; ++p) {
        const unsigned char c = *p;
        if (c < 32)
            continue;
        if (toDot && count > 0 && IsExtensionDot(p))
            break;
        if (c < 128 && !std::strchr(set, c)) {
            name += *p;
        } else {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%2.2x", c);
            name += digits;
        }
        ++count;
    }
    return name;
}

// What an extension keeps of the text at `p`.
static std::string HashExtPart(const char* p, const char* set) {
    std::string ext;
    for (; *p && ext.size() < FileSpec::keMaxPart - 1; ++p) {
        const unsigned char c = *p;
        if (c > 32 && c < 127 && !std::strchr(set, c))
            ext += *p;
    }
    return ext;
}

int FileSpec::HashFileName(RBString& result, RBString& source, RBString* ext, const char* set) {
    if (!set)
        set = "";
    const char* p = source.Text();
    std::string output = HashNamePart(p, ext != nullptr, set);
    if (ext) {
        while (*p && !IsExtensionDot(p))
            ++p;
        if (*p) {
            const std::string own = HashExtPart(p + 1, set);
            // A default extension comes with its own dot behind the one already there; names made
            // so are on disk with both.
            output += '.';
            output += own.empty() ? ext->Text() : own;
        } else if (ext->Length()) {
            if (ext->Text()[0] != '.')
                output += '.';
            output += ext->Text();
        }
    }
    if (!output.empty()) {
        result.puts(output.c_str());
        if (isValidPathName(result, kInvalidSet, 1) == keSpecOk) {
            result.Upper();
            return true;
        }
    }
    result.puts("NO_NAME");
    return false;
}
