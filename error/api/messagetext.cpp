#include "error/api/messagetext.h"

#include "error/api/selectstyle.h"
#include "string/api/textrepair.h"

StringC catalogMessage(std::string_view text, ErrSevT& sev)
{
    std::string room;
    return repairedText(selectStyle(text, sev, room));
}

StringC defaultMessage(const char* def_str, ErrSevT& sev)
{
    std::string room;
    const std::string_view text = selectStyle(def_str != nullptr ? def_str : "", sev, room);
    return {text.data(), text.size(), StringC::CC_UTF8};
}
