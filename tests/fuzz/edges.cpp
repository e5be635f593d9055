#include "tests/fuzz/edges.h"

#include <iterator>

#include "resident/core/windows_api.h"

static TakenEdges taken;
static char* library;

TakenEdges* Edges() { return &taken; }

void ForgetEdges() {
    for (unsigned int i = 0; i < taken.count; ++i)
        taken.times[taken.at[i]] = 0;
    taken.count = 0;
}

// What the compiler calls; nothing here is told itself.
extern "C" __declspec(dllexport) void __sanitizer_cov_trace_pc() {
    char* const caller = static_cast<char*>(__builtin_return_address(0));
    if (!library)
        GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           caller, reinterpret_cast<HMODULE*>(&library));
    const unsigned int at = caller - library;
    if (at >= kMostEdges)
        return;
    unsigned char& times = taken.times[at];
    if (!times && taken.count < std::size(taken.at))
        taken.at[taken.count++] = at;
    if (times < 255)
        ++times;
}
