// confregistry.h: the registry in which the agent's modules keep their settings.
//
//     ConfRegistryI* const registry = getConfiguration(2)->registry();
//     registry->AddIniFile("/etc/vendor/agent.ini", "HKLM", "SOFTWARE\\Vendor");
//     StringC level;
//     if (registry->ReadString(HKEY_LOCAL_MACHINE, "SOFTWARE\\Vendor\\Agent", "Level", &level) == 0) ...
//
// Keys form a tree below root keys; a key's path joins the names from the root down by backslashes, and letters
// of keys and of value names compare without regard to case. A key holds named values. Keys are reached by
// handle: those of the roots HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER always exist, others are opened and closed.
// A `subKey` is relative to the handle in front of it; an empty one is that key itself.
//
// What stands where: each registered INI file (prefs.h) holds the subtree below its base key, and not the base
// key itself. With a base of HKEY_LOCAL_MACHINE\SOFTWARE\Vendor the section [Agent\Schedule] holds the values of
// HKEY_LOCAL_MACHINE\SOFTWARE\Vendor\Agent\Schedule. A key also exists when only keys below it do. The keys from
// the root down to the base can be opened, but hold no values, and what is below them is not enumerated. Such a
// key stays one of these when a broader file has a section for it; where files overlap, the one that was
// registered first is used.
//
// Values are text, whatever type and size their writer gives: their type is reported as 1, their size is that of
// the text in bytes plus 1 for the zero behind it. A double word is stored as its decimal digits with the letter
// l behind them, which has to stay. Files are bytes: what is no UTF-8 comes back as it is from ReadBytes, and
// with U+FFFD in place of each bad byte from ReadString.
//
// Sharing: a file is looked at before keys are opened and values read, at most once in a second, and read again
// when it has changed. Every change is merged into the file as it then is on disk, under a lock that all
// processes respect (the file's name and ".lck"); the new contents are written to another file (".tmp") that
// takes the old one's place, so readers see the old or the new file and comments survive. Programs that do not
// take the lock are noticed up to the moment before the new file takes its place, and merged with; what one of them
// writes into the old file after that is lost. They should replace the file by a rename. A change whose save
// fails is kept, and goes into the file with the next save that succeeds. Who may replace the file becomes its
// owner, where the old owner cannot be given to it; a symbolic link is replaced by a plain file.
//
// Results: 0, or (errornumbers.h)
//     TVXERR_REGISTRY_FAILURE            a file could not be locked or saved, or there is no such operation here
//     TVXERR_REGISTRY_NO_MORE_ITEMS      the end of an enumeration
//     TVXERR_REGISTRY_BUFFER_TOO_SMALL   the needed size has been stored
//     TVXERR_REGISTRY_NOT_FOUND          no such key or value; a key that no file holds; a number below 0
//     TVXERR_REGISTRY_NOT_EMPTY          the key to be deleted has keys or values
//     TVXERR_REGISTRY_UNKNOWN_HANDLE     no such handle; a value for a key that no file holds
//     TVXERR_REGISTRY_INVALID_ARGUMENT   a pointer that is required is null, or a name or value cannot be stored
//     TVXERR_REGISTRY_FILE_REGISTERED    the INI file is registered
//     TVXERR_REGISTRY_UNKNOWN_ROOT       the path does not begin with the name of a root
// They are returned and not recorded in the error buffer. A failed operation leaves what its pointers point at
// alone, but for sizes.
//
// What cannot be stored: texts with line ends or U+0000; keys with a "]"; value names with a "=", or with ";" or
// "[" in front; keys and value names with blanks at an end. Blanks at the ends of values are taken off.
//
// Thread safety: latched. Each operation is one step; what several of them do together is not.
// Ownership:     the registry belongs to the configuration (configuration.h). Open handles are the caller's to
//                close; two that lead to one key are the same number, and are counted.
#ifndef TVXCMN_CONFREGISTRY_H
#define TVXCMN_CONFREGISTRY_H

#include "errornumbers.h"
#include "stringc.h"

class StringArrayC;

// The root keys. Only the handles of HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER exist; the latter is the same for
// all users. The other roots can be the root of a file, whose keys then have no handle to begin with.
constexpr unsigned long HKEY_CLASSES_ROOT = 0x80000000;       // "HKCR"
constexpr unsigned long HKEY_CURRENT_USER = 0x80000001;       // "HKCU"
constexpr unsigned long HKEY_LOCAL_MACHINE = 0x80000002;      // "HKLM"
constexpr unsigned long HKEY_USERS = 0x80000003;              // "HKU"
constexpr unsigned long HKEY_PERFORMANCE_DATA = 0x80000004;   // "HKPD"
constexpr unsigned long HKEY_CURRENT_CONFIG = 0x80000005;     // "HKCC"
constexpr unsigned long HKEY_DYN_DATA = 0x80000006;           // "HKDD"

// Access masks, which are not checked.
constexpr unsigned long KEY_READ = 0x20019;
constexpr unsigned long KEY_ALL_ACCESS = 0xF003F;

// The type of every value.
constexpr unsigned long REG_SZ = 1;

class ConfRegistryI {
public:
    // Whether the key exists and, unless `valueName` is empty, the value in it. With `handle` the key stays open
    // and is handed out, but only on success.
    virtual ErrorT ExistsBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned long* handle,
                               unsigned long samDesired) = 0;
    // The value's text and a zero behind it. *size is the room in bytes, and becomes the needed size. Without
    // `value` or `size` nothing is copied: *size, if there is one, becomes the needed size, and the result is 0.
    // `type` may be null.
    virtual ErrorT ReadBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned char* value,
                             unsigned long* size, unsigned long* type) = 0;
    // A consumer of the tracer gets TVXERR_REGISTRY_FAILURE from ReadString.
    virtual ErrorT ReadString(unsigned long hKey, StringC subKey, StringC valueName, StringC* value) = 0;
    // TVXERR_REGISTRY_FAILURE: not supported.
    virtual ErrorT ReadStringArray(unsigned long hKey, StringC subKey, StringC valueName, StringArrayC** value) = 0;
    // The number with which the text begins: decimal, or hexadecimal behind 0x, octal behind 0, binary behind 0b;
    // 0 when there is none. Numbers from 2 to the 63 on do not come back.
    virtual ErrorT ReadDWord(unsigned long hKey, StringC subKey, StringC valueName, unsigned long* value) = 0;

    // Enumerates a key: names of values and of keys right below it, by index from 0 on, in the order of the file.
    // Nothing is read from disk between the calls, unless another operation does.
    virtual ErrorT StartEnumerate(unsigned long hKey, StringC subKey, unsigned long* handle) = 0;
    // Each of the pointers may be null. `value` and `valueSize` are as for ReadBytes, but `value` requires
    // `valueSize`, and a size alone gives TVXERR_REGISTRY_BUFFER_TOO_SMALL.
    virtual ErrorT GetEnumeratedValue(unsigned long handle, unsigned long index, StringC* valueName,
                                      unsigned long* valueType, unsigned char* value, unsigned long* valueSize) = 0;
    // TVXERR_REGISTRY_NOT_FOUND for a key that no file holds, whatever there is below it.
    virtual ErrorT GetEnumeratedKey(unsigned long handle, unsigned long index, StringC* keyName) = 0;
    virtual ErrorT EndEnumerate(unsigned long handle) = 0;   // CloseKey

    // Opens the key, making it if it is missing; keys above it need not exist. A null `handle` leaves it closed.
    virtual ErrorT CreateKey(unsigned long hKey, StringC subKey, unsigned long* handle) = 0;
    // Sets a value, making its key if that is missing. `data` is text up to its first zero, which there must be;
    // null is the empty text. `dwType` and `len` are not used. An empty value name stores nothing and succeeds.
    // 0 also when the file could not be saved; SetWriteThrough(true) tells that.
    virtual ErrorT CreateBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned long dwType,
                               const unsigned char* data, unsigned long len) = 0;
    virtual ErrorT CreateString(unsigned long hKey, StringC subKey, StringC valueName, StringC value) = 0;
    // TVXERR_REGISTRY_FAILURE: not supported.
    virtual ErrorT CreateStringArray(unsigned long hKey, StringC subKey, StringC valueName, StringArrayC* value) = 0;
    virtual ErrorT CreateDWord(unsigned long hKey, StringC subKey, StringC valueName, unsigned long value) = 0;

    // 0 also when there is no such value in the key.
    virtual ErrorT DeleteValue(unsigned long hKey, StringC subKey, StringC valueName) = 0;
    // Deletes the key; with `nonEmpty` also one that holds values and keys, and all of these. A key that no file
    // holds is never empty, and stays.
    virtual ErrorT DeleteKey(unsigned long hKey, StringC subKey, bool nonEmpty) = 0;

    // Takes a path such as HKLM\SOFTWARE\Vendor\Value apart. Each pointer that is null is a part that is not
    // wanted. With `valueName` it gets what follows the last backslash, and `subKey` the text between, with a
    // backslash at its end, which OpenKey and the others accept; without, `subKey` gets all behind the root.
    virtual ErrorT ExtractKeyComponents(StringC fullKey, unsigned long* root, StringC* subKey, StringC* valueName) = 0;
    // The root of that long or short name, whose letters must be capitals; 0 for any other text.
    virtual unsigned long StringToHKEY(StringC root) = 0;
    // The names of a root; empty for any other number.
    virtual StringC HKEYToLongString(unsigned long root) = 0;
    virtual StringC HKEYToShortString(unsigned long root) = 0;

    // TVXERR_REGISTRY_FAILURE: not supported.
    virtual ErrorT SetCurrentUserRoot(StringC subKey) = 0;
    virtual ErrorT ConnectNetworkRegistry(StringC computername, unsigned long root, unsigned long* key) = 0;

    // `samDesired` is not checked. A key whose name ends in backslashes that is not there is looked for without
    // them.
    virtual ErrorT OpenKey(unsigned long hKey, StringC subKey, unsigned long samDesired, unsigned long* handle) = 0;
    virtual ErrorT CloseKey(unsigned long hKey) = 0;

    // Registers an INI file, which need not exist yet: the first change makes it, and its directory. `rootKey` is
    // the name of a root, long or short. A file that had the same base key is replaced, and changes of it that
    // have not been saved are lost; handles of its keys lead to the new file. There is room for 10,000 files.
    virtual ErrorT AddIniFile(StringC path, StringC rootKey, StringC subKey) = 0;
    // Whether changes go to disk at once, which they do at first. While they do not, they are lost when another
    // process changes the file. Turning it on, also when it was on, saves every file; the result is that of the
    // last one that failed, for which errno tells why (EAGAIN: another process kept it locked for 20 seconds).
    virtual ErrorT SetWriteThrough(bool writethru) = 0;

    virtual ~ConfRegistryI() = default;
};

#endif   // TVXCMN_CONFREGISTRY_H
