#pragma once
// The tools the simulator answers as, each a handler keyed by the tool's name.

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

// One run of a tool, as the program was started.
struct ToolInvocation {
    std::string tool;               // name the program runs as, e.g. "Vexview"
    std::vector<std::string> args;  // the arguments after the name, unchanged
    bool xml = false;               // XML output chosen (_OUTFMTSET=xml or outfmtset xml)
    std::ostream* out = nullptr;    // the tool's standard output
    std::ostream* err = nullptr;    // the tool's standard error
    // The array as the runner read it just before the tool, copies already
    // moved on; null when it was not read (no array, unreadable state). A
    // tool that only reads answers from it instead of reading it again.
    std::shared_ptr<const ArrayState> state;
};

// A handler writes its answer to out/err and returns the exit status.
using ToolHandler = std::function<int(ToolInvocation&)>;

class ToolRegistry {
public:
    void Add(const std::string& name, ToolHandler handler) { m_handlers[name] = std::move(handler); }

    const ToolHandler* Find(const std::string& name) const {
        auto it = m_handlers.find(name);
        return it == m_handlers.end() ? nullptr : &it->second;
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : m_handlers) names.push_back(entry.first);
        return names;
    }

private:
    std::map<std::string, ToolHandler> m_handlers;
};

}  // namespace arraysim
