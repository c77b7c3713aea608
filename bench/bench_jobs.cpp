// Time from a configuration method call to job state 7, on the simulator's
// arrays (small and max unless told otherwise), for two jobs: a new volume of
// 1 GiB (two command lines) and a volume renamed in place (one). Each is split
// into its phases:
//   queue      from the call until the configuration thread starts the job
//   command    the job's command lines
//   wait-view  from the end of the commands until the proving view starts
//   view       that view, in which the job is seen completed
// The phases come from the module's trace (times on every line), which the
// benchmark switches to level 4 in its own sandbox; the total is what the
// client sees, polling the job every 50 ms. Figures only: nothing here fails
// because the machine is slow. An array that has no free LD number left
// shows the new-volume job ending in state 10, with the array's message.
//
//   bench_jobs [--templates small,max] [--runs N]

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

const char *const kCredentials = "orvadmin:orv-demo-pass";

struct RunResult {
  int status = -1;
  std::string output;
};

// Shell lines are made here only, from mkdtemp paths, numbers and literals.
RunResult Shell(const std::string &line) {
  RunResult result;
  FILE *pipe = ::popen((line + " 2>&1").c_str(), "r");
  if (pipe == nullptr)
    return result;
  char buffer[4096];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
    result.output.append(buffer, got);
  result.status = ::pclose(pipe);
  return result;
}

std::string ReadFile(const std::string &path) {
  std::ifstream in(path.c_str(), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in),
                     std::istreambuf_iterator<char>());
}

bool WaitFor(double seconds, double pollSeconds,
             const std::function<bool()> &done) {
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::milliseconds(static_cast<long>(seconds * 1000));
  for (;;) {
    if (done())
      return true;
    if (std::chrono::steady_clock::now() >= end)
      return false;
    std::this_thread::sleep_for(
        std::chrono::milliseconds(static_cast<long>(pollSeconds * 1000)));
  }
}

double Now() {
  timeval now;
  ::gettimeofday(&now, nullptr);
  return static_cast<double>(now.tv_sec) +
         static_cast<double>(now.tv_usec) / 1e6;
}

// A port the kernel gives for port 0: nobody listens on it at this moment.
int FreePort() {
  int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0)
    return -1;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  int port = -1;
  if (::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
      ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0)
    port = ntohs(address.sin_port);
  ::close(fd);
  return port;
}

bool Alive(const std::string &pidText) {
  const long pid = std::strtol(pidText.c_str(), nullptr, 10);
  if (pid <= 0 || ::kill(static_cast<pid_t>(pid), 0) != 0)
    return false;
  const std::string stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
  const std::string::size_type close = stat.rfind(')');
  return close == std::string::npos || stat.compare(close, 4, ") Z ") != 0;
}

std::string Property(const std::string &line, const std::string &name) {
  std::smatch match;
  const std::regex pattern("[ ,]" + name + "=(\"([^\"]*)\"|[^,\\n]*)");
  if (!std::regex_search(line, match, pattern))
    return "";
  return match[2].matched ? match[2].str() : match[1].str();
}

// One trace line: its time and its text.
struct TraceLine {
  double time;
  std::string text;
};

std::vector<TraceLine> ReadTrace(const std::string &path) {
  std::vector<TraceLine> lines;
  std::istringstream in(ReadFile(path));
  std::string line;
  static const std::regex stamp("^([0-9]+)s-([0-9]+)us: ");
  while (std::getline(in, line)) {
    std::smatch match;
    if (!std::regex_search(line, match, stamp))
      continue;
    lines.push_back(
        {std::stod(match[1].str()) + std::stod(match[2].str()) / 1e6,
         line.substr(match.length(0))});
  }
  return lines;
}

// The time of the first line at or after `after` holding `what`; -1 if none.
double FirstAfter(const std::vector<TraceLine> &lines, double after,
                  const std::string &what) {
  for (const TraceLine &line : lines)
    if (line.time >= after && line.text.find(what) != std::string::npos)
      return line.time;
  return -1;
}

struct Phases {
  double total = -1, answer = -1, queue = -1, command = -1, wait = -1,
         view = -1;
};

class Sandbox {
public:
  explicit Sandbox(const std::string &arrayTemplate)
      : m_template(arrayTemplate) {
    char pattern[] = "/tmp/orv-bench-jobs-XXXXXX";
    const char *made = ::mkdtemp(pattern);
    if (made != nullptr)
      m_root = made;
  }
  ~Sandbox() {
    if (m_root.empty())
      return;
    Shell(Script() + " stop '" + m_root + "'");
    Shell("rm -rf '" + m_root + "'");
  }

  bool Start(std::string *why) {
    if (m_root.empty()) {
      *why = "mkdtemp failed";
      return false;
    }
    m_port = FreePort();
    int httpsPort = FreePort();
    if (httpsPort == m_port)
      httpsPort = FreePort();
    if (m_port <= 0 || httpsPort <= 0 || httpsPort == m_port) {
      *why = "no free port";
      return false;
    }
    RunResult started = Shell(
        "BUILD_DIR='" + std::string(TEST_BINARY_DIR) + "' " + Script() +
        " start '" + m_root + "' --template " + m_template + " --http-port " +
        std::to_string(m_port) + " --https-port " + std::to_string(httpsPort));
    if (started.status != 0) {
      *why = started.output;
      return false;
    }
    RunResult env = Shell(Script() + " env '" + m_root + "'");
    std::istringstream lines(env.output);
    std::string line;
    m_env = "env";
    while (std::getline(lines, line))
      if (line.rfind("SMIS_ROOT=", 0) == 0 || line.rfind("PATH=", 0) == 0)
        m_env += " '" + line + "'";
    m_env += " ";
    if (!WaitReady(900)) {
      *why = "the module did not read the array";
      return false;
    }
    return RestartWithFullTrace(why);
  }

  std::string Wbem(const std::string &op, const std::string &object,
                   const std::string &params = "") const {
    return Shell("wbemcli " + op + " 'http://" + std::string(kCredentials) +
                 "@127.0.0.1:" + std::to_string(m_port) + "/root/orv:" +
                 object + "'" + (params.empty() ? "" : " '" + params + "'"))
        .output;
  }

  std::string TracePath() const {
    return m_root + "/opt/pegasus/trace/cimserver.trc";
  }

  // Whether the server still runs; when it does not, the end of its output.
  bool ServerRuns(std::string *why) const {
    if (Alive(ReadFile(m_root + "/var/run/cimserver.pid")))
      return true;
    const std::string out =
        ReadFile(m_root + "/opt/pegasus/logs/cimserver.out");
    *why = "the CIM server stopped; the end of its output:\n" +
           out.substr(out.size() > 600 ? out.size() - 600 : 0);
    return false;
  }

private:
  static std::string Script() {
    return "'" + std::string(TEST_SOURCE_DIR) + "/scripts/sandbox'";
  }

  bool WaitReady(double seconds) const {
    return WaitFor(seconds, 0.5, [&] {
      return ReadFile(m_root + "/opt/pegasus/etc/status") == " ready";
    });
  }

  // The sandbox traces at level 1; the phase marks are at levels 2 and 3.
  bool RestartWithFullTrace(std::string *why) {
    const std::string confPath = m_root + "/opt/pegasus/etc/cimserver.conf";
    std::string conf = ReadFile(confPath);
    conf = std::regex_replace(conf, std::regex("traceLevel=[0-9]+"),
                              "traceLevel=4");
    std::ofstream(confPath.c_str(), std::ios::trunc) << conf;
    const std::string pid = ReadFile(m_root + "/var/run/cimserver.pid");
    if (Alive(pid)) {
      ::kill(static_cast<pid_t>(std::strtol(pid.c_str(), nullptr, 10)),
             SIGTERM);
      WaitFor(30, 0.2, [&] { return !Alive(pid); });
    }
    ::unlink((m_root + "/var/run/cimserver.pid").c_str());
    ::unlink((m_root + "/opt/pegasus/etc/status").c_str());
    Shell(m_env + "setsid cimserver --foreground >>'" + m_root +
          "/opt/pegasus/logs/cimserver.out' 2>&1 </dev/null &");
    if (!WaitReady(900)) {
      *why = "the restarted server did not become ready";
      return false;
    }
    return true;
  }

  std::string m_template;
  std::string m_root;
  std::string m_env;
  int m_port = 0;
};

// Where the volumes go: the array's service and the concrete pool with the
// most room, as a client finds them.
struct Target {
  std::string service;
  std::string pool;
  std::string volume;     // renamed in place by the second kind of job
  std::string volumeSize; // its size in bytes, given again with the new name
};

bool FindTarget(const Sandbox &box, Target *target, std::string *why) {
  std::smatch match;
  const std::string services =
      box.Wbem("ein", "ORV_Storage_StorageConfigurationService");
  if (!std::regex_search(
          services, match,
          std::regex("(ORV_Storage_StorageConfigurationService\\.[^\\n]*)"))) {
    *why = "no configuration service: " + services;
    return false;
  }
  target->service = match[1].str();
  std::istringstream pools(box.Wbem("ei", "ORV_Storage_StoragePool"));
  std::string line;
  unsigned long long best = 0;
  while (std::getline(pools, line)) {
    if (Property(line, "Primordial") != "FALSE")
      continue;
    const std::string remaining = Property(line, "RemainingManagedSpace");
    if (remaining.empty())
      continue;
    const unsigned long long room = std::stoull(remaining);
    if (room <= best)
      continue;
    best = room;
    target->pool = "ORV_Storage_StoragePool.InstanceID=\"" +
                   Property(line, "InstanceID") + "\"";
  }
  if (best < (4ULL << 30)) {
    *why = "no concrete pool with room for the volumes";
    return false;
  }
  std::istringstream volumes(box.Wbem("ei", "ORV_Storage_StorageVolume"));
  if (std::getline(volumes, line) &&
      std::regex_search(line, match,
                        std::regex("(ORV_Storage_StorageVolume\\.[^ ]*) "))) {
    target->volume = match[1].str();
    const std::string blockSize = Property(line, "BlockSize");
    const std::string blocks = Property(line, "NumberOfBlocks");
    if (!blockSize.empty() && !blocks.empty())
      target->volumeSize =
          std::to_string(std::stoull(blockSize) * std::stoull(blocks));
  }
  if (target->volume.empty() || target->volumeSize.empty()) {
    *why = "no volume to rename";
    return false;
  }
  return true;
}

enum class Kind { Create, Rename };

Phases MeasureOne(const Sandbox &box, const Target &target, Kind kind,
                  int number) {
  Phases phases;
  const std::string name = (kind == Kind::Create ? "benchnew" : "benchname") +
                           std::to_string(number);
  const std::string params =
      kind == Kind::Create
          ? "CreateOrModifyElementFromStoragePool.ElementName=" + name +
                ",ElementType=2,Size=1073741824,InPool=" + target.pool
          : "CreateOrModifyElementFromStoragePool.ElementName=" + name +
                ",ElementType=2,Size=" + target.volumeSize +
                ",TheElement=" + target.volume;
  const double called = Now();
  const std::string answer = box.Wbem("cm", target.service, params);
  phases.answer = Now() - called;
  std::smatch match;
  if (!std::regex_search(
          answer, match,
          std::regex("(ORV_Storage_ConcreteJob\\.InstanceID=\"([^\"]*)\")"))) {
    std::printf("  run %d: no job in the answer: %s\n", number, answer.c_str());
    return phases;
  }
  const std::string job = match[1].str();
  // The trace names the job by its number only ("Job.3").
  const std::string instanceId = match[2].str();
  const std::string::size_type colon = instanceId.rfind(": ");
  const std::string jobId =
      colon == std::string::npos ? instanceId : instanceId.substr(colon + 2);
  std::string line;
  const bool ended = WaitFor(600, 0.05, [&] {
    line = box.Wbem("gi", job);
    const std::string state = Property(line, "JobState");
    return state == "7" || state == "10";
  });
  const double seen = Now();
  if (!ended || Property(line, "JobState") != "7") {
    std::printf("  run %d: the job did not complete: %s\n", number,
                line.c_str());
    return phases;
  }
  phases.total = seen - called;

  const std::vector<TraceLine> trace = ReadTrace(box.TracePath());
  const double created = FirstAfter(trace, called, "JobID is " + jobId);
  const double started =
      FirstAfter(trace, created, "Info[cfg thread] : starting a job");
  const double executed =
      FirstAfter(trace, started, "Info[Start] : " + jobId + " executed");
  const double viewStart = FirstAfter(trace, executed, "Command type is");
  // The job completes inside the view, before the load is committed.
  const double viewEnd =
      FirstAfter(trace, viewStart, "Info[ LoadData ] : Successfully.");
  if (created < 0 || started < 0 || executed < 0 || viewStart < 0 ||
      viewEnd < 0) {
    std::printf("  run %d: phase marks missing in %s\n", number,
                box.TracePath().c_str());
    return phases;
  }
  phases.queue = started - called;
  phases.command = executed - started;
  phases.wait = viewStart - executed;
  phases.view = viewEnd - viewStart;
  return phases;
}

void Print(const char *label, const Phases &p) {
  std::printf("  %-8s total %8.3f s  (answer %6.3f)  queue %7.3f  command "
              "%7.3f  wait-view %7.3f  view %7.3f\n",
              label, p.total, p.answer, p.queue, p.command, p.wait, p.view);
}

} // namespace

int main(int argc, char **argv) {
  std::vector<std::string> templates = {"small", "max"};
  int runs = 3;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--templates" && i + 1 < argc) {
      templates.clear();
      std::istringstream list(argv[++i]);
      std::string name;
      while (std::getline(list, name, ','))
        if (!name.empty())
          templates.push_back(name);
    } else if (arg == "--runs" && i + 1 < argc) {
      runs = std::atoi(argv[++i]);
      if (runs < 1 || runs > 100) {
        std::fprintf(stderr, "bench_jobs: --runs takes 1 to 100\n");
        return 2;
      }
    } else {
      std::fprintf(stderr,
                   "usage: bench_jobs [--templates small,max] [--runs N]\n");
      return 2;
    }
  }
  for (const std::string &name : templates) {
    if (name != "small" && name != "medium" && name != "large" &&
        name != "max") {
      std::fprintf(stderr, "bench_jobs: unknown template '%s'\n", name.c_str());
      return 2;
    }
  }

  std::printf("Method call to job state 7, seconds\n");
  for (const std::string &name : templates) {
    Sandbox box(name);
    std::string why;
    const double startAt = Now();
    if (!box.Start(&why)) {
      std::printf("%s: sandbox did not start: %s\n", name.c_str(), why.c_str());
      continue;
    }
    Target target;
    if (!box.ServerRuns(&why) || !FindTarget(box, &target, &why) ||
        !box.ServerRuns(&why)) {
      std::printf("%s: %s\n", name.c_str(), why.c_str());
      continue;
    }
    std::printf("%s (ready in %.1f s), volumes in %s:\n", name.c_str(),
                Now() - startAt, target.pool.c_str());
    for (Kind kind : {Kind::Create, Kind::Rename}) {
      std::printf(" %s:\n", kind == Kind::Create ? "new volume of 1 GiB"
                                                 : "volume renamed");
      Phases sum;
      sum.total = sum.answer = sum.queue = sum.command = sum.wait = sum.view =
          0;
      int counted = 0;
      for (int run = 1; run <= runs; ++run) {
        const Phases p = MeasureOne(box, target, kind, run);
        char label[16];
        std::snprintf(label, sizeof label, "run %d", run);
        Print(label, p);
        if (p.view < 0)
          continue;
        sum.total += p.total;
        sum.answer += p.answer;
        sum.queue += p.queue;
        sum.command += p.command;
        sum.wait += p.wait;
        sum.view += p.view;
        ++counted;
      }
      if (counted > 0) {
        Phases mean;
        mean.total = sum.total / counted;
        mean.answer = sum.answer / counted;
        mean.queue = sum.queue / counted;
        mean.command = sum.command / counted;
        mean.wait = sum.wait / counted;
        mean.view = sum.view / counted;
        Print("mean", mean);
      }
    }
  }
  return 0;
}
