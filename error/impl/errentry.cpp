#include "error/impl/errentry.h"

#include "string/impl/textview.h"

#include <string_view>
#include <utility>

namespace {

const char SEPARATOR = static_cast<char>(ERR_TEXT_SEPARATOR);

std::string_view bytesOf(const StringC& text)
{
    const TextViewT view(text.impl());
    return {reinterpret_cast<const char*>(view.begin), view.size};
}

// Takes the text before the next separator off `rest`; without one, all of it.
StringC takePart(std::string_view& rest)
{
    const size_t end = rest.find(SEPARATOR);
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end != std::string_view::npos ? end + 1 : rest.size());
    return {part.data(), part.size(), StringC::CC_VALID_UTF8};
}

void appendLine(StringC& text, const StringC& line)
{
    if (line.isEmpty()) return;
    text += UCS4{'\n'};
    text += line;
}

}   // namespace

ErrEntryC::ErrEntryC(ErrorT error, const StringC& text, ErrSevT severity, ErrSequenceT sequence)
    : err(error), m_problem(text), sev(severity), seq(sequence)
{
    if (bytesOf(text).find(SEPARATOR) != std::string_view::npos) takeApart(text);
}

void ErrEntryC::takeApart(const StringC& text)
{
    std::string_view rest = bytesOf(text);
    m_problem = takePart(rest);
    m_reason = takePart(rest);
    m_solution = takePart(rest);
    m_message = m_problem;
    appendLine(*m_message, m_reason);
    appendLine(*m_message, m_solution);
}

ErrEntryChainC::ErrEntryChainC(ErrEntryArrayC& array)
{
    const size_t count = array.size();
    while (array.size() != 0) {
        ErrEntryC* const last = array.remove(array.size() - 1);
        last->m_next = std::exchange(m_first, last);
    }
    // The smallest storage may stay for the next entries.
    if (count > BlobArrayC::nextCapacity(0)) array.clear();
}

void ErrEntryChainC::destroyAll()
{
    while (m_first != nullptr) delete std::exchange(m_first, m_first->m_next);
}

void ErrEntryChainC::prepend(ErrEntryChainC& other)
{
    ErrEntryC** end = &other.m_first;
    while (*end != nullptr) end = &(*end)->m_next;
    *end = std::exchange(m_first, std::exchange(other.m_first, nullptr));
}
