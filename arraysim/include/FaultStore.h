#pragma once
// Faults an operator or a test arms for the next runs of a tool or the polling
// daemon, kept in faults.json in the state folder (under the state's lock).

#include <optional>
#include <string>
#include <vector>

namespace arraysim {

struct Fault {
    std::string target;   // a tool name ("Vexview", ...) or "hubpolling"
    std::string mode;     // tools: fail hang prefix truncate malformed empty lose
                          // (lose: success answered, nothing changed);
                          // hubpolling: drop result unknown-code stall
    int remaining = 1;    // runs still to be affected
    int returnCode = 1;
    std::string message;
    double seconds = 0;
    std::string text;
};

class FaultStore {
public:
    explicit FaultStore(const std::string& stateDir);

    // Checks mode against target and the values; throws std::invalid_argument.
    static void Validate(const Fault& fault);

    // Arms a fault (after Validate); a new fault for a target replaces the old one.
    void Add(const Fault& fault);

    // The fault for target, with one run consumed (removed at zero), or none.
    std::optional<Fault> Take(const std::string& target);

    // Every armed fault.
    std::vector<Fault> List() const;

    // Removes every fault.
    void Clear();

private:
    std::string m_dir;
};

}  // namespace arraysim
