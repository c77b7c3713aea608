// The whole system in a temporary root: the simulated array, its polling
// daemon and the CIM server with the storage module, driven through
// scripts/sandbox, the simulator's console and wbemcli.

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
#include <vector>

namespace {

const char* const kUser = "orvadmin";
const char* const kPassword = "orv-demo-pass";

struct RunResult {
    int status = -1;
    std::string output;
};

// Runs a shell line made by this file only (paths from mkdtemp, numbers and
// literal words); standard error joins the output.
RunResult Shell(const std::string& line) {
    RunResult result;
    FILE* pipe = ::popen((line + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) result.output.append(buffer, got);
    result.status = ::pclose(pipe);
    return result;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    if (!in) return "<missing>";
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A port nobody listens on at this moment: the kernel picks it for port 0.
int FreePort() {
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
bool WaitFor(double seconds, const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(static_cast<long>(seconds * 1000));
    for (;;) {
        if (done()) return true;
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    }
}

int CountOf(const std::string& text, const std::string& what) {
    int count = 0;
    for (std::string::size_type at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

// A process that has ended but not yet been reaped counts as gone.
bool ProcessAlive(const std::string& pidText) {
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
    bool Start(std::string* why) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            m_httpPort = FreePort();
            do m_httpsPort = FreePort(); while (m_httpsPort == m_httpPort);
            RunResult started = Shell("BUILD_DIR='" + std::string(TEST_BINARY_DIR) + "' '" +
                                    std::string(TEST_SOURCE_DIR) + "/scripts/sandbox' start '" + m_root +
                                    "' --http-port " + std::to_string(m_httpPort) + " --https-port " +
                                    std::to_string(m_httpsPort) + " --template small");
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

    // wbemcli against this server: op is "ei", "ein" or "ecn"; target is
    // "namespace:class" or a namespace.
    RunResult Wbem(const std::string& op, const std::string& target) const {
        return Shell("wbemcli " + op + " 'http://" + kUser + ":" + kPassword + "@127.0.0.1:" +
                   std::to_string(m_httpPort) + "/" + target + "'");
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
std::string KeyBinding(const std::string& name, const std::string& value) {
    return "<KEYBINDING NAME=\"" + name + "\"><KEYVALUE VALUETYPE=\"string\">" + value + "</KEYVALUE></KEYBINDING>";
}

std::string SubscriptionKeys(const std::string& className, const std::string& name) {
    return KeyBinding("CreationClassName", className) + KeyBinding("Name", name) +
           KeyBinding("SystemCreationClassName", "CIM_ComputerSystem") + KeyBinding("SystemName", "localhost");
}

std::string StringProperty(const std::string& name, const std::string& value) {
    return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

std::string KeyProperties(const std::string& className, const std::string& name) {
    return StringProperty("CreationClassName", className) + StringProperty("Name", name) +
           StringProperty("SystemCreationClassName", "CIM_ComputerSystem") + StringProperty("SystemName", "localhost");
}

std::string Reference(const std::string& property, const std::string& refClass, const std::string& className,
                      const std::string& name) {
    return "<PROPERTY.REFERENCE NAME=\"" + property + "\" REFERENCECLASS=\"" + refClass +
           "\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"" + className + "\">" + SubscriptionKeys(className, name) +
           "</INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>";
}

std::string CreateInstanceRequest(const std::string& className, const std::string& properties) {
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
        ASSERT_TRUE(m_box.Start(&why)) << "sandbox did not start: " << why;
        ASSERT_TRUE(WaitFor(30, [&] { return m_box.Status() == " ready"; }))
            << "status after 30 s: [" << m_box.Status() << "], server output:\n"
            << ReadFile(m_box.Path("/opt/pegasus/logs/cimserver.out"));
    }
    void TearDown() override { m_box.Stop(); }

    // A console change that makes the daemon report and the module load.
    void SetController(int number, const std::string& state) {
        RunResult set = m_box.Tool("arraysim set controller " + std::to_string(number) + " --state " + state);
        ASSERT_EQ(0, set.status) << set.output;
    }

    Sandbox m_box;
};

TEST_F(EndToEndTest, SmallArrayComesUpWithControllersAndHealthyRedundancy) {
    const std::string systems = m_box.Instances("ORV_Storage_ComputerSystem");
    EXPECT_EQ(3, m_box.InstanceCount("ORV_Storage_ComputerSystem")) << systems;
    EXPECT_EQ("2", m_box.OperationalStatusOf("")) << systems;
    EXPECT_EQ("2", m_box.OperationalStatusOf("-0")) << systems;
    EXPECT_EQ("2", m_box.OperationalStatusOf("-1")) << systems;
    EXPECT_NE(std::string::npos, systems.find("NameFormat=\"WWN\"")) << systems;

    EXPECT_EQ(1, m_box.InstanceCount("ORV_Storage_RedundancySet"));
    EXPECT_EQ("2", m_box.RedundancyStatus());
    // The controllers hang off the array and belong to its redundancy set.
    EXPECT_EQ(2, m_box.InstanceCount("ORV_Storage_ComponentCS"));
    EXPECT_EQ(2, m_box.InstanceCount("ORV_Storage_MemberOfCollection"));
}

TEST_F(EndToEndTest, ControllerFaultAndRepairReachTheRepository) {
    SetController(1, "failure");
    EXPECT_TRUE(WaitFor(30, [&] { return m_box.RedundancyStatus() == "3"; }))
        << "RedundancyStatus " << m_box.RedundancyStatus();
    EXPECT_NE("2", m_box.OperationalStatusOf("-1"));
    EXPECT_EQ("2", m_box.OperationalStatusOf("-0"));
    EXPECT_EQ(" ready", m_box.Status());

    SetController(1, "ready");
    EXPECT_TRUE(WaitFor(30, [&] { return m_box.RedundancyStatus() == "2"; }))
        << "RedundancyStatus " << m_box.RedundancyStatus();
    EXPECT_EQ("2", m_box.OperationalStatusOf("-1"));
}

TEST_F(EndToEndTest, FailingViewToolEmptiesTheRepositoryUntilItAnswersAgain) {
    // Four attempts make one load; ten failures outlast two loads, so the
    // failed state lasts long enough to be seen.
    RunResult fault = m_box.Tool("arraysim fault Vexview --mode fail --count 10 --rc 3 --message 'array busy'");
    ASSERT_EQ(0, fault.status) << fault.output;
    SetController(1, "failure");

    EXPECT_TRUE(WaitFor(60, [&] {
        return m_box.Status().rfind(" abnormal", 0) == 0 &&
               m_box.InstanceCount("ORV_Storage_ComputerSystem") == 0;
    })) << "status [" << m_box.Status() << "], systems:\n"
        << m_box.Instances("ORV_Storage_ComputerSystem");
    EXPECT_EQ(0, m_box.InstanceCount("ORV_Storage_RedundancySet"));
    EXPECT_EQ(0, m_box.InstanceCount("ORV_Storage_ComponentCS"));
    EXPECT_TRUE(m_box.ServerPidAlive());

    // Once the faults are used up the next load rebuilds everything, with
    // the change made meanwhile.
    EXPECT_TRUE(WaitFor(90, [&] {
        return m_box.Status() == " ready" && m_box.InstanceCount("ORV_Storage_ComputerSystem") == 3;
    })) << "status [" << m_box.Status() << "]";
    EXPECT_EQ("3", m_box.RedundancyStatus());
    EXPECT_EQ(2, m_box.InstanceCount("ORV_Storage_ComponentCS"));
    EXPECT_EQ(2, m_box.InstanceCount("ORV_Storage_MemberOfCollection"));
}

TEST_F(EndToEndTest, RestartedPollingDaemonIsFollowedAgain) {
    const std::string pidFile = m_box.Path("/var/run/HubMonitor.pid");
    const std::string oldPid = ReadFile(pidFile);
    ASSERT_TRUE(ProcessAlive(oldPid)) << "no daemon: " << oldPid;
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(std::strtol(oldPid.c_str(), nullptr, 10)), SIGKILL));
    ASSERT_TRUE(WaitFor(10, [&] { return !ProcessAlive(oldPid); }));

    // The daemon is gone: the server keeps answering from its repository.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_EQ(3, m_box.InstanceCount("ORV_Storage_ComputerSystem"));

    Shell("rm -f '" + m_box.Path("/opt/HubMonitor/HubMonitor.port") + "'");
    RunResult restart = m_box.Tool("setsid arraysim hubpolling --foreground >'" +
                                   m_box.Path("/opt/HubMonitor/hubpolling2.log") + "' 2>&1 </dev/null &");
    ASSERT_EQ(0, restart.status) << restart.output;
    ASSERT_TRUE(WaitFor(10, [&] {
        const std::string pid = ReadFile(pidFile);
        return pid != oldPid && ProcessAlive(pid);
    })) << ReadFile(m_box.Path("/opt/HubMonitor/hubpolling2.log"));

    // The link logs in again on its own; a console change made afterwards
    // reaches the repository.
    std::this_thread::sleep_for(std::chrono::seconds(3));
    SetController(0, "failure");
    EXPECT_TRUE(WaitFor(60, [&] { return m_box.RedundancyStatus() == "3"; }))
        << "RedundancyStatus " << m_box.RedundancyStatus() << "\n"
        << ReadFile(m_box.Path("/opt/HubMonitor/hubpolling2.log"));
    EXPECT_NE("2", m_box.OperationalStatusOf("-0"));
}

TEST_F(EndToEndTest, GarbledViewOutputNeitherCrashesNorSticks) {
    const std::string pid = ReadFile(m_box.Path("/var/run/cimserver.pid"));

    const std::string out = m_box.Path("/opt/pegasus/logs/cimserver.out");
    auto failedLoads = [&] { return CountOf(ReadFile(out), "Load data failed!"); };

    // Text in front of the document is skipped: the load goes through.
    RunResult fault = m_box.Tool("arraysim fault Vexview --mode prefix --count 1 --text 'login banner'");
    ASSERT_EQ(0, fault.status) << fault.output;
    SetController(1, "failure");
    EXPECT_TRUE(WaitFor(30, [&] { return m_box.RedundancyStatus() == "3"; }));
    EXPECT_EQ(0, failedLoads()) << ReadFile(out);

    // Broken documents, each enough times to fail a whole load; every one
    // must leave a server that answers and a module that loads again.
    const char* const modes[] = {"truncate", "malformed", "empty"};
    std::string expected = "3";
    for (const char* mode : modes) {
        SCOPED_TRACE(mode);
        fault = m_box.Tool(std::string("arraysim fault Vexview --mode ") + mode + " --count 4");
        ASSERT_EQ(0, fault.status) << fault.output;
        const int failedBefore = failedLoads();
        expected = expected == "3" ? "2" : "3";
        SetController(1, expected == "2" ? "ready" : "failure");
        EXPECT_TRUE(WaitFor(60, [&] {
            return m_box.Status() == " ready" && m_box.RedundancyStatus() == expected;
        })) << "status [" << m_box.Status() << "] RedundancyStatus " << m_box.RedundancyStatus();
        // The broken answers failed one load, which was given up cleanly.
        EXPECT_LT(failedBefore, failedLoads()) << ReadFile(out);
        EXPECT_EQ(3, m_box.InstanceCount("ORV_Storage_ComputerSystem"));
        EXPECT_EQ(pid, ReadFile(m_box.Path("/var/run/cimserver.pid")));
        EXPECT_TRUE(m_box.ServerPidAlive());
        const std::string leftover = m_box.Tool("arraysim fault list").output;
        EXPECT_EQ(std::string::npos, leftover.find("Vexview")) << leftover;
    }
}

TEST_F(EndToEndTest, MalformedModuleConfigurationKeepsTheModuleOut) {
    // Stop the server alone, break the module's configuration with a key
    // given twice in one section, and start the server again.
    const std::string pid = ReadFile(m_box.Path("/var/run/cimserver.pid"));
    ASSERT_TRUE(ProcessAlive(pid));
    ASSERT_EQ(0, ::kill(static_cast<pid_t>(std::strtol(pid.c_str(), nullptr, 10)), SIGTERM));
    ASSERT_TRUE(WaitFor(30, [&] { return !ProcessAlive(pid); }));

    const std::string conf = m_box.Path("/opt/pegasus/etc/smis_provider.conf");
    {
        std::ofstream out(conf.c_str(), std::ios::app);
        out << "\n[smis]\nnamespace = root/other\n";
    }
    Shell("rm -f '" + m_box.Path("/opt/pegasus/etc/status") + "'");
    const std::string log = m_box.Path("/opt/pegasus/logs/cimserver2.out");
    RunResult start = m_box.Tool("setsid cimserver --foreground >'" + log + "' 2>&1 </dev/null &");
    ASSERT_EQ(0, start.status) << start.output;

    ASSERT_TRUE(WaitFor(60, [&] {
        return m_box.Wbem("ecn", "root/interop").output.find("CIM_") != std::string::npos;
    })) << ReadFile(log);
    EXPECT_TRUE(WaitFor(10, [&] {
        return ReadFile(log).find("PegasusCreateProvider returned null") != std::string::npos;
    })) << ReadFile(log);
    const std::string trace = ReadFile(m_box.Path("/opt/pegasus/trace/cimserver.trc"));
    EXPECT_NE(std::string::npos, trace.find("Error[ LoadConfigFile ] : key namespace defined twice in [smis]"))
        << trace;

    // Nothing of the module runs: no status, no load, even after a change;
    // what the repository kept from the earlier run stays as it was.
    SetController(1, "failure");
    std::this_thread::sleep_for(std::chrono::seconds(5));
    EXPECT_EQ("<missing>", m_box.Status());
    EXPECT_NE("3", m_box.RedundancyStatus());
    EXPECT_EQ(std::string::npos, ReadFile(log).find("Load SMI-S provider successfully")) << ReadFile(log);
    EXPECT_NE(std::string::npos, m_box.Wbem("ecn", "root/interop").output.find("CIM_"));
}

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

TEST_F(IndicationEndToEndTest, ChangesAreSignalledButARebuildAfterFailoverIsNot) {
    SetController(1, "failure");
    ASSERT_TRUE(WaitFor(30, [&] {
        return Received("CIM_InstModification") >= 2;
    })) << ReadFile(m_out);
    const std::string changes = ReadFile(m_out);
    EXPECT_NE(std::string::npos, changes.find("ORV_Storage_ComputerSystem.CreationClassName=\\\"ORV_Storage_ComputerSystem\\\",Name=\\\"")) << changes;
    EXPECT_NE(std::string::npos, changes.find("-1\\\"")) << changes;
    EXPECT_NE(std::string::npos, changes.find("ORV_Storage_RedundancySet")) << changes;
    EXPECT_EQ(0, Received("CIM_InstCreation")) << changes;
    EXPECT_EQ(0, Received("CIM_InstDeletion")) << changes;

    // A failed load: the module tells of it with an alert, empties the
    // repository, and the rebuild that follows is not told as creations.
    RunResult fault = m_box.Tool("arraysim fault Vexview --mode fail --count 4 --rc 3 --message 'array busy'");
    ASSERT_EQ(0, fault.status) << fault.output;
    const int modificationsBefore = Received("CIM_InstModification");
    SetController(1, "ready");
    EXPECT_TRUE(WaitFor(60, [&] { return Received("CIM_AlertIndication") >= 1; })) << ReadFile(m_out);
    EXPECT_TRUE(WaitFor(60, [&] {
        return m_box.Status() == " ready" && m_box.RedundancyStatus() == "2";
    })) << "status [" << m_box.Status() << "]";
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const std::string after = ReadFile(m_out);
    EXPECT_EQ(0, Received("CIM_InstCreation")) << after;
    EXPECT_EQ(0, Received("CIM_InstDeletion")) << after;
    EXPECT_EQ(modificationsBefore, Received("CIM_InstModification")) << after;

    // Indications are back on after the rebuild.
    SetController(0, "failure");
    EXPECT_TRUE(WaitFor(30, [&] { return Received("CIM_InstModification") > modificationsBefore; }))
        << ReadFile(m_out);
}

} // namespace
