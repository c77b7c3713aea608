// The volume and settings classes checked by the real CIM server: the
// instances the models write are declared in MOF, and the server refuses to
// start when the schema lacks a class or property they use.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "CompositeExtent.h"
#include "ElementSettingData.h"
#include "MC.h"
#include "StorageCapability.h"
#include "StorageClientSettingData.h"
#include "StorageConfigurationCapability.h"
#include "StoragePool.h"
#include "StorageVolume.h"
#include "VolumeTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using volumetest::ARRAY_ID;
namespace fs = std::filesystem;

namespace {

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

std::string scalar(const CIMValue& value) {
    switch (value.getType()) {
    case CIMTYPE_STRING: {
        String text;
        value.get(text);
        return quoted(text.toUtf8());
    }
    case CIMTYPE_REFERENCE: {
        CIMObjectPath path;
        value.get(path);
        return quoted(path.toString().toUtf8());
    }
    case CIMTYPE_BOOLEAN: {
        Boolean flag = false;
        value.get(flag);
        return flag ? "true" : "false";
    }
    default:
        return value.toString().toUtf8();
    }
}

// One value as MOF text: scalars, and the string and uint16 arrays the
// models write.
std::string mofValue(const CIMValue& value) {
    if (!value.isArray()) return scalar(value);
    std::ostringstream out;
    out << "{ ";
    if (value.getType() == CIMTYPE_STRING) {
        Array<String> items;
        value.get(items);
        for (Uint32 i = 0; i < items.size(); ++i) out << (i ? ", " : "") << quoted(items[i].toUtf8());
    } else if (value.getType() == CIMTYPE_UINT16) {
        Array<Uint16> items;
        value.get(items);
        for (Uint32 i = 0; i < items.size(); ++i) out << (i ? ", " : "") << items[i];
    } else {
        ADD_FAILURE() << "an array of type " << int(value.getType()) << " has no MOF form here";
    }
    out << " }";
    return out.str();
}

std::string mofInstance(const CIMInstance& instance) {
    std::ostringstream out;
    out << "instance of " << instance.getClassName().getString().toUtf8() << "\n{\n";
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty p = instance.getProperty(i);
        if (p.getValue().isArray() && p.getValue().getArraySize() == 0) continue;
        out << "    " << p.getName().getString().toUtf8() << " = " << mofValue(p.getValue()) << ";\n";
    }
    out << "};\n\n";
    return out.str();
}

// A folder laid out as the server's installation, with the schema including
// the volume and settings classes.
class ServerRoot {
public:
    ServerRoot() {
        char pattern[] = "/tmp/volume-schema-XXXXXX";
        if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern;
        schema = path + "/opt/pegasus/schema";
        fs::create_directories(schema);
        fs::create_directories(path + "/opt/pegasus/etc");
        fs::create_directories(path + "/var/run");
        fs::copy(std::string(TEST_SOURCE_DIR) + "/schema", schema, fs::copy_options::recursive);
        const std::string root = schema + "/20-root-orv.mof";
        std::ifstream in(root);
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        for (const char* file : {"orv/StorageVolumes.mof", "orv/StorageSettings.mof"})
            if (text.find(file) == std::string::npos) text += std::string("#pragma include (\"") + file + "\")\n";
        std::ofstream(root) << text;
        int port = freePort();
        if (port == 0) throw std::runtime_error("no free port");
        std::ofstream(path + "/opt/pegasus/etc/cimserver.conf") << "httpPort=" << port
                                                                << "\nenableHttpsConnection=false\n";
    }
    ~ServerRoot() {
        stop();
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
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

class VolumeSchema : public volumetest::VolumeFixture {
protected:
    // Every class of volumes and settings as the models write it, with the
    // associations whose two ends are among them.
    std::string modelsAsMof() {
        PoolRawData* pool = MakePool("0001", "RAID1/10", "virtual");
        Store(pool);
        CIMObjectPath poolPath = Model::AdjustObjectPath(StoragePool::WrapReference("0001", ARRAY_ID));
        CIMInstance poolInstance(MC::ClassName("StoragePool"));
        poolInstance.setPath(poolPath);
        walking->createInstance(context, MC::Namespace(), poolInstance);
        AddDisks("0001", 4, 1000);
        DataEventArgs poolEvent(context, pool, nullptr, ARRAY_ID);
        ParentArgs poolArgs(poolEvent, poolPath);
        CompositeExtent::OnCreate(poolArgs);
        StorageCapabilityArgs capabilityArgs(context, pool, 2, poolPath, false, true);
        StorageCapability::Create(&capabilityArgs);

        LdRawData* ld = MakeLd("0010", "0001", "RAID1/10", "ready", "LD Set(FC)");
        ld->RPLAttribute = "RV";
        Store(ld);
        StorageVolume volumes;
        DataEventArgs ldEvent(context, ld, nullptr, ARRAY_ID);
        CIMObjectPath volume = volumes.Create(&ldEvent);
        volumetest::RecordingObjects objects;
        const CIMName assoc = MC::ClassName("ElementSettingData");
        const CIMName result = MC::ClassName("StorageSetting");
        const String noRole;
        const CIMPropertyList properties;
        AssoArgs ask(context, volume, assoc, result, noRole, noRole, false, false, properties, objects);
        ElementSettingData().Associator(ask, "StorageVolume", "StorageSetting");
        EXPECT_EQ(objects.delivered.size(), 1u);

        ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
        DataEventArgs arrayEvent(context, array, nullptr, ARRAY_ID);
        CIMObjectPath service(String(), CIMNamespaceName(), MC::ClassName("StorageConfigurationService"),
                              Array<CIMKeyBinding>());
        ParentArgs serviceArgs(arrayEvent, service);
        StorageConfigurationCapability::Create(&serviceArgs);

        std::set<std::string> written;
        std::string mof = "#pragma namespace (\"root/orv\")\n\n";
        for (const char* cls : {"StorageVolume", "CompositeExtent", "StorageCapabilities", "StorageSettingWithHints",
                                "StorageSetting", "StorageConfigurationCapabilities"}) {
            std::vector<CIMInstance> found = walking->of(MC::ClassNameText(cls));
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) {
                mof += mofInstance(instance);
                written.insert(modeltest::canonical(instance.getPath()));
            }
        }
        for (const char* cls : {"StorageSettingsAssociatedToCapabilities", "CompositeExtentBasedOn", "BasedOn",
                                "ElementSettingData"}) {
            size_t kept = 0;
            for (const CIMInstance& link : walking->of(MC::ClassNameText(cls))) {
                bool inside = true;
                for (Uint32 i = 0; i < link.getPropertyCount(); ++i) {
                    CIMConstProperty p = link.getProperty(i);
                    if (p.getType() != CIMTYPE_REFERENCE) continue;
                    CIMObjectPath ref;
                    p.getValue().get(ref);
                    if (!written.count(modeltest::canonical(ref))) inside = false;
                }
                if (!inside) continue;
                mof += mofInstance(link);
                ++kept;
            }
            EXPECT_GT(kept, 0u) << cls;
        }
        ArrayRawData* platformArray = array;
        ParentArgs platformArgs(arrayEvent, Model::AdjustObjectPath(ComputerSystem().WrapReference(platformArray)));
        for (unsigned i = 0; i < StorageClientSettingData::m_platformCount; ++i)
            mof += mofInstance(StorageClientSettingData::WrapInstance(platformArgs, StorageClientSettingData::m_platforms[i]));
        pool->Release();
        ld->Release();
        array->Release();
        return mof;
    }
};

TEST_F(VolumeSchema, TheServerTakesEverythingTheModelsWrite) {
    ServerRoot root;
    std::ofstream(root.schema + "/90-volume-instances.mof") << modelsAsMof();
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

}  // namespace
