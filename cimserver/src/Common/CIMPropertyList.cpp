#include <Pegasus/Common/CIMPropertyList.h>

PEGASUS_NAMESPACE_BEGIN

CIMPropertyList::CIMPropertyList() {}
CIMPropertyList::CIMPropertyList(const Array<CIMName>& propertyNames) { set(propertyNames); }

void CIMPropertyList::set(const Array<CIMName>& propertyNames) {
    // A null name in the list names nothing.
    Array<CIMName> names;
    for (Uint32 i = 0; i < propertyNames.size(); ++i) {
        if (!propertyNames[i].isNull()) names.append(propertyNames[i]);
    }
    _names = names;
    _isNull = false;
}

void CIMPropertyList::clear() {
    _names.clear();
    _isNull = true;
}

Boolean CIMPropertyList::contains(const CIMName& name) const {
    for (Uint32 i = 0; i < _names.size(); ++i) {
        if (_names[i].equal(name)) return true;
    }
    return false;
}

void CIMPropertyList::append(Array<String>& propertyListArray) {
    for (Uint32 i = 0; i < propertyListArray.size(); ++i) {
        CIMName name(propertyListArray[i]);
        if (!contains(name)) _names.append(name);
    }
    _isNull = false;
}

String CIMPropertyList::toString() const {
    if (_isNull) return String("NULL");
    String out;
    for (Uint32 i = 0; i < _names.size(); ++i) {
        if (i) out.append(String(", "));
        out.append(_names[i].getString());
    }
    return out;
}

PEGASUS_NAMESPACE_END
