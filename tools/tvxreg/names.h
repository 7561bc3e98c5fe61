// names.h: names of keys and values, which letters of either case make the same, as the registry has it.
#ifndef TVXREG_NAMES_H
#define TVXREG_NAMES_H

#include "prefs.h"

#include <string>
#include <string_view>

// Numbers under two names each. Preference files are what decides which names are equal.
class NameNumbersC {
public:
    static constexpr long NONE = -1;

    void set(std::string_view group, std::string_view name, long number)
    {
        m_numbers.SetAttr(marked(group).c_str(), marked(name).c_str(), std::to_string(number).c_str());
    }
    long get(std::string_view group, std::string_view name) const
    {
        return m_numbers.GetLongAttr(marked(group).c_str(), marked(name).c_str(), NONE);
    }

private:
    // Names may be empty here.
    static std::string marked(std::string_view name) { return std::string(1, '.').append(name); }

    PrefsC m_numbers;
};

inline bool areEqualNames(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    if (a == b) return true;
    NameNumbersC numbers;
    numbers.set(a, "", 0);
    return numbers.get(b, "") == 0;
}

#endif   // TVXREG_NAMES_H
