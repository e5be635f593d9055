#include "tests/guarded/guarded_memory.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "resident/core/windows_api.h"

// Nothing here may allocate: it is what allocation calls.

namespace {

using Byte = unsigned char;

constexpr unsigned int kPage = 4096;
constexpr unsigned int kUnit = 65536; // what address space is reserved in
constexpr unsigned int kSlack = 64;   // bytes beside a block that are looked at
constexpr Byte kSlackByte = 0xA9;

enum State : Byte { kNever, kLive, kFreed };

bool guardBefore;
int fill = 0xCD;
unsigned long liveBlocks, unguardedBlocks;
CRITICAL_SECTION lock;

struct Locked {
    Locked() { EnterCriticalSection(&lock); }
    ~Locked() { LeaveCriticalSection(&lock); }
};

void Tell(const char* text) {
    DWORD written;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, std::strlen(text), &written, nullptr);
}

CONTEXT Here() {
    CONTEXT here = {};
    here.ContextFlags = CONTEXT_FULL;
    RtlCaptureContext(&here);
    return here;
}

[[noreturn]] void Complain(const char* what, const void* block, unsigned int size,
                           const void* address, const CONTEXT& where) {
    char text[200];
    std::snprintf(text, sizeof text, "Guarded memory: %s; block %p of %u bytes, address %p\n", what,
                  block, size, address);
    Tell(text);
    const ULONG_PTR arguments[] = {reinterpret_cast<ULONG_PTR>(&where)};
    RaiseException(kGuardComplaint, EXCEPTION_NONCONTINUABLE, 1, arguments);
    std::abort();
}

// Where a block of `size` bytes lies in its pages, the first byte of which may be used.
Byte* PlaceIn(Byte* pages, unsigned int room, unsigned int size) {
    return guardBefore ? pages : pages + room - size;
}

// The bytes of the block's pages beside the block, as many as are looked at.
struct Beside {
    Beside(Byte* block, unsigned int room, unsigned int size) {
        const unsigned int spare = room - size;
        count = spare < kSlack ? spare : kSlack;
        bytes = guardBefore ? block + size : block - count;
    }
    void Mark() const { std::memset(bytes, kSlackByte, count); }
    bool Whole() const {
        for (unsigned int i = 0; i < count; ++i)
            if (bytes[i] != kSlackByte)
                return false;
        return true;
    }
    Byte* bytes;
    unsigned int count;
};

// Blocks of up to one page: slots of two pages, one of which is never accessible.
namespace small {

constexpr unsigned int kSlots = 65536;
constexpr unsigned int kSlotSize = 2 * kPage;
constexpr unsigned int kPart = 1 << 20;
constexpr unsigned int kResting = kSlots / 2; // freed slots that are not used again yet

struct Slot {
    unsigned short size;
    State state;
};

Byte* arena;
Slot slots[kSlots];
unsigned int fresh; // slots from here on were never used
unsigned short resting[kSlots];
unsigned int firstResting, countResting;

bool Start() {
    arena =
        static_cast<Byte*>(VirtualAlloc(nullptr, kSlots * kSlotSize, MEM_RESERVE, PAGE_NOACCESS));
    if (!arena || !VirtualFree(arena, 0, MEM_RELEASE))
        return false;
    // In parts: each change of protection looks through the pages behind it, to the end of what was
    // reserved at once.
    for (unsigned int at = 0; at < kSlots * kSlotSize; at += kPart)
        if (!VirtualAlloc(arena + at, kPart, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))
            return false;
    // Accessible and written to first: pages that once were and pages that never were do not become
    // one mapping again, and the number of mappings is limited.
    for (unsigned int at = 0; at < kSlots * kSlotSize; at += kPart)
        arena[at] = 0;
    DWORD before;
    for (unsigned int at = 0; at < kSlots * kSlotSize; at += kPart)
        if (!VirtualProtect(arena + at, kPart, PAGE_NOACCESS, &before))
            return false;
    return true;
}

bool Owns(const void* address) {
    return static_cast<std::uintptr_t>(static_cast<const Byte*>(address) - arena) <
           kSlots * kSlotSize;
}

// A slot's accessible page.
Byte* Page(unsigned int slot) { return arena + slot * kSlotSize + (guardBefore ? kPage : 0); }

void* Take(unsigned int size) {
    unsigned int slot;
    if (countResting > kResting || (fresh == kSlots && countResting)) {
        slot = resting[firstResting];
        firstResting = (firstResting + 1) % kSlots;
        --countResting;
    } else if (fresh < kSlots) {
        slot = fresh++;
    } else {
        return nullptr;
    }
    DWORD before;
    // Fails when the system has no room for one more change of protection.
    if (!VirtualProtect(Page(slot), kPage, PAGE_READWRITE, &before)) {
        resting[(firstResting + countResting++) % kSlots] = static_cast<unsigned short>(slot);
        return nullptr;
    }
    slots[slot] = {static_cast<unsigned short>(size), kLive};
    Byte* const block = PlaceIn(Page(slot), kPage, size);
    Beside(block, kPage, size).Mark();
    return block;
}

unsigned int SlotOf(const void* address) {
    return (static_cast<const Byte*>(address) - arena) / kSlotSize;
}

// The size of a live block; stops the process for anything else.
unsigned int SizeOf(Byte* block) {
    const unsigned int slot = SlotOf(block);
    const unsigned int size = slots[slot].size;
    if (slots[slot].state != kLive)
        Complain("freed twice", block, size, block, Here());
    if (block != PlaceIn(Page(slot), kPage, size))
        Complain("freed inside the block", PlaceIn(Page(slot), kPage, size), size, block, Here());
    return size;
}

void Give(Byte* block) {
    const unsigned int size = SizeOf(block), slot = SlotOf(block);
    if (!Beside(block, kPage, size).Whole())
        Complain(guardBefore ? "written behind the block" : "written before the block", block, size,
                 block, Here());
    slots[slot].state = kFreed;
    DWORD before;
    VirtualProtect(Page(slot), kPage, PAGE_NOACCESS, &before);
    resting[(firstResting + countResting++) % kSlots] = static_cast<unsigned short>(slot);
}

} // namespace small

// Larger blocks: address space of their own each.
namespace large {

constexpr unsigned int kResting = 1024;
constexpr unsigned int kRestingBytes = 128 << 20;

struct Block {
    Byte* user;
    Byte* base;
    unsigned int size;
    State state;
};

// By the unit of the address space in which a block begins; units are never shared.
Block blocks[65536];
unsigned short resting[kResting];
unsigned int firstResting, countResting, restingBytes;

Block& At(const void* address) { return blocks[reinterpret_cast<std::uintptr_t>(address) / kUnit]; }

unsigned int Room(unsigned int size) { return (size + kPage - 1) / kPage * kPage; }

void* Take(unsigned int size) {
    const unsigned int room = Room(size);
    if (room < size || room + kPage < room)
        return nullptr;
    auto* const base =
        static_cast<Byte*>(VirtualAlloc(nullptr, room + kPage, MEM_RESERVE, PAGE_NOACCESS));
    Byte* const pages = base + (guardBefore ? kPage : 0);
    if (!base)
        return nullptr;
    if (!VirtualAlloc(pages, room, MEM_COMMIT, PAGE_READWRITE)) {
        VirtualFree(base, 0, MEM_RELEASE);
        return nullptr;
    }
    Byte* const block = PlaceIn(pages, room, size);
    Beside(block, room, size).Mark();
    At(block) = {block, base, size, kLive};
    return block;
}

bool Owns(const void* address) { return At(address).user == address && At(address).state; }

unsigned int SizeOf(Byte* address) {
    const Block& block = At(address);
    if (block.state != kLive)
        Complain("freed twice", block.user, block.size, address, Here());
    return block.size;
}

void Give(Byte* address) {
    Block& block = At(address);
    const unsigned int room = Room(SizeOf(address));
    if (!Beside(address, room, block.size).Whole())
        Complain(guardBefore ? "written behind the block" : "written before the block", address,
                 block.size, address, Here());
    block.state = kFreed;
    VirtualFree(block.base, room + kPage, MEM_DECOMMIT);
    restingBytes += room;
    resting[(firstResting + countResting++) % kResting] =
        static_cast<unsigned short>(reinterpret_cast<std::uintptr_t>(address) / kUnit);
    while (countResting == kResting || restingBytes > kRestingBytes) {
        Block& oldest = blocks[resting[firstResting]];
        firstResting = (firstResting + 1) % kResting;
        --countResting;
        restingBytes -= Room(oldest.size);
        VirtualFree(oldest.base, 0, MEM_RELEASE);
        oldest = {};
    }
}

// The block whose pages hold the address; null for none.
const Block* Around(const void* address) {
    MEMORY_BASIC_INFORMATION region;
    VirtualQuery(address, &region, sizeof region);
    for (const Block& block : blocks)
        if (block.state && block.base == region.AllocationBase)
            return &block;
    return nullptr;
}

} // namespace large

void* Take(std::size_t size) {
    void* block;
    {
        const Locked locked;
        block = size <= kPage ? small::Take(size) : large::Take(size);
        ++(block ? liveBlocks : unguardedBlocks);
    }
    if (!block)
        return std::malloc(size);
    std::memset(block, fill, size);
    return block;
}

bool Owned(const void* block) { return small::Owns(block) || large::Owns(block); }

void Give(void* block) {
    const Locked locked;
    --liveBlocks;
    if (small::Owns(block))
        small::Give(static_cast<Byte*>(block));
    else
        large::Give(static_cast<Byte*>(block));
}

void* __cdecl GuardedMalloc(std::size_t size) { return Take(size); }

void __cdecl GuardedFree(void* block) {
    if (!block)
        return;
    // What the C run-time allocated itself, or before this heap was there.
    if (Owned(block))
        Give(block);
    else
        std::free(block);
}

void* __cdecl GuardedCalloc(std::size_t count, std::size_t size) {
    if (size && count > SIZE_MAX / size)
        return nullptr;
    void* const block = Take(count * size);
    return block ? std::memset(block, 0, count * size) : nullptr;
}

void* __cdecl GuardedRealloc(void* block, std::size_t size) {
    if (!block)
        return Take(size);
    if (!Owned(block))
        return std::realloc(block, size);
    if (!size) {
        Give(block);
        return nullptr;
    }
    std::size_t old;
    {
        const Locked locked;
        old = small::Owns(block) ? small::SizeOf(static_cast<Byte*>(block))
                                 : large::SizeOf(static_cast<Byte*>(block));
    }
    void* const moved = Take(size);
    if (moved) {
        std::memcpy(moved, block, old < size ? old : size);
        Give(block);
    }
    return moved;
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    auto* const address = reinterpret_cast<Byte*>(record.ExceptionInformation[1]);
    const char* const access = record.ExceptionInformation[0] ? "written" : "read";
    char what[64];
    const void* block = nullptr;
    unsigned int size = 0;
    State state = kNever;
    if (small::Owns(address)) {
        const small::Slot& slot = small::slots[small::SlotOf(address)];
        block = PlaceIn(small::Page(small::SlotOf(address)), kPage, slot.size);
        size = slot.size;
        state = slot.state;
    } else if (const large::Block* const around = large::Around(address)) {
        block = around->user;
        size = around->size;
        state = around->state;
    } else {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    std::snprintf(what, sizeof what, "%s %s", access,
                  state == kFreed   ? "after it was freed"
                  : address < block ? "before the block"
                                    : "behind the block");
    Complain(what, block, size, address, *exception->ContextRecord);
}

// What takes the place of the C run-time's functions.
struct Replacement {
    template <class Function>
    Replacement(const char* name, Function* function)
        : real(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("msvcrt.dll"), name))),
          ours(reinterpret_cast<void*>(function)) {}
    void* real;
    void* ours;
};

// Lets the module call the guarded functions where it imports the C run-time's.
void Replace(Byte* module) {
    static const Replacement replacements[] = {{"malloc", GuardedMalloc},
                                               {"free", GuardedFree},
                                               {"calloc", GuardedCalloc},
                                               {"realloc", GuardedRealloc}};
    const auto& dos = *reinterpret_cast<IMAGE_DOS_HEADER*>(module);
    const auto& headers = *reinterpret_cast<IMAGE_NT_HEADERS*>(module + dos.e_lfanew);
    const auto& imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    void** const first = reinterpret_cast<void**>(module + imports.VirtualAddress);
    for (void** import = first; import != first + imports.Size / sizeof *first; ++import)
        for (const Replacement& replacement : replacements) {
            if (*import != replacement.real)
                continue;
            DWORD before;
            VirtualProtect(import, sizeof *import, PAGE_READWRITE, &before);
            *import = replacement.ours;
            VirtualProtect(import, sizeof *import, before, &before);
        }
}

// The folder of a module's file; empty when it is not known.
void Folder(HMODULE module, char (&path)[MAX_PATH]) {
    *path = 0;
    GetModuleFileNameA(module, path, sizeof path);
    if (char* const slash = std::strrchr(path, '\\'))
        *slash = 0;
}

// Every module that is mapped and lies beside this one, which itself needs the C run-time's.
void ReplaceBeside(HMODULE own) {
    char folder[MAX_PATH], other[MAX_PATH];
    Folder(own, folder);
    MEMORY_BASIC_INFORMATION region;
    const Byte* address = nullptr;
    for (; VirtualQuery(address, &region, sizeof region);
         address = static_cast<const Byte*>(region.BaseAddress) + region.RegionSize) {
        auto* const module = static_cast<HMODULE>(region.AllocationBase);
        if (region.Type != MEM_IMAGE || region.BaseAddress != region.AllocationBase ||
            module == own)
            continue;
        Folder(module, other);
        if (!lstrcmpiA(folder, other))
            Replace(static_cast<Byte*>(region.AllocationBase));
    }
}

void ReadEnvironment() {
    char value[16];
    if (GetEnvironmentVariableA("POSTRIDER_GUARD", value, sizeof value))
        guardBefore = !std::strcmp(value, "before");
    if (GetEnvironmentVariableA("POSTRIDER_FILL", value, sizeof value))
        fill = static_cast<int>(std::strtoul(value, nullptr, 16));
}

} // namespace

unsigned long GuardedBlocks() { return liveBlocks; }

unsigned long UnguardedBlocks() { return unguardedBlocks; }

void FillNewMemory(int byte) { fill = byte; }

extern "C" BOOL WINAPI DllMain(HINSTANCE own, DWORD reason, void*) {
    if (reason == DLL_PROCESS_DETACH && unguardedBlocks)
        Tell("Guarded memory: there was not room to guard every block\n");
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    ReadEnvironment();
    InitializeCriticalSection(&lock);
    if (!small::Start())
        return FALSE;
    // Blocks may be freed when everything else is gone.
    HMODULE pinned;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const char*>(&GuardedBlocks), &pinned);
    AddVectoredExceptionHandler(1, OnException);
    ReplaceBeside(own);
    return TRUE;
}
