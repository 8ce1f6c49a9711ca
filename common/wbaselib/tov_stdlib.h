#pragma once

#include <cstddef>

/// Memory and text functions that the module exports under their plain names. A container that crosses between the
/// module, its host and a platform library takes its memory from TovMalloc; the side that drops the container last
/// gives the memory back through TovFree. Both are the process's own malloc and free.
///
/// None of them throws. All may be called from any thread.

extern "C"
{
#pragma GCC visibility push(default)

    /// Returns `size` bytes, or null when memory has run out.
    void* TovMalloc(size_t size) noexcept;

    /// Frees memory of TovMalloc. Null is allowed.
    void TovFree(void* memory) noexcept;

    /// Copies `count` bytes between areas that do not overlap. Copies nothing when a pointer is null or `count` is not
    /// positive. Returns `destination`.
    void* TovMemCpy(void* destination, const void* source, int count) noexcept;

    /// Does the same for areas that may overlap.
    void* TovMemMov(void* destination, const void* source, int count) noexcept;

    /// Returns the number of bytes before the terminator; 0 for null.
    size_t TovStrLen(const char* text) noexcept;

    /// Compares two texts byte by byte: negative, 0 or positive. Neither may be null.
    int TovStrCmp(const char* left, const char* right) noexcept;

#pragma GCC visibility pop
} // extern "C"

/// The same functions in the namespace of their library.
namespace WBASELIB
{
using ::TovFree;
using ::TovMalloc;
using ::TovMemCpy;
using ::TovMemMov;
using ::TovStrCmp;
using ::TovStrLen;
} // namespace WBASELIB
