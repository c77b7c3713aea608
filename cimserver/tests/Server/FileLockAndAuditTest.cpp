#include <Pegasus/Common/AuditLogger.h>
#include <Pegasus/Common/AutoFileLock.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Pegasus;

namespace {

std::string readAll(const std::string& file) {
    std::ifstream in(file);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(AutoFileLockTest, ExcludesAnotherProcessUntilReleased) {
    const std::string file = "/tmp/autofilelock-" + std::to_string(::getpid());
    const std::string order = file + ".order";
    std::ofstream(file).put('\n');
    ::unlink(order.c_str());
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        AutoFileLock lock(file.c_str());
        if (::write(ready[1], "x", 1) != 1) ::_exit(2);
        ::usleep(300 * 1000);
        std::ofstream(order, std::ios::app) << "child\n";
        ::_exit(lock.isLocked() ? 0 : 1);
    }
    char c;
    ASSERT_EQ(::read(ready[0], &c, 1), 1);
    {
        AutoFileLock lock(file.c_str());   // waits for the child's lock
        EXPECT_TRUE(lock.isLocked());
        std::ofstream(order, std::ios::app) << "parent\n";
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(readAll(order), "child\nparent\n");
    ::unlink(file.c_str());
    ::unlink(order.c_str());
}

TEST(AutoFileLockTest, AMissingFileIsNeitherCreatedNorLocked) {
    const std::string file = "/tmp/autofilelock-missing-" + std::to_string(::getpid());
    {
        AutoFileLock lock(file.c_str());
        EXPECT_FALSE(lock.isLocked());
    }
    struct stat info;
    EXPECT_NE(::stat(file.c_str(), &info), 0);
}

TEST(AuditLoggerTest, OneLinePerCallWithTheUser) {
    const std::string file = "/tmp/audit-" + std::to_string(::getpid()) + ".log";
    ::unlink(file.c_str());
    AuditLogger::setLogFile(file);
    OperationContext withUser;
    withUser.insert(IdentityContainer("orvadmin"));
    outputFedRampLog(withUser, "CreateOrModifyElementFromStoragePool");
    outputFedRampLog(OperationContext(), "two\nlines");
    AuditLogger::setLogFile("");
    const std::string text = readAll(file);
    const std::regex layout(
        R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z user=orvadmin CreateOrModifyElementFromStoragePool\n)"
        R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z user=- two lines\n$)");
    EXPECT_TRUE(std::regex_match(text, layout)) << text;
    ::unlink(file.c_str());
}

} // namespace
