// The test schema, instance builders and a repository in a temporary folder,
// shared by the repository's test files.
#ifndef REPOSITORY_TEST_SUPPORT_H
#define REPOSITORY_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace repotest {


using namespace Pegasus;

inline const char* ORV_MOF = R"(
[Abstract]
class T_Managed { string Caption; };

[Abstract]
class T_Logical : T_Managed
{
    [Key] string SystemName;
    [Key] string DeviceID;
    uint64 Size;
};

class T_Volume : T_Logical
{
    string Name;
    uint16 Status[];
    [EmbeddedInstance("T_Pool")] string Detail;
};

class T_Disk : T_Logical { uint32 Rpm; };

class T_Pool : T_Managed
{
    [Key] string InstanceID;
    [Key] uint32 Number;
};

[Association]
class T_Dependency
{
    [Key] T_Managed REF Antecedent;
    [Key] T_Managed REF Dependent;
};

[Association]
class T_AllocatedFrom : T_Dependency
{
    [Override ("Antecedent")] T_Pool REF Antecedent;
    [Override ("Dependent")] T_Logical REF Dependent;
};
)";

inline const char* INTEROP_MOF = R"(
[Abstract]
class T_Managed { string Caption; };

class T_Profile : T_Managed { [Key] string InstanceID; };

[Association]
class T_ElementConformsToProfile
{
    [Key] T_Profile REF ConformantStandard;
    [Key] T_Managed REF ManagedElement;
};
)";

inline const CIMNamespaceName ORV("root/orv");
inline const CIMNamespaceName INTEROP("interop");

inline CIMStatusCode codeOf(const std::function<void()>& f, std::string* message = nullptr)
{
    try {
        f();
    } catch (const CIMException& e) {
        if (message)
            *message = e.getMessage().toUtf8();
        return e.getCode();
    }
    return CIM_ERR_SUCCESS;
}

inline CIMInstance volume(const std::string& id, const std::string& cls = "T_Volume")
{
    CIMInstance v{CIMName(cls.c_str())};
    v.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(String("SYS1"))));
    v.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(id.c_str()))));
    v.addProperty(CIMProperty(CIMName("Size"), CIMValue(Uint64(1024))));
    return v;
}

inline CIMInstance pool(const std::string& id, Uint32 number)
{
    CIMInstance p{CIMName("T_Pool")};
    p.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String(id.c_str()))));
    p.addProperty(CIMProperty(CIMName("Number"), CIMValue(number)));
    return p;
}

inline CIMInstance association(const std::string& cls, const CIMObjectPath& antecedent,
    const CIMObjectPath& dependent)
{
    CIMInstance a{CIMName(cls.c_str())};
    a.addProperty(CIMProperty(CIMName("Antecedent"), CIMValue(antecedent)));
    a.addProperty(CIMProperty(CIMName("Dependent"), CIMValue(dependent)));
    return a;
}

// A repository in a fresh temporary folder, on the test schema.
class RepositoryFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/repotestXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        dir = pattern;
        schema.loadString(ORV_MOF, "orv.mof", "root/orv");
        schema.loadString(INTEROP_MOF, "interop.mof", "interop");
        open();
    }
    void TearDown() override
    {
        repo.reset();
        std::filesystem::remove_all(dir);
    }
    void open() { repo.reset(new Repository(dir, schema)); }

    std::string dir;
    SchemaManager schema;
    std::unique_ptr<Repository> repo;
};

inline std::vector<std::string> sortedPaths(const Array<CIMObjectPath>& paths)
{
    std::vector<std::string> out;
    for (const CIMObjectPath& p : paths)
        out.push_back(p.toString().toUtf8());
    std::sort(out.begin(), out.end());
    return out;
}

inline CIMObjectPath volumePath(const std::string& id, const std::string& cls = "T_Volume")
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemName"), String("SYS1"), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("DeviceID"), String(id.c_str()), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName(cls.c_str()), keys);
}

} // namespace repotest

#endif
