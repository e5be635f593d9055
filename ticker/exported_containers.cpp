// The containers that the DLL exports.

#define JX_INSTANTIATE_CONTAINERS

#include "resident/runtime/jx_timer.h"
#include "resident/users/jx_download_item.h"
#include "resident/users/mail_user.h"
#include "system/store/directory_record.h"
