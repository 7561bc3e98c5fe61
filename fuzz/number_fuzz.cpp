// Number reading against the C library's, which shares the rules for digits, signs and prefixes but for
// binary ones.

#include "fuzz.h"
#include "stringc.h"

#include <cerrno>
#include <cstdlib>

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    const int radix = static_cast<int>(input.below(40)) - 1;
    const std::string bytes(input.rest());
    const StringC text(bytes.c_str(), StringC::CC_VALID_UTF8);

    long error = -1;
    size_t end = SIZE_MAX;
    const long long number = text.asLongLong(&error, radix, &end);
    FUZZ_REQUIRE(error == 0 || (error >= 0xE0C90002L && error <= 0xE0C90006L));
    FUZZ_REQUIRE(end <= bytes.size());
    FUZZ_REQUIRE((error == 0xE0C90006L) == (radix < 0 || radix > 36));
    FUZZ_REQUIRE(text.asLong(nullptr, radix, nullptr) == number);

    const bool isShared = bytes.find_first_not_of("+-0123456789acdefACDEFxX") == std::string::npos && radix != 1;
    if (!isShared || (error != 0 && error != 0xE0C90002L)) return 0;
    char* stop = nullptr;
    errno = 0;
    FUZZ_REQUIRE(std::strtoll(bytes.c_str(), &stop, radix) == number);
    FUZZ_REQUIRE(errno == 0 && stop == bytes.c_str() + end);
    return 0;
}
