#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String TimeoutContainer::NAME = "TimeoutContainer";

TimeoutContainer::TimeoutContainer(const OperationContext::Container& container) {
    const TimeoutContainer* source = dynamic_cast<const TimeoutContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

TimeoutContainer::TimeoutContainer(Uint32 timeout) : _value(timeout) {}

String TimeoutContainer::getName() const { return NAME; }

OperationContext::Container* TimeoutContainer::clone() const { return new TimeoutContainer(*this); }

void TimeoutContainer::destroy() { delete this; }

Uint32 TimeoutContainer::getTimeOut() const { return _value; }

PEGASUS_NAMESPACE_END
