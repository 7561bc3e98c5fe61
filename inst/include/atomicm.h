// atomicm.h: a one-word atomic cell for an integer, a bool or a pointer.
//
// Every instance occupies one machine word, whatever T is, so that a structure that holds one keeps
// its layout. All operations are sequentially consistent. Construction is a plain store: nobody else
// can see a cell that is still being made.
//
// Thread safety: any thread may use one cell at any time.
#ifndef TVXCMN_ATOMICM_H
#define TVXCMN_ATOMICM_H

#include <type_traits>

template <class T>
class AtomicM {
public:
    constexpr AtomicM(T value = T()) noexcept : st(value) {}
    AtomicM(const AtomicM& other) noexcept : st(T(other)) {}

    AtomicM& operator=(T value) noexcept
    {
        __atomic_store_n(&st.cell, value, __ATOMIC_SEQ_CST);
        return *this;
    }
    AtomicM& operator=(const AtomicM& other) noexcept
    {
        *this = T(other);
        return *this;
    }
    AtomicM& operator=(const volatile AtomicM& other) noexcept
    {
        *this = __atomic_load_n(&other.st.cell, __ATOMIC_SEQ_CST);
        return *this;
    }

    // Sets a cell that nobody else can see yet, as construction does.
    void init(T value) noexcept { __atomic_store_n(&st.cell, value, __ATOMIC_RELAXED); }

    operator T() const noexcept { return __atomic_load_n(&st.cell, __ATOMIC_SEQ_CST); }

    // Stores `value` and returns what stood there before.
    T exchange(T value) noexcept { return __atomic_exchange_n(&st.cell, value, __ATOMIC_SEQ_CST); }

    // Stores `value` if the cell holds `expected`. Returns what it held: the store happened if and
    // only if that equals `expected`.
    T exchangeCmp(T value, T expected) noexcept
    {
        __atomic_compare_exchange_n(&st.cell, &expected, value, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
        return expected;
    }

    // Stores 0 and returns what stood there before.
    T zero() noexcept { return exchange(T()); }

    // Add or take one; the result is the value before. Integers only.
    T incr() noexcept { return add(1); }
    T decr() noexcept { return add(-1); }

    T operator++() noexcept { return wrapped(incr(), 1); }
    T operator--() noexcept { return wrapped(decr(), -1); }
    T operator++(int) noexcept { return incr(); }
    T operator--(int) noexcept { return decr(); }

private:
    T add(int delta) noexcept
    {
        static_assert(std::is_integral<T>::value && !std::is_same<T, bool>::value,
                      "only integer cells can be counted up and down");
        return __atomic_fetch_add(&st.cell, static_cast<T>(delta), __ATOMIC_SEQ_CST);
    }
    // The sum as the cell computes it, which wraps around where a signed addition would overflow.
    static T wrapped(T value, int delta) noexcept
    {
        T sum;
        (void)__builtin_add_overflow(value, delta, &sum);
        return sum;
    }

    // Only `cell` is ever accessed. The other two fix the size of the cell: one word.
    union WordT {
        volatile void* val;
        volatile int natural;
        T cell;
        constexpr explicit WordT(T value) noexcept : cell(value) {}
    };
    WordT st;

    static_assert(sizeof(WordT) == sizeof(void*), "a cell is one machine word");
};

#endif   // TVXCMN_ATOMICM_H
