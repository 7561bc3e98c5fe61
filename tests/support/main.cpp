// Runs every test in a temporary directory of its own, so that what a test leaves behind (assert.log
// above all) belongs to it alone. The process of a death test shares the directory of its test.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;

const char DIRECTORY_VARIABLE[] = "TVXCMN_TEST_DIRECTORY";   // tells a death test's process where to be

class OwnDirectoryC : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo&) override
    {
        std::string name = (fs::temp_directory_path() / "tvxcmn-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) abort();
        m_before = fs::current_path();
        m_own = name;
        fs::current_path(m_own);
        setenv(DIRECTORY_VARIABLE, m_own.c_str(), 1);
    }
    void OnTestEnd(const testing::TestInfo&) override
    {
        fs::current_path(m_before);
        std::error_code ignored;
        fs::remove_all(m_own, ignored);
    }

private:
    fs::path m_before;
    fs::path m_own;
};

}   // namespace

// The thread sanitizer reads this list of reports to leave out: tests leave latches that they do not
// hold, which is what the latch has to notice.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions()
{
    return "mutex:LatchC::leave\n";
}

int main(int argc, char** argv)
{
    const bool isDeathTest = std::any_of(argv, argv + argc, [](const char* argument) {
        return std::string_view(argument).starts_with("--gtest_internal_run_death_test");
    });
    testing::InitGoogleTest(&argc, argv);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    if (isDeathTest) {
        fs::current_path(std::getenv(DIRECTORY_VARIABLE));
    } else {
        testing::UnitTest::GetInstance()->listeners().Append(new OwnDirectoryC);
    }
    return RUN_ALL_TESTS();
}
