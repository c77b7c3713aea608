#pragma once
// The array's state on disk: state.json in the state folder, read under a
// shared lock and changed under an exclusive lock on state.lock, written to a
// temporary file, synced and renamed over the old one, so tools running at
// the same time never lose an update nor read half a state.

#include <functional>
#include <stdexcept>
#include <string>

#include "ArrayState.h"

namespace arraysim {

class StateError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class StateStore {
public:
    explicit StateStore(const std::string& stateDir);

    // $SMIS_ROOT/var/lib/arraysim, or /var/lib/arraysim without SMIS_ROOT.
    static std::string DefaultDir();

    const std::string& Dir() const { return m_dir; }
    std::string StatePath() const;

    // True when an array was created (state.json exists).
    bool Exists() const;

    // The current state; throws StateError when there is none or it is unreadable.
    ArrayState Read() const;

    // Re-reads under the exclusive lock, applies change, moves the generation
    // counter of each side whose content changed, and writes the result when
    // anything changed. An exception from change aborts without writing and
    // passes on. Returns the state as stored afterwards.
    ArrayState Update(const std::function<void(ArrayState&)>& change);

    // Replaces the whole state (init); the counters continue from the old
    // state when there was one, so a client still sees the change.
    void Replace(ArrayState state);

private:
    void write(const ArrayState& state) const;
    void writeDocument(const nlohmann::json& document) const;
    nlohmann::json readDocument() const;
    ArrayState readUnlocked() const;

    std::string m_dir;
};

}  // namespace arraysim
