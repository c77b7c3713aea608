// The physical view's classes checked by the real CIM server: every instance
// the models write, in both namespaces, is declared in MOF next to the
// installed schema, and the server must start on it.

#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/Constants.h>

#include "SoftwareIdentity.h"
#include "PhysicalViewTestSupport.h"
#include "../Model/SchemaServerCheck.h"

using namespace Pegasus;
using namespace orvsmis;
using physicaltest::WWN;

namespace {

// Makes the copied top file include file when it does not yet.
void includeIn(const std::string& top, const std::string& file) {
    std::ifstream in(top);
    std::stringstream text;
    text << in.rdbuf();
    const std::string line = "#pragma include (\"" + file + "\")";
    if (text.str().find(line) == std::string::npos) std::ofstream(top, std::ios::app) << "\n" << line << "\n";
}

class PhysicalViewSchema : public physicaltest::PhysicalFixture {
protected:
    std::string instancesOf(const std::vector<const char*>& classes) {
        std::string mof;
        for (const char* cls : classes) {
            std::vector<CIMInstance> found = repository->of(cls);
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) mof += schemacheck::mofInstance(instance);
        }
        return mof;
    }
};

TEST_F(PhysicalViewSchema, TheServerTakesEverythingThePhysicalViewWrites) {
    CreateArray(ArrayRecord());
    PdRawData* pd = Disk("00-0a");
    CreateDisk(pd);

    // Systems and devices first, then what refers to them.
    std::string mof = "#pragma namespace (\"root/orv\")\n\n";
    mof += instancesOf({"ORV_Storage_ComputerSystem", "ORV_Storage_DiskDrive", "ORV_Storage_Chassis",
                        "ORV_Storage_Location", "ORV_Storage_PhysicalPackage", "ORV_Storage_Product",
                        "ORV_Storage_SoftwareIdentity", "ORV_Storage_Realizes", "ORV_Storage_Container",
                        "ORV_Storage_ComputerSystemPackage", "ORV_Storage_ProductPhysicalComponent",
                        "ORV_Storage_ProductParentChild", "ORV_Storage_PhysicalElementLocation",
                        "ORV_Storage_InstalledSoftwareIdentity", "ORV_Storage_ElementSoftwareIdentity"});

    // The provider's own identity lives in the interop namespace.
    auto stand = std::make_shared<modeltest::FakeRepository>();
    CIMOMHandle handle(stand);
    Singleton<CimHandle>::Instance()->Initialize(handle);
    SoftwareIdentity::Create(context, std::map<std::string, CIMObjectPath>());
    ASSERT_EQ(stand->count("ORV_Storage_SoftwareIdentity"), 1u);
    mof += "#pragma namespace (\"root/interop\")\n\n";
    mof += schemacheck::mofInstance(stand->of("ORV_Storage_SoftwareIdentity")[0]);

    schemacheck::ServerRoot root;
    includeIn(root.schema + "/20-root-orv.mof", "orv/SoftwareIdentity.mof");
    includeIn(root.schema + "/20-root-orv.mof", "orv/PhysicalView.mof");
    includeIn(root.schema + "/10-interop.mof", "orv/SoftwareIdentity.mof");
    std::ofstream(root.schema + "/90-model-instances.mof") << mof;
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

}  // namespace
