// Client text that could change the meaning of a shell line never reaches
// one: the controller refuses it before a job exists, and the command layer
// refuses it again before a line is formed.

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommandTextCheck.h"
#include "VexcfgCommand.h"
#include "BlockServicesTestSupport.h"
#include "ServiceFixture.h"

using namespace Pegasus;
using namespace orvsmis;
using blocktest::P;

namespace {

// Names that a shell would read as more than one word, as quoting,
// substitution, redirection, a separator, a pattern or an option; and names
// outside the array's alphabet or length.
std::vector<std::string> hostileNames() {
    return {"a;touch CANARY", "a|touch CANARY", "a&&touch CANARY", "a&", "$(touch CANARY)", "${HOME}",
            "`touch CANARY`", "a\ntouch CANARY", "a\rb", "a>CANARY", "a<b", "a>>b", "two words", "tab\tname",
            "'quoted'", "\"quoted\"", "back\\slash", "star*", "what?", "[ab]", "~root", "#comment", "a!b",
            "a=b", "-newname", "--all", "caf\xc3\xa9", std::string("nul\0byte", 8), std::string(33, 'x'), "a,b",
            "a.b", "a:b", "(sub)", "{a,b}", "%s%n"};
}

TEST(HostileNames, NoneIsAnArrayName) {
    for (const std::string& name : hostileNames())
        EXPECT_FALSE(CommandTextCheck::IsArrayName(name)) << CommandTextCheck::Printable(name);
    for (const char* name : {"Pool0001", "db_log-2", "x", "a/b", "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345"})
        EXPECT_TRUE(CommandTextCheck::IsArrayName(name)) << name;
}

// A stand-in Vexcfg first on PATH writes each call into a file. Through the
// real shell the module uses, a plain name reaches it; no hostile name does,
// and nothing a hostile name would have done happened.
TEST(HostileNames, NoneReachesTheShell) {
    blocktest::ModelSettings();
    char pattern[] = "/tmp/blocksvc-shell-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    const std::string dir = pattern;
    const std::string calls = dir + "/calls";
    {
        std::ofstream script((dir + "/Vexcfg").c_str());
        script << "#!/bin/sh\necho \"$@\" >> '" << calls << "'\n"
               << "echo '<?xml version=\"1.0\"?><REQUEST><CMD_REQUEST><RETURN_CODE>0</RETURN_CODE>"
                  "</CMD_REQUEST></REQUEST>'\n";
    }
    ::chmod((dir + "/Vexcfg").c_str(), 0755);
    const std::string oldPath = ::getenv("PATH") == nullptr ? "" : ::getenv("PATH");
    ::setenv("PATH", (dir + ":" + oldPath).c_str(), 1);
    char cwd[4096];
    const std::string oldCwd = ::getcwd(cwd, sizeof cwd) != nullptr ? cwd : "/tmp";
    ASSERT_EQ(::chdir(dir.c_str()), 0);
    blocktest::SetConfig("Test", "CommandType", "Local");
    blocktest::SetConfig("Test", "UnifyAuthority", "false");

    {
        VexcfgCommand control;
        EXPECT_TRUE(control.NickLdName("0001", "plain_name"));
    }
    std::ifstream first(calls.c_str());
    std::string line;
    ASSERT_TRUE(std::getline(first, line)) << "the stand-in tool was not reached at all";
    EXPECT_EQ(line, "nickname -ldn 0001h -newname :plain_name");
    ::unlink(calls.c_str());

    for (const std::string& name : hostileNames()) {
        SCOPED_TRACE(CommandTextCheck::Printable(name));
        VexcfgCommand pool;
        EXPECT_FALSE(pool.NickPoolName("0001", name));
        VexcfgCommand ld;
        EXPECT_FALSE(ld.NickLdName("0001", name));
        VexcfgCommand sv;
        EXPECT_FALSE(sv.GenerationAdd("0005", "0001", name, 1));
    }
    struct stat info;
    EXPECT_NE(::stat(calls.c_str(), &info), 0) << "a hostile name reached the tool";
    EXPECT_NE(::stat((dir + "/CANARY").c_str(), &info), 0) << "a hostile name ran a command";

    ASSERT_EQ(::chdir(oldCwd.c_str()), 0);
    ::setenv("PATH", oldPath.c_str(), 1);
    if (::system(("rm -rf '" + dir + "'").c_str()) != 0) {
    }
}

class HostileNamesAtTheService : public blocktest::ServiceFixture {};

// Every method that carries a name answers 5 and makes no job, and claims
// no disk.
TEST_F(HostileNamesAtTheService, RefusedWithFiveAndNoJob) {
    for (const std::string& name : hostileNames()) {
        SCOPED_TRACE(CommandTextCheck::Printable(name));
        const String text(name.c_str(), static_cast<Uint32>(name.size()));
        Array<CIMParamValue> createLd;
        createLd.append(P("ElementName", CIMValue(text)));
        createLd.append(P("ElementType", CIMValue(Uint16(2))));
        createLd.append(P("Size", CIMValue(Uint64(1 * GiB))));
        createLd.append(P("InPool", CIMValue(pool)));
        blocktest::Outcome outcome = Call("CreateOrModifyElementFromStoragePool", createLd);
        EXPECT_EQ(outcome.result, 5u);
        EXPECT_EQ(outcome.out.size(), 0u);

        Array<CIMParamValue> rename;
        rename.append(P("ElementName", CIMValue(text)));
        rename.append(P("ElementType", CIMValue(Uint16(2))));
        rename.append(P("TheElement", CIMValue(volume)));
        EXPECT_EQ(Call("CreateOrModifyElementFromStoragePool", rename).result, 5u);

        Array<CIMParamValue> createPool;
        createPool.append(P("ElementName", CIMValue(text)));
        createPool.append(P("Goal", CIMValue(raid1Goal)));
        createPool.append(P("Size", CIMValue(Uint64(10 * GiB))));
        createPool.append(P("InPools", CIMValue(Array<String>(1, primordial.toString()))));
        EXPECT_EQ(Call("CreateOrModifyStoragePool", createPool).result, 5u);

        Array<CIMParamValue> renamePool;
        renamePool.append(P("ElementName", CIMValue(text)));
        renamePool.append(P("Pool", CIMValue(pool)));
        EXPECT_EQ(Call("CreateOrModifyStoragePool", renamePool).result, 5u);

        EXPECT_EQ(Queued(), 0);
    }
    std::list<orvsmis::structPDInfo*> free;
    orvsmis::PDmanager::Instance()->GetPdListByType("SAS", free);
    EXPECT_EQ(free.size(), 7u) << "a refused call kept disks claimed";
}

// The configured replacements apply before the check: a blank that the
// list turns into "_" is fine, a "_" that it turns into ";" is not.
TEST_F(HostileNamesAtTheService, ReplacementsComeBeforeTheCheck) {
    Array<CIMParamValue> in;
    in.append(P("ElementType", CIMValue(Uint16(2))));
    in.append(P("Size", CIMValue(Uint64(1 * GiB))));
    in.append(P("InPool", CIMValue(pool)));
    in.append(P("ElementName", CIMValue(String("db log"))));
    orvsmis::Singleton<orvsmis::ConfigManager>::Instance()->SetConfigValue(
        "smis", "replacementCharListOfLDName", std::list<std::string>(1, " _"));
    EXPECT_EQ(Call("CreateOrModifyElementFromStoragePool", in).result, 4096u);
    EXPECT_EQ(Queued(), 1);

    in[3] = P("ElementName", CIMValue(String("db_log")));
    orvsmis::Singleton<orvsmis::ConfigManager>::Instance()->SetConfigValue(
        "smis", "replacementCharListOfLDName", std::list<std::string>(1, "_;"));
    EXPECT_EQ(Call("CreateOrModifyElementFromStoragePool", in).result, 5u);
    EXPECT_EQ(Queued(), 1);
}

}  // namespace
