
#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <thread>
#include <vector>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#include <sqlite3.h>
#include <filesystem>
#include <memory>
#include <string>

#include "RepositoryTestSupport.h"

namespace {

using namespace Pegasus;
using namespace repotest;

using RepositoryCrud = RepositoryFixture;

TEST_F(RepositoryCrud, CreateStoresUnderKeyPathAndGetFindsItWhateverHostNamespaceAndCase)
{
    CIMInstance v = volume("0001");
    v.addProperty(CIMProperty(CIMName("Detail"), CIMValue(pool("P0", 3))));
    CIMObjectPath path = repo->createInstance(ORV, v);
    EXPECT_EQ("T_Volume.DeviceID=\"0001\",SystemName=\"SYS1\"", path.toString().toUtf8());

    CIMObjectPath asked("//otherhost/root/orv:t_volume.systemname=\"SYS1\",deviceid=\"0001\"");
    CIMInstance got = repo->getInstance(ORV, asked, false, false, CIMPropertyList(),
        RepositoryAccess::Committed);
    EXPECT_EQ(path.toString(), got.getPath().toString());
    EXPECT_TRUE(got.getPath().getHost().size() == 0 && got.getPath().getNameSpace().isNull());
    Uint32 detail = got.findProperty(CIMName("Detail"));
    ASSERT_NE(PEG_NOT_FOUND, detail);
    CIMInstance embedded;
    got.getProperty(detail).getValue().get(embedded);
    EXPECT_EQ("T_Pool", embedded.getClassName().getString().toUtf8());
    EXPECT_TRUE(std::filesystem::exists(dir + "/root#orv.db"));
    EXPECT_EQ(dir + "/root#orv.db", repo->databaseFile(CIMNamespaceName("Root/ORV")));

    // String keys are exact: another case of the value is another instance.
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] {
        repo->getInstance(ORV, CIMObjectPath("T_Volume.SystemName=\"sys1\",DeviceID=\"0001\""),
            false, false, CIMPropertyList(), RepositoryAccess::Committed);
    }));
}

TEST_F(RepositoryCrud, CreateRefusesBadInstancesNamingTheFault)
{
    std::string message;
    EXPECT_EQ(CIM_ERR_INVALID_CLASS, codeOf([&] { repo->createInstance(ORV, volume("1", "T_Nothing")); }, &message));
    EXPECT_NE(std::string::npos, message.find("T_Nothing"));
    EXPECT_EQ(CIM_ERR_INVALID_CLASS, codeOf([&] { repo->createInstance(ORV, volume("1", "T_Logical")); }, &message));
    EXPECT_NE(std::string::npos, message.find("abstract"));

    CIMInstance extra = volume("1");
    extra.addProperty(CIMProperty(CIMName("Colour"), CIMValue(String("red"))));
    EXPECT_EQ(CIM_ERR_NO_SUCH_PROPERTY, codeOf([&] { repo->createInstance(ORV, extra); }, &message));
    EXPECT_NE(std::string::npos, message.find("Colour"));

    CIMInstance wrongType = volume("1");
    wrongType.addProperty(CIMProperty(CIMName("Name"), CIMValue(Uint32(5))));
    EXPECT_EQ(CIM_ERR_TYPE_MISMATCH, codeOf([&] { repo->createInstance(ORV, wrongType); }, &message));
    EXPECT_NE(std::string::npos, message.find("Name"));
    CIMInstance scalarForArray = volume("1");
    scalarForArray.addProperty(CIMProperty(CIMName("Status"), CIMValue(Uint16(2))));
    EXPECT_EQ(CIM_ERR_TYPE_MISMATCH, codeOf([&] { repo->createInstance(ORV, scalarForArray); }));
    CIMInstance instanceInPlainString = volume("1");
    instanceInPlainString.addProperty(CIMProperty(CIMName("Name"), CIMValue(pool("P", 1))));
    EXPECT_EQ(CIM_ERR_TYPE_MISMATCH, codeOf([&] { repo->createInstance(ORV, instanceInPlainString); }));

    CIMInstance noKey{CIMName("T_Volume")};
    noKey.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(String("S"))));
    EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, codeOf([&] { repo->createInstance(ORV, noKey); }, &message));
    EXPECT_NE(std::string::npos, message.find("DeviceID"));
    CIMInstance nullKey = volume("1");
    CIMValue nullString;
    nullString.setNullValue(CIMTYPE_STRING, false);
    nullKey.getProperty(nullKey.findProperty(CIMName("DeviceID"))).setValue(nullString);
    EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, codeOf([&] { repo->createInstance(ORV, nullKey); }));

    CIMInstance otherPath = volume("1");
    otherPath.setPath(CIMObjectPath("T_Volume.SystemName=\"X\",DeviceID=\"9\""));
    repo->createInstance(ORV, otherPath); // the path given is ignored, keys decide
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS, codeOf([&] { repo->createInstance(ORV, volume("1")); }, &message));
    EXPECT_NE(std::string::npos, message.find("T_Volume"));
    EXPECT_EQ(CIM_ERR_INVALID_NAMESPACE, codeOf([&] { repo->createInstance(CIMNamespaceName("root/none"), volume("2")); }));
    EXPECT_EQ(CIM_ERR_INVALID_NAMESPACE, codeOf([&] {
        repo->enumerateInstanceNames(CIMNamespaceName("root/none"), CIMName("T_Volume"), RepositoryAccess::Committed);
    }));
    // Nothing of the refused instances was stored.
    EXPECT_EQ(1u, repo->enumerateInstanceNames(ORV, CIMName("T_Managed"), RepositoryAccess::Committed).size());
}

TEST_F(RepositoryCrud, MissingInstancesAreNotFoundForEveryOperation)
{
    CIMObjectPath missing = volumePath("404");
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] { repo->getInstance(ORV, missing, false, false, CIMPropertyList(), RepositoryAccess::Joined); }));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] { repo->deleteInstance(ORV, missing); }));
    CIMInstance change = volume("404");
    change.setPath(missing);
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] { repo->modifyInstance(ORV, change, false, CIMPropertyList()); }));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] { repo->setProperty(ORV, missing, CIMName("Name"), CIMValue(String("x"))); }));

    CIMObjectPath path = repo->createInstance(ORV, volume("1"));
    repo->deleteInstance(ORV, path);
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] { repo->getInstance(ORV, path, false, false, CIMPropertyList(), RepositoryAccess::Committed); }));
}

TEST_F(RepositoryCrud, NumericKeysMatchWhateverTheirSpelling)
{
    repo->createInstance(ORV, pool("P1", 26));
    for (const char* spelling : {"26", "0x1A", "026", "+26"}) {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("Number"), String(spelling), CIMKeyBinding::NUMERIC));
        keys.append(CIMKeyBinding(CIMName("InstanceID"), String("P1"), CIMKeyBinding::STRING));
        CIMObjectPath p(String(), CIMNamespaceName(), CIMName("T_Pool"), keys);
        EXPECT_NO_THROW(repo->getInstance(ORV, p, false, false, CIMPropertyList(), RepositoryAccess::Committed)) << spelling;
    }
}

TEST_F(RepositoryCrud, ModifyReplacesAllOrOnlyTheListedPropertiesAndKeepsKeys)
{
    CIMInstance v = volume("1");
    v.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("first"))));
    CIMObjectPath path = repo->createInstance(ORV, v);

    // Null list: properties not given (Size, Name) are removed; Caption added.
    CIMInstance replaceAll{CIMName("T_Volume")};
    replaceAll.setPath(path);
    replaceAll.addProperty(CIMProperty(CIMName("Caption"), CIMValue(String("cap"))));
    repo->modifyInstance(ORV, replaceAll, false, CIMPropertyList());
    CIMInstance got = repo->getInstance(ORV, path, false, false, CIMPropertyList(), RepositoryAccess::Committed);
    EXPECT_EQ(PEG_NOT_FOUND, got.findProperty(CIMName("Size")));
    EXPECT_EQ(PEG_NOT_FOUND, got.findProperty(CIMName("Name")));
    EXPECT_NE(PEG_NOT_FOUND, got.findProperty(CIMName("Caption")));
    EXPECT_NE(PEG_NOT_FOUND, got.findProperty(CIMName("DeviceID")));

    // A list: only Name changes; Caption, not listed, stays although absent.
    CIMInstance some{CIMName("T_Volume")};
    some.setPath(path);
    some.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("second"))));
    some.addProperty(CIMProperty(CIMName("Size"), CIMValue(Uint64(5))));
    Array<CIMName> names;
    names.append(CIMName("name"));
    repo->modifyInstance(ORV, some, false, CIMPropertyList(names));
    EXPECT_EQ("second", repo->getProperty(ORV, path, CIMName("Name"), RepositoryAccess::Committed).toString().toUtf8());
    EXPECT_TRUE(repo->getProperty(ORV, path, CIMName("Size"), RepositoryAccess::Committed).isNull());
    EXPECT_EQ("cap", repo->getProperty(ORV, path, CIMName("Caption"), RepositoryAccess::Committed).toString().toUtf8());

    repo->setProperty(ORV, path, CIMName("Size"), CIMValue(Uint64(77)));
    EXPECT_EQ("77", repo->getProperty(ORV, path, CIMName("Size"), RepositoryAccess::Committed).toString().toUtf8());
    EXPECT_EQ(CIM_ERR_TYPE_MISMATCH, codeOf([&] { repo->setProperty(ORV, path, CIMName("Size"), CIMValue(String("x"))); }));
    EXPECT_EQ(CIM_ERR_NO_SUCH_PROPERTY, codeOf([&] { repo->getProperty(ORV, path, CIMName("Colour"), RepositoryAccess::Committed); }));

    CIMInstance keyChange = volume("1");
    keyChange.setPath(path);
    keyChange.getProperty(keyChange.findProperty(CIMName("SystemName"))).setValue(CIMValue(String("SYS2")));
    EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, codeOf([&] { repo->modifyInstance(ORV, keyChange, false, CIMPropertyList()); }));
}

using RepositoryEnumeration = RepositoryFixture;

TEST_F(RepositoryEnumeration, DeepInheritanceAndPropertyLists)
{
    CIMInstance v = volume("V1");
    v.addProperty(CIMProperty(CIMName("Name"), CIMValue(String("vol"))));
    repo->createInstance(ORV, v);
    repo->createInstance(ORV, volume("V2"));
    CIMInstance d = volume("D1", "T_Disk");
    d.addProperty(CIMProperty(CIMName("Rpm"), CIMValue(Uint32(7200))));
    repo->createInstance(ORV, d);
    repo->createInstance(ORV, pool("P1", 1));

    EXPECT_EQ(3u, repo->enumerateInstances(ORV, CIMName("T_Logical"), true, false, false, CIMPropertyList(), RepositoryAccess::Committed).size());
    EXPECT_EQ(4u, repo->enumerateInstanceNames(ORV, CIMName("T_Managed"), RepositoryAccess::Committed).size());
    EXPECT_EQ(1u, repo->enumerateInstanceNames(ORV, CIMName("T_Disk"), RepositoryAccess::Committed).size());

    // Without deep inheritance only what T_Logical defines remains.
    for (const CIMInstance& i : repo->enumerateInstances(ORV, CIMName("T_Logical"), false, false, false, CIMPropertyList(), RepositoryAccess::Committed)) {
        EXPECT_EQ(PEG_NOT_FOUND, i.findProperty(CIMName("Name")));
        EXPECT_EQ(PEG_NOT_FOUND, i.findProperty(CIMName("Rpm")));
        EXPECT_NE(PEG_NOT_FOUND, i.findProperty(CIMName("Size")));
        EXPECT_FALSE(i.getPath().getKeyBindings().size() == 0);
    }
    Array<CIMName> onlySize;
    onlySize.append(CIMName("Size"));
    for (const CIMInstance& i : repo->enumerateInstances(ORV, CIMName("T_Logical"), true, false, false, CIMPropertyList(onlySize), RepositoryAccess::Committed))
        EXPECT_EQ(1u, i.getPropertyCount());
    for (const CIMInstance& i : repo->enumerateInstances(ORV, CIMName("T_Logical"), true, false, false, CIMPropertyList(Array<CIMName>()), RepositoryAccess::Committed))
        EXPECT_EQ(0u, i.getPropertyCount());
    // Class origins only when asked for.
    CIMInstance withOrigin = repo->getInstance(ORV, volumePath("V1"), false, true, CIMPropertyList(), RepositoryAccess::Committed);
    EXPECT_EQ("T_Logical", withOrigin.getProperty(withOrigin.findProperty(CIMName("Size"))).getClassOrigin().getString().toUtf8());
    EXPECT_EQ(CIM_ERR_INVALID_CLASS, codeOf([&] { repo->enumerateInstances(ORV, CIMName("T_None"), true, false, false, CIMPropertyList(), RepositoryAccess::Committed); }));
}

class RepositoryAssociations : public RepositoryFixture {
protected:
    void SetUp() override
    {
        RepositoryFixture::SetUp();
        p1 = repo->createInstance(ORV, pool("P1", 1));
        v1 = repo->createInstance(ORV, volume("V1"));
        v2 = repo->createInstance(ORV, volume("V2"));
        d1 = repo->createInstance(ORV, volume("D1", "T_Disk"));
        // References as the module writes them: with host and namespace.
        CIMObjectPath full = p1;
        full.setHost("array01");
        full.setNameSpace(ORV);
        a1 = repo->createInstance(ORV, association("T_AllocatedFrom", full, v1));
        a2 = repo->createInstance(ORV, association("T_Dependency", v1, v2));
        a3 = repo->createInstance(ORV, association("T_AllocatedFrom", p1, d1));
    }
    Array<CIMObjectPath> assocNames(const CIMObjectPath& o, const char* assocClass, const char* resultClass,
        const char* role, const char* resultRole)
    {
        return repo->associatorNames(ORV, o, assocClass ? CIMName(assocClass) : CIMName(),
            resultClass ? CIMName(resultClass) : CIMName(), String(role), String(resultRole),
            RepositoryAccess::Committed);
    }
    CIMObjectPath p1, v1, v2, d1, a1, a2, a3;
};

TEST_F(RepositoryAssociations, AssociationInstancesAreFoundByTheirReferenceKeysInAnySpelling)
{
    // a1 was created with a full reference (host, namespace); asked with a bare one.
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("dependent"), CIMValue(v1)));
    CIMObjectPath pool("//otherhost/root/orv:T_Pool.Number=0x1,InstanceID=\"P1\"");
    keys.append(CIMKeyBinding(CIMName("ANTECEDENT"), CIMValue(pool)));
    CIMObjectPath asked(String(), CIMNamespaceName(), CIMName("t_allocatedfrom"), keys);
    CIMInstance got = repo->getInstance(ORV, asked, false, false, CIMPropertyList(), RepositoryAccess::Committed);
    EXPECT_EQ(a1.toString(), got.getPath().toString());
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS, codeOf([&] { repo->createInstance(ORV, association("T_AllocatedFrom", pool, v1)); }));
}

TEST_F(RepositoryAssociations, ReferencesFilterByClassWithInheritanceAndRole)
{
    EXPECT_EQ(2u, repo->referenceNames(ORV, v1, CIMName(), String(), RepositoryAccess::Committed).size());
    EXPECT_EQ(2u, repo->referenceNames(ORV, v1, CIMName("T_Dependency"), String(), RepositoryAccess::Committed).size());
    Array<CIMObjectPath> alloc = repo->referenceNames(ORV, v1, CIMName("T_AllocatedFrom"), String(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, alloc.size());
    EXPECT_EQ(a1.toString(), alloc[0].toString());
    Array<CIMObjectPath> asAntecedent = repo->referenceNames(ORV, v1, CIMName(), String("antecedent"), RepositoryAccess::Committed);
    ASSERT_EQ(1u, asAntecedent.size());
    EXPECT_EQ(a2.toString(), asAntecedent[0].toString());
    EXPECT_EQ(2u, repo->referenceNames(ORV, p1, CIMName(), String(), RepositoryAccess::Committed).size());

    Array<CIMObject> refs = repo->references(ORV, v1, CIMName("T_AllocatedFrom"), String(), false, false, CIMPropertyList(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, refs.size());
    EXPECT_EQ(a1.toString(), refs[0].getPath().toString());
    EXPECT_EQ(2u, refs[0].getPropertyCount());
}

TEST_F(RepositoryAssociations, AssociatorsFilterByAssociationResultClassAndRoles)
{
    Array<CIMObjectPath> expected;
    expected.append(p1);
    expected.append(v2);
    EXPECT_EQ(sortedPaths(expected), sortedPaths(assocNames(v1, nullptr, nullptr, "", "")));
    EXPECT_EQ(1u, assocNames(v1, "T_AllocatedFrom", nullptr, "", "").size());
    EXPECT_EQ(2u, assocNames(v1, "T_Dependency", nullptr, "", "").size());
    Array<CIMObjectPath> pools = assocNames(v1, nullptr, "T_Managed", "", "");
    EXPECT_EQ(2u, pools.size());
    pools = assocNames(v1, nullptr, "T_Pool", "", "");
    ASSERT_EQ(1u, pools.size());
    EXPECT_EQ(p1.toString(), pools[0].toString());
    EXPECT_EQ(2u, assocNames(p1, nullptr, "T_Logical", "", "").size());
    EXPECT_EQ(1u, assocNames(p1, nullptr, "T_Disk", "", "").size());
    EXPECT_EQ(1u, assocNames(v1, nullptr, nullptr, "Dependent", "Antecedent").size());
    EXPECT_EQ(0u, assocNames(v1, nullptr, nullptr, "Dependent", "Dependent").size());

    // Host and namespace of the object asked about do not matter.
    CIMObjectPath remote = v1;
    remote.setHost("elsewhere:5989");
    remote.setNameSpace(CIMNamespaceName("ROOT/orv"));
    Array<CIMObject> objects = repo->associators(ORV, remote, CIMName(), CIMName("T_Pool"), String(), String(),
        false, false, CIMPropertyList(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, objects.size());
    EXPECT_EQ(p1.toString(), objects[0].getPath().toString());
    EXPECT_NE(PEG_NOT_FOUND, objects[0].findProperty(CIMName("Number")));

    // A far object that is gone is left out, not an error.
    repo->deleteInstance(ORV, v2);
    EXPECT_EQ(1u, assocNames(v1, nullptr, nullptr, "", "").size());
    // A deleted association no longer counts.
    repo->deleteInstance(ORV, a1);
    EXPECT_EQ(0u, assocNames(v1, nullptr, nullptr, "", "").size());
}

TEST_F(RepositoryAssociations, CrossNamespaceReferencesKeepTheirNamespace)
{
    CIMInstance profile{CIMName("T_Profile")};
    profile.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String("SNIA:Array"))));
    CIMObjectPath profilePath = repo->createInstance(INTEROP, profile);
    CIMObjectPath element = v1;
    element.setNameSpace(ORV);
    CIMInstance conforms{CIMName("T_ElementConformsToProfile")};
    conforms.addProperty(CIMProperty(CIMName("ConformantStandard"), CIMValue(profilePath)));
    conforms.addProperty(CIMProperty(CIMName("ManagedElement"), CIMValue(element)));
    repo->createInstance(INTEROP, conforms);

    Array<CIMObject> far = repo->associators(INTEROP, profilePath, CIMName(), CIMName("T_Logical"), String(), String(),
        false, false, CIMPropertyList(), RepositoryAccess::Committed);
    ASSERT_EQ(1u, far.size());
    EXPECT_EQ("root/orv", far[0].getPath().getNameSpace().getString().toUtf8());
    EXPECT_EQ(v1.getKeyBindings().size(), far[0].getPath().getKeyBindings().size());

    CIMObjectPath asked = v1;
    asked.setNameSpace(CIMNamespaceName("Root/Orv"));
    asked.setHost("somehost");
    EXPECT_EQ(1u, repo->referenceNames(INTEROP, asked, CIMName(), String(), RepositoryAccess::Committed).size());
    // Without its namespace the path names an interop object: no match.
    EXPECT_EQ(0u, repo->referenceNames(INTEROP, v1, CIMName(), String(), RepositoryAccess::Committed).size());
}

using RepositoryTransactions = RepositoryFixture;

TEST_F(RepositoryTransactions, CommittedReadersSeeOnlyCommittedDataAndJoinedCallsJoin)
{
    repo->beginTransaction(ORV);
    EXPECT_TRUE(repo->inTransaction());
    repo->createInstance(ORV, volume("T1"));
    std::thread other([&] { repo->createInstance(ORV, volume("T2"), RepositoryAccess::Joined); });
    other.join();
    // A write to another namespace commits on its own.
    CIMInstance profile{CIMName("T_Profile")};
    profile.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String("P"))));
    repo->createInstance(INTEROP, profile);

    auto count = [&](RepositoryAccess a) {
        return repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), a).size();
    };
    EXPECT_EQ(2u, count(RepositoryAccess::Joined));
    // Read from another thread while the transaction stays open: not blocked.
    Uint32 seen = 99;
    auto start = std::chrono::steady_clock::now();
    std::thread reader([&] { seen = count(RepositoryAccess::Committed); });
    reader.join();
    EXPECT_EQ(0u, seen);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(CIM_ERR_NOT_FOUND, codeOf([&] {
        repo->getInstance(ORV, volumePath("T1"), false, false, CIMPropertyList(), RepositoryAccess::Committed);
    }));

    std::string message;
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { repo->beginTransaction(INTEROP); }, &message));
    EXPECT_NE(std::string::npos, message.find("already open"));
    repo->commitTransaction();
    EXPECT_FALSE(repo->inTransaction());
    EXPECT_EQ(2u, count(RepositoryAccess::Committed));
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { repo->commitTransaction(); }, &message));
    EXPECT_NE(std::string::npos, message.find("no transaction"));
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { repo->rollBackTransaction(); }));

    repo->beginTransaction(ORV);
    repo->createInstance(ORV, volume("T3"));
    repo->deleteInstance(ORV, volumePath("T1"));
    repo->rollBackTransaction();
    open();
    EXPECT_EQ(2u, count(RepositoryAccess::Committed));
    EXPECT_EQ(1u, repo->enumerateInstanceNames(INTEROP, CIMName("T_Profile"), RepositoryAccess::Committed).size());
}

TEST_F(RepositoryTransactions, FailedCallInsideTransactionLeavesTheRestIntact)
{
    repo->beginTransaction(ORV);
    repo->createInstance(ORV, volume("A"));
    EXPECT_EQ(CIM_ERR_ALREADY_EXISTS, codeOf([&] { repo->createInstance(ORV, volume("A")); }));
    repo->createInstance(ORV, volume("B"));
    repo->commitTransaction();
    EXPECT_EQ(2u, repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), RepositoryAccess::Committed).size());
}

TEST_F(RepositoryTransactions, StreamedReadsKeepTheAccessRulesAndEndCleanlyWhenTheSinkThrows)
{
    repo->createInstance(ORV, volume("committed"));
    repo->beginTransaction(ORV);
    for (int i = 0; i < 10; ++i)
        repo->createInstance(ORV, volume("open" + std::to_string(i)));
    auto count = [&](RepositoryAccess access) {
        size_t n = 0;
        repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), access, [&](CIMObjectPath&) { ++n; });
        return n;
    };
    EXPECT_EQ(1u, count(RepositoryAccess::Committed));
    EXPECT_EQ(11u, count(RepositoryAccess::Joined));

    // A sink that gives up half way: its exception leaves as it is, and the
    // open transaction (whose lock a joined read holds) goes on.
    for (RepositoryAccess access : {RepositoryAccess::Joined, RepositoryAccess::Committed}) {
        int seen = 0;
        EXPECT_THROW(repo->enumerateInstances(ORV, CIMName("T_Volume"), true, false, false, CIMPropertyList(), access,
                         [&](CIMInstance& i) {
                             i.removeProperty(i.findProperty(CIMName("Size")));  // the sink's copy, not the store's
                             if (++seen == 1) throw std::runtime_error("client gone");
                         }),
            std::runtime_error);
        EXPECT_EQ(1, seen);
    }
    repo->createInstance(ORV, volume("after"));
    repo->commitTransaction();
    EXPECT_EQ(12u, count(RepositoryAccess::Committed));
    CIMInstance got = repo->getInstance(ORV, volumePath("open3"), false, false, CIMPropertyList(), RepositoryAccess::Committed);
    EXPECT_NE(PEG_NOT_FOUND, got.findProperty(CIMName("Size")));

    // Association results stream one by one, like the arrays.
    const CIMObjectPath p1 = repo->createInstance(ORV, pool("P1", 1));
    for (int i = 0; i < 5; ++i)
        repo->createInstance(ORV, association("T_AllocatedFrom", p1, volumePath("open" + std::to_string(i))));
    std::vector<std::string> streamed;
    repo->associators(ORV, p1, CIMName(), CIMName(), String(), String(), false, false, CIMPropertyList(),
        RepositoryAccess::Committed, [&](CIMObject& o) { streamed.push_back(o.getPath().toString().toUtf8()); });
    Array<CIMObjectPath> names = repo->associatorNames(ORV, p1, CIMName(), CIMName(), String(), String(),
        RepositoryAccess::Committed);
    ASSERT_EQ(5u, streamed.size());
    for (Uint32 i = 0; i < names.size(); ++i)
        EXPECT_EQ(names[i].toString().toUtf8(), streamed[i]);
    size_t references = 0;
    repo->references(ORV, p1, CIMName(), String(), false, false, CIMPropertyList(), RepositoryAccess::Committed,
        [&](CIMObject& o) { references += o.getPropertyCount() == 2; });
    EXPECT_EQ(5u, references);
}

TEST_F(RepositoryTransactions, ClientWriteWaitsForTheOpenTransaction)
{
    repo->beginTransaction(ORV);
    repo->createInstance(ORV, volume("M1"));
    std::atomic<bool> done{false};
    std::thread client([&] {
        repo->createInstance(ORV, volume("C1"), RepositoryAccess::Committed);
        done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(done);
    repo->commitTransaction();
    client.join();
    EXPECT_TRUE(done);
    EXPECT_EQ(2u, repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), RepositoryAccess::Committed).size());
}

TEST_F(RepositoryTransactions, ReadersSeeWholeLoadsWhileAWriterCommitsInBatches)
{
    const int batches = 20, perBatch = 25;
    std::atomic<bool> stop{false};
    std::atomic<int> reads{0}, torn{0};
    std::vector<std::thread> readers;
    for (int r = 0; r < 3; ++r) {
        readers.emplace_back([&] {
            while (!stop) {
                Uint32 n = repo->enumerateInstances(ORV, CIMName("T_Volume"), true, false, false,
                    CIMPropertyList(), RepositoryAccess::Committed).size();
                if (n % perBatch != 0)
                    ++torn;
                ++reads;
            }
        });
    }
    for (int b = 0; b < batches; ++b) {
        repo->beginTransaction(ORV);
        for (int i = 0; i < perBatch; ++i)
            repo->createInstance(ORV, volume("B" + std::to_string(b) + "-" + std::to_string(i)));
        repo->commitTransaction();
    }
    stop = true;
    for (auto& t : readers)
        t.join();
    EXPECT_EQ(0, torn.load());
    EXPECT_GT(reads.load(), 0);
    EXPECT_EQ(Uint32(batches * perBatch), repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), RepositoryAccess::Committed).size());
}

TEST_F(RepositoryTransactions, ProcessKilledMidTransactionLeavesNothingOfIt)
{
    repo->createInstance(ORV, volume("before"));
    repo.reset();
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(fds[0]);
        try {
            Repository r(dir, schema);
            r.beginTransaction(ORV);
            for (int i = 0; i < 2000; ++i)
                r.createInstance(ORV, volume("lost" + std::to_string(i)));
            char ok = 'x';
            if (write(fds[1], &ok, 1) != 1)
                _exit(2);
            pause();
        } catch (...) {
        }
        _exit(1);
    }
    close(fds[1]);
    char c = 0;
    ASSERT_EQ(1, read(fds[0], &c, 1));
    close(fds[0]);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));

    open();
    Array<CIMObjectPath> names = repo->enumerateInstanceNames(ORV, CIMName("T_Volume"), RepositoryAccess::Committed);
    ASSERT_EQ(1u, names.size());
    repo->createInstance(ORV, volume("after"));
    sqlite3* db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(repo->databaseFile(ORV).c_str(), &db));
    sqlite3_stmt* stmt = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &stmt, nullptr));
    ASSERT_EQ(SQLITE_ROW, sqlite3_step(stmt));
    EXPECT_STREQ("ok", reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
    sqlite3_finalize(stmt);
    sqlite3_close(db);
}

TEST_F(RepositoryTransactions, ForeignFileInTheFolderIsAClearErrorAtOpen)
{
    std::string file = repo->databaseFile(ORV);
    repo.reset();
    std::filesystem::remove(file + "-wal");
    std::filesystem::remove(file + "-shm");
    std::ofstream(file, std::ios::trunc) << std::string(4096, 'g');
    std::string message;
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { open(); }, &message));
    EXPECT_NE(std::string::npos, message.find("root#orv.db")) << message;

    // An SQLite database of another program.
    std::filesystem::remove(file);
    sqlite3* db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(file.c_str(), &db));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(db, "CREATE TABLE instances(x)", nullptr, nullptr, nullptr));
    sqlite3_close(db);
    EXPECT_EQ(CIM_ERR_FAILED, codeOf([&] { open(); }, &message));
    EXPECT_NE(std::string::npos, message.find("tables")) << message;
}

} // namespace
