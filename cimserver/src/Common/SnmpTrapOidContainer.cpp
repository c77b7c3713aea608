#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String SnmpTrapOidContainer::NAME = "SnmpTrapOidContainer";

SnmpTrapOidContainer::SnmpTrapOidContainer(const OperationContext::Container& container) {
    const SnmpTrapOidContainer* source = dynamic_cast<const SnmpTrapOidContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

SnmpTrapOidContainer::SnmpTrapOidContainer(const String& snmpTrapOid) : _snmpTrapOid(snmpTrapOid) {}

String SnmpTrapOidContainer::getName() const { return NAME; }

OperationContext::Container* SnmpTrapOidContainer::clone() const { return new SnmpTrapOidContainer(*this); }

void SnmpTrapOidContainer::destroy() { delete this; }

String SnmpTrapOidContainer::getSnmpTrapOid() const { return _snmpTrapOid; }

PEGASUS_NAMESPACE_END
