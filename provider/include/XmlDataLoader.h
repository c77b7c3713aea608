#ifndef ORVSMIS_XMLDATALOADER_H
#define ORVSMIS_XMLDATALOADER_H

#include "Controller.h"

namespace orvsmis {

// A test controller: "Load" runs a saved result document through the load
// pipeline, "Unload" empties the module's data.
class XmlDataLoader : public Controller {
public:
    static const char* const m_className;

    Pegasus::CIMValue Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;
};

}  // namespace orvsmis

#endif
