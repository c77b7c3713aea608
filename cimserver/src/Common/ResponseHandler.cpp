#include <Pegasus/Common/ResponseHandler.h>

PEGASUS_NAMESPACE_BEGIN

ResponseHandler::ResponseHandler() {}
ResponseHandler::ResponseHandler(const ResponseHandler& handler) : _context(handler._context) {}
ResponseHandler& ResponseHandler::operator=(const ResponseHandler& handler) {
    _context = handler._context;
    return *this;
}
ResponseHandler::~ResponseHandler() {}
void ResponseHandler::setContext(const OperationContext& context) { _context = context; }
OperationContext ResponseHandler::getContext() const { return _context; }

// The array forms deliver one object after another.
void InstanceResponseHandler::deliver(const Array<CIMInstance>& instances) {
    for (Uint32 i = 0; i < instances.size(); ++i) deliver(instances[i]);
}
void ObjectPathResponseHandler::deliver(const Array<CIMObjectPath>& objectPaths) {
    for (Uint32 i = 0; i < objectPaths.size(); ++i) deliver(objectPaths[i]);
}
void MethodResultResponseHandler::deliverParamValue(const Array<CIMParamValue>& outParamValues) {
    for (Uint32 i = 0; i < outParamValues.size(); ++i) deliverParamValue(outParamValues[i]);
}
void IndicationResponseHandler::deliver(const Array<CIMIndication>& indications) {
    for (Uint32 i = 0; i < indications.size(); ++i) deliver(indications[i]);
}
void IndicationResponseHandler::deliver(const OperationContext& context,
                                        const Array<CIMIndication>& indications) {
    for (Uint32 i = 0; i < indications.size(); ++i) deliver(context, indications[i]);
}
void ObjectResponseHandler::deliver(const Array<CIMObject>& objects) {
    for (Uint32 i = 0; i < objects.size(); ++i) deliver(objects[i]);
}

PEGASUS_NAMESPACE_END
