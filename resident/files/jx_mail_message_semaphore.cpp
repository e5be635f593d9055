#include "resident/files/jx_mail_message_semaphore.h"

#include "resident/files/file_identity.h"
#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\JXMSGSEM.CPP");

JxMailMessageSemaphore::JxMailMessageSemaphore() = default;

JxMailMessageSemaphore::~JxMailMessageSemaphore() = default;

// False for a name that no file can have.
static bool LockFile(FileSpec& lock, const char* name) {
    const int result = lock.SetSpecPart(name, FileSpec::keAsParts);
    lock.SetFileExt(".SEM");
    return result == FileSpec::keSpecOk;
}

int JxMailMessageSemaphore::CreateSemaphoreA(const char* name) {
    mstrName.puts(name);
    RbFile lock;
    // Of two that see no file, the one that makes it has the lock.
    if (!LockFile(lock, name) || lock.Exists() ||
        !lock.OpenSilent(keOpenIn | keOpenOut | keOpenNoReplace))
        return false;
    lock.close();
    mfCreated = true;
    return true;
}

int JxMailMessageSemaphore::RemoveSemaphore(const char* name) {
    FileSpec lock;
    // By the name that opening made it under, which is another outside ASCII.
    const int fReturn = LockFile(lock, name ? name : mstrName.Text()) &&
                        !IsLink(OpenedName(lock).c_str()) && DeleteFileW(OpenedName(lock).c_str());
    kReports.CheckAt(76, fReturn, "fReturn");
    return fReturn;
}
