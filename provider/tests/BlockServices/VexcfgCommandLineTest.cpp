// The exact lines of the configuration tool, and the values that never
// make it into a line.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CreateLdJobDetail.h"
#include "CreatePoolJobDetail.h"
#include "DeleteLdJobDetail.h"
#include "DeletePoolJobDetail.h"
#include "ModifyLdJobDetail.h"
#include "ModifyPoolJobDetail.h"
#include "ResultInfo.h"
#include "VexcfgCommand.h"
#include "BlockServicesTestSupport.h"

using namespace orvsmis;
using blocktest::RecordingCommandImpl;

namespace {

const unsigned long long MiB = 1024ULL * 1024ULL;
const unsigned long long GiB = 1024ULL * MiB;

struct Line {
    const char* what;
    std::function<bool(VexcfgCommand&)> step;
    const char* expected;  // null: nothing may run
};

CreatePoolDetailArgs bindArgs(const char* type, int raid, const char* raidText, int basePd, unsigned long long capacity) {
    CreatePoolDetailArgs a;
    a.poolType = type;
    a.poolNumber = "0002";
    a.poolName = "Gold_1";
    a.raidCode = raid;
    a.raidText = raidText;
    a.basePd = basePd;
    a.pdg = "00";
    a.pdn = "0ch,0dh";
    a.capacity = capacity;
    return a;
}

ModifyPoolDetailArgs expandArgs(const char* type, unsigned long long capacity) {
    ModifyPoolDetailArgs a;
    a.poolType = type;
    a.poolNumber = "0001";
    a.rebuild = "on";
    a.pdg = "01";
    a.pdn = "10h";
    a.capacity = capacity;
    return a;
}

CreateLdDetailArgs ldArgs(unsigned long long size, int threshold) {
    CreateLdDetailArgs a;
    a.poolNumber = "0001";
    a.ldNumber = "0010";
    a.size = size;
    a.threshold = threshold;
    return a;
}

class VexcfgLines : public ::testing::Test {
protected:
    void SetUp() override { blocktest::ModelSettings(); }

    // Runs one step on a recording command: its line, or "" when nothing ran.
    std::string Run(const std::function<bool(VexcfgCommand&)>& step, bool* result = nullptr) {
        auto lines = std::make_shared<std::vector<std::string>>();
        VexcfgCommand command(new RecordingCommandImpl(lines));
        bool ok = step(command);
        if (result != nullptr) *result = ok;
        EXPECT_LE(lines->size(), 1u);
        return lines->empty() ? std::string() : lines->front();
    }
};

TEST_F(VexcfgLines, EveryStepWritesItsExactLine) {
    DeletePoolDetailArgs unbind;
    unbind.poolNumber = "0003";
    ModifyLdDetailArgs grow;
    grow.ldNumber = "001f";
    grow.size = 2048 * MiB + 5;
    DeleteLdDetailArgs ldUnbind;
    ldUnbind.ldNumber = "0020";

    const Line lines[] = {
        {"RAID1 bind: two blanks before -pdg",
         [](VexcfgCommand& c) { return c.PoolBind(bindArgs("dynamic", 2, "1", 2, 0)); },
         "Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname Gold_1 -raid 1  -pdg 00h -pdn 0ch,0dh"},
        {"RAID-TM bind has no -basepd",
         [](VexcfgCommand& c) { return c.PoolBind(bindArgs("dynamic", 10, "TM", 3, 0)); },
         "Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname Gold_1 -raid TM  -pdg 00h -pdn 0ch,0dh"},
        {"RAID5 bind names its base",
         [](VexcfgCommand& c) { return c.PoolBind(bindArgs("dynamic", 6, "5", 5, 0)); },
         "Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname Gold_1 -raid 5  -basepd 5  -pdg 00h -pdn 0ch,0dh"},
        {"virtual RAID6 bind: capacity in whole GiB",
         [](VexcfgCommand& c) { return c.PoolBind(bindArgs("virtual", 8, "6", 6, 100 * GiB + GiB / 2)); },
         "Vexcfg poolbind -type virtual -poolnumber 0002h -poolname Gold_1 -raid 6  -basepd 6  -pdg 00h -pdn "
         "0ch,0dh -capacity 100"},
        {"pool expansion", [](VexcfgCommand& c) { return c.PoolExpand(expandArgs("dynamic", 0)); },
         "Vexcfg poolexpand -rebuild on -poolnumber 0001h -pdg 01h -pdn 10h"},
        {"virtual capacity expansion",
         [](VexcfgCommand& c) { return c.VirtualPoolCapacityExpand(expandArgs("virtual", 300 * GiB)); },
         "Vexcfg poolexpand -rebuild off -poolnumber 0001h -capacity 300"},
        {"capacity expansion of a dynamic pool runs nothing",
         [](VexcfgCommand& c) { return c.VirtualPoolCapacityExpand(expandArgs("dynamic", 300 * GiB)); }, nullptr},
        {"pool unbind", [&unbind](VexcfgCommand& c) { return c.PoolUnbind(unbind); },
         "Vexcfg poolunbind -poolnumber 0003h"},
        {"LD bind in MiB", [](VexcfgCommand& c) { return c.LdBind(ldArgs(300 * MiB, 0)); },
         "Vexcfg ldbind -poolnumber 0001h -ldn 0010h -capacity 300 -unit mb -mode exc"},
        {"LD bind with threshold", [](VexcfgCommand& c) { return c.LdBind(ldArgs(1024 * MiB, 80)); },
         "Vexcfg ldbind -poolnumber 0001h -ldn 0010h -capacity 1024 -unit mb -mode exc -thr 80"},
        {"LD bind below 1 MiB sends 0", [](VexcfgCommand& c) { return c.LdBind(ldArgs(MiB - 1, 0)); },
         "Vexcfg ldbind -poolnumber 0001h -ldn 0010h -capacity 0 -unit mb -mode exc"},
        {"LD expansion", [&grow](VexcfgCommand& c) { return c.LdExpand(grow); },
         "Vexcfg ldexpand -ldn 001fh -capacity 2048 -unit mb"},
        {"LD unbind", [&ldUnbind](VexcfgCommand& c) { return c.LdUnbind(ldUnbind); }, "Vexcfg ldunbind -ldn 0020h"},
        {"pool name", [](VexcfgCommand& c) { return c.NickPoolName("0001", "Silver-2"); },
         "Vexcfg nickname -poolnumber 0001h -newname Silver-2"},
        {"LD name: colon before the name", [](VexcfgCommand& c) { return c.NickLdName("0010", "db/log_1"); },
         "Vexcfg nickname -ldn 0010h -newname :db/log_1"},
        {"iSCSI LD set", [](VexcfgCommand& c) { return c.AddLdset("LX:host1", "ISCSI"); },
         "Vexcfg addldset -ldset LX:host1 -type iscsi"},
        {"LD into a set with LUN", [](VexcfgCommand& c) { return c.AddLdsetId("LX:host1", "0010h", "3"); },
         "Vexcfg addldsetld -ldset LX:host1 -ldn 0010h -lun 3h"},
        {"LD into a set, LUN chosen", [](VexcfgCommand& c) { return c.AddLdsetId("LX:host1", "10", ""); },
         "Vexcfg addldsetld -ldset LX:host1 -ldn 10"},
        {"WWPN path", [](VexcfgCommand& c) { return c.AddLdsetPath("LX:host1", "", "1000-0000-c912-3456"); },
         "Vexcfg addldsetpath -ldset LX:host1 -path 1000-0000-c912-3456"},
        {"port path", [](VexcfgCommand& c) { return c.AddLdsetPath("LX:host1", "port", "00h-01h"); },
         "Vexcfg addldsetpath -ldset LX:host1 -pathtype port -path 00h-01h"},
        {"initiator",
         [](VexcfgCommand& c) { return c.AddLdsetInitiator("LX:host1", "iqn.1994-05.com.example:host1"); },
         "Vexcfg addldsetinitiator -ldset LX:host1 -initiatorname iqn.1994-05.com.example:host1"},
        {"set removal", [](VexcfgCommand& c) { return c.DeleteLdset("LX:host1"); }, "Vexcfg delldset -ldset LX:host1"},
        {"LD out of a set", [](VexcfgCommand& c) { return c.DeleteLdsetLd("LX:host1", "0010h"); },
         "Vexcfg delldsetld -ldset LX:host1 -ldn 0010h"},
        {"all LDs out of a set", [](VexcfgCommand& c) { return c.DeleteLdsetLdAll("LX:host1"); },
         "Vexcfg delldsetld -ldset LX:host1 -all"},
        {"path out of a set", [](VexcfgCommand& c) { return c.DeleteLdsetPath("LX:host1", "wwpn", "1000-0000-c912-3456"); },
         "Vexcfg delldsetpath -ldset LX:host1 -pathtype wwpn -path 1000-0000-c912-3456"},
        {"initiator out of a set: leading and double blank",
         [](VexcfgCommand& c) { return c.DeleteLdsetInitiator("LX:host1", "iqn.1994-05.com.example:host1"); },
         " Vexcfg  delldsetinitiator -ldset LX:host1 -initiatorname iqn.1994-05.com.example:host1"},
        {"reserve area bind", [](VexcfgCommand& c) { return c.SraBind("0001", 512 * MiB); },
         "Vexcfg srabind -poolnumber 0001h -capacity 512 -capunit mb"},
        {"reserve area unbind", [](VexcfgCommand& c) { return c.SraUnbind("0001"); },
         "Vexcfg sraunbind -poolnumber 0001h"},
        {"reserve area expansion", [](VexcfgCommand& c) { return c.SraExpand("0001", 1024 * MiB); },
         "Vexcfg sraexpand -poolnumber 0001h -capacity 1024 -capunit mb"},
        {"generations", [](VexcfgCommand& c) { return c.GenerationAdd("0005", "0001", "snap_a", 2); },
         "Vexcfg generationadd -bvn 0005h -poolnumber 0001h -count 2 -svname snap_a"},
        {"generation removal", [](VexcfgCommand& c) { return c.GenerationDel("0005", 1); },
         "Vexcfg generationdel -bvn 0005h -count 1"},
        {"set rename", [](VexcfgCommand& c) { return c.ChangeLdsetName("LX:host1", "WN:host2"); },
         "Vexcfg chgldsetname -oldldset LX:host1 -newldset WN:host2"},
    };
    for (const Line& line : lines) {
        SCOPED_TRACE(line.what);
        bool ok = false;
        EXPECT_EQ(Run(line.step, &ok), line.expected == nullptr ? "" : line.expected);
        EXPECT_TRUE(ok);
    }
}

TEST_F(VexcfgLines, FcOrSasSetFollowsTheArraysProtocol) {
    RawDataCenter::Instance()->Destroy();
    EXPECT_EQ(Run([](VexcfgCommand& c) { return c.AddLdset("WN:host1", "FC/SAS"); }),
              "Vexcfg addldset -ldset WN:host1 -type fc");
    ArrayRawData* array = new ArrayRawData();
    array->AddRef();
    array->name = array->arrayId = array->worldWideName = "2000000991000001";
    array->protocol = "SAS";
    RawDataCenter::Instance()->AddData(array, array->name);
    EXPECT_EQ(Run([](VexcfgCommand& c) { return c.AddLdset("WN:host1", "FC/SAS"); }),
              "Vexcfg addldset -ldset WN:host1 -type sas");
    RawDataCenter::Instance()->Destroy();
    array->Release();
}

// A value outside the array's forms never becomes a line: the step is false
// and its error names the value.
TEST_F(VexcfgLines, ValuesOutsideTheArraysFormsAreRefusedUnrun) {
    const std::vector<std::function<bool(VexcfgCommand&)>> steps = {
        [](VexcfgCommand& c) { return c.NickPoolName("0001", "a b"); },
        [](VexcfgCommand& c) { return c.NickPoolName("00;1", "name"); },
        [](VexcfgCommand& c) { return c.NickLdName("0010", ""); },
        [](VexcfgCommand& c) { return c.NickLdName("0010", std::string(33, 'x')); },
        [](VexcfgCommand& c) {
            CreatePoolDetailArgs a = bindArgs("dynamic", 2, "1", 2, 0);
            a.pdn = "0ch,0dh;reboot";
            return c.PoolBind(a);
        },
        [](VexcfgCommand& c) {
            CreatePoolDetailArgs a = bindArgs("dynamic", 2, "1", 2, 0);
            a.poolType = "dynamic -capacity 1";
            return c.PoolBind(a);
        },
        [](VexcfgCommand& c) { return c.PoolBind(bindArgs("virtual", 2, "1", 2, GiB - 1)); },
        [](VexcfgCommand& c) {
            ModifyPoolDetailArgs a = expandArgs("dynamic", 0);
            a.pdg = "";
            return c.PoolExpand(a);
        },
        [](VexcfgCommand& c) { return c.AddLdset("host1", "ISCSI"); },
        [](VexcfgCommand& c) { return c.AddLdset("LX:host1", "NVMe"); },
        [](VexcfgCommand& c) { return c.AddLdsetInitiator("LX:host1", "iqn.x y"); },
        [](VexcfgCommand& c) { return c.AddLdsetPath("LX:host1", "", "1000>/tmp/x"); },
        [](VexcfgCommand& c) { return c.AddLdsetId("LX:host1", "10", "1|2"); },
        [](VexcfgCommand& c) { return c.GenerationAdd("0005", "0001", "snap", 0); },
        [](VexcfgCommand& c) { return c.ChangeLdsetName("LX:host1", "WN:a&b"); },
    };
    for (size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE(i);
        auto lines = std::make_shared<std::vector<std::string>>();
        VexcfgCommand command(new RecordingCommandImpl(lines));
        EXPECT_FALSE(steps[i](command));
        EXPECT_TRUE(lines->empty());
        EXPECT_TRUE(command.GetCommandLine().empty());
        ResultInfo info;
        command.GetError(info);
        EXPECT_FALSE(info.success);
        EXPECT_EQ(info.code, "00020");
        EXPECT_NE(info.message.find("not a value the array takes"), std::string::npos) << info.message;
    }
}

}  // namespace
