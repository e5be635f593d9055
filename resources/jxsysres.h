#pragma once

// JXSYSRES.DLL, the product's resource library: dialog templates, numbered strings and the
// translation table.

// Returns the library's module handle, as FindResourceA, LoadStringA and DialogBoxParamA take it.
extern "C" __declspec(dllimport) void* GetJxSystemResHandle(void);
