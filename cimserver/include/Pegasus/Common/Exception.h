#ifndef Pegasus_Exception_h
#define Pegasus_Exception_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMStatusCode.h>

#include <exception>
#include <memory>
#include <vector>

PEGASUS_NAMESPACE_BEGIN

class CIMInstance;
template <class T> class Array;

class PEGASUS_COMMON_LINKAGE Exception {
public:
    Exception(const String& message);
    Exception(const Exception& exception);
    Exception& operator=(const Exception& exception);
    virtual ~Exception();
    virtual const String& getMessage() const;

protected:
    Exception();
    String _message;
};


class PEGASUS_COMMON_LINKAGE IndexOutOfBoundsException : public Exception {
public:
    IndexOutOfBoundsException();
};
class PEGASUS_COMMON_LINKAGE AlreadyExistsException : public Exception {
public:
    AlreadyExistsException(const String& message);
};
class PEGASUS_COMMON_LINKAGE InvalidNameException : public Exception {
public:
    InvalidNameException(const String& name);
};
class PEGASUS_COMMON_LINKAGE InvalidNamespaceNameException : public Exception {
public:
    InvalidNamespaceNameException(const String& name);
};
class PEGASUS_COMMON_LINKAGE UninitializedObjectException : public Exception {
public:
    UninitializedObjectException();
};
class PEGASUS_COMMON_LINKAGE TypeMismatchException : public Exception {
public:
    TypeMismatchException();
    TypeMismatchException(const String& message);
};
class PEGASUS_COMMON_LINKAGE DynamicCastFailedException : public Exception {
public:
    DynamicCastFailedException();
};
class PEGASUS_COMMON_LINKAGE InvalidDateTimeFormatException : public Exception {
public:
    InvalidDateTimeFormatException();
};
class PEGASUS_COMMON_LINKAGE DateTimeOutOfRangeException : public Exception {
public:
    DateTimeOutOfRangeException(const String& message);
};
class PEGASUS_COMMON_LINKAGE MalformedObjectNameException : public Exception {
public:
    MalformedObjectNameException(const String& objectName);
};
class PEGASUS_COMMON_LINKAGE NullPointer : public Exception {
public:
    NullPointer();
};
class PEGASUS_COMMON_LINKAGE BindFailedException : public Exception {
public:
    BindFailedException(const String& message);
};
class PEGASUS_COMMON_LINKAGE InvalidLocatorException : public Exception {
public:
    InvalidLocatorException(const String& locator);
};
class PEGASUS_COMMON_LINKAGE CannotCreateSocketException : public Exception {
public:
    CannotCreateSocketException();
};
class PEGASUS_COMMON_LINKAGE CannotConnectException : public Exception {
public:
    CannotConnectException(const String& message);
};
class PEGASUS_COMMON_LINKAGE AlreadyConnectedException : public Exception {
public:
    AlreadyConnectedException();
};
class PEGASUS_COMMON_LINKAGE NotConnectedException : public Exception {
public:
    NotConnectedException();
};
class PEGASUS_COMMON_LINKAGE ConnectionTimeoutException : public Exception {
public:
    ConnectionTimeoutException();
};
class PEGASUS_COMMON_LINKAGE SSLException : public Exception {
public:
    SSLException(const String& message);
};

// An error with a CIM status code, as a client sees it.
class PEGASUS_COMMON_LINKAGE CIMException : public Exception {
public:
    CIMException(CIMStatusCode code = CIM_ERR_SUCCESS, const String& message = String::EMPTY);
    CIMException(CIMStatusCode code, const String& message, const CIMInstance& instance);
    CIMException(CIMStatusCode code, const String& message, const Array<CIMInstance>& instances);
    CIMException(const CIMException& cimException);
    CIMException& operator=(const CIMException& cimException);
    virtual ~CIMException();

    CIMStatusCode getCode() const { return _code; }

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Uint32 getErrorCount() const;
    CIMInstance getError(Uint32 index) const;
    void addError(const CIMInstance& instance);
#endif

private:
    CIMStatusCode _code;
    std::shared_ptr<std::vector<CIMInstance>> _errors;
};

#define PEGASUS_CIM_EXCEPTION(CODE, EXTRA_MESSAGE) \
    ::Pegasus::CIMException(CODE, EXTRA_MESSAGE)

PEGASUS_NAMESPACE_END

#endif
