// The cimlistener program, fed by the server's own sender: text and JSON
// lines in order, HTTPS, and requests it must refuse without stopping.

#include "TestListener.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Indication/IndicationDestinationQueue.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace Pegasus;

namespace {

const std::string kProgram = std::string(TEST_BINARY_DIR) + "/bin/cimlistener";

// Runs the program; its standard output is read line by line.
class Program {
public:
    explicit Program(const std::string& arguments) {
        // The time limit keeps a failing test from waiting forever.
        const std::string command = "timeout 60 " + kProgram + " " + arguments + " 2>/dev/null";
        _pipe = ::popen(command.c_str(), "r");
        if (_pipe == nullptr) throw std::runtime_error("popen failed");
    }
    ~Program() { finish(); }
    std::vector<std::string> lines(std::size_t count) {
        std::vector<std::string> out;
        char buffer[65536];
        while (out.size() < count && std::fgets(buffer, sizeof(buffer), _pipe) != nullptr) {
            std::string line(buffer);
            if (!line.empty() && line.back() == '\n') line.pop_back();
            out.push_back(line);
        }
        return out;
    }
    int finish() {
        if (_pipe == nullptr) return _status;
        _status = ::pclose(_pipe);
        _pipe = nullptr;
        return _status;
    }

private:
    FILE* _pipe = nullptr;
    int _status = -1;
};

CIMInstance creation(const std::string& id) {
    CIMInstance source("ORV_StorageVolume");
    source.addProperty(CIMProperty("DeviceID", String::fromUtf8(id)));
    source.addProperty(CIMProperty("ElementName", String("volume one")));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("DeviceID", String::fromUtf8(id), CIMKeyBinding::STRING));
    source.setPath(CIMObjectPath(String(), CIMNamespaceName("root/orv"), "ORV_StorageVolume", keys));
    CIMInstance c("CIM_InstCreation");
    c.addProperty(CIMProperty("SourceInstance", CIMValue(source)));
    c.addProperty(CIMProperty("SourceInstanceModelPath", String::fromUtf8("ORV_StorageVolume.DeviceID=\"" + id + "\"")));
    return c;
}

CIMInstance alert(const std::string& id) {
    CIMInstance a("CIM_AlertIndication");
    a.addProperty(CIMProperty("PerceivedSeverity", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("AlertType", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("MessageID", String::fromUtf8(id)));
    a.addProperty(CIMProperty("Description", String("Capacity is over.")));
    return a;
}

IndicationDestinationQueue::Options fastRetries() {
    IndicationDestinationQueue::Options options;
    options.retryInterval = std::chrono::milliseconds(50);
    options.maxRetryInterval = std::chrono::milliseconds(200);
    return options;
}

TEST(CimlistenerProgramTest, PrintsOneTextLinePerIndicationInOrderAndExitsAfterCount) {
    const int port = TestListener::freePort();
    // Queued before the listener runs: it gets them once it is up.
    IndicationDestinationQueue queue("http://127.0.0.1:" + std::to_string(port) + "/", fastRetries());
    queue.enqueue(alert("DRM28"));
    queue.enqueue(creation("0001"));
    queue.enqueue(alert("DRM29"));
    Program program("--port " + std::to_string(port) + " --count 3");
    const std::vector<std::string> lines = program.lines(3);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].rfind("CIM_AlertIndication ", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find("MessageID=DRM28"), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find("Description=\"Capacity is over.\""), std::string::npos) << lines[0];
    EXPECT_EQ(lines[1].rfind("CIM_InstCreation ", 0), 0u) << lines[1];
    EXPECT_NE(lines[1].find("SourceInstance=ORV_StorageVolume"), std::string::npos) << lines[1];
    EXPECT_NE(lines[1].find("SourceInstanceModelPath="), std::string::npos) << lines[1];
    EXPECT_NE(lines[1].find("0001"), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find("MessageID=DRM29"), std::string::npos) << lines[2];
    EXPECT_EQ(program.finish(), 0);
    EXPECT_TRUE(queue.waitIdle(std::chrono::seconds(10)));
    EXPECT_EQ(queue.delivered(), 3u);
}

TEST(CimlistenerProgramTest, JsonLinesCarryEveryPropertyAndEmbeddedInstances) {
    const int port = TestListener::freePort();
    IndicationDestinationQueue queue("http://127.0.0.1:" + std::to_string(port) + "/listener", fastRetries());
    queue.enqueue(creation("0002"));
    queue.enqueue(alert("DRM29"));
    Program program("--port " + std::to_string(port) + " --json --count 2");
    const std::vector<std::string> lines = program.lines(2);
    ASSERT_EQ(lines.size(), 2u);
    const nlohmann::json first = nlohmann::json::parse(lines[0]);
    EXPECT_EQ(first["class"], "CIM_InstCreation");
    EXPECT_EQ(first["properties"]["SourceInstance"]["class"], "ORV_StorageVolume");
    EXPECT_EQ(first["properties"]["SourceInstance"]["properties"]["ElementName"], "volume one");
    EXPECT_EQ(first["properties"]["SequenceNumber"], 0);
    const nlohmann::json second = nlohmann::json::parse(lines[1]);
    EXPECT_EQ(second["class"], "CIM_AlertIndication");
    EXPECT_EQ(second["properties"]["PerceivedSeverity"], 5);
    EXPECT_EQ(second["properties"]["MessageID"], "DRM29");
    EXPECT_EQ(second["properties"]["SequenceNumber"], 1);
    EXPECT_EQ(program.finish(), 0);
}

TEST(CimlistenerProgramTest, RefusesWhatIsNotAnExportIndicationAndKeepsListening) {
    const int port = TestListener::freePort();
    Program program("--port " + std::to_string(port) + " --count 1");
    httplib::Client client("127.0.0.1", port);
    client.set_connection_timeout(1);
    bool up = false;
    for (int i = 0; i < 100 && !up; ++i) {   // until the program is up
        httplib::Result first = client.Post("/", "<CIM/>", "application/xml");
        if (first) {
            up = true;
            EXPECT_EQ(first->status, 400);   // no CIMExport header
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    ASSERT_TRUE(up);
    const httplib::Headers export_{{"CIMExport", "MethodRequest"}, {"CIMExportMethod", "ExportIndication"}};
    httplib::Result result = client.Post("/", export_, "<CIM><unclosed>", "application/xml");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 400);
    EXPECT_EQ(result->get_header_value("CIMError"), "request-not-valid");
    result = client.Post("/", {{"CIMExport", "MethodRequest"}, {"CIMExportMethod", "Other"}}, "<CIM/>",
        "application/xml");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->get_header_value("CIMError"), "header-mismatch");

    IndicationDestinationQueue queue("http://127.0.0.1:" + std::to_string(port) + "/", fastRetries());
    queue.enqueue(alert("still-listening"));
    const std::vector<std::string> lines = program.lines(1);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("still-listening"), std::string::npos);
    EXPECT_EQ(program.finish(), 0);
}

TEST(CimlistenerProgramTest, ReceivesOverHttps) {
    char pattern[] = "/tmp/cimlistener-test-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    const std::string dir = pattern;
    const std::string command = "openssl req -x509 -newkey rsa:2048 -nodes -days 1 -subj /CN=127.0.0.1 -keyout " +
                                dir + "/key.pem -out " + dir + "/cert.pem >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << "openssl could not make a test certificate";
    const int port = TestListener::freePort();
    IndicationDestinationQueue queue("https://127.0.0.1:" + std::to_string(port) + "/", fastRetries());
    queue.enqueue(alert("secure"));
    {
        Program program("--port " + std::to_string(port) + " --count 1 --cert " + dir + "/cert.pem --key " + dir +
                        "/key.pem");
        const std::vector<std::string> lines = program.lines(1);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_NE(lines[0].find("MessageID=secure"), std::string::npos);
        EXPECT_EQ(program.finish(), 0);
    }
    // A key without a certificate is a usage error.
    Program wrong("--port " + std::to_string(port) + " --key " + dir + "/key.pem");
    EXPECT_NE(wrong.finish(), 0);
    std::filesystem::remove_all(dir);
}

} // namespace
