#pragma once

// The C++ run-time's headers define it, too.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>
