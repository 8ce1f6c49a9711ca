#pragma once

#include <cstddef>

/// Memory and text functions that the module exports under their plain names. A container that crosses between the
/// module, its host and a platform library takes its memory from TovMalloc and gives it back through TovFree, whichever
/// side happens to drop it last; both are the process's own malloc and free.
///
/// None of them throws. All may be called from any thread.

extern "C"
{
#pragma GCC visibility push(default)

    /// `size` bytes, or null when there is no memory left.
    void* TovMalloc(size_t size) noexcept;

    /// Gives back memory of TovMalloc. Null is allowed.
    void TovFree(void* memory) noexcept;

    /// Copies `count` bytes between areas that do not overlap. Nothing is copied when either pointer is null or `count` is
    /// not positive. Returns `destination`.
    void* TovMemCpy(void* destination, const void* source, int count) noexcept;

    /// The same for areas that may overlap.
    void* TovMemMov(void* destination, const void* source, int count) noexcept;

    /// Bytes before the terminator; 0 for null.
    size_t TovStrLen(const char* text) noexcept;

    /// Byte order of two texts: negative, 0 or positive. Neither may be null.
    int TovStrCmp(const char* left, const char* right) noexcept;

#pragma GCC visibility pop
} // extern "C"

/// The same functions under the name of the library that they are part of.
namespace WBASELIB
{
using ::TovFree;
using ::TovMalloc;
using ::TovMemCpy;
using ::TovMemMov;
using ::TovStrCmp;
using ::TovStrLen;
} // namespace WBASELIB
