// Here, and not beside its header, because a lock is a file.

#include "resident/runtime/jx_mail_message_semaphore.h"

#include "resident/files/disk_driver.h"
#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"

static const char kSource[] = "JXRESIDT\\JXMSGSEM.CPP";

JxMailMessageSemaphore::JxMailMessageSemaphore() : mfCreated(0) {}

JxMailMessageSemaphore::~JxMailMessageSemaphore() = default;

static void LockFile(FileSpec& lock, const char* name) {
    lock.SetSpecPart(name, 0);
    lock.SetFileExt(".SEM");
}

int JxMailMessageSemaphore::CreateSemaphoreA(const char* name) {
    mstrName.puts(name);
    RbFile lock;
    LockFile(lock, name);
    if (lock.Exists() || !lock.OpenSilent(keOpenIn | keOpenOut))
        return 0;
    lock.close();
    mfCreated = 1;
    return 1;
}

int JxMailMessageSemaphore::RemoveSemaphore(const char* name) {
    FileSpec lock;
    LockFile(lock, name ? name : mstrName.Text());
    const int fReturn = DiskDriver::RemoveFile(lock);
    JX_CHECK_AT(76, fReturn, "fReturn");
    return fReturn;
}
