#pragma once

// Which edges of the library's code an input takes, where the library is built to tell them (the
// preset "coverage"): the compiler puts a call at each, which edges.dll counts.

#ifdef EDGES_EXPORTS
#define EDGES_API extern "C" __declspec(dllexport)
#else
#define EDGES_API extern "C" __declspec(dllimport)
#endif

// An edge is known by its offset in the library's image; those behind the last one are not counted.
constexpr unsigned int kMostEdges = 1 << 20;

struct TakenEdges {
    unsigned int count;              // how many were taken since the last ForgetEdges
    unsigned int at[65536];          // each once
    unsigned char times[kMostEdges]; // how often each was, 255 at most
};

EDGES_API TakenEdges* Edges();
EDGES_API void ForgetEdges();
