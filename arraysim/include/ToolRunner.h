#pragma once
// Runs one tool as the array would: moves copies on in simulated time, then
// calls the tool's handler, with an armed fault (FaultStore) applied around it.

#include <string>

#include "ToolRegistry.h"

namespace arraysim {

class ToolRunner {
public:
    // Runs invocation.tool; invocation.out and err are where the answer goes.
    // Returns the exit status (127 for a tool name the registry lacks).
    static int Run(const ToolRegistry& registry, ToolInvocation& invocation, const std::string& stateDir);

    // The document an XML tool answers when told to fail.
    static std::string FailureDocument(int returnCode, const std::string& message);

    // The document an XML tool answers when told to lose its work: success,
    // with nothing changed.
    static std::string SuccessDocument(const std::string& message);

    // The answer broken as "malformed" breaks it: still text, no longer well-formed XML.
    static std::string Malform(const std::string& answer);
};

}  // namespace arraysim
