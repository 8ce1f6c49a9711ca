#include "checks/Check.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string_view>

namespace
{

class ContractTest : public testing::Test
{
public:
    ContractTest(const checks::Check& check, const std::string& modulePath) : m_check(check), m_modulePath(modulePath)
    {
    }

    void TestBody() override
    {
        const checks::CheckResult result = checks::RunCheck(m_check, m_modulePath);
        for (const checks::Failure& failure : result.failures)
        {
            ADD_FAILURE_AT(failure.where.file, failure.where.line) << failure.text;
        }
        if (!result.leftOut.empty())
        {
            GTEST_SKIP() << result.leftOut;
        }
    }

private:
    const checks::Check m_check;
    const std::string m_modulePath;
};

/// Removes the option --module= from the arguments and returns its path; without the option the module of this build.
std::string TakeModulePath(int& argc, char** argv)
{
    constexpr std::string_view kOption = "--module=";
    std::string path = CONTRACT_MODULE;
    int kept = 0;
    for (int index = 0; index < argc; ++index)
    {
        const std::string_view argument = argv[index];
        if (argument.starts_with(kOption))
        {
            path = argument.substr(kOption.size());
        }
        else
        {
            argv[kept++] = argv[index];
        }
    }
    argc = kept;
    return path;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string modulePath = TakeModulePath(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    for (const checks::Check& check : checks::AllChecks())
    {
        testing::RegisterTest(check.group.c_str(), check.claim.c_str(), nullptr, nullptr, check.where.file,
                              check.where.line,
                              [check, modulePath]() -> testing::Test* { return new ContractTest(check, modulePath); });
    }
    return RUN_ALL_TESTS();
}
