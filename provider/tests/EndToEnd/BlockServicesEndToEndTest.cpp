// Pools and volumes made, changed and removed through the configuration
// service as a client does it with wbemcli, against the simulator's small
// array; and what a client sees when the array refuses a command or when a
// command's effect never shows.

#include "EndToEndSupport.h"

#include <ctime>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace e2e;

const char *const kService =
    "ORV_Storage_StorageConfigurationService.CreationClassName=\"ORV_Storage_"
    "StorageConfigurationService\","
    "Name=\"ORV.ORV-M3000 : default storage configuration "
    "service.in.2000D1E77AE6459A\","
    "SystemCreationClassName=\"ORV_Storage_ComputerSystem\",SystemName="
    "\"2000D1E77AE6459A\"";
const char *const kPool0 = "ORV_Storage_StoragePool.InstanceID=\"ORV.ORV-M3000 "
                           ": 0000h.in.2000D1E77AE6459A\"";
const char *const kPrimordial = "ORV_Storage_StoragePool.InstanceID=\"ORV.ORV-"
                                "M3000 : Primordial Pool.in.2000D1E77AE6459A\"";
const char *const kRaid5Capabilities =
    "ORV_Storage_StorageCapabilities.InstanceID=\"ORV.ORV-M3000 : "
    "RAID5/50.in.2000D1E77AE6459A\"";
const unsigned long long GiB = 1024ULL * 1024 * 1024;

// What wbemcli printed for one extrinsic call.
struct Answer {
  long returned = -1;
  std::string text;
  // An output parameter: "Name (type): value" up to the next output.
  std::string Out(const std::string &name) const {
    std::smatch match;
    const std::regex pattern(
        name + " \\([a-z0-9]+\\): ([^\\n]*?)(, [A-Za-z]+ \\(|\\n|$)");
    return std::regex_search(text, match, pattern) ? match[1].str() : "";
  }
  // A reference output without wbemcli's host and namespace prefix.
  std::string Ref(const std::string &name, const std::string &className) const {
    const std::string value = Out(name);
    const std::string::size_type at = value.find(className + ".");
    return at == std::string::npos ? "" : value.substr(at);
  }
};

// Seconds since the epoch of a CIM date-time ("yyyymmddhhmmss.uuuuuu+utc").
double DateTimeSeconds(const std::string &value) {
  if (value.size() < 21)
    return -1;
  std::tm parts{};
  parts.tm_year = std::stoi(value.substr(0, 4)) - 1900;
  parts.tm_mon = std::stoi(value.substr(4, 2)) - 1;
  parts.tm_mday = std::stoi(value.substr(6, 2));
  parts.tm_hour = std::stoi(value.substr(8, 2));
  parts.tm_min = std::stoi(value.substr(10, 2));
  parts.tm_sec = std::stoi(value.substr(12, 2));
  return static_cast<double>(::timegm(&parts)) +
         std::stod("0" + value.substr(14, 7));
}

// Seconds of a CIM interval ("ddddddddhhmmss.uuuuuu:000").
double IntervalSeconds(const std::string &value) {
  if (value.size() < 21)
    return -1;
  return std::stod(value.substr(0, 8)) * 86400 +
         std::stod(value.substr(8, 2)) * 3600 +
         std::stod(value.substr(10, 2)) * 60 + std::stod(value.substr(12, 9));
}

std::string ExtentPath(const std::string &deviceId) {
  return "ORV_Storage_StorageExtent.CreationClassName=\"ORV_Storage_"
         "StorageExtent\",DeviceID=\"" +
         deviceId +
         "\",SystemCreationClassName=\"ORV_Storage_ComputerSystem\",SystemName="
         "\"2000D1E77AE6459A\"";
}

std::string XmlEscaped(const std::string &text) {
  std::string out;
  for (char c : text) {
    if (c == '"')
      out += "&quot;";
    else if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '>')
      out += "&gt;";
    else
      out += c;
  }
  return out;
}

class BlockServicesEndToEndTest : public IndicationEndToEndTest {
protected:
  // wbemcli cm on an object of root/orv; params is "Method.Name=value,...".
  Answer Call(const std::string &object, const std::string &params) const {
    RunResult run = Shell("wbemcli cm '" + m_box.Url() + "/root/orv:" + object +
                          "' '" + params + "'");
    Answer answer;
    answer.text = run.output;
    const std::string method = params.substr(0, params.find('.'));
    std::smatch match;
    if (std::regex_search(run.output, match,
                          std::regex(" " + method + ": ([0-9]+)")))
      answer.returned = std::stol(match[1].str());
    return answer;
  }
  Answer Configure(const std::string &params) const {
    return Call(kService, params);
  }

  // A pool from disks. wbemcli splits array elements at commas, which a
  // path of several keys holds, so this call goes out as CIM-XML itself.
  Answer PoolFromExtents(const std::string &name,
                         const std::vector<std::string> &deviceIds) const {
    std::string extents;
    for (const std::string &id : deviceIds)
      extents += "<VALUE>" + XmlEscaped(ExtentPath(id)) + "</VALUE>";
    const std::string body =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" "
        "DTDVERSION=\"2.0\">"
        "<MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><METHODCALL "
        "NAME=\"CreateOrModifyStoragePool\">"
        "<LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE "
        "NAME=\"root\"/><NAMESPACE NAME=\"orv\"/>"
        "</LOCALNAMESPACEPATH><INSTANCENAME "
        "CLASSNAME=\"ORV_Storage_StorageConfigurationService\">" +
        KeyBinding("CreationClassName",
                   "ORV_Storage_StorageConfigurationService") +
        KeyBinding("Name", "ORV.ORV-M3000 : default storage configuration "
                           "service.in.2000D1E77AE6459A") +
        KeyBinding("SystemCreationClassName", "ORV_Storage_ComputerSystem") +
        KeyBinding("SystemName", "2000D1E77AE6459A") +
        "</INSTANCENAME></LOCALINSTANCEPATH><PARAMVALUE NAME=\"ElementName\" "
        "PARAMTYPE=\"string\"><VALUE>" +
        name +
        "</VALUE></PARAMVALUE><PARAMVALUE NAME=\"InExtents\" "
        "PARAMTYPE=\"string\"><VALUE.ARRAY>" +
        extents +
        "</VALUE.ARRAY></PARAMVALUE></METHODCALL></SIMPLEREQ></MESSAGE></CIM>";
    const std::string file = m_box.Path("/pool-request.xml");
    {
      std::ofstream out(file.c_str(), std::ios::trunc);
      out << body;
    }
    // The CIMObject header carries the service's path, URI-escaped.
    const std::string object =
        "root/"
        "orv:ORV_Storage_StorageConfigurationService.CreationClassName=%22ORV_"
        "Storage_StorageConfigurationService"
        "%22,Name=%22ORV.ORV-M3000%20%3A%20default%20storage%20configuration%"
        "20service.in.2000D1E77AE6459A%22,"
        "SystemCreationClassName=%22ORV_Storage_ComputerSystem%22,SystemName=%"
        "222000D1E77AE6459A%22";
    RunResult run = Shell(
        std::string("curl -s --max-time 20 -u ") + kUser + ":" + kPassword +
        " -H 'Content-Type: application/xml; charset=utf-8' -H 'CIMOperation: "
        "MethodCall'"
        " -H 'CIMMethod: CreateOrModifyStoragePool' -H 'CIMObject: " +
        object + "' --data-binary @'" + file +
        "' http://127.0.0.1:" + std::to_string(m_box.HttpPort()) + "/cimom");
    Answer answer;
    answer.text = run.output;
    std::smatch match;
    if (std::regex_search(
            run.output, match,
            std::regex("<RETURNVALUE[^>]*><VALUE>([0-9]+)</VALUE>")))
      answer.returned = std::stol(match[1].str());
    if (std::regex_search(
            run.output, match,
            std::regex(
                "<KEYVALUE VALUETYPE=\"string\">(ORV[^<]*: Job\\.[0-9]+)<")))
      answer.text +=
          "\nJob (reference): ORV_Storage_ConcreteJob.InstanceID=\"" +
          match[1].str() + "\"";
    return answer;
  }

  std::string Instance(const std::string &path) const {
    return Shell("wbemcli gi '" + m_box.Url() + "/root/orv:" + path + "'")
        .output;
  }
  std::string JobState(const std::string &job) const {
    return Property(Instance(job), "JobState");
  }

  // Waits until the job has ended (7 or 10) and gives its last state.
  std::string WaitForEnd(const std::string &job, double seconds = 60) const {
    std::string state;
    WaitFor(seconds, [&] {
      state = JobState(job);
      return state == "7" || state == "10";
    });
    return state;
  }

  // The element the job's AffectedJobElement names, of one class.
  std::string AffectedElement(const std::string &job,
                              const std::string &className) const {
    const std::string names =
        Shell("wbemcli ain -ac ORV_Storage_AffectedJobElement '" + m_box.Url() +
              "/root/orv:" + job + "'")
            .output;
    const std::string::size_type at = names.find(className + ".");
    if (at == std::string::npos)
      return "";
    const std::string::size_type end = names.find('\n', at);
    return names.substr(at, end == std::string::npos ? std::string::npos
                                                     : end - at);
  }

  // The call that makes a volume of a size in bytes in a pool.
  static std::string NewVolume(const std::string &name, const std::string &size,
                               const std::string &pool) {
    return "CreateOrModifyElementFromStoragePool.ElementName=" + name +
           ",ElementType=2,Size=" + size + ",InPool=" + pool;
  }

  // Calls and expects a job; the job's path, empty when there is none.
  std::string QueueJob(const std::string &params) const {
    const Answer answer = Configure(params);
    EXPECT_EQ(4096, answer.returned) << params << "\n" << answer.text;
    const std::string job = answer.Ref("Job", "ORV_Storage_ConcreteJob");
    EXPECT_FALSE(job.empty()) << answer.text;
    return job;
  }

  // Calls, expects a job and waits for it; the job's path.
  std::string RunJob(const std::string &params,
                     const std::string &expectedEnd = "7") {
    const std::string job = QueueJob(params);
    if (job.empty())
      return job;
    EXPECT_EQ(expectedEnd, WaitForEnd(job)) << params << "\n" << Instance(job);
    return job;
  }

  void Console(const std::string &arguments) const {
    RunResult done = m_box.Tool("arraysim " + arguments);
    ASSERT_EQ(0, done.status) << arguments << ": " << done.output;
  }

  // Whether the array's console lists a pool of that name and RAID level.
  bool ArrayHasPool(const std::string &name, const std::string &raid) const {
    std::istringstream lines(m_box.Tool("arraysim show").output);
    std::string line;
    while (std::getline(lines, line))
      if (line.find(" " + name + " ") != std::string::npos &&
          line.find(" " + raid) != std::string::npos)
        return true;
    return false;
  }

  // When the job ended: its start plus the time it ran.
  double EndOf(const std::string &job) const {
    const std::string line = Instance(job);
    return DateTimeSeconds(Property(line, "StartTime")) +
           IntervalSeconds(Property(line, "ElapsedTime"));
  }
};

TEST_F(BlockServicesEndToEndTest, PoolsAndAVolumeThroughTheirLife) {
  const int poolsBefore = m_box.InstanceCount("ORV_Storage_StoragePool");

  // RAID1 from two of the twelve disks the small array leaves free.
  const Answer mirror = PoolFromExtents("mirror", {"00h-0ch", "00h-0dh"});
  ASSERT_EQ(4096, mirror.returned) << mirror.text;
  const std::string mirrorJob = mirror.Ref("Job", "ORV_Storage_ConcreteJob");
  ASSERT_EQ("7", WaitForEnd(mirrorJob)) << Instance(mirrorJob);
  const std::string mirrorPool =
      AffectedElement(mirrorJob, "ORV_Storage_StoragePool");
  ASSERT_FALSE(mirrorPool.empty());
  EXPECT_TRUE(ArrayHasPool("mirror", "RAID1"))
      << m_box.Tool("arraysim show").output;

  // RAID5 by size, from a setting made out of the array's capabilities.
  const Answer setting =
      Call(kRaid5Capabilities, "CreateSetting.SettingType=3");
  ASSERT_EQ(0, setting.returned) << setting.text;
  const std::string goal =
      setting.Ref("NewSetting", "ORV_Storage_StorageSettingWithHints");
  ASSERT_FALSE(goal.empty()) << setting.text;
  const std::string parityJob =
      RunJob("CreateOrModifyStoragePool.ElementName=parity,Goal=" + goal +
             ",Size=" + std::to_string(100 * GiB) + ",InPools=" + kPrimordial);
  const std::string parityPool =
      AffectedElement(parityJob, "ORV_Storage_StoragePool");
  ASSERT_FALSE(parityPool.empty()) << Instance(parityJob);
  EXPECT_TRUE(ArrayHasPool("parity", "RAID5"))
      << m_box.Tool("arraysim show").output;
  EXPECT_EQ(poolsBefore + 2, m_box.InstanceCount("ORV_Storage_StoragePool"));

  // A volume in it: the job's results lead to the new volume.
  const int creationsBefore = Received("CIM_InstCreation");
  const int methodCallsBefore = Received("CIM_InstMethodCall");
  const int modificationsBefore = Received("CIM_InstModification");
  const std::string volumeJob =
      RunJob(NewVolume("vol1", std::to_string(GiB), parityPool));
  ASSERT_FALSE(volumeJob.empty());
  const std::string volume =
      AffectedElement(volumeJob, "ORV_Storage_StorageVolume");
  ASSERT_FALSE(volume.empty()) << Instance(volumeJob);
  std::string volumeLine = Instance(volume);
  EXPECT_EQ("vol1", Property(volumeLine, "ElementName")) << volumeLine;
  const std::string result =
      Instance("ORV_Storage_MethodResult.InstanceID=\"" +
               Property(Instance(volumeJob), "InstanceID") + "\"");
  EXPECT_NE(std::string::npos, result.find("PreCallIndication=")) << result;
  EXPECT_NE(std::string::npos, result.find("PostCallIndication=")) << result;
  EXPECT_TRUE(WaitFor(20, [&] {
    return Received("CIM_InstCreation") > creationsBefore &&
           Received("CIM_InstMethodCall") >= methodCallsBefore + 2 &&
           Received("CIM_InstModification") > modificationsBefore;
  })) << ReadFile(m_out);

  // Grown, then renamed; each change shows in the next view.
  RunJob("CreateOrModifyElementFromStoragePool.ElementType=2,Size=" +
         std::to_string(2 * GiB) + ",TheElement=" + volume);
  volumeLine = Instance(volume);
  EXPECT_EQ(std::to_string(2 * GiB),
            std::to_string(std::stoull(Property(volumeLine, "BlockSize")) *
                           std::stoull(Property(volumeLine, "NumberOfBlocks"))))
      << volumeLine;
  RunJob("CreateOrModifyElementFromStoragePool.ElementName=vol1b,ElementType=2,"
         "Size=" +
         std::to_string(2 * GiB) + ",TheElement=" + volume);
  EXPECT_EQ("vol1b", Property(Instance(volume), "ElementName"));

  // More than the pool holds: refused at once with the size that fits,
  // and that size is then taken.
  const int jobsBefore = m_box.InstanceCount("ORV_Storage_ConcreteJob");
  const Answer tooBig =
      Configure(NewVolume("big", std::to_string(100000 * GiB), parityPool));
  ASSERT_EQ(4097, tooBig.returned) << tooBig.text;
  const std::string fits = tooBig.Out("Size");
  ASSERT_FALSE(fits.empty()) << tooBig.text;
  EXPECT_LT(std::stoull(fits), 100000 * GiB);
  EXPECT_EQ(jobsBefore, m_box.InstanceCount("ORV_Storage_ConcreteJob"))
      << "a refused call makes no job";

  // Two jobs queued back to back: the second starts only once the first
  // was seen done.
  const std::string firstJob = QueueJob(NewVolume("big", fits, parityPool));
  const std::string secondJob =
      QueueJob(NewVolume("small1", std::to_string(GiB), mirrorPool));
  ASSERT_FALSE(firstJob.empty());
  ASSERT_FALSE(secondJob.empty());
  ASSERT_EQ("7", WaitForEnd(firstJob)) << Instance(firstJob);
  ASSERT_EQ("7", WaitForEnd(secondJob)) << Instance(secondJob);
  EXPECT_GE(DateTimeSeconds(Property(Instance(secondJob), "StartTime")),
            EndOf(firstJob))
      << Instance(firstJob) << "\n"
      << Instance(secondJob);
  const std::string bigVolume =
      AffectedElement(firstJob, "ORV_Storage_StorageVolume");
  ASSERT_FALSE(bigVolume.empty());

  // Volumes back to the pool, then the pool itself goes.
  const int volumesBefore = m_box.InstanceCount("ORV_Storage_StorageVolume");
  RunJob("ReturnToStoragePool.TheElement=" + volume);
  RunJob("ReturnToStoragePool.TheElement=" + bigVolume);
  EXPECT_EQ(volumesBefore - 2,
            m_box.InstanceCount("ORV_Storage_StorageVolume"));
  EXPECT_EQ(std::string::npos,
            Shell("wbemcli ein '" + m_box.Url() +
                  "/root/orv:ORV_Storage_StorageVolume'")
                .output.find(volume.substr(volume.find("DeviceID="))));
  RunJob("DeleteStoragePool.Pool=" + parityPool);
  EXPECT_EQ(poolsBefore + 1, m_box.InstanceCount("ORV_Storage_StoragePool"));
  EXPECT_EQ(std::string::npos,
            m_box.Instances("ORV_Storage_StoragePool").find("parity"));
}

TEST_F(BlockServicesEndToEndTest,
       RefusedCommandFailsTheJobWithTheToolsMessage) {
  const int volumesBefore = m_box.InstanceCount("ORV_Storage_StorageVolume");
  const int alertsBefore = CountOf(
      ReadFile(m_out), "CreateOrModifyElementFromStoragePool has failed");
  Console("fault Vexcfg --mode fail --message 'no free LD number left'");

  const std::string job =
      RunJob(NewVolume("volf", std::to_string(GiB), kPool0), "10");
  ASSERT_FALSE(job.empty());
  const std::string line = Instance(job);
  EXPECT_EQ("no free LD number left", Property(line, "ErrorDescription"))
      << line;
  const Answer errors = Call(job, "GetErrors");
  EXPECT_EQ(0, errors.returned) << errors.text;
  EXPECT_NE(std::string::npos, errors.text.find("no free LD number left"))
      << errors.text;
  EXPECT_TRUE(WaitFor(20, [&] {
    return CountOf(ReadFile(m_out),
                   "CreateOrModifyElementFromStoragePool has failed") >
           alertsBefore;
  })) << ReadFile(m_out);
  EXPECT_EQ(volumesBefore, m_box.InstanceCount("ORV_Storage_StorageVolume"))
      << "nothing left behind";

  // The fault was for one run: the same request now succeeds.
  RunJob(NewVolume("volf", std::to_string(GiB), kPool0));
  EXPECT_EQ(volumesBefore + 1,
            m_box.InstanceCount("ORV_Storage_StorageVolume"));
}

// A job whose effect never shows, with the shortest time-out the module takes.
class BlockServicesLostEffectEndToEndTest : public BlockServicesEndToEndTest {
protected:
  std::vector<std::pair<std::string, std::string>>
  ModuleSettings() const override {
    return {{"JobTimeout", "1"}};
  }
};

TEST_F(BlockServicesLostEffectEndToEndTest,
       JobTimesOutAtTheFirstViewAfterItsTimeoutAndTheQueueMovesOn) {
  // Every command line of the job answers success and changes nothing.
  Console("fault Vexcfg --mode lose --count 20");
  const std::string lostJob =
      QueueJob(NewVolume("ghost", std::to_string(GiB), kPool0));
  ASSERT_FALSE(lostJob.empty());
  ASSERT_TRUE(WaitFor(30, [&] { return JobState(lostJob) == "32768"; }))
      << Instance(lostJob);
  const auto waitingSince = std::chrono::steady_clock::now();
  Console("fault clear");

  // Queued behind it, the next job does not start while the first waits.
  const std::string nextJob =
      QueueJob(NewVolume("after", std::to_string(GiB), kPool0));
  ASSERT_FALSE(nextJob.empty());
  // Views before the time-out keep the first job waiting.
  Console("set unit --contact e2e-before");
  EXPECT_FALSE(WaitFor(10, [&] { return JobState(lostJob) != "32768"; }))
      << Instance(lostJob);
  // Still queued: "Job starting" with no start time.
  const std::string queued = Instance(nextJob);
  EXPECT_EQ("3", Property(queued, "JobState")) << queued;
  EXPECT_EQ("", Property(queued, "StartTime")) << queued;

  // Once the minute is over, the next view ends it.
  std::this_thread::sleep_until(waitingSince + std::chrono::seconds(62));
  EXPECT_EQ("32768", JobState(lostJob))
      << "no view came, so the job still waits";
  Console("set unit --contact e2e-after");
  ASSERT_EQ("10", WaitForEnd(lostJob, 30)) << Instance(lostJob);
  const std::string line = Instance(lostJob);
  EXPECT_EQ("Unknown error!", Property(line, "ErrorDescription")) << line;
  EXPECT_EQ("2", Property(line, "ErrorCode")) << line;

  ASSERT_EQ("7", WaitForEnd(nextJob, 60)) << Instance(nextJob);
  EXPECT_GE(DateTimeSeconds(Property(Instance(nextJob), "StartTime")),
            EndOf(lostJob));
}

} // namespace
