#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

Exception::Exception() {}
Exception::Exception(const String& message) : _message(message) {}
Exception::Exception(const Exception& exception) = default;
Exception& Exception::operator=(const Exception& exception) = default;
Exception::~Exception() {}
const String& Exception::getMessage() const { return _message; }

// The object model's exceptions, with the texts a client or a log shows.
IndexOutOfBoundsException::IndexOutOfBoundsException() : Exception("index out of bounds") {}
AlreadyExistsException::AlreadyExistsException(const String& message)
    : Exception(String("already exists: ") + message) {}
InvalidNameException::InvalidNameException(const String& name)
    : Exception(String("invalid CIM name: \"") + name + "\"") {}
InvalidNamespaceNameException::InvalidNamespaceNameException(const String& name)
    : Exception(String("invalid CIM namespace name: \"") + name + "\"") {}
UninitializedObjectException::UninitializedObjectException()
    : Exception("uninitialized object") {}
TypeMismatchException::TypeMismatchException() : Exception("type mismatch") {}
TypeMismatchException::TypeMismatchException(const String& message)
    : Exception(String("type mismatch: ") + message) {}
DynamicCastFailedException::DynamicCastFailedException() : Exception("dynamic cast failed") {}
InvalidDateTimeFormatException::InvalidDateTimeFormatException()
    : Exception("invalid datetime format") {}
DateTimeOutOfRangeException::DateTimeOutOfRangeException(const String& message)
    : Exception(String("datetime out of range: ") + message) {}
MalformedObjectNameException::MalformedObjectNameException(const String& objectName)
    : Exception(String("malformed object name: ") + objectName) {}
NullPointer::NullPointer() : Exception("null pointer") {}
BindFailedException::BindFailedException(const String& message)
    : Exception(String("bind failed: ") + message) {}
InvalidLocatorException::InvalidLocatorException(const String& locator)
    : Exception(String("invalid locator: ") + locator) {}
CannotCreateSocketException::CannotCreateSocketException() : Exception("cannot create socket") {}
CannotConnectException::CannotConnectException(const String& message) : Exception(message) {}
AlreadyConnectedException::AlreadyConnectedException() : Exception("already connected") {}
NotConnectedException::NotConnectedException() : Exception("not connected") {}
ConnectionTimeoutException::ConnectionTimeoutException() : Exception("connection timed out") {}
SSLException::SSLException(const String& message) : Exception(String("SSL error: ") + message) {}

PEGASUS_NAMESPACE_END
