#pragma once

// Turns one of a module's imports to another function while it lives.
class HookedImport {
public:
    // The import is the one that leads to `function` of `library` now.
    HookedImport(const char* module, const char* library, const char* function, void* ours);
    HookedImport(const HookedImport&) = delete;
    HookedImport& operator=(const HookedImport&) = delete;
    ~HookedImport();

    void* Real() const { return mReal; }

private:
    void** mImport;
    void* mReal;
};
