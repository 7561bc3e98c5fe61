// list_elems.h: elements for the tests of lists.
#ifndef TVXCMN_TESTS_LIST_ELEMS_H
#define TVXCMN_TESTS_LIST_ELEMS_H

#include "list.h"

class SingleElemC : public ListElemI {
public:
    ListElemI** next_p() override { return &m_next; }
    ListElemI** prev_p() override { return nullptr; }

private:
    ListElemI* m_next = nullptr;
};

class DoubleElemC : public SingleElemC {
public:
    ListElemI** prev_p() override { return &m_prev; }

private:
    ListElemI* m_prev = nullptr;
};

#endif   // TVXCMN_TESTS_LIST_ELEMS_H
