#pragma once
// A refusal of a configuration or replication command: the kind of reason
// decides the message id and the return code the tool answers with.

#include <stdexcept>
#include <string>

namespace arraysim {

class CommandError : public std::runtime_error {
public:
    enum class Kind {
        Syntax,    // the command line itself is wrong
        NotFound,  // a named object does not exist
        Exists,    // the object to create exists already
        InUse,     // the object is held by another (LD set, pair, snapshot, ...)
        State,     // the object's state does not allow the operation
        Capacity,  // not enough free capacity
        Rule,      // a value the array does not accept (RAID rule, name, size)
        Limit,     // a maximum of the array is reached
        Internal,  // the array cannot carry out commands at all
    };

    CommandError(Kind kind, const std::string& message) : std::runtime_error(message), m_kind(kind) {}

    Kind GetKind() const { return m_kind; }

    // "Vex" and five digits, one per kind.
    std::string MessageId() const {
        switch (m_kind) {
            case Kind::Syntax: return "Vex10101";
            case Kind::NotFound: return "Vex10201";
            case Kind::Exists: return "Vex10301";
            case Kind::InUse: return "Vex10401";
            case Kind::State: return "Vex10501";
            case Kind::Capacity: return "Vex10601";
            case Kind::Rule: return "Vex10701";
            case Kind::Limit: return "Vex10801";
            case Kind::Internal: return "Vex19001";
        }
        return "Vex19001";
    }

    // The tool's exit status and RETURN_CODE: 2 for a wrong command line, 1 otherwise.
    int ReturnCode() const { return m_kind == Kind::Syntax ? 2 : 1; }

private:
    Kind m_kind;
};

}  // namespace arraysim
