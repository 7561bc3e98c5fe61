#include "streams.h"

#include "assertfatal.h"
#include "errorapi.h"

#include <algorithm>

namespace {

const long CHUNK = 1024;   // streams of other makers see it as the size of the reads

// Whether both are parts of one object.
bool areOneStream(const OutputStreamC& out, const InputStreamC& in)
{
    return dynamic_cast<const void*>(&out) == dynamic_cast<const void*>(&in);
}

}   // namespace

InputStreamC::~InputStreamC() = default;
OutputStreamC::~OutputStreamC() = default;

long InputStreamC::close() { return 0; }
long OutputStreamC::close() { return 0; }
long IOStreamC::close() { return 0; }

// A stream that appends to itself would run after its own end.
long OutputStreamC::writeFrom(InputStreamC& in, long count)
{
    if (areOneStream(*this, in)) {
        const long long present = in.length();
        if (present == 0) return 0;
        if (present > 0 && (count <= 0 || count > present)) count = static_cast<long>(present);
    }
    const bool isLimited = count > 0;
    unsigned char chunk[CHUNK];
    while (!isLimited || count > 0) {
        const long room = isLimited ? std::min(count, CHUNK) : CHUNK;
        long n = in.read(chunk, room);
        if (n <= 0) break;
        if (!TVX_CHECK(n <= room, "n <= room")) n = room;
        if (write(chunk, n) != 0) return Error(TVXERR_STREAM_WRITE, "Failed to write to a stream");
        if (isLimited) count -= n;
    }
    return 0;
}

OutputStreamC& OutputStreamC::operator<<(InputStreamC& in)
{
    writeFrom(in, 0);
    return *this;
}

long long IOStreamC::position() const { return const_cast<IOStreamC*>(this)->seek(0, FROM_CURRENT); }
