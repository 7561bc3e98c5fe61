// osversion.h: what operating system the process runs on.
#ifndef TVXCMN_OSVERSION_H
#define TVXCMN_OSVERSION_H

#include <sys/utsname.h>

// The texts of uname(2), taken when the object is made; they live as long as it does. All are empty
// when the system gives none.
class OSVersionInfoC {
public:
    OSVersionInfoC() noexcept;

    const char* sysname() const noexcept { return m_name.sysname; }   // "Linux"
    const char* release() const noexcept { return m_name.release; }   // of the kernel, "6.1.0-18-amd64"
    const char* version() const noexcept { return m_name.version; }   // the kernel's build
    const char* machine() const noexcept { return m_name.machine; }   // "x86_64", "aarch64"

private:
    utsname m_name;
};

#endif   // TVXCMN_OSVERSION_H
