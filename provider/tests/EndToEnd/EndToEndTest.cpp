// The whole system in a temporary root: the simulated array, its polling
// daemon and the CIM server with the storage module, driven through
// scripts/sandbox, the simulator's console and wbemcli.

#include "EndToEndSupport.h"

#include <signal.h>
#include <sys/types.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

namespace {

using namespace e2e;

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
