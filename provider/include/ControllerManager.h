#ifndef ORVSMIS_CONTROLLERMANAGER_H
#define ORVSMIS_CONTROLLERMANAGER_H

#include <string>

#include "Controller.h"
#include "RequestArgs.h"

namespace orvsmis {

// Routes method and associator requests to a controller made for the one
// request, chosen by the class name without its prefix.
class ControllerManager {
public:
    void InvokeMethod(const InvokeMethodArgs& args);
    void Associator(const AssoArgs& args);
    void AssociatorNames(const AssoNameArgs& args);

    // Public for tests: the name without the configured prefix (or "CIM_").
    static void removePrefix(std::string& name);
    // A new controller for the class, or null when no controller serves it.
    static Controller* createController(const std::string& name);
};

}  // namespace orvsmis

#endif
