#include "BasedOnCESV.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "MC.h"
#include "Model.h"
#include "Singleton.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// The way from the source over its pool to the other end.
struct Route {
    const char* toPool;    // association from the source to its pool
    const char* fromPool;  // association from the pool to the results
    const char* result;    // class of the results
    bool passRoles;        // the caller's roles apply on the pool's side
};

bool routeOf(const std::string& objectClass, const std::string& resultClass, Route& route) {
    if (objectClass == "CompositeExtent" && resultClass == "StorageVolume") {
        route = {"ConcreteComponent", "AllocatedFromStoragePool", "StorageVolume", true};
        return true;
    }
    if (objectClass == "StorageVolume" && resultClass == "CompositeExtent") {
        route = {"AllocatedFromStoragePool", "ConcreteComponent", "CompositeExtent", false};
        return true;
    }
    return false;
}

// The one pool of the source; false when it has none.
bool poolOf(const RequestArgs& args, const Route& route, CIMObjectPath& pool) {
    Array<CIMObjectPath> pools;
    Singleton<CimHandle>::Instance()->AssociatorNames(args.context, MC::Namespace(),
                                                      Model::AdjustObjectPath(args.objectPath),
                                                      MC::ClassName(route.toPool), MC::ClassName("StoragePool"),
                                                      String(), String(), pools);
    if (pools.size() == 0) return false;
    pool = Model::AdjustObjectPath(pools[0]);
    return true;
}

}  // namespace

void BasedOnCESV::Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass) {
    args.handler.processing();
    Route route;
    CIMObjectPath pool;
    if (routeOf(objectClass, resultClass, route) && poolOf(args, route, pool)) {
        Array<CIMObject> found;
        Singleton<CimHandle>::Instance()->Associators(
            args.context, MC::Namespace(), pool, MC::ClassName(route.fromPool), MC::ClassName(route.result),
            route.passRoles ? args.role : String(), route.passRoles ? args.resultRole : String(),
            args.includeQualifiers, args.includeClassOrigin, args.propertyList, found);
        for (Uint32 i = 0; i < found.size(); ++i) args.handler.deliver(found[i]);
    }
    args.handler.complete();
}

void BasedOnCESV::AssociatorNames(AssoNameArgs& args, const std::string& objectClass, const std::string& resultClass) {
    args.handler.processing();
    Route route;
    CIMObjectPath pool;
    if (routeOf(objectClass, resultClass, route) && poolOf(args, route, pool)) {
        Array<CIMObjectPath> found;
        Singleton<CimHandle>::Instance()->AssociatorNames(
            args.context, MC::Namespace(), pool, MC::ClassName(route.fromPool), MC::ClassName(route.result),
            route.passRoles ? args.role : String(), route.passRoles ? args.resultRole : String(), found);
        for (Uint32 i = 0; i < found.size(); ++i) args.handler.deliver(found[i]);
    }
    args.handler.complete();
}

}  // namespace orvsmis
