// The whole request from user to inbox, and the import of a user list, against the same file calls
// made plainly.

#include <cstdio>
#include <cstring>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "postrider.h"
#include "resident/core/windows_api.h"

static constexpr unsigned int kRequests = 100;
static constexpr unsigned int kUserLines = 10000;

static std::uint64_t RequestsByLibrary() {
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < kRequests; ++i) {
        char *inbox, *userData, *topic, *fileName, *sender;
        unsigned short kind, flag;
        int more = GetCurUserPath(&inbox, &userData) &&
                   GetFirstRecord(inbox, &topic, &fileName, &sender, &kind, &flag);
        for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
            sum += kind + flag + topic[0] + fileName[1] + 1;
        Done();
    }
    return sum;
}

// Opens, reads and closes a file; the bytes read.
static DWORD ReadWhole(const char* path, char* bytes, DWORD size) {
    const HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    DWORD read = 0;
    ReadFile(file, bytes, size, &read, nullptr);
    CloseHandle(file);
    return read;
}

// The string at `at`; moves behind it.
static const char* NextString(const char* bytes, DWORD& at, DWORD& length) {
    const auto* const big = reinterpret_cast<const unsigned char*>(bytes) + at;
    length = static_cast<DWORD>(big[0] << 24 | big[1] << 16 | big[2] << 8 | big[3]);
    at += 4 + length;
    return reinterpret_cast<const char*>(big) + 4;
}

static std::uint64_t RequestsByCalls() {
    static constexpr unsigned char kKey[] = {0x5A, 0x13, 0xC4, 0x7E, 0x99, 0x02, 0xB8,
                                             0x6D, 0x31, 0xF0, 0x4C, 0x8E, 0x27, 0xD5,
                                             0x0B, 0x96, 0xE3, 0x48, 0x7A, 0x1F, 0x00};
    static char user[8192];
    static char records[0x10000];
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < kRequests; ++i) {
        char path[MAX_PATH];
        GetWindowsDirectoryA(path, sizeof path);
        std::strcat(path, "\\JXUSER.DAT");
        // The file is hidden while it is closed.
        SetFileAttributesA(path, FILE_ATTRIBUTE_ARCHIVE);
        const DWORD size = ReadWhole(path, user, sizeof user);
        SetFileAttributesA(path, FILE_ATTRIBUTE_HIDDEN);
        for (DWORD n = 0; n < size; ++n)
            user[n] = static_cast<char>(user[n] ^ kKey[n % sizeof kKey]);
        DWORD at = 12;
        DWORD length;
        NextString(user, at, length);
        NextString(user, at, length);
        const char* directory = NextString(user, at, length);
        std::string inbox(directory, length);
        const char* name = NextString(user, at, length);
        inbox.append(name, length);
        const DWORD held = ReadWhole(inbox.c_str(), records, sizeof records);
        for (DWORD offset = 0; offset + 316 <= held; offset += 316) {
            static char topic[28], fileName[34], sender[32];
            const auto* record = reinterpret_cast<const unsigned char*>(records) + offset;
            if (!record[2])
                continue;
            std::memcpy(topic, record + 4, sizeof topic);
            std::memcpy(fileName, record + 38, sizeof fileName);
            std::memcpy(sender, record + 72, sizeof sender);
            asm volatile("" ::"r"(topic), "r"(fileName), "r"(sender) : "memory");
            sum += static_cast<unsigned int>(record[310] << 8 | record[311]) + (record[3] & 1) +
                   topic[1] + fileName[2] + 1;
        }
    }
    return sum;
}

static std::uint64_t ImportByLibrary(const std::string& path) {
    RbFile list(path.c_str());
    list.Open(keOpenRead);
    std::uint64_t sum = 0;
    for (MailUser user; user.Import(list) == keUserListDone && list.good();)
        sum += user.Name().Length() + user.Address().Length() + user.MessageFormat();
    list.close();
    return sum;
}

static std::uint64_t ImportByLines(const std::string& path) {
    std::FILE* list = std::fopen(path.c_str(), "rb");
    std::uint64_t sum = 0;
    char line[1100];
    while (std::fgets(line, sizeof line, list)) {
        char* fields[6] = {line};
        for (int i = 1; i < 6; ++i) {
            char* tab = std::strchr(fields[i - 1], '\t');
            *tab = 0;
            fields[i] = tab + 1;
        }
        std::string name(fields[0]);
        name += '|';
        name += fields[1];
        const std::string address(fields[2]);
        sum += name.size() + address.size() + (std::strcmp(fields[4], "Styled") == 0 ? 1 : 2);
    }
    std::fclose(list);
    return sum;
}

std::vector<Contest> AccountContests(const std::string& folder) {
    WriteDFile(folder + "\\INBOX.DAT", 50);
    JxBackgndData data;
    data.mstrSettings[JxBackgndData::keMailDirectory].puts((folder + "\\").c_str());
    data.mstrSettings[JxBackgndData::keDFileName].puts("INBOX.DAT");
    JxCurrentUserDataFile userFile;
    if (userFile.OpenUserDataFile(keOpenRewrite))
        *userFile.GetStream() << data;
    userFile.Close();

    const std::string list = folder + "\\USERS.TXT";
    RbFile users(list.c_str());
    users.Open(keOpenRewrite);
    for (unsigned int i = 0; i < kUserLines; ++i) {
        RBString name;
        name.Sprintf("Family%u|Given", i);
        RBString address;
        address.Sprintf("user%u@post", i);
        MailUser(name.Text(), address.Text(), i % 2 ? keFormat1 : keFormat2,
                 i % 2 ? keEncode1 : keEncode7)
            .Export(users);
    }
    users.close();
    return {{"100 requests from user to an inbox of 50",
             1.2,
             [] { return RequestsByCalls(); },
             [] { return RequestsByLibrary(); },
             {}},
            {"import 10,000 user lines",
             3.0,
             [list] { return ImportByLines(list); },
             [list] { return ImportByLibrary(list); },
             {}}};
}
