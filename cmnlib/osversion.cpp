#include "osversion.h"

OSVersionInfoC::OSVersionInfoC() noexcept : m_name()
{
    if (uname(&m_name) < 0) m_name = utsname();
}
