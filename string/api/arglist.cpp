#include "arglist.h"

#include <cstring>
#include <iterator>
#include <new>

namespace {

const char* const TYPE_NAMES[] = {"Bool", "Int16",   "Int32",    "Int64",    "Unsigned16", "Unsigned32", "Unsigned64",
                                  "Real", "UCS4",    "String",   "DateTime", "ObjRef",     "Decimal",    "Blob",
                                  "Guid", "ArgList", "CharStar", "TimeVal",  "User",       "Null"};
static_assert(std::size(TYPE_NAMES) == ArgC::NullArg + 1, "one name a tag");

const char* copyOf(const char* text, size_t size)
{
    return static_cast<char*>(std::memcpy(new char[size], text, size));
}

const char* orEmpty(const char* text) { return text != nullptr ? text : ""; }

// An empty list whose destructor never runs.
union ForeverT {
    ArgListC list;
    constexpr ForeverT() : list() {}
    ~ForeverT() {}
};
constinit ForeverT emptyList;

}   // namespace

constinit const ArgListFactoryC ArgList{};
constinit const ArgListC& ArgListNull = emptyList.list;

const char* ArgC::typeName(TypeT type) noexcept
{
    return static_cast<size_t>(type) < std::size(TYPE_NAMES) ? TYPE_NAMES[type] : "";
}

ArgCharStarC::ArgCharStarC(const char* text) : ArgC(CharStar), s(copyOf(orEmpty(text), std::strlen(orEmpty(text)) + 1))
{
}

// ---- the body ---------------------------------------------------------------------------------------

ArgListC::ArgListImplC::~ArgListImplC()
{
    for (int i = 0; m_ownsAny && i < used; ++i) {
        if (isInside(args[i])) {
            endInside(args[i]);
        } else if (args[i] != nullptr) {
            destroy(args[i]);
        }
    }
    if (args != m_firstArgs) delete[] args;
}

void* ArgListC::ArgListImplC::takeRoom(size_t size) noexcept
{
    size = (size + sizeof(void*) - 1) & ~(sizeof(void*) - 1);
    if (size > static_cast<size_t>(m_room + ROOM - m_free)) return nullptr;
    void* const place = m_free;
    m_free += size;
    return place;
}

void ArgListC::ArgListImplC::appendText(const char* text)
{
    text = orEmpty(text);
    const size_t size = std::strlen(text) + 1;
    void* const place = takeRoom(sizeof(ArgCharStarC));
    if (place == nullptr) return appendOwned(new ArgCharStarC(text));
    void* const room = takeRoom(size);
    m_ownsAny |= room == nullptr;
    const char* const s = room != nullptr ? static_cast<char*>(std::memcpy(room, text, size)) : copyOf(text, size);
    append(new (place) ArgCharStarC(ArgCharStarC::AdoptT(), s));
}

void ArgListC::ArgListImplC::grow()
{
    capacity = (capacity + STEP) / STEP * STEP;
    const ArgC** const larger = new const ArgC*[static_cast<size_t>(capacity)];
    std::memcpy(larger, args, static_cast<size_t>(used) * sizeof *args);
    if (args != m_firstArgs) delete[] args;
    args = larger;
}

// Only what << makes lies inside; of that only two kinds own something.
void ArgListC::ArgListImplC::endInside(const ArgC* arg) noexcept
{
    if (arg->type() == ArgC::String) {
        static_cast<const ArgStringC*>(arg)->~ArgStringC();
    } else if (arg->type() == ArgC::CharStar && !isInside(arg->asCharStar())) {
        static_cast<const ArgCharStarC*>(arg)->~ArgCharStarC();
    }
}

void ArgListC::ArgListImplC::destroy(const ArgC* arg) noexcept
{
    switch (arg->type()) {
    case ArgC::Int16: delete static_cast<const ArgInt16C*>(arg); break;
    case ArgC::Int32: delete static_cast<const ArgInt32C*>(arg); break;
    case ArgC::Int64: delete static_cast<const ArgInt64C*>(arg); break;
    case ArgC::Unsigned16: delete static_cast<const ArgUnsigned16C*>(arg); break;
    case ArgC::Unsigned32: delete static_cast<const ArgUnsigned32C*>(arg); break;
    case ArgC::Unsigned64: delete static_cast<const ArgUnsigned64C*>(arg); break;
    case ArgC::Real: delete static_cast<const ArgRealC*>(arg); break;
    case ArgC::UCS4: delete static_cast<const ArgUCS4C*>(arg); break;
    case ArgC::String: delete static_cast<const ArgStringC*>(arg); break;
    case ArgC::DateTime: delete static_cast<const ArgDateTimeC*>(arg); break;
    case ArgC::ObjRef: delete static_cast<const ArgObjRefC*>(arg); break;
    case ArgC::Guid: delete static_cast<const ArgGuidC*>(arg); break;
    case ArgC::ArgList: delete static_cast<const ArgArgListC*>(arg); break;
    case ArgC::CharStar: delete static_cast<const ArgCharStarC*>(arg); break;
    case ArgC::TimeVal: delete static_cast<const ArgTimeValC*>(arg); break;
    case ArgC::NullArg: delete static_cast<const ArgNullC*>(arg); break;
    case ArgC::Bool:
    case ArgC::User: break;   // their makers' property
    case ArgC::Decimal:
    case ArgC::Blob: break;   // never made
    }
}

// ---- the list ---------------------------------------------------------------------------------------

ArgListC::ArgListImplC& ArgListC::body()
{
    static_assert(sizeof(ArgListImplC) == 512, "images of different age append to one body");
    if (!impl) {
        RefM<ArgListImplC> fresh(new ArgListImplC);
        impl.swap(fresh);
    }
    return *impl;
}

ArgListC& ArgListC::operator<<(short value) &
{
    body().appendNew<ArgInt16C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(unsigned short value) &
{
    body().appendNew<ArgUnsigned16C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(int value) &
{
    body().appendNew<ArgInt32C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(unsigned value) &
{
    body().appendNew<ArgUnsigned32C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(long value) &
{
    body().appendNew<ArgInt64C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(long long value) & { return *this << static_cast<long>(value); }

ArgListC& ArgListC::operator<<(unsigned long value) &
{
    body().appendNew<ArgUnsigned64C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(unsigned long long value) & { return *this << static_cast<unsigned long>(value); }

ArgListC& ArgListC::operator<<(const StringC& value) &
{
    body().appendNew<ArgStringC>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(const char* value) &
{
    body().appendText(value);
    return *this;
}

ArgListC& ArgListC::operator<<(const timeval& value) &
{
    body().appendNew<ArgTimeValC>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(const ArgUCS4C& value) &
{
    body().appendNew<ArgUCS4C>(value);
    return *this;
}

ArgListC& ArgListC::operator<<(const ArgObjRefC& value) &
{
    body().appendNew<ArgObjRefC>(value);
    return *this;
}

ArgListC& ArgListC::add(const ArgC* arg)
{
    body().appendOwned(arg);
    return *this;
}
