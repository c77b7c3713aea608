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

using namespace Pegasus;
using namespace orvsmis;
namespace fs = std::filesystem;

namespace {

// A loopback port that nobody listens on right now.
int freePort() {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) return 0;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    int port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(fd);
    return port;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    return out + "\"";
}

// One value as MOF text; the models write strings, uint16 values and arrays
// of both, and references.
std::string mofValue(const CIMValue& value) {
    std::ostringstream out;
    switch (value.getType()) {
    case CIMTYPE_STRING:
        if (value.isArray()) {
            Array<String> items;
            value.get(items);
            out << "{ ";
            for (Uint32 i = 0; i < items.size(); ++i) out << (i ? ", " : "") << quoted(items[i].toUtf8());
            out << " }";
        } else {
            String text;
            value.get(text);
            out << quoted(text.toUtf8());
        }
        break;
    case CIMTYPE_UINT16:
        if (value.isArray()) {
            Array<Uint16> items;
            value.get(items);
            out << "{ ";
            for (Uint32 i = 0; i < items.size(); ++i) out << (i ? ", " : "") << items[i];
            out << " }";
        } else {
            Uint16 number = 0;
            value.get(number);
            out << number;
        }
        break;
    case CIMTYPE_REFERENCE: {
        CIMObjectPath path;
        value.get(path);
        out << quoted(path.toString().toUtf8());
        break;
    }
    default:
        ADD_FAILURE() << "a value of type " << int(value.getType()) << " has no MOF form here";
    }
    return out.str();
}

std::string mofInstance(const CIMInstance& instance) {
    std::ostringstream out;
    out << "instance of " << instance.getClassName().getString().toUtf8() << "\n{\n";
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty p = instance.getProperty(i);
        out << "    " << p.getName().getString().toUtf8() << " = " << mofValue(p.getValue()) << ";\n";
    }
    out << "};\n\n";
    return out.str();
}

// A folder laid out as the server's installation, with the schema and the
// module's registration.
class ServerRoot {
public:
    ServerRoot() {
        char pattern[] = "/tmp/model-schema-XXXXXX";
        if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern;
        schema = path + "/opt/pegasus/schema";
        fs::create_directories(schema);
        fs::create_directories(path + "/opt/pegasus/etc");
        fs::create_directories(path + "/var/run");
        fs::copy(std::string(TEST_SOURCE_DIR) + "/schema", schema, fs::copy_options::recursive);
        fs::copy(std::string(TEST_SOURCE_DIR) + "/provider/registration/ORVSMISProvider.mof",
                 schema + "/ORVSMISProvider.mof");
        int port = freePort();
        if (port == 0) throw std::runtime_error("no free port");
        std::ofstream(path + "/opt/pegasus/etc/cimserver.conf")
            << "httpPort=" << port << "\nenableHttpsConnection=false\n";
    }
    ~ServerRoot() {
        stop();
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }

    // Runs the server to the point where it serves (or fails); true when it
    // serves. Its words go to output.
    bool start(std::string& output) {
        std::string command = "SMIS_ROOT=" + path + " " + TEST_BINARY_DIR + "/bin/cimserver 2>&1";
        FILE* pipe = ::popen(command.c_str(), "r");
        if (pipe == nullptr) return false;
        char buffer[512];
        while (::fgets(buffer, sizeof buffer, pipe) != nullptr) output += buffer;
        return ::pclose(pipe) == 0;
    }

    void stop() {
        std::ifstream in(path + "/var/run/cimserver.pid");
        pid_t pid = 0;
        if (!(in >> pid) || pid <= 0) return;
        ::kill(pid, SIGTERM);
        for (int i = 0; i < 300 && ::kill(pid, 0) == 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(100));
        fs::remove(path + "/var/run/cimserver.pid");
    }

    std::string path;
    std::string schema;
};

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
