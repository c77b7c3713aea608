#pragma once
// The view and query tools of the array: Vexview, Vexrc_query and Vexsc_query.

#include "ToolRegistry.h"

namespace arraysim {

class ViewTools {
public:
    // Adds the handlers of the view and query tools to the registry.
    static void Register(ToolRegistry& registry);
};

}  // namespace arraysim
