// The registered profiles in the interop namespace: the table of profiles
// and of the pairs between them, the ties to the server's object manager,
// to the provider's software identity and to the array, and what a restart,
// a failure and the clean-up do to them.

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "ComputerSystem.h"
#include "EventArgs.h"
#include "ProfilesTestSupport.h"
#include "RegisteredProfile.h"
#include "RepositoryCleaner.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

using modeltest::prop;
using modeltest::uint16s;

struct ExpectedProfile {
    const char* name;
    const char* version;
    bool sub;
};

const ExpectedProfile kProfiles[] = {
    {"SMI-S", "1.6.1", false},
    {"Profile Registration", "1.0.0", false},
    {"Array", "1.6.0", false},
    {"Server", "1.6.0", false},
    {"Disk Drive Lite", "1.6.0", true},
    {"Extent Composition", "1.6.0", true},
    {"Location", "1.4.0", true},
    {"Software", "1.4.0", true},
    {"Copy Services", "1.5.0", true},
    {"Masking and Mapping", "1.4.0", true},
    {"Block Services", "1.6.1", true},
    {"Physical Package", "1.5.0", true},
    {"Health", "1.2.0", true},
    {"Multiple Computer System", "1.2.0", true},
    {"Job Control", "1.5.0", true},
    {"Thin Provisioning", "1.4.0", true},
    {"FC Target Ports", "1.4.0", true},
    {"iSCSI Target Ports", "1.6.0", true},
    {"Indication", "1.5.0", true},
};

const std::pair<const char*, const char*> kPairs[] = {
    {"Array", "Disk Drive Lite"}, {"Array", "Extent Composition"}, {"Array", "Location"},
    {"Array", "Software"}, {"Array", "Copy Services"}, {"Array", "Masking and Mapping"},
    {"Array", "Block Services"}, {"Array", "Physical Package"}, {"Array", "Health"},
    {"Array", "Multiple Computer System"}, {"Array", "Job Control"}, {"Array", "Thin Provisioning"},
    {"Array", "FC Target Ports"}, {"Array", "iSCSI Target Ports"}, {"Array", "Indication"},
    {"Block Services", "Job Control"}, {"Block Services", "Extent Composition"}, {"Server", "Indication"},
    {"Copy Services", "Block Services"}, {"Copy Services", "Job Control"},
};

std::string text(const CIMInstance& instance, const char* name) { return prop<String>(instance, name).toUtf8(); }

std::string refKey(const CIMInstance& instance, const char* role) {
    return modeltest::canonical(prop<CIMObjectPath>(instance, role));
}

class RegisteredProfileTest : public profiletest::ProfilesFixture {
protected:
    // The object manager the server itself writes at its start.
    CIMObjectPath SeedServerObjectManager() {
        CIMInstance manager(CIMName("CIM_ObjectManager"));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("CreationClassName"), CIMValue(String("CIM_ObjectManager"))));
        keys.append(CIMKeyBinding(CIMName("Name"), CIMValue(String("vm:cimserver"))));
        keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), CIMValue(String("CIM_ComputerSystem"))));
        keys.append(CIMKeyBinding(CIMName("SystemName"), CIMValue(String("vm"))));
        for (Uint32 i = 0; i < keys.size(); ++i)
            manager.addProperty(CIMProperty(keys[i].getName(), CIMValue(keys[i].getValue())));
        const CIMObjectPath path(String(), CIMNamespaceName("root/interop"), CIMName("CIM_ObjectManager"), keys);
        manager.setPath(path);
        interop().createInstance(context, CIMNamespaceName("root/interop"), manager);
        return path;
    }

    CIMObjectPath CreateProfiles() {
        DataEventArgs args(context, nullptr, nullptr, std::string());
        RegisteredProfile profiles;
        return profiles.Create(&args);
    }

    std::vector<CIMInstance> Profiles() {
        std::vector<CIMInstance> all = interop().of("ORV_Storage_RegisteredProfile");
        for (const CIMInstance& sub : interop().of("ORV_Storage_RegisteredSubProfile")) all.push_back(sub);
        return all;
    }

    // The stored profile of that name, by its path as the associations
    // hold it; empty when there is none.
    std::string ProfileKey(const std::string& name) {
        for (const CIMInstance& profile : Profiles())
            if (text(profile, "RegisteredName") == name) return modeltest::canonical(profile.getPath());
        return std::string();
    }

    // The profiles tied to element by ElementConformsToProfile.
    std::set<std::string> ConformingProfiles(const CIMObjectPath& element) {
        std::set<std::string> names;
        for (const CIMInstance& link : interop().of("ORV_Storage_ElementConformsToProfile")) {
            if (refKey(link, "ManagedElement") != modeltest::canonical(element)) continue;
            for (const CIMInstance& profile : Profiles())
                if (modeltest::canonical(profile.getPath()) == refKey(link, "ConformantStandard"))
                    names.insert(text(profile, "RegisteredName"));
        }
        return names;
    }
};

// The two tables, with the copy service on and off.
class ProfileTables : public RegisteredProfileTest, public ::testing::WithParamInterface<bool> {};

TEST_P(ProfileTables, EveryOfferedProfileAndPairIsWrittenIntoTheInteropNamespace) {
    const bool copyService = GetParam();
    SMISProvider::m_bEnableCopyService = copyService;
    SeedServerObjectManager();
    const CIMObjectPath array = CreateProfiles();

    size_t expectedProfiles = 0;
    for (const ExpectedProfile& expected : kProfiles) {
        const bool offered = copyService || std::string(expected.name) != "Copy Services";
        const std::string cls = expected.sub ? "ORV_Storage_RegisteredSubProfile" : "ORV_Storage_RegisteredProfile";
        bool found = false;
        for (const CIMInstance& profile : interop().of(cls)) {
            if (text(profile, "RegisteredName") != expected.name) continue;
            found = true;
            EXPECT_EQ(std::string("SNIA.") + expected.name + "." + expected.version, text(profile, "InstanceID"));
            EXPECT_EQ(expected.version, text(profile, "RegisteredVersion"));
            EXPECT_EQ(11, prop<Uint16>(profile, "RegisteredOrganization"));
            EXPECT_EQ(std::vector<Uint16>{3}, uint16s(profile, "AdvertiseTypes"));
        }
        EXPECT_EQ(offered, found) << expected.name << " as " << cls;
        if (offered) ++expectedProfiles;
    }
    EXPECT_EQ(expectedProfiles, Profiles().size());
    EXPECT_EQ(0u, storage().instances.size()) << "nothing of the profiles belongs in the storage namespace";
    EXPECT_EQ("orv_storage_registeredprofile|instanceid=SNIA.Array.1.6.0", modeltest::canonical(array));
    EXPECT_EQ("root/interop", array.getNameSpace().getString().toUtf8());

    std::set<std::pair<std::string, std::string>> links;
    for (const CIMInstance& link : interop().of("ORV_Storage_SubProfileRequiresProfile"))
        links.insert(std::make_pair(refKey(link, "Antecedent"), refKey(link, "Dependent")));
    size_t expectedPairs = 0;
    for (const auto& pair : kPairs) {
        const bool offered = copyService || (std::string(pair.first) != "Copy Services" &&
                                             std::string(pair.second) != "Copy Services");
        if (!offered) continue;
        ++expectedPairs;
        EXPECT_EQ(1u, links.count(std::make_pair(ProfileKey(pair.first), ProfileKey(pair.second))))
            << pair.first << " requires " << pair.second;
    }
    EXPECT_EQ(expectedPairs, interop().count("ORV_Storage_SubProfileRequiresProfile"));
    EXPECT_EQ(copyService ? 20u : 17u, expectedPairs);
}

INSTANTIATE_TEST_SUITE_P(CopyService, ProfileTables, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& info) { return info.param ? "On" : "Off"; });

TEST_F(RegisteredProfileTest, TheProfilesLeadToTheServersObjectManagerAndToTheProvidersSoftware) {
    const CIMObjectPath manager = SeedServerObjectManager();
    CreateProfiles();
    EXPECT_EQ((std::set<std::string>{"SMI-S", "Server"}), ConformingProfiles(manager));
    EXPECT_EQ(2u, interop().count("ORV_Storage_ElementConformsToProfile"));
    // The server describes itself: the module adds no second object manager.
    EXPECT_EQ(0u, interop().count("ORV_Storage_ObjectManager"));

    ASSERT_EQ(1u, interop().count("ORV_Storage_SoftwareIdentity"));
    std::set<std::string> tied;
    for (const CIMInstance& link : interop().of("ORV_Storage_ElementSoftwareIdentity"))
        tied.insert(refKey(link, "Dependent"));
    for (const CIMInstance& profile : Profiles())
        EXPECT_EQ(1u, tied.count(modeltest::canonical(profile.getPath()))) << text(profile, "RegisteredName");
}

TEST_F(RegisteredProfileTest, ARestartReplacesTheLastStartsProfilesAndAFailureIsRolledBack) {
    SeedServerObjectManager();
    CreateProfiles();
    const size_t written = interop().instances.size();
    spaces->transactions.clear();
    EXPECT_NO_THROW(CreateProfiles());
    EXPECT_EQ(written, interop().instances.size());
    EXPECT_EQ((std::vector<std::string>{"begin root/interop", "commit"}), spaces->transactions);

    spaces->transactions.clear();
    spaces->failCreateOfClass = "ORV_Storage_SubProfileRequiresProfile";
    EXPECT_THROW(CreateProfiles(), CIMException);
    EXPECT_EQ((std::vector<std::string>{"begin root/interop", "rollback"}), spaces->transactions);
}

TEST_F(RegisteredProfileTest, TheArrayProfileLeadsToTheArrayInTheStorageNamespaceAsLongAsTheArrayIsThere) {
    SeedServerObjectManager();
    const CIMObjectPath arrayProfile = CreateProfiles();
    const size_t profiles = Profiles().size();
    ComputerSystem::AfterCreated += &RegisteredProfile::ConnectToArray;
    ComputerSystem::BeforeDeleted += &RegisteredProfile::OnArrayDeleted;
    const std::string wwn = "2000000991000001";
    ArrayRawData* record = MakeArray(wwn, "ready");
    Store(record);
    DataEventArgs args(context, record, nullptr, wwn);
    ComputerSystem array;
    const CIMObjectPath arrayPath = array.Create(&args);

    std::vector<CIMObjectPath> elements;
    for (const CIMInstance& link : interop().of("ORV_Storage_ElementConformsToProfile"))
        if (refKey(link, "ConformantStandard") == modeltest::canonical(arrayProfile))
            elements.push_back(prop<CIMObjectPath>(link, "ManagedElement"));
    ASSERT_EQ(1u, elements.size());
    EXPECT_EQ(modeltest::canonical(arrayPath), modeltest::canonical(elements[0]));
    EXPECT_EQ("root/orv", elements[0].getNameSpace().getString().toUtf8()) << "a client must be able to follow it";

    // A load rolled back after the tie was written makes the array again.
    ParentArgs again(args, arrayPath);
    EXPECT_NO_THROW(RegisteredProfile::ConnectToArray(again));
    array.Delete(&args);
    EXPECT_TRUE(ConformingProfiles(arrayPath).empty());

    // The clean-up after a failed load takes the tie but keeps the profiles;
    // a clean start takes them too, but not the server's own content.
    RegisteredProfile::ConnectToArray(again);
    RepositoryCleaner::Clean(false);
    EXPECT_TRUE(ConformingProfiles(arrayPath).empty());
    EXPECT_EQ(profiles, Profiles().size());
    RepositoryCleaner::Clean(true);
    EXPECT_TRUE(Profiles().empty());
    EXPECT_EQ(0u, interop().count("ORV_Storage_ElementConformsToProfile"));
    EXPECT_EQ(0u, interop().count("ORV_Storage_SoftwareIdentity"));
    EXPECT_EQ(1u, interop().count("CIM_ObjectManager"));
    record->Release();
}

}  // namespace
