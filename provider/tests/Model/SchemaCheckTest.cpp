// The schema and the registration of the module, checked by the real CIM
// server: the instances the models write (produced here against a stand-in
// repository) are declared in a MOF file, and the server refuses to start
// when the schema does not define a class or property they use.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "ComputerSystem.h"
#include "NonToplevelComputerSystem.h"
#include "ModelTestSupport.h"
#include "SchemaServerCheck.h"

using namespace Pegasus;
using namespace orvsmis;
namespace fs = std::filesystem;

namespace {

using namespace schemacheck;


class SchemaCheck : public modeltest::ModelFixture {
protected:
    // The repository as the models leave it after an array with two
    // controllers has been loaded.
    std::string loadedArrayAsMof() {
        const std::string wwn = "2000000991000001";
        ArrayRawData* array = MakeArray(wwn, "attn");
        DacRawData* dac0 = MakeDac(wwn, "00", "ready");
        DacRawData* dac1 = MakeDac(wwn, "01", "fault");
        Store(array);
        Store(dac0);
        Store(dac1);
        DataEventArgs a(context, array, nullptr, wwn), d0(context, dac0, nullptr, wwn), d1(context, dac1, nullptr, wwn);
        ComputerSystem arrayModel;
        NonToplevelComputerSystem controllers;
        arrayModel.Create(&a);
        controllers.Create(&d0);
        controllers.Create(&d1);
        array->Release();
        dac0->Release();
        dac1->Release();

        std::string mof = "#pragma namespace (\"root/orv\")\n\n";
        // Referenced instances first: systems, then the set, then the links.
        for (const char* cls : {"ORV_Storage_ComputerSystem", "ORV_Storage_RedundancySet", "ORV_Storage_ComponentCS",
                                "ORV_Storage_MemberOfCollection", "ORV_Storage_ConcreteIdentity"}) {
            std::vector<CIMInstance> found = repository->of(cls);
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) mof += mofInstance(instance);
        }
        std::size_t written = 0;
        for (const char* cls : {"ORV_Storage_ComputerSystem", "ORV_Storage_RedundancySet", "ORV_Storage_ComponentCS",
                                "ORV_Storage_MemberOfCollection", "ORV_Storage_ConcreteIdentity"})
            written += repository->of(cls).size();
        EXPECT_EQ(written, 3u + 1u + 2u + 2u + 1u);
        return mof;
    }
};

TEST_F(SchemaCheck, TheServerTakesEverythingTheModelsWrite) {
    ServerRoot root;
    std::ofstream(root.schema + "/90-model-instances.mof") << loadedArrayAsMof();
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

TEST_F(SchemaCheck, TheServerRefusesAPropertyTheSchemaLacks) {
    ServerRoot root;
    std::string mof = loadedArrayAsMof();
    const std::string anchor = "    NameFormat = \"WWN\";\n";
    size_t at = mof.find(anchor);
    ASSERT_NE(std::string::npos, at);
    mof.insert(at + anchor.size(), "    ArrayModelName = \"Vx2000\";\n");
    std::ofstream(root.schema + "/90-model-instances.mof") << mof;
    std::string output;
    EXPECT_FALSE(root.start(output));
    EXPECT_NE(std::string::npos, output.find("ArrayModelName")) << output;
}

}  // namespace
