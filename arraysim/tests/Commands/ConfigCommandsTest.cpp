// Every configuration line as the module writes it: one table of lines the
// array accepts, each with the change it must make, and one of lines it
// refuses, each with the reason. A refused line leaves the state untouched.

#include <gtest/gtest.h>

#include <functional>

#include "CommandTestSupport.h"
#include "PoolCommands.h"

using namespace arraysim;
using arraysim_test::ApplyLine;
using arraysim_test::SmallArray;

namespace {

constexpr std::uint64_t kMiB = 1024ULL * 1024;
constexpr std::uint64_t kGiB = 1024 * kMiB;
constexpr std::uint64_t kDisk = 1200000000000ULL;  // the small template's disks

const Disk& disk(const ArrayState& s, unsigned number) { return *s.FindDisk(0, number); }

const LdSet& set(ArrayState& s, const std::string& platform, const std::string& name) {
    const LdSet* found = s.FindLdSet(platform, name);
    if (found == nullptr) throw std::runtime_error("no LD set " + platform + ":" + name);
    return *found;
}

// Port 00-01 in port mode; port 01-00 speaking iSCSI.
void portModeAndIscsi(ArrayState& s) {
    s.FindPort(0, 1)->mode = "Port";
    s.FindPort(1, 0)->protocol = "iSCSI";
}

struct Good {
    const char* what;
    std::function<void(ArrayState&)> prepare;  // may be empty
    std::vector<std::string> lines;
    std::function<void(ArrayState&)> check;
};

const std::vector<Good>& goodLines() {
    static const std::vector<Good> table = {
        {"poolbind RAID6 with its -basepd between double blanks", nullptr,
         {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname NewPool -raid 6  -basepd 6  -pdg 00h -pdn "
          "000ch,000dh,000eh,000fh,0010h,0011h"},
         [](ArrayState& s) {
             const Pool* p = s.FindPool(2);
             ASSERT_NE(p, nullptr);
             EXPECT_EQ(p->name, "NewPool");
             EXPECT_EQ(p->raidType, "RAID6/60(4+PQ)");
             EXPECT_EQ(p->capacity, kDisk * 6 / 6 * 4 / kGiB * kGiB);
             EXPECT_EQ(p->pdType, "SAS");
             EXPECT_EQ(p->disks.size(), 6u);
             EXPECT_EQ(p->disks.front(), "00-000C");
             EXPECT_EQ(disk(s, 0x11).poolNumber, 2);
             EXPECT_EQ(disk(s, 0x11).classification, "pool");
             EXPECT_EQ(disk(s, 0x12).classification, "not set");
         }},
        {"poolbind RAID5 of two bases", nullptr,
         {"Vexcfg poolbind -type dynamic -poolnumber 0005h -poolname R5 -raid 5  -basepd 3  -pdg 00h -pdn "
          "0ch,0dh,0eh,0fh,10h,11h"},
         [](ArrayState& s) {
             EXPECT_EQ(s.FindPool(5)->raidType, "RAID5/50(2+P)");
             EXPECT_EQ(s.FindPool(5)->numberOfRaid5s, 2);
             EXPECT_EQ(s.FindPool(5)->capacity, kDisk * 6 / 3 * 2 / kGiB * kGiB);
         }},
        {"virtual RAID1 pool (two blanks before -pdg), grown by disks and by capacity", nullptr,
         {"Vexcfg poolbind -type virtual -poolnumber 0003h -poolname Thin -raid 1  -pdg 00h -pdn 0012h,0013h -capacity 500",
          "Vexcfg poolexpand -rebuild off -poolnumber 0003h -pdg 00h -pdn 0014h,0015h",
          "Vexcfg poolexpand -rebuild off -poolnumber 0003h -capacity 800"},
         [](ArrayState& s) {
             const Pool* p = s.FindPool(3);
             EXPECT_EQ(p->poolType, "virtual");
             EXPECT_EQ(p->raidType, "RAID1/10");
             EXPECT_EQ(p->capacity, 800 * kGiB);
             EXPECT_EQ(p->actualCapacity, kDisk * 4 / 2 / kGiB * kGiB);
             EXPECT_EQ(p->disks.size(), 4u);
         }},
        {"poolexpand with rebuild spreads RAID6 over one more disk", nullptr,
         {"Vexcfg poolexpand -rebuild on -poolnumber 0000h -pdg 00h -pdn 0016h"},
         [](ArrayState& s) {
             EXPECT_EQ(s.FindPool(0)->disks.size(), 7u);
             EXPECT_EQ(s.FindPool(0)->capacity, kDisk * 7 / 6 * 4 / kGiB * kGiB);
         }},
        {"poolunbind gives the disks back", nullptr,
         {"Vexcfg poolbind -type dynamic -poolnumber 0004h -poolname Tm -raid TM  -pdg 00h -pdn 0ch,0dh,0eh",
          "Vexcfg poolunbind -poolnumber 0004h"},
         [](ArrayState& s) {
             EXPECT_EQ(s.FindPool(4), nullptr);
             EXPECT_EQ(disk(s, 0xc).classification, "not set");
             EXPECT_EQ(disk(s, 0xc).poolNumber, -1);
         }},
        {"ldbind, ldexpand, nickname and ldunbind keep the pool's arithmetic", nullptr,
         {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 2048 -unit mb -mode exc",
          "Vexcfg ldexpand -ldn 0100h -capacity 4096 -unit mb", "Vexcfg nickname -ldn 0100h -newname :Data_01",
          "Vexcfg ldbind -poolnumber 0000h -ldn 0101h -capacity 1 -unit mb -mode exc", "Vexcfg ldunbind -ldn 0101h"},
         [](ArrayState& s) {
             const LogicalDisk* ld = s.FindLd(0x100);
             ASSERT_NE(ld, nullptr);
             EXPECT_EQ(ld->capacity, 4096 * kMiB);
             EXPECT_EQ(ld->name, "Data_01");
             EXPECT_EQ(ld->rplAttribute, "IV");
             EXPECT_EQ(s.FindLd(0x101), nullptr);
             const ArrayState before = SmallArray();
             EXPECT_EQ(s.FindPool(0)->usedCapacity, before.FindPool(0)->usedCapacity + 4096 * kMiB);
         }},
        {"ldbind with a threshold in a virtual pool", nullptr,
         {"Vexcfg poolbind -type virtual -poolnumber 0003h -poolname Thin -raid 1  -pdg 00h -pdn 0012h,0013h -capacity 500",
          "Vexcfg ldbind -poolnumber 0003h -ldn 0200h -capacity 1024 -unit mb -mode exc -thr 80"},
         [](ArrayState& s) { EXPECT_EQ(s.FindLd(0x200)->threshold, "80"); }},
        {"nickname of a pool", nullptr, {"Vexcfg nickname -poolnumber 0001h -newname Gold/1"},
         [](ArrayState& s) { EXPECT_EQ(s.FindPool(1)->name, "Gold/1"); }},
        {"a new FC set with LDs, with and without LUN, and a WWPN path", nullptr,
         {"Vexcfg addldset -ldset LX:LDSet-SMIS-0000 -type fc", "Vexcfg addldsetld -ldset LX:LDSet-SMIS-0000 -ldn 0001h -lun 0005h",
          "Vexcfg addldsetld -ldset LX:LDSet-SMIS-0000 -ldn 0003h",
          "Vexcfg addldsetpath -ldset LX:LDSet-SMIS-0000 -path 0123-4567-89ab-cdef"},
         [](ArrayState& s) {
             const LdSet& created = set(s, "LX", "LDSet-SMIS-0000");
             EXPECT_EQ(created.kind, "fc");
             ASSERT_EQ(created.luns.size(), 2u);
             EXPECT_EQ(created.luns[0].lun, 0u);  // the lowest free LUN, listed first
             EXPECT_EQ(created.luns[0].ldn, 3u);
             EXPECT_EQ(created.luns[1].lun, 5u);
             EXPECT_EQ(created.paths, std::vector<std::string>{"0123-4567-89ab-cdef"});
         }},
        {"an LD without LUN takes the first gap", nullptr, {"Vexcfg addldsetld -ldset LX:HOST0000 -ldn 0003h"},
         [](ArrayState& s) { EXPECT_EQ(set(s, "LX", "HOST0000").luns.back().lun, 3u); }},
        {"port paths are added and removed by port number", portModeAndIscsi,
         {"Vexcfg addldsetpath -ldset LX:HOST0000 -pathtype port -path 00h-01h"},
         [](ArrayState& s) {
             EXPECT_EQ(set(s, "LX", "HOST0000").paths.back(), "00-01(HostPort00-01)");
             ApplyLine(s, "Vexcfg delldsetpath -ldset LX:HOST0000 -pathtype port -path 00h-01h");
             EXPECT_EQ(set(s, "LX", "HOST0000").paths.size(), 2u);
         }},
        {"an iSCSI set with an initiator, removed by the line with its odd blanks", portModeAndIscsi,
         {"Vexcfg addldset -ldset WN:Iscsi1 -type iscsi",
          "Vexcfg addldsetinitiator -ldset WN:Iscsi1 -initiatorname iqn.1994-05.com.example:host9",
          "Vexcfg addldsetinitiator -ldset WN:Iscsi1 -initiatorname iqn.1994-05.com.example:host10",
          " Vexcfg  delldsetinitiator -ldset WN:Iscsi1 -initiatorname iqn.1994-05.com.example:host9"},
         [](ArrayState& s) {
             const LdSet& created = set(s, "WN", "Iscsi1");
             EXPECT_EQ(created.kind, "iscsi");
             EXPECT_EQ(created.targetMode, "single");
             EXPECT_EQ(created.initiators, std::vector<std::string>{"iqn.1994-05.com.example:host10"});
         }},
        {"delldsetld one and all, then delldset", nullptr,
         {"Vexcfg delldsetld -ldset WN:HOST0001 -ldn 0005h", "Vexcfg delldsetpath -ldset WN:HOST0001 -pathtype wwpn -path 2100-0098-88a7-0002",
          "Vexcfg delldsetld -ldset LX:HOST0000 -all", "Vexcfg delldset -ldset LX:HOST0000"},
         [](ArrayState& s) {
             EXPECT_EQ(s.FindLdSet("LX", "HOST0000"), nullptr);
             const LdSet& rest = set(s, "WN", "HOST0001");
             EXPECT_EQ(rest.luns.size(), 2u);
             EXPECT_EQ(rest.paths.size(), 1u);
             // The LD left every set and can go now.
             ApplyLine(s, "Vexcfg ldunbind -ldn 0004h");
             EXPECT_EQ(s.FindLd(4), nullptr);
         }},
        {"chgldsetname may change the platform", nullptr, {"Vexcfg chgldsetname -oldldset LX:HOST0000 -newldset WN:Renamed"},
         [](ArrayState& s) {
             EXPECT_EQ(s.FindLdSet("LX", "HOST0000"), nullptr);
             EXPECT_EQ(set(s, "WN", "Renamed").luns.size(), 3u);
         }},
        {"reserve area, generations and their removal", nullptr,
         {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 2048 -unit mb -mode exc",
          "Vexcfg nickname -ldn 0100h -newname :Base", "Vexcfg srabind -poolnumber 0000h -capacity 20480 -capunit mb",
          "Vexcfg sraexpand -poolnumber 0000h -capacity 1024 -capunit mb",
          "Vexcfg generationadd -bvn 0100h -poolnumber 0000h -count 1 -svname Snap1",
          "Vexcfg generationadd -bvn 0100h -poolnumber 0000h -count 2 -svname More"},
         [](ArrayState& s) {
             const SnapshotBase* base = s.FindSnapshotBase(0x100);
             ASSERT_NE(base, nullptr);
             ASSERT_EQ(base->generations.size(), 3u);
             EXPECT_EQ(base->generations[2].generation, 3);
             EXPECT_EQ(base->generations[0].snapState, "snap/inactive");
             const LogicalDisk* sv = s.FindLd(base->generations[0].number);
             ASSERT_NE(sv, nullptr);
             EXPECT_EQ(sv->name, "Snap1");
             EXPECT_EQ(sv->snapshotAttribute, "SV");
             EXPECT_EQ(sv->capacity, 2048 * kMiB);
             EXPECT_NE(s.FindLdByName("More_3"), nullptr);
             EXPECT_EQ(s.FindLd(0x100)->snapshotAttribute, "BV");
             ApplyLine(s, "Vexcfg generationdel -bvn 0100h -count 3");
             EXPECT_EQ(s.FindSnapshotBase(0x100), nullptr);
             EXPECT_EQ(s.FindLdByName("Snap1"), nullptr);
             EXPECT_EQ(s.FindLd(0x100)->snapshotAttribute, "---");
             ApplyLine(s, "Vexcfg sraunbind -poolnumber 0000h");
             ApplyLine(s, "Vexcfg ldunbind -ldn 0100h");
             EXPECT_EQ(s.FindPool(0)->usedCapacity, SmallArray().FindPool(0)->usedCapacity);
         }},
    };
    return table;
}

TEST(ConfigCommandsTest, GoodLinesMakeTheirChange) {
    for (const Good& row : goodLines()) {
        SCOPED_TRACE(row.what);
        ArrayState state = SmallArray();
        if (row.prepare) row.prepare(state);
        for (const std::string& line : row.lines) {
            try {
                EXPECT_FALSE(ApplyLine(state, line).empty());
            } catch (const std::exception& e) {
                ADD_FAILURE() << line << " was refused: " << e.what();
            }
        }
        row.check(state);
    }
}

struct Bad {
    std::string line;
    CommandError::Kind kind;
    const char* fragment;
};

const std::vector<Bad>& badLines() {
    using K = CommandError::Kind;
    static const std::vector<Bad> table = {
        {"Vexcfg", K::Syntax, "sub-command is required"},
        {"Vexcfg ldmake -ldn 0100h", K::Syntax, "unknown sub-command \"ldmake\""},
        {"Vexcfg ldbind -poolnumber 0000 -ldn 0100h -capacity 10 -unit mb -mode exc", K::Syntax, "suffix h"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 10 -unit gb -mode exc", K::Syntax, "-unit takes mb"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 10 -unit mb", K::Syntax, "-mode is required"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 0 -unit mb -mode exc", K::Rule, "at least 1 MB"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 99999999 -unit mb -mode exc", K::Capacity, "free"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 0001h -capacity 10 -unit mb -mode exc", K::Exists, "exists already"},
        {"Vexcfg ldbind -poolnumber 0009h -ldn 0100h -capacity 10 -unit mb -mode exc", K::NotFound, "pool 0009h"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 0100h -capacity 10 -unit mb -mode exc -thr 80", K::Rule, "virtual pools only"},
        {"Vexcfg ldbind -poolnumber 0000h -ldn 2000h -capacity 10 -unit mb -mode exc", K::Syntax, "to 1fffh"},
        {"Vexcfg ldexpand -ldn 0001h -capacity 10 -unit mb", K::Rule, "must make it larger"},
        {"Vexcfg ldexpand -ldn 000Eh -capacity 9999999 -unit mb", K::InUse, "replication pair"},
        {"Vexcfg ldunbind -ldn 0000h", K::InUse, "LD set LX:HOST0000"},
        {"Vexcfg ldunbind -ldn 000Dh", K::InUse, "replication pair (RV)"},
        {"Vexcfg ldunbind -ldn 0009h", K::InUse, "snapshot base"},
        {"Vexcfg ldunbind -ldn 000Bh", K::InUse, "snapshot generation"},
        {"Vexcfg ldunbind -ldn 0100h", K::NotFound, "does not exist"},
        {"Vexcfg nickname -ldn 0001h -newname Data", K::Syntax, "\":name\""},
        {"Vexcfg nickname -ldn 0001h -newname :ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456", K::Rule, "longer than 32"},
        {"Vexcfg nickname -ldn 0001h -newname :bad.name", K::Rule, "holds a character"},
        {"Vexcfg nickname -ldn 0001h -newname :LD0002", K::Exists, "in use by logical disk 0002h"},
        {"Vexcfg nickname -poolnumber 0000h -newname Pool0001", K::Exists, "in use by pool 0001h"},
        {"Vexcfg nickname -poolnumber 0000h -ldn 0001h -newname X", K::Syntax, "exclude each other"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname P -raid 6  -basepd 6  -pdg 00h -pdn 0ch,0dh,0eh,0fh,10h",
         K::Rule, "multiple of 6 disks"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname P -raid 5  -basepd 4  -pdg 00h -pdn 0ch,0dh,0eh,0fh", K::Rule,
         "3, 5 or 9"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname P -raid 1  -pdg 00h -pdn 00h,01h", K::InUse, "not free"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname P -raid 1  -pdg 00h -pdn 0ch,30h", K::NotFound,
         "00h-0030h does not exist"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0001h -poolname P -raid 1  -pdg 00h -pdn 0ch,0dh", K::Exists, "exists already"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname Pool0000 -raid 1  -pdg 00h -pdn 0ch,0dh", K::Exists, "in use"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname P -raid 1  -basepd 2  -pdg 00h -pdn 0ch,0dh", K::Syntax,
         "RAID5 and RAID6 only"},
        {"Vexcfg poolbind -type virtual -poolnumber 0002h -poolname P -raid 1  -pdg 00h -pdn 0ch,0dh", K::Syntax, "needs -capacity"},
        {"Vexcfg poolbind -type dynamic -poolnumber 0002h -poolname P -raid 10  -pdg 00h -pdn 0ch,0dh", K::Syntax, "-raid takes"},
        // A pool in the making expanded with no disk group ("-pdg h") names no disks the array could find.
        {"Vexcfg poolexpand -rebuild on -poolnumber 0000h -pdg h -pdn 0ch", K::Syntax, "suffix h"},
        {"Vexcfg poolexpand -rebuild off -poolnumber 0000h -pdg 00h -pdn 0ch", K::Rule, "multiple of 6"},
        {"Vexcfg poolexpand -rebuild off -poolnumber 0000h -capacity 900", K::Rule, "not virtual"},
        {"Vexcfg poolexpand -rebuild off -poolnumber 0000h", K::Syntax, "one of -pdn or -capacity"},
        {"Vexcfg poolunbind -poolnumber 0000h", K::InUse, "logical disks; unbind them first"},
        {"Vexcfg addldset -ldset LX:HOST0000 -type fc", K::Exists, "exists already"},
        {"Vexcfg addldset -ldset LX:New -type sas", K::Rule, "no SAS host ports"},
        {"Vexcfg addldset -ldset HOSTX -type fc", K::Rule, "<platform>:<name>"},
        {"Vexcfg addldset -ldset lx:HOSTX -type fc", K::Rule, "platform"},
        {"Vexcfg addldset -ldset LX:New -type scsi", K::Syntax, "-type takes fc, iscsi, sas"},
        {"Vexcfg addldsetld -ldset LX:HOST0000 -ldn 0003h -lun 0001h", K::InUse, "LUN 0001h"},
        {"Vexcfg addldsetld -ldset LX:HOST0000 -ldn 0004h", K::Exists, "as LUN 0001h"},
        {"Vexcfg addldsetld -ldset LX:NoSuch -ldn 0004h", K::NotFound, "LD set LX:NoSuch does not exist"},
        {"Vexcfg addldsetpath -ldset LX:HOST0000 -path 0123456789abcdef", K::Syntax, "xxxx-xxxx-xxxx-xxxx"},
        {"Vexcfg addldsetpath -ldset LX:HOST0000 -path 2100-0098-88A7-0002", K::InUse, "WN:HOST0001"},
        {"Vexcfg addldsetpath -ldset LX:HOST0000 -pathtype port -path 00h-00h", K::State, "WWN mode"},
        {"Vexcfg addldsetpath -ldset LX:HOST0000 -pathtype port -path 00-01", K::Syntax, "00h-01h"},
        {"Vexcfg addldsetpath -ldset LX:HOST0000 -pathtype wwpn -path 0123-4567-89ab-cdef", K::Syntax, "-pathtype takes port"},
        {"Vexcfg addldsetinitiator -ldset LX:HOST0000 -initiatorname iqn.1994-05.com.example:h", K::Rule, "not an iSCSI set"},
        {"Vexcfg addldsetinitiator -ldset LX:HOST0000 -initiatorname host1", K::Rule, "no iSCSI name"},
        {"Vexcfg delldset -ldset LX:HOST0000", K::InUse, "holds 3 logical disks"},
        {"Vexcfg delldsetld -ldset LX:HOST0000 -ldn 0001h", K::NotFound, "not in LD set LX:HOST0000"},
        {"Vexcfg delldsetld -ldset LX:HOST0000", K::Syntax, "one of -ldn or -all"},
        {"Vexcfg delldsetpath -ldset LX:HOST0000 -pathtype wwpn -path 0000-0000-0000-0000", K::NotFound, "is not in"},
        {" Vexcfg  delldsetinitiator -ldset LX:HOST0000 -initiatorname iqn.x", K::NotFound, "is not in"},
        {"Vexcfg chgldsetname -oldldset LX:HOST0000 -newldset WN:HOST0001", K::Exists, "exists already"},
        {"Vexcfg srabind -poolnumber 0001h -capacity 1024 -capunit mb", K::Exists, "reserve area already"},
        {"Vexcfg srabind -poolnumber 0000h -capacity 99999999 -capunit mb", K::Capacity, "free"},
        {"Vexcfg sraexpand -poolnumber 0000h -capacity 1024 -capunit mb", K::NotFound, "no snapshot reserve area"},
        {"Vexcfg sraunbind -poolnumber 0001h", K::InUse, "serves generations"},
        {"Vexcfg generationadd -bvn 0001h -poolnumber 0000h -count 1 -svname S", K::State, "no snapshot reserve area"},
        {"Vexcfg generationadd -bvn 000Ah -poolnumber 0001h -count 1 -svname S", K::Rule, "snapshot volume"},
        {"Vexcfg generationadd -bvn 0009h -poolnumber 0001h -count 15 -svname S", K::Limit, "16 at most"},
        {"Vexcfg generationadd -bvn 0009h -poolnumber 0001h -count 1 -svname LD0001", K::Exists, "in use"},
        {"Vexcfg generationdel -bvn 0009h -count 1", K::State, "delete snapshots first"},
        {"Vexcfg generationdel -bvn 0001h -count 1", K::NotFound, "no snapshot generations"},
        {"Vexsc_create -bv LD0009 -bvflg ld -sv LD0001 -svflg ld", K::Rule, "no generation of LD0009"},
        {"Vexsc_create -bv LD0009 -bvflg dev -sv LD000A -svflg ld", K::Syntax, "-bvflg takes ld"},
        {"Vexsc_delete -bv LD0001 -bvflg ld -sv LD000A -svflg ld", K::State, "no base volume"},
        {"Vexsc_restore -bv LD0009 -bvflg ld -sv Missing -svflg ld", K::NotFound, "no logical disk is named Missing"},
        {"Vexrc_pair -pair -mv LD0001 -mvflg ld  -rv LD0001 -rvflg ld", K::Rule, "with itself"},
        {"Vexrc_pair -pair -mv LD0001 -mvflg ld  -rv LD000F -rvflg ld", K::InUse, "RV of another pair"},
        {"Vexrc_pair -pair -mv LD000F -mvflg ld  -rv LD0001 -rvflg ld", K::InUse, "cannot be an MV"},
        {"Vexrc_pair -pair -mv LD0001 -mvflg ld  -rv LD0009 -rvflg ld", K::InUse, "snapshot volume"},
        {"Vexrc_pair -pair -unpair -mv LD000E -mvflg ld  -rv LD000F -rvflg ld", K::Syntax, "exclude each other"},
        {"Vexrc_pair -pair -mv LD0001 -mvflg ld  -rv LD0002 -rvflg ld -force all", K::Syntax, "-unpair only"},
        {"Vexrc_pair -unpair -mv LD000E -mvflg ld  -rv LD000F -rvflg ld", K::State, "rpl/sync; separate it first"},
        {"Vexrc_pair -unpair -mv LD000E -mvflg ld  -rv LD000F -rvflg ld -force lv", K::Syntax, "-force takes all, rv"},
        {"Vexrc_pair -unpair -mv LD0001 -mvflg ld  -rv LD0002 -rvflg ld", K::NotFound, "are no pair"},
        {"Vexrc_replicate  -mv LD000E -mvflg ld  -rv LD000F -rvflg ld -cpmode bg", K::State, "not separated"},
        {"Vexrc_replicate  -mv LD000C -mvflg ld  -rv LD000D -rvflg ld -cpmode semi", K::Syntax, "-cpmode takes bg, sync"},
        {"Vexrc_separate -mv LD000C -mvflg ld  -rv LD000D -rvflg ld", K::State, "separated already"},
        {"Vexrc_restore -mv LD000E -mvflg ld  -rv LD000F -rvflg ld -cpmode bg -mode protect", K::State, "not separated"},
        {"Vexrc_restore -mv LD000C -mvflg ld  -rv LD000D -rvflg ld -cpmode bg -mode fast", K::Syntax, "-mode takes protect"},
        {"Vexrc_change -resume -mv LD000E -mvflg ld  -rv LD000F -rvflg ld", K::State, "not suspended"},
        {"Vexrc_change -suspend -mv LD000C -mvflg ld  -rv LD000D -rvflg ld", K::State, "can be suspended"},
        {"Vexrc_rvmode  -rv LD000F -rvflg ld -rvacc ro", K::State, "only while separated"},
        {"Vexrc_rvmode  -rv LD0001 -rvflg ld -rvacc ro", K::NotFound, "RV of no pair"},
        {"Vexrc_rvmode  -rv LD000D -rvflg ld -rvacc none", K::Syntax, "-rvacc takes ro, rw"},
        {"Vexview -all", K::Syntax, "not a configuration tool"},
    };
    return table;
}

TEST(ConfigCommandsTest, BadLinesAreRefusedAndChangeNothing) {
    const nlohmann::json pristine = SmallArray();
    for (const Bad& row : badLines()) {
        SCOPED_TRACE(row.line);
        ArrayState state = SmallArray();
        try {
            ApplyLine(state, row.line);
            ADD_FAILURE() << "accepted";
        } catch (const CommandError& e) {
            EXPECT_EQ(static_cast<int>(e.GetKind()), static_cast<int>(row.kind)) << e.what();
            EXPECT_NE(std::string(e.what()).find(row.fragment), std::string::npos) << e.what();
        }
        // Every refusal above comes before the first change.
        EXPECT_EQ(nlohmann::json(state), pristine);
    }
}

TEST(ConfigCommandsTest, AccessControlOffMeansNoLdSets) {
    ArrayState state = SmallArray();
    state.identity.accessControl = false;
    for (const std::string line : {"Vexcfg addldset -ldset LX:New -type fc", "Vexcfg addldsetld -ldset LX:HOST0000 -ldn 0003h"}) {
        try {
            ApplyLine(state, line);
            ADD_FAILURE() << line << " accepted";
        } catch (const CommandError& e) {
            EXPECT_EQ(e.GetKind(), CommandError::Kind::State) << e.what();
        }
    }
}

TEST(ConfigCommandsTest, UsableCapacityFollowsTheRaidLayout) {
    const std::uint64_t disk = 100 * kGiB;
    EXPECT_EQ(PoolCommands::UsableBytes("RAID1/10", 4, disk), 200 * kGiB);
    EXPECT_EQ(PoolCommands::UsableBytes("RAID5/50(4+P)", 10, disk), 800 * kGiB);
    EXPECT_EQ(PoolCommands::UsableBytes("RAID6/60(8+PQ)", 10, disk), 800 * kGiB);
    EXPECT_EQ(PoolCommands::UsableBytes("RAID-TM", 3, disk), 100 * kGiB);
    // Whole GiB only, as the array allocates.
    EXPECT_EQ(PoolCommands::UsableBytes("RAID1/10", 2, kGiB + kGiB / 2), kGiB);
    EXPECT_EQ(PoolCommands::UsableBytes("RAID7", 3, disk), 0u);
    EXPECT_EQ(PoolCommands::UsableBytes("RAID5/50(3+P)", 4, disk), 0u);
}

}  // namespace
