#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

CIMException::CIMException(CIMStatusCode code, const String& message)
    : Exception(message), _code(code) {}

CIMException::CIMException(CIMStatusCode code, const String& message, const CIMInstance& instance)
    : Exception(message), _code(code), _errors(std::make_shared<std::vector<CIMInstance>>()) {
    _errors->push_back(instance);
}

CIMException::CIMException(CIMStatusCode code, const String& message,
                           const Array<CIMInstance>& instances)
    : Exception(message), _code(code), _errors(std::make_shared<std::vector<CIMInstance>>()) {
    for (Uint32 i = 0; i < instances.size(); ++i) _errors->push_back(instances[i]);
}

CIMException::CIMException(const CIMException& cimException) = default;
CIMException& CIMException::operator=(const CIMException& cimException) = default;
CIMException::~CIMException() {}

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
Uint32 CIMException::getErrorCount() const { return _errors ? Uint32(_errors->size()) : 0; }
CIMInstance CIMException::getError(Uint32 index) const {
    if (!_errors || index >= _errors->size()) throw IndexOutOfBoundsException();
    return (*_errors)[index];
}
void CIMException::addError(const CIMInstance& instance) {
    auto errors = std::make_shared<std::vector<CIMInstance>>();
    if (_errors) *errors = *_errors;
    errors->push_back(instance);
    _errors = errors;
}
#endif

PEGASUS_NAMESPACE_END
