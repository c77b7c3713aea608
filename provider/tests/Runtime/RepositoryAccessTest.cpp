// The module's handle to the CIM server's repository, and the cleaner that
// empties the repository through it. Everything that sets the process's
// CimHandle lives in this file, so that the first test sees it unset.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <Pegasus/Common/Exception.h>

#include "AutoMethodTracer.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "Exception.h"
#include "FakeCimom.h"
#include "RepositoryCleaner.h"
#include "Singleton.h"
#include "TempRoot.h"

using namespace Pegasus;
using orvsmis::CimHandle;
using orvsmis::ConfigManager;
using orvsmis::RepositoryCleaner;
using orvsmis::Singleton;

namespace {

const CIMNamespaceName NS("root/orv");

CimHandle* Handle() { return Singleton<CimHandle>::Instance(); }

// A fresh fake server installed in the process's CimHandle.
std::shared_ptr<FakeCimom> InstallFake() {
    std::shared_ptr<FakeCimom> fake = std::make_shared<FakeCimom>();
    CIMOMHandle handle(fake);
    Handle()->Initialize(handle);
    return fake;
}

TEST(CimHandleTest, CallsBeforeInitializeAreRefused) {
    ASSERT_FALSE(Handle()->IsInitialized());
    Array<CIMObjectPath> names;
    EXPECT_THROW(Handle()->EnumerateInstanceNames(OperationContext(), NS, CIMName("X"), names),
        orvsmis::NotExistedException);
    EXPECT_THROW(Handle()->beginTransaction(NS), orvsmis::NotExistedException);
    // The refusal left the lock free.
    EXPECT_THROW(Handle()->commitTransaction(), orvsmis::NotExistedException);
}

TEST(CimHandleTest, InitializeKeepsTheModuleLoaded) {
    std::shared_ptr<FakeCimom> fake = InstallFake();
    EXPECT_TRUE(Handle()->IsInitialized());
    EXPECT_TRUE(fake->unloadDisallowed);
    // A second initialisation replaces the server handle.
    std::shared_ptr<FakeCimom> second = InstallFake();
    Array<CIMObjectPath> names;
    second->classes.insert("C");
    Handle()->EnumerateInstanceNames(OperationContext(), NS, CIMName("C"), names);
    EXPECT_EQ(1u, second->log.size() - 1);  // disallowProviderUnload, then the call
    EXPECT_EQ(1u, fake->log.size());
}

// A read made from inside another call shows which lock that call holds:
// reads share the lock, so a nested read inside a read succeeds, while inside
// a write the lock can't be had and the nested read is refused.
TEST(CimHandleTest, ReadsShareTheLockWritesHoldItAlone) {
    std::shared_ptr<FakeCimom> fake = InstallFake();
    fake->classes.insert("C");
    std::map<std::string, std::string> nested;
    fake->inside = [&](const std::string& what) {
        if (what.compare(0, 22, "enumerateInstanceNames") == 0) return;
        Array<CIMObjectPath> names;
        try {
            Handle()->EnumerateInstanceNames(OperationContext(), NS, CIMName("C"), names);
            nested[what.substr(0, what.find(' '))] = "read ok";
        } catch (const orvsmis::ConstructionException& e) {
            nested[what.substr(0, what.find(' '))] = e.GetMessage();
        }
    };
    const OperationContext ctx;
    Array<CIMInstance> instances;
    Handle()->EnumerateInstances(ctx, NS, CIMName("C"), false, false, false, false, CIMPropertyList(),
        instances);
    Handle()->GetSmisInstance(ctx, NS, CIMObjectPath("C.InstanceID=\"1\""), false, false, false,
        CIMPropertyList());
    Handle()->CreateInstance(ctx, NS, CIMInstance(CIMName("C")));
    Handle()->ModifyInstance(ctx, NS, CIMInstance(CIMName("C")), false, CIMPropertyList());
    fake->AddInstance("root/orv", "C", "1");
    Handle()->DeleteInstance(ctx, NS, fake->instances["root/orv|C"][0]);
    Handle()->beginTransaction(NS);
    Handle()->commitTransaction();
    Handle()->beginTransaction(NS);
    Handle()->rollBackTransaction();

    EXPECT_EQ("read ok", nested["enumerateInstances"]);
    EXPECT_EQ("read ok", nested["getInstance"]);
    for (const char* write : {"createInstance", "modifyInstance", "deleteInstance", "beginTransaction",
             "commitTransaction", "rollBackTransaction"})
        EXPECT_EQ("Construction failed", nested[write]) << write;
}

TEST(CimHandleTest, ReadsGoOnDuringAnOpenTransaction) {
    std::shared_ptr<FakeCimom> fake = InstallFake();
    fake->AddInstance("root/orv", "C", "1");
    Handle()->beginTransaction(NS);
    Array<CIMObjectPath> names;
    Handle()->EnumerateInstanceNames(OperationContext(), NS, CIMName("C"), names);
    EXPECT_EQ(1u, names.size());
    Handle()->CreateInstance(OperationContext(), NS, CIMInstance(CIMName("C")));
    Handle()->commitTransaction();
    EXPECT_EQ("", fake->openTransaction);
}

TEST(CimHandleTest, ServerFailuresPassThroughAndFreeTheLock) {
    std::shared_ptr<FakeCimom> fake = InstallFake();
    Array<CIMObjectPath> names;
    try {
        Handle()->EnumerateInstanceNames(OperationContext(), NS, CIMName("Unknown"), names);
        FAIL() << "no exception";
    } catch (const CIMException& e) {
        EXPECT_EQ(CIM_ERR_INVALID_CLASS, e.getCode());
    }
    EXPECT_THROW(Handle()->commitTransaction(), CIMException);
    // Both locks were let go: a write goes through.
    Handle()->beginTransaction(NS);
    Handle()->rollBackTransaction();
    EXPECT_EQ("rollBackTransaction", fake->log.back());
}

TEST(CimHandleTest, AssociationCallsDropHostAndNamespace) {
    std::shared_ptr<FakeCimom> fake = InstallFake();
    const CIMObjectPath full("//somehost/root/orv:ORV_Storage_ComputerSystem.Name=\"A\",CreationClassName=\"X\"");
    const OperationContext ctx;
    Array<CIMObject> objects;
    Array<CIMObjectPath> paths;

    auto check = [&](const char* what) {
        EXPECT_EQ(what, fake->log.back());
        EXPECT_EQ("", FakeCimom::text(fake->lastPath.getHost())) << what;
        EXPECT_TRUE(fake->lastPath.getNameSpace().isNull()) << what;
        EXPECT_EQ("ORV_Storage_ComputerSystem", FakeCimom::text(fake->lastPath.getClassName().getString()));
        EXPECT_EQ(2u, fake->lastPath.getKeyBindings().size()) << what;
    };
    Handle()->Associators(ctx, NS, full, CIMName(), CIMName(), String(), String(), false, false,
        CIMPropertyList(), objects);
    check("associators");
    Handle()->AssociatorNames(ctx, NS, full, CIMName(), CIMName(), String(), String(), paths);
    check("associatorNames");
    EXPECT_EQ(1u, paths.size());
    Handle()->References(ctx, NS, full, CIMName(), String(), false, false, CIMPropertyList(), objects);
    check("references");
    Handle()->ReferenceNames(ctx, NS, full, CIMName(), String(), paths);
    check("referenceNames");
}

std::string ReadAll(const std::string& path) {
    std::ifstream in(path.c_str());
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Transaction steps and method entry and exit reach the server's trace file
// under the module's component, with the caller's source file.
TEST(CimHandleTest, TracesTransactionsAndMethods) {
    TempRoot root;
    const std::string traceFile = root.Under("/trace.log");
    ASSERT_EQ(0u, Tracer::setTraceFile(traceFile.c_str()));
    ASSERT_TRUE(Tracer::setTraceComponents("ProviderModule"));
    ASSERT_TRUE(Tracer::setTraceLevelNumber(5));
    std::shared_ptr<FakeCimom> fake = InstallFake();
    {
        orvsmis::AutoMethodTracer tracer("LoadEverything");
        Handle()->beginTransaction(NS);
        Handle()->commitTransaction();
        Handle()->beginTransaction(NS);
        Handle()->rollBackTransaction();
    }
    Tracer::flushTrace();
    Tracer::closeTrace();
    const std::string trace = ReadAll(traceFile);
    const char* const expected[] = {"Entering method LoadEverything", "Begin", "Saving disk array data",
        "Rolling back repository", "Exiting method LoadEverything"};
    std::string::size_type at = 0;
    for (const char* line : expected) {
        at = trace.find(line, at);
        ASSERT_NE(std::string::npos, at) << line << " missing or out of order in:\n" << trace;
    }
    EXPECT_NE(std::string::npos, trace.find("ProviderModule")) << trace;
    EXPECT_NE(std::string::npos, trace.find("RepositoryAccessTest.cpp")) << trace;
}

// The cleaner, against a repository holding instances of listed classes,
// of a class outside the lists and of the interop namespace.
class CleanerTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_root.Write(ConfigManager::CONFIG_FILE, "[smis]\nnamespace = root/orv\n");
        ASSERT_TRUE(Singleton<ConfigManager>::Instance()->Initialize());
        m_fake = InstallFake();
        for (const char* cls : {"ORV_Storage_ComputerSystem", "ORV_Storage_RedundancySet",
                 "ORV_Storage_ComponentCS", "ORV_Storage_MemberOfCollection", "ORV_Storage_ConcreteIdentity"}) {
            m_fake->AddInstance("root/orv", cls, "1");
            m_fake->AddInstance("root/orv", cls, "2");
        }
        m_fake->AddInstance("root/orv", "ORV_Storage_Unlisted", "1");
        m_fake->AddInstance("root/interop", "ORV_Storage_RegisteredProfile", "1");
        m_fake->AddInstance("root/interop", "ORV_Storage_SoftwareIdentity", "1");
        m_fake->log.clear();
    }
    std::string Clean(bool includeInterop) {
        testing::internal::CaptureStdout();
        try {
            RepositoryCleaner::Clean(includeInterop);
        } catch (...) {
            testing::internal::GetCapturedStdout();
            throw;
        }
        return testing::internal::GetCapturedStdout();
    }
    std::vector<std::string> Transactions() const {
        std::vector<std::string> out;
        for (const std::string& line : m_fake->log)
            if (line.find("Transaction") != std::string::npos) out.push_back(line);
        return out;
    }

    TempRoot m_root;
    std::shared_ptr<FakeCimom> m_fake;
};

TEST_F(CleanerTest, ProviderNamespaceOnly) {
    const std::string out = Clean(false);
    EXPECT_EQ("Delete data successfully\n", out);  // missing classes are not reported
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_ComputerSystem"));
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_RedundancySet"));
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_ComponentCS"));
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_MemberOfCollection"));
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_ConcreteIdentity"));
    EXPECT_EQ(1u, m_fake->Count("root/orv", "ORV_Storage_Unlisted"));
    EXPECT_EQ(1u, m_fake->Count("root/interop", "ORV_Storage_RegisteredProfile"));
    EXPECT_EQ((std::vector<std::string>{"beginTransaction root/orv", "commitTransaction"}), Transactions());
    // Every listed class is asked for once, in one transaction.
    size_t enumerations = 0;
    for (const std::string& line : m_fake->log)
        if (line.compare(0, 22, "enumerateInstanceNames") == 0) ++enumerations;
    EXPECT_EQ(static_cast<size_t>(RepositoryCleaner::PROVIDER_CLASS_COUNT), enumerations);
}

TEST_F(CleanerTest, WithInteropFirst) {
    Clean(true);
    EXPECT_EQ(0u, m_fake->Count("root/interop", "ORV_Storage_RegisteredProfile"));
    EXPECT_EQ(0u, m_fake->Count("root/interop", "ORV_Storage_SoftwareIdentity"));
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_ComputerSystem"));
    EXPECT_EQ((std::vector<std::string>{"beginTransaction root/interop", "commitTransaction",
                  "beginTransaction root/orv", "commitTransaction"}),
        Transactions());
}

TEST_F(CleanerTest, AFailingDeleteIsReportedAndTheRestGoesOn) {
    const std::vector<CIMObjectPath>& systems = m_fake->instances["root/orv|ORV_Storage_ComputerSystem"];
    m_fake->failingDeletes.insert(FakeCimom::text(systems[0].toString()));
    const std::string out = Clean(false);
    EXPECT_NE(std::string::npos, out.find("Error[ CIM_ERR_FAILED ] refused\n")) << out;
    EXPECT_NE(std::string::npos, out.find("Delete data successfully")) << out;
    // The rest of that class stays (the class stops at the failure), later classes are emptied.
    EXPECT_EQ(2u, m_fake->Count("root/orv", "ORV_Storage_ComputerSystem"));
    EXPECT_EQ(0u, m_fake->Count("root/orv", "ORV_Storage_MemberOfCollection"));
    EXPECT_EQ("commitTransaction", Transactions().back());
}

TEST_F(CleanerTest, EmptyRepositoryStillSucceeds) {
    m_fake->instances.clear();
    EXPECT_EQ("Delete data successfully\n", Clean(true));
}

TEST_F(CleanerTest, AFailedCommitIsRolledBack) {
    m_fake->inside = [](const std::string& what) {
        if (what == "commitTransaction") throw CIMException(CIM_ERR_FAILED, "disk full");
    };
    EXPECT_THROW(Clean(false), CIMException);
    EXPECT_EQ("rollBackTransaction", m_fake->log.back());
    EXPECT_EQ("", m_fake->openTransaction);
}

TEST_F(CleanerTest, NoNamespaceConfigured) {
    m_root.Write(ConfigManager::CONFIG_FILE, "[smis]\nx = 1\n");
    ASSERT_TRUE(Singleton<ConfigManager>::Instance()->Initialize());
    EXPECT_THROW(Clean(false), orvsmis::InvalidParamException);
    EXPECT_TRUE(Transactions().empty());
}

TEST_F(CleanerTest, ByNameCountsAndUsesThePrefix) {
    const OperationContext ctx;
    EXPECT_EQ(2, RepositoryCleaner::CleanInstancesByName(ctx, "root/orv", "RedundancySet"));
    EXPECT_EQ(0, RepositoryCleaner::CleanInstancesByName(ctx, "root/orv", "RedundancySet"));
    EXPECT_EQ(0, RepositoryCleaner::CleanInstancesByName(ctx, "root/orv", "NoSuchClass"));
    // A prefix that makes the class name invalid is reported, not thrown.
    Singleton<ConfigManager>::Instance()->SetConfigValue("general", "prefix", {"Bad Prefix "});
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, RepositoryCleaner::CleanInstancesByName(ctx, "root/orv", "StoragePool"));
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("Error[ Bad Prefix StoragePool ]")) << out;
}

}  // namespace
