#ifndef ORVSMIS_SUBMODEL_H
#define ORVSMIS_SUBMODEL_H

#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"

namespace orvsmis {

// Base of the classes that live only under a parent instance. A submodel
// has no state: it is made for one call, usually by its static OnCreate,
// OnModify or OnDelete handler. The base operations refuse with
// CIMNotSupportedException.
class Submodel {
public:
    Submodel() {}
    virtual ~Submodel() {}

    virtual Pegasus::CIMObjectPath Create(ParentArgs& args);
    virtual void Delete(ParentArgs& args);
    virtual void Modify(ParentArgs& args);

private:
    Submodel(const Submodel&) = delete;
    Submodel& operator=(const Submodel&) = delete;
};

}  // namespace orvsmis

#endif
