// errornumbers.h: how an error number is made up, and every number that the library returns or reports.
//
// An ErrorT is a positive 64-bit number; 0 is success. Its low 32 bits:
//
//     bits    meaning
//     0-15    message number within its set
//     16-27   message set
//     29      the number has a catalog text; with set 0 the message number is an errno of the system
//     28, 30, 31   carried along; all three but bit 28 are set in the numbers of this library
//
// A number never passes through an int: 0xE0CB0001 would come back negative. Numbers are compared as a
// whole; nothing may be read from the high byte, which also holds the top of the set.
#ifndef TVXCMN_ERRORNUMBERS_H
#define TVXCMN_ERRORNUMBERS_H

typedef long ErrorT;

// The parts of a number.
constexpr unsigned ErrorSetOf(ErrorT err) noexcept { return static_cast<unsigned>(err >> 16) & 0xFFF; }
constexpr unsigned ErrorMessageOf(ErrorT err) noexcept { return static_cast<unsigned>(err) & 0xFFFF; }
constexpr bool ErrorHasCatalogText(ErrorT err) noexcept { return (err >> 29 & 1) != 0; }

// The number of a failure of the system, from its errno.
constexpr ErrorT ErrorOfErrno(int error) noexcept { return 0xE0000000L | (error & 0xFFFF); }
// Whether a number was made that way.
constexpr bool ErrorIsErrno(ErrorT err) noexcept { return ErrorHasCatalogText(err) && ErrorSetOf(err) == 0; }

// Set 0x015: tracing.
constexpr ErrorT TVXERR_TRACE_NO_FREE_SLOT = 0xE0150002L;       // never returned: slots do not run out
constexpr ErrorT TVXERR_TRACE_UNKNOWN_CONSUMER = 0xE0150003L;   // not registered, or null
constexpr ErrorT TVXERR_TRACE_NO_TIME = 0xE0150005L;            // the time of day cannot be read
constexpr ErrorT TVXERR_TRACE_UNKNOWN_ATTRIBUTE = 0xE0150006L;

// Set 0x0C9: reading numbers.
constexpr ErrorT TVXERR_NUMBER_TRAILING_TEXT = 0xE0C90002L;   // text follows the number, which is valid
constexpr ErrorT TVXERR_NUMBER_MISSING = 0xE0C90003L;
constexpr ErrorT TVXERR_NUMBER_TOO_LARGE = 0xE0C90004L;
constexpr ErrorT TVXERR_NUMBER_NOT_A_DIGIT = 0xE0C90005L;
constexpr ErrorT TVXERR_NUMBER_BAD_RADIX = 0xE0C90006L;

// Set 0x0CA: containers.
constexpr ErrorT TVXERR_COLLECTION_CHANGED = 0xE0CA0002L;   // during an iteration, which must rewind

// Set 0x0CB: files and streams.
constexpr ErrorT TVXERR_FILE_NO_MORE_FILES = 0xE0CB0001L;   // the end of a listing
constexpr ErrorT TVXERR_FILE_CREATE_DIRECTORY = 0xE0CB0002L;
constexpr ErrorT TVXERR_STREAM_NO_LENGTH = 0xE0CB0005L;
constexpr ErrorT TVXERR_STREAM_CANNOT_READ = 0xE0CB0006L;
constexpr ErrorT TVXERR_STREAM_CANNOT_SEEK = 0xE0CB0007L;
constexpr ErrorT TVXERR_STREAM_CANNOT_WRITE = 0xE0CB0008L;
constexpr ErrorT TVXERR_FILE_APPEND_WITHOUT_WRITE = 0xE0CB0009L;
constexpr ErrorT TVXERR_STREAM_CANNOT_RESIZE = 0xE0CB000BL;
constexpr ErrorT TVXERR_FILE_OPEN = 0xE0CB0010L;
constexpr ErrorT TVXERR_FILE_CHANGE_DIRECTORY = 0xE0CB0011L;
constexpr ErrorT TVXERR_STREAM_WRITE = 0xE0CB0015L;
constexpr ErrorT TVXERR_COPY_OPEN_SOURCE = 0xE0CB0016L;
constexpr ErrorT TVXERR_COPY_OPEN_DESTINATION = 0xE0CB0017L;
constexpr ErrorT TVXERR_COPY_READ = 0xE0CB0018L;
constexpr ErrorT TVXERR_COPY_WRITE = 0xE0CB0019L;
constexpr ErrorT TVXERR_STREAM_END = 0xE0CB001AL;   // no more lines or text

// Set 0x137: registry.
constexpr ErrorT TVXERR_REGISTRY_FAILURE = 0xE1370065L;   // not locked, not saved or not supported
constexpr ErrorT TVXERR_REGISTRY_NO_MORE_ITEMS = 0xE1370066L;
constexpr ErrorT TVXERR_REGISTRY_BUFFER_TOO_SMALL = 0xE1370067L;   // the needed size has been stored
constexpr ErrorT TVXERR_REGISTRY_NOT_FOUND = 0xE1370069L;
constexpr ErrorT TVXERR_REGISTRY_NOT_EMPTY = 0xE137006AL;
constexpr ErrorT TVXERR_REGISTRY_UNKNOWN_HANDLE = 0xE137006BL;
constexpr ErrorT TVXERR_REGISTRY_INVALID_ARGUMENT = 0xE137006EL;
constexpr ErrorT TVXERR_REGISTRY_FILE_REGISTERED = 0xE1370074L;   // this INI file, before
constexpr ErrorT TVXERR_REGISTRY_UNKNOWN_ROOT = 0xE1370077L;

// Set 0x1B2: the proxy of the cryptographic module.
constexpr ErrorT TVXERR_CRYPTO_NOT_LOADED = 0xE1B20001L;
constexpr ErrorT TVXERR_CRYPTO_NO_FUNCTION = 0xE1B20002L;

// Set 0x3E8: date and time.
constexpr ErrorT TVXERR_TIME_BAD_TEXT = 0xE3E80064L;
constexpr ErrorT TVXERR_TIME_BAD_FIELDS = 0xE3E80065L;   // rolled over into a valid time

#endif   // TVXCMN_ERRORNUMBERS_H
