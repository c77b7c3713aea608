#include "ViewTools.h"

namespace arraysim {

void ViewTools::Register(ToolRegistry& registry) {
    // The view tools read the array state; they are added here as each one is built.
    (void)registry;
}

}  // namespace arraysim
