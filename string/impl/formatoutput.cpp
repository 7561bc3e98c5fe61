#include "string/impl/formatoutput.h"

#include "string/api/utfkernels.h"
#include "string/impl/stringim.h"
#include "utf8.h"

#include <algorithm>

void FormatOutputC::fillLong(char ch, size_t n)
{
    while (n > 0) {
        if (room() == 0) flush();
        const size_t part = std::min(room(), n);
        std::memset(m_at, ch, part);
        m_at += part;
        n -= part;
    }
}

void FormatOutputC::flush()
{
    if (m_at == m_buffer) return;
    *m_at = 0;
    drain(m_buffer, collectedBytes());
    m_at = m_buffer;
}

void FormatOutputC::appendLong(const UTF8T* bytes, size_t n)
{
    flush();
    if (n > CAPACITY) return drain(bytes, n);
    std::memcpy(m_at, bytes, n);
    m_at += n;
}

StringImplC* BodyOutputC::finish()
{
    const size_t n = collectedBytes();
    if (m_body == nullptr) return StringImplC::createUTF8(collected(), n, utfkernels::countChars(collected(), n));
    flush();
    return m_body;
}

void BodyOutputC::drain(const UTF8T* bytes, size_t n)
{
    const size_t chars = utfkernels::countChars(bytes, n);
    if (m_body == nullptr) {
        m_body = StringImplC::createUTF8(bytes, n, chars);
    } else {
        m_body->appendUTF8(bytes, n, chars);
    }
}

void CallbackOutputC::drain(const UTF8T* bytes, size_t n)
{
    const UTF8T* const end = bytes + n;
    while (bytes < end) m_emit(m_ctx, UTF8Get(bytes));
}
