// Front end figures over HTTP on loopback, with authentication on: the
// server runs in this process with 10,000 stored instances; a cpp-httplib
// client sends CIM-XML as any client would.
//   EnumerateInstances of all 10,000 (time, bytes), EnumerateInstanceNames,
//   GetInstance latency (median and 99th percentile) on one kept-alive
//   connection and with a connection per request, a method call round trip.

#include <benchmark/benchmark.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/FrontEnd/NetworkFrontEnd.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Security/UserFile.h>
#include <Pegasus/Server/CIMServer.h>

#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

using namespace Pegasus;

namespace {

constexpr int kInstances = 10000;
const char* const kUser = "bench";
const char* const kPassword = "bench-secret";

// The server with its temporary root, started once for all benchmarks.
class BenchServer {
public:
    BenchServer() {
        namespace fs = std::filesystem;
        char pattern[] = "/tmp/bench-frontend-XXXXXX";
        if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
        _root = pattern;
        const fs::path schema = _root + "/opt/pegasus/schema";
        fs::create_directories(schema);
        fs::create_directories(_root + "/opt/pegasus/etc");
        fs::copy(std::string(TEST_SOURCE_DIR) + "/schema", schema, fs::copy_options::recursive);
        for (const auto& entry : fs::directory_iterator(std::string(TEST_SOURCE_DIR) + "/cimserver/tests/data/server"))
            if (entry.path().extension() == ".mof") fs::copy(entry.path(), schema / entry.path().filename());
        ::setenv("SMIS_ROOT", _root.c_str(), 1);

        CIMServerConfig config;
        config.providerDir = std::string(TEST_BINARY_DIR) + "/testmodules";
        config.enableHttpsConnection = false;
        config.httpPort = 0;     // any free port
        config.loopbackOnly = true;
        config.enableAuthentication = true;
        UserFile(config.passwordFile).addUser(kUser, kPassword);

        _server = std::make_unique<CIMServer>(config);
        _frontEnd = std::make_unique<NetworkFrontEnd>(*_server);
        _frontEnd->attach();
        _server->start();

        const CIMNamespaceName ns("root/test");
        Repository& repository = _server->repository();
        const auto began = std::chrono::steady_clock::now();
        repository.beginTransaction(ns);
        for (int i = 0; i < kInstances; ++i) {
            CIMInstance instance("Test_Stored");
            instance.addProperty(CIMProperty("Id", String::fromUtf8("stored-" + std::to_string(i))));
            instance.addProperty(CIMProperty("Note", String::fromUtf8("note of instance " + std::to_string(i) +
                                                                      " with some text & <markup> to escape")));
            instance.addProperty(CIMProperty("ElementName", String::fromUtf8("element " + std::to_string(i))));
            repository.createInstance(ns, instance);
        }
        repository.commitTransaction();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
        std::cout << "stored " << kInstances << " Test_Stored instances in " << seconds << " s" << std::endl;
    }

    ~BenchServer() {
        _server->stop();
        _frontEnd.reset();
        _server.reset();
        std::error_code ignored;
        std::filesystem::remove_all(_root, ignored);
        ::unsetenv("SMIS_ROOT");
    }

    int port() const { return _frontEnd->httpPort(); }

    std::unique_ptr<httplib::Client> client(bool keepAlive = true) const {
        auto c = std::make_unique<httplib::Client>("127.0.0.1", port());
        c->set_basic_auth(kUser, kPassword);
        c->set_keep_alive(keepAlive);
        c->set_read_timeout(60, 0);
        c->set_tcp_nodelay(true);
        return c;
    }

private:
    std::string _root;
    std::unique_ptr<CIMServer> _server;
    std::unique_ptr<NetworkFrontEnd> _frontEnd;
};

BenchServer& server() {
    static BenchServer instance;
    return instance;
}

std::string message(const std::string& call) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
           "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" + call + "</SIMPLEREQ></MESSAGE></CIM>";
}

const std::string kNamespace = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"test\"/></LOCALNAMESPACEPATH>";

std::string intrinsic(const std::string& name, const std::string& params) {
    return message("<IMETHODCALL NAME=\"" + name + "\">" + kNamespace + params + "</IMETHODCALL>");
}

std::string instanceName(const std::string& cls, const std::string& id) {
    return "<INSTANCENAME CLASSNAME=\"" + cls + "\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">" + id +
           "</KEYVALUE></KEYBINDING></INSTANCENAME>";
}

// Posts one operation; the body of a 200 answer that holds no ERROR, or
// throws with what came instead.
std::string call(httplib::Client& client, const std::string& method, const std::string& object,
    const std::string& body) {
    const httplib::Headers headers = {{"CIMProtocolVersion", "1.0"}, {"CIMOperation", "MethodCall"},
        {"CIMMethod", method}, {"CIMObject", object}};
    auto reply = client.Post("/cimom", headers, body, "application/xml; charset=\"utf-8\"");
    if (!reply) throw std::runtime_error(method + ": " + httplib::to_string(reply.error()));
    if (reply->status != 200 || reply->body.find("<ERROR") != std::string::npos)
        throw std::runtime_error(method + ": " + std::to_string(reply->status) + " " + reply->body.substr(0, 400));
    return reply->body;
}

size_t count(const std::string& text, const std::string& part) {
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++n;
    return n;
}

void reportLatencies(benchmark::State& state, std::vector<double>& ms) {
    if (ms.empty()) return;
    std::sort(ms.begin(), ms.end());
    state.counters["median_ms"] = ms[ms.size() / 2];
    state.counters["p99_ms"] = ms[std::min(ms.size() - 1, ms.size() * 99 / 100)];
    state.counters["max_ms"] = ms.back();
}

void BM_EnumerateInstances10k(benchmark::State& state) {
    auto client = server().client();
    const std::string body = intrinsic("EnumerateInstances",
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Stored\"/></IPARAMVALUE>");
    size_t bytes = 0;
    std::vector<double> ms;
    for (auto _ : state) {
        const auto began = std::chrono::steady_clock::now();
        std::string reply;
        try {
            reply = call(*client, "EnumerateInstances", "root%2Ftest", body);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            return;
        }
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count());
        if (count(reply, "<VALUE.NAMEDINSTANCE>") != kInstances) {
            state.SkipWithError("the answer does not hold every instance");
            return;
        }
        bytes = reply.size();
    }
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
    state.counters["answer_MB"] = static_cast<double>(bytes) / 1e6;
    reportLatencies(state, ms);
}
BENCHMARK(BM_EnumerateInstances10k)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_EnumerateInstanceNames10k(benchmark::State& state) {
    auto client = server().client();
    const std::string body = intrinsic("EnumerateInstanceNames",
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Stored\"/></IPARAMVALUE>");
    size_t bytes = 0;
    for (auto _ : state) {
        std::string reply;
        try {
            reply = call(*client, "EnumerateInstanceNames", "root%2Ftest", body);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            return;
        }
        if (count(reply, "<INSTANCENAME ") != kInstances) {
            state.SkipWithError("the answer does not hold every name");
            return;
        }
        bytes = reply.size();
    }
    state.counters["answer_MB"] = static_cast<double>(bytes) / 1e6;
}
BENCHMARK(BM_EnumerateInstanceNames10k)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

// Arg 1: one kept-alive connection for all requests (what clients do);
// arg 0: a new connection for each request.
void BM_GetInstance(benchmark::State& state) {
    auto client = server().client(state.range(0) != 0);
    std::vector<double> ms;
    int i = 0;
    for (auto _ : state) {
        const std::string id = "stored-" + std::to_string((i++ * 7919) % kInstances);
        const std::string body = intrinsic("GetInstance",
            "<IPARAMVALUE NAME=\"InstanceName\">" + instanceName("Test_Stored", id) + "</IPARAMVALUE>");
        const auto began = std::chrono::steady_clock::now();
        std::string reply;
        try {
            reply = call(*client, "GetInstance", "root%2Ftest", body);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            return;
        }
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count());
        if (reply.find("<VALUE>" + id + "</VALUE>") == std::string::npos) {
            state.SkipWithError(("the wrong instance came back for " + id).c_str());
            return;
        }
    }
    reportLatencies(state, ms);
}
BENCHMARK(BM_GetInstance)->ArgName("keepAlive")->Arg(1)->Arg(0)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_MethodCallRoundTrip(benchmark::State& state) {
    auto client = server().client();
    const std::string object = "root%2Ftest%3ATest_Element.Id%3D%22from-initialize%22";
    std::vector<double> ms;
    Uint32 n = 0;
    for (auto _ : state) {
        ++n;
        const std::string body = message(
            "<METHODCALL NAME=\"DoIt\"><LOCALINSTANCEPATH>" + kNamespace +
            instanceName("Test_Element", "from-initialize") + "</LOCALINSTANCEPATH>"
            "<PARAMVALUE NAME=\"Count\" PARAMTYPE=\"uint32\"><VALUE>" + std::to_string(n) + "</VALUE></PARAMVALUE>"
            "<PARAMVALUE NAME=\"Name\" PARAMTYPE=\"string\"><VALUE>bench</VALUE></PARAMVALUE>"
            "<PARAMVALUE NAME=\"Flags\" PARAMTYPE=\"uint16\"><VALUE.ARRAY><VALUE>1</VALUE><VALUE>2</VALUE>"
            "</VALUE.ARRAY></PARAMVALUE></METHODCALL>");
        const auto began = std::chrono::steady_clock::now();
        std::string reply;
        try {
            reply = call(*client, "DoIt", object, body);
        } catch (const std::exception& e) {
            state.SkipWithError(e.what());
            return;
        }
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count());
        if (reply.find("<VALUE>" + std::to_string(2 * n) + "</VALUE>") == std::string::npos) {
            state.SkipWithError("the method's return value is wrong");
            return;
        }
    }
    reportLatencies(state, ms);
}
BENCHMARK(BM_MethodCallRoundTrip)->Iterations(1000)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    try {
        server();   // started before the clock runs
    } catch (const std::exception& e) {
        std::cerr << "bench_frontend: the server cannot start: " << e.what() << std::endl;
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
