// The cimuser program: the users an operator adds are the ones the server's
// password check knows.

#include "ServerTestRoot.h"

#include <Pegasus/Security/UserFile.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include <sys/stat.h>
#include <sys/wait.h>

namespace {

const std::string kProgram = std::string(TEST_BINARY_DIR) + "/bin/cimuser";

struct Outcome {
    int status;
    std::string output;
};

Outcome run(const std::string& arguments, const std::string& input = "") {
    const std::string command = "printf '%s' '" + input + "' | " + kProgram + " " + arguments + " 2>&1";
    Outcome result{-1, ""};
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return result;
    std::array<char, 512> buffer;
    std::size_t got;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) result.output.append(buffer.data(), got);
    const int status = ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

TEST(CimuserProgramTest, AddChangeListRemove) {
    ServerTestRoot root;
    const std::string file = root.path() + "/opt/pegasus/etc/cimserver.passwd";
    ASSERT_EQ(run("add orvadmin --password orv-demo-pass").status, 0);
    ASSERT_EQ(run("add operator", "typed-in\n").status, 0);
    Pegasus::UserFile users(file);
    EXPECT_TRUE(users.verify("orvadmin", "orv-demo-pass"));
    EXPECT_TRUE(users.verify("operator", "typed-in"));
    struct stat info;
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 077, 0u) << "the password file is readable by others";

    EXPECT_EQ(run("passwd operator --password changed-1").status, 0);
    EXPECT_TRUE(users.verify("operator", "changed-1"));
    EXPECT_FALSE(users.verify("operator", "typed-in"));
    EXPECT_EQ(run("list").output, "operator\norvadmin\n");

    const Outcome again = run("add orvadmin --password x");
    EXPECT_EQ(again.status, 2);
    EXPECT_NE(again.output.find("exists already"), std::string::npos);
    const Outcome hostile = run("add 'x;touch /tmp/owned' --password x");
    EXPECT_EQ(hostile.status, 1);
    EXPECT_NE(hostile.output.find("invalid user name"), std::string::npos) << hostile.output;
    EXPECT_EQ(run("remove nobody").status, 2);
    EXPECT_EQ(run("remove operator").status, 0);
    EXPECT_FALSE(users.hasUser("operator"));
    EXPECT_NE(run("").status, 0);
}

TEST(CimuserProgramTest, FollowsThePasswordFileOfTheConfiguration) {
    ServerTestRoot root;
    root.write(root.path() + "/opt/pegasus/etc/cimserver.conf", "passwordFile=/opt/pegasus/etc/other.passwd\n");
    ASSERT_EQ(run("add someone --password pw-123456").status, 0);
    EXPECT_TRUE(Pegasus::UserFile(root.path() + "/opt/pegasus/etc/other.passwd").verify("someone", "pw-123456"));
    root.write(root.path() + "/bad.conf", "passwordFile=\n");
    const Outcome bad = run("--config " + root.path() + "/bad.conf list");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.output.find("bad.conf:1: passwordFile must name"), std::string::npos) << bad.output;
}

} // namespace
