// list.h: lists whose elements carry their own links, so that nothing is allocated per element.
//
// A link word (ListElemI*) holds one of three things:
//   null             the element is in no list
//   an element       the one that follows
//   a marked pointer the end: the list's closure, with its lowest bit set
// The closure names the owner of the list, by default the list object itself. So an element can tell
// whether it is in a list, and find that list's owner, without a pointer back; and the head of an empty
// list is the marked closure. Closures must be even addresses.
//
// An element is in at most one list. Adding one whose link is not null fails "Element incorrectly
// initialized or already in another list" and changes nothing. Removing one that is not in the list is
// no fault: the result is false.
//
// Ownership:     lists own no elements. They must be empty when they are destroyed.
// Thread safety: unlocked.
#ifndef TVXCMN_LIST_H
#define TVXCMN_LIST_H

#include "basetypes.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

// What can be in a list. The links are members of the concrete element, whose every constructor, the
// copying ones too, sets them to null.
class ListElemI {
public:
    virtual ~ListElemI() = default;

    // The addresses of the element's link to the next and to the previous one; the latter is null for an
    // element that can only be linked singly.
    virtual ListElemI** next_p() = 0;
    virtual ListElemI** prev_p() = 0;
    // Prints "ADDRESS(n NEXT, p PREVIOUS)", or "ADDRESS(n NEXT)" when linked singly. Null is stdout.
    virtual void dump(FILE* stream);

    // The link word itself, and the elements on both sides: null at the ends and outside of lists.
    ListElemI* nextVal() const { return *const_cast<ListElemI*>(this)->next_p(); }
    ListElemI* next() const { return nullIfMarked(nextVal()); }
    ListElemI* prev() const;

    bool inSomeList() const { return nextVal() != nullptr; }
    // The closure of the list that the element is in; null when it is in none. Walks to the list's end.
    void* getClosure() const;

    // The marks. mark requires an even address ("!isMarked((ListElemI*)v)"); otherwise it stays as it is.
    static ListElemI* mark(void* v);
    static void* unmark(const ListElemI* p) { return reinterpret_cast<void*>(bits(p) & ~MARK); }
    static bool isMarked(const ListElemI* p) { return (bits(p) & MARK) != 0; }
    static ListElemI* nullIfMarked(ListElemI* p) { return isMarked(p) ? nullptr : p; }

private:
    static constexpr uintptr_t MARK = 1;
    static uintptr_t bits(const void* p) { return reinterpret_cast<uintptr_t>(p); }
};

// A list of one word.
class ListLWC {
public:
    ListLWC() : ListLWC(this) {}
    explicit ListLWC(void* closure) : head(ListElemI::mark(closure)) {}
    ListLWC(const ListLWC&) = delete;
    ListLWC& operator=(const ListLWC&) = delete;
    // "List must be empty when deleted"; otherwise what is in it keeps an end that names a dead closure.
    ~ListLWC();

    // These return whether the element was added. append walks to the end. insertAfter requires that
    // `after` is in this list; null means at the end.
    bool append(ListElemI* elem) { return link(end(), elem); }
    bool prepend(ListElemI* elem) { return link(&head, elem); }
    bool insertAfter(ListElemI* elem, ListElemI* after);
    // Unlinks an element, after a walk from the head. Sets `before` (of the second form, on success) to
    // the one in front of it, or to null.
    bool remove(ListElemI* elem);
    bool remove(ListElemI* elem, ListElemI*& before);
    // Moves all elements of `other` to the end of this list. Meant for lists of one closure: the chain
    // keeps its end marker and `other` gets this list's, so different closures change places. A list
    // appended to itself is left as it is.
    void appendAll(ListLWC& other);
    // Unlinks all elements, from the head on.
    void clear();

    bool isEmpty() const { return ListElemI::isMarked(head); }
    ListElemI* Head() const { return ListElemI::nullIfMarked(head); }

    // Both walk to the end: setClosure from `last` on, if that is given. It returns the old closure.
    void* getClosure() const { return ListElemI::unmark(*const_cast<ListLWC*>(this)->end()); }
    void* setClosure(void* closure, ListElemI* last = nullptr);

    // Prints "list@ADDRESS:", the elements and a newline. Null is stdout.
    void dump(FILE* stream) const;

protected:
    // Puts an element where `word`, a link of this list, points to.
    static bool link(ListElemI** word, ListElemI* elem);
    static void unlink(ListElemI** word);
    ListElemI** end(ListElemI* from = nullptr);   // the word that holds the end marker

    ListElemI* head;
};

class ListI {
public:
    virtual ~ListI() = default;

    virtual size_t size() const = 0;
    virtual BooleanT contains(ListElemI* elem) const = 0;
    virtual void append(ListElemI* elem) = 0;
    virtual void prepend(ListElemI* elem) = 0;
    virtual BooleanT remove(ListElemI* elem) = 0;
    virtual void clear() = 0;   // unlinks all elements
    virtual void* getClosure() const = 0;
    virtual void* setClosure(void* closure) = 0;   // returns the old one
};

// A singly linked list that keeps nothing but its head: size, contains and append walk.
class ListSingleUncountedC : public ListI {
public:
    ListSingleUncountedC() : list(this) {}
    explicit ListSingleUncountedC(void* closure) : list(closure) {}

    size_t size() const override;
    BooleanT contains(ListElemI* elem) const override;
    void append(ListElemI* elem) override { list.append(elem); }
    void prepend(ListElemI* elem) override { list.prepend(elem); }
    BooleanT remove(ListElemI* elem) override { return list.remove(elem); }
    // Removes through the virtual remove, from the head on.
    void clear() override;
    void* getClosure() const override { return list.getClosure(); }
    void* setClosure(void* closure) override { return list.setClosure(closure); }

    // Requires that `after` is in this list; null means at the end.
    void insertAfter(ListElemI* elem, ListElemI* after) { list.insertAfter(elem, after); }
    // The n-th element, after a walk; null past the end.
    ListElemI* operator[](size_t n) const;
    bool isEmpty() const { return list.isEmpty(); }
    ListElemI* Head() const { return list.Head(); }

protected:
    ListLWC list;
};

// Knows its last element and how many there are; remove still walks.
class ListSingleC : public ListSingleUncountedC {
public:
    using ListSingleUncountedC::ListSingleUncountedC;

    size_t size() const override { return count; }
    void append(ListElemI* elem) override { addAfter(elem, tail); }
    void prepend(ListElemI* elem) override { addAfter(elem, nullptr); }
    BooleanT remove(ListElemI* elem) override;
    void* setClosure(void* closure) override { return list.setClosure(closure, tail); }

    void insertAfter(ListElemI* elem, ListElemI* after) { addAfter(elem, after != nullptr ? after : tail); }
    ListElemI* Tail() const { return tail; }

protected:
    // Null means at the head. Returns whether the element was added.
    bool addAfter(ListElemI* elem, ListElemI* after);

    ListElemI* tail = nullptr;
    size_t count = 0;
};

// Elements have both links; adding one that has not fails "Singly-linkable list element cannot be added
// to dobly-linked list". Nothing walks.
class ListDoubleC : public ListSingleC {
public:
    using ListSingleC::ListSingleC;

    void append(ListElemI* elem) override { insertAfter(elem, tail); }
    void prepend(ListElemI* elem) override;
    // Requires that the element is not in the middle of another list, which would upset the counts of
    // both; the ends of another list are noticed.
    BooleanT remove(ListElemI* elem) override;

    // Null means at the end and at the head.
    void insertAfter(ListElemI* elem, ListElemI* after);
    void insertBefore(ListElemI* elem, ListElemI* before);
    ListElemI* prev(const ListElemI* elem) const { return elem->prev(); }

private:
    void link(ListElemI* elem, ListElemI* after);
};

#endif   // TVXCMN_LIST_H
