#include "fileservice.h"

#include "file/filesupport.h"
#include "support/helpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

using testing::ElementsAre;

TEST(FileServiceContinue, whatOtherSystemsHaveIsNeutral)
{
    FlnFileServiceC service;
    const FileNameC name = named("some/name");
    const std::unique_ptr<FileNameC> absolute(service.getAbsolute(&name));
    const std::unique_ptr<FileNameC> unc(service.getUNC(&name));
    EXPECT_EQ(str(*absolute) + str(*unc), "some/namesome/name");
    EXPECT_FALSE(service.isNetRoot(&name) || service.isHidden(name) || service.isSystem(name) ||
                 service.setHidden(name, 1));
    EXPECT_EQ(assertCount("Not implemented"), 6U);
    EXPECT_EQ(service.created(&name), 0);
    EXPECT_EQ(assertCount("FlnFileServiceC::created not implemented for this platform"), 1U);
    EXPECT_FALSE(service.setCreated(&name, 5));
    EXPECT_EQ(assertCount("FlnFileServiceC::setCreated not implemented for this platform"), 1U);
    EXPECT_FALSE(service.setCreated(&name, -1) || service.setLastModified(&name, -1));
    EXPECT_EQ(assertCount("filename != 0 && when >= 0"), 2U);
    EXPECT_EQ(str(service.getShortPathName(name)) + str(service.getLongPathName(name)), "some/namesome/name");
    EXPECT_FALSE(service.isInUse(&name) || service.disableWow64Redirection(nullptr) ||
                 service.revertWow64Redirection(nullptr));
    EXPECT_EQ(assertCount(), 10U);
}

TEST(FileServiceContinue, delayedOperationsHappenAtOnce)
{
    FlnFileServiceC service;
    std::ofstream("a") << "x";
    EXPECT_EQ(service.renameOnReboot(named("a"), named("b")), 0);
    EXPECT_EQ(assertCount("Cannot delay renaming until reboot on this platform"), 1U);
    EXPECT_TRUE(std::filesystem::exists("b"));
    EXPECT_EQ(service.removeOnReboot(named("b")), 0);
    EXPECT_EQ(service.removeOnReboot(named("/proc/self/status")), ErrorOfErrno(EPERM));
    EXPECT_EQ(assertCount("Cannot delay removing until reboot on this platform"), 2U);
    EXPECT_FALSE(std::filesystem::exists("b"));
    EXPECT_THAT(recordedErrors(), ElementsAre(ErrorOfErrno(EPERM)));
}

TEST(FileServiceContinue, noNameIsRefused)
{
    FlnFileServiceC service;
    const FileNameC name = named("name");
    EXPECT_FALSE(service.exists(nullptr) || service.isDirectory(nullptr) || service.isLink(nullptr) ||
                 service.isFile(nullptr) || service.isReadable(nullptr) || service.isWritable(nullptr) ||
                 service.isReadOnly(nullptr) || service.setReadOnly(nullptr, 1) || service.mkdir(nullptr, 1) ||
                 service.isNetRoot(nullptr) || service.isInUse(nullptr));
    EXPECT_EQ(service.created(nullptr), 0);
    EXPECT_EQ(service.diskFree(nullptr), -1);
    EXPECT_EQ(service.length(nullptr, nullptr), -1);
    EXPECT_EQ(service.getInfo(nullptr, 1), nullptr);
    EXPECT_EQ(service.readLink(nullptr), nullptr);
    EXPECT_EQ(assertCount("filename != 0"), 16U);
    EXPECT_EQ(recordedErrors().size(), 4U);

    EXPECT_FALSE(service.remove(nullptr, 1, 1));
    EXPECT_EQ(service.copy(nullptr, &name, nullptr, nullptr), ErrorOfErrno(EINVAL));
    EXPECT_EQ(service.copy(&name, nullptr, nullptr, nullptr), ErrorOfErrno(EINVAL));
    EXPECT_EQ(service.mkdirTemplate(nullptr, &name), ErrorOfErrno(EINVAL));
    EXPECT_EQ(service.mkdirTemplate(&name, nullptr), ErrorOfErrno(EINVAL));
    for (const char* const text : {"name", "from", "to", "templateDirectory", "newDirectory"}) {
        EXPECT_EQ(assertCount(text), 1U) << text;
    }
    EXPECT_EQ(service.getCWD(nullptr), ErrorOfErrno(EINVAL));
    EXPECT_EQ(assertCount("l_pPath != __null"), 1U);
    recordedErrors();
}
