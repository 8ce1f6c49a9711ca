#pragma once

#include "common/wbaselib/tov_stdlib.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace WBASELIB
{

/// The header in front of the characters of a TStringBase buffer. Hosts and platform libraries that were built
/// separately read and write it, so neither the fields nor their order may change.
struct TStringHeader
{
    int32_t references; ///< number of owners of the buffer; every change is atomic
    uint32_t length;    ///< characters in use
    uint32_t capacity;  ///< characters that fit, without the terminator
    uint32_t reserved;  ///< 0
};
static_assert(sizeof(TStringHeader) == 16 && offsetof(TStringHeader, references) == 0 &&
              offsetof(TStringHeader, length) == 4 && offsetof(TStringHeader, capacity) == 8 &&
              offsetof(TStringHeader, reserved) == 12);

/// A reference-counted text that crosses between the module, its host and a platform library.
///
/// The object is one pointer: to the first character of a terminated buffer, in front of which stands a TStringHeader,
/// or null for the empty text. TovMalloc allocates the buffers, TovFree frees them. Copies share the buffer; a text
/// with a shared buffer gets one of its own before it changes.
///
/// Different threads may use copies of one text at the same time. Several threads may read the same object, but not
/// while one of them changes it.
///
/// An operation throws std::bad_alloc when memory has run out, and std::length_error for a text above 2^32 - 2
/// characters. The object is then unchanged.
template <typename CharT>
class TStringBase
{
public:
    TStringBase() noexcept = default;

    /// A copy of a terminated text; the empty text for null.
    TStringBase(const CharT* text) : TStringBase(text, text != nullptr ? std::char_traits<CharT>::length(text) : 0) {}

    /// A copy of `length` characters, which may contain terminators; the empty text for null.
    TStringBase(const CharT* text, size_t length)
    {
        if (text != nullptr && length != 0)
        {
            m_data = NewBuffer(length);
            SetText(0, text, length);
        }
    }

    TStringBase(const TStringBase& other) noexcept : m_data(other.m_data)
    {
        if (m_data != nullptr)
        {
            References().fetch_add(1, std::memory_order_relaxed);
        }
    }

    TStringBase(TStringBase&& other) noexcept : m_data(std::exchange(other.m_data, nullptr)) {}

    TStringBase& operator=(TStringBase other) noexcept
    {
        Swap(other);
        return *this;
    }

    ~TStringBase()
    {
        Release();
    }

    /// Replaces the text by a copy of `length` characters, which may be a part of this text.
    void Assign(const CharT* text, size_t length)
    {
        TStringBase(text, length).Swap(*this);
    }

    /// Appends `length` characters, which may be a part of this text. Appends nothing for null.
    void Append(const CharT* text, size_t length)
    {
        if (text == nullptr || length == 0)
        {
            return;
        }
        if (IsWritable(length))
        {
            SetText(Length(), text, length);
            return;
        }
        // The old buffer stays until the new one is complete, because `text` may point into it.
        TStringBase grown;
        grown.m_data = NewBuffer(GrownCapacity(length));
        grown.SetText(0, c_str(), Length());
        grown.SetText(Length(), text, length);
        grown.Swap(*this);
    }

    void Append(const CharT* text)
    {
        Append(text, text != nullptr ? std::char_traits<CharT>::length(text) : 0);
    }

    void Append(const TStringBase& text)
    {
        Append(text.c_str(), text.Length());
    }

    /// Makes the text empty and releases the buffer.
    void Clear() noexcept
    {
        TStringBase().Swap(*this);
    }

    /// The terminated text, never null; valid until this object changes or is destroyed.
    const CharT* c_str() const noexcept
    {
        static constexpr CharT kEmpty[1] = {};
        return m_data != nullptr ? m_data : kEmpty;
    }

    uint32_t length() const noexcept
    {
        return Length();
    }
    bool empty() const noexcept
    {
        return Length() == 0;
    }

    friend bool operator==(const TStringBase& left, const TStringBase& right) noexcept
    {
        return left.m_data == right.m_data || left.View() == right.View();
    }

    friend bool operator==(const TStringBase& left, const CharT* right) noexcept
    {
        return left.View() ==
               (right != nullptr ? std::basic_string_view<CharT>(right) : std::basic_string_view<CharT>());
    }

private:
    static constexpr size_t kMaxLength = std::numeric_limits<uint32_t>::max() - 1;

    static CharT* NewBuffer(size_t capacity)
    {
        static_assert(sizeof(CharT) <= sizeof(TStringHeader));
        if (capacity > kMaxLength)
        {
            throw std::length_error("TStringBase");
        }
        void* memory = TovMalloc(sizeof(TStringHeader) + (capacity + 1) * sizeof(CharT));
        if (memory == nullptr)
        {
            throw std::bad_alloc();
        }
        auto* header = new (memory) TStringHeader{1, 0, static_cast<uint32_t>(capacity), 0};
        auto* data = reinterpret_cast<CharT*>(header + 1);
        data[0] = CharT{};
        return data;
    }

    TStringHeader* Header() const noexcept
    {
        return reinterpret_cast<TStringHeader*>(m_data) - 1;
    }

    std::atomic_ref<int32_t> References() const noexcept
    {
        return std::atomic_ref<int32_t>(Header()->references);
    }

    uint32_t Length() const noexcept
    {
        return m_data != nullptr ? Header()->length : 0;
    }

    std::basic_string_view<CharT> View() const noexcept
    {
        return {c_str(), Length()};
    }

    bool IsWritable(size_t more) const noexcept
    {
        return m_data != nullptr && References().load(std::memory_order_acquire) == 1 &&
               more <= Header()->capacity - Header()->length;
    }

    size_t GrownCapacity(size_t more) const
    {
        if (more > kMaxLength - Length())
        {
            throw std::length_error("TStringBase");
        }
        return std::max(Length() + more, std::min(size_t{Length()} * 2, kMaxLength));
    }

    void SetText(size_t offset, const CharT* text, size_t length) noexcept
    {
        std::char_traits<CharT>::copy(m_data + offset, text, length);
        m_data[offset + length] = CharT{};
        Header()->length = static_cast<uint32_t>(offset + length);
    }

    void Swap(TStringBase& other) noexcept
    {
        std::swap(m_data, other.m_data);
    }

    void Release() noexcept
    {
        if (m_data != nullptr && References().fetch_sub(1, std::memory_order_acq_rel) == 1)
        {
            TovFree(Header());
        }
    }

    CharT* m_data = nullptr;
};

static_assert(sizeof(TStringBase<char>) == sizeof(void*));

} // namespace WBASELIB
