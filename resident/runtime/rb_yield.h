#pragma once

#include "resident/core/jx_api.h"

// Lets this thread's queued messages run during long work. A pending WM_QUIT stays in the queue.
// Returns 0 when the queue was emptied, non-zero when WM_QUIT is pending.
JX_API int RbYield();

// The module that holds the library's dialog templates and strings: the product's resource library.
JX_API void* GetTaskInstance();
