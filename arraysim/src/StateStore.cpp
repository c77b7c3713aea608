#include "StateStore.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <sstream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace arraysim {

namespace {

std::string errnoText(const std::string& what) { return what + ": " + std::strerror(errno); }

void makeDirs(const std::string& dir) {
    std::string partial;
    std::stringstream parts(dir);
    std::string piece;
    if (!dir.empty() && dir[0] == '/') partial = "";
    while (std::getline(parts, piece, '/')) {
        if (piece.empty()) continue;
        partial += "/" + piece;
        if (::mkdir(partial.c_str(), 0755) != 0 && errno != EEXIST)
            throw StateError(errnoText("cannot create the state folder " + partial));
    }
}

// Holds flock on state.lock for its lifetime.
class FileLock {
public:
    FileLock(const std::string& dir, int operation) {
        makeDirs(dir);
        const std::string path = dir + "/state.lock";
        m_fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (m_fd < 0) throw StateError(errnoText("cannot open " + path));
        while (::flock(m_fd, operation) != 0) {
            if (errno == EINTR) continue;
            const std::string why = errnoText("cannot lock " + path);
            ::close(m_fd);
            throw StateError(why);
        }
    }
    ~FileLock() { ::close(m_fd); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_fd = -1;
};

}  // namespace

StateStore::StateStore(const std::string& stateDir) : m_dir(stateDir) {
    if (m_dir.empty()) throw StateError("no state folder given");
}

std::string StateStore::DefaultDir() {
    const char* root = std::getenv("SMIS_ROOT");
    std::string base = root != nullptr ? root : "";
    while (!base.empty() && base.back() == '/') base.pop_back();
    return base + "/var/lib/arraysim";
}

std::string StateStore::StatePath() const { return m_dir + "/state.json"; }

bool StateStore::Exists() const {
    struct stat info {};
    return ::stat(StatePath().c_str(), &info) == 0;
}

nlohmann::json StateStore::readDocument() const {
    std::ifstream in(StatePath(), std::ios::binary);
    if (!in)
        throw StateError("no array in " + m_dir + ": create one with \"arraysim init --template small\"");
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    try {
        nlohmann::json document = nlohmann::json::parse(text);
        if (!document.is_object()) throw StateError("the array's state " + StatePath() + " is not a JSON object");
        return document;
    } catch (const nlohmann::json::exception& e) {
        throw StateError("the array's state " + StatePath() + " is unreadable: " + e.what());
    }
}

ArrayState StateStore::readUnlocked() const {
    const nlohmann::json document = readDocument();
    try {
        return document.get<ArrayState>();
    } catch (const nlohmann::json::exception& e) {
        throw StateError("the array's state " + StatePath() + " is unreadable: " + e.what());
    }
}

ArrayState StateStore::Read() const {
    FileLock lock(m_dir, LOCK_SH);
    return readUnlocked();
}

void StateStore::write(const ArrayState& state) const { writeDocument(nlohmann::json(state)); }

void StateStore::writeDocument(const nlohmann::json& document) const {
    const std::string text = document.dump();
    const std::string temp = StatePath() + ".tmp";
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) throw StateError(errnoText("cannot write " + temp));
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t wrote = ::write(fd, text.data() + done, text.size() - done);
        if (wrote < 0) {
            if (errno == EINTR) continue;
            const std::string why = errnoText("cannot write " + temp);
            ::close(fd);
            ::unlink(temp.c_str());
            throw StateError(why);
        }
        done += static_cast<std::size_t>(wrote);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0) {
        const std::string why = errnoText("cannot sync " + temp);
        ::unlink(temp.c_str());
        throw StateError(why);
    }
    if (::rename(temp.c_str(), StatePath().c_str()) != 0) {
        const std::string why = errnoText("cannot replace " + StatePath());
        ::unlink(temp.c_str());
        throw StateError(why);
    }
}

ArrayState StateStore::Update(const std::function<void(ArrayState&)>& change) {
    FileLock lock(m_dir, LOCK_EX);
    // The document as read is the "before" of each side: no second conversion.
    const nlohmann::json before = readDocument();
    ArrayState state;
    try {
        state = before.get<ArrayState>();
    } catch (const nlohmann::json::exception& e) {
        throw StateError("the array's state " + StatePath() + " is unreadable: " + e.what());
    }
    const std::uint64_t logicalGen = state.logicalGeneration;
    const std::uint64_t physicalGen = state.physicalGeneration;
    change(state);
    // The counters belong to the store: a change cannot set them.
    state.logicalGeneration = logicalGen;
    state.physicalGeneration = physicalGen;
    nlohmann::json after = state;
    auto moved = [&](std::initializer_list<const char*> keys) {
        for (const char* key : keys) {
            const auto old = before.find(key);
            if (old == before.end() || *old != after[key]) return true;
        }
        return false;
    };
    const bool logical = moved({"pools", "lds", "ldSets", "pairs", "snapshots", "reserveAreas"});
    const bool physical = moved({"identity", "controllers", "ports", "enclosure", "disks"});
    if (logical) after["logicalGeneration"] = ++state.logicalGeneration;
    if (physical) after["physicalGeneration"] = ++state.physicalGeneration;
    if (logical || physical || moved({"timing"})) writeDocument(after);
    return state;
}

void StateStore::Replace(ArrayState state) {
    FileLock lock(m_dir, LOCK_EX);
    if (Exists()) {
        try {
            const ArrayState old = readUnlocked();
            state.logicalGeneration = old.logicalGeneration + 1;
            state.physicalGeneration = old.physicalGeneration + 1;
        } catch (const StateError&) {
            // An unreadable old state is simply replaced.
        }
    }
    write(state);
}

}  // namespace arraysim
