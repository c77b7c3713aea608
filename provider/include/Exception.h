#ifndef ORVSMIS_EXCEPTION_H
#define ORVSMIS_EXCEPTION_H

#include <exception>
#include <string>

namespace orvsmis {

// Base of the module's own failures. The catcher reads the text with
// GetMessage() (or what(), so that a catch of std::exception sees it too).
// Note: Pegasus has an Exception class of its own; code that opens both
// namespaces must write orvsmis::Exception.
class Exception : public std::exception {
public:
    explicit Exception(const std::string& message);
    ~Exception() override;

    const std::string& GetMessage() const { return m_message; }
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

// Invalid arguments or values.
class InvalidParamException : public Exception {
public:
    explicit InvalidParamException(const std::string& message) : Exception(message) {}
};

// A lock that could not be had; the text is "Construction failed".
class ConstructionException : public Exception {
public:
    explicit ConstructionException(const std::string& message) : Exception(message) {}
};

// Something looked for is not there.
class NotExistedException : public Exception {
public:
    explicit NotExistedException(const std::string& message) : Exception(message) {}
};

// Something to be added is there already.
class ExistedException : public Exception {
public:
    explicit ExistedException(const std::string& message) : Exception(message) {}
};

}  // namespace orvsmis

#endif
