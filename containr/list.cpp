#include "list.h"

#include "assertfatal.h"

// --- elements -------------------------------------------------------------------------------------

ListElemI* ListElemI::prev() const
{
    ListElemI** const word = const_cast<ListElemI*>(this)->prev_p();
    return word != nullptr ? *word : nullptr;
}

void ListElemI::dump(FILE* stream)
{
    if (stream == nullptr) stream = stdout;
    const void* const self = this;
    const void* const following = next();
    if (prev_p() == nullptr) {
        std::fprintf(stream, "%p(n %p)", self, following);
    } else {
        const void* const preceding = prev();
        std::fprintf(stream, "%p(n %p, p %p)", self, following, preceding);
    }
}

void* ListElemI::getClosure() const
{
    const ListElemI* p = nextVal();
    while (p != nullptr && !isMarked(p)) p = p->nextVal();
    return unmark(p);
}

ListElemI* ListElemI::mark(void* v)
{
    ListElemI* const p = reinterpret_cast<ListElemI*>(bits(v));
    if (!TVX_CHECK(!isMarked(p), "!isMarked((ListElemI*)v)")) return p;
    return reinterpret_cast<ListElemI*>(bits(v) | MARK);
}

// --- the list of one word -------------------------------------------------------------------------

ListLWC::~ListLWC() { (void)TVX_CHECK(isEmpty(), "List must be empty when deleted"); }

bool ListLWC::insertAfter(ListElemI* elem, ListElemI* after)
{
    return link(after != nullptr ? after->next_p() : end(), elem);
}

bool ListLWC::remove(ListElemI* elem)
{
    ListElemI* ignored;
    return remove(elem, ignored);
}

bool ListLWC::remove(ListElemI* elem, ListElemI*& before)
{
    if (elem == nullptr || !elem->inSomeList()) return false;
    ListElemI* previous = nullptr;
    for (ListElemI** word = &head; !ListElemI::isMarked(*word); word = previous->next_p()) {
        if (*word == elem) {
            unlink(word);
            before = previous;
            return true;
        }
        previous = *word;
    }
    return false;
}

void ListLWC::appendAll(ListLWC& other)
{
    if (&other == this) return;   // the chain would become a ring
    ListElemI** const word = end();
    ListElemI* const marker = *word;
    *word = other.head;
    other.head = marker;
}

void ListLWC::clear()
{
    while (!isEmpty()) unlink(&head);
}

void* ListLWC::setClosure(void* closure, ListElemI* last)
{
    ListElemI** const word = end(last);
    void* const old = ListElemI::unmark(*word);
    *word = ListElemI::mark(closure);
    return old;
}

void ListLWC::dump(FILE* stream) const
{
    if (stream == nullptr) stream = stdout;
    std::fprintf(stream, "list@%p:", static_cast<const void*>(this));
    for (ListElemI* elem = Head(); elem != nullptr; elem = elem->next()) {
        std::fputc(' ', stream);
        elem->dump(stream);
    }
    std::fputc('\n', stream);
}

bool ListLWC::link(ListElemI** word, ListElemI* elem)
{
    ListElemI** const own = elem->next_p();
    if (!TVX_CHECK(*own == nullptr, "Element incorrectly initialized or already in another list")) return false;
    *own = *word;
    *word = elem;
    return true;
}

void ListLWC::unlink(ListElemI** word)
{
    ListElemI** const own = (*word)->next_p();
    *word = *own;
    *own = nullptr;
}

ListElemI** ListLWC::end(ListElemI* from)
{
    ListElemI** word = from != nullptr ? from->next_p() : &head;
    while (!ListElemI::isMarked(*word)) word = (*word)->next_p();
    return word;
}

// --- singly linked --------------------------------------------------------------------------------

size_t ListSingleUncountedC::size() const
{
    size_t n = 0;
    for (const ListElemI* elem = Head(); elem != nullptr; elem = elem->next()) ++n;
    return n;
}

BooleanT ListSingleUncountedC::contains(ListElemI* elem) const
{
    const ListElemI* p = Head();
    while (p != nullptr && p != elem) p = p->next();
    return p != nullptr;
}

void ListSingleUncountedC::clear()
{
    while (!isEmpty() && remove(Head())) continue;
}

ListElemI* ListSingleUncountedC::operator[](size_t n) const
{
    ListElemI* elem = Head();
    while (elem != nullptr && n-- > 0) elem = elem->next();
    return elem;
}

BooleanT ListSingleC::remove(ListElemI* elem)
{
    ListElemI* before;
    if (!list.remove(elem, before)) return false;
    if (elem == tail) tail = before;
    --count;
    return true;
}

bool ListSingleC::addAfter(ListElemI* elem, ListElemI* after)
{
    const bool added = after != nullptr ? list.insertAfter(elem, after) : list.prepend(elem);
    if (!added) return false;
    if (after == tail) tail = elem;
    ++count;
    return true;
}

// --- doubly linked --------------------------------------------------------------------------------

void ListDoubleC::prepend(ListElemI* elem)
{
    const ListElemI* const first = Head();
    if (first == nullptr) {
        (void)TVX_CHECK(tail == nullptr, "tail == 0");
    } else {
        (void)TVX_CHECK(first->prev() == nullptr, "*(head->prev_p()) == 0");
    }
    link(elem, nullptr);
}

BooleanT ListDoubleC::remove(ListElemI* elem)
{
    if (elem == nullptr || !elem->inSomeList() || elem->prev_p() == nullptr) return false;
    ListElemI* const before = elem->prev();
    ListElemI* const after = elem->next();
    if (before == nullptr && elem != Head()) return false;   // the head of another list
    if (after == nullptr && elem != tail) return false;      // the tail of another list
    if (elem == Head() && !TVX_CHECK(before == nullptr, "*prev_p == 0")) return false;
    if (elem == tail && !TVX_CHECK(after == nullptr, "ListElemI::isMarked(*next_p)")) return false;

    if (before == nullptr) {
        list.remove(elem);
    } else {
        *before->next_p() = elem->nextVal();
        *elem->next_p() = nullptr;
    }
    (after != nullptr ? *after->prev_p() : tail) = before;
    *elem->prev_p() = nullptr;
    --count;
    return true;
}

void ListDoubleC::insertAfter(ListElemI* elem, ListElemI* after) { link(elem, after != nullptr ? after : tail); }

void ListDoubleC::insertBefore(ListElemI* elem, ListElemI* before)
{
    ListElemI* const after = before != nullptr ? before->prev() : nullptr;
    after != nullptr ? link(elem, after) : prepend(elem);
}

// Puts an element behind another one, or in front of all.
void ListDoubleC::link(ListElemI* elem, ListElemI* after)
{
    if (!TVX_CHECK(elem->prev_p() != nullptr, "Singly-linkable list element cannot be added to dobly-linked list")) {
        return;
    }
    if (!addAfter(elem, after)) return;
    *elem->prev_p() = after;
    if (elem->next() != nullptr) *elem->next()->prev_p() = elem;
}
