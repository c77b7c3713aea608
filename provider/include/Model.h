#ifndef ORVSMIS_MODEL_H
#define ORVSMIS_MODEL_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"

namespace orvsmis {

// Base of the classes that follow one record type into the repository.
// Concrete models wrap a record into an instance, write it through the
// CIM handle, ask for the indication, bring their children along and fire
// their events. The base operations refuse with CIMNotSupportedException.
class Model {
public:
    Model() {}
    virtual ~Model() {}

    virtual Pegasus::CIMObjectPath Create(DataEventArgs* args);
    virtual void Delete(DataEventArgs* args);
    virtual void Modify(DataEventArgs* args);
    virtual bool Find(const std::string& key, const std::string& arrayId, Pegasus::CIMObjectPath& out);

    // The class name and key bindings of path alone: host and namespace
    // dropped.
    static Pegasus::CIMObjectPath AdjustObjectPath(const Pegasus::CIMObjectPath& path);
    // out becomes className with keys, on this host, in the provider's
    // namespace.
    static void WrapObjectPath(const Pegasus::CIMName& className,
                               const Pegasus::Array<Pegasus::CIMKeyBinding>& keys,
                               Pegasus::CIMObjectPath& out);
    // As WrapObjectPath, with the two key bindings role1 and role2 holding
    // path1 and path2 as references, in that order.
    static void WrapAssocObjectPath(const Pegasus::CIMName& className, const std::string& role1,
                                    const Pegasus::CIMObjectPath& path1, const std::string& role2,
                                    const Pegasus::CIMObjectPath& path2, Pegasus::CIMObjectPath& out);

private:
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
};

}  // namespace orvsmis

#endif
