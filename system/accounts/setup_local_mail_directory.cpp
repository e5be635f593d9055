// Here, and not beside its class, because it makes directory files of the mail store and asks the
// mail preferences where.

#include <iterator>

#include "resident/files/disk_driver.h"
#include "resident/files/file_identity.h"
#include "resident/files/file_replacement.h"
#include "resident/users/jx_logged_mail_user.h"
#include "system/prefs/jx_mail_prefs.h"
#include "system/store/directory_file.h"

// One local folder: who knows its directory, and its directory file's name.
struct LocalFolder {
    void (JXMailPrefs::*directory)(RBString* out) const;
    const char* directoryFile;
};

static constexpr LocalFolder kFolders[] = {
    {&JXMailPrefs::GetLocalInboxDir, "DFile"},    {&JXMailPrefs::GetLocalMailLogDir, "MFile"},
    {&JXMailPrefs::GetLocalPublicDir, "DFile"},   {&JXMailPrefs::GetLocalTrashDir, "DFile"},
    {&JXMailPrefs::GetLocalSentMailDir, "DFile"}, {&JXMailPrefs::GetLocalOutboxDir, "DFile"},
    {&JXMailPrefs::GetBackgndWorkDir, nullptr},   {&JXMailPrefs::GetLocalDeadMailDir, nullptr}};

// Creating a directory file cuts what is there: another program may have made it meanwhile, and
// have added a message. Returns 1 when the file is there.
static int MakeDirectoryFile(DirectoryFile& file) {
    MakeNewFile(OpenedName(file).c_str());
    FileLock lock;
    long size = 0;
    if (lock.Take(file) == keLockTaken && file.FileInfo(nullptr, &size, nullptr) && size == 0)
        file.CreateDFile();
    return file.FileInfo(nullptr, &size, nullptr) && size >= BaseDirFile::keRecordSize;
}

int JxLoggedMailUser::SetupLocalMailDirectory(JXMailPrefs* prefs, FileSpec& result,
                                              enumLocalMailDir which) {
    const unsigned int index = static_cast<unsigned int>(which);
    if (!prefs || index >= std::size(kFolders))
        return false;
    const LocalFolder& folder = kFolders[index];
    RBString directory;
    (prefs->*folder.directory)(&directory);
    FileSpec spec(directory, FileSpec::keAsPath);
    if (!DiskDriver::FileExists(spec, keAttrDirectory) && !DiskDriver::MakeDir(spec))
        return false;
    bool made = true;
    if (folder.directoryFile) {
        spec.SetSpecPart(folder.directoryFile, FileSpec::keAsParts);
        DirectoryFile directoryFile(keDirFolder);
        static_cast<FileSpec&>(directoryFile) = spec;
        // A folder of that name exists, too, and is no directory file.
        made = !directoryFile.DirectoryExists() &&
               (directoryFile.Exists() || MakeDirectoryFile(directoryFile));
    }
    result = spec;
    return made;
}
