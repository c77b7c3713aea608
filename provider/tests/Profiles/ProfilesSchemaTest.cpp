// What the profiles and the server view write into the interop namespace,
// checked by the real CIM server: the instances go into a MOF file next to
// the installed schema, and the server refuses to start on a class or
// property the schema lacks.

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../Model/SchemaServerCheck.h"
#include "EventArgs.h"
#include "ProfilesTestSupport.h"
#include "RegisteredProfile.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

using namespace schemacheck;

// The interop namespace's MOF must take the module's interop classes.
void IncludeInInterop(const std::string& schemaDir, const std::string& file) {
    const std::string top = schemaDir + "/10-interop.mof";
    std::ifstream in(top);
    const std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string line = "#pragma include (\"" + file + "\")";
    if (content.find(line) == std::string::npos) std::ofstream(top, std::ios::app) << "\n" << line << "\n";
}

class ProfilesSchemaTest : public profiletest::ProfilesFixture {
protected:
    std::string WrittenAsMof() {
        // Without the server's own description, so that the module's server
        // view is written too.
        DataEventArgs args(context, nullptr, nullptr, std::string());
        RegisteredProfile profiles;
        profiles.Create(&args);
        std::string mof = "#pragma namespace (\"root/interop\")\n\n";
        size_t written = 0;
        // Referenced instances first, then the associations.
        for (const char* cls :
             {"ORV_Storage_RegisteredProfile", "ORV_Storage_RegisteredSubProfile", "ORV_Storage_SoftwareIdentity",
              "ORV_Storage_System", "ORV_Storage_ObjectManager", "ORV_Storage_Namespace",
              "ORV_Storage_CIMXMLCommunicationMechanism", "ORV_Storage_SubProfileRequiresProfile",
              "ORV_Storage_ElementConformsToProfile", "ORV_Storage_ElementSoftwareIdentity",
              "ORV_Storage_HostedService", "ORV_Storage_HostedAccessPoint", "ORV_Storage_NamespaceInManager",
              "ORV_Storage_CommMechanismForManager"}) {
            const std::vector<CIMInstance> found = interop().of(cls);
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) mof += mofInstance(instance);
            written += found.size();
        }
        EXPECT_EQ(interop().instances.size(), written) << "an instance of a class this test does not know";
        return mof;
    }
};

TEST_F(ProfilesSchemaTest, TheServerTakesEverythingTheModuleWritesIntoTheInteropNamespace) {
    ServerRoot root;
    IncludeInInterop(root.schema, "orv/SoftwareIdentity.mof");
    IncludeInInterop(root.schema, "interop/Profiles.mof");
    std::ofstream(root.schema + "/90-profile-instances.mof") << WrittenAsMof();
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

}  // namespace
