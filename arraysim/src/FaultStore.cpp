#include "FaultStore.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <set>
#include <stdexcept>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "StateStore.h"

namespace arraysim {

namespace {

const std::set<std::string> kToolModes = {"fail", "hang", "prefix", "truncate", "malformed", "empty", "lose"};
// Tools that only read: an answer that "loses" their work would mean nothing.
const std::set<std::string> kReadingTools = {"Vexview", "Vexsc_query", "Vexrc_query", "outfmtset"};
const std::set<std::string> kDaemonModes = {"drop", "result", "unknown-code", "stall"};
const std::set<std::string> kTools = {"Vexview",        "Vexcfg",          "Vexsc_create",   "Vexsc_delete",
                                      "Vexsc_restore",  "Vexsc_query",     "Vexrc_pair",     "Vexrc_replicate",
                                      "Vexrc_separate", "Vexrc_restore",   "Vexrc_change",   "Vexrc_rvmode",
                                      "Vexrc_query",    "outfmtset"};

nlohmann::json toJson(const Fault& f) {
    return {{"target", f.target}, {"mode", f.mode},       {"remaining", f.remaining}, {"returnCode", f.returnCode},
            {"message", f.message}, {"seconds", f.seconds}, {"text", f.text}};
}

Fault fromJson(const nlohmann::json& j) {
    Fault f;
    f.target = j.at("target").get<std::string>();
    f.mode = j.at("mode").get<std::string>();
    f.remaining = j.value("remaining", 1);
    f.returnCode = j.value("returnCode", 1);
    f.message = j.value("message", std::string());
    f.seconds = j.value("seconds", 0.0);
    f.text = j.value("text", std::string());
    return f;
}

class Locked {
public:
    explicit Locked(const std::string& dir) : m_path(dir + "/faults.json") {
        for (std::size_t i = 1; i <= dir.size(); ++i)
            if (i == dir.size() || dir[i] == '/') ::mkdir(dir.substr(0, i).c_str(), 0755);
        const std::string lockPath = dir + "/state.lock";
        m_fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (m_fd < 0) throw StateError("cannot open " + lockPath + ": " + std::strerror(errno));
        while (::flock(m_fd, LOCK_EX) != 0)
            if (errno != EINTR) {
                ::close(m_fd);
                throw StateError("cannot lock " + lockPath + ": " + std::strerror(errno));
            }
    }
    ~Locked() { ::close(m_fd); }

    std::vector<Fault> Load() const {
        std::ifstream in(m_path);
        if (!in) return {};
        try {
            std::vector<Fault> faults;
            for (const auto& item : nlohmann::json::parse(in)) faults.push_back(fromJson(item));
            return faults;
        } catch (const nlohmann::json::exception& e) {
            throw StateError("the fault list " + m_path + " is unreadable: " + e.what());
        }
    }

    void Save(const std::vector<Fault>& faults) const {
        nlohmann::json list = nlohmann::json::array();
        for (const auto& f : faults) list.push_back(toJson(f));
        const std::string temp = m_path + ".tmp";
        {
            std::ofstream out(temp, std::ios::trunc);
            out << list.dump();
            out.flush();
            if (!out) throw StateError("cannot write " + temp);
        }
        if (::rename(temp.c_str(), m_path.c_str()) != 0)
            throw StateError("cannot replace " + m_path + ": " + std::strerror(errno));
    }

private:
    std::string m_path;
    int m_fd = -1;
};

}  // namespace

FaultStore::FaultStore(const std::string& stateDir) : m_dir(stateDir) {}

void FaultStore::Validate(const Fault& fault) {
    const bool daemon = fault.target == "hubpolling";
    if (!daemon && kTools.count(fault.target) == 0)
        throw std::invalid_argument("unknown fault target \"" + fault.target +
                                    "\": give a tool name (Vexview, Vexcfg, ...) or hubpolling");
    const auto& modes = daemon ? kDaemonModes : kToolModes;
    if (modes.count(fault.mode) == 0) {
        std::string list;
        for (const auto& m : modes) list += (list.empty() ? "" : ", ") + m;
        throw std::invalid_argument("mode \"" + fault.mode + "\" does not apply to " + fault.target +
                                    "; choose one of " + list);
    }
    if (fault.remaining < 1) throw std::invalid_argument("--count must be at least 1");
    if (!std::isfinite(fault.seconds) || fault.seconds < 0 || fault.seconds > 86400)
        throw std::invalid_argument("--seconds must be between 0 and 86400");
    if ((fault.mode == "hang" || fault.mode == "stall") && fault.seconds <= 0)
        throw std::invalid_argument("mode " + fault.mode + " needs --seconds greater than 0");
    if (fault.mode == "fail" && fault.returnCode == 0)
        throw std::invalid_argument("mode fail needs a non-zero --rc");
    if (fault.mode == "result" && (fault.returnCode < 1 || fault.returnCode > 255))
        throw std::invalid_argument("mode result needs --rc between 1 and 255");
    if (fault.mode == "prefix" && fault.text.empty())
        throw std::invalid_argument("mode prefix needs --text");
    if (fault.mode == "lose" && kReadingTools.count(fault.target) != 0)
        throw std::invalid_argument("mode lose applies to tools that change the array, not to " + fault.target);
}

void FaultStore::Add(const Fault& fault) {
    Validate(fault);
    Locked locked(m_dir);
    std::vector<Fault> faults = locked.Load();
    std::vector<Fault> kept;
    for (auto& f : faults)
        if (f.target != fault.target) kept.push_back(f);
    kept.push_back(fault);
    locked.Save(kept);
}

std::optional<Fault> FaultStore::Take(const std::string& target) {
    struct stat info {};
    if (::stat((m_dir + "/faults.json").c_str(), &info) != 0) return std::nullopt;  // nothing armed
    Locked locked(m_dir);
    std::vector<Fault> faults = locked.Load();
    for (auto it = faults.begin(); it != faults.end(); ++it) {
        if (it->target != target) continue;
        Fault taken = *it;
        if (--it->remaining <= 0) faults.erase(it);
        locked.Save(faults);
        taken.remaining = 1;
        return taken;
    }
    return std::nullopt;
}

std::vector<Fault> FaultStore::List() const {
    Locked locked(m_dir);
    return locked.Load();
}

void FaultStore::Clear() {
    Locked locked(m_dir);
    locked.Save({});
}

}  // namespace arraysim
