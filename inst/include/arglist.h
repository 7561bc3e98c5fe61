// arglist.h: lists of typed values that a message carries until somebody puts them into its text.
//
// A list starts from another list or from the object ArgList, and values are streamed into it:
//     text = fmt % (ArgList << name << 42 << size);
// The parentheses are needed: % binds tighter than <<. A list goes by value, never by reference to the
// expression that builds it: the temporary at the head of the chain ends with the expression.
//
// Copies share one body, also what is appended later through any of them. A list that never had an
// argument has no body, so its copies share nothing.
//
// Thread safety: copies of one list may be dropped by different threads; appending to a list that
// another thread reads is not allowed.
// Ownership:     a list owns its arguments, with two exceptions: Bool and User arguments stay the
//                property of whoever made them and must outlive the list.
#ifndef TVXCMN_ARGLIST_H
#define TVXCMN_ARGLIST_H

#include "assertfatal.h"
#include "basetypes.h"
#include "refcount.h"
#include "stringc.h"

#include <sys/time.h>
#include <type_traits>
#include <utility>

class ArgListC;
class ArgUserC;

// One argument: a tag, and behind it, in a class of its own for each tag, the value. There are no
// virtual functions here, so the class must be picked by the tag, with static_cast.
class ArgC {
public:
    enum TypeT : int {
        Bool,         // ArgBoolC        BooleanT
        Int16,        // ArgInt16C       short
        Int32,        // ArgInt32C       int
        Int64,        // ArgInt64C       long
        Unsigned16,   // ArgUnsigned16C  unsigned short
        Unsigned32,   // ArgUnsigned32C  unsigned
        Unsigned64,   // ArgUnsigned64C  unsigned long
        Real,         // ArgRealC        double
        UCS4,         // ArgUCS4C        UCS4T, one character
        String,       // ArgStringC      StringC
        DateTime,     // ArgDateTimeC    unsigned long, units of 10 nanoseconds since the calendar began
        ObjRef,       // ArgObjRefC      const void*, never followed
        Decimal,      // reserved
        Blob,         // reserved
        Guid,         // ArgGuidC        OSAGuidT
        ArgList,      // ArgArgListC     ArgListC
        CharStar,     // ArgCharStarC    const char*, a copy of the text
        TimeVal,      // ArgTimeValC     timeval
        User,         // ArgUserC        whatever a caller derives from it
        NullArg       // ArgNullC        nothing
    };

    TypeT type() const noexcept { return t; }
    // The name of a kind: that of its enumerator, but "Null" for NullArg, and "" for any other number.
    const char* typeName() const noexcept { return typeName(t); }
    static const char* typeName(TypeT type) noexcept;

    // The value of an argument of exactly that kind. Only asObjRef checks the kind ("t == ObjRef", then
    // null); the others are the caller's word.
    BooleanT asBool() const noexcept;
    short asInt16() const noexcept;
    int asInt32() const noexcept;
    long asInt64() const noexcept;
    unsigned short asUnsigned16() const noexcept;
    unsigned asUnsigned32() const noexcept;
    unsigned long asUnsigned64() const noexcept;
    double asReal() const noexcept;
    UCS4T asUCS4() const noexcept;
    const StringC& asString() const noexcept;
    unsigned long asDateTime() const noexcept;
    const void* asObjRef() const;
    const OSAGuidT& asGuid() const noexcept;
    const ArgListC& asArgList() const noexcept;
    const char* asCharStar() const noexcept;
    const timeval& asTimeVal() const noexcept;
    const ArgUserC& asUser() const noexcept;

protected:
    explicit ArgC(TypeT type) noexcept : t(type) {}
    ArgC(const ArgC&) = default;
    ArgC& operator=(const ArgC&) = delete;
    ~ArgC() = default;

    const TypeT t;
};

// What all kinds with a plain value have in common. The conversion is explicit, so that streaming an
// argument object of a kind that has no << of its own is an error and not a silent change of kind.
template <ArgC::TypeT TYPE, class ValueT>
class ArgValueM : public ArgC {
public:
    explicit ArgValueM(const ValueT& value) : ArgC(TYPE), m(value) {}
    ArgValueM(const ArgValueM&) = default;

    explicit operator const ValueT&() const noexcept { return m; }
    const ValueT& value() const noexcept { return m; }

protected:
    const ValueT m;
};

typedef ArgValueM<ArgC::Bool, BooleanT> ArgBoolC;
typedef ArgValueM<ArgC::Int16, short> ArgInt16C;
typedef ArgValueM<ArgC::Int32, int> ArgInt32C;
typedef ArgValueM<ArgC::Int64, long> ArgInt64C;
typedef ArgValueM<ArgC::Unsigned16, unsigned short> ArgUnsigned16C;
typedef ArgValueM<ArgC::Unsigned32, unsigned> ArgUnsigned32C;
typedef ArgValueM<ArgC::Unsigned64, unsigned long> ArgUnsigned64C;
typedef ArgValueM<ArgC::Real, double> ArgRealC;
typedef ArgValueM<ArgC::String, StringC> ArgStringC;
typedef ArgValueM<ArgC::DateTime, unsigned long> ArgDateTimeC;
typedef ArgValueM<ArgC::Guid, OSAGuidT> ArgGuidC;
typedef ArgValueM<ArgC::TimeVal, timeval> ArgTimeValC;

class ArgUCS4C : public ArgValueM<ArgC::UCS4, UCS4T> {
public:
    using ArgValueM::ArgValueM;
    operator UCS4T() const noexcept { return m; }
};

class ArgObjRefC : public ArgValueM<ArgC::ObjRef, const void*> {
public:
    using ArgValueM::ArgValueM;
    operator const void*() const noexcept { return m; }
};

// A private copy of a terminated text; null is taken as the empty text.
class ArgCharStarC : public ArgC {
public:
    explicit ArgCharStarC(const char* text);
    ArgCharStarC(const ArgCharStarC& other) : ArgCharStarC(other.s) {}
    ~ArgCharStarC() { delete[] s; }

    explicit operator const char*() const noexcept { return s; }
    const char* value() const noexcept { return s; }

private:
    friend class ArgListC;
    struct AdoptT {};
    // Takes a text over instead of copying it.
    ArgCharStarC(AdoptT, const char* text) noexcept : ArgC(CharStar), s(text) {}

    const char* const s;
};

class ArgNullC : public ArgC {
public:
    ArgNullC() noexcept : ArgC(NullArg) {}
};

// A caller's own kind of argument. Its address as an ArgC differs from its address as an ArgUserC.
class ArgUserC : public ArgC {
public:
    ArgUserC() noexcept : ArgC(User) {}
    virtual ~ArgUserC() = default;
    virtual const char* typeName() const { return ArgC::typeName(User); }
};

class ArgListC {
public:
    ArgListC() noexcept = default;
    ArgListC(const ArgListC& other) = default;       // shares the body
    ArgListC(ArgListC&& other) noexcept = default;   // leaves `other` without one
    ArgListC& operator=(const ArgListC& other) = default;
    ArgListC& operator=(ArgListC&& other) noexcept = default;
    ~ArgListC() = default;

    // Lists of one argument.
    ArgListC(const StringC& value) : ArgListC() { *this << value; }
    ArgListC(const char* value) : ArgListC() { *this << value; }
    ArgListC(int value) : ArgListC() { *this << value; }
    ArgListC(short value) : ArgListC() { *this << value; }
    ArgListC(unsigned value) : ArgListC() { *this << value; }
    ArgListC(long value) : ArgListC() { *this << value; }
    ArgListC(unsigned long value) : ArgListC() { *this << value; }
    ArgListC(long long value) : ArgListC() { *this << value; }
    ArgListC(unsigned long long value) : ArgListC() { *this << value; }

    // Appends one argument, whose kind follows from the operand's type; bool, char and enumerations count
    // as int. Texts are copied. Kinds that have no operator here are appended with add.
    ArgListC& operator<<(short value) &;                // Int16
    ArgListC& operator<<(unsigned short value) &;       // Unsigned16
    ArgListC& operator<<(int value) &;                  // Int32
    ArgListC& operator<<(unsigned value) &;             // Unsigned32
    ArgListC& operator<<(long value) &;                 // Int64
    ArgListC& operator<<(long long value) &;            // Int64
    ArgListC& operator<<(unsigned long value) &;        // Unsigned64
    ArgListC& operator<<(unsigned long long value) &;   // Unsigned64
    ArgListC& operator<<(const StringC& value) &;       // String
    ArgListC& operator<<(const char* value) &;          // CharStar; null appends the empty text
    ArgListC& operator<<(const timeval& value) &;       // TimeVal
    ArgListC& operator<<(const ArgUCS4C& value) &;      // UCS4
    ArgListC& operator<<(const ArgObjRefC& value) &;    // ObjRef

    // The same for a temporary list, which can so be moved to where it is needed.
    ArgListC&& operator<<(short value) && { return std::move(*this << value); }
    ArgListC&& operator<<(unsigned short value) && { return std::move(*this << value); }
    ArgListC&& operator<<(int value) && { return std::move(*this << value); }
    ArgListC&& operator<<(unsigned value) && { return std::move(*this << value); }
    ArgListC&& operator<<(long value) && { return std::move(*this << value); }
    ArgListC&& operator<<(long long value) && { return std::move(*this << value); }
    ArgListC&& operator<<(unsigned long value) && { return std::move(*this << value); }
    ArgListC&& operator<<(unsigned long long value) && { return std::move(*this << value); }
    ArgListC&& operator<<(const StringC& value) && { return std::move(*this << value); }
    ArgListC&& operator<<(const char* value) && { return std::move(*this << value); }
    ArgListC&& operator<<(const timeval& value) && { return std::move(*this << value); }
    ArgListC&& operator<<(const ArgUCS4C& value) && { return std::move(*this << value); }
    ArgListC&& operator<<(const ArgObjRefC& value) && { return std::move(*this << value); }

    // Appends an argument made with new, which the list owns from now on (but see Ownership above). A
    // null pointer takes a place and counts as missing. A list nested in itself is never freed.
    ArgListC& add(const ArgC* arg);

    // The n-th argument, from 0, still owned by the list; null when there is none.
    const ArgC* operator[](long n) const noexcept { return impl ? impl->at(n) : nullptr; }
    long size() const noexcept { return impl ? impl->size() : 0; }

private:
    // The arguments of all lists that share it. The first pointers, the arguments that are streamed in and
    // their texts lie inside the object as long as there is room, so that a usual message costs one
    // allocation; what finds no room, and what add brings, has one of its own.
    //
    // Every image of a process may append to a body that another one made, so the layout never changes. The
    // body is freed by the code of the image that made it (Release is virtual).
    class ArgListImplC final : public RefCountC {
    public:
        ArgListImplC() noexcept : args(m_firstArgs), m_free(m_room) {}
        ~ArgListImplC() override;
        ArgListImplC(const ArgListImplC&) = delete;
        ArgListImplC& operator=(const ArgListImplC&) = delete;

        // The handle that makes the body is the first to see it.
        void AddRef() override
        {
            if (GetRefCount() != 0) return RefCountC::AddRef();
            startCount();
        }

        // Appends an argument with an allocation of its own.
        void appendOwned(const ArgC* arg)
        {
            m_ownsAny = true;
            append(arg);
        }
        template <class ArgT, class ValueT>
        void appendNew(const ValueT& value)
        {
            void* const place = takeRoom(sizeof(ArgT));
            if (place == nullptr) return appendOwned(new ArgT(value));
            m_ownsAny |= !std::is_trivially_destructible<ArgT>::value;
            append(new (place) ArgT(value));
        }
        void appendText(const char* text);

        const ArgC* at(long n) const noexcept { return n >= 0 && n < used ? args[n] : nullptr; }
        long size() const noexcept { return used; }

    private:
        static const int STEP = 16;
        static const size_t ROOM = 336;   // makes 512 bytes of the whole

        bool isInside(const void* p) const noexcept { return p >= m_room && p < m_room + ROOM; }
        void* takeRoom(size_t size) noexcept;
        void append(const ArgC* arg)
        {
            if (used >= capacity) grow();
            args[used++] = arg;
        }
        void grow();
        void endInside(const ArgC* arg) noexcept;
        static void destroy(const ArgC* arg) noexcept;

        int capacity = STEP;   // of args
        int used = 0;
        const ArgC** args;
        // From here on what the single allocation needs.
        bool m_ownsAny = false;   // an argument needs more than its memory given back
        const ArgC* m_firstArgs[STEP];
        unsigned char* m_free;
        alignas(void*) unsigned char m_room[ROOM];
    };

    ArgListImplC& body();

    RefM<ArgListImplC> impl;
};

typedef ArgValueM<ArgC::ArgList, ArgListC> ArgArgListC;

// Starts lists. An unsigned short that starts a list is an Int32, one that follows an Unsigned16.
class ArgListFactoryC {
public:
    constexpr ArgListFactoryC() noexcept = default;

    ArgListC operator<<(const StringC& value) const { return ArgListC(value); }
    ArgListC operator<<(const char* value) const { return ArgListC(value); }
    ArgListC operator<<(int value) const { return ArgListC(value); }
    ArgListC operator<<(short value) const { return ArgListC(value); }
    ArgListC operator<<(unsigned value) const { return ArgListC(value); }
    ArgListC operator<<(long value) const { return ArgListC(value); }
    ArgListC operator<<(unsigned long value) const { return ArgListC(value); }
    ArgListC operator<<(long long value) const { return ArgListC(value); }
    ArgListC operator<<(unsigned long long value) const { return ArgListC(value); }
    ArgListC operator<<(const timeval& value) const { return ArgListC() << value; }
    ArgListC operator<<(const ArgUCS4C& value) const { return ArgListC() << value; }
    ArgListC operator<<(const ArgObjRefC& value) const { return ArgListC() << value; }
};

// Each linked image has its own two; nothing depends on their identity. Usable before any static
// constructor has run and until the process ends.
extern const ArgListFactoryC ArgList;
extern const ArgListC& ArgListNull;   // the empty list

// ---- nothing of interest to users below --------------------------------------------------------------

inline BooleanT ArgC::asBool() const noexcept { return static_cast<const ArgBoolC*>(this)->value(); }
inline short ArgC::asInt16() const noexcept { return static_cast<const ArgInt16C*>(this)->value(); }
inline int ArgC::asInt32() const noexcept { return static_cast<const ArgInt32C*>(this)->value(); }
inline long ArgC::asInt64() const noexcept { return static_cast<const ArgInt64C*>(this)->value(); }
inline unsigned short ArgC::asUnsigned16() const noexcept { return static_cast<const ArgUnsigned16C*>(this)->value(); }
inline unsigned ArgC::asUnsigned32() const noexcept { return static_cast<const ArgUnsigned32C*>(this)->value(); }
inline unsigned long ArgC::asUnsigned64() const noexcept { return static_cast<const ArgUnsigned64C*>(this)->value(); }
inline double ArgC::asReal() const noexcept { return static_cast<const ArgRealC*>(this)->value(); }
inline UCS4T ArgC::asUCS4() const noexcept { return static_cast<const ArgUCS4C*>(this)->value(); }
inline const StringC& ArgC::asString() const noexcept { return static_cast<const ArgStringC*>(this)->value(); }
inline unsigned long ArgC::asDateTime() const noexcept { return static_cast<const ArgDateTimeC*>(this)->value(); }
inline const OSAGuidT& ArgC::asGuid() const noexcept { return static_cast<const ArgGuidC*>(this)->value(); }
inline const ArgListC& ArgC::asArgList() const noexcept { return static_cast<const ArgArgListC*>(this)->value(); }
inline const char* ArgC::asCharStar() const noexcept { return static_cast<const ArgCharStarC*>(this)->value(); }
inline const timeval& ArgC::asTimeVal() const noexcept { return static_cast<const ArgTimeValC*>(this)->value(); }
inline const ArgUserC& ArgC::asUser() const noexcept { return *static_cast<const ArgUserC*>(this); }
inline const void* ArgC::asObjRef() const
{
    if (!TVX_CHECK(t == ObjRef, "t == ObjRef")) return nullptr;
    return static_cast<const ArgObjRefC*>(this)->value();
}

#endif   // TVXCMN_ARGLIST_H
