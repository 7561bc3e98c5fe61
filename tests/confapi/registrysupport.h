// registrysupport.h: what the tests of the registry share.
#ifndef TVXCMN_TESTS_REGISTRYSUPPORT_H
#define TVXCMN_TESTS_REGISTRYSUPPORT_H

#include "confapi/impl/confregini.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <unistd.h>

const char INI[] = "v.ini";
const char BASE[] = "SOFTWARE\\Vendor";

// A registry with the file at HKEY_LOCAL_MACHINE\SOFTWARE\Vendor, and short words for what tests do with it.
class VendorRegistryC : public ConfRegistryIniC {
public:
    VendorRegistryC() { EXPECT_EQ(AddIniFile(INI, "HKLM", BASE), 0); }

    ErrorT set(const StringC& key, const StringC& name, const StringC& value)
    {
        return CreateString(HKEY_LOCAL_MACHINE, below(key), name, value);
    }
    // The value; or "!" and the error's last two digits.
    std::string get(const StringC& key, const StringC& name)
    {
        StringC value;
        const ErrorT result = ReadString(HKEY_LOCAL_MACHINE, below(key), name, &value);
        if (result == 0) return value.utf8();
        char number[8];
        std::snprintf(number, sizeof number, "!%02lX", static_cast<unsigned long>(result & 0xFF));
        return number;
    }
    unsigned long open(const StringC& path)
    {
        unsigned long key = 0;
        EXPECT_EQ(OpenKey(HKEY_LOCAL_MACHINE, path, KEY_READ, &key), 0) << path.utf8();
        return key;
    }

    static StringC below(const StringC& key) { return StringC(BASE) + "\\" + key; }
};

inline void writeIni(std::string_view text, const char* path = INI) { std::ofstream(path) << text; }

// Until then a file that was looked at is not looked at again.
inline void waitForNextSecond()
{
    const time_t before = time(nullptr);
    while (time(nullptr) == before) usleep(10000);
}

#endif   // TVXCMN_TESTS_REGISTRYSUPPORT_H
