// neverdestroyed.h: storage for objects that live until the process ends.
//
// Exit handlers and threads that are still running use latches, tables and texts after static destructors have
// begun, so such an object must not have an end. In a cell of this kind it has none; one that can be
// constant-initialised still is.
//
// Thread safety: that of the object.
#ifndef TVXCMN_CMNLIB_NEVERDESTROYED_H
#define TVXCMN_CMNLIB_NEVERDESTROYED_H

#include <utility>

template <class T>
class NeverDestroyedM {
public:
    template <class... ArgT>
    constexpr explicit NeverDestroyedM(ArgT&&... args) : m_object(std::forward<ArgT>(args)...)
    {
    }
    ~NeverDestroyedM() {}   // NOLINT(modernize-use-equals-default): a union's own destructor would be deleted
    NeverDestroyedM(const NeverDestroyedM&) = delete;
    NeverDestroyedM& operator=(const NeverDestroyedM&) = delete;

    constexpr T& operator*() noexcept { return m_object; }
    constexpr T* operator->() noexcept { return &m_object; }

private:
    union {
        T m_object;
    };
};

#endif   // TVXCMN_CMNLIB_NEVERDESTROYED_H
