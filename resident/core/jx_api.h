#pragma once

// Marks what JXTICDLL.DLL exports. The DLL's own sources define JXTICDLL_EXPORTS.
#ifdef JXTICDLL_EXPORTS
#define JX_API __declspec(dllexport)
#else
#define JX_API __declspec(dllimport)
#endif
