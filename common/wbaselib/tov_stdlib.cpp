#include "common/wbaselib/tov_stdlib.h"

#include <cstdlib>
#include <cstring>

void* TovMalloc(size_t size) noexcept
{
    return std::malloc(size);
}

void TovFree(void* memory) noexcept
{
    if (memory != nullptr)
    {
        std::free(memory);
    }
}

void* TovMemCpy(void* destination, const void* source, int count) noexcept
{
    if (destination != nullptr && source != nullptr && count > 0)
    {
        std::memcpy(destination, source, static_cast<size_t>(count));
    }
    return destination;
}

void* TovMemMov(void* destination, const void* source, int count) noexcept
{
    if (destination != nullptr && source != nullptr && count > 0)
    {
        std::memmove(destination, source, static_cast<size_t>(count));
    }
    return destination;
}

size_t TovStrLen(const char* text) noexcept
{
    return text != nullptr ? std::strlen(text) : 0;
}

int TovStrCmp(const char* left, const char* right) noexcept
{
    return std::strcmp(left, right);
}
