// The whole system in a temporary root for end-to-end tests: the simulated
// array, its polling daemon and the CIM server with the storage module,
// driven through scripts/sandbox, the simulator's console and wbemcli; and a
// listener subscribed to everything the module sends.

#ifndef ORVSMIS_TESTS_ENDTOENDSUPPORT_H
#define ORVSMIS_TESTS_ENDTOENDSUPPORT_H

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace e2e {


constexpr const char* kUser = "orvadmin";
constexpr const char* kPassword = "orv-demo-pass";

struct RunResult {
    int status = -1;
    std::string output;
};

// Runs a shell line made by this file only (paths from mkdtemp, numbers and
// literal words); standard error joins the output.
inline RunResult Shell(const std::string& line) {
    RunResult result;
    FILE* pipe = ::popen((line + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, got);
    result.status = ::pclose(pipe);
    return result;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    if (!in) return "<missing>";
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A port nobody listens on at this moment: the kernel picks it for port 0.
inline int FreePort() {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) throw std::runtime_error("socket failed");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof address;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ::close(fd);
        throw std::runtime_error("cannot find a free port");
    }
    ::close(fd);
    return ntohs(address.sin_port);
}

// Polls until done() holds or the time is up; true when it held.
inline bool WaitFor(double seconds, const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(static_cast<long>(seconds * 1000));
    for (;;) {
        if (done()) return true;
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    }
}

// The non-empty lines of a wbemcli answer.
inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        if (!line.empty()) lines.push_back(line);
    return lines;
}

// The object path of a wbemcli answer line ("host:port/ns:Class.keys props"),
// from its namespace on, ready to be handed back to wbemcli.
inline std::string PathOf(const std::string& line) {
    static const std::regex pattern("^\\S*?/((root/[a-z]+):[A-Za-z_]+\\.(\"[^\"]*\"|[^ \"])*)");
    std::smatch match;
    if (!std::regex_search(line, match, pattern)) return std::string();
    return match[1].str();
}

// One property of a wbemcli instance line; quoted values lose their quotes;
// "<none>" when the line has no such property.
inline std::string Property(const std::string& line, const std::string& name) {
    std::smatch match;
    const std::regex pattern("[ ,]" + name + "=(\"((?:[^\"\\\\]|\\\\.)*)\"|[^,\\n]*)");
    if (!std::regex_search(line, match, pattern)) return "<none>";
    return match[2].matched ? match[2].str() : match[1].str();
}

inline int CountOf(const std::string& text, const std::string& what) {
    int count = 0;
    for (std::string::size_type at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

// A process that has ended but not yet been reaped counts as gone.
inline bool ProcessAlive(const std::string& pidText) {
    const long pid = std::strtol(pidText.c_str(), nullptr, 10);
    if (pid <= 0 || ::kill(static_cast<pid_t>(pid), 0) != 0) return false;
    const std::string stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
    const std::string::size_type close = stat.rfind(')');
    return close == std::string::npos || stat.compare(close, 4, ") Z ") != 0;
}

// One running sandbox in a folder of its own.
class Sandbox {
public:
    Sandbox() {
        char pattern[] = "/tmp/orv-e2e-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        if (made == nullptr) throw std::runtime_error("mkdtemp failed");
        m_root = made;
    }
    ~Sandbox() {
        Stop();
        Shell("rm -rf '" + m_root + "'");
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // Starts the system; a port taken between the probe and the start is
    // met by trying again with other ports.
    bool Start(std::string* why, const std::string& arrayTemplate = "small") {
        for (int attempt = 0; attempt < 3; ++attempt) {
            m_httpPort = FreePort();
            do m_httpsPort = FreePort(); while (m_httpsPort == m_httpPort);
            RunResult started = Shell("BUILD_DIR='" + std::string(TEST_BINARY_DIR) + "' '" +
                                    std::string(TEST_SOURCE_DIR) + "/scripts/sandbox' start '" + m_root +
                                    "' --http-port " + std::to_string(m_httpPort) + " --https-port " +
                                    std::to_string(m_httpsPort) + " --template " + arrayTemplate);
            m_started = true;
            if (started.status == 0 && ServerPidAlive()) return LoadEnvironment(why);
            *why = started.output;
            Stop();
        }
        return false;
    }

    void Stop() {
        if (!m_started) return;
        Shell("'" + std::string(TEST_SOURCE_DIR) + "/scripts/sandbox' stop '" + m_root + "'");
        m_started = false;
    }

    const std::string& Root() const { return m_root; }
    std::string Path(const std::string& fixed) const { return m_root + fixed; }
    std::string Status() const { return ReadFile(Path("/opt/pegasus/etc/status")); }
    bool ServerPidAlive() const { return ProcessAlive(ReadFile(Path("/var/run/cimserver.pid"))); }

    // A program of the sandbox (arraysim, its tools, cimserver) with the
    // sandbox's environment.
    RunResult Tool(const std::string& arguments) const { return Shell(m_env + arguments); }

    // The server's address with the credentials, as wbemcli takes it.
    std::string Url() const {
        return std::string("http://") + kUser + ":" + kPassword + "@127.0.0.1:" + std::to_string(m_httpPort);
    }
    int HttpPort() const { return m_httpPort; }
    int HttpsPort() const { return m_httpsPort; }

    // wbemcli against this server: op is "ei", "ein" or "ecn"; target is
    // "namespace:class" or a namespace.
    RunResult Wbem(const std::string& op, const std::string& target) const {
        return Shell("wbemcli " + op + " '" + Url() + "/" + target + "'");
    }
    // Posts a CIM-XML request (written to a file of the sandbox first) and
    // gives the answer.
    std::string Post(const std::string& method, const std::string& body) const {
        const std::string file = Path("/request.xml");
        {
            std::ofstream out(file.c_str(), std::ios::trunc);
            out << body;
        }
        return Shell(std::string("curl -s --max-time 10 -u ") + kUser + ":" + kPassword +
                     " -H 'Content-Type: application/xml; charset=utf-8' -H 'CIMOperation: MethodCall'"
                     " -H 'CIMMethod: " + method + "' -H 'CIMObject: root%2Finterop' --data-binary @'" + file +
                     "' http://127.0.0.1:" + std::to_string(m_httpPort) + "/cimom").output;
    }

    std::string Instances(const std::string& className) const {
        return Wbem("ei", "root/orv:" + className).output;
    }
    int InstanceCount(const std::string& className) const {
        RunResult names = Wbem("ein", "root/orv:" + className);
        return CountOf(names.output, "/root/orv:" + className + ".");
    }

    // Sets keys of the module's configuration file and restarts the CIM
    // server so that the module reads them; the array and its daemon keep
    // running. Each key must already stand in the file as "key = value".
    bool RestartServerWith(const std::vector<std::pair<std::string, std::string>>& moduleKeys, std::string* why) {
        const std::string confPath = Path("/opt/pegasus/etc/smis_provider.conf");
        std::string conf = ReadFile(confPath);
        for (const auto& setting : moduleKeys) {
            const std::regex line("(^|\n)" + setting.first + "[ \t]*=[^\n]*");
            std::smatch match;
            if (!std::regex_search(conf, match, line)) {
                *why = "no key " + setting.first + " in " + confPath;
                return false;
            }
            conf.replace(static_cast<size_t>(match.position(0)), static_cast<size_t>(match.length(0)),
                         match[1].str() + setting.first + " = " + setting.second);
        }
        {
            std::ofstream out(confPath.c_str(), std::ios::trunc);
            out << conf;
            if (!out) {
                *why = "cannot write " + confPath;
                return false;
            }
        }
        const std::string oldPid = ReadFile(Path("/var/run/cimserver.pid"));
        const long pid = std::strtol(oldPid.c_str(), nullptr, 10);
        if (pid > 0 && ProcessAlive(oldPid)) {
            ::kill(static_cast<pid_t>(pid), SIGTERM);
            if (!WaitFor(30, [&] { return !ProcessAlive(oldPid); })) {
                ::kill(static_cast<pid_t>(pid), SIGKILL);
                WaitFor(5, [&] { return !ProcessAlive(oldPid); });
            }
        }
        ::unlink(Path("/var/run/cimserver.pid").c_str());
        ::unlink(Path("/opt/pegasus/etc/status").c_str());
        Tool("setsid cimserver --foreground >>'" + Path("/opt/pegasus/logs/cimserver.out") +
             "' 2>&1 </dev/null &");
        if (!WaitFor(60, [&] { return ServerPidAlive() && Wbem("ecn", "root/orv").status == 0; })) {
            *why = "the server did not come back:\n" + ReadFile(Path("/opt/pegasus/logs/cimserver.out"));
            return false;
        }
        return true;
    }

    std::string RedundancyStatus() const {
        std::smatch match;
        const std::string text = Instances("ORV_Storage_RedundancySet");
        static const std::regex pattern("RedundancyStatus=([0-9]+)");
        return std::regex_search(text, match, pattern) ? match[1].str() : "<none>";
    }

    // OperationalStatus of the ComputerSystem whose Name ends with suffix
    // ("" is the array, "-0" and "-1" its controllers).
    std::string OperationalStatusOf(const std::string& suffix) const {
        const std::string text = Instances("ORV_Storage_ComputerSystem");
        std::istringstream lines(text);
        std::string line;
        static const std::regex pattern(",Name=\"([0-9A-F]+(-[0-9]+)?)\".*OperationalStatus=([0-9]+)");
        while (std::getline(lines, line)) {
            std::smatch match;
            if (!std::regex_search(line, match, pattern)) continue;
            if (match[2].str() == suffix) return match[3].str();
        }
        return "<none>";
    }

private:
    bool LoadEnvironment(std::string* why) {
        RunResult env = Shell("'" + std::string(TEST_SOURCE_DIR) + "/scripts/sandbox' env '" + m_root + "'");
        std::istringstream lines(env.output);
        std::string line;
        m_env = "env";
        while (std::getline(lines, line)) {
            if (line.find('\'') != std::string::npos) {
                *why = "environment line with a quote: " + line;
                return false;
            }
            if (line.rfind("SMIS_ROOT=", 0) == 0 || line.rfind("PATH=", 0) == 0) m_env += " '" + line + "'";
        }
        m_env += " ";
        return true;
    }

    std::string m_root;
    std::string m_env;
    int m_httpPort = 0;
    int m_httpsPort = 0;
    bool m_started = false;
};

// CIM-XML bodies for the subscription objects in root/interop.
inline std::string KeyBinding(const std::string& name, const std::string& value) {
    return "<KEYBINDING NAME=\"" + name + "\"><KEYVALUE VALUETYPE=\"string\">" + value + "</KEYVALUE></KEYBINDING>";
}

inline std::string SubscriptionKeys(const std::string& className, const std::string& name) {
    return KeyBinding("CreationClassName", className) + KeyBinding("Name", name) +
           KeyBinding("SystemCreationClassName", "CIM_ComputerSystem") + KeyBinding("SystemName", "localhost");
}

inline std::string StringProperty(const std::string& name, const std::string& value) {
    return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

inline std::string KeyProperties(const std::string& className, const std::string& name) {
    return StringProperty("CreationClassName", className) + StringProperty("Name", name) +
           StringProperty("SystemCreationClassName", "CIM_ComputerSystem") + StringProperty("SystemName", "localhost");
}

inline std::string Reference(const std::string& property, const std::string& refClass, const std::string& className,
                      const std::string& name) {
    return "<PROPERTY.REFERENCE NAME=\"" + property + "\" REFERENCECLASS=\"" + refClass +
           "\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"" + className + "\">" + SubscriptionKeys(className, name) +
           "</INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>";
}

inline std::string CreateInstanceRequest(const std::string& className, const std::string& properties) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
           "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"CreateInstance\">"
           "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"interop\"/></LOCALNAMESPACEPATH>"
           "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"" +
           className + "\">" + properties + "</INSTANCE></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

class EndToEndTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string why;
        ASSERT_TRUE(m_box.Start(&why, ArrayTemplate())) << "sandbox did not start: " << why;
        if (!ModuleSettings().empty()) {
            // The first start waits for the array to be read once, so that
            // the restarted server meets a settled daemon.
            ASSERT_TRUE(WaitFor(90, [&] { return m_box.Status() == " ready"; })) << m_box.Status();
            ASSERT_TRUE(m_box.RestartServerWith(ModuleSettings(), &why)) << why;
        }
        ASSERT_TRUE(WaitFor(90, [&] { return m_box.Status() == " ready"; }))
            << "status after 90 s: [" << m_box.Status() << "], server output:\n"
            << ReadFile(m_box.Path("/opt/pegasus/logs/cimserver.out"));
    }
    void TearDown() override { m_box.Stop(); }

    // The simulator's template the array is made from.
    virtual std::string ArrayTemplate() const { return "small"; }
    // Keys of the module's configuration set before the module starts (the
    // server is restarted once for them); none by default.
    virtual std::vector<std::pair<std::string, std::string>> ModuleSettings() const { return {}; }

    // A console change that makes the daemon report and the module load.
    void SetController(int number, const std::string& state) {
        RunResult set = m_box.Tool("arraysim set controller " + std::to_string(number) + " --state " + state);
        ASSERT_EQ(0, set.status) << set.output;
    }

    Sandbox m_box;
};

// A listener subscribed to everything the module sends.
class IndicationEndToEndTest : public EndToEndTest {
protected:
    void SetUp() override {
        const std::string listener = std::string(TEST_BINARY_DIR) + "/bin/cimlistener";
        if (::access(listener.c_str(), X_OK) != 0) GTEST_SKIP() << "cimlistener is not built: " << listener;
        EndToEndTest::SetUp();
        if (HasFatalFailure()) return;
        const int port = FreePort();
        m_out = m_box.Path("/listener.out");
        RunResult started = Shell("setsid '" + listener + "' --address 127.0.0.1 --port " + std::to_string(port) +
                                  " >'" + m_out + "' 2>&1 </dev/null & echo $!");
        m_listenerPid = std::strtol(started.output.c_str(), nullptr, 10);
        ASSERT_GT(m_listenerPid, 0) << started.output;
        ASSERT_TRUE(WaitFor(10, [&] { return ReadFile(m_out).find("listening") != std::string::npos; }))
            << ReadFile(m_out);

        std::string answer = m_box.Post("CreateInstance",
            CreateInstanceRequest("CIM_IndicationFilter",
                KeyProperties("CIM_IndicationFilter", "e2e") +
                StringProperty("Query", "SELECT * FROM CIM_Indication") + StringProperty("QueryLanguage", "WQL") +
                StringProperty("SourceNamespace", "root/orv")));
        ASSERT_NE(std::string::npos, answer.find("IRETURNVALUE")) << answer;
        answer = m_box.Post("CreateInstance",
            CreateInstanceRequest("CIM_ListenerDestinationCIMXML",
                KeyProperties("CIM_ListenerDestinationCIMXML", "e2e") +
                StringProperty("Destination", "http://127.0.0.1:" + std::to_string(port))));
        ASSERT_NE(std::string::npos, answer.find("IRETURNVALUE")) << answer;
        answer = m_box.Post("CreateInstance",
            CreateInstanceRequest("CIM_IndicationSubscription",
                Reference("Filter", "CIM_IndicationFilter", "CIM_IndicationFilter", "e2e") +
                Reference("Handler", "CIM_ListenerDestination", "CIM_ListenerDestinationCIMXML", "e2e")));
        ASSERT_NE(std::string::npos, answer.find("IRETURNVALUE")) << answer;
    }
    void TearDown() override {
        if (m_listenerPid > 0) ::kill(static_cast<pid_t>(m_listenerPid), SIGTERM);
        EndToEndTest::TearDown();
    }

    // Lines the listener printed for indications of one class.
    int Received(const std::string& className) const { return CountOf(ReadFile(m_out), "\n" + className + " "); }

    std::string m_out;
    long m_listenerPid = 0;
};

}  // namespace e2e

#endif
