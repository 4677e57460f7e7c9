#pragma once

#include <cstddef>

#include <malloc.h>

/// Bytes of the heap in use; always the same under a sanitizer, which has a heap of its own.
inline std::size_t UsedMemory() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}
