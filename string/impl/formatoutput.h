// formatoutput.h: where formatted text goes.
//
// Text is collected in a buffer, so that a usual message reaches its sink in one piece. Pieces hold whole
// characters.
//
// Thread safety: unlocked.
#ifndef TVXCMN_STRING_IMPL_FORMATOUTPUT_H
#define TVXCMN_STRING_IMPL_FORMATOUTPUT_H

#include "basetypes.h"

#include <cstddef>
#include <cstring>

class StringImplC;

class FormatOutputC {
public:
    FormatOutputC(const FormatOutputC&) = delete;
    FormatOutputC& operator=(const FormatOutputC&) = delete;

    // Appends whole characters.
    void append(const UTF8T* bytes, size_t n)
    {
        if (n > room()) return appendLong(bytes, n);
        if (n <= 16) {
            copyShort(m_at, bytes, n);
        } else {
            std::memcpy(m_at, bytes, n);
        }
        m_at += n;
    }
    // Appends bytes if they are short and all ASCII; otherwise does nothing and is false. So most texts that
    // nobody has checked yet are checked and copied in one go.
    bool appendShortASCII(const UTF8T* bytes, size_t n) noexcept;
    // Room for `n` bytes, at most 64. Whoever writes there says by commit up to where.
    UTF8T* reserve(size_t n)
    {
        if (n > room()) flush();
        return m_at;
    }
    void commit(UTF8T* end) noexcept { m_at = end; }
    // Appends an ASCII character `n` times; not at all when n is negative.
    void fill(char ch, long n)
    {
        if (n > 0) fillLong(ch, static_cast<size_t>(n));
    }
    // Hands what was collected to the sink. Done before anything fails, so that whatever an assertion
    // stops has put out what stands before it.
    void flush();

protected:
    FormatOutputC() noexcept : m_at(m_buffer) {}
    ~FormatOutputC() = default;

    // What was collected and not flushed yet.
    const UTF8T* collected() const noexcept { return m_buffer; }
    size_t collectedBytes() const noexcept { return static_cast<size_t>(m_at - m_buffer); }
    void forget() noexcept { m_at = m_buffer; }

private:
    // Takes a piece, behind which stands a byte that does not continue a character.
    virtual void drain(const UTF8T* bytes, size_t n) = 0;

    size_t room() const noexcept { return CAPACITY - collectedBytes(); }
    static void copyShort(UTF8T* to, const UTF8T* from, size_t n) noexcept;
    template <class WordT>
    static WordT copyEnds(UTF8T* to, const UTF8T* from, size_t n) noexcept;
    void fillLong(char ch, size_t n);
    void appendLong(const UTF8T* bytes, size_t n);

    static const size_t CAPACITY = 2048;

    UTF8T* m_at;
    UTF8T m_buffer[CAPACITY + 1];   // one more for a terminator
};

// At most 16 bytes. Most pieces are of that size, where a call costs more than the copy.
inline void FormatOutputC::copyShort(UTF8T* to, const UTF8T* from, size_t n) noexcept
{
    if (n >= sizeof(unsigned long)) {
        copyEnds<unsigned long>(to, from, n);
    } else if (n >= sizeof(unsigned)) {
        copyEnds<unsigned>(to, from, n);
    } else {
        for (size_t i = 0; i < n; ++i) to[i] = from[i];
    }
}

// Copies as two words that meet or overlap. Returns the bits that are set in any of the bytes.
template <class WordT>
WordT FormatOutputC::copyEnds(UTF8T* to, const UTF8T* from, size_t n) noexcept
{
    WordT first;
    WordT last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + n - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + n - sizeof last, &last, sizeof last);
    return first | last;
}

inline bool FormatOutputC::appendShortASCII(const UTF8T* bytes, size_t n) noexcept
{
    const unsigned long HIGH_BITS = 0x8080808080808080;
    if (n < sizeof(unsigned long) || n > 4 * sizeof(unsigned long) || n > room()) return false;
    const size_t head = n / 2;
    unsigned long bits = 0;
    if (n > 2 * sizeof(unsigned long)) {
        bits =
            copyEnds<unsigned long>(m_at, bytes, head) | copyEnds<unsigned long>(m_at + head, bytes + head, n - head);
    } else {
        bits = copyEnds<unsigned long>(m_at, bytes, n);
    }
    if ((bits & HIGH_BITS) != 0) return false;
    m_at += n;
    return true;
}

// Makes a body of the text.
class BodyOutputC final : public FormatOutputC {
public:
    // The body, with a count of 0, which is the caller's. To be called once, at the end.
    StringImplC* finish();

private:
    void drain(const UTF8T* bytes, size_t n) override;

    StringImplC* m_body = nullptr;
};

// Gives each character to a function.
class CallbackOutputC final : public FormatOutputC {
public:
    CallbackOutputC(void (*emit)(void* ctx, UCS4 ch), void* ctx) noexcept : m_emit(emit), m_ctx(ctx) {}

private:
    void drain(const UTF8T* bytes, size_t n) override;

    void (*const m_emit)(void* ctx, UCS4 ch);
    void* const m_ctx;
};

#endif   // TVXCMN_STRING_IMPL_FORMATOUTPUT_H
